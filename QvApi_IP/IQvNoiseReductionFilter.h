// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// How noise is reduced.
enum EQvNoiseReductionMode_t : unsigned {
  QvNoiseReductionMode_Off = 0,
  QvNoiseReductionMode_Simple = 1,  ///< Each pixel becomes the median of its neighbourhood.
  QvNoiseReductionMode_SubtractingLightShieldingImage = 2,  ///< The dark image is taken off.
};

/// Reduces the noise of mono and Bayer images in place. Packed formats are not supported.
///
/// `Simple` takes the median of a pixel and its four nearest neighbours of the same colour:
/// diagonal ones for mono (direct ones at the image's edge) and for green, those at distance 2 in
/// the four directions for red and blue. Neighbours outside the image are left out; of an even
/// number of samples the mean of the two middle ones is taken.
///
/// `SubtractingLightShieldingImage` subtracts a dark image, such as one taken with the lens capped:
/// while calibration is enabled, each image given to Filter() replaces the dark image and stays
/// unchanged, in every mode. Results below 0 become 0. Pixels that were near saturation before and
/// are not afterwards are raised to the median of their neighbourhood, so that a hot pixel leaves
/// no hole in a bright spot. An image that differs from the dark image in size or format, or whose
/// lines have another pitch than the format's default, stays unchanged.
///
/// Samples above the depth of their format are used as they are. Several threads may use one filter
/// at once.
class QVAPI_EXPORT IQvNoiseReductionFilter : public virtual IQvFilter {
 public:
  /// `Off` at the start.
  virtual EQvNoiseReductionMode_t GetNoiseReductionMode() const = 0;
  /// @throws GenICam::OutOfRangeException
  virtual void SetNoiseReductionMode(EQvNoiseReductionMode_t mode) = 0;

  /// Whether images given to Filter() are kept as dark image; off at the start. The last one stays
  /// when this is switched off.
  virtual bool GetCalibrationEnable() const = 0;
  virtual void SetCalibrationEnable(bool enable) = 0;
};

}  // namespace QvApi
