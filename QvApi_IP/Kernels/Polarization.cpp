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
#include "QvApi_IP/Kernels/PairSums-inl.h"
#include "QvApi_IP/Kernels/PolarizerSamples-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// --- Without regard to angles ---

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

// --- Behind a polarizer, by the table ---

using IntegerVector = hn::Vec<Integers>;

/// What fractions the lines of a polarizer need.
enum class Fractions { None, High, Both, BothWithStep };

/// floor(sample * fraction / 2^32) in words, from one or both halves of the fraction.
class FractionVectors {
 public:
  FractionVectors() = default;
  explicit FractionVectors(const VirtualPolarizer::Line& line)
      : m_step(hn::Set(SignedWords(), static_cast<int16_t>(line.step - 1))) {
    for (size_t i = 0; i < 2; ++i) {
      m_high[i] = hn::Set(Words(), static_cast<uint16_t>(line.fractions[i] >> 16));
      m_low[i] = hn::Set(Words(), static_cast<uint16_t>(line.fractions[i]));
    }
  }

  template <Fractions kFractions>
  HWY_INLINE WordVector Of(WordVector samples) const {
    auto high = m_high[0];
    auto low = m_low[0];
    if constexpr (kFractions == Fractions::BothWithStep) {
      const auto isBehind =
          hn::RebindMask(Words(), hn::Gt(hn::BitCast(SignedWords(), samples), m_step));
      high = hn::IfThenElse(isBehind, m_high[1], high);
      low = hn::IfThenElse(isBehind, m_low[1], low);
    }
    const auto whole = hn::MulHigh(samples, high);
    if constexpr (kFractions == Fractions::High) return whole;
    const auto rest = hn::Mul(samples, high);
    const auto sum = hn::Add(rest, hn::MulHigh(samples, low));
    return hn::Sub(whole, hn::VecFromMask(Words(), hn::Lt(sum, rest)));  // carries
  }

 private:
  hn::Vec<SignedWords> m_step;
  WordVector m_high[2], m_low[2];
};

/// The polarizer in vectors.
template <Fractions kFractions>
class PolarizerVectors {
 public:
  explicit PolarizerVectors(const VirtualPolarizer& polarizer)
      : m_polarizer(polarizer), m_isExact(polarizer.least == 0 && polarizer.most == 0) {
    const Words d;
    m_maximum = hn::Set(SignedWords(), static_cast<int16_t>((1 << polarizer.depth) - 1));
    m_least = hn::Set(Integers(), polarizer.least);
    m_span = hn::Set(Integers(), polarizer.most - polarizer.least);
    int negatives = 0;
    std::array<int, 4> whole;
    for (size_t a = 0; a < 4; ++a) {
      const VirtualPolarizer::Line& line = polarizer.lines[a];
      m_fractions[a] = FractionVectors(line);
      m_sign[a] = hn::Set(d, line.isNegative ? 0xFFFF : 0);
      whole[a] = line.isNegative ? -line.whole : line.whole;
      negatives += line.isNegative;
    }
    m_whole0And45 = SetPair(whole[0], whole[1]);
    m_whole90And135 = SetPair(whole[2], whole[3]);
    m_negatives = hn::Set(d, static_cast<uint16_t>(negatives));
  }

  HWY_INLINE WordVector operator()(const AngleWords& words) const {
    const Words d;
    auto lower = m_least, upper = m_least;
    AddProducts(words.i0, words.i45, m_whole0And45, lower, upper);
    AddProducts(words.i90, words.i135, m_whole90And135, lower, upper);
    if constexpr (kFractions != Fractions::None) {
      const WordVector samples[4] = {words.i0, words.i45, words.i90, words.i135};
      WordVector fractions = m_negatives;  // since -x is ~x + 1
      for (size_t a = 0; a < 4; ++a) {
        const auto part = m_fractions[a].template Of<kFractions>(samples[a]);
        fractions = hn::Add(fractions, hn::Xor(m_sign[a], part));
      }
      AddProducts(fractions, hn::Zero(d), SetPair(1, 0), lower, upper);
    }
    const auto least = Quotients(lower, upper);
    const auto seen = hn::BitCast(d, hn::Min(hn::Max(least, hn::Zero(SignedWords())), m_maximum));
    if (m_isExact) return seen;
    const auto most = Quotients(hn::Add(lower, m_span), hn::Add(upper, m_span));
    const auto isUnsure = hn::RebindMask(d, hn::Ne(least, most));
    return HWY_LIKELY(hn::AllFalse(d, isUnsure)) ? seen : LookUp(seen, isUnsure, words);
  }

 private:
  /// Adds first * even coefficient + second * odd coefficient, with signs. Interleaving leaves the
  /// lanes in an order that Quotients takes back.
  static HWY_INLINE void AddProducts(WordVector first, WordVector second,
                                     hn::Vec<SignedWords> coefficients, IntegerVector& lower,
                                     IntegerVector& upper) {
    const Words d;
    const SignedWords di;
    lower = AddPairs(hn::BitCast(di, hn::InterleaveLower(d, first, second)), coefficients, lower);
    upper = AddPairs(hn::BitCast(di, hn::InterleaveUpper(d, first, second)), coefficients, upper);
  }

  static HWY_INLINE hn::Vec<SignedWords> Quotients(IntegerVector lower, IntegerVector upper) {
    return hn::ReorderDemote2To(SignedWords(), hn::ShiftRight<14>(lower),
                                hn::ShiftRight<14>(upper));
  }

  /// The lanes of `mask` by the table.
  HWY_NOINLINE WordVector LookUp(WordVector seen, hn::Mask<Words> mask,
                                 const AngleWords& words) const {
    const Words d;
    constexpr size_t kMaxLanes = hn::MaxLanes(Words());
    HWY_ALIGN uint16_t i0[kMaxLanes], i45[kMaxLanes], i90[kMaxLanes], i135[kMaxLanes];
    HWY_ALIGN uint16_t result[kMaxLanes];
    hn::Store(words.i0, d, i0);
    hn::Store(words.i45, d, i45);
    hn::Store(words.i90, d, i90);
    hn::Store(words.i135, d, i135);
    hn::Store(seen, d, result);
    uint8_t bits[8 + kMaxLanes / 8] = {};
    hn::StoreMaskBits(d, mask, bits);
    for (size_t i = 0; i < hn::Lanes(d); ++i)
      if (bits[i / 8] >> i % 8 & 1)
        result[i] =
            static_cast<uint16_t>(Scalar::Seen(m_polarizer, {i0[i], i45[i], i90[i], i135[i]}));
    return hn::Load(d, result);
  }

  const VirtualPolarizer& m_polarizer;
  const bool m_isExact;
  hn::Vec<SignedWords> m_maximum, m_whole0And45, m_whole90And135;
  IntegerVector m_least, m_span;
  FractionVectors m_fractions[4];
  WordVector m_sign[4], m_negatives;
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
  uint64_t fractions = 0;
  bool hasStep = false;
  for (const VirtualPolarizer::Line& line : polarizer.lines) {
    fractions |= line.fractions[0] | line.fractions[1];
    hasStep |= line.step != line.kNoStep;
  }
  const auto look = [&](const auto& vectors)
                        HWY_ATTR { LookWords(polarizer, source, columns, result, vectors); };
  if (hasStep) return look(PolarizerVectors<Fractions::BothWithStep>(polarizer));
  if (fractions == 0) return look(PolarizerVectors<Fractions::None>(polarizer));
  if ((fractions & 0xFFFF) == 0) return look(PolarizerVectors<Fractions::High>(polarizer));
  look(PolarizerVectors<Fractions::Both>(polarizer));
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

// --- Behind a polarizer, by the cosine law ---

#if HWY_TARGET != HWY_SCALAR && HWY_NATIVE_FMA && HWY_HAVE_FLOAT64

using Doubles = hn::Repartition<double, Words>;

/// Four times the value, which changes nothing about its rounding, until it is a whole number.
class CosineVectors {
 public:
  CosineVectors(const CosinePolarizer& polarizer, unsigned depth)
      : m_sine(hn::Set(Doubles(), 2 * polarizer.sine)),
        m_cosine(hn::Set(Doubles(), 2 * polarizer.cosine)),
        m_maximum(hn::Set(SignedWords(), static_cast<int16_t>((1 << depth) - 1))) {}

  HWY_INLINE WordVector operator()(const AngleWords& words) const {
    const Words d;
    const auto sum = hn::Add(hn::Add(words.i0, words.i90), hn::Add(words.i45, words.i135));
    const auto s1 = hn::Sub(words.i0, words.i90);
    const auto s2 = hn::Sub(words.i45, words.i135);
    // Interleaving leaves the lanes in an order that demoting takes back.
    const auto zero = hn::Zero(d);
    const auto lower = Values(hn::InterleaveLower(d, sum, zero), hn::InterleaveLower(d, zero, s1),
                              hn::InterleaveLower(d, zero, s2));
    const auto upper = Values(hn::InterleaveUpper(d, sum, zero), hn::InterleaveUpper(d, zero, s1),
                              hn::InterleaveUpper(d, zero, s2));
    const SignedWords di;
    const auto values = hn::ReorderDemote2To(di, lower, upper);
    return hn::BitCast(d, hn::Min(hn::Max(values, hn::Zero(di)), m_maximum));
  }

 private:
  /// From 32-bit lanes with the sum in their lower and the differences in their upper words.
  HWY_INLINE IntegerVector Values(WordVector lowSum, WordVector highS1, WordVector highS2) const {
    const Integers di;
    const hn::Half<Integers> half;
    const auto sum = hn::BitCast(di, lowSum);
    const auto s1 = hn::ShiftRight<16>(hn::BitCast(di, highS1));
    const auto s2 = hn::ShiftRight<16>(hn::BitCast(di, highS2));
    const auto lower =
        HalfOfValues(hn::LowerHalf(half, sum), hn::LowerHalf(half, s1), hn::LowerHalf(half, s2));
    const auto upper =
        HalfOfValues(hn::UpperHalf(half, sum), hn::UpperHalf(half, s1), hn::UpperHalf(half, s2));
    return hn::ShiftRight<2>(hn::Combine(di, upper, lower));
  }
  template <class V>
  HWY_INLINE V HalfOfValues(V sum, V s1, V s2) const {
    const Doubles d;
    const auto value =
        hn::MulAdd(m_sine, hn::PromoteTo(d, s2),
                   hn::MulAdd(m_cosine, hn::PromoteTo(d, s1), hn::PromoteTo(d, sum)));
    return hn::DemoteTo(hn::Half<Integers>(), value);
  }

  hn::Vec<Doubles> m_sine, m_cosine;
  hn::Vec<SignedWords> m_maximum;
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

// --- As they are dispatched ---

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

/// Fractions that give the entries of some samples, both ends included.
struct FractionRange {
  uint64_t least = 0;
  uint64_t most = 0xFFFFFFFF;

  /// Entries are right for fractions from (entry << 32) / i to just below ((entry + 1) << 32) / i.
  FractionRange With(uint64_t sample, uint64_t entry) const {
    const auto firstFraction = [&](uint64_t e) { return ((e << 32) + sample - 1) / sample; };
    return {std::max(least, firstFraction(entry)), std::min(most, firstFraction(entry + 1) - 1)};
  }
  bool IsEmpty() const { return least > most; }
  /// One that has its upper half only, if there is one.
  uint64_t Any() const {
    const uint64_t rounded = (least + 0xFFFF) & ~uint64_t{0xFFFF};
    return rounded <= most ? rounded : least;
  }
};

/// The line of whole numbers that a block of the table is, as far as there is one.
VirtualPolarizer::Line LineOf(const int32_t* block, uint64_t size) {
  VirtualPolarizer::Line line{.isNegative = block[size - 1] < 0,
                              .whole = static_cast<uint16_t>(std::abs(block[1]))};
  const auto fractionOf = [&](uint64_t sample) {
    return static_cast<uint64_t>(std::abs(block[sample])) - line.whole * sample;
  };
  uint64_t sample = 1;
  for (uint64_t& fraction : line.fractions) {
    if (sample < size && sample > 1) line.step = static_cast<uint16_t>(sample);
    FractionRange range;
    for (; sample < size; ++sample) {
      const FractionRange narrowed = range.With(sample, fractionOf(sample));
      if (narrowed.IsEmpty()) break;
      range = narrowed;
    }
    fraction = range.Any();
  }
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
      const auto value = static_cast<int32_t>(line.At(i));
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
