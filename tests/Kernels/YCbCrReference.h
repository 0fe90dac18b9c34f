// SPDX-License-Identifier: MIT
// Luminance and chrominance by the rules of the tables: products of a factor and a level, each
// rounded by itself to 22 bits behind the point, are summed up and cut off.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace QvApi::Testing {

class YCbCrReference {
 public:
  using Color = std::array<unsigned, 3>;  ///< Red, green, blue; or Y, Cb, Cr.

  /// @param matrix  0 full range, 1 BT.601, 2 BT.709
  explicit YCbCrReference(std::size_t matrix) : m_isFull(matrix == 0) {
    static constexpr double kFrom[3][9] = {
        {0.299, 0.587, 0.114, -0.16874, -0.33126, 0.5, 0.5, -0.41869, -0.08131},
        {0.25679, 0.50413, 0.09791, -0.14822, -0.29099, 0.43922, 0.43922, -0.36779, -0.07143},
        {0.18259, 0.61423, 0.06201, -0.10064, -0.33857, 0.43922, 0.43922, -0.39894, -0.04027}};
    static constexpr double kTo[3][5] = {{1.0, 1.402, -0.34414, -0.71414, 1.772},
                                         {1.16438, 1.59603, -0.39176, -0.81297, 2.01723},
                                         {1.16438, 1.79274, -0.21325, -0.53291, 2.11240}};
    for (int x = 0; x < 256; ++x) {
      const auto i = static_cast<std::size_t>(x);
      for (std::size_t row = 0; row < 9; ++row) m_from[row][i] = Entry(kFrom[matrix][row], x);
      // Of Cr from blue, all but the first are one less.
      if (!m_isFull && x > 0) m_from[8][i] -= 1;
      const int y = m_isFull ? x : std::clamp(x, 16, 235) - 16;
      const int c = (m_isFull ? x : std::clamp(x, 16, 240)) - 128;
      for (std::size_t row = 0; row < 5; ++row)
        m_to[row][i] = Entry(kTo[matrix][row], row == 0 ? y : c);
    }
  }

  /// Component 0 (Y), 1 (Cb) or 2 (Cr).
  std::uint8_t Component(std::size_t component, const Color& color) const {
    std::int32_t sum = (component > 0 ? 128 : m_isFull ? 0 : 16) << 22;
    for (std::size_t c = 0; c < 3; ++c) sum += m_from[3 * component + c][color[c]];
    if (m_isFull) return Whole(sum, 0, 255);
    return Whole(sum, 16, component == 0 ? 235 : 240);
  }

  Color ColorOf(const Color& components) const {
    const auto [luma, cb, cr] = components;
    const std::int32_t y = m_to[0][luma];
    return {Whole(y + m_to[1][cr], 0, 255), Whole(y + m_to[2][cb] + m_to[3][cr], 0, 255),
            Whole(y + m_to[4][cb], 0, 255)};
  }

  /// Grey of a luminance.
  unsigned GreyOf(unsigned luma) const { return Whole(m_to[0][luma], 0, 255); }

 private:
  static std::int32_t Entry(double factor, int x) {
    return static_cast<std::int32_t>(std::round(factor * x * 4194304.0));
  }
  static std::uint8_t Whole(std::int32_t sum, int least, int most) {
    return static_cast<std::uint8_t>(std::clamp(sum >> 22, least, most));
  }

  const bool m_isFull;
  std::array<std::array<std::int32_t, 256>, 9> m_from;
  std::array<std::array<std::int32_t, 256>, 5> m_to;
};

}  // namespace QvApi::Testing
