// SPDX-License-Identifier: MIT
#include "Peers.h"

#include <cmath>
#include <vector>

namespace Bench {

using namespace QvApi;

namespace {

// The loop that anybody would write.
void LookUp16(IQvImage& source, std::uint8_t* destination) {
  static const std::vector<std::uint16_t> kTable = [] {
    std::vector<std::uint16_t> table(4096);
    for (std::size_t i = 0; i < table.size(); ++i)
      table[i] =
          static_cast<std::uint16_t>(std::pow(static_cast<double>(i) / 4095, kGamma) * 4095 + 0.5);
    return table;
  }();
  const auto* from = static_cast<const std::uint16_t*>(source.GetImageBuffer());
  auto* to = reinterpret_cast<std::uint16_t*>(destination);
  const std::size_t count = source.GetImageWidth() * source.GetImageHeight();
  for (std::size_t i = 0; i < count; ++i) to[i] = kTable[from[i]];
}

constexpr Peer kPlainPeers[] = {{"plain loop", LookUp16}};

struct Library {
  const char* name;
  std::span<const Peer> (*peers)();
};

constexpr Library kLibraries[] = {
    {"plain loops", PlainPeers},
#if QVAPI_BENCH_OPENCV
    {"OpenCV", OpenCvPeers},
#endif
#if QVAPI_BENCH_DC1394
    {"libdc1394", Dc1394Peers},
#endif
#if QVAPI_BENCH_YUV
    {"libyuv", YuvPeers},
#endif
};

}  // namespace

std::span<const Peer> PlainPeers() { return kPlainPeers; }

const Peer* FindPeer(std::string_view name) {
  for (const Library& library : kLibraries)
    for (const Peer& peer : library.peers())
      if (peer.name == name) return &peer;
  return nullptr;
}

std::string PeerLibraries() {
  std::string text;
  for (const Library& library : kLibraries)
    text += (text.empty() ? "" : ", ") + std::string(library.name);
  return text;
}

}  // namespace Bench
