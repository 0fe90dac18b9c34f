// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"

namespace QvApi {

/// Throws RuntimeException "Not supported pixelformat %s" with the format's name, or its code as
/// 0x%08X if it has none.
[[noreturn]] void ThrowNotSupported(PixelFormat format);

/// The information of a format that is known to exist.
const IQvPixelFormatInfoInside& FormatInfo(PixelFormat format);

/// Each sample of 16 or 32 bits stands at an address that its size divides. True of an image
/// without memory.
bool HasAlignedSamples(const IQvImage& image);

/// Where the pixels of an image are: what a handler reads once, before it walks the lines.
class ImageLines {
 public:
  /// With `upward`, line 0 is the image's last one and lines run towards the first, as a
  /// destination is written to flip an image.
  /// @throws GenICam::RuntimeException  "There is no available image."
  explicit ImageLines(const IQvImage& image, bool upward = false);

  std::size_t Width() const { return m_width; }
  std::size_t Height() const { return m_height; }
  const IQvPixelFormatInfoInside& Format() const { return m_format; }
  /// Significant bits of a component.
  std::size_t Depth() const { return m_format.GetEachComponentEffectiveBitCount(); }
  /// Greatest value of a component.
  unsigned FullScale() const { return (1U << Depth()) - 1; }
  /// Components of a pixel, which is also the step from pixel to pixel in interleaved formats.
  std::size_t Components() const { return m_format.GetComponentCount(); }
  /// Bytes from one line to the next, negative when upward.
  std::ptrdiff_t Pitch() const { return m_pitch; }

  template <class T>
  T* Line(std::size_t y, std::size_t plane = 0) const {
    return reinterpret_cast<T*>(m_first + static_cast<std::ptrdiff_t>(plane * m_planePitch) +
                                static_cast<std::ptrdiff_t>(y) * m_pitch);
  }

  /// Calls `function(line)` for each line of the first plane.
  template <class T, class Function>
  void ForEach(Function function) const {
    for (std::size_t y = 0; y < m_height; ++y) function(Line<T>(y));
  }

 private:
  const IQvPixelFormatInfoInside& m_format;
  const std::size_t m_width;
  const std::size_t m_height;
  const std::size_t m_planePitch;
  std::uint8_t* m_first;
  std::ptrdiff_t m_pitch;
};

}  // namespace QvApi
