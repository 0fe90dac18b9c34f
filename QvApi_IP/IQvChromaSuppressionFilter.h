// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// The two ends of luminance that have settings of their own.
enum EQvChromaSuppressionPartSelector_t : unsigned {
  QvChromaSuppressionPartSelector_LowLuminancePart = 0,
  QvChromaSuppressionPartSelector_HighLuminancePart = 1,
};

/// Takes the colour out of dark and of bright pixels, where colour noise and false colour show
/// most, by moving red and blue towards green.
///
/// A pixel's luminance is (2 R + 5 G + B) / 8, in units of 8 bits whatever the depth of the image.
/// Below the threshold of the low part, and above that of the high part, each step of luminance and
/// each step of suppression moves red and blue by 1/256 of their distance to green; at 256 and more
/// they are green. Green and alpha stay. Interleaved colour of 8 to 16 bits is supported.
class QVAPI_EXPORT IQvChromaSuppressionFilter : public virtual IQvFilter {
 public:
  /// @throws GenICam::OutOfRangeException  there is no such part; so do all that follow
  virtual unsigned int GetThresholdValue(EQvChromaSuppressionPartSelector_t part) const = 0;
  /// @param value  luminance, 0 to 255; at the start 0 for the low part and 255 for the high one
  /// @throws GenICam::OutOfRangeException
  virtual void SetThresholdValue(EQvChromaSuppressionPartSelector_t part, unsigned int value) = 0;
  virtual unsigned int GetSuppressionValue(EQvChromaSuppressionPartSelector_t part) const = 0;
  /// @param value  strength, 0 to 255; 0 at the start, which leaves that part of luminance alone
  /// @throws GenICam::OutOfRangeException
  virtual void SetSuppressionValue(EQvChromaSuppressionPartSelector_t part, unsigned int value) = 0;
};

}  // namespace QvApi
