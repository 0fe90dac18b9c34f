// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/ChromaSuppression.h"
#include "QvApi_IP/Kernels/Luminance.h"

namespace QvApi::Kernels::Scalar {

/// A component moved towards green by factor / 256 of the distance, rounded down, never past green.
template <class T>
T MoveToGreen(T component, T green, uint32_t factor) {
  const int64_t product = (int64_t{green} - component) * factor;
  if (product > 0) return static_cast<T>(std::min<int64_t>(component + (product >> 8), green));
  return static_cast<T>(component - (-product >> 8) >= green ? component - (-product >> 8)
                                                             : int64_t{green});
}

/// What SuppressChroma gives.
template <class T>
void SuppressChroma(const ChromaSuppression& settings, T* line, size_t pixels) {
  for (const T* end = line + pixels * settings.components; line != end;
       line += settings.components) {
    T& red = line[settings.blueFirst ? 2 : 0];
    T& blue = line[settings.blueFirst ? 0 : 2];
    const T green = line[1];
    const uint32_t luminance = Luminance<T>(red, green, blue) >> (settings.depth - 8);
    const bool isDark = luminance < settings.lowThreshold;
    const bool isBright = luminance > settings.highThreshold;
    if (!isDark && !isBright) continue;
    uint32_t factor = isDark ? (settings.lowThreshold + 1 - luminance) * settings.lowStrength : 0;
    if (isBright)
      factor = std::max(factor, (luminance - settings.highThreshold + 1) * settings.highStrength);
    red = MoveToGreen(red, green, factor);
    blue = MoveToGreen(blue, green, factor);
  }
}

}  // namespace QvApi::Kernels::Scalar
