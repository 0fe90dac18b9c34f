// SPDX-License-Identifier: MIT
#include "Peers.h"

#include <cmath>
#include <cstdio>
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

// Mono8 or Mono12p, each value as text.
void PrintValues(IQvImage& image, const std::string& fileName) {
  const bool packed = image.GetImagePixelFormat() == PixelFormat::Mono12p;
  const auto* line = static_cast<const std::uint8_t*>(image.GetImageBuffer());
  std::FILE* file = std::fopen(fileName.c_str(), "wb");
  std::fprintf(file, "Width=%zu\nHeight=%zu\nPixelFormat=%s\n", image.GetImageWidth(),
               image.GetImageHeight(), packed ? "Mono12p" : "Mono8");
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y, line += image.GetImageLinePitch()) {
    for (std::size_t x = 0; x < image.GetImageWidth(); ++x) {
      const std::uint8_t* at = line + x * 3 / 2;
      std::fprintf(file, "%d,",
                   !packed      ? line[x]
                   : x % 2 == 0 ? at[0] | (at[1] & 15) << 8
                                : at[0] >> 4 | at[1] << 4);
    }
    std::fputc('\n', file);
  }
  std::fclose(file);
}

constexpr Peer kPlainPeers[] = {{"plain loop", LookUp16}, {"fprintf", nullptr, PrintValues}};

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
#if QVAPI_BENCH_TIFF
    {"libtiff", TiffPeers},
#endif
    {"TurboJPEG", TurboJpegPeers},
};

}  // namespace

std::span<const Peer> PlainPeers() { return kPlainPeers; }

void AddPeer(Operation& operation, const char* name, std::function<void(const Peer&)> run) {
  if (!name || !*name) return;
  for (const Library& library : kLibraries)
    for (const Peer& peer : library.peers()) {
      if (peer.name != std::string_view(name)) continue;
      operation.peers.push_back({name, [run, &peer] { run(peer); }});
      return;
    }
  operation.missing.push_back(name);
}

std::string PeerLibraries() {
  std::string text;
  for (const Library& library : kLibraries)
    text += (text.empty() ? "" : ", ") + std::string(library.name);
  return text;
}

}  // namespace Bench
