// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

#include <atomic>

#include "QvSDKCommon/EventObject.h"
#include "QvSDKCommon/QvExport.h"

/// What a worker's body sees of its worker.
class QVAPI_EXPORT IWorker {
 public:
  /// True if the worker is to end; waits for that up to `timeout` milliseconds.
  virtual bool IsStopRequest(unsigned int timeout) = 0;
  /// The event behind IsStopRequest(), to wait for together with others. Owned by the worker.
  virtual QvApi::CEventObject* GetStopRequestEvent() = 0;
  virtual ~IWorker() = default;
};

/// A thread of its own. A class derives, gives the body, and calls Stop() in its destructor, since
/// the body must have ended before the members that it uses go.
class QVAPI_EXPORT CWorker : public IWorker {
 public:
  /// @param name  of the thread, at most 15 characters; not copied
  explicit CWorker(const char* name);
  CWorker(const CWorker&) = delete;
  CWorker& operator=(const CWorker&) = delete;

  /// Starts the thread, after stopping that of an earlier start. CQvLinuxErrorException if there
  /// can be no thread. Start() and Stop() are for one thread at a time.
  void Start();

  bool IsStopRequest(unsigned int timeout) override;
  QvApi::CEventObject* GetStopRequestEvent() override;
  ~CWorker() override;
  /// Asks the body to end and waits until it has. Does nothing without a thread; on the worker's
  /// own thread only asks.
  virtual void Stop();

 protected:
  /// The body; runs once per Start(). The result has no use. An exception ends the body, not the
  /// process.
  virtual int mWork() = 0;

  /// True while the body runs.
  bool IsRunning() const { return m_running; }

 private:
  static void* ThreadStart(void* worker);
  void Run();
  void SetPriority();

  const char* m_name;
  QvApi::CEventObject m_stopEvent{nullptr, true, false, nullptr};
  std::atomic<bool> m_running{false};
  int m_priority = 1;
  pthread_t m_thread = 0;
  pthread_mutex_t m_runMutex = PTHREAD_MUTEX_INITIALIZER;  ///< Held as long as the thread lives.
};
