// SPDX-License-Identifier: MIT
// The form of the demosaicing methods that defines their results, pixel by pixel.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/Demosaic.h"
#include "QvApi_IP/Kernels/DemosaicLayout.h"

namespace QvApi::Kernels::Scalar {

/// The three values of a pixel: the row's own colour, green, the colour the row lacks.
struct MosaicPixel {
  int32_t own;
  int32_t green;
  int32_t lacked;
};

template <class T>
MosaicPixel NonePixel(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  const int32_t sample = mosaic.Sample(x, y);
  return mosaic.IsSite(x, y) ? MosaicPixel{sample, 0, 0} : MosaicPixel{0, sample, 0};
}

template <class T>
MosaicPixel MonoPixel(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  const int32_t sample = mosaic.Sample(x, y);
  return {sample, sample, sample};
}

template <class T>
MosaicPixel NearestNeighborPixel(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  const ptrdiff_t left = x & ~ptrdiff_t{1};
  const ptrdiff_t site = mosaic.SiteParity(y);
  return {mosaic.Sample(left + site, y), mosaic.Sample(left + 1 - site, y),
          mosaic.Sample(left + 1 - site, y ^ 1)};
}

/// Mean of the two greens in the window that starts at (x, y).
template <class T>
int32_t WindowGreen(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  if (x == mosaic.Width() - 1 && mosaic.KeepsLastGreen(y)) return mosaic.Sample(x, y);
  const ptrdiff_t site = mosaic.IsSite(x, y) ? 0 : 1;
  return (mosaic.Sample(x + 1 - site, y) + mosaic.Sample(x + site, y + 1)) >> 1;
}

template <class T>
MosaicPixel NearestNeighbor2Pixel(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  const ptrdiff_t site = mosaic.IsSite(x, y) ? 0 : 1;
  return {mosaic.Sample(x + site, y), WindowGreen(mosaic, x, y),
          mosaic.Sample(x + 1 - site, y + 1)};
}

/// Mean of the neighbours in the row where (x, y) lacks the colour, one of the row's two.
template <class T>
int32_t RowMean(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y, bool green) {
  if (mosaic.IsSite(x, y) != green) return mosaic.Sample(x, y);
  return (mosaic.Sample(x - 1, y) + mosaic.Sample(x + 1, y)) >> 1;
}

template <class T>
MosaicPixel BilinearPixel(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  const ptrdiff_t above = Continued(y - 1, mosaic.Height());
  const ptrdiff_t below = Continued(y + 1, mosaic.Height());
  return {RowMean(mosaic, x, y, false), RowMean(mosaic, x, y, true),
          (RowMean(mosaic, x, above, false) + RowMean(mosaic, x, below, false)) >> 1};
}

/// The centre of a window from the four nearest samples of a colour: (x, y) is the nearest one,
/// (farX, farY) the one across the centre.
template <class T>
int32_t WindowCentre(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y, ptrdiff_t farX,
                     ptrdiff_t farY) {
  return (9 * mosaic.Sample(x, y) + 3 * mosaic.Sample(farX, y) + 3 * mosaic.Sample(x, farY) +
          mosaic.Sample(farX, farY)) >>
         4;
}

template <class T>
MosaicPixel Bilinear2Pixel(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  const ptrdiff_t left = x - 1, right = x + 2, above = y - 1, below = y + 2;
  const int32_t green = WindowGreen(mosaic, x, y);
  if (mosaic.IsSite(x, y)) {
    return {WindowCentre(mosaic, x, y, right, below), green,
            WindowCentre(mosaic, x + 1, y + 1, left, above)};
  }
  return {WindowCentre(mosaic, x + 1, y, left, below), green,
          WindowCentre(mosaic, x, y + 1, right, above)};
}

/// Four-tap cubic kernel, each shift truncating by itself: near samples a, b and far ones c, d.
inline int32_t Cubic(int32_t a, int32_t b, int32_t c, int32_t d, int32_t maximum) {
  const int32_t near = a + b;
  const int32_t far = c + d;
  return std::clamp((near >> 3) + (near >> 1) - (far >> 3), 0, maximum);
}

/// Kernel along the row where (x, y) lacks the colour, one of the row's two.
template <class T>
int32_t RowCubic(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y, bool green) {
  const bool inside = x >= 3 && x <= mosaic.Width() - 4;
  if (!inside || mosaic.IsSite(x, y) != green) return RowMean(mosaic, x, y, green);
  return Cubic(mosaic.Sample(x - 1, y), mosaic.Sample(x + 1, y), mosaic.Sample(x - 3, y),
               mosaic.Sample(x + 3, y), mosaic.Maximum());
}

/// True for the memory rows that take the cubic kernel along the column; the others take means.
inline bool IsCubicRow(ptrdiff_t row, ptrdiff_t height) {
  return row >= 3 && row <= (height & ~ptrdiff_t{1}) - 4;
}

/// Fills one component of a memory row from the rows above and below.
template <class T>
void CubicColumns(const MosaicLayout<T>& mosaic, ptrdiff_t row, size_t component) {
  const auto sampleRow = [&](ptrdiff_t r) {
    return mosaic.MemoryRow(Continued(r, mosaic.Height())) + component;
  };
  const bool cubic = IsCubicRow(row, mosaic.Height());
  const T* above = sampleRow(row - 1);
  const T* below = sampleRow(row + 1);
  const T* farAbove = sampleRow(row - 3);
  const T* farBelow = sampleRow(row + 3);
  T* out = sampleRow(row);
  const size_t end = static_cast<size_t>(mosaic.Width()) * mosaic.Stride();
  for (size_t i = 0; i < end; i += mosaic.Stride()) {
    out[i] =
        static_cast<T>(cubic ? Cubic(above[i], below[i], farAbove[i], farBelow[i], mosaic.Maximum())
                             : (above[i] + below[i]) >> 1);
  }
}

/// Heights 6 and 7 take a shorter way through the columns, which leaves some samples as they were
/// and reaches two rows by the length of a line instead of its pitch. `first` is the component that
/// even memory rows are taken to hold, `second` that of the odd ones.
template <class T>
void CubicColumnsOfSixOrSevenRows(const MosaicLayout<T>& mosaic, size_t first, size_t second) {
  CubicColumns(mosaic, 0, second);
  CubicColumns(mosaic, 1, first);
  CubicColumns(mosaic, 2, second);
  const size_t line = static_cast<size_t>(mosaic.Width()) * mosaic.Stride();
  T* const row1 = mosaic.MemoryRow(1);
  T* const row3 = mosaic.MemoryRow(3);
  T* const row4 = mosaic.MemoryRow(4);
  T* const row5 = mosaic.MemoryRow(5);
  for (size_t i = 0; i < line; i += mosaic.Stride()) {
    row3[first + i] = static_cast<T>((row1[line + first + i] + row3[line + first + i]) >> 1);
    row3[second + i] = static_cast<T>((row3[second + i] + row4[second + i]) >> 1);
  }
  for (size_t i = 0; i < line; i += mosaic.Stride()) {
    if (mosaic.Height() == 6) {
      row4[first + i] = row3[first + i];
    } else {
      row4[first + i] = static_cast<T>((row3[first + i] + row5[first + i]) >> 1);
      row5[second + i] = row4[second + i];
    }
  }
}

/// Two passes over the destination: rows in source order, then columns in memory order. The second
/// pass takes row 0 in memory to hold what it would hold at an even height; reversed at an odd
/// height it replaces own samples by what other rows held before the call.
template <class T>
void Bicubic(const MosaicLayout<T>& mosaic) {
  for (ptrdiff_t y = 0; y < mosaic.Height(); ++y) {
    for (ptrdiff_t x = 0; x < mosaic.Width(); ++x) {
      mosaic.Pixel(x, y)[1] = static_cast<T>(RowCubic(mosaic, x, y, true));
      mosaic.Pixel(x, y)[mosaic.OwnComponent(y)] = static_cast<T>(RowCubic(mosaic, x, y, false));
    }
  }
  const size_t first = mosaic.OwnComponent(mosaic.IsReversed() ? 1 : 0);
  const size_t second = 2 - first;
  if (mosaic.Height() == 6 || mosaic.Height() == 7) {
    CubicColumnsOfSixOrSevenRows(mosaic, first, second);
    return;
  }
  for (ptrdiff_t row = 0; row < mosaic.Height(); ++row) {
    CubicColumns(mosaic, row, row & 1 ? first : second);
  }
}

/// Green at a site by the direction of the edge, with all the cases of the image's border.
///
/// Squares and their sums are unsigned and wrap.
template <class T>
class EdgeGreen {
 public:
  EdgeGreen(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y)
      : m_mosaic(mosaic), m_x(x), m_y(y), m_centre(mosaic.Source(y)[x]) {
    const auto column = [&](ptrdiff_t i) { return Continued(x + i, mosaic.Width()); };
    const T* row = mosaic.Source(y);
    m_left = {row[column(-1)], row[column(-2)]};
    m_right = {row[column(1)], row[column(2)]};
    m_up = {mosaic.Source(y - 1)[x], mosaic.Source(y - 2)[x]};
    m_down = {mosaic.Source(y + 1)[x], mosaic.Source(y + 2)[x]};
  }

  int32_t Value() const {
    const bool hasLeft = m_x >= 2, hasRight = m_x < m_mosaic.Width() - 2;
    const bool hasUp = m_y >= 2, hasDown = m_y < m_mosaic.Height() - 2;
    if (hasLeft && hasRight && hasUp && hasDown) return Inside();
    // Two cases that the rules of the border do not cover.
    if (m_mosaic.IsGreenFirst() && m_x == m_mosaic.Width() - 1 && !hasDown) return m_up.green;
    if (!m_mosaic.IsGreenFirst() && m_x == 1 && m_y == 1) return SecondOnDiagonal();

    const Neighbour& column = hasLeft ? m_left : m_right;
    const Neighbour& row = hasUp ? m_up : m_down;
    if (hasLeft && hasRight) return Choose(m_right, m_left, row, m_left, m_right);
    if (!hasUp || !hasDown) return Mean(column, row);
    if (hasLeft) return Choose(m_down, m_left, m_up, m_left, m_down);
    if (m_y % 2 == 0) return Choose(m_down, m_up, m_right, m_up, m_down);
    return Choose(m_down, m_right, m_up, m_right, m_down);
  }

 private:
  /// The green beside the site and the next sample of its colour behind it.
  struct Neighbour {
    int32_t green = 0;
    int32_t own = 0;
  };

  static uint32_t Square(int32_t difference) {
    return static_cast<uint32_t>(difference) * static_cast<uint32_t>(difference);
  }
  uint32_t Step(const Neighbour& to) const { return Square(to.own - m_centre); }
  int32_t Clamp(int32_t value) const { return std::clamp(value, 0, m_mosaic.Maximum()); }

  int32_t Single(const Neighbour& n) const {
    return Clamp(n.green + (m_centre >> 1) - (n.own >> 1));
  }
  int32_t Mean(const Neighbour& a, const Neighbour& b) const {
    return Clamp((a.green + b.green + m_centre - ((a.own + b.own) >> 1)) >> 1);
  }
  /// One direction alone where the two others change more than it does.
  int32_t Choose(const Neighbour& one, const Neighbour& two, const Neighbour& alone,
                 const Neighbour& a, const Neighbour& b) const {
    return Step(one) + Step(two) > 2 * Step(alone) ? Single(alone) : Mean(a, b);
  }

  int32_t Inside() const {
    const uint32_t vertical = Step(m_down) + Step(m_up) + Square(m_up.green - m_down.green);
    const uint32_t horizontal = Step(m_right) + Step(m_left) + Square(m_left.green - m_right.green);
    if (vertical > horizontal) return Mean(m_left, m_right);
    if (vertical < horizontal) return Mean(m_up, m_down);
    return Clamp((m_up.green + m_down.green + m_left.green + m_right.green + 2 * m_centre -
                  ((m_left.own + m_right.own + m_up.own + m_down.own) >> 1)) >>
                 2);
  }

  /// Pixel (1, 1), which has a green to its left and no sample behind it.
  int32_t SecondOnDiagonal() const {
    if (Step(m_right) > 2 * Step(m_down)) return Single(m_down);
    return Clamp((m_left.green + m_right.green + m_centre - ((m_right.own + m_centre) >> 1)) >> 1);
  }

  const MosaicLayout<T>& m_mosaic;
  const ptrdiff_t m_x;
  const ptrdiff_t m_y;
  const int32_t m_centre;
  Neighbour m_left, m_right, m_up, m_down;
};

/// The one green pixel whose green is not its own: green-first mosaics of odd width and even height
/// take that of the last pixel of the last row but one from its left neighbour.
template <class T>
bool TakesGreenFromLeft(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y) {
  return mosaic.IsGreenFirst() && mosaic.Width() % 2 == 1 && mosaic.Height() % 2 == 0 &&
         x == mosaic.Width() - 1 && y == mosaic.Height() - 2;
}

/// A colour at (x, y) from four neighbours (a, b) and (-a, -b), (c, d) and (-c, -d), by what it
/// differs from green there. Neighbours beside the image count as their mirror images.
template <class T>
int32_t ByDifference(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y, size_t component,
                     const ptrdiff_t (&offsets)[4][2]) {
  int32_t difference = 0;
  for (const auto& [i, j] : offsets) {
    const T* pixel =
        mosaic.Pixel(Continued(x + i, mosaic.Width()), Continued(y + j, mosaic.Height()));
    difference += pixel[component] - pixel[1];
  }
  return std::clamp((difference + 4 * mosaic.Pixel(x, y)[1]) >> 2, 0, mosaic.Maximum());
}

/// The same at a pixel of one border line: three neighbours, each counted once.
template <class T>
int32_t ByThreeDifferences(const MosaicLayout<T>& mosaic, ptrdiff_t x, ptrdiff_t y,
                           size_t component, const ptrdiff_t (&offsets)[4][2]) {
  int32_t sum = 3 * mosaic.Pixel(x, y)[1];
  for (const auto& [i, j] : offsets) {
    if (x + i < 0 || x + i >= mosaic.Width() || y + j < 0 || y + j >= mosaic.Height()) continue;
    const T* pixel = mosaic.Pixel(x + i, y + j);
    sum += pixel[component] - pixel[1];
  }
  return std::clamp(sum / 3, 0, mosaic.Maximum());
}

template <class T>
void Bilinear3(const MosaicLayout<T>& mosaic) {
  static constexpr ptrdiff_t kDiagonals[4][2] = {{-1, -1}, {1, 1}, {-1, 1}, {1, -1}};
  static constexpr ptrdiff_t kCross[4][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
  const ptrdiff_t width = mosaic.Width(), height = mosaic.Height();

  for (ptrdiff_t y = 0; y < height; ++y) {
    for (ptrdiff_t x = 0; x < width; ++x) {
      const bool site = mosaic.IsSite(x, y);
      const ptrdiff_t from = TakesGreenFromLeft(mosaic, x, y) ? x - 1 : x;
      if (site) mosaic.Pixel(x, y)[mosaic.OwnComponent(y)] = static_cast<T>(mosaic.Sample(x, y));
      mosaic.Pixel(x, y)[1] =
          static_cast<T>(site ? EdgeGreen<T>(mosaic, x, y).Value() : mosaic.Sample(from, y));
    }
  }
  const ptrdiff_t top = mosaic.IsReversed() ? height - 1 : 0;
  for (ptrdiff_t y = 0; y < height; ++y) {
    const size_t lacked = mosaic.LackedComponent(y);
    for (ptrdiff_t x = mosaic.SiteParity(y); x < width; x += 2) {
      const bool bare = x == 0 && y == top;
      mosaic.Pixel(x, y)[lacked] =
          static_cast<T>(bare ? mosaic.Sample(1, y == 0 ? 1 : y - 1)
                              : ByDifference(mosaic, x, y, lacked, kDiagonals));
    }
  }
  for (ptrdiff_t y = 0; y < height; ++y) {
    for (ptrdiff_t x = 1 - mosaic.SiteParity(y); x < width; x += 2) {
      const bool borderColumn = x == 0 || x == width - 1;
      const bool borderRow = y == 0 || y == height - 1;
      for (const size_t component : {0, 2}) {
        mosaic.Pixel(x, y)[component] = static_cast<T>(
            borderColumn != borderRow ? ByThreeDifferences(mosaic, x, y, component, kCross)
                                      : ByDifference(mosaic, x, y, component, kCross));
      }
    }
  }
}

template <class T>
using PixelRule = MosaicPixel (*)(const MosaicLayout<T>&, ptrdiff_t, ptrdiff_t);

template <class T>
void EachPixel(const MosaicLayout<T>& mosaic, PixelRule<T> rule) {
  for (ptrdiff_t y = 0; y < mosaic.Height(); ++y) {
    for (ptrdiff_t x = 0; x < mosaic.Width(); ++x) {
      const MosaicPixel values = rule(mosaic, x, y);
      T* pixel = mosaic.Pixel(x, y);
      pixel[mosaic.OwnComponent(y)] = static_cast<T>(values.own);
      pixel[1] = static_cast<T>(values.green);
      pixel[mosaic.LackedComponent(y)] = static_cast<T>(values.lacked);
    }
  }
}

/// Any method, for a frame that is large enough for it.
template <class T>
void Demosaic(const MosaicLayout<T>& mosaic, DemosaicMethod method) {
  switch (method) {
    case DemosaicMethod::None:
      return EachPixel(mosaic, &NonePixel<T>);
    case DemosaicMethod::NearestNeighbor:
      return EachPixel(mosaic, &NearestNeighborPixel<T>);
    case DemosaicMethod::NearestNeighbor2:
      return EachPixel(mosaic, &NearestNeighbor2Pixel<T>);
    case DemosaicMethod::Bilinear:
      return EachPixel(mosaic, &BilinearPixel<T>);
    case DemosaicMethod::Bilinear2:
      return EachPixel(mosaic, &Bilinear2Pixel<T>);
    case DemosaicMethod::Bicubic:
      return Bicubic(mosaic);
    case DemosaicMethod::Mono:
      return EachPixel(mosaic, &MonoPixel<T>);
    case DemosaicMethod::Bilinear3:
      return Bilinear3(mosaic);
  }
}

}  // namespace QvApi::Kernels::Scalar
