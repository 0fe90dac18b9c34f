// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/SplitColumns.h"

#include "QvApi_IP/Kernels/SplitColumnsScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/SplitColumns.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Bytes are loaded and stored as such, since items may lie at any address.
template <class Item>
void Split(const uint8_t* line, uint8_t* even, uint8_t* odd, size_t pairs) {
  const hn::ScalableTag<Item> d;
  const hn::Repartition<uint8_t, decltype(d)> bytes;
  const size_t n = hn::Lanes(d);
  const size_t vector = n * sizeof(Item);
  const auto step = [&](size_t i) HWY_ATTR {
    const auto first = hn::BitCast(d, hn::LoadU(bytes, line + 2 * i * sizeof(Item)));
    const auto second = hn::BitCast(d, hn::LoadU(bytes, line + 2 * i * sizeof(Item) + vector));
    hn::StoreU(hn::BitCast(bytes, hn::ConcatEven(d, second, first)), bytes,
               even + i * sizeof(Item));
    hn::StoreU(hn::BitCast(bytes, hn::ConcatOdd(d, second, first)), bytes, odd + i * sizeof(Item));
  };
  if (pairs < n) return Scalar::SplitColumns(line, sizeof(Item), even, odd, pairs);
  size_t i = 0;
  for (; i + n <= pairs; i += n) step(i);
  if (i < pairs) step(pairs - n);
}

void SplitItems(const uint8_t* line, size_t itemBytes, uint8_t* even, uint8_t* odd, size_t pairs) {
  if (itemBytes == 1) return Split<uint8_t>(line, even, odd, pairs);
  if (itemBytes == 2) return Split<uint16_t>(line, even, odd, pairs);
  Split<uint32_t>(line, even, odd, pairs);
}

#else

void SplitItems(const uint8_t* line, size_t itemBytes, uint8_t* even, uint8_t* odd, size_t pairs) {
  Scalar::SplitColumns(line, itemBytes, even, odd, pairs);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(SplitItems);

void SplitColumns(const uint8_t* line, size_t itemBytes, uint8_t* even, uint8_t* odd,
                  size_t pairs) {
  HWY_DYNAMIC_DISPATCH(SplitItems)(line, itemBytes, even, odd, pairs);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
