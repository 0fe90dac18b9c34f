// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/Median.h"

namespace QvApi::Kernels {

/// Bytes that SubtractDarkRow() may write to its marks: one bit for each pixel and some spare.
constexpr size_t DarkMarkBytes(size_t width) { return (width + 7) / 8 + 8; }

/// Takes a row of a dark frame off a row of an image in place; what would be negative becomes 0.
/// Bit x of `marks` (low bits first, DarkMarkBytes() bytes) is set for each pixel that was at or
/// above `limit` and is below it afterwards; true if there is one. Samples are taken as they are,
/// whatever their depth. Nothing may overlap.
bool SubtractDarkRow(uint8_t* row, const uint8_t* dark, size_t width, uint8_t limit,
                     uint8_t* marks);
bool SubtractDarkRow(uint16_t* row, const uint16_t* dark, size_t width, uint16_t limit,
                     uint8_t* marks);

/// Columns or rows from `begin` to before `end`.
struct DarkRepairRange {
  size_t begin = 0, end = 0;
  constexpr bool Contains(size_t at) const { return begin <= at && at < end; }
};

/// Columns (or rows) of an image of that width (or height) that are repaired. Those of a mosaic
/// come in pairs, so that with an odd size one more stays at the far side.
constexpr DarkRepairRange DarkRepairs(MedianSites sites, size_t size) {
  if (sites == MedianSites::Mono)
    return size < 3 ? DarkRepairRange{} : DarkRepairRange{1, size - 1};
  return size < 6 ? DarkRepairRange{} : DarkRepairRange{2, 2 + (size - 4) / 2 * 2};
}

/// Raises each marked pixel to the median of itself and its four neighbours of the same colour
/// (diagonal ones for mono and green, those at distance 2 for red and blue) if that is greater.
/// From left to right, so that later pixels see earlier repairs. `window` holds `row` in its middle
/// and all rows around that it needs: one above and below for mono, else two.
void RepairDarkRow(const MedianWindow<uint8_t>& window, uint8_t* row, size_t width,
                   MedianSites sites, const uint8_t* marks);
void RepairDarkRow(const MedianWindow<uint16_t>& window, uint16_t* row, size_t width,
                   MedianSites sites, const uint8_t* marks);

}  // namespace QvApi::Kernels
