// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>

#include "QvApi_IP/IQvBalanceRatioFilter.h"
#include "QvApi_IP/Kernels/Lookup.h"

namespace QvApi {

/// What is no channel: alpha.
inline constexpr auto kNoChannel = static_cast<EQvBalanceRatioSelector_t>(6);

/// Which channel each sample of a line is of, over and over.
struct ChannelCycle {
  std::size_t pixels;   ///< The least that a line has whole numbers of,
  std::size_t samples;  ///< and the samples of these.
  std::size_t period;   ///< After so many samples the channels repeat.
  std::array<EQvBalanceRatioSelector_t, Kernels::kMaxLookupPeriod> channels;

  /// Samples of a line; pixels behind the last whole group have none.
  constexpr std::size_t Samples(std::size_t width) const { return width / pixels * samples; }
};

/// The cycles of even and of odd lines.
using LineCycles = std::array<ChannelCycle, 2>;

/// The channels of an unpacked Mono, Bayer or interleaved BGR or RGB format, or of `YCbCr8`,
/// `YCbCr422_8`, `YCbCr709_422_8` or `YCbCr411_8`.
const LineCycles& ChannelsOf(PixelFormat format);

}  // namespace QvApi
