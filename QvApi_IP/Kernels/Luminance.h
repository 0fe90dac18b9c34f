// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace QvApi::Kernels {

/// (2 R + 5 G + B) / 8, cut off: the grey level of a colour in all kernels that need one. Exact for
/// all samples of 8 and 16 bits. Its vector form stands in Luminance-inl.h.
template <class T>
constexpr T Luminance(uint32_t red, uint32_t green, uint32_t blue) {
  return static_cast<T>((2 * red + 5 * green + blue) >> 3);
}

}  // namespace QvApi::Kernels
