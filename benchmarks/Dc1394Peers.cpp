// SPDX-License-Identifier: MIT
#include <dc1394/conversions.h>

#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

template <dc1394bayer_method_t Method>
void Decode(IQvImage& source, std::uint8_t* destination) {
  const auto width = static_cast<std::uint32_t>(source.GetImageWidth());
  const auto height = static_cast<std::uint32_t>(source.GetImageHeight());
  const IQvPixelFormatInfo* info = GetIQvPixelFormatInfo(source.GetImagePixelFormat());
  if (info->GetTotalBitCount() > 8)
    dc1394_bayer_decoding_16bit(
        static_cast<const std::uint16_t*>(source.GetImageBuffer()),
        reinterpret_cast<std::uint16_t*>(destination), width, height, DC1394_COLOR_FILTER_RGGB,
        Method, static_cast<std::uint32_t>(info->GetEachComponentEffectiveBitCount()));
  else
    dc1394_bayer_decoding_8bit(static_cast<const std::uint8_t*>(source.GetImageBuffer()),
                               destination, width, height, DC1394_COLOR_FILTER_RGGB, Method);
}

constexpr Peer kPeers[] = {
    {"libdc1394 nearest", Decode<DC1394_BAYER_METHOD_NEAREST>},
    {"libdc1394 bilinear", Decode<DC1394_BAYER_METHOD_BILINEAR>},
    {"libdc1394 HQLinear", Decode<DC1394_BAYER_METHOD_HQLINEAR>},
    {"libdc1394 edge-sense", Decode<DC1394_BAYER_METHOD_EDGESENSE>},
};

}  // namespace

std::span<const Peer> Dc1394Peers() { return kPeers; }

}  // namespace Bench
