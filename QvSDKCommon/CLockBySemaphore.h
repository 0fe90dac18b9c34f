// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// A gate that lets as many through as its count is below its maximum. A new gate is at its
/// maximum, so it is shut until the first Unlock(). Safe from any thread; must outlive the waits.
class QVAPI_EXPORT CLockBySemaphore {
 public:
  /// CQvLinuxErrorException if the system cannot make it.
  explicit CLockBySemaphore(long maximum);
  CLockBySemaphore(const CLockBySemaphore&) = delete;
  CLockBySemaphore& operator=(const CLockBySemaphore&) = delete;
  ~CLockBySemaphore();

  /// Waits until the count is below the maximum, then adds 1.
  void Lock() { mLock(1); }
  /// Subtracts 1 where the count is above 0, and wakes one that waits.
  void Unlock() { mUnlock(1); }
  /// Adds 1 like Lock(), but does not wait at a gate whose maximum is 1.
  void LockMaxMinusOne() { mLock(m_maximum - 1); }
  /// As many Unlock() as the maximum less 1.
  void UnlockMaxMinusOne() { mUnlock(m_maximum - 1); }

 private:
  void mLock(long rounds);
  void mUnlock(long rounds);

  const long m_maximum;
  struct {
    pthread_mutex_t mutex;
    pthread_cond_t condition;
  } m_sem;
  long m_count;
};

}  // namespace QvApi
