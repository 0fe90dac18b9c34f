// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColumnSums.h"

#include "QvApi_IP/Kernels/ColumnSumsScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/ColumnSums.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Sums = hn::ScalableTag<uint32_t>;

#if HWY_TARGET != HWY_SCALAR

HWY_INLINE void AddToSums(hn::Vec<Sums> lanes, uint32_t* sums) {
  hn::StoreU(hn::Add(hn::LoadU(Sums(), sums), lanes), Sums(), sums);
}
HWY_INLINE void AddToSums(hn::Vec<hn::ScalableTag<uint16_t>> lanes, uint32_t* sums) {
  const hn::Half<hn::ScalableTag<uint16_t>> half;
  AddToSums(hn::PromoteTo(Sums(), hn::LowerHalf(half, lanes)), sums);
  AddToSums(hn::PromoteTo(Sums(), hn::UpperHalf(half, lanes)), sums + hn::Lanes(half));
}

/// The columns of a vector are added up in lanes of twice the width, and their sums go to memory
/// once for all lines.
template <class T>
void AddColumns(const T* samples, ptrdiff_t pitch, size_t lines, size_t count, uint32_t* sums) {
  using Wide = hwy::MakeWide<T>;
  static_assert(kMaxColumnLines * hwy::LimitsMax<T>() <= hwy::LimitsMax<Wide>());
  const hn::ScalableTag<Wide> wide;
  const hn::Rebind<T, decltype(wide)> narrow;

  size_t x = 0;
  for (; x + hn::Lanes(wide) <= count; x += hn::Lanes(wide)) {
    auto sum = hn::Zero(wide);
    for (size_t y = 0; y < lines; ++y) {
      const T* line = Scalar::LineOf(samples, pitch, y);
      sum = hn::Add(sum, hn::PromoteTo(wide, hn::LoadU(narrow, line + x)));
    }
    AddToSums(sum, sums + x);
  }
  Scalar::AddToColumns(samples + x, pitch, lines, count - x, sums + x);
}

#else

template <class T>
void AddColumns(const T* samples, ptrdiff_t pitch, size_t lines, size_t count, uint32_t* sums) {
  Scalar::AddToColumns(samples, pitch, lines, count, sums);
}

#endif

void AddBytes(const uint8_t* samples, ptrdiff_t pitch, size_t lines, size_t count, uint32_t* sums) {
  AddColumns(samples, pitch, lines, count, sums);
}
void AddWords(const uint16_t* samples, ptrdiff_t pitch, size_t lines, size_t count,
              uint32_t* sums) {
  AddColumns(samples, pitch, lines, count, sums);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(AddBytes);
HWY_EXPORT(AddWords);

void AddToColumns(const uint8_t* samples, ptrdiff_t pitch, size_t lines, size_t count,
                  uint32_t* sums) {
  HWY_DYNAMIC_DISPATCH(AddBytes)(samples, pitch, lines, count, sums);
}

void AddToColumns(const uint16_t* samples, ptrdiff_t pitch, size_t lines, size_t count,
                  uint32_t* sums) {
  HWY_DYNAMIC_DISPATCH(AddWords)(samples, pitch, lines, count, sums);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
