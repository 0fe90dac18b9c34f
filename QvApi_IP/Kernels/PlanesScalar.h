// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/Luminance.h"
#include "QvApi_IP/Kernels/Planes.h"

namespace QvApi::Kernels::Scalar {

/// What SplitPixels gives.
template <class T>
void SplitPixels(const T* pixels, size_t step, const PlaneLines<T>& planes, size_t count) {
  for (size_t i = 0; i < count; ++i)
    for (size_t c = 0; c < 3; ++c) planes[c][i] = pixels[i * step + c];
}

/// What MergePixels gives.
template <class T>
void MergePixels(const PlaneLines<const T>& planes, T* pixels, size_t step, size_t count) {
  for (size_t i = 0; i < count; ++i)
    for (size_t c = 0; c < 3; ++c) pixels[i * step + c] = planes[c][i];
}

/// What PixelsToGrey gives.
template <class T>
void PixelsToGrey(const ColorPixels& layout, const T* pixels, T* grey, size_t count) {
  const unsigned mask = (1u << layout.depth) - 1;
  for (size_t i = 0; i < count; ++i) {
    const T* pixel = pixels + i * layout.step;
    const unsigned red = pixel[layout.isBGR ? 2 : 0] & mask;
    const unsigned blue = pixel[layout.isBGR ? 0 : 2] & mask;
    grey[i] = Luminance<T>(red, pixel[1] & mask, blue);
  }
}

/// What PackPixelWords gives.
inline void PackPixelWords(const uint16_t* pixels, size_t step, bool exchange, uint8_t* words,
                           size_t count) {
  for (size_t i = 0; i < count; ++i) {
    unsigned word = 0;
    for (size_t c = 0; c < 3; ++c)
      word |= (pixels[i * step + c] & 0x3FFu) << 10 * (exchange ? 2 - c : c);
    for (size_t byte = 0; byte < 4; ++byte)
      words[4 * i + byte] = static_cast<uint8_t>(word >> 8 * byte);
  }
}

/// What UnpackPixelWords gives.
inline void UnpackPixelWords(const uint8_t* words, uint16_t* pixels, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    unsigned word = 0;
    for (size_t byte = 4; byte-- > 0;) word = word << 8 | words[4 * i + byte];
    for (size_t c = 0; c < 3; ++c)
      pixels[3 * i + c] = static_cast<uint16_t>(word >> 10 * c & 0x3FF);
  }
}

}  // namespace QvApi::Kernels::Scalar
