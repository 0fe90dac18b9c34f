// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvCallbackManager.h"

#include <Base/GCException.h>

#include <new>
#include <utility>

namespace QvApi {

CQvCallbackManager::CQvCallbackManager() = default;

CQvCallbackManager::~CQvCallbackManager() {
  for (const auto& [handle, entry] : m_entries) entry->GetIQvCallback()->Destroy();
}

void* CQvCallbackManager::RegisterCallback(IQvCallback* callback) {
  if (!callback) throw INVALID_ARGUMENT_EXCEPTION("IQvCallback pointer is NULL.");
  try {
    auto entry = std::make_unique<CQvCallbackEntry>(callback);
    void* handle = entry.get();
    GenApi::AutoLock lock(m_lock);
    m_entries.emplace(handle, std::move(entry));
    return handle;
  } catch (const std::bad_alloc& e) {
    throw BAD_ALLOC_EXCEPTION("%s", e.what());
  }
}

void CQvCallbackManager::DeregisterCallback(void* handle) {
  {
    GenApi::AutoLock lock(m_lock);
    if (const auto node = m_entries.extract(handle)) {
      node.mapped()->GetIQvCallback()->Destroy();
      return;
    }
  }
  throw INVALID_ARGUMENT_EXCEPTION("hCallback is invalid.");
}

void CQvCallbackManager::RunCallback(IQvCallbackParamBase* param) {
  GenApi::AutoLock lock(m_lock);
  // The next entry is looked up by key, so that a listener that breaks the rule and ends its own
  // registration does no harm.
  for (auto entry = m_entries.begin(); entry != m_entries.end();) {
    void* const handle = entry->first;
    entry->second->GetIQvCallback()->OnIQvCallback(param);
    entry = m_entries.upper_bound(handle);
  }
}

}  // namespace QvApi
