// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/Synch.h>

#include <vector>

#include "QvSDKCommon/EventObject.h"

namespace QvApi {

/// A queue of few objects, which it does not own, and an event that is signalled while it holds
/// any. Safe from any thread.
template <class T>
class CBufferQueue {
 public:
  void Push(T* item) { Insert(item, false); }
  void PushFront(T* item) { Insert(item, true); }

  /// The first object, or null.
  T* Pop() {
    const GenApi::AutoLock lock(m_lock);
    if (m_items.empty()) return nullptr;
    T* const item = m_items.front();
    m_items.erase(m_items.begin());
    if (m_items.empty()) m_event.ResetEvent();
    return item;
  }

  CEventObject* GetEvent() { return &m_event; }

 private:
  void Insert(T* item, bool isFirst) {
    const GenApi::AutoLock lock(m_lock);
    m_items.insert(isFirst ? m_items.begin() : m_items.end(), item);
    m_event.SetEvent();
  }

  std::vector<T*> m_items;
  GenApi::CLock m_lock;
  CEventObject m_event{nullptr, true, false, nullptr};
};

}  // namespace QvApi
