// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// How the two colours that a mosaic pixel lacks are found. The values are those of the setting.
enum class DemosaicMethod : int {
  /// Each pixel keeps its sample in the channel of its own colour; the other two are 0.
  None = 0,
  /// Tiles of 2 x 2 pixels share their red and blue; green comes from the pixel's own row.
  NearestNeighbor = 1,
  /// Each pixel takes the colours of the 2 x 2 window that starts at it.
  NearestNeighbor2 = 2,
  /// Means of the neighbours in the row, then means of the rows above and below.
  Bilinear = 3,
  /// All colours interpolated at the centre of the pixel's 2 x 2 window.
  Bilinear2 = 4,
  /// Four-tap cubic kernel along the row, then along the column.
  Bicubic = 5,
  /// Each pixel's sample in all three channels.
  Mono = 6,
  /// Green along the edge, then red and blue by colour difference.
  Bilinear3 = 7,
};

/// One frame to demosaic, T being uint8_t or uint16_t. The two buffers must not overlap.
template <class T>
struct MosaicFrame {
  /// First row of the mosaic, one sample a pixel.
  const T* source = nullptr;
  /// Bytes from one source row to the next.
  ptrdiff_t sourcePitch = 0;
  /// First row of the destination in memory, whichever way rows are written.
  T* destination = nullptr;
  /// Bytes from one destination row to the next in memory, positive.
  ptrdiff_t destinationPitch = 0;
  /// Pixels in a row and rows, both at least 2.
  size_t width = 0;
  size_t height = 0;
  /// Samples of a destination pixel, 3 or 4. The fourth is never written.
  unsigned stride = 3;
  /// Red goes to component 2 and blue to component 0; else the other way about.
  bool isBGR = true;
  /// Colours of the pixels (0, 0) and (1, 0): 2 is RG, 3 GR, 4 GB, 5 BG. Others do nothing.
  int phase = 2;
  /// Greatest value of the destination's samples; the methods 5 and 7 clamp to it.
  uint32_t maximum = 255;
};

/// Turns a mosaic into colour pixels. `reverse` writes source row y to memory row height - 1 - y.
///
/// Frames with a side of 2 or 3 pixels get `NearestNeighbor` unless the method is `None` or `Mono`;
/// `Bicubic` gives way to `Bilinear2` up to a width of 6. Exact in integers: every instruction set
/// gives the same bytes. Samples above `maximum` are taken as they are (sums are wide enough for
/// any); only what is clamped comes out below it. Reads just the width samples of each source row
/// and writes just the components 0 to 2 of width pixels of each destination row. An exception to
/// the first: `Bicubic` at heights of 6 and 7 reads padding bytes of the destination.
///
/// `Bicubic` and `Bilinear3` allocate a few rows of scratch memory and throw std::bad_alloc
/// without. Thread-safe for distinct destinations.
template <class T>
void Demosaic(const MosaicFrame<T>& frame, DemosaicMethod method, bool reverse);

extern template void Demosaic(const MosaicFrame<uint8_t>&, DemosaicMethod, bool);
extern template void Demosaic(const MosaicFrame<uint16_t>&, DemosaicMethod, bool);

}  // namespace QvApi::Kernels
