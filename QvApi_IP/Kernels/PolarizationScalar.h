// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <utility>

#include "QvApi_IP/Kernels/Polarization.h"

namespace QvApi::Kernels::Scalar {

/// The samples of one pixel of the result by angle.
struct AngleSamples {
  int i0, i45, i90, i135;

  int Sum() const { return i0 + i45 + i90 + i135; }
  int S1() const { return i0 - i90; }
  int S2() const { return i45 - i135; }
};

template <class T>
AngleSamples SamplesOf(const PolarizerLines<T>& source, size_t column) {
  size_t left = 2 * column;
  if (source.neighbourhood == Neighbourhood::Window) {
    const size_t lastWindow = std::max<size_t>(source.width, 3) - 3;
    left = std::min(std::max<size_t>(column, 1) - 1, lastWindow);
  }
  const size_t right = std::min(left + 1, source.width - 1);
  // A single column stands for both.
  const bool isLeftOdd = left % 2 != 0;
  const size_t zero = source.isZeroOdd == isLeftOdd ? left : right;
  const size_t ninety = source.isZeroOdd == isLeftOdd ? right : left;
  const int mask = (1 << source.depth) - 1;
  AngleSamples samples{.i0 = source.zero[zero] & mask,
                       .i45 = source.zero[ninety] & mask,
                       .i90 = source.ninety[ninety] & mask,
                       .i135 = source.ninety[zero] & mask};
  if (source.is45In90) std::swap(samples.i45, samples.i135);
  return samples;
}

inline int Reduced(AngleReduction reduction, const AngleSamples& s) {
  const auto [least, most] = std::minmax({s.i0, s.i45, s.i90, s.i135});
  switch (reduction) {
    case AngleReduction::Mean:
      return (s.Sum() + 2) >> 2;
    case AngleReduction::Maximum:
      return most;
    case AngleReduction::Minimum:
      return least;
    default:
      return most - least;
  }
}

inline int Seen(const VirtualPolarizer& polarizer, const AngleSamples& s) {
  const int maximum = (1 << polarizer.depth) - 1;
  const auto entry = [&](int block, int sample) {
    return polarizer.table[(block << polarizer.depth) + sample];
  };
  const int sum = entry(0, s.i0) + entry(1, s.i45) + entry(2, s.i90) + entry(3, s.i135);
  return std::clamp(sum, 0, maximum << 14) >> 14;
}

inline int Seen(const CosinePolarizer& polarizer, const AngleSamples& s, int maximum) {
  const double value = std::fma(polarizer.sine, s.S2() * 0.5,
                                std::fma(polarizer.cosine, s.S1() * 0.5, 0.25 * s.Sum()));
  return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(maximum)));
}

/// Red, green and blue.
inline std::array<int, 3> Color(const HueStyle& style, int angle, int degree, int maximum) {
  const int m = maximum;
  int h = (style.isInverted ? m - angle : angle) + m * static_cast<int>(style.phase) / 255;
  if (h > m) h -= m;
  const int high = style.isDark ? degree : m;
  const int low = style.isDark ? 0 : m - degree;
  const int span = high - low;
  // Where the next hue begins. On the way from one to the next, one channel rises or falls.
  const int ends[]{m / 6, m / 3, m / 2, m * 4 / 6, m * 5 / 6, m};
  if (h < ends[0]) return {low, low + h * span / ends[0], high};
  if (h < ends[1]) return {low, high, low + (ends[1] - h) * span / (ends[1] - ends[0])};
  if (h < ends[2]) return {low + (h - ends[1]) * span / (ends[2] - ends[1]), high, low};
  if (h < ends[3]) return {high, low + (ends[3] - h) * span / (ends[3] - ends[2]), low};
  if (h < ends[4]) return {high, low, low + (h - ends[3]) * span / (ends[4] - ends[3])};
  return {low + (m - h) * span / (ends[5] - ends[4]), low, high};
}

/// What ReduceAngles gives.
template <class T>
void ReduceAngles(AngleReduction reduction, const PolarizerLines<T>& source, ResultColumns columns,
                  T* result) {
  for (size_t i = 0; i < columns.count; ++i)
    result[i] = static_cast<T>(Reduced(reduction, SamplesOf(source, columns.first + i)));
}

/// What LookThrough gives.
template <class T>
void LookThrough(const VirtualPolarizer& polarizer, const PolarizerLines<T>& source,
                 ResultColumns columns, T* result) {
  for (size_t i = 0; i < columns.count; ++i)
    result[i] = static_cast<T>(Seen(polarizer, SamplesOf(source, columns.first + i)));
}
template <class T>
void LookThrough(const CosinePolarizer& polarizer, const PolarizerLines<T>& source,
                 ResultColumns columns, T* result) {
  const int maximum = (1 << source.depth) - 1;
  for (size_t i = 0; i < columns.count; ++i)
    result[i] = static_cast<T>(Seen(polarizer, SamplesOf(source, columns.first + i), maximum));
}

inline uint32_t DegreeOf(const StokesScale& scale, const AngleSamples& s) {
  return scale.Degree(s.S1(), s.S2(), static_cast<uint32_t>(s.Sum()));
}
inline uint32_t AngleOf(const StokesScale& scale, const AngleSamples& s) {
  return scale.Angle(s.S1(), s.S2());
}

/// What DegreeOfPolarization gives.
template <class T>
void DegreeOfPolarization(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  const StokesScale scale(source.depth);
  for (size_t i = 0; i < columns.count; ++i)
    result[i] = static_cast<T>(DegreeOf(scale, SamplesOf(source, columns.first + i)));
}

/// What AngleOfPolarization gives.
template <class T>
void AngleOfPolarization(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  const StokesScale scale(source.depth);
  for (size_t i = 0; i < columns.count; ++i)
    result[i] = static_cast<T>(AngleOf(scale, SamplesOf(source, columns.first + i)));
}

/// What ColorOfPolarization gives.
template <class T>
void ColorOfPolarization(const HueStyle& style, const PolarizerLines<T>& source,
                         ResultColumns columns, const std::array<T*, 3>& result) {
  const StokesScale scale(source.depth);
  for (size_t i = 0; i < columns.count; ++i) {
    const AngleSamples samples = SamplesOf(source, columns.first + i);
    const auto color =
        Color(style, static_cast<int>(AngleOf(scale, samples)),
              static_cast<int>(DegreeOf(scale, samples)), static_cast<int>(scale.maximum));
    for (size_t c = 0; c < 3; ++c) result[c][i] = static_cast<T>(color[c]);
  }
}

}  // namespace QvApi::Kernels::Scalar
