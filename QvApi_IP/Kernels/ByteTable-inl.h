// SPDX-License-Identifier: MIT
// Look-ups of bytes in vector registers.

#if defined(QVAPI_KERNELS_BYTETABLE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_BYTETABLE_INL_H_
#undef QVAPI_KERNELS_BYTETABLE_INL_H_
#else
#define QVAPI_KERNELS_BYTETABLE_INL_H_
#endif

#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_AVX3_DL

/// A table of 256 bytes in four registers.
struct ByteTable {
  /// @param table  aligned to 64 bytes
  explicit ByteTable(const uint8_t* table)
      : quarter0(_mm512_load_si512(table)),
        quarter1(_mm512_load_si512(table + 64)),
        quarter2(_mm512_load_si512(table + 128)),
        quarter3(_mm512_load_si512(table + 192)) {}

  /// The permute uses seven bits of each index, the eighth chooses between its two results.
  HWY_INLINE __m512i operator()(__m512i samples) const {
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(samples),
                                  _mm512_permutex2var_epi8(quarter0, samples, quarter1),
                                  _mm512_permutex2var_epi8(quarter2, samples, quarter3));
  }

  __m512i quarter0, quarter1, quarter2, quarter3;
};

#endif  // HWY_AVX3_DL

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif  // include guard
