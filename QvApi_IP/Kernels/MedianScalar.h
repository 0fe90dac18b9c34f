// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/Median.h"

namespace QvApi::Kernels::Scalar {

struct Offset {
  int x, y;
};
using Neighbours = std::array<Offset, 4>;
inline constexpr Neighbours kDiagonal{{{-1, -1}, {1, -1}, {-1, 1}, {1, 1}}};
inline constexpr Neighbours kDirect{{{-1, 0}, {1, 0}, {0, -1}, {0, 1}}};
inline constexpr Neighbours kDirectAtTwo{{{-2, 0}, {2, 0}, {0, -2}, {0, 2}}};

constexpr bool IsGreen(MedianSites sites, size_t x) {
  return (x % 2 == 0) == (sites == MedianSites::GreenAtEven);
}

/// The two middle ones of four samples, in any order.
template <class T>
struct Middle {
  Middle(T a, T b, T c, T d)
      : first(std::max(std::min(a, b), std::min(c, d))),
        second(std::min(std::max(a, b), std::max(c, d))) {}
  T first, second;
};

template <class T>
T Median3(T a, T b, T c) {
  return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

/// The least and the greatest of four samples are never the median of five.
template <class T>
T Median5(T a, T b, T c, T d, T e) {
  const Middle<T> middle(a, b, c, d);
  return Median3(middle.first, middle.second, e);
}

template <class T>
T Mean(T a, T b) {
  return static_cast<T>((a + b) >> 1);
}

/// The median of a pixel and those of its neighbours that exist.
template <const Neighbours& neighbours, class T>
T MedianAt(const MedianWindow<T>& window, size_t x, size_t width) {
  std::array<T, 5> s{window[2][x]};
  size_t count = 1;
  for (const Offset& offset : neighbours) {
    const T* row = window[static_cast<size_t>(2 + offset.y)];
    const size_t column = x + static_cast<size_t>(offset.x);  // wraps round at the left edge
    if (row && column < width) s[count++] = row[column];
  }
  switch (count) {
    case 1:
      return s[0];
    case 2:
      return Mean(s[0], s[1]);
    case 3:
      return Median3(s[0], s[1], s[2]);
    case 4: {
      const Middle<T> middle(s[0], s[1], s[2], s[3]);
      return Mean(middle.first, middle.second);
    }
    default:
      return Median5(s[0], s[1], s[2], s[3], s[4]);
  }
}

/// What MedianRow gives for one pixel.
template <class T>
T MedianOfSite(const MedianWindow<T>& window, size_t x, size_t width, MedianSites sites) {
  if (sites != MedianSites::Mono) {
    return IsGreen(sites, x) ? MedianAt<kDiagonal>(window, x, width)
                             : MedianAt<kDirectAtTwo>(window, x, width);
  }
  const bool isInside = window[1] && window[3] && x != 0 && x + 1 != width;
  return isInside ? MedianAt<kDiagonal>(window, x, width) : MedianAt<kDirect>(window, x, width);
}

/// What MedianRow gives, from column `begin` to before column `end`.
template <class T>
void MedianRow(const MedianWindow<T>& window, T* destination, size_t width, MedianSites sites,
               size_t begin, size_t end) {
  for (size_t x = begin; x < end; ++x) destination[x] = MedianOfSite(window, x, width, sites);
}

}  // namespace QvApi::Kernels::Scalar
