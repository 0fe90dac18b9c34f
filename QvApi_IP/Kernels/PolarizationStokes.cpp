// SPDX-License-Identifier: MIT
// Degree, angle and colour. Vectors calculate in single precision, which tells the whole number
// below a value unless that value lies very near to one. Such lanes are calculated again by the
// formulas themselves, so that results are theirs in every case.
#include <algorithm>
#include <array>
#include <bit>

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
using Integers = hn::Repartition<int32_t, Words>;
using SignedWords = hn::RebindToSigned<Words>;

/// Whole numbers in single precision: the differences of Stokes and the sum of the samples.
struct StokesFloats {
  FloatVector s1, s2, sum;
};

template <class V>
HWY_INLINE FloatVector ToFloats(V halfOfWords) {
  return hn::ConvertTo(Floats(), hn::PromoteTo(Integers(), halfOfWords));
}

HWY_INLINE StokesFloats LowerStokes(WordVector s1, WordVector s2, WordVector sum) {
  const SignedWords d;
  const hn::Half<SignedWords> half;
  return {ToFloats(hn::LowerHalf(half, hn::BitCast(d, s1))),
          ToFloats(hn::LowerHalf(half, hn::BitCast(d, s2))),
          ToFloats(hn::LowerHalf(half, hn::BitCast(d, sum)))};
}
HWY_INLINE StokesFloats UpperStokes(WordVector s1, WordVector s2, WordVector sum) {
  const SignedWords d;
  const hn::Half<SignedWords> half;
  return {ToFloats(hn::UpperHalf(half, hn::BitCast(d, s1))),
          ToFloats(hn::UpperHalf(half, hn::BitCast(d, s2))),
          ToFloats(hn::UpperHalf(half, hn::BitCast(d, sum)))};
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
        m_one(hn::Set(Floats(), 1.0f)) {}

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

  /// In turns, the polynomial is wrong by 6e-9 at most, and what rounding adds is below 1.4e-7.
  HWY_INLINE FloatVector Angle(const StokesFloats& stokes) const {
    const Floats d;
    const auto zero = hn::Zero(d);
    const auto x = hn::Abs(stokes.s1);
    const auto y = hn::Abs(stokes.s2);
    const auto ratio = hn::Div(hn::Min(x, y), hn::Max(hn::Max(x, y), m_one));
    auto turn = hn::Mul(ratio, TurnsOverRatio(hn::Mul(ratio, ratio)));
    turn = hn::IfThenElse(hn::Gt(y, x), hn::Sub(hn::Set(d, 0.25f), turn), turn);
    const auto isBack = hn::Lt(stokes.s1, zero);
    turn = hn::IfThenElse(isBack, hn::Sub(m_half, turn), turn);
    turn = hn::IfThenElse(hn::Lt(stokes.s2, zero), hn::Sub(m_one, turn), turn);
    const auto value = hn::MulAdd(turn, m_maximum, m_half);
    const auto isHalfTurn = hn::And(isBack, hn::Eq(stokes.s2, zero));
    const auto angle = hn::IfThenElse(isHalfTurn, hn::Set(d, static_cast<float>(m_scale.halfTurn)),
                                      hn::Floor(value));
    const auto margin = hn::Mul(m_maximum, hn::Set(d, 2.5e-7f));
    const auto isUnsure =
        hn::AndNot(isHalfTurn, IsNearWhole(hn::Sub(value, hn::Floor(value)), margin));
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
    constexpr float kCoefficients[]{-0.000645304452f, 0.00347959795f, -0.00889872337f,
                                    0.0153460338f,    -0.0221362715f, 0.0317459452f,
                                    -0.053046121f,    0.159154837f};
    auto value = hn::Set(Floats(), kCoefficients[0]);
    for (size_t i = 1; i < std::size(kCoefficients); ++i)
      value = hn::MulAdd(value, square, hn::Set(Floats(), kCoefficients[i]));
    return value;
  }

  const StokesScale& m_scale;
  const FloatVector m_maximum, m_half, m_one;
};

HWY_INLINE WordVector ToWords(FloatVector lower, FloatVector upper) {
  const hn::Half<Words> half;
  return hn::Combine(Words(), hn::DemoteTo(half, hn::ConvertTo(Integers(), upper)),
                     hn::DemoteTo(half, hn::ConvertTo(Integers(), lower)));
}

/// Calls `lower(stokes)`, `upper(stokes)` ... for both halves of the samples at each column.
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
        calculate(LowerStokes(s1, s2, sum), UpperStokes(s1, s2, sum), i);
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

struct ColorFloats {
  FloatVector red, green, blue;
};

/// Scalar::Color in whole numbers of single precision. A channel on its way has risen by a product
/// below 2^22 over the width of its sector; a half more in the product keeps the quotient away from
/// whole numbers by more than the multiplication with the reciprocal errs.
class ColorVectors {
 public:
  ColorVectors(const HueStyle& style, uint32_t maximum)
      : m_style(style), m_maximum(hn::Set(Floats(), static_cast<float>(maximum))) {
    const uint32_t ends[]{maximum / 6,     maximum / 3,     maximum / 2,
                          maximum * 4 / 6, maximum * 5 / 6, maximum};
    for (size_t i = 0; i < 6; ++i) {
      const uint32_t width = ends[i] - (i == 0 ? 0 : ends[i - 1]);
      m_ends[i] = hn::Set(Floats(), static_cast<float>(ends[i]));
      m_perWidth[i] = hn::Set(Floats(), 1.0f / static_cast<float>(width));
    }
    m_shift = hn::Set(Floats(), static_cast<float>(maximum * style.phase / 255));
  }

  HWY_INLINE ColorFloats operator()(FloatVector angle, FloatVector degree) const {
    const Floats d;
    if (m_style.isInverted) angle = hn::Sub(m_maximum, angle);
    const auto turned = hn::Add(angle, m_shift);
    const auto h = hn::IfThenElse(hn::Gt(turned, m_maximum), hn::Sub(turned, m_maximum), turned);
    const auto high = m_style.isDark ? degree : m_maximum;
    const auto low = m_style.isDark ? hn::Zero(d) : hn::Sub(m_maximum, degree);

    // From the last sector to the first.
    auto way = hn::Sub(m_maximum, h);
    auto perWidth = m_perWidth[5];
    const auto below = [&](size_t sector, FloatVector wayThere) HWY_ATTR {
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
    const auto product = hn::MulAdd(way, hn::Sub(high, low), hn::Set(d, 0.5f));
    const auto between = hn::Add(low, hn::Floor(hn::Mul(product, perWidth)));

    const auto pick = [](FloatMask mask, FloatVector yes, FloatVector no)
                          HWY_ATTR { return hn::IfThenElse(mask, yes, no); };
    return {pick(is1, low, pick(is2, between, pick(is4, high, between))),
            pick(is0, between, pick(is2, high, pick(is3, between, low))),
            pick(is0, high, pick(is1, between, pick(is3, low, pick(is4, between, high))))};
  }

 private:
  const HueStyle& m_style;
  FloatVector m_maximum, m_shift, m_ends[6], m_perWidth[6];
};

template <class T>
void Color(const HueStyle& style, const PolarizerLines<T>& source, ResultColumns columns,
           const std::array<T*, 3>& result) {
  const StokesScale scale(source.depth);
  const StokesVectors vectors(scale);
  const ColorVectors colors(style, scale.maximum);
  WalkStokes(
      source, columns,
      [&](const StokesFloats& lower, const StokesFloats& upper, size_t i) HWY_ATTR {
        const ColorFloats first = colors(vectors.Angle(lower), vectors.Degree(lower));
        const ColorFloats second = colors(vectors.Angle(upper), vectors.Degree(upper));
        StoreWords(ToWords(first.red, second.red), result[0] + i);
        StoreWords(ToWords(first.green, second.green), result[1] + i);
        StoreWords(ToWords(first.blue, second.blue), result[2] + i);
      },
      [&](ResultColumns rest, size_t i) {
        Scalar::ColorOfPolarization(style, source, rest,
                                    {result[0] + i, result[1] + i, result[2] + i});
      });
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
