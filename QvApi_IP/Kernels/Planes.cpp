// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Planes.h"

#include <utility>

#include "QvApi_IP/Kernels/PlanesScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Planes.cpp"
#ifndef HWY_WANT_AVX3_DL
#define HWY_WANT_AVX3_DL
#endif
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After Highway's own headers: it is included once for each target.
#include "QvApi_IP/Kernels/Interleave-inl.h"
#include "QvApi_IP/Kernels/Luminance-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Calls `block(first)` for vectors of n pixels; the last one ends with the line and may repeat
/// pixels of the one before. count must be at least n.
template <class Block>
HWY_INLINE void ForEachVector(size_t n, size_t count, Block block) {
  size_t i = 0;
  for (; i + n <= count; i += n) block(i);
  if (i < count) block(count - n);
}

template <class D, class V = hn::Vec<D>, class T = hn::TFromD<D>>
HWY_INLINE void LoadColors(D d, const T* pixels, size_t step, V& c0, V& c1, V& c2) {
  V alpha;
  if (step == 3) {
    LoadPixels3(d, pixels, c0, c1, c2);
  } else {
    LoadPixels4(d, pixels, c0, c1, c2, alpha);
  }
}

template <class T>
void Split(const T* pixels, size_t step, const PlaneLines<T>& planes, size_t count) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  if (count < n) return Scalar::SplitPixels(pixels, step, planes, count);
  ForEachVector(n, count, [&](size_t i) HWY_ATTR {
    hn::Vec<decltype(d)> c0, c1, c2;
    LoadColors(d, pixels + i * step, step, c0, c1, c2);
    hn::StoreU(c0, d, planes[0] + i);
    hn::StoreU(c1, d, planes[1] + i);
    hn::StoreU(c2, d, planes[2] + i);
  });
}

template <class T>
void Merge(const PlaneLines<const T>& planes, T* pixels, size_t step, size_t count) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  if (count < n) return Scalar::MergePixels(planes, pixels, step, count);
  ForEachVector(n, count, [&](size_t i) HWY_ATTR {
    StorePixels(d, hn::LoadU(d, planes[0] + i), hn::LoadU(d, planes[1] + i),
                hn::LoadU(d, planes[2] + i), pixels + i * step, step);
  });
}

template <class T>
void ToGrey(const ColorPixels& layout, const T* pixels, T* grey, size_t count) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  if (count < n) return Scalar::PixelsToGrey(layout, pixels, grey, count);
  const auto mask = hn::Set(d, static_cast<T>((1u << layout.depth) - 1));
  ForEachVector(n, count, [&](size_t i) HWY_ATTR {
    hn::Vec<decltype(d)> c0, c1, c2;
    LoadColors(d, pixels + i * layout.step, layout.step, c0, c1, c2);
    c0 = hn::And(c0, mask), c1 = hn::And(c1, mask), c2 = hn::And(c2, mask);
    if (layout.isBGR) std::swap(c0, c2);
    hn::StoreU(LuminanceVector(c0, c1, c2), d, grey + i);
  });
}

void Split8(const uint8_t* pixels, size_t step, const PlaneLines<uint8_t>& planes, size_t n) {
  Split(pixels, step, planes, n);
}
void Split16(const uint16_t* pixels, size_t step, const PlaneLines<uint16_t>& planes, size_t n) {
  Split(pixels, step, planes, n);
}
void Merge8(const PlaneLines<const uint8_t>& planes, uint8_t* pixels, size_t step, size_t n) {
  Merge(planes, pixels, step, n);
}
void Merge16(const PlaneLines<const uint16_t>& planes, uint16_t* pixels, size_t step, size_t n) {
  Merge(planes, pixels, step, n);
}
void ToGrey8(const ColorPixels& layout, const uint8_t* pixels, uint8_t* grey, size_t n) {
  ToGrey(layout, pixels, grey, n);
}
void ToGrey16(const ColorPixels& layout, const uint16_t* pixels, uint16_t* grey, size_t n) {
  ToGrey(layout, pixels, grey, n);
}

/// Works on the lower and the upper halves of the words; the second component lies in both.
void PackWords(const uint16_t* pixels, size_t step, bool exchange, uint8_t* words, size_t count) {
  const hn::ScalableTag<uint16_t> d;
  using V = hn::Vec<decltype(d)>;
  const size_t n = hn::Lanes(d);
  if (count < n) return Scalar::PackPixelWords(pixels, step, exchange, words, count);
  auto* halves = reinterpret_cast<uint16_t*>(words);
  const V mask = hn::Set(d, uint16_t{0x3FF});
  ForEachVector(n, count, [&](size_t i) HWY_ATTR {
    V c0, c1, c2;
    LoadColors(d, pixels + step * i, step, c0, c1, c2);
    if (exchange) std::swap(c0, c2);
    c0 = hn::And(c0, mask), c1 = hn::And(c1, mask), c2 = hn::And(c2, mask);
    const V lower = hn::Or(c0, hn::ShiftLeft<10>(c1));
    const V upper = hn::Or(hn::ShiftRight<6>(c1), hn::ShiftLeft<4>(c2));
    hn::StoreInterleaved2(lower, upper, d, halves + 2 * i);
  });
}

void UnpackWords(const uint8_t* words, uint16_t* pixels, size_t count) {
  const hn::ScalableTag<uint16_t> d;
  using V = hn::Vec<decltype(d)>;
  const size_t n = hn::Lanes(d);
  if (count < n) return Scalar::UnpackPixelWords(words, pixels, count);
  const auto* halves = reinterpret_cast<const uint16_t*>(words);
  const V mask = hn::Set(d, uint16_t{0x3FF});
  ForEachVector(n, count, [&](size_t i) HWY_ATTR {
    V lower, upper;
    hn::LoadInterleaved2(d, halves + 2 * i, lower, upper);
    const V c1 = hn::Or(hn::ShiftRight<10>(lower), hn::ShiftLeft<6>(upper));
    StorePixels3(d, hn::And(lower, mask), hn::And(c1, mask),
                 hn::And(hn::ShiftRight<4>(upper), mask), pixels + 3 * i);
  });
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Split8);
HWY_EXPORT(Split16);
HWY_EXPORT(Merge8);
HWY_EXPORT(Merge16);
HWY_EXPORT(ToGrey8);
HWY_EXPORT(ToGrey16);
HWY_EXPORT(PackWords);
HWY_EXPORT(UnpackWords);

void SplitPixels(const uint8_t* pixels, size_t step, const PlaneLines<uint8_t>& planes,
                 size_t count) {
  HWY_DYNAMIC_DISPATCH(Split8)(pixels, step, planes, count);
}
void SplitPixels(const uint16_t* pixels, size_t step, const PlaneLines<uint16_t>& planes,
                 size_t count) {
  HWY_DYNAMIC_DISPATCH(Split16)(pixels, step, planes, count);
}
void MergePixels(const PlaneLines<const uint8_t>& planes, uint8_t* pixels, size_t step,
                 size_t count) {
  HWY_DYNAMIC_DISPATCH(Merge8)(planes, pixels, step, count);
}
void MergePixels(const PlaneLines<const uint16_t>& planes, uint16_t* pixels, size_t step,
                 size_t count) {
  HWY_DYNAMIC_DISPATCH(Merge16)(planes, pixels, step, count);
}
void PixelsToGrey(const ColorPixels& layout, const uint8_t* pixels, uint8_t* grey, size_t count) {
  HWY_DYNAMIC_DISPATCH(ToGrey8)(layout, pixels, grey, count);
}
void PixelsToGrey(const ColorPixels& layout, const uint16_t* pixels, uint16_t* grey, size_t count) {
  HWY_DYNAMIC_DISPATCH(ToGrey16)(layout, pixels, grey, count);
}
void PackPixelWords(const uint16_t* pixels, size_t step, bool exchange, uint8_t* words,
                    size_t count) {
  HWY_DYNAMIC_DISPATCH(PackWords)(pixels, step, exchange, words, count);
}
void UnpackPixelWords(const uint8_t* words, uint16_t* pixels, size_t count) {
  HWY_DYNAMIC_DISPATCH(UnpackWords)(words, pixels, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
