// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <Base/GCTypes.h>

namespace GenApi {

struct Version_t {
  uint16_t Major;
  uint16_t Minor;
  uint16_t SubMinor;
};

/// What a document says about itself. A node map offers it to a dynamic_cast.
class QVGENICAM_API IDeviceInfo {
 public:
  virtual GenICam::gcstring GetModelName() = 0;
  virtual GenICam::gcstring GetVendorName() = 0;
  virtual GenICam::gcstring GetToolTip() = 0;
  virtual GenICam::gcstring GetStandardNameSpace() = 0;
  virtual void GetSchemaVersion(Version_t& version) = 0;
  virtual void GetDeviceVersion(Version_t& version) = 0;
  virtual GenICam::gcstring GetProductGuid() = 0;
  virtual GenICam::gcstring GetVersionGuid() = 0;

 protected:
  virtual ~IDeviceInfo() = default;
};

}  // namespace GenApi
