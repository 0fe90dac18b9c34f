// SPDX-License-Identifier: MIT
// Degree, angle and colour. Vectors calculate in single precision, which tells the whole number
// below a value unless that value lies very near to one. Such lanes are calculated again by the
// formulas themselves, so that results are theirs in every case.
#include <algorithm>
#include <array>
#include <type_traits>

#include "QvApi_IP/Kernels/Polarization.h"
#include "QvApi_IP/Kernels/PolarizationScalar.h"
#include "QvApi_IP/Kernels/Stokes.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/PolarizationStokes.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After foreach_target.h.
#include "QvApi_IP/Kernels/PolarizerSamples-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Floats = hn::Repartition<float, Words>;
using FloatVector = hn::Vec<Floats>;
using FloatMask = hn::Mask<Floats>;

/// Whole numbers in single precision: the differences of Stokes and the sum of the samples.
struct StokesFloats {
  FloatVector s1, s2, sum;
};

/// The two halves of a vector of words in single precision. Interleaving leaves lanes in an order
/// that ToWords takes back.
struct FloatPair {
  FloatVector lower, upper;
};

HWY_INLINE FloatPair ToFloats(WordVector words) {
  const Words d;
  const auto zero = hn::Zero(d);
  return {hn::ConvertTo(Floats(), hn::BitCast(Integers(), hn::InterleaveLower(d, words, zero))),
          hn::ConvertTo(Floats(), hn::BitCast(Integers(), hn::InterleaveUpper(d, words, zero)))};
}
HWY_INLINE FloatPair SignedToFloats(WordVector words) {
  const Words d;
  const auto zero = hn::Zero(d);
  const auto extend = [](WordVector upperHalves) HWY_ATTR {
    return hn::ConvertTo(Floats(), hn::ShiftRight<16>(hn::BitCast(Integers(), upperHalves)));
  };
  return {extend(hn::InterleaveLower(d, zero, words)), extend(hn::InterleaveUpper(d, zero, words))};
}
HWY_INLINE WordVector ToWords(FloatVector lower, FloatVector upper) {
  return hn::BitCast(Words(), hn::ReorderDemote2To(SignedWords(), hn::ConvertTo(Integers(), lower),
                                                   hn::ConvertTo(Integers(), upper)));
}

/// Puts formula(s1, s2, sum) into the lanes of `mask`.
template <class Formula>
HWY_NOINLINE FloatVector Recalculate(FloatVector values, FloatMask mask, const StokesFloats& stokes,
                                     const Formula& formula) {
  const Floats d;
  constexpr size_t kMaxLanes = hn::MaxLanes(Floats());
  HWY_ALIGN float s1[kMaxLanes], s2[kMaxLanes], sum[kMaxLanes], result[kMaxLanes];
  hn::Store(stokes.s1, d, s1);
  hn::Store(stokes.s2, d, s2);
  hn::Store(stokes.sum, d, sum);
  hn::Store(values, d, result);
  uint8_t bits[8] = {};
  hn::StoreMaskBits(d, mask, bits);
  for (size_t i = 0; i < hn::Lanes(d); ++i)
    if (bits[i / 8] >> i % 8 & 1)
      result[i] = static_cast<float>(
          formula(static_cast<int>(s1[i]), static_cast<int>(s2[i]), static_cast<uint32_t>(sum[i])));
  return hn::Load(d, result);
}

class StokesVectors {
 public:
  explicit StokesVectors(const StokesScale& scale)
      : m_scale(scale),
        m_maximum(hn::Set(Floats(), static_cast<float>(scale.maximum))),
        m_half(hn::Set(Floats(), 0.5f)),
        m_one(hn::Set(Floats(), 1.0f)),
        m_halfTurn(hn::Set(Floats(), static_cast<float>(scale.halfTurn))),
        m_tieLimit(hn::Set(Floats(), 0.5f - 2.5e-7f * static_cast<float>(scale.maximum))) {}

  /// Six operations of half a unit in the last place each, of which the root halves those before:
  /// less than 5 * 2^-24 in all.
  HWY_INLINE FloatVector Degree(const StokesFloats& stokes) const {
    const Floats d;
    const auto squares = hn::MulAdd(stokes.s1, stokes.s1, hn::Mul(stokes.s2, stokes.s2));
    const auto magnitude = hn::MulAdd(hn::Add(m_maximum, m_maximum), hn::Sqrt(squares), m_half);
    const auto quotient = hn::Div(magnitude, hn::Max(stokes.sum, m_one));
    const auto value = hn::Min(quotient, hn::Add(m_maximum, m_half));
    const auto degree = hn::Floor(value);
    const auto margin = hn::Mul(value, hn::Set(d, 0x1p-21f));
    const auto isUnsure = IsNearWhole(hn::Sub(value, degree), margin);
    if (HWY_LIKELY(hn::AllFalse(d, isUnsure))) return degree;
    return Recalculate(degree, isUnsure, stokes,
                       [&](int s1, int s2, uint32_t sum) { return m_scale.Degree(s1, s2, sum); });
  }

  /// In turns, the polynomial is wrong by 4e-8 at most, and what rounding adds is below 1.4e-7. A
  /// half turn is an exact tie, and the directions next to it are far away.
  HWY_INLINE FloatVector Angle(const StokesFloats& stokes) const {
    const Floats d;
    const auto zero = hn::Zero(d);
    const auto x = hn::Abs(stokes.s1);
    const auto y = hn::Abs(stokes.s2);
    const auto ratio = hn::Div(hn::Min(x, y), hn::Max(hn::Max(x, y), m_one));
    auto turn = hn::Mul(ratio, TurnsOverRatio(hn::Mul(ratio, ratio)));
    turn = hn::IfThenElse(hn::Gt(y, x), hn::Sub(hn::Set(d, 0.25f), turn), turn);
    turn = hn::IfThenElse(hn::Lt(stokes.s1, zero), hn::Sub(m_half, turn), turn);
    turn = hn::IfThenElse(hn::Lt(stokes.s2, zero), hn::Sub(m_one, turn), turn);
    const auto value = hn::Mul(turn, m_maximum);
    const auto rounded = hn::Round(value);
    const auto isHalfTurn = hn::Eq(turn, m_half);
    const auto angle = hn::IfThenElse(isHalfTurn, m_halfTurn, rounded);
    const auto isNearTie = hn::Gt(hn::Abs(hn::Sub(value, rounded)), m_tieLimit);
    const auto isUnsure = hn::AndNot(isHalfTurn, isNearTie);
    if (HWY_LIKELY(hn::AllFalse(d, isUnsure))) return angle;
    return Recalculate(angle, isUnsure, stokes,
                       [&](int s1, int s2, uint32_t) { return m_scale.Angle(s1, s2); });
  }

 private:
  HWY_INLINE FloatMask IsNearWhole(FloatVector fraction, FloatVector margin) const {
    return hn::Or(hn::Lt(fraction, margin), hn::Gt(fraction, hn::Sub(m_one, margin)));
  }

  /// atan(r) / (2 pi r) for r from 0 to 1 by its square: a minimax polynomial.
  static HWY_INLINE FloatVector TurnsOverRatio(FloatVector square) {
    constexpr float kCoefficients[]{0.00108413057f, -0.00534827781f, 0.012672501f, -0.0210615181f,
                                    0.0315251176f,  -0.0530262382f,  0.159154324f};
    auto value = hn::Set(Floats(), kCoefficients[0]);
    for (size_t i = 1; i < std::size(kCoefficients); ++i)
      value = hn::MulAdd(value, square, hn::Set(Floats(), kCoefficients[i]));
    return value;
  }

  const StokesScale& m_scale;
  const FloatVector m_maximum, m_half, m_one, m_halfTurn, m_tieLimit;
};

/// Calls `calculate(lower, upper, i)` with both halves of a vector of columns, i being their place.
template <class T, class Calculate, class Scalars>
HWY_INLINE void WalkStokes(const PolarizerLines<T>& source, ResultColumns columns,
                           Calculate calculate, Scalars scalars) {
  WalkColumns(
      source, columns, hn::Lanes(Words()),
      [&](size_t column, size_t i) HWY_ATTR {
        const AngleWords words = LoadAngles(source, column);
        const auto s1 = hn::Sub(words.i0, words.i90);
        const auto s2 = hn::Sub(words.i45, words.i135);
        const auto sum = hn::Add(hn::Add(words.i0, words.i90), hn::Add(words.i45, words.i135));
        const FloatPair x = SignedToFloats(s1);
        const FloatPair y = SignedToFloats(s2);
        const FloatPair n = ToFloats(sum);
        calculate(StokesFloats{x.lower, y.lower, n.lower}, StokesFloats{x.upper, y.upper, n.upper},
                  i);
      },
      scalars);
}

template <class T>
void Degree(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  const StokesScale scale(source.depth);
  const StokesVectors vectors(scale);
  WalkStokes(
      source, columns,
      [&](const StokesFloats& lower, const StokesFloats& upper, size_t i) HWY_ATTR {
        StoreWords(ToWords(vectors.Degree(lower), vectors.Degree(upper)), result + i);
      },
      [&](ResultColumns rest, size_t i) {
        Scalar::DegreeOfPolarization(source, rest, result + i);
      });
}

template <class T>
void Angle(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  const StokesScale scale(source.depth);
  const StokesVectors vectors(scale);
  WalkStokes(
      source, columns,
      [&](const StokesFloats& lower, const StokesFloats& upper, size_t i)
          HWY_ATTR { StoreWords(ToWords(vectors.Angle(lower), vectors.Angle(upper)), result + i); },
      [&](ResultColumns rest, size_t i) { Scalar::AngleOfPolarization(source, rest, result + i); });
}

template <class V>
struct ColorVector {
  V red, green, blue;
};

/// Scalar::Color in lanes of D: signed words for 8 bits, single precision for more.
template <class D>
class ColorVectors {
  using V = hn::Vec<D>;
  using Lane = hn::TFromD<D>;
  static constexpr bool kIsWords = sizeof(Lane) == 2;

 public:
  ColorVectors(const HueStyle& style, uint32_t maximum)
      : m_style(style), m_maximum(Set(maximum)), m_shift(Set(maximum * style.phase / 255)) {
    const uint32_t ends[]{maximum / 6,     maximum / 3,     maximum / 2,
                          maximum * 4 / 6, maximum * 5 / 6, maximum};
    for (size_t i = 0; i < 6; ++i) {
      const uint32_t width = ends[i] - (i == 0 ? 0 : ends[i - 1]);
      m_ends[i] = Set(ends[i]);
      if constexpr (kIsWords) {
        m_perWidth[i] = hn::Set(D(), static_cast<Lane>(((1u << 21) + width - 1) / width));
      } else {
        m_perWidth[i] = hn::Set(D(), 1.0f / static_cast<float>(width));
      }
    }
  }

  HWY_INLINE ColorVector<V> operator()(V angle, V degree) const {
    if (m_style.isInverted) angle = hn::Sub(m_maximum, angle);
    const V turned = hn::Add(angle, m_shift);
    const V h = hn::IfThenElse(hn::Gt(turned, m_maximum), hn::Sub(turned, m_maximum), turned);
    const V high = m_style.isDark ? degree : m_maximum;
    const V low = m_style.isDark ? hn::Zero(D()) : hn::Sub(m_maximum, degree);

    // From the last sector to the first.
    V way = hn::Sub(m_maximum, h);
    V perWidth = m_perWidth[5];
    const auto below = [&](size_t sector, V wayThere) HWY_ATTR {
      const auto isBelow = hn::Lt(h, m_ends[sector]);
      way = hn::IfThenElse(isBelow, wayThere, way);
      perWidth = hn::IfThenElse(isBelow, m_perWidth[sector], perWidth);
      return isBelow;
    };
    const auto is4 = below(4, hn::Sub(h, m_ends[3]));
    const auto is3 = below(3, hn::Sub(m_ends[3], h));
    const auto is2 = below(2, hn::Sub(h, m_ends[1]));
    const auto is1 = below(1, hn::Sub(m_ends[1], h));
    const auto is0 = below(0, h);
    const V between = hn::Add(low, Quotient(way, hn::Sub(high, low), perWidth));

    const auto pick = [](auto mask, V yes, V no) HWY_ATTR { return hn::IfThenElse(mask, yes, no); };
    return {pick(is1, low, pick(is2, between, pick(is4, high, between))),
            pick(is0, between, pick(is2, high, pick(is3, between, low))),
            pick(is0, high, pick(is1, between, pick(is3, low, pick(is4, between, high))))};
  }

 private:
  static HWY_INLINE V Set(uint32_t value) { return hn::Set(D(), static_cast<Lane>(value)); }

  /// way * span / width, cut off. In words, 2^21 over the width, rounded up, is exact for products
  /// below 2^15. In single precision products are below 2^22; a half more keeps quotients away from
  /// whole numbers by more than the multiplication with the reciprocal errs.
  static HWY_INLINE V Quotient(V way, V span, V perWidth) {
    if constexpr (kIsWords) {
      const auto product = hn::BitCast(Words(), hn::Mul(way, span));
      const auto quotient = hn::MulHigh(product, hn::BitCast(Words(), perWidth));
      return hn::BitCast(D(), hn::ShiftRight<5>(quotient));
    } else {
      return hn::Floor(hn::Mul(hn::MulAdd(way, span, hn::Set(D(), 0.5f)), perWidth));
    }
  }

  const HueStyle m_style;
  V m_maximum, m_shift, m_ends[6], m_perWidth[6];
};

using ColorWords = ColorVector<WordVector>;

HWY_INLINE ColorWords ColorsOf(const ColorVectors<SignedWords>& colors, WordVector angles,
                               WordVector degrees) {
  const SignedWords di;
  const Words d;
  const auto color = colors(hn::BitCast(di, angles), hn::BitCast(di, degrees));
  return {hn::BitCast(d, color.red), hn::BitCast(d, color.green), hn::BitCast(d, color.blue)};
}
HWY_INLINE ColorWords ColorsOf(const ColorVectors<Floats>& colors, WordVector angles,
                               WordVector degrees) {
  const FloatPair a = ToFloats(angles);
  const FloatPair p = ToFloats(degrees);
  const auto lower = colors(a.lower, p.lower);
  const auto upper = colors(a.upper, p.upper);
  return {ToWords(lower.red, upper.red), ToWords(lower.green, upper.green),
          ToWords(lower.blue, upper.blue)};
}

/// In pieces: angles and degrees first, then what they look like. All at once would need more
/// registers than there are.
template <class T>
void Color(const HueStyle& style, const PolarizerLines<T>& source, ResultColumns columns,
           const std::array<T*, 3>& result) {
  using Lanes = std::conditional_t<sizeof(T) == 1, SignedWords, Floats>;
  constexpr size_t kPiece = 512;
  const size_t n = hn::Lanes(Words());
  const ColorVectors<Lanes> colors(style, (1u << source.depth) - 1);
  HWY_ALIGN T angles[kPiece];
  HWY_ALIGN T degrees[kPiece];
  HWY_ALIGN T rest[3][hn::MaxLanes(Words())];
  for (size_t first = 0; first < columns.count; first += kPiece) {
    const size_t count = std::min(kPiece, columns.count - first);
    Angle(source, {columns.first + first, count}, angles);
    Degree(source, {columns.first + first, count}, degrees);
    for (size_t i = 0; i < count; i += n) {
      const bool isWhole = i + n <= count;
      const auto target = [&](size_t c) { return isWhole ? result[c] + first + i : rest[c]; };
      const ColorWords color = ColorsOf(colors, LoadWords(angles + i), LoadWords(degrees + i));
      StoreWords(color.red, target(0));
      StoreWords(color.green, target(1));
      StoreWords(color.blue, target(2));
      if (isWhole) continue;
      for (size_t c = 0; c < 3; ++c) std::copy_n(rest[c], count - i, result[c] + first + i);
    }
  }
}

/// A line of the table. The magnitude has too many digits for single precision.
void FillEntries(const StokesScale& scale, int s2, int firstS1, uint32_t* entries, size_t count) {
  const Floats d;
  const StokesVectors vectors(scale);
  const size_t n = hn::Lanes(d);
  HWY_ALIGN float angles[hn::MaxLanes(d)];
  for (size_t i = 0; i < count; i += n) {
    const int s1 = firstS1 + static_cast<int>(i);
    const StokesFloats stokes{hn::Iota(d, static_cast<float>(s1)),
                              hn::Set(d, static_cast<float>(s2)), hn::Zero(d)};
    hn::Store(vectors.Angle(stokes), d, angles);
    for (size_t k = 0; k < std::min(n, count - i); ++k) {
      entries[2 * (i + k)] = scale.Magnitude(s1 + static_cast<int>(k), s2);
      entries[2 * (i + k) + 1] = static_cast<uint32_t>(angles[k]);
    }
  }
}

#else

// One lane is no vector.
template <class T>
void Degree(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  Scalar::DegreeOfPolarization(source, columns, result);
}
template <class T>
void Angle(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  Scalar::AngleOfPolarization(source, columns, result);
}
template <class T>
void Color(const HueStyle& style, const PolarizerLines<T>& source, ResultColumns columns,
           const std::array<T*, 3>& result) {
  Scalar::ColorOfPolarization(style, source, columns, result);
}

void FillEntries(const StokesScale& scale, int s2, int firstS1, uint32_t* entries, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    const int s1 = firstS1 + static_cast<int>(i);
    entries[2 * i] = scale.Magnitude(s1, s2);
    entries[2 * i + 1] = scale.Angle(s1, s2);
  }
}

#endif

void Degree8(const PolarizerLines<uint8_t>& s, ResultColumns c, uint8_t* to) { Degree(s, c, to); }
void Degree16(const PolarizerLines<uint16_t>& s, ResultColumns c, uint16_t* to) {
  Degree(s, c, to);
}
void Angle8(const PolarizerLines<uint8_t>& s, ResultColumns c, uint8_t* to) { Angle(s, c, to); }
void Angle16(const PolarizerLines<uint16_t>& s, ResultColumns c, uint16_t* to) { Angle(s, c, to); }
void Color8(const HueStyle& style, const PolarizerLines<uint8_t>& s, ResultColumns c,
            const std::array<uint8_t*, 3>& to) {
  Color(style, s, c, to);
}
void Color16(const HueStyle& style, const PolarizerLines<uint16_t>& s, ResultColumns c,
             const std::array<uint16_t*, 3>& to) {
  Color(style, s, c, to);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Degree8);
HWY_EXPORT(Degree16);
HWY_EXPORT(Angle8);
HWY_EXPORT(Angle16);
HWY_EXPORT(Color8);
HWY_EXPORT(Color16);
HWY_EXPORT(FillEntries);

template <class T>
void DegreeOfPolarization(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  if constexpr (sizeof(T) == 1) {
    HWY_DYNAMIC_DISPATCH(Degree8)(source, columns, result);
  } else {
    HWY_DYNAMIC_DISPATCH(Degree16)(source, columns, result);
  }
}

template <class T>
void AngleOfPolarization(const PolarizerLines<T>& source, ResultColumns columns, T* result) {
  if constexpr (sizeof(T) == 1) {
    HWY_DYNAMIC_DISPATCH(Angle8)(source, columns, result);
  } else {
    HWY_DYNAMIC_DISPATCH(Angle16)(source, columns, result);
  }
}

template <class T>
void ColorOfPolarization(const HueStyle& style, const PolarizerLines<T>& source,
                         ResultColumns columns, const std::array<T*, 3>& result) {
  if constexpr (sizeof(T) == 1) {
    HWY_DYNAMIC_DISPATCH(Color8)(style, source, columns, result);
  } else {
    HWY_DYNAMIC_DISPATCH(Color16)(style, source, columns, result);
  }
}

template void DegreeOfPolarization(const PolarizerLines<uint8_t>&, ResultColumns, uint8_t*);
template void DegreeOfPolarization(const PolarizerLines<uint16_t>&, ResultColumns, uint16_t*);
template void AngleOfPolarization(const PolarizerLines<uint8_t>&, ResultColumns, uint8_t*);
template void AngleOfPolarization(const PolarizerLines<uint16_t>&, ResultColumns, uint16_t*);
template void ColorOfPolarization(const HueStyle&, const PolarizerLines<uint8_t>&, ResultColumns,
                                  const std::array<uint8_t*, 3>&);
template void ColorOfPolarization(const HueStyle&, const PolarizerLines<uint16_t>&, ResultColumns,
                                  const std::array<uint16_t*, 3>&);

void FillStokesEntries(const StokesScale& scale, int s2, int firstS1, uint32_t* entries,
                       size_t count) {
  HWY_DYNAMIC_DISPATCH(FillEntries)(scale, s2, firstS1, entries, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
