// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvPixelComponent.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// An image: a rectangle of pixels in memory that somebody else owns.
///
/// Sizes are in pixels, pitches in bytes. None of the operations is synchronised; reading one image
/// from several threads is fine as long as none of them calls GetROIImage() or
/// GetIQvPixelComponentValue(), which change what the image holds.
class QVAPI_EXPORT IQvImage {
 public:
  virtual ~IQvImage() = default;

  /// Pixels of a line.
  virtual std::size_t GetImageWidth() const = 0;
  /// Lines.
  virtual std::size_t GetImageHeight() const = 0;
  /// Bytes from one line to the next.
  virtual std::size_t GetImageLinePitch() const = 0;
  /// Bytes from one plane to the next (planar formats).
  virtual std::size_t GetImagePlanePitch() const = 0;
  /// What the pixels are; PixelFormat::None for an image without memory.
  virtual EQvPixelFormatNamingConvention_t GetImagePixelFormat() const = 0;
  /// The first byte of the first line. Valid as long as the memory's owner keeps it.
  virtual void* GetImageBuffer() const = 0;
  /// The context value that the allocator gave with the memory.
  virtual void* GetUserContext() const = 0;
  /// A view of a rectangle, which shares the pixels. The image owns it and has just one: it is
  /// valid until the next call on the same image or the image's end. The rectangle must fit the
  /// increments of the format (IQvPixelFormatInfo::GetROIIncrementX()).
  /// @throws GenICam::OutOfRangeException  the rectangle is not inside the image or off the grid
  /// @throws GenICam::RuntimeException     planar 4:2:0 with an odd size
  virtual IQvImage* GetROIImage(std::size_t x, std::size_t y, std::size_t width,
                                std::size_t height) = 0;
  /// The components of one pixel. The image owns the result; the next call loads it anew.
  virtual const CQvPixelComponent& GetIQvPixelComponentValue(std::size_t x, std::size_t y) = 0;
};

/// An image whose answers the modules can trust. Converters, filers and CopyImage() accept only
/// images that are also this; derive from it to hand in images of your own.
class QVAPI_EXPORT IQvImageInside : public IQvImage {};

}  // namespace QvApi
