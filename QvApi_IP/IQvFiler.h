// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <GenApi/GenApi.h>

#include "QvSDKCommon/IQvCallback.h"
#include "QvSDKCommon/IQvReleasable.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// The filers that CreateIQvFiler() makes.
enum EQvFilerType_t : unsigned {
  QvFilerType_StillImage = 0,
  QvFilerType_Video = 1,
};

/// Describes a kind of filer. Static, immutable, safe from any thread.
class QVAPI_EXPORT IQvFilerInfo {
 public:
  virtual ~IQvFilerInfo() = default;
  virtual EQvFilerType_t GetFilerType() const = 0;
  /// Such as "Still Image".
  virtual GenICam::gcstring GetFilerName() const = 0;
};

/// Saves images to files.
class QVAPI_EXPORT IQvFiler : public virtual IQvRegisterCallback {
 public:
  virtual IQvFilerInfo* GetIQvFilerInfo() const = 0;
  /// The settings as a GenApi node map, owned by the filer and made at the first call.
  virtual GenApi::INodeMap* GetINodeMap() = 0;
};

/// A filer as a factory gives it.
class QVAPI_EXPORT IQvFilerReleasable : public virtual IQvFiler, public virtual IQvReleasable {};

}  // namespace QvApi
