// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvApi_IP/IQvConverter.h"

namespace QvApi {

/// Quarter turns of an image.
enum EQvRotationMode_t : unsigned {
  QvRotationMode_OFF = 0,
  QvRotationMode_Clockwise90 = 1,
  QvRotationMode_Counterclockwise90 = 2,
};

/// Mirrors images and turns them by a quarter, keeping pixel values and depth. Mirroring acts
/// first.
///
/// Mono, Bayer and polarizer formats that are not packed are taken, and interleaved colour. A
/// mosaic gets the format in which each sample keeps its colour or its polarizer. Any format is
/// taken as long as nothing is to be done: the image is copied then as IQvImageBuffer::CopyImage()
/// does. Alpha of the destination keeps what it held, except when the image is mirrored in y alone.
///
/// Convert() refuses other formats with "Not supported pixelformat %s". Two threads may use one
/// converter at once, and setters may be called meanwhile: a change takes effect at the next image.
/// A conversion from a buffer's own image into that buffer works.
class QVAPI_EXPORT IQvReverseConverter : public virtual IQvConverter {
 public:
  /// Bytes that lines of the destination are aligned to; 1 at the start, 0 takes the format's
  /// default.
  virtual std::size_t GetLinePitchAlignment() const = 0;
  virtual void SetLinePitchAlignment(std::size_t alignment) = 0;

  /// Exchanges left and right; off at the start.
  virtual bool GetReverseX() const = 0;
  virtual void SetReverseX(bool reverse) = 0;

  /// Exchanges top and bottom; off at the start.
  virtual bool GetReverseY() const = 0;
  virtual void SetReverseY(bool reverse) = 0;

  /// `OFF` at the start. Quarter turns exchange width and height.
  /// @throws GenICam::OutOfRangeException
  virtual EQvRotationMode_t GetRotationMode() const = 0;
  virtual void SetRotationMode(EQvRotationMode_t mode) = 0;
};

}  // namespace QvApi
