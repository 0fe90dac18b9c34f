// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/YCbCrLayout.h"
#include "QvApi_IP/Kernels/YCbCrTables.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_TL/PixelFormatTable.h"
#include "QvSDKCommon/Planar420.h"

namespace QvApi {

inline bool IsPlanar420(const IQvImage& image) {
  return image.GetImagePixelFormat() == PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar;
}

/// The matrix of an interleaved YCbCr or YUV format. Full range is what the names without a number
/// have.
Kernels::YCbCrMatrix MatrixOf(const PixelFormatRow& row);

/// Where the bytes of an interleaved YCbCr or YUV format lie.
Kernels::YCbCrLayout LayoutOf(const PixelFormatRow& row);

/// The planes of planar 4:2:0, lines running upward if wanted.
class Planar420Lines {
 public:
  /// `image` itself runs downward. The planes follow each other without padding, whatever its
  /// pitch.
  explicit Planar420Lines(const ImageLines& image, bool upward = false)
      : m_planes(image.Width(), image.Height(), image.Width()),
        m_first(image.Line<std::uint8_t>(0)),
        m_upward(upward) {}

  /// Of the chrominance planes.
  std::size_t ChromaWidth() const { return m_planes.planes[1].width; }
  std::size_t ChromaHeight() const { return m_planes.planes[1].height; }

  std::uint8_t* Luma(std::size_t y) const { return Line(0, y); }
  std::uint8_t* Cb(std::size_t y) const { return Line(1, y); }
  std::uint8_t* Cr(std::size_t y) const { return Line(2, y); }

 private:
  std::uint8_t* Line(std::size_t index, std::size_t y) const {
    const Planar420::Plane& plane = m_planes.planes[index];
    return m_first + plane.offset + (m_upward ? plane.height - 1 - y : y) * plane.pitch;
  }

  const Planar420 m_planes;
  std::uint8_t* const m_first;
  const bool m_upward;
};

/// Components of a part of a line on their way, in the first-level cache.
inline constexpr std::size_t kYCbCrPiece = 1024;

struct YCbCrRoom {
  alignas(64) std::array<std::uint8_t, kYCbCrPiece + 64> luma, cb, cr;
};

/// Calls `function(x, width)` for the pieces of a line. No piece but the only one is a single
/// pixel, and all but the last are of whole groups.
template <class Function>
void ForEachYCbCrPiece(std::size_t lineWidth, Function function) {
  for (std::size_t x = 0; x < lineWidth;) {
    const std::size_t rest = lineWidth - x;
    const std::size_t width = rest <= kYCbCrPiece + 1 ? rest : kYCbCrPiece;
    function(x, width);
    x += width;
  }
}

}  // namespace QvApi
