// SPDX-License-Identifier: MIT
// Vector helpers for samples that lie interleaved in memory: pixels of three and four components,
// and rows in which every other sample belongs together.
//
// All helpers take a full vector tag of an unsigned 8 or 16-bit sample type and work on Lanes(d)
// pixels without alignment demands; those with a count touch just that many pixels.

#if defined(QVAPI_KERNELS_INTERLEAVE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_INTERLEAVE_INL_H_
#undef QVAPI_KERNELS_INTERLEAVE_INL_H_
#else
#define QVAPI_KERNELS_INTERLEAVE_INL_H_
#endif

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_AVX3_DL

/// Two-table byte and word permutes do in one instruction what the portable form needs shuffles and
/// blends for. A third table joins through a mask.
template <class T>
struct Permute3 {
  static constexpr size_t kLanes = 64 / sizeof(T);

  alignas(64) std::array<T, kLanes> index{};
  /// Lanes that come from the third table.
  uint64_t third = 0;

  static __m512i Apply(const Permute3& p, __m512i a, __m512i b, __m512i c) {
    const __m512i index = _mm512_load_si512(p.index.data());
    if constexpr (sizeof(T) == 1) {
      return _mm512_mask_permutexvar_epi8(_mm512_permutex2var_epi8(a, index, b), p.third, index, c);
    } else {
      return _mm512_mask_permutexvar_epi16(_mm512_permutex2var_epi16(a, index, b),
                                           static_cast<__mmask32>(p.third), index, c);
    }
  }
};

/// Vector `part` of the pixels that three planes make, kStride components each.
template <class T, size_t kStride>
constexpr Permute3<T> PixelPart(size_t part) {
  Permute3<T> p;
  for (size_t lane = 0; lane < p.kLanes; ++lane) {
    const size_t sample = part * p.kLanes + lane;
    const size_t pixel = sample / kStride;
    const size_t component = sample % kStride;
    p.index[lane] = static_cast<T>(pixel + (component == 1 ? p.kLanes : 0));
    if (component == 2) p.third |= uint64_t{1} << lane;
  }
  return p;
}

/// Plane `component` of pixels of three components that fill three vectors.
template <class T>
constexpr Permute3<T> PlaneOfPixels3(size_t component) {
  Permute3<T> p;
  for (size_t lane = 0; lane < p.kLanes; ++lane) {
    const size_t sample = 3 * lane + component;
    p.index[lane] = static_cast<T>(sample % (2 * p.kLanes));
    if (sample >= 2 * p.kLanes) p.third |= uint64_t{1} << lane;
  }
  return p;
}

template <class T, size_t kStride>
inline constexpr std::array<Permute3<T>, kStride> kPixelParts = [] {
  std::array<Permute3<T>, kStride> parts{};
  for (size_t i = 0; i < kStride; ++i) parts[i] = PixelPart<T, kStride>(i);
  return parts;
}();

template <class T>
inline constexpr std::array<Permute3<T>, 3> kPlanesOfPixels3{
    PlaneOfPixels3<T>(0), PlaneOfPixels3<T>(1), PlaneOfPixels3<T>(2)};

#endif  // HWY_AVX3_DL

/// Loads Lanes(d) pixels of three components into one vector per component.
template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_INLINE void LoadPixels3(D d, const T* HWY_RESTRICT pixels, V& c0, V& c1, V& c2) {
#if HWY_TARGET == HWY_AVX3_DL
  const size_t n = hn::Lanes(d);
  const auto& planes = kPlanesOfPixels3<T>;
  const __m512i p0 = hn::LoadU(d, pixels).raw;
  const __m512i p1 = hn::LoadU(d, pixels + n).raw;
  const __m512i p2 = hn::LoadU(d, pixels + 2 * n).raw;
  c0 = V{Permute3<T>::Apply(planes[0], p0, p1, p2)};
  c1 = V{Permute3<T>::Apply(planes[1], p0, p1, p2)};
  c2 = V{Permute3<T>::Apply(planes[2], p0, p1, p2)};
#else
  hn::LoadInterleaved3(d, pixels, c0, c1, c2);
#endif
}

/// Stores Lanes(d) pixels of three components.
template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_INLINE void StorePixels3(D d, V c0, V c1, V c2, T* HWY_RESTRICT pixels) {
#if HWY_TARGET == HWY_AVX3_DL
  const size_t n = hn::Lanes(d);
  const auto& parts = kPixelParts<T, 3>;
  for (size_t i = 0; i < 3; ++i) {
    hn::StoreU(V{Permute3<T>::Apply(parts[i], c0.raw, c1.raw, c2.raw)}, d, pixels + i * n);
  }
#else
  hn::StoreInterleaved3(c0, c1, c2, d, pixels);
#endif
}

/// Loads Lanes(d) pixels of four components into one vector per component.
template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_INLINE void LoadPixels4(D d, const T* HWY_RESTRICT pixels, V& c0, V& c1, V& c2, V& c3) {
  hn::LoadInterleaved4(d, pixels, c0, c1, c2, c3);
}

/// Stores components 0 to 2 of Lanes(d) pixels of four; component 3 keeps what it held.
template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_INLINE void StorePixels4(D d, V c0, V c1, V c2, T* HWY_RESTRICT pixels) {
#if HWY_TARGET == HWY_AVX3_DL
  const size_t n = hn::Lanes(d);
  const auto& parts = kPixelParts<T, 4>;
  const auto alpha = hn::Eq(hn::And(hn::Iota(d, 0), hn::Set(d, T{3})), hn::Set(d, T{3}));
  for (size_t i = 0; i < 4; ++i) {
    const V held = hn::LoadU(d, pixels + i * n);
    const V made{Permute3<T>::Apply(parts[i], c0.raw, c1.raw, c2.raw)};
    hn::StoreU(hn::IfThenElse(alpha, held, made), d, pixels + i * n);
  }
#else
  V held0, held1, held2, alpha;
  hn::LoadInterleaved4(d, pixels, held0, held1, held2, alpha);
  hn::StoreInterleaved4(c0, c1, c2, alpha, d, pixels);
#endif
}

/// Stores components 0 to 2 of Lanes(d) pixels that are `stride` samples (3 or 4) apart.
template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_INLINE void StorePixels(D d, V c0, V c1, V c2, T* HWY_RESTRICT pixels, size_t stride) {
  if (stride == 3) {
    StorePixels3(d, c0, c1, c2, pixels);
  } else {
    StorePixels4(d, c0, c1, c2, pixels);
  }
}

/// The same for the first `count` < Lanes(d) pixels alone.
template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_NOINLINE void StorePixelsN(D d, V c0, V c1, V c2, T* HWY_RESTRICT pixels, size_t stride,
                               size_t count) {
  HWY_ALIGN T buffer[4 * hn::MaxLanes(d)];
  std::memcpy(buffer, pixels, count * stride * sizeof(T));
  StorePixels(d, c0, c1, c2, buffer, stride);
  std::memcpy(pixels, buffer, count * stride * sizeof(T));
}

/// Loads the first `count` < Lanes(d) pixels that are `stride` samples (3 or 4) apart; the lanes
/// behind them are 0, and so is c3 for three components.
template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_INLINE void LoadPixelsN(D d, const T* HWY_RESTRICT pixels, size_t stride, size_t count, V& c0,
                            V& c1, V& c2, V& c3) {
  HWY_ALIGN T buffer[4 * hn::MaxLanes(d)] = {};
  std::memcpy(buffer, pixels, count * stride * sizeof(T));
  if (stride == 3) {
    LoadPixels3(d, buffer, c0, c1, c2);
    c3 = hn::Zero(d);
  } else {
    LoadPixels4(d, buffer, c0, c1, c2, c3);
  }
}

/// LoadU for a vector with several uses. GCC reads memory again for each type that a loaded vector
/// is reinterpreted as, and loads that straddle cache lines are what neighbourhood kernels wait
/// for; the empty statement makes it keep the register.
template <class D, class T = hn::TFromD<D>>
HWY_INLINE hn::Vec<D> LoadOnce(D d, const T* HWY_RESTRICT samples) {
  auto v = hn::LoadU(d, samples);
#if HWY_COMPILER_GCC_ACTUAL && HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  asm("" : "+v"(v.raw));
#elif HWY_COMPILER_GCC_ACTUAL && HWY_TARGET != HWY_SCALAR && HWY_ARCH_X86
  asm("" : "+x"(v.raw));
#endif
  return v;
}

/// Unsigned lanes twice as wide as the samples of D: one lane holds a pair of neighbours.
template <class D>
using PairTag = hn::RepartitionToWide<D>;

/// The first sample of each pair (those at even places), in lanes of twice the width.
template <class D>
HWY_INLINE hn::Vec<PairTag<D>> EvenSamples(D, hn::Vec<D> samples) {
  const PairTag<D> pairs;
  using T = hn::TFromD<D>;
  return hn::And(hn::BitCast(pairs, samples), hn::Set(pairs, hwy::LimitsMax<T>()));
}

/// The second sample of each pair (those at odd places), in lanes of twice the width.
template <class D>
HWY_INLINE hn::Vec<PairTag<D>> OddSamples(D, hn::Vec<D> samples) {
  return hn::ShiftRight<8 * sizeof(hn::TFromD<D>)>(hn::BitCast(PairTag<D>(), samples));
}

/// Puts wide lanes that hold samples back into pairs. `even` and `odd` must fit the sample type.
template <class D, class W>
HWY_INLINE hn::Vec<D> MergeSamples(D d, W even, W odd) {
  return hn::BitCast(d, hn::Or(even, hn::ShiftLeft<8 * sizeof(hn::TFromD<D>)>(odd)));
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif  // include guard
