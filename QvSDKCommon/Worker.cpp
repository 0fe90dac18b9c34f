// SPDX-License-Identifier: MIT
#include "QvSDKCommon/Worker.h"

#include <sched.h>

#include <algorithm>

#include "QvSDKCommon/MutexGuard.h"
#include "QvSDKCommon/QvApi_Exception.h"

namespace {

int Clamp(int priority, int policy) {
  return std::clamp(priority, sched_get_priority_min(policy), sched_get_priority_max(policy));
}

}  // namespace

CWorker::CWorker(const char* name) : m_name(name) {}

CWorker::~CWorker() {
  CWorker::Stop();
  pthread_mutex_destroy(&m_runMutex);
}

void CWorker::Start() {
  Stop();
  m_stopEvent.ResetEvent();
  if (const int error = pthread_create(&m_thread, nullptr, ThreadStart, this)) {
    m_thread = 0;
    throw QVLINUX_ERROR_EXCEPTION(error, "pthread_create", "0 != pthread_create");
  }
  if (m_name) pthread_setname_np(m_thread, m_name);
  SetPriority();
}

/// A priority of 2 and more asks for real time. A system that denies it leaves things as they are.
void CWorker::SetPriority() {
  if (m_priority < 2) {
    pthread_attr_t attributes;
    int policy = SCHED_OTHER;
    if (pthread_attr_init(&attributes) == 0) {
      pthread_attr_getschedpolicy(&attributes, &policy);
      pthread_attr_destroy(&attributes);
    }
    pthread_setschedprio(m_thread, Clamp(m_priority, policy));
  } else {
    m_priority = Clamp(m_priority, SCHED_RR);
    sched_param parameters{};
    parameters.sched_priority = m_priority;
    pthread_setschedparam(m_thread, SCHED_RR, &parameters);
  }
}

void CWorker::Stop() {
  if (m_thread == 0) return;
  m_stopEvent.SetEvent();
  if (pthread_equal(m_thread, pthread_self())) return;
  pthread_join(m_thread, nullptr);
  QvApi::CMutexGuard guard(m_runMutex);
  m_thread = 0;
}

bool CWorker::IsStopRequest(unsigned int timeout) {
  return QvApi::WaitForSingleObject(GetStopRequestEvent(), timeout) == 0;
}

QvApi::CEventObject* CWorker::GetStopRequestEvent() {
  return m_stopEvent.IsClosing() ? nullptr : &m_stopEvent;
}

void* CWorker::ThreadStart(void* worker) {
  static_cast<CWorker*>(worker)->Run();
  return nullptr;
}

void CWorker::Run() {
  QvApi::CMutexGuard guard(m_runMutex);
  m_running = true;
  try {
    mWork();
  } catch (...) {
    // Whatever it was, the process goes on; a worker reports its failures itself.
  }
  m_running = false;
}
