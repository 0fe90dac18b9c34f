// SPDX-License-Identifier: MIT
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "QvApi_IP/Kernels/DemosaicFamilies.h"
#include "QvApi_IP/Kernels/DemosaicScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/DemosaicBicubic.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After foreach_target.h, which includes this file again for each instruction set.
#include "QvApi_IP/Kernels/DemosaicRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

template <class T>
void DemosaicBicubicRows(const MosaicLayout<T>& mosaic) {
  Scalar::Bicubic(mosaic);
}

#else

/// Four-tap cubic kernel, (n >> 3) + (n >> 1) - (f >> 3) clamped, in lanes as wide as the samples.
///
/// With the means n >> 1 and f >> 1, which fit, an eighth is a quarter of the mean. The two
/// quarters are compared before the mean changes by their difference, so that saturation is the
/// clamping.
template <class T>
HWY_INLINE Vector<T> Cubic(Vector<T> a, Vector<T> b, Vector<T> c, Vector<T> d, Vector<T> maximum) {
  const auto near = Mean(a, b);
  const auto up = hn::ShiftRight<2>(near);
  const auto down = hn::ShiftRight<2>(Mean(c, d));
  const auto raised = hn::SaturatedAdd(near, hn::SaturatedSub(up, down));
  return hn::Min(hn::SaturatedSub(raised, hn::SaturatedSub(down, up)), maximum);
}

/// Rows with their two colours interpolated along the row.
template <class T>
class RowRing {
 public:
  RowRing(const MosaicLayout<T>& mosaic, ptrdiff_t slots)
      : m_slots(slots),
        m_pitch(hwy::RoundUpTo(static_cast<size_t>(mosaic.Width()), kAlignment) + 2 * kAlignment),
        m_samples(static_cast<size_t>(slots) * m_pitch + kAlignment) {}

  /// Readable from kAlignment samples before the first on, which stands on a cache line.
  T* Row(ptrdiff_t y) {
    const auto address = reinterpret_cast<uintptr_t>(m_samples.data());
    const size_t align = (-address & (kAlignment - 1)) / sizeof(T);
    return m_samples.data() + align + kAlignment + static_cast<size_t>(y & (m_slots - 1)) * m_pitch;
  }

 private:
  static constexpr size_t kAlignment = 64;

  const ptrdiff_t m_slots;
  const size_t m_pitch;
  std::vector<T> m_samples;
};

/// One walk down the image. Columns of a row need the rows up to three away interpolated along the
/// row, so rows are read and interpolated three ahead of the one written.
template <class T>
class BicubicWalk {
 public:
  explicit BicubicWalk(const MosaicLayout<T>& mosaic)
      : m_mosaic(mosaic),
        m_source(mosaic, 1),
        m_own(mosaic, kSlots),
        m_green(mosaic, kSlots),
        m_maximum(hn::Set(Tag<T>(), static_cast<T>(mosaic.Maximum()))) {}

  void Run() {
    const ptrdiff_t height = m_mosaic.Height();
    for (ptrdiff_t y = -kReach; y < height; ++y) {
      if (y + kReach < height) ReadRow(y + kReach);
      if (y >= 0) WriteRow(y);
    }
  }

 private:
  static constexpr ptrdiff_t kReach = 3;
  /// A power of two that holds the rows from three above to three below.
  static constexpr ptrdiff_t kSlots = 8;

  void ReadRow(ptrdiff_t y) {
    const Tag<T> d;
    const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(d));
    const ptrdiff_t width = m_mosaic.Width();
    const auto sites = LanesOfParity<T>(m_mosaic.SiteParity(y));
    T* row = m_source.Row(0);
    T* own = m_own.Row(y);
    T* green = m_green.Row(y);
    std::memcpy(row, m_mosaic.Source(y), static_cast<size_t>(width) * sizeof(T));
    for (ptrdiff_t x = 0; x < width; x += lanes) {
      const auto samples = LoadOnce(d, row + x);
      const auto missing = Cubic<T>(LoadOnce(d, row + x - 1), LoadOnce(d, row + x + 1),
                                    LoadOnce(d, row + x - 3), LoadOnce(d, row + x + 3), m_maximum);
      hn::Store(hn::IfVecThenElse(sites, samples, missing), d, own + x);
      hn::Store(hn::IfVecThenElse(sites, missing, samples), d, green + x);
    }
    for (ptrdiff_t x = 0; x < kReach; ++x) {
      MeanAt(y, x);
      MeanAt(y, width - 1 - x);
    }
  }

  /// The three outer columns on both sides take means.
  void MeanAt(ptrdiff_t y, ptrdiff_t x) {
    const T* row = m_source.Row(0);
    const ptrdiff_t width = m_mosaic.Width();
    T* missing = m_mosaic.IsSite(x, y) ? m_green.Row(y) : m_own.Row(y);
    missing[x] = static_cast<T>((row[Continued(x - 1, width)] + row[Continued(x + 1, width)]) >> 1);
  }

  HWY_FLATTEN void WriteRow(ptrdiff_t y) {
    const auto rowAt = [&](ptrdiff_t offset) {
      return m_own.Row(Continued(y + offset, m_mosaic.Height()));
    };
    const T* above = rowAt(-1);
    const T* below = rowAt(1);
    if (Scalar::IsCubicRow(y, m_mosaic.Height())) {
      const T* farAbove = rowAt(-3);
      const T* farBelow = rowAt(3);
      Write(y, [=, this](ptrdiff_t x) HWY_ATTR {
        const Tag<T> d;
        return Cubic<T>(LoadOnce(d, above + x), LoadOnce(d, below + x), LoadOnce(d, farAbove + x),
                        LoadOnce(d, farBelow + x), m_maximum);
      });
    } else {
      Write(y, [=](ptrdiff_t x) HWY_ATTR {
        const Tag<T> d;
        return Mean(LoadOnce(d, above + x), LoadOnce(d, below + x));
      });
    }
  }

  template <class Lacked>
  HWY_INLINE void Write(ptrdiff_t y, const Lacked& lacked) {
    const T* own = m_own.Row(y);
    const T* green = m_green.Row(y);
    WriteColumns(m_mosaic, y, 0, m_mosaic.Width(), m_mosaic.OwnComponent(y) == 0,
                 [&](ptrdiff_t x) HWY_ATTR {
                   const Tag<T> d;
                   return PixelVectors<T>{LoadOnce(d, own + x), LoadOnce(d, green + x), lacked(x)};
                 });
  }

  const MosaicLayout<T>& m_mosaic;
  /// The row being read, with room to read beside it.
  RowRing<T> m_source;
  RowRing<T> m_own;
  RowRing<T> m_green;
  const Vector<T> m_maximum;
};

template <class T>
void DemosaicBicubicRows(const MosaicLayout<T>& mosaic) {
  BicubicWalk<T>(mosaic).Run();
}

#endif

void DemosaicBicubic8(const MosaicLayout<uint8_t>& mosaic) { DemosaicBicubicRows(mosaic); }
void DemosaicBicubic16(const MosaicLayout<uint16_t>& mosaic) { DemosaicBicubicRows(mosaic); }

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {
namespace {

HWY_EXPORT(DemosaicBicubic8);
HWY_EXPORT(DemosaicBicubic16);

/// Heights and directions in which the second pass does not fit the rows: results depend on what
/// the destination held, pass by pass.
template <class T>
bool NeedsDestination(const MosaicLayout<T>& mosaic) {
  const ptrdiff_t height = mosaic.Height();
  return height == 6 || height == 7 || (mosaic.IsReversed() && height % 2 == 1);
}

}  // namespace

void DemosaicBicubic(const MosaicLayout<uint8_t>& mosaic) {
  if (NeedsDestination(mosaic)) return Scalar::Bicubic(mosaic);
  HWY_DYNAMIC_DISPATCH(DemosaicBicubic8)(mosaic);
}
void DemosaicBicubic(const MosaicLayout<uint16_t>& mosaic) {
  if (NeedsDestination(mosaic)) return Scalar::Bicubic(mosaic);
  HWY_DYNAMIC_DISPATCH(DemosaicBicubic16)(mosaic);
}

}  // namespace QvApi::Kernels
#endif
