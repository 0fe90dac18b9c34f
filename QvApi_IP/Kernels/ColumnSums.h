// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Most lines that AddToColumns() takes at once.
inline constexpr size_t kMaxColumnLines = 8;

/// Adds the samples of some lines to the sums of their columns, modulo 2^32. Samples count with
/// their whole value, also above their depth.
/// @param samples  first sample of the first line
/// @param pitch    bytes from one line to the next
/// @param lines    up to kMaxColumnLines
/// @param count    samples of a line; as many sums
void AddToColumns(const uint8_t* samples, ptrdiff_t pitch, size_t lines, size_t count,
                  uint32_t* sums);
/// Samples of 16 bits stand at even addresses.
void AddToColumns(const uint16_t* samples, ptrdiff_t pitch, size_t lines, size_t count,
                  uint32_t* sums);

}  // namespace QvApi::Kernels
