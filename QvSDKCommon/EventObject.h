// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

#include <atomic>
#include <utility>
#include <vector>

#include "QvSDKCommon/QvExport.h"

namespace QvApi {

struct _SQvMultiEventsWaiter;

/// What the wait functions give besides the index of a signalled object.
inline constexpr unsigned int kWaitTimeout = 258;
inline constexpr unsigned int kWaitFailed = 0xFFFFFFFF;
/// A time-out that never ends.
inline constexpr unsigned int kWaitForever = 0xFFFFFFFF;

/// An event that threads wait for. A manual-reset event stays signalled until ResetEvent() and
/// lets everybody through; an automatic-reset event lets one wait through and is clear again.
/// Safe from any thread; must outlive all waits on it.
class QVAPI_EXPORT CEventObject {
 public:
  /// The attributes and the name (not copied, may be null) have no effect. BadAllocException if
  /// the system cannot make the event.
  CEventObject(void* attributes, bool manualReset, bool initialState, const char* name);
  CEventObject(const CEventObject&) = delete;
  CEventObject& operator=(const CEventObject&) = delete;
  ~CEventObject();

  void SetEvent();
  void ResetEvent();

  /// True once the destructor runs.
  bool IsClosing() const { return m_closing; }

 private:
  friend struct _SQvMultiEventsWaiter;
  friend QVAPI_EXPORT unsigned int WaitForSingleObject(void* event, unsigned int timeout);

  /// True if signalled. Clears an automatic-reset event, for one caller only, whoever holds the
  /// mutex meanwhile.
  bool Take() { return m_manualReset ? m_signalled.load() : m_signalled.exchange(false); }
  unsigned int Wait(unsigned int timeout);

  pthread_mutex_t m_mutex;
  pthread_cond_t m_condition;
  const bool m_manualReset;
  std::atomic<bool> m_signalled{false};  ///< Set under the mutex, read and taken without it.
  /// Waits that several objects may end, each with its index of this object.
  std::vector<std::pair<_SQvMultiEventsWaiter*, unsigned int>> m_waiters;
  std::atomic<bool> m_closing{false};
  void* m_attributes;
  const char* m_name;
};

/// Waits for one event.
///
/// @param event    a CEventObject
/// @param timeout  milliseconds by the system's clock; 0 looks and returns, kWaitForever has no end
/// @return 0 if the event was signalled, kWaitTimeout, or kWaitFailed for no event
QVAPI_EXPORT unsigned int WaitForSingleObject(void* event, unsigned int timeout);

/// Waits for one or for all of several events. An event that is signalled during the wait counts,
/// even if it is reset at once, unless it resets itself and another wait took it.
///
/// All automatic-reset events that are found signalled are cleared, not only the one returned.
/// That is also so when a wait for all times out, except for a time-out of 0, which then changes
/// nothing.
///
/// @param events   CEventObject each
/// @param waitAll  all must be signalled, else any one
/// @param timeout  as of WaitForSingleObject()
/// @return the lowest index of a signalled event, kWaitTimeout, or kWaitFailed for no events or a
///         null among them. BadAllocException without memory.
QVAPI_EXPORT unsigned int WaitForMultipleObjects(unsigned int count, void* const* events,
                                                 bool waitAll, unsigned int timeout);

}  // namespace QvApi
