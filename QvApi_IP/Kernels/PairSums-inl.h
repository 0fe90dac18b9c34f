// SPDX-License-Identifier: MIT
// Sums of products of neighbouring 16-bit lanes, the one multiplication into 32 bits that all
// vector units have at full speed.

#if defined(QVAPI_KERNELS_PAIR_SUMS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_PAIR_SUMS_INL_H_
#undef QVAPI_KERNELS_PAIR_SUMS_INL_H_
#else
#define QVAPI_KERNELS_PAIR_SUMS_INL_H_
#endif

#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using PairFactors = hn::Vec<hn::ScalableTag<int16_t>>;
using PairSums = hn::Vec<hn::ScalableTag<int32_t>>;

/// Two 16-bit factors for neighbouring lanes.
HWY_INLINE PairFactors SetPair(int first, int second) {
  const auto pair = static_cast<uint32_t>(static_cast<uint16_t>(first)) |
                    static_cast<uint32_t>(static_cast<uint16_t>(second)) << 16;
  return hn::BitCast(hn::ScalableTag<int16_t>(), hn::Set(hn::ScalableTag<uint32_t>(), pair));
}

/// sum + a[2i] * b[2i] + a[2i + 1] * b[2i + 1]
HWY_INLINE PairSums AddPairs(PairFactors a, PairFactors b, PairSums sum) {
#if HWY_TARGET == HWY_AVX3_DL && HWY_COMPILER_GCC
  // These machines have it in one instruction, which Highway's target does not tell the compiler.
  asm("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(a.raw), "v"(b.raw));
  return sum;
#elif HWY_ARCH_X86
  const hn::ScalableTag<int32_t> d;
  PairSums none = hn::Zero(d);
  return hn::ReorderWidenMulAccumulate(d, a, b, sum, none);
#else
  // Elsewhere pairs are not what widening multiplications sum up.
  const hn::ScalableTag<int32_t> d;
  const auto first = [d](PairFactors v) HWY_ATTR {
    return hn::ShiftRight<16>(hn::ShiftLeft<16>(hn::BitCast(d, v)));
  };
  const auto second = [d](PairFactors v) HWY_ATTR { return hn::ShiftRight<16>(hn::BitCast(d, v)); };
  return hn::Add(sum, hn::Add(hn::Mul(first(a), first(b)), hn::Mul(second(a), second(b))));
#endif
}

#endif  // HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif  // include guard
