// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/YCbCrLayout.h"

#include "QvApi_IP/Kernels/Planes.h"
#include "QvApi_IP/Kernels/YCbCrLayoutScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/YCbCrLayout.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "QvApi_IP/Kernels/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using D8 = hn::ScalableTag<uint8_t>;
using V8 = hn::Vec<D8>;
using Lanes16 = hn::ScalableTag<uint16_t>;
using V16 = hn::Vec<Lanes16>;

/// Cb and Cr by turns.
HWY_INLINE V8 JoinChroma(const uint8_t* cb, const uint8_t* cr) {
  const hn::Half<D8> half;
  const Lanes16 d;
  return MergeSamples(D8(), hn::PromoteTo(d, hn::LoadU(half, cb)),
                      hn::PromoteTo(d, hn::LoadU(half, cr)));
}

HWY_INLINE void StoreAsBytes(V16 lanes, uint8_t* to) {
  const hn::Half<D8> half;
  const hn::RebindToSigned<Lanes16> d;
  hn::StoreU(hn::DemoteTo(half, hn::BitCast(d, lanes)), half, to);
}

// 4:2:2 is a line of luminance and a line of chrominance by turns, 4:1:1 pairs of luminance and the
// same line of chrominance.

size_t Weave422(bool lumaFirst, const YCbCrLines<const uint8_t>& lines, uint8_t* bytes,
                size_t width) {
  const D8 d;
  const size_t n = hn::Lanes(d);
  size_t i = 0;
  for (; i + n <= width; i += n) {
    const V8 luma = hn::LoadU(d, lines.luma + i);
    const V8 chroma = JoinChroma(lines.cb + i / 2, lines.cr + i / 2);
    if (lumaFirst) {
      hn::StoreInterleaved2(luma, chroma, d, bytes + 2 * i);
    } else {
      hn::StoreInterleaved2(chroma, luma, d, bytes + 2 * i);
    }
  }
  return i;
}

size_t Weave411(bool lumaFirst, const YCbCrLines<const uint8_t>& lines, uint8_t* bytes,
                size_t width) {
  const D8 d;
  const size_t n = hn::Lanes(d);
  size_t i = 0;
  for (; i + 2 * n <= width; i += 2 * n) {
    V8 even, odd;
    hn::LoadInterleaved2(d, lines.luma + i, even, odd);
    const V8 chroma = JoinChroma(lines.cb + i / 4, lines.cr + i / 4);
    if (lumaFirst) {
      StorePixels3(d, even, odd, chroma, bytes + i / 2 * 3);
    } else {
      StorePixels3(d, chroma, even, odd, bytes + i / 2 * 3);
    }
  }
  return i;
}

size_t Unweave422(bool lumaFirst, const uint8_t* bytes, const YCbCrLines<uint8_t>& lines,
                  size_t width) {
  const D8 d;
  const size_t n = hn::Lanes(d);
  size_t i = 0;
  for (; i + n <= width; i += n) {
    V8 first, second;
    hn::LoadInterleaved2(d, bytes + 2 * i, first, second);
    const V8 chroma = lumaFirst ? second : first;
    hn::StoreU(lumaFirst ? first : second, d, lines.luma + i);
    StoreAsBytes(EvenSamples(d, chroma), lines.cb + i / 2);
    StoreAsBytes(OddSamples(d, chroma), lines.cr + i / 2);
  }
  return i;
}

size_t Unweave411(bool lumaFirst, const uint8_t* bytes, const YCbCrLines<uint8_t>& lines,
                  size_t width) {
  const D8 d;
  const size_t n = hn::Lanes(d);
  const auto twice = [d](V16 lanes) HWY_ATTR { return MergeSamples(d, lanes, lanes); };
  size_t i = 0;
  for (; i + 2 * n <= width; i += 2 * n) {
    V8 v[3];
    LoadPixels3(d, bytes + i / 2 * 3, v[0], v[1], v[2]);
    const V8 chroma = lumaFirst ? v[2] : v[0];
    hn::StoreInterleaved2(lumaFirst ? v[0] : v[1], lumaFirst ? v[1] : v[2], d, lines.luma + i);
    hn::StoreU(twice(EvenSamples(d, chroma)), d, lines.cb + i / 2);
    hn::StoreU(twice(OddSamples(d, chroma)), d, lines.cr + i / 2);
  }
  return i;
}

size_t WeaveVectors(const YCbCrLayout& layout, const YCbCrLines<const uint8_t>& lines,
                    uint8_t* bytes, size_t width) {
  const auto run = layout.pixels == 2 ? &Weave422 : &Weave411;
  return run(layout.IsLumaFirst(), lines, bytes, width);
}

size_t UnweaveVectors(const YCbCrLayout& layout, const uint8_t* bytes,
                      const YCbCrLines<uint8_t>& lines, size_t width) {
  const auto run = layout.pixels == 2 ? &Unweave422 : &Unweave411;
  return run(layout.IsLumaFirst(), bytes, lines, width);
}

#else

size_t WeaveVectors(const YCbCrLayout&, const YCbCrLines<const uint8_t>&, uint8_t*, size_t) {
  return 0;
}
size_t UnweaveVectors(const YCbCrLayout&, const uint8_t*, const YCbCrLines<uint8_t>&, size_t) {
  return 0;
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(WeaveVectors);
HWY_EXPORT(UnweaveVectors);

void WeaveYCbCr(const YCbCrLayout& layout, const YCbCrLines<const uint8_t>& lines,
                uint8_t* interleaved, size_t width) {
  if (layout.pixels == 1) {
    PlaneLines<const uint8_t> planes{};
    planes[layout.luma[0]] = lines.luma;
    planes[layout.cb] = lines.cb;
    planes[layout.cr] = lines.cr;
    return MergePixels(planes, interleaved, 3, width);
  }
  const size_t done = HWY_DYNAMIC_DISPATCH(WeaveVectors)(layout, lines, interleaved, width);
  const size_t groups = done / layout.pixels;
  Scalar::WeaveYCbCr(layout, {lines.luma + done, lines.cb + groups, lines.cr + groups},
                     interleaved + groups * layout.bytes, width - done);
}

void UnweaveYCbCr(const YCbCrLayout& layout, const uint8_t* interleaved, bool follows,
                  const YCbCrLines<uint8_t>& lines, size_t width) {
  if (layout.pixels == 1) {
    PlaneLines<uint8_t> planes{};
    planes[layout.luma[0]] = lines.luma;
    planes[layout.cb] = lines.cb;
    planes[layout.cr] = lines.cr;
    return SplitPixels(interleaved, 3, planes, width);
  }
  const size_t done = HWY_DYNAMIC_DISPATCH(UnweaveVectors)(layout, interleaved, lines, width);
  const size_t values = done / layout.ChromaGroup();
  Scalar::UnweaveYCbCr(layout, interleaved + done / layout.pixels * layout.bytes,
                       follows || done != 0,
                       {lines.luma + done, lines.cb + values, lines.cr + values}, width - done);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
