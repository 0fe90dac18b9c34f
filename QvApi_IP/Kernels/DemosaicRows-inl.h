// SPDX-License-Identifier: MIT
// What row kernels of the mosaic share that work on whole rows, site beside green.

#if defined(QVAPI_KERNELS_DEMOSAIC_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_DEMOSAIC_ROWS_INL_H_
#undef QVAPI_KERNELS_DEMOSAIC_ROWS_INL_H_
#else
#define QVAPI_KERNELS_DEMOSAIC_ROWS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/DemosaicLayout.h"
#include "QvApi_IP/Kernels/Interleave-inl.h"
#include "hwy/highway.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {

template <class T>
using Tag = hn::ScalableTag<T>;
template <class T>
using Vector = hn::Vec<Tag<T>>;

/// Values of a vector of pixels: one of the non-green colours, green, the other.
template <class T>
struct PixelVectors {
  Vector<T> first;
  Vector<T> green;
  Vector<T> second;
};

/// (a + b) >> 1 in lanes that do not hold the sum.
template <class V>
HWY_INLINE V Mean(V a, V b) {
  const hn::DFromV<V> d;
  using T = hn::TFromD<decltype(d)>;
  return hn::Sub(hn::AverageRound(a, b), hn::And(hn::Xor(a, b), hn::Set(d, T{1})));
}

/// Ones in the lanes of every other sample, from the first or the second on.
template <class T>
HWY_INLINE Vector<T> LanesOfParity(ptrdiff_t parity) {
  const PairTag<Tag<T>> pairs;
  using Pair = hn::TFromD<decltype(pairs)>;
  const Pair even = hwy::LimitsMax<T>();
  return hn::BitCast(Tag<T>(), hn::Set(pairs, parity == 0 ? even : static_cast<Pair>(~even)));
}

/// The values in the order of the destination's components 0 to 2.
template <class T>
HWY_INLINE PixelVectors<T> Ordered(const PixelVectors<T>& v, Vector<T> exchanged) {
  return {hn::IfVecThenElse(exchanged, v.second, v.first), v.green,
          hn::IfVecThenElse(exchanged, v.first, v.second)};
}

template <size_t kStride, class T, class Kernel>
HWY_INLINE void WriteColumns(ptrdiff_t count, Vector<T> exchanged, const Kernel& kernel,
                             T* pixels) {
  const Tag<T> d;
  const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(d));
  ptrdiff_t x = 0;
  for (; x + lanes <= count; x += lanes, pixels += static_cast<size_t>(lanes) * kStride) {
    const PixelVectors<T> v = Ordered<T>(kernel(x), exchanged);
    StorePixels(d, v.first, v.green, v.second, pixels, kStride);
  }
  // Not in the loop, where the call would make the compiler keep vectors in memory.
  if (x < count) {
    const PixelVectors<T> v = Ordered<T>(kernel(x), exchanged);
    StorePixelsN(d, v.first, v.green, v.second, pixels, kStride, static_cast<size_t>(count - x));
  }
}

/// Writes columns of the destination row of source row y. `kernel(x)` gives the values from column
/// `first + x` on; its first colour goes to component 0, or else to component 2.
template <class T, class Kernel>
HWY_INLINE void WriteColumns(const MosaicLayout<T>& mosaic, ptrdiff_t y, ptrdiff_t first,
                             ptrdiff_t count, bool inOrder, const Kernel& kernel) {
  const auto exchanged = hn::Set(Tag<T>(), inOrder ? T{0} : hwy::LimitsMax<T>());
  T* pixels = mosaic.Pixel(first, y);
  if (mosaic.Stride() == 3) {
    WriteColumns<3>(count, exchanged, kernel, pixels);
  } else {
    WriteColumns<4>(count, exchanged, kernel, pixels);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif  // HWY_SCALAR

#endif  // include guard
