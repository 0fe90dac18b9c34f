// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/SampleSums.h"

#include <algorithm>
#include <cstring>

#include "QvApi_IP/Kernels/SampleSumsScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/SampleSums.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "QvApi_IP/Kernels/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Adds the lanes of three vectors of samples, which are whole cycles, in lanes of twice the width.
template <class T>
class GroupSums {
  using D = hn::ScalableTag<T>;
  using Pairs = PairTag<D>;
  using Wide = hn::TFromD<Pairs>;

 public:
  /// As many groups of samples fit into the wide lanes.
  static constexpr size_t kMaxGroups = hwy::LimitsMax<Wide>() / hwy::LimitsMax<T>();
  static HWY_INLINE size_t Samples() { return 3 * hn::Lanes(D()); }

  // Written out: a constructor made by the compiler is not compiled for the target.
  HWY_INLINE GroupSums() {
    m_even0 = m_odd0 = m_even1 = m_odd1 = m_even2 = m_odd2 = hn::Zero(Pairs());
  }

  HWY_INLINE void Add(const T* samples) {
    const size_t n = hn::Lanes(D());
    AddVector(samples, m_even0, m_odd0);
    AddVector(samples + n, m_even1, m_odd1);
    AddVector(samples + 2 * n, m_even2, m_odd2);
  }

  /// Adds a group of which only `count` samples are there.
  HWY_INLINE void AddPart(const T* samples, size_t count) {
    HWY_ALIGN T group[3 * hn::MaxLanes(D())] = {};
    std::memcpy(group, samples, count * sizeof(T));
    Add(group);
  }

  /// Brings the lanes back into the order of the samples and adds them up cycle by cycle, again
  /// with twice the width.
  HWY_INLINE void AddTo(CycleSums& sums) const {
    const Pairs pairs;
    const size_t n = hn::Lanes(D());
    HWY_ALIGN Wide lanes[3 * hn::MaxLanes(D())];
    hn::StoreInterleaved2(m_even0, m_odd0, pairs, lanes);
    hn::StoreInterleaved2(m_even1, m_odd1, pairs, lanes + n);
    hn::StoreInterleaved2(m_even2, m_odd2, pairs, lanes + 2 * n);

    const hn::Full128<hwy::MakeWide<Wide>> widest;
    const hn::Rebind<Wide, decltype(widest)> part;
    for (size_t place = 0; place < kSumCycle; place += hn::Lanes(widest)) {
      auto sum = hn::Zero(widest);
      for (size_t i = place; i < 3 * n; i += kSumCycle) {
        sum = hn::Add(sum, hn::PromoteTo(widest, hn::LoadU(part, lanes + i)));
      }
      HWY_ALIGN hwy::MakeWide<Wide> places[hn::MaxLanes(widest)];
      hn::Store(sum, widest, places);
      for (size_t k = 0; k < hn::Lanes(widest); ++k) sums[place + k] += places[k];
    }
  }

 private:
  using V = hn::Vec<Pairs>;

  static HWY_INLINE void AddVector(const T* samples, V& even, V& odd) {
    const D d;
    const auto vector = LoadOnce(d, samples);
    even = hn::Add(even, EvenSamples(d, vector));
    odd = hn::Add(odd, OddSamples(d, vector));
  }

  V m_even0, m_odd0, m_even1, m_odd1, m_even2, m_odd2;
};

template <class T>
void AddLine(const T* samples, size_t count, CycleSums& sums) {
  const size_t group = GroupSums<T>::Samples();
  while (count != 0) {
    GroupSums<T> groups;
    size_t room = GroupSums<T>::kMaxGroups;
    for (; room != 0 && count >= group; --room, samples += group, count -= group) {
      groups.Add(samples);
    }
    if (room != 0) {
      groups.AddPart(samples, count);
      count = 0;
    }
    groups.AddTo(sums);
  }
}

uint64_t SumLine(const uint8_t* samples, size_t count) {
  const hn::ScalableTag<uint8_t> d;
  const hn::Repartition<uint64_t, decltype(d)> wide;
  auto sums = hn::Zero(wide);
  size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d))
    sums = hn::Add(sums, hn::SumsOf8(hn::LoadU(d, samples + i)));
  return hn::GetLane(hn::SumOfLanes(wide, sums)) + Scalar::SumBytes(samples + i, count - i);
}

#else

template <class T>
void AddLine(const T* samples, size_t count, CycleSums& sums) {
  Scalar::AddToCycle(samples, count, sums);
}

uint64_t SumLine(const uint8_t* samples, size_t count) { return Scalar::SumBytes(samples, count); }

#endif

void AddBytes(const uint8_t* samples, size_t count, CycleSums& sums) {
  AddLine(samples, count, sums);
}
void AddWords(const uint16_t* samples, size_t count, CycleSums& sums) {
  AddLine(samples, count, sums);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(AddBytes);
HWY_EXPORT(AddWords);
HWY_EXPORT(SumLine);

void AddToCycle(const uint8_t* samples, size_t count, CycleSums& sums) {
  HWY_DYNAMIC_DISPATCH(AddBytes)(samples, count, sums);
}

void AddToCycle(const uint16_t* samples, size_t count, CycleSums& sums) {
  HWY_DYNAMIC_DISPATCH(AddWords)(samples, count, sums);
}

uint64_t SumBytes(const uint8_t* samples, size_t count) {
  return HWY_DYNAMIC_DISPATCH(SumLine)(samples, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
