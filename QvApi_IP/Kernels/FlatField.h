// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Gains are fixed-point numbers with this many bits behind the point.
inline constexpr int kGainFractionBits = 7;
/// The greatest gain that is served, 16.0.
inline constexpr unsigned kMaximumGain = 16U << kGainFractionBits;

/// Multiplies each sample of a row in place by its gain, rounded down, and limits the result to
/// `fullScale`. Gains are at most kMaximumGain. Samples are taken as they are, whatever their
/// depth. The two must not overlap.
void MultiplyGainRow(uint8_t* row, const uint16_t* gains, size_t width, uint8_t fullScale);
void MultiplyGainRow(uint16_t* row, const uint16_t* gains, size_t width, uint16_t fullScale);

/// What a flat scene shall look like, in even and in odd columns of a row.
struct FlatFieldTargets {
  uint32_t even = 0, odd = 0;
};

/// Adds to each sample of a row in place what lacks from that of the flat scene to its target, and
/// limits the result to 0 and `fullScale`. Targets may be above full scale. Samples are taken as
/// they are, whatever their depth. The two must not overlap.
void AddDifferenceRow(uint8_t* row, const uint8_t* flat, size_t width, FlatFieldTargets targets,
                      uint8_t fullScale);
void AddDifferenceRow(uint16_t* row, const uint16_t* flat, size_t width, FlatFieldTargets targets,
                      uint16_t fullScale);

}  // namespace QvApi::Kernels
