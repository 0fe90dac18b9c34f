// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "QvApi_IP/Kernels/DemosaicFamilies.h"
#include "QvApi_IP/Kernels/DemosaicScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/DemosaicBilinear3.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After foreach_target.h, which includes this file again for each instruction set.
#include "QvApi_IP/Kernels/DemosaicPlanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

template <class T>
void DemosaicBilinear3Rows(const MosaicLayout<T>& mosaic) {
  Scalar::Bilinear3(mosaic);
}

#else

/// Steps around a site: of its colour to the two sides, and of green across it.
template <class V>
struct Gradient {
  V one;
  V other;
  V green;
};

template <class V>
HWY_INLINE V Square(V v) {
  return hn::Mul(v, v);
}

/// Sign of vertical minus horizontal, each a sum of three squares, for steps of 8-bit samples.
///
/// The squares fit 16 bits without a sign, the difference of the sums needs 19. Its low 16 bits
/// come exact from wrapping sums. An eighth of it, which the upper bits give to within 3, fits 16
/// bits and tells the sign wherever it is not small; where it is small, the low bits are all there
/// is.
template <class V>
requires(sizeof(hn::TFromD<hn::DFromV<V>>) == 2) HWY_INLINE V
    CompareGradients(const Gradient<V>& vertical, const Gradient<V>& horizontal) {
  const hn::DFromV<V> d;
  const hn::RebindToUnsigned<decltype(d)> u;
  const auto square = [&](V v) HWY_ATTR { return hn::BitCast(u, Square(v)); };
  const auto v1 = square(vertical.one), v2 = square(vertical.other), v3 = square(vertical.green);
  const auto h1 = square(horizontal.one), h2 = square(horizontal.other),
             h3 = square(horizontal.green);
  const auto exact = hn::Sub(hn::Add(hn::Add(v1, v2), v3), hn::Add(hn::Add(h1, h2), h3));
  const auto eighth =
      hn::Sub(hn::Add(hn::ShiftRight<2>(hn::AverageRound(v1, v2)), hn::ShiftRight<3>(v3)),
              hn::Add(hn::ShiftRight<2>(hn::AverageRound(h1, h2)), hn::ShiftRight<3>(h3)));
  const V rough = hn::BitCast(d, eighth);
  const auto isSmall = hn::Lt(hn::Abs(rough), hn::Set(d, int16_t{4000}));
  return hn::IfThenElse(isSmall, hn::BitCast(d, exact), rough);
}

/// The same for 16-bit samples: squares and sums are unsigned 32-bit and wrap.
template <class V>
requires(sizeof(hn::TFromD<hn::DFromV<V>>) == 4) HWY_INLINE V
    CompareGradients(const Gradient<V>& vertical, const Gradient<V>& horizontal) {
  const hn::DFromV<V> d;
  const hn::RebindToUnsigned<decltype(d)> u;
  const auto sum = [&](const Gradient<V>& g) HWY_ATTR {
    return hn::BitCast(u, hn::Add(hn::Add(Square(g.one), Square(g.other)), Square(g.green)));
  };
  const auto v = sum(vertical), h = sum(horizontal);
  const V greater = hn::BitCast(d, hn::VecFromMask(u, hn::Gt(v, h)));
  const V less = hn::BitCast(d, hn::VecFromMask(u, hn::Lt(v, h)));
  return hn::Sub(less, greater);
}

/// One walk down the image. Green at the sites of a row needs two rows more, the lacked colour at
/// sites needs green one row on, and the colours at greens need those one row on.
///
/// Planes hold what is added up: own colour minus green at sites, lacked colour minus green at
/// sites.
template <class T>
class Bilinear3Walk {
 public:
  explicit Bilinear3Walk(const MosaicLayout<T>& mosaic)
      : m_mosaic(mosaic),
        m_even(mosaic, kSlots),
        m_odd(mosaic, kSlots),
        m_green(mosaic, kSlots),
        m_own(mosaic, kSlots),
        m_lacked(mosaic, kSlots),
        m_top(mosaic.IsReversed() ? mosaic.Height() - 1 : 0) {}

  void Run() {
    const ptrdiff_t height = m_mosaic.Height();
    for (ptrdiff_t y = -4; y < height; ++y) {
      if (y + 4 < height) ReadRow(y + 4);
      if (y + 2 >= 0 && y + 2 < height) FindGreen(y + 2);
      if (y + 1 >= 0 && y + 1 < height) FindLacked(y + 1);
      if (y >= 0) WriteRow(y);
    }
  }

 private:
  using P = Plane<T>;
  using V = PlaneVector<T>;
  using D = PlaneTag<T>;
  /// At least the rows from the one above that being written to the one being read.
  static constexpr ptrdiff_t kSlots = 8;

  P* Sites(ptrdiff_t y) { return (m_mosaic.SiteParity(y) == 0 ? m_even : m_odd).Row(y); }
  P* Greens(ptrdiff_t y) { return (m_mosaic.SiteParity(y) == 0 ? m_odd : m_even).Row(y); }
  ptrdiff_t SiteCount(ptrdiff_t y) const {
    return ColumnsOf(m_mosaic.Width(), m_mosaic.SiteParity(y));
  }
  ptrdiff_t Row(ptrdiff_t y) const { return Continued(y, m_mosaic.Height()); }
  HWY_INLINE V Clamp(V v) const {
    const D d;
    return hn::Min(hn::Max(v, hn::Zero(d)), hn::Set(d, static_cast<P>(m_mosaic.Maximum())));
  }

  void ReadRow(ptrdiff_t y) {
    const ptrdiff_t width = m_mosaic.Width();
    SplitRow(m_mosaic.Source(y), width, m_even.Row(y), m_odd.Row(y));
    if (Scalar::TakesGreenFromLeft(m_mosaic, width - 1, y)) {
      Greens(y)[width / 2] = static_cast<P>(m_mosaic.Sample(width - 2, y));
    }
  }

  void FindGreen(ptrdiff_t y) {
    const ptrdiff_t site = m_mosaic.SiteParity(y);
    const ptrdiff_t count = SiteCount(y);
    if (y < 2 || y >= m_mosaic.Height() - 2) {
      for (ptrdiff_t i = 0; i < count; ++i) SetGreen(y, 2 * i + site);
    } else {
      FindGreenInside(y);
      SetGreen(y, site);
      SetGreen(y, 2 * (count - 1) + site);
    }
    ContinuePlane(m_own.Row(y), count);
  }

  void SetGreen(ptrdiff_t y, ptrdiff_t x) {
    const auto green = static_cast<P>(Scalar::EdgeGreen<T>(m_mosaic, x, y).Value());
    m_green.Row(y)[x / 2] = green;
    m_own.Row(y)[x / 2] = static_cast<P>(Sites(y)[x / 2] - green);
  }

  void FindGreenInside(ptrdiff_t y) {
    const D d;
    const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(d));
    const ptrdiff_t count = SiteCount(y);
    const P* sites = Sites(y);
    const P* sitesUp = Sites(y - 2);
    const P* sitesDown = Sites(y + 2);
    const P* greensLeft = Greens(y) + m_mosaic.SiteParity(y) - 1;
    const P* greensUp = Greens(y - 1);
    const P* greensDown = Greens(y + 1);
    P* greenOut = m_green.Row(y);
    P* ownOut = m_own.Row(y);
    for (ptrdiff_t i = 0; i < count; i += lanes) {
      const V c = LoadOnce(d, sites + i);
      const V l = LoadOnce(d, sites + i - 1), r = LoadOnce(d, sites + i + 1);
      const V u = LoadOnce(d, sitesUp + i), b = LoadOnce(d, sitesDown + i);
      const V gl = LoadOnce(d, greensLeft + i), gr = LoadOnce(d, greensLeft + i + 1);
      const V gu = LoadOnce(d, greensUp + i), gd = LoadOnce(d, greensDown + i);
      const V sign = CompareGradients<V>({hn::Sub(b, c), hn::Sub(u, c), hn::Sub(gu, gd)},
                                         {hn::Sub(r, c), hn::Sub(l, c), hn::Sub(gl, gr)});
      const V greenH = hn::Add(gl, gr), greenV = hn::Add(gu, gd);
      const V siteH = hn::Add(l, r), siteV = hn::Add(u, b);
      const V alongRow = hn::Add(hn::Sub(greenH, hn::ShiftRight<1>(siteH)), c);
      const V alongColumn = hn::Add(hn::Sub(greenV, hn::ShiftRight<1>(siteV)), c);
      const V both =
          hn::Add(hn::Sub(hn::Add(greenH, greenV), hn::ShiftRight<1>(hn::Add(siteH, siteV))),
                  hn::Add(c, c));
      const V zero = hn::Zero(d);
      const V one = hn::ShiftRight<1>(hn::IfThenElse(hn::Gt(sign, zero), alongRow, alongColumn));
      const V green = Clamp(hn::IfThenElse(hn::Eq(sign, zero), hn::ShiftRight<2>(both), one));
      hn::Store(green, d, greenOut + i);
      hn::Store(hn::Sub(c, green), d, ownOut + i);
    }
  }

  /// The rows beside have their own colour at the diagonals of a site.
  void FindLacked(ptrdiff_t y) {
    const D d;
    const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(d));
    const ptrdiff_t count = SiteCount(y);
    const ptrdiff_t toLeft = m_mosaic.SiteParity(y) - 1;
    const P* up = m_own.Row(Row(y - 1)) + toLeft;
    const P* down = m_own.Row(Row(y + 1)) + toLeft;
    const P* greens = m_green.Row(y);
    P* out = m_lacked.Row(y);
    for (ptrdiff_t i = 0; i < count; i += lanes) {
      const V green = LoadOnce(d, greens + i);
      const V left = hn::Add(LoadOnce(d, up + i), LoadOnce(d, down + i));
      const V right = hn::Add(LoadOnce(d, up + i + 1), LoadOnce(d, down + i + 1));
      const V lacked = Clamp(ByDifference(green, hn::Add(left, right)));
      hn::Store(hn::Sub(lacked, green), d, out + i);
    }
    // The first pixel in memory takes its neighbour's sample as it stands.
    if (y == m_top && m_mosaic.SiteParity(y) == 0) {
      out[0] = static_cast<P>(m_mosaic.Sample(1, y == 0 ? 1 : y - 1) - greens[0]);
    }
    ContinuePlane(out, count);
  }

  HWY_INLINE static V ByDifference(V green, V fourDifferences) {
    return hn::ShiftRight<2>(hn::Add(hn::ShiftLeft<2>(green), fourDifferences));
  }

  HWY_FLATTEN void WriteRow(ptrdiff_t y) {
    const D d;
    const ptrdiff_t toLeft = -m_mosaic.SiteParity(y);
    const P* own = m_own.Row(y);
    const P* ownUp = m_own.Row(Row(y - 1));
    const P* ownDown = m_own.Row(Row(y + 1));
    const P* lacked = m_lacked.Row(y);
    const P* lackedUp = m_lacked.Row(Row(y - 1));
    const P* lackedDown = m_lacked.Row(Row(y + 1));
    const P* sites = Sites(y);
    const P* greens = Greens(y);
    const P* greensMade = m_green.Row(y);
    WriteHalves(
        m_mosaic, y,
        [&](ptrdiff_t i) HWY_ATTR {
          const V green = LoadOnce(d, greensMade + i);
          return HalfPixels<T>{LoadOnce(d, sites + i), green,
                               hn::Add(LoadOnce(d, lacked + i), green)};
        },
        [&](ptrdiff_t i) HWY_ATTR {
          const V green = LoadOnce(d, greens + i);
          const P* ownLeft = own + toLeft + i;
          const P* lackedLeft = lacked + toLeft + i;
          const V ownBeside = hn::Add(LoadOnce(d, ownLeft), LoadOnce(d, ownLeft + 1));
          const V lackedBeside = hn::Add(LoadOnce(d, lackedLeft), LoadOnce(d, lackedLeft + 1));
          const V ownOfRows = hn::Add(LoadOnce(d, lackedUp + i), LoadOnce(d, lackedDown + i));
          const V lackedOfRows = hn::Add(LoadOnce(d, ownUp + i), LoadOnce(d, ownDown + i));
          return HalfPixels<T>{Clamp(ByDifference(green, hn::Add(ownBeside, ownOfRows))), green,
                               Clamp(ByDifference(green, hn::Add(lackedBeside, lackedOfRows)))};
        });
    MendBorder(y);
  }

  /// Greens on the border, but for the corners, have three neighbours, each of which counts once.
  void MendBorder(ptrdiff_t y) {
    const ptrdiff_t width = m_mosaic.Width();
    const ptrdiff_t first = 1 - m_mosaic.SiteParity(y);
    if (y == 0 || y == m_mosaic.Height() - 1) {
      for (ptrdiff_t x = first; x < width; x += 2) {
        if (x > 0 && x < width - 1) MendPixel(x, y);
      }
      return;
    }
    if (first == 0) MendPixel(0, y);
    if ((width - 1 - first) % 2 == 0) MendPixel(width - 1, y);
  }

  void MendPixel(ptrdiff_t x, ptrdiff_t y) {
    const ptrdiff_t i = x / 2;
    const ptrdiff_t beside = i - m_mosaic.SiteParity(y);
    int32_t own = 0, lacked = 0;
    for (const ptrdiff_t side : {0, 1}) {
      const ptrdiff_t column = x - 1 + 2 * side, row = y - 1 + 2 * side;
      if (column >= 0 && column < m_mosaic.Width()) {
        own += m_own.Row(y)[beside + side];
        lacked += m_lacked.Row(y)[beside + side];
      }
      if (row >= 0 && row < m_mosaic.Height()) {
        own += m_lacked.Row(row)[i];
        lacked += m_own.Row(row)[i];
      }
    }
    const int32_t green = 3 * Greens(y)[i];
    T* pixel = m_mosaic.Pixel(x, y);
    const auto third = [this](int32_t sum) {
      return static_cast<T>(std::clamp(sum / 3, 0, m_mosaic.Maximum()));
    };
    pixel[m_mosaic.OwnComponent(y)] = third(green + own);
    pixel[m_mosaic.LackedComponent(y)] = third(green + lacked);
  }

  const MosaicLayout<T>& m_mosaic;
  PlaneRing<T> m_even;
  PlaneRing<T> m_odd;
  /// Green at sites.
  PlaneRing<T> m_green;
  /// The row's own colour less green, at sites.
  PlaneRing<T> m_own;
  /// The colour that the row lacks less green, at sites.
  PlaneRing<T> m_lacked;
  /// Source row of the first row in memory.
  const ptrdiff_t m_top;
};

template <class T>
void DemosaicBilinear3Rows(const MosaicLayout<T>& mosaic) {
  Bilinear3Walk<T>(mosaic).Run();
}

#endif

void DemosaicBilinear3Of8(const MosaicLayout<uint8_t>& mosaic) { DemosaicBilinear3Rows(mosaic); }
void DemosaicBilinear3Of16(const MosaicLayout<uint16_t>& mosaic) { DemosaicBilinear3Rows(mosaic); }

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(DemosaicBilinear3Of8);
HWY_EXPORT(DemosaicBilinear3Of16);

void DemosaicBilinear3(const MosaicLayout<uint8_t>& mosaic) {
  HWY_DYNAMIC_DISPATCH(DemosaicBilinear3Of8)(mosaic);
}
void DemosaicBilinear3(const MosaicLayout<uint16_t>& mosaic) {
  HWY_DYNAMIC_DISPATCH(DemosaicBilinear3Of16)(mosaic);
}

}  // namespace QvApi::Kernels
#endif
