// SPDX-License-Identifier: MIT
// The vector form of Luminance.h, for unsigned 8 or 16-bit samples.

#if defined(QVAPI_KERNELS_LUMINANCE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_LUMINANCE_INL_H_
#undef QVAPI_KERNELS_LUMINANCE_INL_H_
#else
#define QVAPI_KERNELS_LUMINANCE_INL_H_
#endif

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// The complement of the luminance of a colour that is given by the complements of its samples.
///
/// Everything stays in the samples' own width: floor((2 R + 5 G + B) / 8) is
/// mean(G, mean(R, mean(G, B))) with means rounded down, since nested floors of halves are the
/// floor of the whole. Machines have the mean rounded up; that of the complements is the complement
/// of the mean rounded down.
template <class V>
HWY_INLINE V LuminanceOfComplements(V red, V green, V blue) {
  return hn::AverageRound(green, hn::AverageRound(red, hn::AverageRound(green, blue)));
}

template <class V>
HWY_INLINE V LuminanceVector(V red, V green, V blue) {
  return hn::Not(LuminanceOfComplements(hn::Not(red), hn::Not(green), hn::Not(blue)));
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif  // include guard
