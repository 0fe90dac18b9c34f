// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/YCbCrTables.h"

// The tables as arithmetic in 16-bit lanes. An entry is x times a whole number, of 22 bits and
// more, plus a correction of less than a bit a step, since each entry is rounded by itself:
//
//   entry(x) = (x << shift) * high + low * x + ((x * fraction + 2^14) >> 15)
//
// The last two terms stay in 16 bits even when summed over three colours; the first goes through
// the multiplication of pairs of 16-bit lanes into 32-bit sums that vector units have.
namespace QvApi::Kernels {

/// Range of what a weight multiplies.
struct WeightDomain {
  int least;
  int most;
  int shift;  ///< Such that x << shift fits 16 bits.
};

inline constexpr WeightDomain kColorDomain{0, 255, 7};
inline constexpr WeightDomain kChromaDomain{-128, 127, 8};

struct YCbCrWeight {
  int high = 0;
  int low = 0;
  int fraction = 0;
};

/// Floor of a / b.
constexpr int FloorDivide(int a, int b) {
  const int quotient = a / b;
  return a % b != 0 && (a < 0) != (b < 0) ? quotient - 1 : quotient;
}

/// The weight whose entries are those of `factor`. One fraction in all the tables would need a 17th
/// bit; there the entries of a few x are one unit off, which no sum that can occur lets through to
/// its whole part.
constexpr YCbCrWeight MakeYCbCrWeight(int factor, const WeightDomain& domain) {
  YCbCrWeight weight;
  const int whole = YCbCrProduct(factor, 1);
  weight.high = FloorDivide(whole + (1 << (domain.shift - 1)), 1 << domain.shift);
  weight.low = whole - weight.high * (1 << domain.shift);
  int least = -(1 << 15), most = (1 << 15) - 1;
  for (int x = domain.least; x <= domain.most; ++x) {
    if (x == 0) continue;
    // (x * fraction + 2^14) >> 15 is to be this.
    const int correction = YCbCrProduct(factor, x) - whole * x;
    const int first = correction * (1 << 15) - (1 << 14);
    const int last = first + (1 << 15) - 1;
    const int from = x > 0 ? -FloorDivide(-first, x) : -FloorDivide(-last, x);
    const int to = x > 0 ? FloorDivide(last, x) : FloorDivide(first, x);
    least = from > least ? from : least;
    most = to < most ? to : most;
  }
  weight.fraction = least < most ? least : most;
  return weight;
}

/// What makes one component of three inputs.
struct YCbCrWeights {
  std::array<YCbCrWeight, 3> inputs{};
  int32_t offset = 0;  ///< Added to the sum.
  int16_t less = 0;    ///< Subtracted if the last input is not 0.
};

/// Sum of the products of all low parts, at the most and at the least.
constexpr std::array<int, 2> LowRange(const YCbCrWeights& weights, const WeightDomain& domain) {
  std::array<int, 2> range{0, 0};
  for (const YCbCrWeight& weight : weights.inputs) {
    const int a = weight.low * domain.least, b = weight.low * domain.most;
    range[0] += a < b ? a : b;
    range[1] += a < b ? b : a;
  }
  return range;
}

/// Moves the greatest low part of one sign over to the high part, so that sums fit 16 bits.
constexpr void BalanceLowParts(YCbCrWeights& weights, const WeightDomain& domain) {
  constexpr int kRoom = 0x7FFF - 3 * 128 - 1;  // beside three corrections
  for (int turn = 0; turn < 3; ++turn) {
    const auto [least, most] = LowRange(weights, domain);
    if (least >= -kRoom && most <= kRoom) return;
    const int sign = most > kRoom ? 1 : -1;
    YCbCrWeight* greatest = &weights.inputs[0];
    for (YCbCrWeight& weight : weights.inputs) {
      if (sign * weight.low > sign * greatest->low) greatest = &weight;
    }
    greatest->high += sign;
    greatest->low -= sign * (1 << domain.shift);
  }
}

constexpr YCbCrWeights MakeToYCbCrWeights(YCbCrMatrix matrix, size_t component) {
  const YCbCrFactors& factors = FactorsOf(matrix);
  YCbCrWeights weights;
  for (size_t color = 0; color < 3; ++color) {
    weights.inputs[color] = MakeYCbCrWeight(factors.toYCbCr[component][color], kColorDomain);
  }
  BalanceLowParts(weights, kColorDomain);
  weights.offset = factors.offsets[component] << kYCbCrFraction;
  if (component == 2) weights.less = static_cast<int16_t>(factors.crFromBlueLess);
  return weights;
}

/// Chrominance's part of a colour (0 to 2: R, G, B). The inputs are Cb - 128, Cr - 128 and Cb - 128
/// again: Cb to B reaches beyond 2, and so it is spread over two.
constexpr YCbCrWeights MakeFromChromaWeights(YCbCrMatrix matrix, size_t color) {
  const auto& factors = FactorsOf(matrix).cToColor;
  YCbCrWeights weights;
  if (color == 0) weights.inputs[1] = MakeYCbCrWeight(factors[0], kChromaDomain);
  if (color == 1) weights.inputs[0] = MakeYCbCrWeight(factors[1], kChromaDomain);
  if (color == 1) weights.inputs[1] = MakeYCbCrWeight(factors[2], kChromaDomain);
  if (color == 2) {
    weights.inputs[0] = MakeYCbCrWeight(factors[3], kChromaDomain);
    weights.inputs[2].high = weights.inputs[0].high / 2;
    weights.inputs[0].high -= weights.inputs[2].high;
  }
  return weights;
}

/// Luminance's part of a colour. All inputs are Y less its minimum. The factor reaches 1 and more,
/// and so it is spread over two of them.
constexpr YCbCrWeights MakeFromLumaWeights(YCbCrMatrix matrix) {
  YCbCrWeights weights;
  weights.inputs[0] = MakeYCbCrWeight(FactorsOf(matrix).yToColor, kColorDomain);
  weights.inputs[2].high = weights.inputs[0].high / 2;
  weights.inputs[0].high -= weights.inputs[2].high;
  return weights;
}

/// All weights of one matrix.
struct YCbCrArithmetic {
  YCbCrLimits limits;
  std::array<YCbCrWeights, 3> toYCbCr;
  std::array<YCbCrWeights, 3> fromChroma;
  YCbCrWeights fromLuma;
};

constexpr YCbCrArithmetic MakeYCbCrArithmetic(YCbCrMatrix matrix) {
  YCbCrArithmetic all{.limits = LimitsOf(matrix),
                      .toYCbCr = {},
                      .fromChroma = {},
                      .fromLuma = MakeFromLumaWeights(matrix)};
  for (size_t i = 0; i < 3; ++i) {
    all.toYCbCr[i] = MakeToYCbCrWeights(matrix, i);
    all.fromChroma[i] = MakeFromChromaWeights(matrix, i);
  }
  return all;
}

inline constexpr std::array<YCbCrArithmetic, 3> kYCbCrArithmetic{
    MakeYCbCrArithmetic(YCbCrMatrix::Full), MakeYCbCrArithmetic(YCbCrMatrix::Bt601),
    MakeYCbCrArithmetic(YCbCrMatrix::Bt709)};

constexpr const YCbCrArithmetic& YCbCrArithmeticOf(YCbCrMatrix matrix) {
  return kYCbCrArithmetic[static_cast<size_t>(matrix)];
}

/// All parts fit 16 bits.
constexpr bool FitLanes(const YCbCrWeights& weights, const WeightDomain& domain) {
  const auto [least, most] = LowRange(weights, domain);
  for (const YCbCrWeight& weight : weights.inputs) {
    for (int part : {weight.high, weight.low, weight.fraction}) {
      if (part < -0x8000 || part > 0x7FFF) return false;
    }
  }
  return least >= -0x7FFF + 3 * 128 && most <= 0x7FFF - 3 * 128;
}

constexpr bool FitLanes(const YCbCrArithmetic& all) {
  for (size_t i = 0; i < 3; ++i) {
    if (!FitLanes(all.toYCbCr[i], kColorDomain) || !FitLanes(all.fromChroma[i], kChromaDomain)) {
      return false;
    }
  }
  return FitLanes(all.fromLuma, kColorDomain);
}

static_assert(FitLanes(kYCbCrArithmetic[0]) && FitLanes(kYCbCrArithmetic[1]) &&
              FitLanes(kYCbCrArithmetic[2]));

}  // namespace QvApi::Kernels
