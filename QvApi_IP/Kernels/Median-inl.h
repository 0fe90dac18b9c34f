// SPDX-License-Identifier: MIT
// Medians of vectors, lane by lane.

#if defined(QVAPI_KERNELS_MEDIAN_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_MEDIAN_INL_H_
#undef QVAPI_KERNELS_MEDIAN_INL_H_
#else
#define QVAPI_KERNELS_MEDIAN_INL_H_
#endif

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// The least and the greatest of four samples are never the median of five.
template <class V>
HWY_INLINE V Median5(V a, V b, V c, V d, V e) {
  const V low = hn::Max(hn::Min(a, b), hn::Min(c, d));
  const V high = hn::Min(hn::Max(a, b), hn::Max(c, d));
  return hn::Max(hn::Min(low, high), hn::Min(hn::Max(low, high), e));
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif
