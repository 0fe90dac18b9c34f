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

/// Lines of bytes of an image, `Source` to `destination`.
struct Bytes {
  explicit Bytes(IQvImage& source)
      : first(static_cast<const std::uint8_t*>(source.GetImageBuffer())),
        pitch(static_cast<int>(source.GetImageLinePitch())),
        width(static_cast<int>(source.GetImageWidth())),
        height(static_cast<int>(source.GetImageHeight())) {}

  const std::uint8_t* first;
  int pitch, width, height;
};

void MirrorY(IQvImage& source, std::uint8_t* destination) {
  const Bytes from(source);
  libyuv::CopyPlane(from.first, from.pitch, destination, from.pitch, from.pitch, -from.height);
}

void MirrorBytes(IQvImage& source, std::uint8_t* destination) {
  const Bytes from(source);
  libyuv::MirrorPlane(from.first, from.pitch, destination, from.pitch, from.width, from.height);
}

void MirrorPixels(IQvImage& source, std::uint8_t* destination) {
  const Bytes from(source);
  libyuv::RGB24Mirror(from.first, from.pitch, destination, from.pitch, from.width, from.height);
}

template <libyuv::RotationMode Turn>
void RotateBytes(IQvImage& source, std::uint8_t* destination) {
  const Bytes from(source);
  libyuv::RotatePlane(from.first, from.pitch, destination, from.height, from.width, from.height,
                      Turn);
}

constexpr Peer kPeers[] = {
    {"libyuv RAWToRGB24", Exchange},
    {"libyuv CopyPlane", MirrorY},
    {"libyuv MirrorPlane", MirrorBytes},
    {"libyuv RGB24Mirror", MirrorPixels},
    {"libyuv RotatePlane90", RotateBytes<libyuv::kRotate90>},
    {"libyuv RotatePlane270", RotateBytes<libyuv::kRotate270>},
};

}  // namespace

std::span<const Peer> YuvPeers() { return kPeers; }

}  // namespace Bench
