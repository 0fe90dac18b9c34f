// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/YCbCrLayout.h"

namespace QvApi::Kernels::Scalar {

inline void WeaveYCbCr(const YCbCrLayout& layout, const YCbCrLines<const uint8_t>& lines,
                       uint8_t* interleaved, size_t width) {
  const size_t lineBytes = layout.LineBytes(width);
  for (size_t group = 0; group * layout.pixels < width; ++group) {
    uint8_t* bytes = interleaved + group * layout.bytes;
    const size_t room = lineBytes - group * layout.bytes;
    const size_t first = group * layout.pixels;
    for (size_t k = 0; k < std::min(layout.pixels, width - first); ++k) {
      bytes[layout.luma[k]] = lines.luma[first + k];
    }
    if (layout.cb < room) bytes[layout.cb] = lines.cb[group];
    if (layout.cr < room) bytes[layout.cr] = lines.cr[group];
  }
}

inline void UnweaveYCbCr(const YCbCrLayout& layout, const uint8_t* interleaved, bool follows,
                         const YCbCrLines<uint8_t>& lines, size_t width) {
  const size_t lineBytes = layout.LineBytes(width);
  const size_t values = layout.pixels / layout.ChromaGroup();
  for (size_t group = 0; group * layout.pixels < width; ++group) {
    const uint8_t* bytes = interleaved + group * layout.bytes;
    const size_t room = lineBytes - group * layout.bytes;
    const size_t first = group * layout.pixels;
    for (size_t k = 0; k < std::min(layout.pixels, width - first); ++k) {
      lines.luma[first + k] = bytes[layout.luma[k]];
    }
    const auto chroma = [&](uint8_t place) -> uint8_t {
      if (place < room) return bytes[place];
      return follows || group > 0 ? *(bytes + place - layout.bytes) : 128;
    };
    for (size_t k = 0; k < values; ++k) {
      lines.cb[group * values + k] = chroma(layout.cb);
      lines.cr[group * values + k] = chroma(layout.cr);
    }
  }
}

}  // namespace QvApi::Kernels::Scalar
