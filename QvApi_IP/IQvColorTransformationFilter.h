// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// The numbers of the colour matrix, row by row. Row 0 makes red, row 1 green, row 2 blue; columns
/// 0 to 2 weight red, green and blue, and the offset of the row follows them.
enum EQvColorTransformationValueSelector_t : unsigned {
  QvColorTransformationValueSelector_Gain00 = 0,
  QvColorTransformationValueSelector_Gain01 = 1,
  QvColorTransformationValueSelector_Gain02 = 2,
  QvColorTransformationValueSelector_Offset0 = 3,
  QvColorTransformationValueSelector_Gain10 = 4,
  QvColorTransformationValueSelector_Gain11 = 5,
  QvColorTransformationValueSelector_Gain12 = 6,
  QvColorTransformationValueSelector_Offset1 = 7,
  QvColorTransformationValueSelector_Gain20 = 8,
  QvColorTransformationValueSelector_Gain21 = 9,
  QvColorTransformationValueSelector_Gain22 = 10,
  QvColorTransformationValueSelector_Offset2 = 11,
};

/// Applies a colour matrix with offsets to an image in place, and turns hue and scales saturation
/// of what the gains of the matrix give.
///
/// A component x counts as x + 1, so that the matrix at the start raises all components by one: an
/// enabled filter is never without effect. Each product is cut off to a whole number before the
/// three of a component are added; sums are limited to the range of the samples. Interleaved colour
/// of 8 to 16 bits is changed, alpha stays. Other colour formats, mosaics among them, pass
/// unchanged; formats without colour are refused while the filter is enabled.
class QVAPI_EXPORT IQvColorTransformationFilter : public virtual IQvFilter {
 public:
  virtual double GetHueCorrection() const = 0;
  /// @param value  angle in degrees, -180 to 180; 0 at the start
  /// @throws GenICam::OutOfRangeException
  virtual void SetHueCorrection(double value) = 0;
  virtual double GetSaturationCorrection() const = 0;
  /// @param value  factor, 0 (grey) to 4; 1 at the start
  /// @throws GenICam::OutOfRangeException
  virtual void SetSaturationCorrection(double value) = 0;
  virtual bool GetColorTransformationEnable() const = 0;
  /// Disabled at the start: then images of all formats pass unchanged.
  virtual void SetColorTransformationEnable(bool value) = 0;
  /// @throws GenICam::OutOfRangeException  there is no such number
  virtual double GetColorTransformationValue(
      EQvColorTransformationValueSelector_t selector) const = 0;
  /// @param value  a gain, -16 to 16, or an offset in codes of the image whatever its depth, -65535
  ///               to 65535. At the start the gains of a component in itself are 1, all else is 0.
  /// @throws GenICam::OutOfRangeException
  virtual void SetColorTransformationValue(EQvColorTransformationValueSelector_t selector,
                                           double value) = 0;
};

}  // namespace QvApi
