// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Sorts a line of items into two: those at even places go to `even`, those at odd places to `odd`,
/// `pairs` of each. An item has 1, 2 or 4 bytes, and addresses need no alignment. The lines must
/// not overlap.
void SplitColumns(const uint8_t* line, size_t itemBytes, uint8_t* even, uint8_t* odd, size_t pairs);

}  // namespace QvApi::Kernels
