// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

namespace QvApi {

/// Holds a POSIX mutex for the length of a block.
class CMutexGuard {
 public:
  explicit CMutexGuard(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
  CMutexGuard(const CMutexGuard&) = delete;
  CMutexGuard& operator=(const CMutexGuard&) = delete;
  ~CMutexGuard() { pthread_mutex_unlock(&m_mutex); }

 private:
  pthread_mutex_t& m_mutex;
};

}  // namespace QvApi
