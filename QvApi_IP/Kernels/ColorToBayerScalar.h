// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/ColorToBayer.h"

namespace QvApi::Kernels::Scalar {

/// Components that the even and the odd sites of a row take.
struct SiteComponents {
  SiteComponents(bool isBGR, int phase) {
    const unsigned coloured = IsRedRow(phase) == isBGR ? 2 : 0;
    even = StartsGreen(phase) ? 1 : coloured;
    odd = StartsGreen(phase) ? coloured : 1;
  }

  unsigned even;
  unsigned odd;
};

/// What ColorRowToBayer gives.
template <class T>
void ColorRowToBayer(const T* source, T* destination, size_t width, const ColorLayout& layout,
                     int phase) {
  const SiteComponents sites(layout.isBGR, phase);
  for (size_t x = 0; x < width; ++x) {
    destination[x] = source[x * layout.components + (x % 2 == 0 ? sites.even : sites.odd)];
  }
}

}  // namespace QvApi::Kernels::Scalar
