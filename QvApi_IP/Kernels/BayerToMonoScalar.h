// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/BayerToMono.h"
#include "QvApi_IP/Kernels/Luminance.h"

namespace QvApi::Kernels::Scalar {

/// Two rows of a mosaic, named by the colour that they hold beside green.
template <class T>
struct BayerRowPair {
  BayerRowPair(const T* row, const T* nextRow, int phase)
      : red(IsRedRow(phase) ? row : nextRow),
        blue(IsRedRow(phase) ? nextRow : row),
        redIsEven(IsRedRow(phase) != StartsGreen(phase)) {}

  const T* red;
  const T* blue;
  /// Red is in even columns of its row and blue in odd ones, or the other way about.
  bool redIsEven;
};

/// Pixel x of what BayerRowToMono gives.
template <class T>
T BayerPixelToMono(const T* row, const T* nextRow, size_t x, size_t width, int phase) {
  const BayerRowPair<T> pair(row, nextRow, phase);
  const bool isLast = x + 1 == width;
  const size_t next = !isLast ? x + 1 : width == 1 ? 0 : width - 2;
  const bool redHere = pair.redIsEven == (x % 2 == 0);
  const uint32_t red = pair.red[redHere ? x : next];
  const uint32_t blue = pair.blue[redHere ? next : x];
  const uint32_t green1 = pair.red[redHere ? next : x];
  const uint32_t green2 = pair.blue[redHere ? x : next];
  const bool isGreen = StartsGreen(phase) == (x % 2 == 0);
  const bool keepsOwn = isLast && width % 2 == 0 && isGreen;
  return Luminance<T>(red, keepsOwn ? row[x] : (green1 + green2) >> 1, blue);
}

/// What BayerRowToMono gives.
template <class T>
void BayerRowToMono(const T* row, const T* nextRow, T* destination, size_t width, int phase) {
  for (size_t x = 0; x < width; ++x) {
    destination[x] = BayerPixelToMono(row, nextRow, x, width, phase);
  }
}

}  // namespace QvApi::Kernels::Scalar
