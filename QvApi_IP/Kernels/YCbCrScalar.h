// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/BayerToMonoScalar.h"
#include "QvApi_IP/Kernels/YCbCr.h"

namespace QvApi::Kernels::Scalar {

/// `sum` as a whole number between two limits.
inline uint8_t Limit(int32_t sum, uint8_t least, uint8_t most) {
  return static_cast<uint8_t>(std::clamp<int32_t>(sum >> kYCbCrFraction, least, most));
}

/// Component 0 to 2 (Y, Cb, Cr) of a colour.
inline uint8_t ColorToComponent(YCbCrMatrix matrix, size_t component, uint8_t r, uint8_t g,
                                uint8_t b) {
  const RGB2YCrCbTable& table = RGB2YCrCbTableOf(matrix);
  const YCbCrLimits limits = LimitsOf(matrix);
  const int32_t sum =
      table[3 * component][r] + table[3 * component + 1][g] + table[3 * component + 2][b];
  return component == 0 ? Limit(sum, limits.minY, limits.maxY)
                        : Limit(sum, limits.minC, limits.maxC);
}

inline void PixelsToYCbCr(YCbCrMatrix matrix, const YCbCrSource& source, const uint8_t* pixels,
                          size_t group, const YCbCrComponents& components, size_t count) {
  const size_t red = source.isBGR ? 2 : 0;
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* pixel = pixels + i * source.step;
    components.luma[i] = ColorToComponent(matrix, 0, pixel[red], pixel[1], pixel[2 - red]);
  }
  for (size_t i = 0; group != 0 && i < count; i += group) {
    const size_t there = std::min(group, count - i);
    std::array<size_t, 3> sums{};
    for (size_t k = 0; k < there; ++k)
      for (size_t c = 0; c < 3; ++c) sums[c] += pixels[(i + k) * source.step + c];
    const auto mean = [&](size_t c) { return static_cast<uint8_t>(sums[c] / there); };
    components.cb[i / group] = ColorToComponent(matrix, 1, mean(red), mean(1), mean(2 - red));
    components.cr[i / group] = ColorToComponent(matrix, 2, mean(red), mean(1), mean(2 - red));
  }
}

inline void BayerTilesToYCbCr(const uint8_t* row, const uint8_t* nextRow, int phase,
                              const YCbCrComponents& components, size_t tiles, size_t following) {
  const BayerRowPair<uint8_t> pair(row, nextRow, phase);
  const uint8_t* greenEven = pair.redIsEven ? pair.blue : pair.red;
  const uint8_t* greenOdd = pair.redIsEven ? pair.red : pair.blue;
  for (size_t k = 0; k < tiles; ++k) {
    const size_t next = k + 1 < tiles + following ? k + 1 : k;
    const uint8_t red = pair.red[2 * k + (pair.redIsEven ? 0 : 1)];
    const uint8_t blue = pair.blue[2 * k + (pair.redIsEven ? 1 : 0)];
    const unsigned g0 = (greenOdd[2 * k + 1] + greenEven[2 * k]) >> 1;
    const unsigned g1 = (greenOdd[2 * k + 1] + greenOdd[2 * next + 1]) >> 1;
    const auto component = [&](size_t which, unsigned green) {
      return ColorToComponent(YCbCrMatrix::Full, which, red, static_cast<uint8_t>(green), blue);
    };
    components.luma[2 * k] = component(0, g0);
    components.luma[2 * k + 1] = component(0, g1);
    if (components.cb == nullptr) continue;
    components.cb[k] = component(1, (g0 + g1) >> 1);
    components.cr[k] = component(2, (g0 + g1) >> 1);
  }
}

inline void PlanesToColor(YCbCrMatrix matrix, const YCbCrPlanes& planes, uint8_t* pixels,
                          size_t step, bool isBGR, size_t count) {
  const YCrCbTable& table = YCrCbTableOf(matrix);
  for (size_t i = 0; i < count; ++i) {
    const int32_t y = table[0][planes.luma[i]];
    const uint8_t cb = planes.cb[i / planes.group];
    const uint8_t cr = planes.cr[i / planes.group];
    uint8_t* pixel = pixels + i * step;
    pixel[isBGR ? 2 : 0] = Limit(y + table[1][cr], 0, 255);
    pixel[1] = Limit(y + table[2][cb] + table[3][cr], 0, 255);
    pixel[isBGR ? 0 : 2] = Limit(y + table[4][cb], 0, 255);
  }
}

}  // namespace QvApi::Kernels::Scalar
