// SPDX-License-Identifier: MIT
// Vectors of the samples that make pixels of the result, and the walk over the columns of a line.

#if defined(QVAPI_KERNELS_POLARIZER_SAMPLES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_POLARIZER_SAMPLES_INL_H_
#undef QVAPI_KERNELS_POLARIZER_SAMPLES_INL_H_
#else
#define QVAPI_KERNELS_POLARIZER_SAMPLES_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "QvApi_IP/Kernels/Polarization.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Words = hn::ScalableTag<uint16_t>;
using WordVector = hn::Vec<Words>;
using SignedWords = hn::RebindToSigned<Words>;
using Integers = hn::Repartition<int32_t, Words>;

HWY_INLINE WordVector LoadWords(const uint8_t* samples) {
  const Words d;
  return hn::PromoteTo(d, hn::LoadU(hn::Rebind<uint8_t, Words>(), samples));
}
HWY_INLINE WordVector LoadWords(const uint16_t* samples) { return hn::LoadU(Words(), samples); }

HWY_INLINE void StoreWords(WordVector words, uint8_t* samples) {
  const hn::Rebind<uint8_t, Words> d;
  hn::StoreU(hn::DemoteTo(d, hn::BitCast(SignedWords(), words)), d, samples);
}
HWY_INLINE void StoreWords(WordVector words, uint16_t* samples) {
  hn::StoreU(words, Words(), samples);
}

/// Twice as many samples as words, those at even and those at odd places apart.
HWY_INLINE void LoadWordPairs(const uint8_t* samples, WordVector& even, WordVector& odd) {
  const Words d;
  const auto pairs = hn::BitCast(d, hn::LoadU(hn::Repartition<uint8_t, Words>(), samples));
  even = hn::And(pairs, hn::Set(d, 0xFF));
  odd = hn::ShiftRight<8>(pairs);
}
HWY_INLINE void LoadWordPairs(const uint16_t* samples, WordVector& even, WordVector& odd) {
  hn::LoadInterleaved2(Words(), samples, even, odd);
}

/// Samples of as many pixels of the result as there are words in a vector, by angle.
struct AngleWords {
  WordVector i0, i45, i90, i135;
};

/// For columns of windows: those from 1 to the last but one.
template <class T>
HWY_INLINE AngleWords LoadAngles(const PolarizerLines<T>& source, size_t column) {
  WordVector zero, other, ninety, opposite;
  if (source.neighbourhood == Neighbourhood::Window) {
    const size_t left = column - 1;
    const bool isLeftOdd = left % 2 != 0;
    auto zeroLeft = LoadWords(source.zero + left);
    auto zeroRight = LoadWords(source.zero + left + 1);
    auto ninetyLeft = LoadWords(source.ninety + left);
    auto ninetyRight = LoadWords(source.ninety + left + 1);
    if (isLeftOdd != source.isZeroOdd) {
      std::swap(zeroLeft, zeroRight);
      std::swap(ninetyLeft, ninetyRight);
    }
    zero = hn::OddEven(zeroRight, zeroLeft);
    other = hn::OddEven(zeroLeft, zeroRight);
    ninety = hn::OddEven(ninetyLeft, ninetyRight);
    opposite = hn::OddEven(ninetyRight, ninetyLeft);
  } else {
    LoadWordPairs(source.zero + 2 * column, zero, other);
    LoadWordPairs(source.ninety + 2 * column, opposite, ninety);
    if (source.isZeroOdd) {
      std::swap(zero, other);
      std::swap(ninety, opposite);
    }
  }
  if (source.is45In90) std::swap(other, opposite);
  if constexpr (sizeof(T) == 1) return {zero, other, ninety, opposite};
  const auto mask = hn::Set(Words(), static_cast<uint16_t>((1u << source.depth) - 1));
  return {hn::And(zero, mask), hn::And(other, mask), hn::And(ninety, mask),
          hn::And(opposite, mask)};
}

/// Calls `vectors(column, i)` for `lanes` columns at a time, i being their place in the result, the
/// last time perhaps for some of those before again; and `scalars(columns, i)` for columns at the
/// image's sides and for what is too short.
template <class T, class Vectors, class Scalars>
HWY_INLINE void WalkColumns(const PolarizerLines<T>& source, ResultColumns columns, size_t lanes,
                            Vectors vectors, Scalars scalars) {
  const size_t end = columns.first + columns.count;
  size_t innerFirst = columns.first;
  size_t innerEnd = end;
  if (source.neighbourhood == Neighbourhood::Window) {
    innerFirst = std::max<size_t>(innerFirst, 1);
    innerEnd = std::min(innerEnd, source.width - 1);
  }
  if (innerEnd < innerFirst + lanes) return scalars(columns, size_t{0});
  const auto place = [&](size_t column) { return column - columns.first; };
  if (innerFirst > columns.first) scalars(ResultColumns{columns.first, 1}, size_t{0});
  // One call in one place, so that it is inlined.
  const size_t last = innerEnd - lanes;
  for (size_t column = innerFirst;; column = std::min(column + lanes, last)) {
    vectors(column, place(column));
    if (column == last) break;
  }
  if (innerEnd < end) scalars(ResultColumns{innerEnd, 1}, place(innerEnd));
}

#endif  // HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif  // include guard
