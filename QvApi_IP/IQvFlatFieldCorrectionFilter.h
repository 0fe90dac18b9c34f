// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// How shading is evened out.
enum EQvFlatFieldCorrectionMode_t : unsigned {
  QvFlatFieldCorrectionMode_Off = 0,
  QvFlatFieldCorrectionMode_Multiplication = 1,  ///< By a gain for each pixel.
  QvFlatFieldCorrectionMode_Addition = 2,        ///< By an offset for each pixel.
};

/// Evens out the shading of mono and Bayer images in place. Packed formats are not supported.
///
/// While calibration is enabled, each image given to Filter() replaces the calibration image and
/// stays unchanged. It is an image of a uniform scene. From it and the target value each pixel gets
/// a gain or an offset that brings the calibration image to the target: gains are fixed point with
/// seven bits behind the point, at most 16.0, which is also that of pixels darker than a 16th of
/// the target; results end at full scale. A target of 0 stands for the mean of the middle of the
/// calibration image, which for a mosaic is taken for each position of the 2 x 2 tile by itself, so
/// that white balance survives.
///
/// Gains and offsets are made at the first image after calibration, with the target of that moment.
/// A change of mode drops the calibration. An image that differs from the calibration image in size
/// or format, or whose lines have another pitch than the format's default, stays unchanged.
///
/// Samples above the depth of their format are used as they are. Several threads may use one filter
/// at once.
class QVAPI_EXPORT IQvFlatFieldCorrectionFilter : public virtual IQvFilter {
 public:
  /// `Off` at the start.
  virtual EQvFlatFieldCorrectionMode_t GetFlatFieldCorrectionMode() const = 0;
  /// Drops the calibration if this is another mode.
  /// @throws GenICam::OutOfRangeException
  virtual void SetFlatFieldCorrectionMode(EQvFlatFieldCorrectionMode_t mode) = 0;

  /// Whether images given to Filter() are kept for calibration; off at the start. The last one
  /// stays when this is switched off.
  virtual bool GetCalibrationEnable() const = 0;
  virtual void SetCalibrationEnable(bool enable) = 0;

  /// The level that the calibration image is brought to, or 0 for its own mean, as at the start.
  virtual unsigned int GetCalibrationTargetValue() const = 0;
  /// Gains and offsets that exist stay as they are.
  /// @param value  0 to 65535, whatever the depth of images
  /// @throws GenICam::OutOfRangeException
  virtual void SetCalibrationTargetValue(unsigned int value) = 0;
};

}  // namespace QvApi
