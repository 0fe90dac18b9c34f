// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCExport.h>

#include <mutex>

namespace GenApi {

/// A mutex that its owner may lock again.
class QVGENICAM_API CLock {
 public:
  CLock() = default;
  CLock(const CLock&) = delete;
  CLock& operator=(const CLock&) = delete;
  ~CLock() = default;

  void Lock() { m_mutex.lock(); }
  /// False if another thread holds the lock.
  bool TryLock() { return m_mutex.try_lock(); }
  void Unlock() { m_mutex.unlock(); }

 private:
  std::recursive_mutex m_mutex;
};

/// Holds a lock for the length of a block.
class QVGENICAM_API AutoLock {
 public:
  explicit AutoLock(CLock& lock) : m_lock(lock) { m_lock.Lock(); }
  AutoLock(const AutoLock&) = delete;
  AutoLock& operator=(const AutoLock&) = delete;
  ~AutoLock() { m_lock.Unlock(); }

 private:
  CLock& m_lock;
};

}  // namespace GenApi
