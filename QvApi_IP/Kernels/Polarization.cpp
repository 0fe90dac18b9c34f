// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Polarization.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <type_traits>

#include "QvApi_IP/Kernels/PolarizationScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Polarization.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After foreach_target.h.
#include "QvApi_IP/Kernels/PolarizerSamples-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// --- Without regard to angles
// ---------------------------------------------------------------------

/// The four samples in any order, as many pixels as a vector of D has lanes.
template <class D, class T>
HWY_INLINE std::array<hn::Vec<D>, 4> LoadSamples(D d, const PolarizerLines<T>& source,
                                                 size_t column) {
  hn::Vec<D> a, b, c, e;
  if (source.neighbourhood == Neighbourhood::Window) {
    a = hn::LoadU(d, source.zero + column - 1);
    b = hn::LoadU(d, source.zero + column);
    c = hn::LoadU(d, source.ninety + column - 1);
    e = hn::LoadU(d, source.ninety + column);
  } else {
    hn::LoadInterleaved2(d, source.zero + 2 * column, a, b);
    hn::LoadInterleaved2(d, source.ninety + 2 * column, c, e);
  }
  if constexpr (sizeof(T) == 1) return {a, b, c, e};
  const auto mask = hn::Set(d, static_cast<T>((1u << source.depth) - 1));
  return {hn::And(a, mask), hn::And(b, mask), hn::And(c, mask), hn::And(e, mask)};
}

/// Two steps of averages that both round up are one too high where a half was lost in the first
/// step and there is another one in the second.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Mean(D d, const std::array<V, 4>& s) {
  const V first = hn::AverageRound(s[0], s[1]);
  const V second = hn::AverageRound(s[2], s[3]);
  const V lost = hn::Or(hn::Xor(s[0], s[1]), hn::Xor(s[2], s[3]));
  const V excess = hn::And(hn::And(lost, hn::Xor(first, second)), hn::Set(d, 1));
  return hn::Sub(hn::AverageRound(first, second), excess);
}
template <class V>
HWY_INLINE V Greatest(const std::array<V, 4>& s) {
  return hn::Max(hn::Max(s[0], s[1]), hn::Max(s[2], s[3]));
}
template <class V>
HWY_INLINE V Least(const std::array<V, 4>& s) {
  return hn::Min(hn::Min(s[0], s[1]), hn::Min(s[2], s[3]));
}

template <class T>
void Reduce(AngleReduction reduction, const PolarizerLines<T>& source, ResultColumns columns,
            T* result) {
  const hn::ScalableTag<T> d;
  using Samples = std::array<hn::Vec<decltype(d)>, 4>;
  const auto walk = [&](auto reduce) HWY_ATTR {
    WalkColumns(
        source, columns, hn::Lanes(d),
        [&](size_t column, size_t i)
            HWY_ATTR { hn::StoreU(reduce(LoadSamples(d, source, column)), d, result + i); },
        [&](ResultColumns rest, size_t i) {
          Scalar::ReduceAngles(reduction, source, rest, result + i);
        });
  };
  switch (reduction) {
    case AngleReduction::Mean:
      return walk([d](const Samples& s) HWY_ATTR { return Mean(d, s); });
    case AngleReduction::Maximum:
      return walk([](const Samples& s) HWY_ATTR { return Greatest(s); });
    case AngleReduction::Minimum:
      return walk([](const Samples& s) HWY_ATTR { return Least(s); });
    case AngleReduction::Difference:
      return walk([](const Samples& s) HWY_ATTR { return hn::Sub(Greatest(s), Least(s)); });
  }
}

// --- Behind a polarizer, by the table
// ---------------------------------------------------------------

using SignedWords = hn::RebindToSigned<Words>;
using Integers = hn::Repartition<int32_t, Words>;
using IntegerVector = hn::Vec<Integers>;

/// Vectors of 32-bit lanes for the lower and the upper half of a vector of words.
struct IntegerPair {
  IntegerVector lower, upper;
};

template <class V>
HWY_INLINE IntegerPair ToIntegers(V words) {
  const Integers d;
  const hn::Half<hn::DFromV<V>> half;
  return {hn::PromoteTo(d, hn::LowerHalf(half, words)),
          hn::PromoteTo(d, hn::UpperHalf(half, words))};
}

HWY_INLINE WordVector ToWords(const IntegerPair& pair) {
  const Words d;
  const hn::Half<Words> half;
  return hn::Combine(d, hn::DemoteTo(half, pair.upper), hn::DemoteTo(half, pair.lower));
}

/// floor(sample * fraction / 2^32) in words, from the two halves of the fraction.
template <bool kLowHalf>
HWY_INLINE WordVector FractionOf(WordVector samples, WordVector high, WordVector low) {
  const auto whole = hn::MulHigh(samples, high);
  if constexpr (!kLowHalf) return whole;
  const auto rest = hn::Mul(samples, high);
  const auto sum = hn::Add(rest, hn::MulHigh(samples, low));
  return hn::Sub(whole, hn::VecFromMask(Words(), hn::Lt(sum, rest)));  // carries
}

/// The polarizer in vectors. kFractionHalves: how many 16-bit halves of the lines' fractions are
/// needed, counted from above.
template <int kFractionHalves>
class PolarizerVectors {
 public:
  explicit PolarizerVectors(const VirtualPolarizer& polarizer) : m_polarizer(polarizer) {
    const Words d;
    m_maximum = hn::Set(Integers(), (1 << (polarizer.depth + 14)) - (1 << 14));
    m_least = hn::Set(Integers(), polarizer.least);
    m_most = hn::Set(Integers(), polarizer.most);
    int negatives = 0;
    for (size_t a = 0; a < 4; ++a) {
      const VirtualPolarizer::Line& line = polarizer.lines[a];
      m_high[a] = hn::Set(d, static_cast<uint16_t>(line.fraction >> 16));
      m_low[a] = hn::Set(d, static_cast<uint16_t>(line.fraction));
      m_sign[a] = hn::Set(d, line.isNegative ? 0xFFFF : 0);
      m_whole[a] = hn::Set(Integers(), line.isNegative ? -line.whole : line.whole);
      negatives += line.isNegative;
    }
    m_negatives = hn::Set(d, static_cast<uint16_t>(negatives));
  }

  HWY_INLINE WordVector operator()(const AngleWords& words) const {
    const WordVector samples[4] = {words.i0, words.i45, words.i90, words.i135};
    IntegerPair sum{hn::Zero(Integers()), hn::Zero(Integers())};
    if constexpr (kFractionHalves > 0) {
      // -x is ~x + 1.
      WordVector fractions = m_negatives;
      for (size_t a = 0; a < 4; ++a)
        fractions = hn::Add(fractions, hn::Xor(m_sign[a], FractionOf<(kFractionHalves > 1)>(
                                                              samples[a], m_high[a], m_low[a])));
      sum = ToIntegers(hn::BitCast(SignedWords(), fractions));
    }
    for (size_t a = 0; a < 4; ++a) {
      const IntegerPair sample = ToIntegers(samples[a]);
      sum.lower = hn::Add(sum.lower, hn::Mul(sample.lower, m_whole[a]));
      sum.upper = hn::Add(sum.upper, hn::Mul(sample.upper, m_whole[a]));
    }
    const WordVector seen = Quotients(sum, m_least);
    if (m_polarizer.least == m_polarizer.most) return seen;
    const auto isSure = hn::Eq(seen, Quotients(sum, m_most));
    return hn::AllTrue(Words(), isSure) ? seen : LookUp(words);
  }

 private:
  HWY_INLINE WordVector Quotients(const IntegerPair& sum, IntegerVector offset) const {
    const auto quotient = [&](IntegerVector v) HWY_ATTR {
      const auto clipped = hn::Min(hn::Max(hn::Add(v, offset), hn::Zero(Integers())), m_maximum);
      return hn::ShiftRight<14>(clipped);
    };
    return ToWords({quotient(sum.lower), quotient(sum.upper)});
  }

  HWY_NOINLINE WordVector LookUp(const AngleWords& words) const {
    const Words d;
    HWY_ALIGN uint16_t samples[4][hn::MaxLanes(d)];
    hn::Store(words.i0, d, samples[0]);
    hn::Store(words.i45, d, samples[1]);
    hn::Store(words.i90, d, samples[2]);
    hn::Store(words.i135, d, samples[3]);
    for (size_t i = 0; i < hn::Lanes(d); ++i)
      samples[0][i] = static_cast<uint16_t>(
          Scalar::Seen(m_polarizer, {samples[0][i], samples[1][i], samples[2][i], samples[3][i]}));
    return hn::Load(d, samples[0]);
  }

  const VirtualPolarizer& m_polarizer;
  IntegerVector m_maximum, m_least, m_most, m_whole[4];
  WordVector m_high[4], m_low[4], m_sign[4], m_negatives;
};

template <class T, class Polarizer, class See>
HWY_INLINE void LookWords(const Polarizer& polarizer, const PolarizerLines<T>& source,
                          ResultColumns columns, T* result, const See& see) {
  WalkColumns(
      source, columns, hn::Lanes(Words()),
      [&](size_t column, size_t i)
          HWY_ATTR { StoreWords(see(LoadAngles(source, column)), result + i); },
      [&](ResultColumns rest, size_t i) {
        Scalar::LookThrough(polarizer, source, rest, result + i);
      });
}

template <class T>
void Look(const VirtualPolarizer& polarizer, const PolarizerLines<T>& source, ResultColumns columns,
          T* result) {
  uint32_t fractions = 0;
  for (const VirtualPolarizer::Line& line : polarizer.lines) fractions |= line.fraction;
  if (fractions == 0) {
    LookWords(polarizer, source, columns, result, PolarizerVectors<0>(polarizer));
  } else if ((fractions & 0xFFFF) == 0) {
    LookWords(polarizer, source, columns, result, PolarizerVectors<1>(polarizer));
  } else {
    LookWords(polarizer, source, columns, result, PolarizerVectors<2>(polarizer));
  }
}

#else

// One lane is no vector.
template <class T>
void Reduce(AngleReduction reduction, const PolarizerLines<T>& source, ResultColumns columns,
            T* result) {
  Scalar::ReduceAngles(reduction, source, columns, result);
}
template <class T>
void Look(const VirtualPolarizer& polarizer, const PolarizerLines<T>& source, ResultColumns columns,
          T* result) {
  Scalar::LookThrough(polarizer, source, columns, result);
}

#endif

// --- Behind a polarizer, by the cosine law
// ----------------------------------------------------------

#if HWY_TARGET != HWY_SCALAR && HWY_NATIVE_FMA && HWY_HAVE_FLOAT64

using Doubles = hn::Repartition<double, Words>;

/// Four times the value, which changes nothing about its rounding.
class CosineVectors {
 public:
  CosineVectors(const CosinePolarizer& polarizer, unsigned depth)
      : m_sine(hn::Set(Doubles(), 2 * polarizer.sine)),
        m_cosine(hn::Set(Doubles(), 2 * polarizer.cosine)),
        m_maximum(hn::Set(Doubles(), 4.0 * ((1 << depth) - 1))) {}

  HWY_INLINE WordVector operator()(const AngleWords& words) const {
    const auto sum =
        ToIntegers(hn::Add(hn::Add(words.i0, words.i90), hn::Add(words.i45, words.i135)));
    const auto s1 = ToIntegers(hn::BitCast(SignedWords(), hn::Sub(words.i0, words.i90)));
    const auto s2 = ToIntegers(hn::BitCast(SignedWords(), hn::Sub(words.i45, words.i135)));
    return ToWords({Values(sum.lower, s1.lower, s2.lower), Values(sum.upper, s1.upper, s2.upper)});
  }

 private:
  HWY_INLINE IntegerVector Values(IntegerVector sum, IntegerVector s1, IntegerVector s2) const {
    const hn::Half<Integers> half;
    const auto lower =
        HalfOfValues(hn::LowerHalf(half, sum), hn::LowerHalf(half, s1), hn::LowerHalf(half, s2));
    const auto upper =
        HalfOfValues(hn::UpperHalf(half, sum), hn::UpperHalf(half, s1), hn::UpperHalf(half, s2));
    return hn::ShiftRight<2>(hn::Combine(Integers(), upper, lower));
  }
  template <class V>
  HWY_INLINE V HalfOfValues(V sum, V s1, V s2) const {
    const Doubles d;
    const auto value =
        hn::MulAdd(m_sine, hn::PromoteTo(d, s2),
                   hn::MulAdd(m_cosine, hn::PromoteTo(d, s1), hn::PromoteTo(d, sum)));
    const auto clipped = hn::Min(hn::Max(value, hn::Zero(d)), m_maximum);
    return hn::DemoteTo(hn::Half<Integers>(), clipped);
  }

  hn::Vec<Doubles> m_sine, m_cosine, m_maximum;
};

template <class T>
void LookByCosine(const CosinePolarizer& polarizer, const PolarizerLines<T>& source,
                  ResultColumns columns, T* result) {
  LookWords(polarizer, source, columns, result, CosineVectors(polarizer, source.depth));
}

#else

// Without a fused multiply-add in vectors there is no gain.
template <class T>
void LookByCosine(const CosinePolarizer& polarizer, const PolarizerLines<T>& source,
                  ResultColumns columns, T* result) {
  Scalar::LookThrough(polarizer, source, columns, result);
}

#endif

// --- As they are dispatched
// -------------------------------------------------------------------------

void Reduce8(AngleReduction r, const PolarizerLines<uint8_t>& s, ResultColumns c, uint8_t* to) {
  Reduce(r, s, c, to);
}
void Reduce16(AngleReduction r, const PolarizerLines<uint16_t>& s, ResultColumns c, uint16_t* to) {
  Reduce(r, s, c, to);
}

void Look8(const VirtualPolarizer& p, const PolarizerLines<uint8_t>& s, ResultColumns c,
           uint8_t* to) {
  Look(p, s, c, to);
}
void Look16(const VirtualPolarizer& p, const PolarizerLines<uint16_t>& s, ResultColumns c,
            uint16_t* to) {
  Look(p, s, c, to);
}

void LookByCosine8(const CosinePolarizer& p, const PolarizerLines<uint8_t>& s, ResultColumns c,
                   uint8_t* to) {
  LookByCosine(p, s, c, to);
}
void LookByCosine16(const CosinePolarizer& p, const PolarizerLines<uint16_t>& s, ResultColumns c,
                    uint16_t* to) {
  LookByCosine(p, s, c, to);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Reduce8);
HWY_EXPORT(Reduce16);
HWY_EXPORT(Look8);
HWY_EXPORT(Look16);
HWY_EXPORT(LookByCosine8);
HWY_EXPORT(LookByCosine16);

namespace {

/// The line of whole numbers that a block of the table is, as far as there is one.
VirtualPolarizer::Line LineOf(const int32_t* block, size_t size) {
  VirtualPolarizer::Line line{.isNegative = block[size - 1] < 0};
  line.whole = static_cast<uint16_t>(std::abs(block[1]));
  // Entry i is right for fractions from (entry << 32) / i to just below ((entry + 1) << 32) / i.
  uint64_t least = 0;
  uint64_t most = 0xFFFFFFFF;
  for (uint64_t i = 1; i < size; ++i) {
    const uint64_t entry = static_cast<uint64_t>(std::abs(block[i])) - line.whole * i;
    least = std::max(least, ((entry << 32) + i - 1) / i);
    most = std::min(most, (((entry + 1) << 32) + i - 1) / i - 1);
  }
  const uint64_t shortFraction = (least + 0xFFFF) & ~uint64_t{0xFFFF};
  uint64_t fraction = least <= most ? least : (least + most) / 2;
  if (shortFraction <= most) fraction = shortFraction;
  line.fraction = static_cast<uint32_t>(std::min<uint64_t>(fraction, 0xFFFFFFFF));
  return line;
}

}  // namespace

VirtualPolarizer::VirtualPolarizer(const int32_t* allEntries, unsigned bits)
    : table(allEntries), depth(bits) {
  const size_t size = size_t{1} << bits;
  for (size_t a = 0; a < lines.size(); ++a) {
    const int32_t* block = table + a * size;
    const Line line = lines[a] = LineOf(block, size);
    int32_t lowest = 0, highest = 0;
    for (size_t i = 0; i < size; ++i) {
      const auto value = static_cast<int32_t>(line.whole * i + (line.fraction * uint64_t{i} >> 32));
      const int32_t difference = block[i] - (line.isNegative ? -value : value);
      lowest = std::min(lowest, difference);
      highest = std::max(highest, difference);
    }
    least += lowest;
    most += highest;
  }
}

template <class T>
void ReduceAngles(AngleReduction reduction, const PolarizerLines<T>& source, ResultColumns columns,
                  T* result) {
  if constexpr (sizeof(T) == 1) {
    HWY_DYNAMIC_DISPATCH(Reduce8)(reduction, source, columns, result);
  } else {
    HWY_DYNAMIC_DISPATCH(Reduce16)(reduction, source, columns, result);
  }
}

template <class T>
void LookThrough(const VirtualPolarizer& polarizer, const PolarizerLines<T>& source,
                 ResultColumns columns, T* result) {
  if constexpr (sizeof(T) == 1) {
    HWY_DYNAMIC_DISPATCH(Look8)(polarizer, source, columns, result);
  } else {
    HWY_DYNAMIC_DISPATCH(Look16)(polarizer, source, columns, result);
  }
}

template <class T>
void LookThrough(const CosinePolarizer& polarizer, const PolarizerLines<T>& source,
                 ResultColumns columns, T* result) {
  if constexpr (sizeof(T) == 1) {
    HWY_DYNAMIC_DISPATCH(LookByCosine8)(polarizer, source, columns, result);
  } else {
    HWY_DYNAMIC_DISPATCH(LookByCosine16)(polarizer, source, columns, result);
  }
}

template void ReduceAngles(AngleReduction, const PolarizerLines<uint8_t>&, ResultColumns, uint8_t*);
template void ReduceAngles(AngleReduction, const PolarizerLines<uint16_t>&, ResultColumns,
                           uint16_t*);
template void LookThrough(const VirtualPolarizer&, const PolarizerLines<uint8_t>&, ResultColumns,
                          uint8_t*);
template void LookThrough(const VirtualPolarizer&, const PolarizerLines<uint16_t>&, ResultColumns,
                          uint16_t*);
template void LookThrough(const CosinePolarizer&, const PolarizerLines<uint8_t>&, ResultColumns,
                          uint8_t*);
template void LookThrough(const CosinePolarizer&, const PolarizerLines<uint16_t>&, ResultColumns,
                          uint16_t*);

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
