// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/DarkFrame.h"
#include "QvApi_IP/Kernels/MedianScalar.h"

namespace QvApi::Kernels::Scalar {

/// What SubtractDarkRow gives.
template <class T>
bool SubtractDarkRow(T* row, const T* dark, size_t width, T limit, uint8_t* marks) {
  std::fill_n(marks, (width + 7) / 8, uint8_t{0});
  bool found = false;
  for (size_t x = 0; x < width; ++x) {
    const T before = row[x];
    row[x] = static_cast<T>(before > dark[x] ? before - dark[x] : 0);
    if (before < limit || row[x] >= limit) continue;
    marks[x / 8] = static_cast<uint8_t>(marks[x / 8] | 1U << x % 8);
    found = true;
  }
  return found;
}

/// What RepairDarkRow gives, from column `begin` to before column `end`.
template <class T>
void RepairDarkRow(const MedianWindow<T>& window, T* row, size_t width, MedianSites sites,
                   const uint8_t* marks, size_t begin, size_t end) {
  for (size_t x = begin; x < end; ++x) {
    if ((marks[x / 8] >> x % 8 & 1) == 0) continue;
    const bool isDiagonal = sites == MedianSites::Mono || IsGreen(sites, x);
    row[x] = std::max(row[x], isDiagonal ? MedianAt<kDiagonal>(window, x, width)
                                         : MedianAt<kDirectAtTwo>(window, x, width));
  }
}

}  // namespace QvApi::Kernels::Scalar
