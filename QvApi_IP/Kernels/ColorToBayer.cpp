// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColorToBayer.h"

#include "QvApi_IP/Kernels/ColorToBayerScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/ColorToBayer.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "QvApi_IP/Kernels/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Samples the row in whole vectors, the last of which ends where the row ends.
template <class T>
void Sample(const T* source, T* destination, size_t width, const ColorLayout& layout, int phase) {
  const hn::ScalableTag<T> d;
  using V = hn::Vec<decltype(d)>;
  const size_t n = hn::Lanes(d);
  // An even number of pixels always goes in vectors, so that lanes keep their parity.
  const size_t whole = width - width % 2;
  if (whole < n) {
    Scalar::ColorRowToBayer(source, destination, width, layout, phase);
    return;
  }
  const bool startsGreen = StartsGreen(phase);
  const Scalar::SiteComponents sites(layout.isBGR, phase);
  const bool takesFirst = sites.even == 0 || sites.odd == 0;
  const auto step = [&](size_t x) HWY_ATTR {
    V c0, green, c2, alpha;
    const T* pixels = source + x * layout.components;
    if (layout.components == 3) {
      LoadPixels3(d, pixels, c0, green, c2);
    } else {
      LoadPixels4(d, pixels, c0, green, c2, alpha);
    }
    const V colour = takesFirst ? c0 : c2;
    hn::StoreU(startsGreen ? hn::OddEven(colour, green) : hn::OddEven(green, colour), d,
               destination + x);
  };
  for (size_t x = 0; x + n <= whole; x += n) step(x);
  step(whole - n);
  if (width != whole) {
    Scalar::ColorRowToBayer(source + whole * layout.components, destination + whole, 1, layout,
                            phase);
  }
}

#else

template <class T>
void Sample(const T* source, T* destination, size_t width, const ColorLayout& layout, int phase) {
  Scalar::ColorRowToBayer(source, destination, width, layout, phase);
}

#endif

void Sample8(const uint8_t* source, uint8_t* destination, size_t width, const ColorLayout& layout,
             int phase) {
  Sample(source, destination, width, layout, phase);
}
void Sample16(const uint16_t* source, uint16_t* destination, size_t width,
              const ColorLayout& layout, int phase) {
  Sample(source, destination, width, layout, phase);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Sample8);
HWY_EXPORT(Sample16);

namespace {

bool IsServed(const ColorLayout& layout, int phase) {
  return IsBayerPhase(phase) && (layout.components == 3 || layout.components == 4);
}

}  // namespace

void ColorRowToBayer(const uint8_t* source, uint8_t* destination, size_t width,
                     const ColorLayout& layout, int phase) {
  if (IsServed(layout, phase)) {
    HWY_DYNAMIC_DISPATCH(Sample8)(source, destination, width, layout, phase);
  }
}

void ColorRowToBayer(const uint16_t* source, uint16_t* destination, size_t width,
                     const ColorLayout& layout, int phase) {
  if (IsServed(layout, phase)) {
    HWY_DYNAMIC_DISPATCH(Sample16)(source, destination, width, layout, phase);
  }
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
