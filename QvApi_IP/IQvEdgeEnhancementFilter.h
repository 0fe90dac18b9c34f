// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// Sharpens an image in place (an unsharp mask with a dead band): a pixel that differs from the
/// rounded mean of its eight neighbours by more than a threshold moves away from that mean, by
/// `strength` times what the difference has above the threshold, rounded, up to 0 or full scale.
///
/// Neighbours count as they were before the filter ran. Colour pixels are compared in grey,
/// (2 R + 5 G + B) / 8, and their components all move alike; luminance and chrominance formats
/// change in luminance only; alpha stays. The outermost rows and columns stay, and so do images
/// that are less than 3 pixels wide or high. Mosaics and packed formats are not supported.
///
/// The table of corrections is made for the depth of the first image after a change of a setting,
/// and it stays in use for images of other depths until the next change: set a setting anew when
/// the format changes.
class QVAPI_EXPORT IQvEdgeEnhancementFilter : public virtual IQvFilter {
 public:
  virtual double GetStrength() const = 0;
  /// @param value  0 to 32; 0, at the start, changes nothing
  /// @throws GenICam::OutOfRangeException
  virtual void SetStrength(double value) = 0;

  virtual unsigned int GetThresh() const = 0;
  /// @param value  0 to 255, in units of 8-bit images at all depths; 0 at the start. Differences
  ///               up to this change nothing.
  /// @throws GenICam::OutOfRangeException
  virtual void SetThresh(unsigned int value) = 0;
};

}  // namespace QvApi
