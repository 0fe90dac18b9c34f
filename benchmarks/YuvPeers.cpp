// SPDX-License-Identifier: MIT
#include <libyuv.h>

#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

// libyuv names formats by the order in a register: its RGB24 is BGR8 in memory, its RAW is RGB8.
// Exchanging the ends is the same in both directions.
void Exchange(IQvImage& source, std::uint8_t* destination) {
  const int width = static_cast<int>(source.GetImageWidth());
  libyuv::RAWToRGB24(static_cast<const std::uint8_t*>(source.GetImageBuffer()), 3 * width,
                     destination, 3 * width, width, static_cast<int>(source.GetImageHeight()));
}

constexpr Peer kPeers[] = {{"libyuv RAWToRGB24", Exchange}};

}  // namespace

std::span<const Peer> YuvPeers() { return kPeers; }

}  // namespace Bench
