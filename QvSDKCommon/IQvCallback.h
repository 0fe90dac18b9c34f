// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// What happened; the derived interface for the type tells more.
class QVAPI_EXPORT IQvCallbackParamBase {
 public:
  virtual ~IQvCallbackParamBase() = default;
  virtual std::uint32_t GetCallbackType() const = 0;
};

/// The application's listener.
class QVAPI_EXPORT IQvCallback {
 public:
  virtual ~IQvCallback() = default;
  /// Something happened. Called on the thread where it did, while the registration is locked: do
  /// not register or deregister from here. `param` lives until the call returns.
  virtual void OnIQvCallback(IQvCallbackParamBase* param) = 0;
  /// The registration ended; a listener that belongs to nobody else deletes itself here.
  virtual void Destroy() = 0;
};

/// Takes listeners. Every module has it.
class QVAPI_EXPORT IQvRegisterCallback {
 public:
  virtual ~IQvRegisterCallback() = default;
  /// Adds a listener and returns the handle of the registration. One listener may be registered
  /// several times. Safe from any thread.
  /// @throws GenICam::BadAllocException
  virtual void* RegisterCallback(IQvCallback* callback) = 0;
  /// Ends a registration and calls IQvCallback::Destroy().
  /// @throws GenICam::InvalidArgumentException  "hCallback is invalid."
  virtual void DeregisterCallback(void* handle) = 0;
};

/// Takes listeners and calls them.
class QVAPI_EXPORT IQvCallbackManager : public IQvRegisterCallback {
 public:
  /// Calls all listeners in the order of their handles. An exception ends the round and passes on.
  virtual void RunCallback(IQvCallbackParamBase* param) = 0;
};

}  // namespace QvApi
