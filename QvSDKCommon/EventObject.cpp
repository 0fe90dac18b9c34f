// SPDX-License-Identifier: MIT
#include "QvSDKCommon/EventObject.h"

#include <Base/GCException.h>
#include <errno.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory_resource>
#include <mutex>
#include <new>

#include "QvSDKCommon/MutexGuard.h"

namespace QvApi {
namespace {

void Initialize(pthread_mutex_t& mutex, pthread_cond_t& condition) {
  if (pthread_mutex_init(&mutex, nullptr) != 0) throw BAD_ALLOC_EXCEPTION();
  if (pthread_cond_init(&condition, nullptr) != 0) {
    pthread_mutex_destroy(&mutex);
    throw BAD_ALLOC_EXCEPTION();
  }
}

/// The moment at which a wait ends.
class Deadline {
 public:
  explicit Deadline(unsigned int timeout) : m_isForever(timeout == kWaitForever) {
    constexpr long kSecond = 1'000'000'000;
    clock_gettime(CLOCK_REALTIME, &m_time);
    m_time.tv_sec += timeout / 1000;
    m_time.tv_nsec += static_cast<long>(timeout % 1000) * 1'000'000;
    // Exactly one second is left, and the wait then ends at once.
    if (m_time.tv_nsec > kSecond) {
      m_time.tv_nsec -= kSecond;
      ++m_time.tv_sec;
    }
  }

  /// One wait, which may also end for no reason. The error of the wait, ETIMEDOUT at the end.
  int Wait(pthread_cond_t& condition, pthread_mutex_t& mutex) const {
    return m_isForever ? pthread_cond_wait(&condition, &mutex)
                       : pthread_cond_timedwait(&condition, &mutex, &m_time);
  }

 private:
  const bool m_isForever;
  timespec m_time;
};

}  // namespace

/// One wait for several events. Its mutex is taken inside those of the events, never around them.
struct _SQvMultiEventsWaiter {
  _SQvMultiEventsWaiter(unsigned int count, void* const* objects, bool isWaitAll)
      : flags(count, false, pool),
        waitAll(isWaitAll),
        taken(count, false, pool),
        events(count, pool) {
    std::transform(objects, objects + count, events.begin(),
                   [](void* object) { return static_cast<CEventObject*>(object); });
    Initialize(mutex, condition);
  }
  _SQvMultiEventsWaiter(const _SQvMultiEventsWaiter&) = delete;
  _SQvMultiEventsWaiter& operator=(const _SQvMultiEventsWaiter&) = delete;
  ~_SQvMultiEventsWaiter() {
    while (registered > 0) {
      CEventObject& event = *events[--registered];
      CMutexGuard guard(event.m_mutex);
      std::erase_if(event.m_waiters, [this](const auto& record) { return record.first == this; });
    }
    pthread_cond_destroy(&condition);
    pthread_mutex_destroy(&mutex);
  }

  unsigned int Poll() {
    Scan();
    return IsOver() ? Take() : kWaitTimeout;
  }

  unsigned int Wait(const Deadline& deadline) {
    for (; registered < events.size(); ++registered) {
      CMutexGuard guard(events[registered]->m_mutex);
      events[registered]->m_waiters.emplace_back(this, registered);
    }
    for (;;) {
      const bool isOver = WaitForFlags(deadline);
      const unsigned int result = Take(!isOver);
      if (result != kWaitTimeout || !isOver) return result;
    }
  }

  /// An event of the wait is signalled; its mutex is held.
  void OnSignal(unsigned int index) {
    CMutexGuard guard(mutex);
    flags[index] = true;
    if (IsOver()) pthread_cond_signal(&condition);
  }

 private:
  bool IsOver() const {
    return waitAll ? std::find(flags.begin(), flags.end(), false) == flags.end()
                   : std::find(flags.begin(), flags.end(), true) != flags.end();
  }
  void Scan() {
    for (std::size_t i = 0; i < events.size(); ++i)
      if (events[i]->m_signalled) flags[i] = true;
  }
  /// False if the wait ended before.
  bool WaitForFlags(const Deadline& deadline) {
    CMutexGuard guard(mutex);
    for (;;) {
      Scan();
      if (IsOver()) return true;
      if (deadline.Wait(condition, mutex) != 0) return false;
    }
  }
  /// Takes what is signalled. The result of the wait; kWaitTimeout also if another thread was
  /// faster to take an event, and then gives back what it took unless told to keep.
  unsigned int Take(bool isKept = false) {
    unsigned int result = kWaitTimeout;
    {
      // Two waits for the same events must not each take what the other lacks.
      static std::mutex takeMutex;
      const std::lock_guard takeGuard(takeMutex);
      CMutexGuard guard(mutex);
      for (std::size_t i = 0; i < events.size(); ++i) {
        CEventObject& event = *events[i];
        if (event.m_manualReset)
          flags[i] = flags[i] || event.m_signalled;
        else
          flags[i] = taken[i] = event.Take();
      }
      if (IsOver())
        result =
            static_cast<unsigned int>(std::find(flags.begin(), flags.end(), true) - flags.begin());
    }
    if (result == kWaitTimeout && !isKept)
      for (std::size_t i = 0; i < events.size(); ++i)
        if (taken[i]) events[i]->SetEvent();
    return result;
  }

  pthread_mutex_t mutex;
  pthread_cond_t condition;
  /// A wait for few events needs no memory of the heap.
  std::array<std::byte, 128> memory;
  std::pmr::monotonic_buffer_resource resource{memory.data(), memory.size()};
  std::pmr::memory_resource* const pool = &resource;
  std::pmr::vector<bool> flags;  ///< Per event: was signalled since the wait began.
  const bool waitAll;
  /// Per event: reset itself for this wait. Of the waiting thread alone.
  std::pmr::vector<bool> taken;
  std::pmr::vector<CEventObject*> events;
  unsigned int registered = 0;  ///< So many events, from the first on, know this wait.
};

CEventObject::CEventObject(void* attributes, bool manualReset, bool initialState, const char* name)
    : m_manualReset(manualReset), m_attributes(attributes), m_name(name) {
  Initialize(m_mutex, m_condition);
  if (initialState) SetEvent();
}

CEventObject::~CEventObject() {
  {
    CMutexGuard guard(m_mutex);
    m_closing = true;
  }
  pthread_cond_destroy(&m_condition);
  pthread_mutex_destroy(&m_mutex);
}

void CEventObject::SetEvent() {
  if (m_closing) return;
  CMutexGuard guard(m_mutex);
  m_signalled = true;
  for (const auto& [waiter, index] : m_waiters) waiter->OnSignal(index);
  // All that wait look again: a manual-reset event is for each of them.
  pthread_cond_broadcast(&m_condition);
}

void CEventObject::ResetEvent() {
  if (m_closing) return;
  CMutexGuard guard(m_mutex);
  m_signalled = false;
}

unsigned int CEventObject::Wait(unsigned int timeout) {
  if (Take()) return 0;
  if (timeout == 0) return kWaitTimeout;
  const Deadline deadline(timeout);
  CMutexGuard guard(m_mutex);
  while (!Take()) {
    // A signal that comes with the time-out stays for the next wait.
    if (const int error = deadline.Wait(m_condition, m_mutex))
      return m_signalled && error != ETIMEDOUT ? kWaitFailed : kWaitTimeout;
  }
  return 0;
}

unsigned int WaitForSingleObject(void* event, unsigned int timeout) {
  return event ? static_cast<CEventObject*>(event)->Wait(timeout) : kWaitFailed;
}

unsigned int WaitForMultipleObjects(unsigned int count, void* const* events, bool waitAll,
                                    unsigned int timeout) {
  if (count == 0 || !events || std::find(events, events + count, nullptr) != events + count)
    return kWaitFailed;
  try {
    _SQvMultiEventsWaiter waiter(count, events, waitAll);
    return timeout == 0 ? waiter.Poll() : waiter.Wait(Deadline(timeout));
  } catch (const std::bad_alloc& e) {
    throw BAD_ALLOC_EXCEPTION("%s", e.what());
  }
}

}  // namespace QvApi
