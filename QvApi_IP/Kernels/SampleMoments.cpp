// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/SampleMoments.h"

#include <numeric>

#include "QvApi_IP/Kernels/SampleMomentsScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/SampleMoments.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Sums = hn::ScalableTag<uint64_t>;

template <class T>
HWY_INLINE hn::Vec<Sums> LoadWide(const T* samples) {
  const hn::Rebind<T, Sums> narrow;
  const hn::Rebind<uint32_t, Sums> words;
  return hn::PromoteTo(Sums(), hn::PromoteTo(words, hn::LoadU(narrow, samples)));
}

HWY_INLINE hn::Vec<Sums> Square(hn::Vec<Sums> samples) {
  const auto low = hn::BitCast(hn::Repartition<uint32_t, Sums>(), samples);
  return hn::MulEven(low, low);
}

/// Several lines at once, so that the sums of positions are loaded and stored once for all. A group
/// of vectors is whole cycles, so each lane keeps its place. The lines are short and lie far apart:
/// those that come `next` are fetched meanwhile.
template <size_t kLines, class T>
void AddLines(const T* const* lines, const T* const* next, size_t count, uint64_t* sums,
              uint64_t* squares, CycleMoments* cycles) {
  const Sums d;
  constexpr size_t kLanes = hn::MaxLanes(Sums());
  constexpr size_t kVectors = kSumCycle / std::gcd(kSumCycle, kLanes);
  constexpr size_t kGroup = kVectors * kLanes;
  hn::Vec<Sums> lineSums[kLines][kVectors], lineSquares[kLines][kVectors];
  for (size_t l = 0; l < kLines; ++l)
    for (size_t v = 0; v < kVectors; ++v) lineSums[l][v] = lineSquares[l][v] = hn::Zero(d);

  size_t begin = 0;
  for (; begin + kGroup <= count; begin += kGroup) {
    for (size_t l = 0; l < kLines; ++l) hwy::Prefetch(next[l] + begin);
    for (size_t v = 0; v < kVectors; ++v) {
      const size_t i = begin + v * kLanes;
      auto sum = hn::LoadU(d, sums + i), squareSum = hn::LoadU(d, squares + i);
      for (size_t l = 0; l < kLines; ++l) {
        const auto sample = LoadWide(lines[l] + i);
        const auto square = Square(sample);
        sum = hn::Add(sum, sample);
        squareSum = hn::Add(squareSum, square);
        lineSums[l][v] = hn::Add(lineSums[l][v], sample);
        lineSquares[l][v] = hn::Add(lineSquares[l][v], square);
      }
      hn::StoreU(sum, d, sums + i);
      hn::StoreU(squareSum, d, squares + i);
    }
  }
  for (size_t l = 0; l < kLines; ++l) {
    HWY_ALIGN uint64_t lanes[2][kGroup];
    for (size_t v = 0; v < kVectors; ++v) {
      hn::Store(lineSums[l][v], d, lanes[0] + v * kLanes);
      hn::Store(lineSquares[l][v], d, lanes[1] + v * kLanes);
    }
    for (size_t i = 0; i < kGroup; ++i) {
      cycles[l].sums[i % kSumCycle] += lanes[0][i];
      cycles[l].squares[i % kSumCycle] += lanes[1][i];
    }
    Scalar::AddMoments(lines[l] + begin, count - begin, sums + begin, squares + begin, cycles[l]);
  }
}

template <class T>
void AddAllLines(const T* const* lines, size_t lineCount, size_t count, uint64_t* sums,
                 uint64_t* squares, CycleMoments* cycles) {
  size_t l = 0;
  for (; l + 2 <= lineCount; l += 2) {
    const size_t next = l + 4 <= lineCount ? l + 2 : l;
    AddLines<2>(lines + l, lines + next, count, sums, squares, cycles + l);
  }
  if (l < lineCount) AddLines<1>(lines + l, lines + l, count, sums, squares, cycles + l);
}

void GetMeansAndDeviations(const uint64_t* sums, const uint64_t* squares, size_t count,
                           size_t number, double* means, double* deviations) {
  const hn::ScalableTag<double> d;
  const hn::RebindToSigned<decltype(d)> integers;
  const size_t n = hn::Lanes(d);
  const auto divisor = hn::Set(d, static_cast<double>(number));
  const auto quotient = [&](const uint64_t* from) HWY_ATTR {
    const auto value = hn::BitCast(integers, hn::LoadU(Sums(), from));
    return hn::Div(hn::ConvertTo(d, value), divisor);
  };
  size_t i = 0;
  for (; i + n <= count; i += n) {
    const auto mean = quotient(sums + i);
    const auto variance = hn::Sub(quotient(squares + i), hn::Mul(mean, mean));
    hn::StoreU(mean, d, means + i);
    hn::StoreU(hn::Sqrt(hn::Max(hn::Zero(d), variance)), d, deviations + i);
  }
  Scalar::MeansAndDeviations(sums + i, squares + i, count - i, number, means + i, deviations + i);
}

#else

template <class T>
void AddAllLines(const T* const* lines, size_t lineCount, size_t count, uint64_t* sums,
                 uint64_t* squares, CycleMoments* cycles) {
  for (size_t l = 0; l < lineCount; ++l)
    Scalar::AddMoments(lines[l], count, sums, squares, cycles[l]);
}

void GetMeansAndDeviations(const uint64_t* sums, const uint64_t* squares, size_t count,
                           size_t number, double* means, double* deviations) {
  Scalar::MeansAndDeviations(sums, squares, count, number, means, deviations);
}

#endif

void AddBytes(const uint8_t* const* lines, size_t lineCount, size_t count, uint64_t* sums,
              uint64_t* squares, CycleMoments* cycles) {
  AddAllLines(lines, lineCount, count, sums, squares, cycles);
}
void AddWords(const uint16_t* const* lines, size_t lineCount, size_t count, uint64_t* sums,
              uint64_t* squares, CycleMoments* cycles) {
  AddAllLines(lines, lineCount, count, sums, squares, cycles);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(AddBytes);
HWY_EXPORT(AddWords);
HWY_EXPORT(GetMeansAndDeviations);

void AddMoments(const uint8_t* const* lines, size_t lineCount, size_t count, uint64_t* sums,
                uint64_t* squares, CycleMoments* cycles) {
  HWY_DYNAMIC_DISPATCH(AddBytes)(lines, lineCount, count, sums, squares, cycles);
}

void AddMoments(const uint16_t* const* lines, size_t lineCount, size_t count, uint64_t* sums,
                uint64_t* squares, CycleMoments* cycles) {
  HWY_DYNAMIC_DISPATCH(AddWords)(lines, lineCount, count, sums, squares, cycles);
}

void MeansAndDeviations(const uint64_t* sums, const uint64_t* squares, size_t count, size_t number,
                        double* means, double* deviations) {
  HWY_DYNAMIC_DISPATCH(GetMeansAndDeviations)(sums, squares, count, number, means, deviations);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
