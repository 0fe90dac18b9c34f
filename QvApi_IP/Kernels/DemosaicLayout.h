// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/Demosaic.h"

namespace QvApi::Kernels {

/// Index beside the range 0 .. n - 1 continued with a period of 2, which keeps the colour of the
/// mosaic: -1 is 1, n is n - 2, n + 1 is n - 1. n is at least 2.
inline ptrdiff_t Continued(ptrdiff_t i, ptrdiff_t n) {
  if (i < 0) return i & 1;
  return i < n ? i : n - 2 + ((i - n) & 1);
}

/// A frame seen as rows in source order, with the colours of each row resolved.
///
/// A row holds green and one other colour, its own; the third is that of the rows beside it. The
/// pixels with a sample of the own colour are the row's sites: every other one, at the columns of
/// SiteParity. So one routine serves all phases and both component orders.
template <class T>
class MosaicLayout {
 public:
  MosaicLayout(const MosaicFrame<T>& frame, bool reverse)
      : m_frame(frame),
        m_reverse(reverse),
        m_width(static_cast<ptrdiff_t>(frame.width)),
        m_height(static_cast<ptrdiff_t>(frame.height)),
        m_greenFirst(frame.phase == 3 || frame.phase == 4) {
    const bool redFirst = frame.phase == 2 || frame.phase == 3;
    m_firstComponent = redFirst == frame.isBGR ? 2 : 0;
  }

  ptrdiff_t Width() const { return m_width; }
  ptrdiff_t Height() const { return m_height; }
  size_t Stride() const { return m_frame.stride; }
  int32_t Maximum() const { return static_cast<int32_t>(m_frame.maximum); }
  bool IsReversed() const { return m_reverse; }
  /// True where the top-left pixel is green.
  bool IsGreenFirst() const { return m_greenFirst; }

  /// Source row y, continued above and below the image.
  const T* Source(ptrdiff_t y) const {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(m_frame.source) +
                                      Continued(y, m_height) * m_frame.sourcePitch);
  }
  /// Source sample, continued on all sides.
  int32_t Sample(ptrdiff_t x, ptrdiff_t y) const { return Source(y)[Continued(x, m_width)]; }

  /// Destination row of source row y.
  T* Destination(ptrdiff_t y) const { return MemoryRow(m_reverse ? m_height - 1 - y : y); }
  T* MemoryRow(ptrdiff_t row) const {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(m_frame.destination) +
                                row * m_frame.destinationPitch);
  }
  T* Pixel(ptrdiff_t x, ptrdiff_t y) const {
    return Destination(y) + x * static_cast<ptrdiff_t>(m_frame.stride);
  }

  /// Parity of the columns of row y that hold the row's own colour.
  ptrdiff_t SiteParity(ptrdiff_t y) const { return (y & 1) ^ (m_greenFirst ? 1 : 0); }
  bool IsSite(ptrdiff_t x, ptrdiff_t y) const { return (x & 1) == SiteParity(y); }
  /// Component of row y's own colour, 0 or 2, and of the colour it lacks.
  size_t OwnComponent(ptrdiff_t y) const { return y & 1 ? 2 - m_firstComponent : m_firstComponent; }
  size_t LackedComponent(ptrdiff_t y) const { return 2 - OwnComponent(y); }

  /// The window methods leave a green pixel of the last column as it is where the width is even.
  bool KeepsLastGreen(ptrdiff_t y) const { return m_width % 2 == 0 && !IsSite(m_width - 1, y); }

 private:
  const MosaicFrame<T> m_frame;
  const bool m_reverse;
  const ptrdiff_t m_width;
  const ptrdiff_t m_height;
  const bool m_greenFirst;
  size_t m_firstComponent;
};

}  // namespace QvApi::Kernels
