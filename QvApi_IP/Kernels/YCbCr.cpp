// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/YCbCr.h"

#include <cstring>
#include <utility>

#include "QvApi_IP/Kernels/YCbCrScalar.h"
#include "QvApi_IP/Kernels/YCbCrWeights.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/YCbCr.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "QvApi_IP/Kernels/Interleave-inl.h"
#include "QvApi_IP/Kernels/PairSums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using D8 = hn::ScalableTag<uint8_t>;
using D16 = hn::ScalableTag<int16_t>;
using D32 = hn::ScalableTag<int32_t>;
using V8 = hn::Vec<D8>;
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;

HWY_INLINE V16 Set16(int value) { return hn::Set(D16(), static_cast<int16_t>(value)); }

/// Sums with their fraction: those of the lower and of the upper half of each block of lanes.
struct Sums {
  V32 lower, upper;
};

HWY_INLINE Sums operator+(const Sums& a, const Sums& b) {
  return {hn::Add(a.lower, b.lower), hn::Add(a.upper, b.upper)};
}

/// The whole parts.
HWY_INLINE V16 WholeParts(const Sums& sums) {
  return hn::ReorderDemote2To(D16(), hn::ShiftRight<kYCbCrFraction>(sums.lower),
                              hn::ShiftRight<kYCbCrFraction>(sums.upper));
}

/// An input of a sum, and the same in the upper bits of its lanes.
struct Input {
  V16 value, shifted;
};

template <int kShift>
HWY_INLINE Input MakeInput(V16 value) {
  return {value, hn::ShiftLeft<kShift>(value)};
}

/// Which inputs have low parts and corrections.
struct SmallParts {
  bool outer, middle, last;
  bool less = false;
};

/// What the table entries of three inputs add up to. See YCbCrWeights.h for the arithmetic.
template <SmallParts kSmall>
class TableSum {
 public:
  HWY_INLINE explicit TableSum(const YCbCrWeights& weights)
      : m_outerHigh(SetPair(weights.inputs[0].high, weights.inputs[2].high)),
        m_middleHigh(SetPair(weights.inputs[1].high, 1)),
        m_offset(hn::Set(D32(), weights.offset)),
        m_less(Set16(weights.less)) {
    for (size_t i = 0; i < 3; ++i) {
      m_low[i] = Set16(weights.inputs[i].low);
      m_fraction[i] = Set16(weights.inputs[i].fraction);
    }
  }

  /// What the first and the last input give.
  struct Outer {
    Sums sums;
    V16 small;
  };

  HWY_INLINE Outer AddOuter(const Input& first, const Input& last) const {
    const D16 d;
    V16 small = hn::Zero(d);
    if constexpr (kSmall.outer) small = Small(0, first.value);
    if constexpr (kSmall.last) small = hn::Add(small, Small(2, last.value));
    if constexpr (kSmall.less) small = hn::Sub(small, hn::Min(last.value, m_less));
    const auto lower = hn::InterleaveLower(d, first.shifted, last.shifted);
    const auto upper = hn::InterleaveUpper(d, first.shifted, last.shifted);
    return {{AddPairs(lower, m_outerHigh, m_offset), AddPairs(upper, m_outerHigh, m_offset)},
            small};
  }

  HWY_INLINE Sums AddMiddle(const Outer& outer, const Input& middle) const {
    const D16 d;
    V16 small = outer.small;
    if constexpr (kSmall.middle) small = hn::Add(small, Small(1, middle.value));
    const auto lower = hn::InterleaveLower(d, middle.shifted, small);
    const auto upper = hn::InterleaveUpper(d, middle.shifted, small);
    return {AddPairs(lower, m_middleHigh, outer.sums.lower),
            AddPairs(upper, m_middleHigh, outer.sums.upper)};
  }

  HWY_INLINE Sums operator()(const Input& first, const Input& middle, const Input& last) const {
    return AddMiddle(AddOuter(first, last), middle);
  }

 private:
  HWY_INLINE V16 Small(size_t i, V16 input) const {
    return hn::Add(hn::Mul(m_low[i], input), hn::MulFixedPoint15(input, m_fraction[i]));
  }

  V16 m_low[3], m_fraction[3];
  const V16 m_outerHigh, m_middleHigh;
  const V32 m_offset;
  const V16 m_less;
};

/// Every other byte of a vector in a lane of its own, from byte `kPlace` (0 or 1) on.
template <int kPlace>
HWY_INLINE V16 EveryOther(V8 bytes) {
  const hn::ScalableTag<uint16_t> d;
  const auto pairs = hn::BitCast(d, bytes);
  const auto lanes =
      kPlace == 0 ? hn::And(pairs, hn::Set(d, uint16_t{0xFF})) : hn::ShiftRight<8>(pairs);
  return hn::BitCast(D16(), lanes);
}

HWY_INLINE V16 Clamp16(V16 v, V16 least, V16 most) { return hn::Min(hn::Max(v, least), most); }

/// Lanes by turns as bytes, those out of range as the nearest that there is.
HWY_INLINE V8 JoinBytes(V16 even, V16 odd) {
  const D8 d;
#if HWY_ARCH_X86
#if HWY_TARGET <= HWY_AVX3
  const V8 packed{_mm512_packus_epi16(even.raw, odd.raw)};
#elif HWY_TARGET == HWY_AVX2
  const V8 packed{_mm256_packus_epi16(even.raw, odd.raw)};
#else
  const V8 packed{_mm_packus_epi16(even.raw, odd.raw)};
#endif
  alignas(16) static constexpr uint8_t kTurns[16] = {0, 8,  1, 9,  2, 10, 3, 11,
                                                     4, 12, 5, 13, 6, 14, 7, 15};
  return hn::TableLookupBytes(packed, hn::LoadDup128(d, kTurns));
#else
  const V16 least = Set16(0), most = Set16(255);
  const V16 high = hn::ShiftLeft<8>(Clamp16(odd, least, most));
  return hn::BitCast(d, hn::Or(Clamp16(even, least, most), high));
#endif
}

HWY_INLINE V16 HalfSum(V16 a, V16 b) { return hn::ShiftRight<1>(hn::Add(a, b)); }

/// Red, green and blue of the pixels of a lane.
struct ColorLanes {
  HWY_INLINE ColorLanes(V16 r, V16 g, V16 b)
      : red(MakeInput<kColorDomain.shift>(r)),
        green(MakeInput<kColorDomain.shift>(g)),
        blue(MakeInput<kColorDomain.shift>(b)) {}
  Input red, green, blue;
};

template <int kPlace>
HWY_INLINE ColorLanes EveryOtherColor(const V8* colors) {
  return {EveryOther<kPlace>(colors[0]), EveryOther<kPlace>(colors[1]),
          EveryOther<kPlace>(colors[2])};
}

template <class Mean>
HWY_INLINE ColorLanes MeanColors(const ColorLanes& a, const ColorLanes& b, Mean mean) {
  return {mean(a.red.value, b.red.value), mean(a.green.value, b.green.value),
          mean(a.blue.value, b.blue.value)};
}

/// The mean of two neighbouring pairs, in the first of their lanes.
HWY_INLINE V16 MeanOfFour(V16 a, V16 b) {
  const D32 d;
  const auto pairs = hn::BitCast(d, hn::Add(a, b));
  const auto sum = hn::Add(hn::And(pairs, hn::Set(d, 0xFFFF)), hn::ShiftRight<16>(pairs));
  return hn::BitCast(D16(), hn::ShiftRight<2>(sum));
}

using ColorSum = TableSum<SmallParts{.outer = true, .middle = true, .last = true}>;
using CrSum = TableSum<SmallParts{.outer = true, .middle = true, .last = true, .less = true}>;

struct ToComponents {
  HWY_INLINE explicit ToComponents(const YCbCrArithmetic& matrix)
      : luma(matrix.toYCbCr[0]),
        cb(matrix.toYCbCr[1]),
        cr(matrix.toYCbCr[2]),
        limits(matrix.limits) {}

  template <class Sum>
  static HWY_INLINE V16 Whole(const Sum& sum, const ColorLanes& colors) {
    return WholeParts(sum(colors.red, colors.green, colors.blue));
  }

  const ColorSum luma, cb;
  const CrSum cr;
  const YCbCrLimits limits;
};

/// Bytes between limits.
template <class D>
HWY_INLINE hn::Vec<D> ClampBytes(D d, hn::Vec<D> bytes, uint8_t least, uint8_t most) {
  return hn::Min(hn::Max(bytes, hn::Set(d, least)), hn::Set(d, most));
}

/// Stores the luminance of a vector of pixels.
HWY_INLINE void StoreLuma(const YCbCrLimits& limits, V16 even, V16 odd, uint8_t* to) {
  const D8 d;
  hn::StoreU(ClampBytes(d, JoinBytes(even, odd), limits.minY, limits.maxY), d, to);
}

/// Stores the chrominance of the lanes.
HWY_INLINE void StoreChroma(const YCbCrLimits& limits, V16 lanes, uint8_t* to) {
  const hn::Half<D8> d;
  hn::StoreU(ClampBytes(d, hn::DemoteTo(d, lanes), limits.minC, limits.maxC), d, to);
}

/// The same where just the first lane of each pair counts.
HWY_INLINE void StoreChromaOfPairs(const YCbCrLimits& limits, V16 lanes, uint8_t* to) {
  const hn::Half<hn::Half<D8>> d;
  const auto first = hn::ShiftRight<16>(hn::ShiftLeft<16>(hn::BitCast(D32(), lanes)));
  hn::StoreU(ClampBytes(d, hn::DemoteTo(d, first), limits.minC, limits.maxC), d, to);
}

/// The components of vectors of red, green and blue.
template <size_t kGroup>
HWY_INLINE void ColorsToComponents(const ToComponents& make, const V8* colors,
                                   const YCbCrComponents& to, size_t i) {
  const ColorLanes even = EveryOtherColor<0>(colors);
  const ColorLanes odd = EveryOtherColor<1>(colors);
  const YCbCrLimits& limits = make.limits;
  StoreLuma(limits, make.Whole(make.luma, even), make.Whole(make.luma, odd), to.luma + i);
  if constexpr (kGroup == 1) {
    const D8 d;
    const auto store = [&](V16 first, V16 second, uint8_t* line) HWY_ATTR {
      hn::StoreU(ClampBytes(d, JoinBytes(first, second), limits.minC, limits.maxC), d, line + i);
    };
    store(make.Whole(make.cb, even), make.Whole(make.cb, odd), to.cb);
    store(make.Whole(make.cr, even), make.Whole(make.cr, odd), to.cr);
  } else if constexpr (kGroup == 2) {
    const ColorLanes means = MeanColors(even, odd, HalfSum);
    StoreChroma(limits, make.Whole(make.cb, means), to.cb + i / 2);
    StoreChroma(limits, make.Whole(make.cr, means), to.cr + i / 2);
  } else if constexpr (kGroup == 4) {
    const ColorLanes means = MeanColors(even, odd, MeanOfFour);
    StoreChromaOfPairs(limits, make.Whole(make.cb, means), to.cb + i / 4);
    StoreChromaOfPairs(limits, make.Whole(make.cr, means), to.cr + i / 4);
  }
}

/// Components of a vector of pixels on their way to the end of a line. What is left of a line is
/// padded to a vector and goes the same way as all.
struct RestOfLine {
  HWY_ALIGN uint8_t luma[hn::MaxLanes(D8())] = {};
  HWY_ALIGN uint8_t cb[hn::MaxLanes(D8())] = {};
  HWY_ALIGN uint8_t cr[hn::MaxLanes(D8())] = {};

  YCbCrComponents Components(bool hasChroma = true) {
    return {luma, hasChroma ? cb : nullptr, hasChroma ? cr : nullptr};
  }
  void CopyTo(const YCbCrComponents& to, size_t pixels, size_t chroma) const {
    std::memcpy(to.luma, luma, pixels);
    if (chroma == 0) return;
    std::memcpy(to.cb, cb, chroma);
    std::memcpy(to.cr, cr, chroma);
  }
};

/// kGroup 0 makes luminance only. `count` is a multiple of the group.
template <size_t kGroup>
void ToYCbCr(const YCbCrArithmetic& matrix, const YCbCrSource& source, const uint8_t* pixels,
             const YCbCrComponents& to, size_t count) {
  const D8 d;
  const size_t n = hn::Lanes(d);
  const ToComponents make(matrix);
  size_t i = 0;
  for (; i + n <= count; i += n) {
    const uint8_t* p = pixels + i * source.step;
    V8 c0, c1, c2, alpha;
    if (source.step == 3) {
      LoadPixels3(d, p, c0, c1, c2);
    } else {
      LoadPixels4(d, p, c0, c1, c2, alpha);
    }
    if (source.isBGR) std::swap(c0, c2);
    const V8 colors[3] = {c0, c1, c2};
    ColorsToComponents<kGroup>(make, colors, to, i);
  }
  if (i == count) return;
  HWY_ALIGN uint8_t padded[4 * hn::MaxLanes(d)] = {};
  std::memcpy(padded, pixels + i * source.step, (count - i) * source.step);
  RestOfLine rest;
  ToYCbCr<kGroup>(matrix, source, padded, rest.Components(), n);
  if constexpr (kGroup == 0) {
    rest.CopyTo({to.luma + i, nullptr, nullptr}, count - i, 0);
  } else {
    rest.CopyTo({to.luma + i, to.cb + i / kGroup, to.cr + i / kGroup}, count - i,
                (count - i) / kGroup);
  }
}

void ToYCbCrOfGroup(const YCbCrArithmetic& matrix, const YCbCrSource& source, const uint8_t* pixels,
                    size_t group, const YCbCrComponents& to, size_t count) {
  const auto run = group == 0   ? &ToYCbCr<0>
                   : group == 1 ? &ToYCbCr<1>
                   : group == 2 ? &ToYCbCr<2>
                                : &ToYCbCr<4>;
  run(matrix, source, pixels, to, count);
}

/// Tiles of a mosaic in lanes.
struct TileLanes {
  V16 red, blue, greenEven, greenOdd, nextGreenOdd;
};

/// Tiles from two rows on; of the green row of odd columns also from the next tile on.
template <int kRed>
HWY_INLINE TileLanes LoadTiles(const uint8_t* red, const uint8_t* blue) {
  const D8 d;
  const V8 r = hn::LoadU(d, red);
  const V8 b = hn::LoadU(d, blue);
  const V8 next = hn::LoadU(d, (kRed == 0 ? red : blue) + 2);
  return {.red = EveryOther<kRed>(r),
          .blue = EveryOther<1 - kRed>(b),
          .greenEven = EveryOther<0>(kRed == 0 ? b : r),
          .greenOdd = EveryOther<1>(kRed == 0 ? r : b),
          .nextGreenOdd = EveryOther<1>(next)};
}

/// The pixels of a tile differ in green only.
HWY_INLINE void TilesToComponents(const ToComponents& make, const TileLanes& tiles,
                                  const YCbCrComponents& to, size_t k) {
  constexpr int kShift = kColorDomain.shift;
  const Input red = MakeInput<kShift>(tiles.red), blue = MakeInput<kShift>(tiles.blue);
  const Input first = MakeInput<kShift>(HalfSum(tiles.greenOdd, tiles.greenEven));
  const Input second = MakeInput<kShift>(HalfSum(tiles.greenOdd, tiles.nextGreenOdd));
  const auto outer = make.luma.AddOuter(red, blue);
  StoreLuma(make.limits, WholeParts(make.luma.AddMiddle(outer, first)),
            WholeParts(make.luma.AddMiddle(outer, second)), to.luma + 2 * k);
  if (to.cb == nullptr) return;
  const Input green = MakeInput<kShift>(HalfSum(first.value, second.value));
  StoreChroma(make.limits, WholeParts(make.cb(red, green, blue)), to.cb + k);
  StoreChroma(make.limits, WholeParts(make.cr(red, green, blue)), to.cr + k);
}

/// The matrix is an argument, though there is but one: of weights that it knows the compiler would
/// make shifts and sums, which take longer than multiplications.
template <int kRed>
void TilesToYCbCr(const YCbCrArithmetic& matrix, const uint8_t* red, const uint8_t* blue,
                  const YCbCrComponents& to, size_t tiles, size_t following) {
  const D8 d;
  const size_t n = hn::Lanes(D16());
  const ToComponents make(matrix);
  size_t k = 0;
  for (; k + n < tiles + following; k += n) {
    TilesToComponents(make, LoadTiles<kRed>(red + 2 * k, blue + 2 * k), to, k);
  }
  // What is left is fewer tiles than lanes or just as many, and maybe one that only gives its
  // green.
  if (k == tiles) return;
  HWY_ALIGN uint8_t padded[2][4 * hn::MaxLanes(d)] = {};
  const size_t left = tiles - k;
  const size_t bytes = 2 * (left + following);
  std::memcpy(padded[0], red + 2 * k, bytes);
  std::memcpy(padded[1], blue + 2 * k, bytes);
  if (following == 0) {
    for (auto& row : padded) row[bytes + 1] = row[bytes - 1];
  }
  RestOfLine rest;
  const bool hasChroma = to.cb != nullptr;
  TilesToYCbCr<kRed>(matrix, padded[0], padded[1], rest.Components(hasChroma), n, 1);
  rest.CopyTo({to.luma + 2 * k, to.cb + (hasChroma ? k : 0), to.cr + (hasChroma ? k : 0)}, 2 * left,
              hasChroma ? left : 0);
}

void TilesOfPhaseToYCbCr(const YCbCrArithmetic& matrix, const uint8_t* row, const uint8_t* nextRow,
                         int phase, const YCbCrComponents& to, size_t tiles, size_t following) {
  const Scalar::BayerRowPair<uint8_t> pair(row, nextRow, phase);
  const auto run = pair.redIsEven ? &TilesToYCbCr<0> : &TilesToYCbCr<1>;
  run(matrix, pair.red, pair.blue, to, tiles, following);
}

/// Chrominance's part of the three colours for the pixels of a lane.
struct ChromaParts {
  Sums colors[3];
};

class PartsOfChroma {
 public:
  HWY_INLINE explicit PartsOfChroma(const YCbCrArithmetic& matrix)
      : m_least(Set16(matrix.limits.minC)),
        m_most(Set16(matrix.limits.maxC)),
        m_red(matrix.fromChroma[0]),
        m_green(matrix.fromChroma[1]),
        m_blue(matrix.fromChroma[2]) {}

  HWY_INLINE ChromaParts operator()(V16 cb, V16 cr) const {
    const V16 zero = Set16(128);
    const Input u = MakeInput<kChromaDomain.shift>(hn::Sub(Clamp16(cb, m_least, m_most), zero));
    const Input v = MakeInput<kChromaDomain.shift>(hn::Sub(Clamp16(cr, m_least, m_most), zero));
    return {{m_red(u, v, u), m_green(u, v, u), m_blue(u, v, u)}};
  }

 private:
  const V16 m_least, m_most;
  const TableSum<SmallParts{.outer = false, .middle = true, .last = false}> m_red;
  const TableSum<SmallParts{.outer = true, .middle = true, .last = false}> m_green;
  const TableSum<SmallParts{.outer = true, .middle = false, .last = false}> m_blue;
};

/// The colours of every other pixel, before they are limited, from luminance and chrominance's
/// parts. With full range luminance has no fraction and is added at the end.
template <bool kStudio>
class ColorsOfLuma {
 public:
  HWY_INLINE explicit ColorsOfLuma(const YCbCrArithmetic& matrix)
      : m_least(Set16(matrix.limits.minY)),
        m_most(Set16(matrix.limits.maxY)),
        m_sum(matrix.fromLuma) {}

  HWY_INLINE void operator()(V16 luma, const ChromaParts& chroma, V16* colors) const {
    if constexpr (kStudio) {
      const V16 limited = hn::Sub(Clamp16(luma, m_least, m_most), m_least);
      const Input y = MakeInput<kColorDomain.shift>(limited);
      const Sums part = m_sum(y, y, y);
      for (size_t i = 0; i < 3; ++i) colors[i] = WholeParts(part + chroma.colors[i]);
    } else {
      for (size_t i = 0; i < 3; ++i) colors[i] = hn::Add(luma, WholeParts(chroma.colors[i]));
    }
  }

 private:
  const V16 m_least, m_most;
  const TableSum<SmallParts{.outer = true, .middle = false, .last = false}> m_sum;
};

/// kGroup pixels share a pair of chrominance values.
template <bool kStudio, size_t kGroup>
class Colors {
 public:
  HWY_INLINE explicit Colors(const YCbCrArithmetic& matrix) : m_chroma(matrix), m_luma(matrix) {}

  /// Makes a vector of pixels; `colors` are red, green, blue.
  HWY_INLINE void operator()(const uint8_t* luma, const uint8_t* cb, const uint8_t* cr,
                             V8* colors) const {
    const D8 d;
    const V8 y = hn::LoadU(d, luma);
    V16 even[3], odd[3];
    if constexpr (kGroup == 1) {
      const V8 u = hn::LoadU(d, cb);
      const V8 v = hn::LoadU(d, cr);
      m_luma(EveryOther<0>(y), m_chroma(EveryOther<0>(u), EveryOther<0>(v)), even);
      m_luma(EveryOther<1>(y), m_chroma(EveryOther<1>(u), EveryOther<1>(v)), odd);
    } else {
      const hn::Half<D8> half;
      const ChromaParts parts = m_chroma(hn::PromoteTo(D16(), hn::LoadU(half, cb)),
                                         hn::PromoteTo(D16(), hn::LoadU(half, cr)));
      m_luma(EveryOther<0>(y), parts, even);
      m_luma(EveryOther<1>(y), parts, odd);
    }
    for (size_t i = 0; i < 3; ++i) colors[i] = JoinBytes(even[i], odd[i]);
  }

 private:
  const PartsOfChroma m_chroma;
  const ColorsOfLuma<kStudio> m_luma;
};

template <bool kStudio, size_t kGroup>
void ToColor(const YCbCrArithmetic& matrix, const YCbCrPlanes& planes, uint8_t* pixels, size_t step,
             bool isBGR, size_t count) {
  const D8 d;
  const size_t n = hn::Lanes(d);
  const Colors<kStudio, kGroup> colorsOf(matrix);
  V8 colors[3];
  size_t i = 0;
  for (; i + n <= count; i += n) {
    colorsOf(planes.luma + i, planes.cb + i / kGroup, planes.cr + i / kGroup, colors);
    if (isBGR) std::swap(colors[0], colors[2]);
    StorePixels(d, colors[0], colors[1], colors[2], pixels + i * step, step);
  }
  if (i == count) return;
  const size_t left = count - i;
  const size_t chroma = (left + kGroup - 1) / kGroup;
  RestOfLine rest;
  std::memcpy(rest.luma, planes.luma + i, left);
  std::memcpy(rest.cb, planes.cb + i / kGroup, chroma);
  std::memcpy(rest.cr, planes.cr + i / kGroup, chroma);
  HWY_ALIGN uint8_t padded[4 * hn::MaxLanes(d)] = {};
  std::memcpy(padded, pixels + i * step, left * step);
  ToColor<kStudio, kGroup>(matrix, {rest.luma, rest.cb, rest.cr, kGroup}, padded, step, isBGR, n);
  std::memcpy(pixels + i * step, padded, left * step);
}

void ToColorOfMatrix(const YCbCrArithmetic& matrix, const YCbCrPlanes& planes, uint8_t* pixels,
                     size_t step, bool isBGR, size_t count) {
  const bool isStudio = matrix.limits.minY != 0;
  const auto run = planes.group == 1 ? (isStudio ? &ToColor<true, 1> : &ToColor<false, 1>)
                                     : (isStudio ? &ToColor<true, 2> : &ToColor<false, 2>);
  run(matrix, planes, pixels, step, isBGR, count);
}

#else

YCbCrMatrix MatrixOf(const YCbCrArithmetic& matrix) {
  return static_cast<YCbCrMatrix>(&matrix - kYCbCrArithmetic.data());
}

void ToYCbCrOfGroup(const YCbCrArithmetic& matrix, const YCbCrSource& source, const uint8_t* pixels,
                    size_t group, const YCbCrComponents& to, size_t count) {
  Scalar::PixelsToYCbCr(MatrixOf(matrix), source, pixels, group, to, count);
}

void TilesOfPhaseToYCbCr(const YCbCrArithmetic&, const uint8_t* row, const uint8_t* nextRow,
                         int phase, const YCbCrComponents& to, size_t tiles, size_t following) {
  Scalar::BayerTilesToYCbCr(row, nextRow, phase, to, tiles, following);
}

void ToColorOfMatrix(const YCbCrArithmetic& matrix, const YCbCrPlanes& planes, uint8_t* pixels,
                     size_t step, bool isBGR, size_t count) {
  Scalar::PlanesToColor(MatrixOf(matrix), planes, pixels, step, isBGR, count);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(ToYCbCrOfGroup);
HWY_EXPORT(TilesOfPhaseToYCbCr);
HWY_EXPORT(ToColorOfMatrix);

void PixelsToYCbCr(YCbCrMatrix matrix, const YCbCrSource& source, const uint8_t* pixels,
                   size_t group, const YCbCrComponents& components, size_t count) {
  const size_t rest = group == 0 ? 0 : count % group;
  const size_t whole = count - rest;
  HWY_DYNAMIC_DISPATCH(ToYCbCrOfGroup)
  (YCbCrArithmeticOf(matrix), source, pixels, group, components, whole);
  if (rest == 0) return;
  Scalar::PixelsToYCbCr(
      matrix, source, pixels + whole * source.step, group,
      {components.luma + whole, components.cb + whole / group, components.cr + whole / group},
      rest);
}

void BayerTilesToYCbCr(const uint8_t* row, const uint8_t* nextRow, int phase,
                       const YCbCrComponents& components, size_t tiles, size_t following) {
  if (!IsBayerPhase(phase) || tiles == 0) return;
  HWY_DYNAMIC_DISPATCH(TilesOfPhaseToYCbCr)
  (YCbCrArithmeticOf(YCbCrMatrix::Full), row, nextRow, phase, components, tiles, following);
}

void PlanesToColor(YCbCrMatrix matrix, const YCbCrPlanes& planes, uint8_t* pixels, size_t step,
                   bool isBGR, size_t count) {
  HWY_DYNAMIC_DISPATCH(ToColorOfMatrix)
  (YCbCrArithmeticOf(matrix), planes, pixels, step, isBGR, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
