// SPDX-License-Identifier: MIT
#pragma once

#include <QvApi/QvApi_IP.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "Operation.h"

namespace Bench {

/// Exponent of all gamma rows.
constexpr double kGamma = 0.45;
/// Gains of all balance rows; green has 1.
constexpr double kRedRatio = 1.5, kBlueRatio = 1.8;

/// Colour matrix of all rows: red, green and blue out of red, green and blue, as a camera's
/// calibration gives it.
constexpr double kColorGains[3][3] = {
    {1.62, -0.45, -0.17}, {-0.21, 1.4, -0.19}, {0.03, -0.52, 1.49}};

/// Another library's function for work that this library does too. It has one of the two forms;
/// the other is null. Depth and size are the image's.
struct Peer {
  const char* name;
  /// Writes its result to memory that is large enough for what the library makes; for in-place work
  /// that is the source.
  void (*convert)(QvApi::IQvImage& source, std::uint8_t* destination);
  void (*save)(QvApi::IQvImage& image, const std::string& fileName) = nullptr;
};

// Each is in a file of its own, compiled where the library is installed.
std::span<const Peer> OpenCvPeers();
std::span<const Peer> Dc1394Peers();
std::span<const Peer> YuvPeers();
std::span<const Peer> TiffPeers();
std::span<const Peer> TurboJpegPeers();
std::span<const Peer> PlainPeers();

/// Adds the peer of that name as a contender that is run by `run`, or notes that it is not built
/// in. An empty name, or none, is no peer.
void AddPeer(Operation& operation, const char* name, std::function<void(const Peer&)> run);

/// The libraries that are built in, as text.
std::string PeerLibraries();

}  // namespace Bench
