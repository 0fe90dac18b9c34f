// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// The channels of images, each with a gain and two offsets of its own.
enum EQvBalanceRatioSelector_t : unsigned {
  QvBalanceRatioSelector_Red = 0,
  QvBalanceRatioSelector_Green = 1,
  QvBalanceRatioSelector_Blue = 2,
  QvBalanceRatioSelector_Y = 3,  ///< Luminance, and the samples of monochrome images.
  QvBalanceRatioSelector_Cb = 4,
  QvBalanceRatioSelector_Cr = 5,
};

/// Who sets the white balance.
enum EQvBalanceWhiteAuto_t : unsigned {
  QvBalanceWhiteAuto_Off = 0,         ///< The application.
  QvBalanceWhiteAuto_Once = 1,        ///< Each image, until one changes next to nothing; then Off.
  QvBalanceWhiteAuto_Continuous = 2,  ///< Each image.
};

/// Balances the channels of an image in place: each code becomes
///
///     gain * (code + offset before gain) + offset after gain
///
/// in double precision (multiplied and added with one rounding), truncated towards zero and limited
/// to the range of the format: full scale, and for `YCbCr709_422_8` 16 to 235 (luminance) and 240
/// (chrominance). Offsets are in codes of the image and do not scale with its depth. Samples above
/// their depth are masked to it first.
///
/// Red, Green and Blue act on BGR and RGB formats of 8 bits, BGR formats of 10 to 16 bits (alpha
/// stays) and Bayer formats; Y on Mono formats; Y, Cb and Cr on `YCbCr8`, `YCbCr422_8`,
/// `YCbCr411_8` and `YCbCr709_422_8`, where pixels behind the last whole group of 2 (4:2:2) or 4
/// (4:1:1) stay. Packed formats are not supported. At the start all channels are left as they are,
/// within the limits of their format.
///
/// The automatic modes measure each image before they balance it. In colour and Bayer images the
/// channel with the highest mean gets the ratio 1, and the others the ratio that lifts their mean
/// to the same level, at most 16; their offsets before the gain count as part of the mean. In YCbCr
/// images the offsets of Cb and Cr before the gain are set to minus their mean, their gain to 1 and
/// their offset after it to 128. Mono images are not measured and end no Once.
class QVAPI_EXPORT IQvBalanceRatioFilter : public virtual IQvFilter {
 public:
  /// @throws GenICam::OutOfRangeException  there is no such channel; so do all below
  virtual double GetBalanceRatio(EQvBalanceRatioSelector_t channel) const = 0;
  /// @param value  0 to 16; 1 at the start. An automatic mode may find negative ratios, and NaN
  ///               where a black image has none.
  /// @throws GenICam::OutOfRangeException
  virtual void SetBalanceRatio(EQvBalanceRatioSelector_t channel, double value) = 0;

  virtual int GetOffsetLevelBeforeGain(EQvBalanceRatioSelector_t channel) const = 0;
  /// @param value  -255 to 255; at the start -128 for Cb and Cr, 0 for the others
  /// @throws GenICam::OutOfRangeException
  virtual void SetOffsetLevelBeforeGain(EQvBalanceRatioSelector_t channel, int value) = 0;

  virtual int GetOffsetLevelAfterGain(EQvBalanceRatioSelector_t channel) const = 0;
  /// @param value  0 to 255; at the start 128 for Cb and Cr, 0 for the others. Larger than the
  ///               upper limit of the image's codes it counts as that.
  /// @throws GenICam::OutOfRangeException
  virtual void SetOffsetLevelAfterGain(EQvBalanceRatioSelector_t channel, int value) = 0;

  virtual EQvBalanceWhiteAuto_t GetBalanceWhiteAuto() const = 0;
  /// @param mode  `Off` at the start
  /// @throws GenICam::OutOfRangeException
  virtual void SetBalanceWhiteAuto(EQvBalanceWhiteAuto_t mode) = 0;
};

}  // namespace QvApi
