// SPDX-License-Identifier: MIT
#include "QvSDKCommon/CLockBySemaphore.h"

#include <errno.h>
#include <string.h>

#include "QvSDKCommon/MutexGuard.h"
#include "QvSDKCommon/QvApi_Exception.h"

namespace QvApi {

CLockBySemaphore::CLockBySemaphore(long maximum) : m_maximum(maximum), m_count(maximum) {
  if ((errno = pthread_mutex_init(&m_sem.mutex, nullptr)) != 0)
    throw QVLINUX_ERROR_EXCEPTION(errno, "pthread_mutex_init",
                                  "0 != pthread_mutex_init(&m_sem.mutex) [Error=0x%x %s]",
                                  static_cast<unsigned>(errno), strerror(errno));
  if ((errno = pthread_cond_init(&m_sem.condition, nullptr)) != 0) {
    pthread_mutex_destroy(&m_sem.mutex);
    throw QVLINUX_ERROR_EXCEPTION(errno, "pthread_cond_init",
                                  "0 != pthread_cond_init(&m_sem.condition) [Error=0x%x %s]",
                                  static_cast<unsigned>(errno), strerror(errno));
  }
}

CLockBySemaphore::~CLockBySemaphore() {
  pthread_cond_destroy(&m_sem.condition);
  pthread_mutex_destroy(&m_sem.mutex);
}

void CLockBySemaphore::mLock(long rounds) {
  CMutexGuard guard(m_sem.mutex);
  // The rounds repeat the waiting only: one unit is taken however many there are.
  for (; rounds > 0; --rounds) {
    while (m_count >= m_maximum) {
      const int error = pthread_cond_wait(&m_sem.condition, &m_sem.mutex);
      if (error != 0 && error != EINTR) break;
    }
  }
  ++m_count;
}

void CLockBySemaphore::mUnlock(long rounds) {
  for (; rounds > 0; --rounds) {
    {
      CMutexGuard guard(m_sem.mutex);
      if (m_count <= 0) return;
      --m_count;
    }
    pthread_cond_signal(&m_sem.condition);
  }
}

}  // namespace QvApi
