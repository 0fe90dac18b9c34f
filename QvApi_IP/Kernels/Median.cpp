// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Median.h"

#include "QvApi_IP/Kernels/MedianScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Median.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "QvApi_IP/Kernels/Median-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Whole vectors, the last of which ends where the columns end.
template <class T, class Result>
HWY_INLINE void Walk(T* destination, size_t begin, size_t end, Result result) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  for (size_t x = begin; x + n <= end; x += n) hn::StoreU(result(x), d, destination + x);
  hn::StoreU(result(end - n), d, destination + end - n);
}

/// Columns that have all their neighbours.
template <class T>
void MonoColumns(const MedianWindow<T>& window, T* destination, size_t begin, size_t end) {
  const hn::ScalableTag<T> d;
  const T *above = window[1], *here = window[2], *below = window[3];
  Walk(destination, begin, end, [=](size_t x) HWY_ATTR {
    return Median5(hn::LoadU(d, above + x - 1), hn::LoadU(d, above + x + 1),
                   hn::LoadU(d, below + x - 1), hn::LoadU(d, below + x + 1),
                   hn::LoadU(d, here + x));
  });
}

/// As above. `begin` and the number of columns are even, so that lanes keep their colour.
template <bool greenAtEven, class T>
void MosaicColumns(const MedianWindow<T>& window, T* destination, size_t begin, size_t end) {
  const hn::ScalableTag<T> d;
  const T *above2 = window[0], *above = window[1], *here = window[2], *below = window[3],
          *below2 = window[4];
  const auto neighbour = [=](const T* ofGreen, const T* ofColour) HWY_ATTR {
    const auto green = hn::LoadU(d, ofGreen), colour = hn::LoadU(d, ofColour);
    return greenAtEven ? hn::OddEven(colour, green) : hn::OddEven(green, colour);
  };
  Walk(destination, begin, end, [=](size_t x) HWY_ATTR {
    return Median5(neighbour(above + x - 1, above2 + x), neighbour(above + x + 1, here + x - 2),
                   neighbour(below + x - 1, here + x + 2), neighbour(below + x + 1, below2 + x),
                   hn::LoadU(d, here + x));
  });
}

template <class T>
void Median(const MedianWindow<T>& window, T* destination, size_t width, MedianSites sites) {
  const bool isMono = sites == MedianSites::Mono;
  const size_t begin = isMono ? 1 : 2;
  const bool isInside = window[2 - begin] && window[2 + begin];
  if (!isInside || width < 2 * begin + hn::Lanes(hn::ScalableTag<T>()) + 1) {
    Scalar::MedianRow(window, destination, width, sites, 0, width);
    return;
  }
  const size_t end = isMono ? width - 1 : (width - 2) & ~size_t{1};
  Scalar::MedianRow(window, destination, width, sites, 0, begin);
  if (isMono) {
    MonoColumns(window, destination, begin, end);
  } else if (sites == MedianSites::GreenAtEven) {
    MosaicColumns<true>(window, destination, begin, end);
  } else {
    MosaicColumns<false>(window, destination, begin, end);
  }
  Scalar::MedianRow(window, destination, width, sites, end, width);
}

#else

template <class T>
void Median(const MedianWindow<T>& window, T* destination, size_t width, MedianSites sites) {
  Scalar::MedianRow(window, destination, width, sites, 0, width);
}

#endif

void Median8(const MedianWindow<uint8_t>& window, uint8_t* destination, size_t width,
             MedianSites sites) {
  Median(window, destination, width, sites);
}
void Median16(const MedianWindow<uint16_t>& window, uint16_t* destination, size_t width,
              MedianSites sites) {
  Median(window, destination, width, sites);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Median8);
HWY_EXPORT(Median16);

void MedianRow(const MedianWindow<uint8_t>& window, uint8_t* destination, size_t width,
               MedianSites sites) {
  HWY_DYNAMIC_DISPATCH(Median8)(window, destination, width, sites);
}

void MedianRow(const MedianWindow<uint16_t>& window, uint16_t* destination, size_t width,
               MedianSites sites) {
  HWY_DYNAMIC_DISPATCH(Median16)(window, destination, width, sites);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
