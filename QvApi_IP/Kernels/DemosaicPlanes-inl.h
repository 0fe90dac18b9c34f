// SPDX-License-Identifier: MIT
// Rows of a mosaic taken apart: its even and its odd columns each in a plane of signed lanes twice
// as wide as the samples. Whatever the row, the sites then lie in one plane and the greens in the
// other, so one loop without tests serves all rows; columns beside the image are plain lanes of the
// margin.

#if defined(QVAPI_KERNELS_DEMOSAIC_PLANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QVAPI_KERNELS_DEMOSAIC_PLANES_INL_H_
#undef QVAPI_KERNELS_DEMOSAIC_PLANES_INL_H_
#else
#define QVAPI_KERNELS_DEMOSAIC_PLANES_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "QvApi_IP/Kernels/DemosaicLayout.h"
#include "QvApi_IP/Kernels/DemosaicRows-inl.h"
#include "hwy/highway.h"

#if HWY_TARGET != HWY_SCALAR

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {

template <class T>
using SampleTag = hn::ScalableTag<T>;
/// Tag, type and vector of the lanes of a plane.
template <class T>
using PlaneTag = hn::RebindToSigned<PairTag<SampleTag<T>>>;
template <class T>
using Plane = hn::TFromD<PlaneTag<T>>;
template <class T>
using PlaneVector = hn::Vec<PlaneTag<T>>;

/// Lanes that may be read before the first and behind the last of a plane.
constexpr size_t kPlaneMargin = 64;

/// The last `slots` rows of one plane, a power of two, lanes 0 aligned to cache lines.
template <class T>
class PlaneRing {
 public:
  PlaneRing(const MosaicLayout<T>& mosaic, ptrdiff_t slots)
      : m_slots(slots),
        m_pitch(hwy::RoundUpTo(static_cast<size_t>(mosaic.Width() / 2 + 1), kPlaneMargin) +
                2 * kPlaneMargin),
        m_lanes(static_cast<size_t>(slots) * m_pitch + kPlaneMargin) {}

  Plane<T>* Row(ptrdiff_t y) {
    const auto address = reinterpret_cast<uintptr_t>(m_lanes.data());
    const size_t align = (-address & (kPlaneMargin - 1)) / sizeof(Plane<T>);
    return m_lanes.data() + align + static_cast<size_t>(y & (m_slots - 1)) * m_pitch + kPlaneMargin;
  }

 private:
  const ptrdiff_t m_slots;
  const size_t m_pitch;
  std::vector<Plane<T>> m_lanes;
};

/// Number of columns of a parity.
inline ptrdiff_t ColumnsOf(ptrdiff_t width, ptrdiff_t parity) { return (width + 1 - parity) / 2; }

/// Repeats the outermost lanes of a plane, which continues its row with a period of two columns.
template <class P>
void ContinuePlane(P* plane, ptrdiff_t count) {
  plane[-1] = plane[-2] = plane[0];
  plane[count] = plane[count + 1] = plane[count - 1];
}

/// Takes a source row apart. Nothing but its samples is read.
template <class T>
void SplitRow(const T* row, ptrdiff_t width, Plane<T>* even, Plane<T>* odd) {
  const SampleTag<T> d;
  const PlaneTag<T> planes;
  const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(d));
  const auto split = [&](const T* samples, ptrdiff_t x) HWY_ATTR {
    const auto v = LoadOnce(d, samples);
    hn::Store(hn::BitCast(planes, EvenSamples(d, v)), planes, even + x / 2);
    hn::Store(hn::BitCast(planes, OddSamples(d, v)), planes, odd + x / 2);
  };
  ptrdiff_t x = 0;
  for (; x + lanes <= width; x += lanes) split(row + x, x);
  if (x < width) {
    HWY_ALIGN T rest[hn::MaxLanes(d)] = {};
    std::memcpy(rest, row + x, static_cast<size_t>(width - x) * sizeof(T));
    split(rest, x);
  }
  ContinuePlane(even, ColumnsOf(width, 0));
  ContinuePlane(odd, ColumnsOf(width, 1));
}

/// Values of half a vector of pixels each: those at the sites of a row and those at its greens.
template <class T>
struct HalfPixels {
  PlaneVector<T> own;
  PlaneVector<T> green;
  PlaneVector<T> lacked;
};

/// Puts pixels of a row together and writes them. `atSites(i)` and `atGreens(i)` give HalfPixels
/// for the lanes from i on.
template <bool kSitesFirst, class T, class AtSites, class AtGreens>
HWY_INLINE void WriteHalvesOf(const MosaicLayout<T>& mosaic, ptrdiff_t y, const AtSites& atSites,
                              const AtGreens& atGreens) {
  const auto merge = [](PlaneVector<T> site, PlaneVector<T> green) HWY_ATTR {
    const SampleTag<T> d;
    return kSitesFirst ? MergeSamples(d, site, green) : MergeSamples(d, green, site);
  };
  WriteColumns(
      mosaic, y, 0, mosaic.Width(), mosaic.OwnComponent(y) == 0, [&](ptrdiff_t x) HWY_ATTR {
        const HalfPixels<T> sites = atSites(x / 2);
        const HalfPixels<T> greens = atGreens(x / 2);
        return PixelVectors<T>{merge(sites.own, greens.own), merge(sites.green, greens.green),
                               merge(sites.lacked, greens.lacked)};
      });
}

template <class T, class AtSites, class AtGreens>
HWY_INLINE void WriteHalves(const MosaicLayout<T>& mosaic, ptrdiff_t y, const AtSites& atSites,
                            const AtGreens& atGreens) {
  if (mosaic.SiteParity(y) == 0) {
    WriteHalvesOf<true>(mosaic, y, atSites, atGreens);
  } else {
    WriteHalvesOf<false>(mosaic, y, atSites, atGreens);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#endif  // HWY_SCALAR

#endif  // include guard
