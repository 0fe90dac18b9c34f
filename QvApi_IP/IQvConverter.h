// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <GenApi/GenApi.h>

#include "QvSDKCommon/IQvCallback.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"
#include "QvSDKCommon/IQvReleasable.h"
#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// The converters that CreateIQvConverter() makes.
enum EQvConverterType_t : unsigned {
  QvConverterType_PixelFormat = 0,
  QvConverterType_Reverse = 1,
};

/// Describes a converter. Lives as long as the converter; safe from any thread.
class QVAPI_EXPORT IQvConverterInfo {
 public:
  virtual ~IQvConverterInfo() = default;
  virtual EQvConverterType_t GetConverterType() const = 0;
  /// Such as "Pixel Format".
  virtual GenICam::gcstring GetConverterName() const = 0;
  /// The converter, with its present settings, accepts images of this format.
  virtual bool IsSupported(EQvPixelFormatNamingConvention_t format) const = 0;
};

/// Makes a new image out of one.
class QVAPI_EXPORT IQvConverter : public virtual IQvRegisterCallback {
 public:
  virtual IQvConverterInfo* GetIQvConverterInfo() const = 0;
  /// Converts `source` into `destination`, which is resized. The source must be an IQvImageInside,
  /// the destination an IQvImageBufferInside, as the library's own are. After a failure the
  /// destination's pixels are unspecified.
  /// @throws GenICam::InvalidArgumentException  a null pointer
  /// @throws GenICam::RuntimeException          the conversion does not exist, or not for this size
  /// @throws GenICam::BadAllocException         no memory
  virtual void Convert(IQvImage* source, IQvImageBuffer* destination) = 0;
  /// The settings as a GenApi node map, owned by the converter and made at the first call.
  virtual GenApi::INodeMap* GetINodeMap() = 0;
};

/// A converter as a factory gives it.
class QVAPI_EXPORT IQvConverterReleasable : public virtual IQvConverter,
                                            public virtual IQvReleasable {};

}  // namespace QvApi
