// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// From which pixels to which: samples of a pixel are 3 or 4, the fourth being alpha.
struct ChannelOrder {
  unsigned sourceComponents = 3;
  unsigned destinationComponents = 3;
  /// The first and the third component change places (BGR to RGB and back).
  bool exchange = false;
};

/// Copies components 0 to 2 of `pixels` pixels. Alpha of the source is not used and alpha of the
/// destination keeps what it held. Samples are copied whole, whatever their depth. destination may
/// be source itself if both have the same number of components; otherwise the two must not overlap.
/// Does nothing when a number of components is neither 3 nor 4.
void ReorderChannels(const uint8_t* source, uint8_t* destination, size_t pixels,
                     const ChannelOrder& order);
void ReorderChannels(const uint16_t* source, uint16_t* destination, size_t pixels,
                     const ChannelOrder& order);

}  // namespace QvApi::Kernels
