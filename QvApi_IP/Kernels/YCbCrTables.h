// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Which luminance and chrominance: full range (as JPEG has it), or the studio ranges of
/// ITU-R BT.601 and BT.709.
enum class YCbCrMatrix : uint8_t { Full, Bt601, Bt709 };

/// The least and the greatest luminance and chrominance.
struct YCbCrLimits {
  uint8_t minY, maxY, minC, maxC;
};

constexpr YCbCrLimits LimitsOf(YCbCrMatrix matrix) {
  return matrix == YCbCrMatrix::Full ? YCbCrLimits{0, 255, 0, 255} : YCbCrLimits{16, 235, 16, 240};
}

/// Bits behind the point in all tables.
inline constexpr int kYCbCrFraction = 22;

/// The factors that the tables are made of, in units of 1/100000, and the offsets.
struct YCbCrFactors {
  std::array<std::array<int, 3>, 3> toYCbCr;  ///< Of Y, Cb, Cr: from R, G, B.
  std::array<int, 3> offsets;                 ///< Of Y, Cb, Cr.
  std::array<int, 3> offsetColors;            ///< Which of R, G, B carries the offset.
  int crFromBlueLess;  ///< What entries of Cr from B above 0 are less than their product.
  int yToColor;
  std::array<int, 4> cToColor;  ///< Cr to R, Cb to G, Cr to G, Cb to B.
};

inline constexpr std::array<YCbCrFactors, 3> kYCbCrFactors{
    YCbCrFactors{
        .toYCbCr = {{{29900, 58700, 11400}, {-16874, -33126, 50000}, {50000, -41869, -8131}}},
        .offsets = {0, 128, 128},
        .offsetColors = {0, 2, 0},
        .crFromBlueLess = 0,
        .yToColor = 100000,
        .cToColor = {140200, -34414, -71414, 177200}},
    YCbCrFactors{
        .toYCbCr = {{{25679, 50413, 9791}, {-14822, -29099, 43922}, {43922, -36779, -7143}}},
        .offsets = {16, 128, 128},
        .offsetColors = {2, 2, 2},
        .crFromBlueLess = 1,
        .yToColor = 116438,
        .cToColor = {159603, -39176, -81297, 201723}},
    YCbCrFactors{
        .toYCbCr = {{{18259, 61423, 6201}, {-10064, -33857, 43922}, {43922, -39894, -4027}}},
        .offsets = {16, 128, 128},
        .offsetColors = {2, 2, 2},
        .crFromBlueLess = 1,
        .yToColor = 116438,
        .cToColor = {179274, -21325, -53291, 211240}},
};

constexpr const YCbCrFactors& FactorsOf(YCbCrMatrix matrix) {
  return kYCbCrFactors[static_cast<size_t>(matrix)];
}

/// factor / 100000 * x * 2^22, rounded to the nearest whole number. There are no ties, since the
/// divisor that remains is odd.
constexpr int32_t YCbCrProduct(int factor, int x) {
  const int64_t product = (int64_t{factor} * x) << (kYCbCrFraction - 5);
  constexpr int64_t kDivisor = 100000 >> 5;
  const int64_t half = product < 0 ? -(kDivisor / 2) : kDivisor / 2;
  return static_cast<int32_t>((product + half) / kDivisor);
}

/// A component is the sum of one entry of each of three rows: rows 0 to 2 make Y from R, G, B,
/// rows 3 to 5 Cb and rows 6 to 8 Cr.
using RGB2YCrCbTable = std::array<std::array<int32_t, 256>, 9>;

constexpr RGB2YCrCbTable MakeRGB2YCrCbTable(YCbCrMatrix matrix) {
  const YCbCrFactors& factors = FactorsOf(matrix);
  RGB2YCrCbTable table{};
  for (size_t row = 0; row < 9; ++row) {
    const size_t component = row / 3;
    const size_t color = row % 3;
    const bool carries = factors.offsetColors[component] == static_cast<int>(color);
    for (int i = 0; i < 256; ++i) {
      int32_t& entry = table[row][static_cast<size_t>(i)];
      entry = YCbCrProduct(factors.toYCbCr[component][color], i);
      if (carries) entry += factors.offsets[component] << kYCbCrFraction;
      if (row == 8 && i > 0) entry -= factors.crFromBlueLess;
    }
  }
  return table;
}

/// Rows: Y, Cr to R, Cb to G, Cr to G, Cb to B. A colour is the sum of an entry of the first row
/// and those of the others that lead to it.
using YCrCbTable = std::array<std::array<int32_t, 256>, 5>;

constexpr YCrCbTable MakeYCrCbTable(YCbCrMatrix matrix) {
  const YCbCrFactors& factors = FactorsOf(matrix);
  const YCbCrLimits limits = LimitsOf(matrix);
  const auto limited = [](int i, int least, int most) {
    return i < least ? least : i > most ? most : i;
  };
  YCrCbTable table{};
  for (int i = 0; i < 256; ++i) {
    const auto place = static_cast<size_t>(i);
    const int y = limited(i, limits.minY, limits.maxY) - limits.minY;
    table[0][place] = YCbCrProduct(factors.yToColor, y);
    const int c = limited(i, limits.minC, limits.maxC) - 128;
    for (size_t k = 0; k < 4; ++k) {
      table[k + 1][place] = YCbCrProduct(factors.cToColor[k], c);
    }
  }
  return table;
}

inline constexpr RGB2YCrCbTable pnRGB2YCrCbConvTable = MakeRGB2YCrCbTable(YCbCrMatrix::Full);
inline constexpr RGB2YCrCbTable pnRGB2YCrCb601ConvTable = MakeRGB2YCrCbTable(YCbCrMatrix::Bt601);
inline constexpr RGB2YCrCbTable pnRGB2YCrCb709ConvTable = MakeRGB2YCrCbTable(YCbCrMatrix::Bt709);

inline constexpr YCrCbTable pnYCrCbConvTable = MakeYCrCbTable(YCbCrMatrix::Full);
inline constexpr YCrCbTable pnYCrCbConvTable601 = MakeYCrCbTable(YCbCrMatrix::Bt601);
inline constexpr YCrCbTable pnYCrCbConvTable709 = MakeYCrCbTable(YCbCrMatrix::Bt709);

constexpr const RGB2YCrCbTable& RGB2YCrCbTableOf(YCbCrMatrix matrix) {
  return matrix == YCbCrMatrix::Full    ? pnRGB2YCrCbConvTable
         : matrix == YCbCrMatrix::Bt601 ? pnRGB2YCrCb601ConvTable
                                        : pnRGB2YCrCb709ConvTable;
}

constexpr const YCrCbTable& YCrCbTableOf(YCbCrMatrix matrix) {
  return matrix == YCbCrMatrix::Full    ? pnYCrCbConvTable
         : matrix == YCbCrMatrix::Bt601 ? pnYCrCbConvTable601
                                        : pnYCrCbConvTable709;
}

}  // namespace QvApi::Kernels
