// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

inline constexpr double kHalfTurn = 3.141592653589793;
inline constexpr double kFullTurn = 6.283185307179586;

/// Degree and angle of linear polarization in whole numbers, from the differences of Stokes
/// S1 = I0 - I90 and S2 = I45 - I135 of samples of `bits` bits. Everything that answers to these
/// questions, table or vector code, gives what these formulas give, operation by operation.
struct StokesScale {
  /// bits: 1 to 14.
  explicit StokesScale(unsigned bits)
      : maximum((1u << bits) - 1),
        angleFactor(maximum / kFullTurn),
        halfTurn(static_cast<uint32_t>(angleFactor * kHalfTurn + 0.5)) {}

  /// Length of (S1, S2). Over the sum of the four samples, which is 2 S0, it is the degree with
  /// full scale `maximum`.
  uint32_t Magnitude(int s1, int s2) const {
    const double squares = static_cast<double>(s1) * s1 + static_cast<double>(s2) * s2;
    return static_cast<uint32_t>(std::fma(2.0 * maximum, std::sqrt(squares), 0.5));
  }

  /// Direction of (S1, S2), a full turn being full scale: 0 along S1 and without polarization. It
  /// is twice the angle of polarization, so full scale is 180 degrees of that.
  uint32_t Angle(int s1, int s2) const {
    if (s1 == 0 && s2 == 0) return 0;
    double angle = std::atan2(static_cast<double>(s2), static_cast<double>(s1));
    if (angle < 0) angle += kFullTurn;
    return static_cast<uint32_t>(angleFactor * angle + 0.5);
  }

  /// Magnitude over sum, cut off and at most `maximum`; 0 for a sum of 0.
  uint32_t Degree(int s1, int s2, uint32_t sum) const {
    if (sum == 0) return 0;
    const uint32_t degree = Magnitude(s1, s2) / sum;
    return degree < maximum ? degree : maximum;
  }

  uint32_t maximum;
  double angleFactor;
  uint32_t halfTurn;  ///< Angle of every (S1 < 0, 0): a tie that rounding decides.
};

/// Writes magnitude and angle, one after the other, of (firstS1 + i, s2) for `count` values of i.
void FillStokesEntries(const StokesScale& scale, int s2, int firstS1, uint32_t* entries,
                       size_t count);

}  // namespace QvApi::Kernels
