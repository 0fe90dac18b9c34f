// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/Stokes.h"

namespace QvApi::Kernels {

/// Which pixels of a mosaic of polarizers make one pixel of the result.
enum class Neighbourhood {
  /// Windows of 2 x 2 pixels: column c of the result takes columns c - 1 and c of the mosaic. There
  /// is no window left of the first one and none for the mosaic's last column, so the first column
  /// and the last one repeat the result beside them. Of a single column both pixels are its own.
  Window,
  /// Tiles of 2 x 2 pixels: column k of the result takes columns 2 k and 2 k + 1. An odd last
  /// column is not used.
  Cell,
};

/// Two lines of a mosaic of polarizers, of which each pair of columns holds all four angles. In
/// every arrangement 0 and 90 degrees stand diagonally, as do 45 and 135, so it is told by where 0
/// degrees is and on which side of it 45 is.
///
/// Samples are of `depth` bits, 8, 10 or 12; those above are masked to it.
template <class T>
struct PolarizerLines {
  const T* zero;    ///< The line that holds 0 degrees.
  const T* ninety;  ///< The line that holds 90 degrees; may be the same one.
  size_t width;     ///< Samples of a line.
  bool isZeroOdd;   ///< 0 degrees stands in odd columns, 90 in even ones.
  bool is45In90;    ///< 45 degrees stands in the line of 90 and 135 in that of 0, else reverse.
  unsigned depth;
  Neighbourhood neighbourhood;
};

/// Columns of a result. They must be there: fewer than the width for windows, than half of it for
/// cells.
struct ResultColumns {
  size_t first;
  size_t count;
};

/// What is made of the four samples without regard to their angles. The mean rounds halves up.
enum class AngleReduction { Mean, Maximum, Minimum, Difference };

/// The image behind a polarizer at an angle, as weighted sum of the samples. The sum is that of
/// four entries of a table; since these lie on lines but for their rounding, vectors calculate
/// them and look up only where that could make a difference.
struct VirtualPolarizer {
  /// Entry i of block a, 2^depth entries each, is the weight of angle 45 a degrees for sample i,
  /// times 2^14. The table is borrowed.
  VirtualPolarizer(const int32_t* table, unsigned depth);

  /// (whole * sample + (fraction * sample >> 32)) with the sign. Where exact multiples of the
  /// coefficient are whole numbers, the sums of a table may come to lie first above and then below
  /// them; samples from `step` on have the other fraction then.
  struct Line {
    static constexpr uint16_t kNoStep = 0x7FFF;

    uint64_t At(uint64_t sample) const {
      return whole * sample + (fractions[sample >= step] * sample >> 32);
    }

    bool isNegative = false;
    uint16_t whole = 0;
    uint16_t step = kNoStep;
    std::array<uint64_t, 2> fractions{};  ///< 32 bits each.
  };

  const int32_t* table;
  unsigned depth;
  std::array<Line, 4> lines;
  /// The sum of entries less the sum of what the lines give is from `least` to `most`.
  int32_t least = 0;
  int32_t most = 0;
};

/// The same by the cosine law, from sine and cosine of twice the polarizer's angle:
/// n / 4 + sine * S2 / 2 + cosine * S1 / 2, n being the sum of the samples.
struct CosinePolarizer {
  double sine;
  double cosine;
};

/// How angle and degree of polarization become a colour: the angle a hue, which starts at blue and
/// goes on to green and red, the degree how far the colour stands out from black (isDark) or white.
struct HueStyle {
  bool isDark;
  bool isInverted;  ///< Hues run the other way.
  unsigned phase;   ///< Turns the hues; 255 is full turn. At most 255.
};

/// Each writes the columns of one line of the result as samples of the source's depth. The result
/// must not overlap the source.
template <class T>
void ReduceAngles(AngleReduction reduction, const PolarizerLines<T>& source, ResultColumns columns,
                  T* result);
template <class T>
void LookThrough(const VirtualPolarizer& polarizer, const PolarizerLines<T>& source,
                 ResultColumns columns, T* result);
template <class T>
void LookThrough(const CosinePolarizer& polarizer, const PolarizerLines<T>& source,
                 ResultColumns columns, T* result);
template <class T>
void DegreeOfPolarization(const PolarizerLines<T>& source, ResultColumns columns, T* result);
template <class T>
void AngleOfPolarization(const PolarizerLines<T>& source, ResultColumns columns, T* result);
/// Writes red, green and blue into a line each.
template <class T>
void ColorOfPolarization(const HueStyle& style, const PolarizerLines<T>& source,
                         ResultColumns columns, const std::array<T*, 3>& result);

}  // namespace QvApi::Kernels
