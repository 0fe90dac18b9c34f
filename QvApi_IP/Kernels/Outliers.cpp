// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Outliers.h"

#include <bit>
#include <cstring>
#include <type_traits>

#include "QvApi_IP/Kernels/OutliersScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Outliers.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Adds up the columns of each window one by one.
template <class Sum>
void SumFewColumns(const Windows<Sum>& windows) {
  const auto [columns, sums, spare, counts, limits, width, reach, period] = windows;
  const hn::ScalableTag<Sum> d;
  const size_t n = hn::Lanes(d);
  const Sum* first = columns - reach;
  size_t x = 0;
  for (; x + n <= width; x += n) {
    auto sum = hn::LoadU(d, first + x);
    for (size_t i = period; i <= 2 * reach; i += period)
      sum = hn::Add(sum, hn::LoadU(d, first + x + i));
    hn::StoreU(sum, d, sums + x);
  }
  for (; x < width; ++x) {
    sums[x] = first[x];
    for (size_t i = period; i <= 2 * reach; i += period)
      sums[x] = static_cast<Sum>(sums[x] + first[x + i]);
  }
}

/// Lane by lane the sum of each `period`-th lane up to this one.
template <size_t period, class D>
HWY_INLINE hn::Vec<D> SumsAlong(D d, hn::Vec<D> v) {
  if constexpr (period <= 1) v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
  if constexpr (period <= 2) v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
  if constexpr (sizeof(hn::TFromD<D>) == 2) v = hn::Add(v, hn::ShiftLeftLanes<4>(d, v));
  return v;
}

/// The last `period` lanes, again and again.
template <size_t period, class D>
HWY_INLINE hn::Vec<D> RepeatLast(D d, hn::Vec<D> v) {
  constexpr size_t kBytes = period * sizeof(hn::TFromD<D>);
  if constexpr (kBytes == 16) {
    return v;
  } else {
    const hn::Repartition<hwy::UnsignedFromSize<kBytes>, D> group;
    return hn::BitCast(d, hn::Broadcast<16 / kBytes - 1>(hn::BitCast(group, v)));
  }
}

/// Takes the sums of windows of any size from running sums of columns.
template <size_t period, class Sum>
void SumManyColumns(const Windows<Sum>& windows) {
  const hn::Full128<Sum> d;
  const size_t n = hn::Lanes(d), all = windows.width + 2 * windows.reach;
  const Sum* first = windows.columns - windows.reach;
  Sum* before = windows.spare;  // a period of 0s, then the running sums
  Sum* running = before + period;
  std::fill_n(before, period, Sum{0});
  auto carry = hn::Zero(d);
  size_t x = 0;
  for (; x + n <= all; x += n) {
    const auto along = SumsAlong<period>(d, hn::LoadU(d, first + x));
    hn::StoreU(hn::Add(along, carry), d, running + x);
    carry = hn::Add(carry, RepeatLast<period>(d, along));
  }
  for (; x < all; ++x) running[x] = static_cast<Sum>(first[x] + before[x]);

  const Sum* last = running + 2 * windows.reach;
  for (x = 0; x + n <= windows.width; x += n)
    hn::StoreU(hn::Sub(hn::LoadU(d, last + x), hn::LoadU(d, before + x)), d, windows.sums + x);
  for (; x < windows.width; ++x) windows.sums[x] = static_cast<Sum>(last[x] - before[x]);
}

template <class Sum>
void SumColumns(const Windows<Sum>& windows) {
  if (windows.reach <= 4 * windows.period) return SumFewColumns(windows);
  const auto sum = windows.period == 1   ? SumManyColumns<1, Sum>
                   : windows.period == 2 ? SumManyColumns<2, Sum>
                                         : SumManyColumns<4, Sum>;
  sum(windows);
}

template <class T, class Sum>
void Advance(const T* entering, const T* leaving, const Windows<Sum>& windows) {
  const hn::ScalableTag<Sum> d;
  const hn::Rebind<T, decltype(d)> part;
  const size_t n = hn::Lanes(d);
  Sum* columns = windows.columns;
  size_t x = 0;
  for (; x + n <= windows.width; x += n) {
    const auto in = hn::PromoteTo(d, hn::LoadU(part, entering + x));
    const auto out = hn::PromoteTo(d, hn::LoadU(part, leaving + x));
    hn::StoreU(hn::Sub(hn::Add(hn::LoadU(d, columns + x), in), out), d, columns + x);
  }
  for (; x < windows.width; ++x)
    columns[x] = static_cast<Sum>(columns[x] + entering[x] - leaving[x]);
  SumColumns(windows);
}

/// Writes the lanes that are set in a mask, counted from `x` on.
template <class D, class M>
HWY_INLINE size_t AppendLanes(D d, M mask, size_t x, size_t* found, size_t count) {
  uint64_t bits = 0;
  uint8_t bytes[sizeof(bits)] = {};
  hn::StoreMaskBits(d, mask, bytes);
  for (std::memcpy(&bits, bytes, sizeof(bits)); bits != 0; bits &= bits - 1)
    found[count++] = x + static_cast<size_t>(std::countr_zero(bits));
  return count;
}

template <class T, class Sum>
size_t Find(const T* samples, const Windows<Sum>& windows, size_t* found) {
  const hn::ScalableTag<Sum> d;
  const hn::Rebind<T, decltype(d)> part;
  const size_t n = hn::Lanes(d);
  size_t x = 0, count = 0;
  for (; x + n <= windows.width; x += n) {
    const auto sum = hn::LoadU(d, windows.sums + x);
    const auto sample = hn::PromoteTo(d, hn::LoadU(part, samples + x));
    const auto scaled = hn::Mul(sample, hn::LoadU(d, windows.counts + x));
    const auto distance = hn::Sub(hn::Max(sum, scaled), hn::Min(sum, scaled));
    const auto mask = hn::Eq(hn::Max(distance, hn::LoadU(d, windows.limits + x)), distance);
    if (!hn::AllFalse(d, mask)) count = AppendLanes(d, mask, x, found, count);
  }
  return Scalar::FindOutliers(samples, windows, found, count, x);
}

template <class T>
size_t FindOut(const T* samples, const SampleRanges<T>& ranges, size_t width, size_t* found) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  HWY_ALIGN T pattern[16 / sizeof(T)];
  const auto repeat = [&](const std::array<T, 4>& four) HWY_ATTR {
    for (size_t i = 0; i < std::size(pattern); ++i) pattern[i] = four[i % 4];
    return hn::LoadDup128(d, pattern);
  };
  const auto least = repeat(ranges.least), most = repeat(ranges.most);
  size_t x = 0, count = 0;
  for (; x + n <= width; x += n) {
    const auto sample = hn::LoadU(d, samples + x);
    const auto inside =
        hn::And(hn::Eq(hn::Max(sample, least), sample), hn::Eq(hn::Min(sample, most), sample));
    if (!hn::AllTrue(d, inside)) count = AppendLanes(d, hn::Not(inside), x, found, count);
  }
  return Scalar::FindOutside(samples, ranges, width, found, count, x);
}

#else

template <class T, class Sum>
void Advance(const T* entering, const T* leaving, const Windows<Sum>& windows) {
  Scalar::AdvanceWindows(entering, leaving, windows);
}

template <class T, class Sum>
size_t Find(const T* samples, const Windows<Sum>& windows, size_t* found) {
  return Scalar::FindOutliers(samples, windows, found);
}

template <class T>
size_t FindOut(const T* samples, const SampleRanges<T>& ranges, size_t width, size_t* found) {
  return Scalar::FindOutside(samples, ranges, width, found);
}

#endif

using U8 = uint8_t;
using U16 = uint16_t;
using U32 = uint32_t;

void Advance8In16(const U8* entering, const U8* leaving, const Windows<U16>& windows) {
  Advance(entering, leaving, windows);
}
void Advance8In32(const U8* entering, const U8* leaving, const Windows<U32>& windows) {
  Advance(entering, leaving, windows);
}
void Advance16In32(const U16* entering, const U16* leaving, const Windows<U32>& windows) {
  Advance(entering, leaving, windows);
}
size_t Find8In16(const U8* samples, const Windows<U16>& windows, size_t* found) {
  return Find(samples, windows, found);
}
size_t Find8In32(const U8* samples, const Windows<U32>& windows, size_t* found) {
  return Find(samples, windows, found);
}
size_t Find16In32(const U16* samples, const Windows<U32>& windows, size_t* found) {
  return Find(samples, windows, found);
}
size_t FindOut8(const U8* samples, const SampleRanges<U8>& ranges, size_t width, size_t* found) {
  return FindOut(samples, ranges, width, found);
}
size_t FindOut16(const U16* samples, const SampleRanges<U16>& ranges, size_t width, size_t* found) {
  return FindOut(samples, ranges, width, found);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Advance8In16);
HWY_EXPORT(Advance8In32);
HWY_EXPORT(Advance16In32);
HWY_EXPORT(Find8In16);
HWY_EXPORT(Find8In32);
HWY_EXPORT(Find16In32);
HWY_EXPORT(FindOut8);
HWY_EXPORT(FindOut16);

// Windows that need sums of 64 bits are rare enough for the scalar form.
template <class T, class Sum>
void AdvanceWindows(const T* entering, const T* leaving, const Windows<Sum>& windows) {
  if constexpr (sizeof(Sum) == 2)
    HWY_DYNAMIC_DISPATCH(Advance8In16)(entering, leaving, windows);
  else if constexpr (sizeof(Sum) == 8)
    Scalar::AdvanceWindows(entering, leaving, windows);
  else if constexpr (sizeof(T) == 1)
    HWY_DYNAMIC_DISPATCH(Advance8In32)(entering, leaving, windows);
  else
    HWY_DYNAMIC_DISPATCH(Advance16In32)(entering, leaving, windows);
}

template <class T, class Sum>
size_t FindOutliers(const T* samples, const Windows<Sum>& windows, size_t* found) {
  if constexpr (sizeof(Sum) == 2)
    return HWY_DYNAMIC_DISPATCH(Find8In16)(samples, windows, found);
  else if constexpr (sizeof(Sum) == 8)
    return Scalar::FindOutliers(samples, windows, found);
  else if constexpr (sizeof(T) == 1)
    return HWY_DYNAMIC_DISPATCH(Find8In32)(samples, windows, found);
  else
    return HWY_DYNAMIC_DISPATCH(Find16In32)(samples, windows, found);
}

#define QV_INSTANCE(T, Sum)                                                      \
  template void AdvanceWindows<T, Sum>(const T*, const T*, const Windows<Sum>&); \
  template size_t FindOutliers<T, Sum>(const T*, const Windows<Sum>&, size_t*)
QV_INSTANCE(uint8_t, uint16_t);
QV_INSTANCE(uint8_t, uint32_t);
QV_INSTANCE(uint8_t, uint64_t);
QV_INSTANCE(uint16_t, uint32_t);
QV_INSTANCE(uint16_t, uint64_t);
#undef QV_INSTANCE

size_t FindOutside(const uint8_t* samples, const SampleRanges<uint8_t>& ranges, size_t width,
                   size_t* found) {
  return HWY_DYNAMIC_DISPATCH(FindOut8)(samples, ranges, width, found);
}

size_t FindOutside(const uint16_t* samples, const SampleRanges<uint16_t>& ranges, size_t width,
                   size_t* found) {
  return HWY_DYNAMIC_DISPATCH(FindOut16)(samples, ranges, width, found);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
