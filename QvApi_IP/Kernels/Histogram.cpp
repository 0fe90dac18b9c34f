// SPDX-License-Identifier: MIT
// Counting is bound by increments: a processor stores once a cycle, and an increment waits for one
// of the same counter before it. Two bytes in one increment halve their number. What remains slow
// is a value that repeats itself, so stretches of one value (of each channel) are counted as a
// whole.
#include "QvApi_IP/Kernels/Histogram.h"

#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Histogram.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Samples that are looked at together: whole vectors, whole periods.
constexpr size_t kBlock = 384;

/// Asks for the memory of a block that lies so many bytes behind this one. With all the counting in
/// between a processor does not see well by itself where the lines go on. Any address is allowed.
template <class T>
HWY_INLINE void AskFor(const T* block, ptrdiff_t bytes) {
  const auto address = reinterpret_cast<uintptr_t>(block) + static_cast<uintptr_t>(bytes);
  for (size_t i = 0; i < kBlock * sizeof(T); i += 64)
    __builtin_prefetch(reinterpret_cast<const void*>(address + i));
}

/// Each of the first kBlock samples equals the one that follows it after `period`.
template <class T>
HWY_INLINE bool Repeats(const T* samples, size_t period) {
  const hn::CappedTag<T, 64> d;
  for (size_t i = 0; i < kBlock; i += hn::Lanes(d)) {
    const auto same = hn::Eq(hn::LoadU(d, samples + i), hn::LoadU(d, samples + i + period));
    if (!hn::AllTrue(d, same)) return false;
  }
  return true;
}

template <size_t period, class T>
HWY_INLINE void CountEach(const T* samples, size_t count, unsigned mask,
                          const Histograms& histograms) {
  constexpr size_t kUnrolled = period == 3 ? 6 : 8;
  size_t i = 0;
  for (; i + kUnrolled <= count; i += kUnrolled)
    for (size_t k = 0; k < kUnrolled; ++k) ++histograms[k % period][samples[i + k] & mask];
  for (size_t k = 0; i + k < count; ++k) ++histograms[k % period][samples[i + k] & mask];
}

template <size_t period, class T>
HWY_INLINE void CountRepeated(const T* samples, unsigned mask, const Histograms& histograms) {
  for (size_t k = 0; k < period; ++k)
    histograms[k][samples[k] & mask] += static_cast<uint32_t>(kBlock / period);
}

/// The counter of a pair: its difference and its upper sample. Pairs of neighbours differ little,
/// so those in use lie close together.
HWY_INLINE void FindCounters(const uint8_t* upper, const uint8_t* lower, size_t count,
                             uint16_t* counters) {
  const hn::ScalableTag<uint16_t> d;
  const hn::Rebind<uint8_t, decltype(d)> bytes;
  size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const auto u = hn::PromoteTo(d, hn::LoadU(bytes, upper + i));
    const auto l = hn::PromoteTo(d, hn::LoadU(bytes, lower + i));
    hn::Store(hn::Add(u, hn::ShiftLeft<8>(hn::Sub(l, u))), d, counters + i);
  }
  for (; i < count; ++i)
    counters[i] = static_cast<uint16_t>(upper[i] + ((lower[i] - upper[i]) << 8));
}

template <size_t period>
HWY_INLINE void CountPairs(const uint8_t* upper, const uint8_t* lower, size_t count,
                           uint32_t* pairs) {
  HWY_ALIGN uint16_t counters[kBlock];
  FindCounters(upper, lower, count, counters);
  Histograms tables{};
  for (size_t k = 0; k < period; ++k) tables[k] = pairs + k * kPairCounters;
  CountEach<period>(counters, count, 0xFFFF, tables);
}

template <class Function>
HWY_INLINE void WithPeriod(size_t period, Function function) {
  if (period == 1) function(std::integral_constant<size_t, 1>());
  if (period == 2) function(std::integral_constant<size_t, 2>());
  if (period == 3) function(std::integral_constant<size_t, 3>());
  if (period == 4) function(std::integral_constant<size_t, 4>());
}

template <size_t period, class T>
void CountLine(const T* samples, size_t count, unsigned mask, const Histograms& histograms) {
  for (; count >= kBlock + period; samples += kBlock, count -= kBlock) {
    AskFor(samples, 2048);
    if (Repeats(samples, period)) {
      CountRepeated<period>(samples, mask, histograms);
    } else {
      CountEach<period>(samples, kBlock, mask, histograms);
    }
  }
  CountEach<period>(samples, count, mask, histograms);
}

void CountBytes(const uint8_t* samples, size_t count, size_t period, unsigned bits,
                const Histograms& histograms) {
  WithPeriod(period, [&](auto p) { CountLine<p>(samples, count, (1U << bits) - 1, histograms); });
}

void CountWords(const uint16_t* samples, size_t count, size_t period, unsigned bits,
                const Histograms& histograms) {
  WithPeriod(period, [&](auto p) { CountLine<p>(samples, count, (1U << bits) - 1, histograms); });
}

template <size_t period>
void CountLines(const uint8_t* upper, const uint8_t* lower, size_t count,
                const Histograms& histograms, uint32_t* pairs) {
  const ptrdiff_t next = 2 * (lower - upper);
  for (; count >= kBlock + period; upper += kBlock, lower += kBlock, count -= kBlock) {
    AskFor(upper, next);
    AskFor(lower, next);
    if (Repeats(upper, period) && Repeats(lower, period)) {
      CountRepeated<period>(upper, 0xFF, histograms);
      CountRepeated<period>(lower, 0xFF, histograms);
    } else {
      CountPairs<period>(upper, lower, kBlock, pairs);
    }
  }
  for (size_t i; count != 0; upper += i, lower += i, count -= i) {
    i = HWY_MIN(count, kBlock);
    CountPairs<period>(upper, lower, i, pairs);
  }
}

void CountBytePairs(const uint8_t* upper, const uint8_t* lower, size_t count, size_t period,
                    const Histograms& histograms, uint32_t* pairs) {
  WithPeriod(period, [&](auto p) { CountLines<p>(upper, lower, count, histograms, pairs); });
}

/// Adds a table of pairs to the histogram.
void AddPairTable(const uint32_t* pairs, uint32_t* histogram) {
  uint32_t uppers[256] = {}, lowers[512] = {};
  for (size_t difference = 0; difference < 256; ++difference, pairs += 256) {
    for (size_t upper = 0; upper < 256; ++upper) {
      uppers[upper] += pairs[upper];
      lowers[upper + difference] += pairs[upper];
    }
  }
  for (size_t i = 0; i < 256; ++i) histogram[i] += uppers[i] + lowers[i] + lowers[i + 256];
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(CountBytes);
HWY_EXPORT(CountWords);
HWY_EXPORT(CountBytePairs);
HWY_EXPORT(AddPairTable);

void AddToHistograms(const uint8_t* samples, size_t count, size_t period, unsigned bits,
                     const Histograms& histograms) {
  HWY_DYNAMIC_DISPATCH(CountBytes)(samples, count, period, bits, histograms);
}

void AddToHistograms(const uint16_t* samples, size_t count, size_t period, unsigned bits,
                     const Histograms& histograms) {
  HWY_DYNAMIC_DISPATCH(CountWords)(samples, count, period, bits, histograms);
}

void AddToPairs(const uint8_t* upper, const uint8_t* lower, size_t count, size_t period,
                const Histograms& histograms, uint32_t* pairs) {
  HWY_DYNAMIC_DISPATCH(CountBytePairs)(upper, lower, count, period, histograms, pairs);
}

void AddPairs(const uint32_t* pairs, size_t period, const Histograms& histograms) {
  for (size_t k = 0; k < period; ++k)
    HWY_DYNAMIC_DISPATCH(AddPairTable)(pairs + k * kPairCounters, histograms[k]);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
