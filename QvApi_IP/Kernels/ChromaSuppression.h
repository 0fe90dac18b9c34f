// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// How the colour of dark and of bright pixels is moved towards grey, and of what pixels.
///
/// A pixel of luminance Y = (2 R + 5 G + B) / 8, taken to 8 bits, is dark if Y < lowThreshold and
/// bright if Y > highThreshold. Its factor is the larger one of (lowThreshold + 1 - Y) *
/// lowStrength if it is dark and (Y - highThreshold + 1) * highStrength if it is bright, in
/// unsigned 32-bit arithmetic. Red and blue move by factor / 256 of their distance to green, at
/// most to green. Where the factor of a dark or bright pixel is 0 (by wrapping, or because of
/// samples above their depth), components below green become green.
struct ChromaSuppression {
  uint32_t lowThreshold = 0;
  uint32_t lowStrength = 0;
  uint32_t highThreshold = 255;
  uint32_t highStrength = 0;
  unsigned depth = 8;     ///< Significant bits of a sample, 8 to 16.
  size_t components = 3;  ///< Samples of a pixel, 3 or 4; the fourth is alpha and stays.
  bool blueFirst = true;  ///< B G R, else R G B.
};

/// Suppresses the colour of `pixels` pixels in place. Samples above their depth are used as they
/// are.
void SuppressChroma(const ChromaSuppression& settings, uint8_t* line, size_t pixels);
void SuppressChroma(const ChromaSuppression& settings, uint16_t* line, size_t pixels);

}  // namespace QvApi::Kernels
