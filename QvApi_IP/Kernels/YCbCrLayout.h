// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Where the bytes of an interleaved YCbCr line lie: groups of 1, 2 or 4 pixels in 3, 4 or 6 bytes,
/// that share a pair of chrominance values. In 4:4:4 and 4:1:1 luminance comes in one piece or
/// around chrominance, in 4:2:2 every other byte is luminance.
struct YCbCrLayout {
  size_t pixels = 1;
  size_t bytes = 3;
  std::array<uint8_t, 4> luma{};  ///< Byte of each pixel's luminance.
  uint8_t cb = 1;
  uint8_t cr = 2;

  bool IsLumaFirst() const { return luma[0] < cb; }
  /// Bytes of a line of `width` pixels, those of a begun pixel being part of it.
  size_t LineBytes(size_t width) const { return (width * bytes + pixels - 1) / pixels; }
  /// Pixels that share a value in the lines of UnweaveYCbCr().
  size_t ChromaGroup() const { return pixels == 1 ? 1 : 2; }
};

/// Lines of one component each.
template <class T>
struct YCbCrLines {
  T* luma;
  T* cb;
  T* cr;
};

/// Puts components together. There is a chrominance value a group. Of a last group that is not
/// complete just the bytes inside the line are written that belong to pixels which exist.
void WeaveYCbCr(const YCbCrLayout& layout, const YCbCrLines<const uint8_t>& lines,
                uint8_t* interleaved, size_t width);

/// Takes components apart. There is a chrominance value every ChromaGroup() pixels, so those of
/// groups of four come twice; the lines of chrominance have room for (width + 3) / 4 * 4 values.
/// Chrominance that the line ends before is that of the group before, which exists if `follows` or
/// if the width is more than a group, or else 128. No byte behind the line is read.
void UnweaveYCbCr(const YCbCrLayout& layout, const uint8_t* interleaved, bool follows,
                  const YCbCrLines<uint8_t>& lines, size_t width);

}  // namespace QvApi::Kernels
