// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/Synch.h>

#include <cstdint>
#include <map>
#include <memory>

#include "QvSDKCommon/IQvCallback.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// One registration.
class QVAPI_EXPORT CQvCallbackEntry {
 public:
  explicit CQvCallbackEntry(IQvCallback* callback) : m_callback(callback) {}
  virtual ~CQvCallbackEntry() = default;

  IQvCallback* GetIQvCallback() const { return m_callback; }

 private:
  IQvCallback* m_callback;
};

/// Keeps the listeners of one module. Safe from any thread; its lock is held while listeners run,
/// so a listener must neither register nor deregister with the manager that calls it.
class QVAPI_EXPORT CQvCallbackManager final : public IQvCallbackManager {
 public:
  CQvCallbackManager();
  CQvCallbackManager(const CQvCallbackManager&) = delete;
  CQvCallbackManager& operator=(const CQvCallbackManager&) = delete;
  /// Ends all registrations, as DeregisterCallback() does.
  ~CQvCallbackManager() override;

  void* RegisterCallback(IQvCallback* callback) override;
  void DeregisterCallback(void* handle) override;
  void RunCallback(IQvCallbackParamBase* param) override;

 private:
  using Entries = std::map<void*, std::unique_ptr<CQvCallbackEntry>>;

  GenApi::CLock m_lock;
  Entries m_entries;  ///< By the entry's address, which is the handle.
};

/// Base of what listeners are told; `T` is the interface of the event, derived from
/// IQvCallbackParamBase.
template <class T>
class CQvCallbackParamBase : public T {
 public:
  explicit CQvCallbackParamBase(std::uint32_t type) : m_type(type) {}
  std::uint32_t GetCallbackType() const override { return m_type; }

 private:
  std::uint32_t m_type;
};

}  // namespace QvApi
