// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/IQvFilter.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// Adds up a series of images pixel by pixel and gives their mean, which has less noise, at any
/// depth. Images given to Filter() stay unchanged. Mono, Bayer and polarizer formats are supported,
/// packed ones too.
///
/// All images of a series have the format and the size of the first. A series has so many images at
/// most as sums of 32 bits can hold: 2^24 with samples of 8 bits and fewer, 2^(32 - depth) with
/// deeper ones. Samples count as they are; sums of samples above their depth may wrap.
///
/// Where Filter() cannot add an image it keeps what has been added and throws
/// - InvalidArgumentException "Not supported pixel format.", not the text of other filters;
/// - InvalidArgumentException "Pixel format or image size is changed.";
/// - RuntimeException "Too many frame." if the series is full;
/// - BadAllocException if there is no memory for the sums.
class QVAPI_EXPORT IQvImageAveragingFilter : public virtual IQvFilter {
 public:
  /// Makes the mean of all images of the series; the series goes on. Means are rounded, halves
  /// upwards, and end at full scale.
  /// @param pBuffer  gets an image of the series' size
  /// @param nBits    depth of that image, of the series' kind of pixels: 8, 10, 12, 14 or 16 for
  ///                 mono and Bayer, 32 also for mono, 8, 10 or 12 for polarizer formats; 0 for
  ///                 that of the series, and 8 if that has fewer. Samples are not packed. Full
  ///                 scale becomes full scale.
  /// @throws GenICam::InvalidArgumentException  the buffer is null
  /// @throws GenICam::RuntimeException          "There is no image data.", or "Output pixel format
  ///                                            is not valid."
  virtual void GetAveragedImage(IQvImageBuffer* pBuffer, std::size_t nBits) = 0;

  /// Ends the series; the next image begins another. Waits for nothing: an image that is being
  /// added to a series meanwhile is lost with it.
  virtual void ClearImageData() = 0;

  /// Images that have been added to the series. Waits for one that is being added.
  virtual std::uint64_t GetFrameCount() = 0;
};

}  // namespace QvApi
