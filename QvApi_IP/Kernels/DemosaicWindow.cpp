// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "QvApi_IP/Kernels/DemosaicFamilies.h"
#include "QvApi_IP/Kernels/DemosaicScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/DemosaicWindow.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After foreach_target.h, which includes this file again for each instruction set.
#include "QvApi_IP/Kernels/DemosaicRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

template <class T>
void DemosaicWindowRows(const MosaicLayout<T>& mosaic, DemosaicMethod method) {
  Scalar::Demosaic(mosaic, method);
}

#else

/// What a row kernel sees: the rows y - 1 to y + 2, each readable from kMargin samples before what
/// it is asked for to a vector and kMargin samples behind.
template <class T>
struct RowWindow {
  const T* above;
  const T* row;
  const T* below;
  const T* farBelow;
  /// Columns of the sites of `row`, 0 or 1.
  ptrdiff_t siteParity;
  /// True for the upper rows of the tiles of 2 x 2 pixels.
  bool isUpper;
};

constexpr ptrdiff_t kMargin = 4;

/// The windows of a row. Kernels read the source itself wherever a vector and its margins lie
/// inside the image; the columns before and behind are copied, once per source row, and continued.
template <class T>
class RowWindows {
 public:
  /// Columns of a row that are seen through one window.
  struct WindowPart {
    ptrdiff_t first;
    ptrdiff_t count;
    /// Copies with continued margins; null where the source itself will do.
    const T* edges;
  };

  RowWindows(const RowWindows&) = delete;
  RowWindows& operator=(const RowWindows&) = delete;
  explicit RowWindows(const MosaicLayout<T>& mosaic)
      : m_mosaic(mosaic),
        m_lanes(static_cast<ptrdiff_t>(hn::Lanes(Tag<T>()))),
        m_rightStart(RightStart(mosaic.Width(), m_lanes)),
        m_pitch(3 * m_lanes + 4 * kMargin),
        m_parts(MakeParts()) {
    for (ptrdiff_t y = 0; y < 2; ++y) Read(y);
  }

  void MoveTo(ptrdiff_t y) {
    m_y = y;
    if (y + 2 < m_mosaic.Height()) Read(y + 2);
  }
  ptrdiff_t Y() const { return m_y; }

  /// The row from left to right; the first two parts hold whole vectors or nothing.
  const std::array<WindowPart, 3>& Parts() const { return m_parts; }

  RowWindow<T> Window(const WindowPart& part) const {
    const auto rowAt = [&](ptrdiff_t y) {
      return part.edges ? part.edges + Offset(y) : m_mosaic.Source(y) + part.first;
    };
    return {rowAt(m_y - 1),           rowAt(m_y),  rowAt(m_y + 1), rowAt(m_y + 2),
            m_mosaic.SiteParity(m_y), m_y % 2 == 0};
  }

 private:
  static constexpr ptrdiff_t kRows = 4;
  static constexpr size_t kMaxPitch = 3 * hn::MaxLanes(Tag<T>()) + 4 * kMargin;
  using Edges = std::array<T, kRows * kMaxPitch>;

  std::array<WindowPart, 3> MakeParts() const {
    const ptrdiff_t leftEnd = std::min(m_lanes, m_rightStart);
    return {WindowPart{0, leftEnd, m_left.data()},
            WindowPart{leftEnd, m_rightStart - leftEnd, nullptr},
            WindowPart{m_rightStart, m_mosaic.Width() - m_rightStart, m_right.data()}};
  }

  /// Narrow images lie in the right window as a whole.
  static ptrdiff_t RightStart(ptrdiff_t width, ptrdiff_t lanes) {
    const ptrdiff_t inside = (width - kMargin) / lanes * lanes;
    return inside >= 2 * lanes ? inside : 0;
  }

  size_t Offset(ptrdiff_t y) const {
    return static_cast<size_t>(Continued(y, m_mosaic.Height()) % kRows * m_pitch + kMargin);
  }

  void Read(ptrdiff_t y) {
    const T* source = m_mosaic.Source(y);
    const ptrdiff_t width = m_mosaic.Width();
    if (m_rightStart > 0) Copy(source, 0, m_lanes + kMargin, m_left.data() + Offset(y));
    Copy(source, m_rightStart, width - m_rightStart, m_right.data() + Offset(y));
  }

  /// Copies columns with a margin on both sides.
  void Copy(const T* source, ptrdiff_t first, ptrdiff_t count, T* out) const {
    const ptrdiff_t width = m_mosaic.Width();
    std::memcpy(out, source + first, static_cast<size_t>(count) * sizeof(T));
    for (ptrdiff_t i = 0; i < kMargin; ++i) {
      out[-1 - i] = source[Continued(first - 1 - i, width)];
      out[count + i] = source[Continued(first + count + i, width)];
    }
  }

  const MosaicLayout<T>& m_mosaic;
  const ptrdiff_t m_lanes;
  const ptrdiff_t m_rightStart;
  const ptrdiff_t m_pitch;
  Edges m_left{};
  Edges m_right{};
  const std::array<WindowPart, 3> m_parts;
  ptrdiff_t m_y = 0;
};

/// Byte indices that give both samples of a pair the one of this parity.
template <class T>
Vector<T> PairsFrom(ptrdiff_t parity) {
  const hn::Repartition<uint8_t, Tag<T>> bytes;
  alignas(16) uint8_t indices[16];
  for (size_t i = 0; i < 16; ++i) {
    const size_t pair = i / (2 * sizeof(T)) * 2;
    indices[i] =
        static_cast<uint8_t>((pair + static_cast<size_t>(parity)) * sizeof(T) + i % sizeof(T));
  }
  return hn::BitCast(Tag<T>(), hn::LoadDup128(bytes, indices));
}

template <class T>
class NoneKernel {
 public:
  explicit NoneKernel(const RowWindow<T>& window)
      : m_row(window.row), m_sites(LanesOfParity<T>(window.siteParity)) {}

  HWY_INLINE PixelVectors<T> operator()(ptrdiff_t x) const {
    const Tag<T> d;
    const auto samples = LoadOnce(d, m_row + x);
    return {hn::And(samples, m_sites), hn::AndNot(m_sites, samples), hn::Zero(d)};
  }

 private:
  const T* m_row;
  const Vector<T> m_sites;
};

template <class T>
class MonoKernel {
 public:
  explicit MonoKernel(const RowWindow<T>& window) : m_row(window.row) {}

  HWY_INLINE PixelVectors<T> operator()(ptrdiff_t x) const {
    const auto samples = LoadOnce(Tag<T>(), m_row + x);
    return {samples, samples, samples};
  }

 private:
  const T* m_row;
};

template <class T>
class NearestNeighborKernel {
 public:
  explicit NearestNeighborKernel(const RowWindow<T>& window)
      : m_row(window.row),
        m_other(window.isUpper ? window.below : window.above),
        m_takeSites(PairsFrom<T>(window.siteParity)),
        m_takeGreens(PairsFrom<T>(1 - window.siteParity)) {}

  HWY_INLINE PixelVectors<T> operator()(ptrdiff_t x) const {
    const Tag<T> d;
    const auto samples = LoadOnce(d, m_row + x);
    const auto others = LoadOnce(d, m_other + x);
    return {hn::TableLookupBytes(samples, m_takeSites), hn::TableLookupBytes(samples, m_takeGreens),
            hn::TableLookupBytes(others, m_takeGreens)};
  }

 private:
  const T* m_row;
  const T* m_other;
  const Vector<T> m_takeSites;
  const Vector<T> m_takeGreens;
};

/// The two rows of a pixel's 2 x 2 window by the place of their sites. A window that starts at an
/// even column has the site of `even` to the left, one that starts at an odd column to the right;
/// with `odd` it is the other way about. So which of the two is the upper row does not matter.
template <class T>
struct WindowRows {
  const T* even;
  const T* odd;

  explicit WindowRows(const RowWindow<T>& window)
      : even(window.siteParity == 0 ? window.row : window.below),
        odd(window.siteParity == 0 ? window.below : window.row) {}

  HWY_INLINE Vector<T> Green(ptrdiff_t x) const {
    const Tag<T> d;
    const auto evenColumns = LanesOfParity<T>(0);
    return Mean(hn::IfVecThenElse(evenColumns, LoadOnce(d, even + x + 1), LoadOnce(d, even + x)),
                hn::IfVecThenElse(evenColumns, LoadOnce(d, odd + x), LoadOnce(d, odd + x + 1)));
  }
};

template <class T>
class NearestNeighbor2Kernel {
 public:
  explicit NearestNeighbor2Kernel(const RowWindow<T>& window) : m_rows(window) {}

  HWY_INLINE PixelVectors<T> operator()(ptrdiff_t x) const {
    const Tag<T> d;
    const auto evenColumns = LanesOfParity<T>(0);
    const auto even = LoadOnce(d, m_rows.even + x), evenNext = LoadOnce(d, m_rows.even + x + 1);
    const auto odd = LoadOnce(d, m_rows.odd + x), oddNext = LoadOnce(d, m_rows.odd + x + 1);
    return {hn::IfVecThenElse(evenColumns, even, evenNext), m_rows.Green(x),
            hn::IfVecThenElse(evenColumns, oddNext, odd)};
  }

 private:
  const WindowRows<T> m_rows;
};

template <class T>
class BilinearKernel {
 public:
  explicit BilinearKernel(const RowWindow<T>& window)
      : m_above(window.above),
        m_row(window.row),
        m_below(window.below),
        m_sites(LanesOfParity<T>(window.siteParity)),
        m_toSecondSite(window.siteParity == 0 ? -2 : 2),
        m_spread(PairsFrom<T>(1 - window.siteParity)) {}

  HWY_INLINE PixelVectors<T> operator()(ptrdiff_t x) const {
    const auto samples = LoadOnce(Tag<T>(), m_row + x);
    const auto means = RowMeans(m_row + x);
    return {hn::IfVecThenElse(m_sites, samples, means), hn::IfVecThenElse(m_sites, means, samples),
            Mean(OfOtherRow(m_above + x), OfOtherRow(m_below + x))};
  }

 private:
  HWY_INLINE static Vector<T> RowMeans(const T* samples) {
    const Tag<T> d;
    return Mean(LoadOnce(d, samples - 1), LoadOnce(d, samples + 1));
  }
  /// The colour of the rows beside, whose sites are at the other columns. The mean at one column of
  /// a pair is computed at the other, between that site and the next one beyond the mean.
  HWY_INLINE Vector<T> OfOtherRow(const T* samples) const {
    const Tag<T> d;
    const auto sites = LoadOnce(d, samples);
    const auto means = Mean(sites, LoadOnce(d, samples + m_toSecondSite));
    return hn::IfVecThenElse(m_sites, hn::TableLookupBytes(means, m_spread), sites);
  }

  const T* m_above;
  const T* m_row;
  const T* m_below;
  const Vector<T> m_sites;
  const ptrdiff_t m_toSecondSite;
  const Vector<T> m_spread;
};

template <class T>
class Bilinear2Kernel {
 public:
  explicit Bilinear2Kernel(const RowWindow<T>& window)
      : m_rows(window),
        m_farEven(window.siteParity == 0 ? window.farBelow : window.above),
        m_farOdd(window.siteParity == 0 ? window.above : window.farBelow) {}

  HWY_INLINE PixelVectors<T> operator()(ptrdiff_t x) const {
    const Tag<T> d;
    const auto even = LoadOnce(d, m_rows.even + x), evenNext = LoadOnce(d, m_rows.even + x + 2);
    const auto odd = LoadOnce(d, m_rows.odd + x), oddNext = LoadOnce(d, m_rows.odd + x + 2);
    const auto oddLast = LoadOnce(d, m_rows.odd + x - 2);
    const auto farEven = LoadOnce(d, m_farEven + x), farEvenNext = LoadOnce(d, m_farEven + x + 2);
    const auto farOdd = LoadOnce(d, m_farOdd + x), farOddNext = LoadOnce(d, m_farOdd + x + 2);
    const auto farOddLast = LoadOnce(d, m_farOdd + x - 2);

    // A window's centre lies between two columns of a colour: 3 parts of the nearer one.
    const Wide here0 = Column(EvenSamples(d, even), EvenSamples(d, farEven));
    const Wide right0 = Column(EvenSamples(d, evenNext), EvenSamples(d, farEvenNext));
    const Wide left1 = Column(OddSamples(d, oddLast), OddSamples(d, farOddLast));
    const Wide here1 = Column(OddSamples(d, odd), OddSamples(d, farOdd));
    const Wide right1 = Column(OddSamples(d, oddNext), OddSamples(d, farOddNext));
    const Wide green = OddSamples(d, even);
    return {MergeSamples(d, Centre(here0, right0), Centre(right0, here0)),
            MergeSamples(d, WideMean(green, EvenSamples(d, odd)),
                         WideMean(green, EvenSamples(d, oddNext))),
            MergeSamples(d, Centre(here1, left1), Centre(here1, right1))};
  }

 private:
  using Wide = hn::Vec<PairTag<Tag<T>>>;

  HWY_INLINE static Wide TimesThree(Wide v) { return hn::Add(hn::Add(v, v), v); }
  HWY_INLINE static Wide WideMean(Wide a, Wide b) { return hn::ShiftRight<1>(hn::Add(a, b)); }
  /// 3 parts of the nearer row and 1 of the farther one.
  HWY_INLINE static Wide Column(Wide near, Wide far) { return hn::Add(TimesThree(near), far); }
  HWY_INLINE static Wide Centre(Wide near, Wide far) {
    return hn::ShiftRight<4>(hn::Add(TimesThree(near), far));
  }

  const WindowRows<T> m_rows;
  const T* m_farEven;
  const T* m_farOdd;
};

/// Which of a kernel's two colours comes first.
enum class First { Own, OfEvenRow };

template <template <class> class Kernel, class T>
void WriteRows(const MosaicLayout<T>& mosaic, First first) {
  RowWindows<T> windows(mosaic);
  for (ptrdiff_t y = 0; y < mosaic.Height(); ++y) {
    windows.MoveTo(y);
    const bool ownFirst = first == First::Own || mosaic.SiteParity(y) == 0;
    const bool inOrder = ownFirst == (mosaic.OwnComponent(y) == 0);
    for (const auto& part : windows.Parts()) {
      WriteColumns(mosaic, y, part.first, part.count, inOrder, Kernel<T>(windows.Window(part)));
    }
    if (first == First::OfEvenRow && mosaic.KeepsLastGreen(y)) {
      const ptrdiff_t last = mosaic.Width() - 1;
      mosaic.Pixel(last, y)[1] = mosaic.Source(y)[last];
    }
  }
}

template <class T>
void DemosaicWindowRows(const MosaicLayout<T>& mosaic, DemosaicMethod method) {
  switch (method) {
    case DemosaicMethod::None:
      return WriteRows<NoneKernel>(mosaic, First::Own);
    case DemosaicMethod::Mono:
      return WriteRows<MonoKernel>(mosaic, First::Own);
    case DemosaicMethod::NearestNeighbor:
      return WriteRows<NearestNeighborKernel>(mosaic, First::Own);
    case DemosaicMethod::NearestNeighbor2:
      return WriteRows<NearestNeighbor2Kernel>(mosaic, First::OfEvenRow);
    case DemosaicMethod::Bilinear:
      return WriteRows<BilinearKernel>(mosaic, First::Own);
    case DemosaicMethod::Bilinear2:
      return WriteRows<Bilinear2Kernel>(mosaic, First::OfEvenRow);
    default:
      return;
  }
}

#endif

void DemosaicWindow8(const MosaicLayout<uint8_t>& mosaic, DemosaicMethod method) {
  DemosaicWindowRows(mosaic, method);
}
void DemosaicWindow16(const MosaicLayout<uint16_t>& mosaic, DemosaicMethod method) {
  DemosaicWindowRows(mosaic, method);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(DemosaicWindow8);
HWY_EXPORT(DemosaicWindow16);

void DemosaicWindow(const MosaicLayout<uint8_t>& mosaic, DemosaicMethod method) {
  HWY_DYNAMIC_DISPATCH(DemosaicWindow8)(mosaic, method);
}
void DemosaicWindow(const MosaicLayout<uint16_t>& mosaic, DemosaicMethod method) {
  HWY_DYNAMIC_DISPATCH(DemosaicWindow16)(mosaic, method);
}

}  // namespace QvApi::Kernels
#endif
