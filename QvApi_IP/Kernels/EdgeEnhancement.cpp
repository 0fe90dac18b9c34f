// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/EdgeEnhancement.h"

#include <array>

#include "QvApi_IP/Kernels/EdgeEnhancementScalar.h"
#include "QvApi_IP/Kernels/Lookup.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/EdgeEnhancement.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "QvApi_IP/Kernels/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Bytes = hn::ScalableTag<uint8_t>;
using Words = hn::ScalableTag<uint16_t>;
using ByteVector = hn::Vec<Bytes>;
using WordVector = hn::Vec<Words>;

template <class T>
using VectorOf = hn::Vec<hn::ScalableTag<T>>;

/// Calls `block(first)` for vectors of n pixels; the last one ends with the line and may repeat
/// pixels of the one before. count must be at least n.
template <class Block>
HWY_INLINE void ForEachVector(size_t n, size_t count, Block block) {
  size_t i = 0;
  for (; i + n <= count; i += n) block(i);
  if (i < count) block(count - n);
}

/// Sums of three samples side by side around the even and around the odd places.
struct PairSums {
  HWY_INLINE void Add(const uint8_t* line, bool withCentre = true) {
    const Bytes d;
    const ByteVector centre = LoadOnce(d, line);
    const ByteVector left = LoadOnce(d, line - 1), right = LoadOnce(d, line + 1);
    const WordVector evenCentre = EvenSamples(d, centre), oddCentre = OddSamples(d, centre);
    even = hn::Add(even, hn::Add(EvenSamples(d, left), oddCentre));
    odd = hn::Add(odd, hn::Add(evenCentre, OddSamples(d, right)));
    if (!withCentre) return;
    even = hn::Add(even, evenCentre);
    odd = hn::Add(odd, oddCentre);
  }

  WordVector even, odd;
};

HWY_INLINE ByteVector MeanAt(const LineWindow<uint8_t>& window, size_t x) {
  const WordVector half = hn::Set(Words(), uint16_t{4});
  PairSums sums{half, half};
  sums.Add(window.above + x);
  sums.Add(window.line + x, false);
  sums.Add(window.below + x);
  return MergeSamples(Bytes(), hn::ShiftRight<3>(sums.even), hn::ShiftRight<3>(sums.odd));
}

/// Calls `add(samples)` for each of the eight neighbours.
template <class Add>
HWY_INLINE void ForEachNeighbour(const LineWindow<uint16_t>& window, size_t x, Add add) {
  const Words d;
  for (const uint16_t* line : {window.above + x, window.below + x}) {
    add(hn::LoadU(d, line - 1));
    add(hn::LoadU(d, line));
    add(hn::LoadU(d, line + 1));
  }
  add(hn::LoadU(d, window.line + x - 1));
  add(hn::LoadU(d, window.line + x + 1));
}

/// Eight samples of up to 13 bits stay within a word. Wider ones are summed in eighths and the rest
/// of that, which comes to the same.
template <bool kIsWide>
HWY_INLINE WordVector MeanAt(const LineWindow<uint16_t>& window, size_t x) {
  const Words d;
  WordVector sum = hn::Set(d, uint16_t{4}), eighths = hn::Zero(d);
  ForEachNeighbour(window, x, [&](WordVector samples) HWY_ATTR {
    if constexpr (kIsWide) {
      eighths = hn::Add(eighths, hn::ShiftRight<3>(samples));
      samples = hn::And(samples, hn::Set(d, uint16_t{7}));
    }
    sum = hn::Add(sum, samples);
  });
  return hn::Add(eighths, hn::ShiftRight<3>(sum));
}

/// Fetches what is wanted next for the vector at x.
template <class T>
HWY_INLINE void Fetch(const LineWindow<T>& window, size_t x, size_t n) {
  if (window.upcoming == nullptr) return;
  const auto* bytes = reinterpret_cast<const uint8_t*>(window.upcoming + x * window.step);
  for (size_t i = 0; i < n * window.step * sizeof(T); i += 64) hwy::Prefetch(bytes + i);
}

template <class T, class Mean>
HWY_INLINE void Differ(const LineWindow<T>& window, T* means, T* distances, size_t count,
                       Mean meanAt) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  if (count < n) return Scalar::DifferFromMeans(window, means, distances, count);
  ForEachVector(n, count, [&](size_t x) HWY_ATTR {
    Fetch(window, x, n);
    const auto level = hn::LoadU(d, window.line + x);
    const auto mean = meanAt(x);
    hn::StoreU(mean, d, means + x);
    hn::StoreU(hn::Sub(hn::Max(level, mean), hn::Min(level, mean)), d, distances + x);
  });
}

void Differ8(const LineWindow<uint8_t>& window, uint8_t* means, uint8_t* distances, size_t count) {
  Differ(window, means, distances, count, [&](size_t x) HWY_ATTR { return MeanAt(window, x); });
}
void Differ13(const LineWindow<uint16_t>& window, uint16_t* means, uint16_t* distances,
              size_t count) {
  Differ(window, means, distances, count,
         [&](size_t x) HWY_ATTR { return MeanAt<false>(window, x); });
}
void Differ16(const LineWindow<uint16_t>& window, uint16_t* means, uint16_t* distances,
              size_t count) {
  Differ(window, means, distances, count,
         [&](size_t x) HWY_ATTR { return MeanAt<true>(window, x); });
}

/// The samples of as many pixels as a vector has lanes.
template <class T, size_t kStep>
struct PixelVectors {
  HWY_INLINE void Load(const T* pixels) {
    const hn::ScalableTag<T> d;
    if constexpr (kStep == 1) c[0] = hn::LoadU(d, pixels);
    if constexpr (kStep == 2) hn::LoadInterleaved2(d, pixels, c[0], c[1]);
    if constexpr (kStep == 3) LoadPixels3(d, pixels, c[0], c[1], c[2]);
    if constexpr (kStep == 4) LoadPixels4(d, pixels, c[0], c[1], c[2], c[3]);
  }
  HWY_INLINE void Store(T* pixels) const {
    const hn::ScalableTag<T> d;
    if constexpr (kStep == 1) hn::StoreU(c[0], d, pixels);
    if constexpr (kStep == 2) hn::StoreInterleaved2(c[0], c[1], d, pixels);
    if constexpr (kStep == 3) StorePixels3(d, c[0], c[1], c[2], pixels);
    if constexpr (kStep == 4) hn::StoreInterleaved4(c[0], c[1], c[2], c[3], d, pixels);
  }

  VectorOf<T> c[kStep];
};

/// Corrects samples in registers.
template <class T, size_t kStep>
class Corrector {
  using D = hn::ScalableTag<T>;
  using V = hn::Vec<D>;

 public:
  Corrector(const CorrectedSamples& samples, unsigned bits, const Corrections<T>& corrections)
      : m_corrections(corrections), m_fullScale(static_cast<T>((1u << bits) - 1)) {
    for (size_t c = 0; c < kStep; ++c)
      m_isCorrected[c] = c >= samples.first && c < samples.first + samples.count ? T(~T{0}) : T{0};
  }

  HWY_INLINE PixelVectors<T, kStep> operator()(const T* pixels, size_t x) const {
    const D d;
    PixelVectors<T, kStep> vectors;
    vectors.Load(pixels + x * kStep);
    const V amount = hn::LoadU(d, m_corrections.amounts + x);
    const auto isBrighter =
        hn::Gt(hn::LoadU(d, m_corrections.levels + x), hn::LoadU(d, m_corrections.means + x));
    for (size_t c = 0; c < kStep; ++c) {
      const V own = hn::And(amount, hn::Set(d, m_isCorrected[c]));
      vectors.c[c] = Correct(vectors.c[c], own, isBrighter);
    }
    return vectors;
  }

 private:
  HWY_INLINE V Correct(V sample, V amount, hn::Mask<D> isBrighter) const {
    const D d;
    if constexpr (sizeof(T) == 1) {
      return hn::IfThenElse(isBrighter, hn::SaturatedAdd(sample, amount),
                            hn::SaturatedSub(sample, amount));
    } else {
      const V fullScale = hn::Set(d, m_fullScale);
      const V masked = hn::And(sample, fullScale);
      const V brighter = hn::Min(hn::SaturatedAdd(masked, amount), fullScale);
      const V corrected = hn::IfThenElse(isBrighter, brighter, hn::SaturatedSub(masked, amount));
      return hn::IfThenElse(hn::Eq(amount, hn::Zero(d)), sample, corrected);
    }
  }

  const Corrections<T> m_corrections;
  const T m_fullScale;
  T m_isCorrected[kStep];
};

/// The last vector ends where the line ends. It is made before the others change the pixels that
/// they have in common, which then get the same values twice.
template <class T, size_t kStep>
void CorrectStep(const CorrectedSamples& samples, unsigned bits, const Corrections<T>& corrections,
                 T* pixels, size_t count) {
  const size_t n = hn::Lanes(hn::ScalableTag<T>());
  if (count < n) return Scalar::CorrectPixels(samples, bits, corrections, pixels, count);
  const Corrector<T, kStep> correct(samples, bits, corrections);
  const auto last = correct(pixels, count - n);
  for (size_t x = 0; x + n <= count; x += n) correct(pixels, x).Store(pixels + x * kStep);
  last.Store(pixels + (count - n) * kStep);
}

template <class T>
void Correct(const CorrectedSamples& samples, unsigned bits, const Corrections<T>& corrections,
             T* pixels, size_t count) {
  constexpr std::array kSteps{CorrectStep<T, 1>, CorrectStep<T, 2>, CorrectStep<T, 3>,
                              CorrectStep<T, 4>};
  kSteps[samples.step - 1](samples, bits, corrections, pixels, count);
}

#else

void Differ8(const LineWindow<uint8_t>& window, uint8_t* means, uint8_t* distances, size_t count) {
  Scalar::DifferFromMeans(window, means, distances, count);
}
void Differ13(const LineWindow<uint16_t>& window, uint16_t* means, uint16_t* distances,
              size_t count) {
  Scalar::DifferFromMeans(window, means, distances, count);
}
void Differ16(const LineWindow<uint16_t>& window, uint16_t* means, uint16_t* distances,
              size_t count) {
  Scalar::DifferFromMeans(window, means, distances, count);
}
template <class T>
void Correct(const CorrectedSamples& samples, unsigned bits, const Corrections<T>& corrections,
             T* pixels, size_t count) {
  Scalar::CorrectPixels(samples, bits, corrections, pixels, count);
}

#endif

#if HWY_TARGET == HWY_AVX3_DL || HWY_TARGET == HWY_AVX3

/// The first 256 entries of a table in eight registers.
struct SmallEntries {
  explicit SmallEntries(const uint16_t* table) {
    for (size_t k = 0; k < 8; ++k) part[k] = _mm512_loadu_si512(table + 32 * k);
  }

  /// Entries of distances below 256. The permute uses six bits of each, the next two choose.
  HWY_INLINE __m512i operator()(__m512i distances) const {
    const auto quarter = [&](size_t k) HWY_ATTR {
      return _mm512_permutex2var_epi16(part[2 * k], distances, part[2 * k + 1]);
    };
    const __mmask32 bit6 = _mm512_test_epi16_mask(distances, _mm512_set1_epi16(64));
    const __mmask32 bit7 = _mm512_test_epi16_mask(distances, _mm512_set1_epi16(128));
    return _mm512_mask_blend_epi16(bit7, _mm512_mask_blend_epi16(bit6, quarter(0), quarter(1)),
                                   _mm512_mask_blend_epi16(bit6, quarter(2), quarter(3)));
  }

  __m512i part[8];
};

void LookUp(const uint16_t* table, uint16_t* distances, size_t count) {
  const SmallEntries small(table);
  size_t x = 0;
  for (; x + 32 <= count; x += 32) {
    const __m512i vector = _mm512_loadu_si512(distances + x);
    if (_mm512_cmpgt_epu16_mask(vector, _mm512_set1_epi16(255)) == 0) {
      _mm512_storeu_si512(distances + x, small(vector));
    } else {
      Scalar::LookUpDistances(table, distances + x, 32);
    }
  }
  Scalar::LookUpDistances(table, distances + x, count - x);
}

#else

void LookUp(const uint16_t* table, uint16_t* distances, size_t count) {
  const PreparedLookup<uint16_t> lookup(LookupPattern(table), 16);
  LookupLine(lookup, distances, distances, count);
}

#endif

void Correct8(const CorrectedSamples& samples, unsigned bits,
              const Corrections<uint8_t>& corrections, uint8_t* pixels, size_t count) {
  Correct(samples, bits, corrections, pixels, count);
}
void Correct16(const CorrectedSamples& samples, unsigned bits,
               const Corrections<uint16_t>& corrections, uint16_t* pixels, size_t count) {
  Correct(samples, bits, corrections, pixels, count);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Differ8);
HWY_EXPORT(Differ13);
HWY_EXPORT(Differ16);
HWY_EXPORT(LookUp);
HWY_EXPORT(Correct8);
HWY_EXPORT(Correct16);

void DifferFromMeans(const LineWindow<uint8_t>& window, unsigned, uint8_t* means,
                     uint8_t* distances, size_t count) {
  HWY_DYNAMIC_DISPATCH(Differ8)(window, means, distances, count);
}

void DifferFromMeans(const LineWindow<uint16_t>& window, unsigned bits, uint16_t* means,
                     uint16_t* distances, size_t count) {
  if (bits <= 13) {
    HWY_DYNAMIC_DISPATCH(Differ13)(window, means, distances, count);
  } else {
    HWY_DYNAMIC_DISPATCH(Differ16)(window, means, distances, count);
  }
}

void LookUpDistances(const uint16_t* table, uint16_t* distances, size_t count) {
  HWY_DYNAMIC_DISPATCH(LookUp)(table, distances, count);
}

namespace {

bool IsServed(const CorrectedSamples& samples) {
  return samples.step >= 1 && samples.step <= 4 && samples.first <= samples.step &&
         samples.count <= samples.step - samples.first;
}

}  // namespace

void CorrectPixels(const CorrectedSamples& samples, unsigned bits,
                   const Corrections<uint8_t>& corrections, uint8_t* pixels, size_t count) {
  if (IsServed(samples)) HWY_DYNAMIC_DISPATCH(Correct8)(samples, bits, corrections, pixels, count);
}

void CorrectPixels(const CorrectedSamples& samples, unsigned bits,
                   const Corrections<uint16_t>& corrections, uint16_t* pixels, size_t count) {
  if (IsServed(samples)) HWY_DYNAMIC_DISPATCH(Correct16)(samples, bits, corrections, pixels, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
