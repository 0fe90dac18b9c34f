// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// Applies a power law to an image in place: each sample x of full scale M becomes
/// M * pow(x / M, gamma), rounded.
///
/// The exponent is the gamma value itself: values above 1 darken the mid-tones, values below 1
/// brighten them, 1 leaves the image alone. Mosaics are corrected sample by sample, luminance and
/// chrominance formats in luminance only; alpha stays. Packed formats are not supported.
class QVAPI_EXPORT IQvGammaCorrectionFilter : public virtual IQvFilter {
 public:
  virtual double GetGammaValue() const = 0;
  /// @param value  0 to 4; 1 at the start
  /// @throws GenICam::OutOfRangeException
  virtual void SetGammaValue(double value) = 0;
};

}  // namespace QvApi
