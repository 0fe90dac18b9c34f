// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Which samples of a row are neighbours of the same colour.
enum class MedianSites {
  Mono,
  GreenAtEven,  ///< A mosaic's row with green at even columns.
  GreenAtOdd,
};

/// Sites of the rows above and below a row.
constexpr MedianSites SitesOfNextRow(MedianSites sites) {
  if (sites == MedianSites::Mono) return sites;
  return sites == MedianSites::GreenAtEven ? MedianSites::GreenAtOdd : MedianSites::GreenAtEven;
}

/// A row, which is the middle one, with the two above and the two below it; null where the image
/// ends.
template <class T>
using MedianWindow = std::array<const T*, 5>;

/// Writes the median of each pixel and its neighbours of the same colour:
///
/// | site             | neighbours                              |
/// |------------------|-----------------------------------------|
/// | mono, inside     | the four diagonal ones                  |
/// | mono, at an edge | the four direct ones                    |
/// | green            | the four diagonal ones                  |
/// | red, blue        | those at distance 2 in four directions  |
///
/// Neighbours outside the image are left out; the median of an even number of samples is the mean
/// of the two middle ones, rounded down. Samples are taken as they are, whatever their depth.
/// `destination` must not overlap the window's rows.
void MedianRow(const MedianWindow<uint8_t>& window, uint8_t* destination, size_t width,
               MedianSites sites);
void MedianRow(const MedianWindow<uint16_t>& window, uint16_t* destination, size_t width,
               MedianSites sites);

}  // namespace QvApi::Kernels
