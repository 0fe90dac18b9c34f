// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <GenApi/GenApi.h>

#include "QvSDKCommon/IQvCallback.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvReleasable.h"
#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// The filters that CreateIQvFilter() makes.
enum EQvFilterType_t : unsigned {
  QvFilterType_GammaCorrection = 0,
  QvFilterType_ColorTransformation = 1,
  QvFilterType_EdgeEnhancement = 2,
  QvFilterType_BalanceRatio = 3,
  QvFilterType_NoiseReduction = 4,
  QvFilterType_FlatFieldCorrection = 5,
  QvFilterType_ChromaSuppression = 6,
  QvFilterType_SNMeasurement = 7,
  QvFilterType_GraphData = 8,
  QvFilterType_ImageAveraging = 9,
  QvFilterType_DefectivePixelDetection = 10,
};

/// Describes a kind of filter. Static, immutable, safe from any thread.
class QVAPI_EXPORT IQvFilterInfo {
 public:
  virtual ~IQvFilterInfo() = default;
  virtual EQvFilterType_t GetFilterType() const = 0;
  /// Such as "Gamma Correction".
  virtual GenICam::gcstring GetFilterName() const = 0;
  /// The filter accepts images of this format.
  virtual bool IsSupported(EQvPixelFormatNamingConvention_t format) const = 0;
};

/// Changes an image in place, or learns from it.
///
/// Filter(), setters and node access may come from different threads: a changed setting takes
/// effect at the next image.
class QVAPI_EXPORT IQvFilter : public virtual IQvRegisterCallback {
 public:
  virtual IQvFilterInfo* GetIQvFilterInfo() const = 0;
  /// Works on `image` in place and returns it, so that filters can be chained. The image stays the
  /// caller's.
  /// @throws GenICam::RuntimeException          "Not supported pixelformat %s"
  /// @throws GenICam::InvalidArgumentException  `image` is null
  virtual IQvImage* Filter(IQvImage* image) = 0;
  /// The settings as a GenApi node map, owned by the filter and made at the first call.
  virtual GenApi::INodeMap* GetINodeMap() = 0;
};

/// A filter as a factory gives it.
class QVAPI_EXPORT IQvFilterReleasable : public virtual IQvFilter, public virtual IQvReleasable {};

}  // namespace QvApi
