// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/BitPacking.h"

namespace QvApi::Kernels::Scalar {

/// One sample of a line.
inline unsigned UnpackedSample(const PackedLayout& layout, const uint8_t* line, size_t i) {
  if (layout.kind == PackedLayout::Kind::Gev) {
    const uint8_t* pair = line + i / 2 * 3;
    const unsigned upper = i % 2 == 0 ? pair[0] : pair[2];
    const unsigned rest = i % 2 == 0 ? pair[1] : pair[1] >> 4;
    const unsigned restBits = layout.bits - 8;
    return upper << restBits | (rest & ((1u << restBits) - 1));
  }
  const size_t first = i * layout.bits;
  const size_t last = first + layout.bits - 1;
  unsigned bits = 0;
  for (size_t byte = last / 8 + 1; byte-- > first / 8;) bits = bits << 8 | line[byte];
  return bits >> first % 8 & ((1u << layout.bits) - 1);
}

/// What UnpackSamples gives.
inline void UnpackSamples(const PackedLayout& layout, const uint8_t* line, uint16_t* samples,
                          size_t count) {
  for (size_t i = 0; i < count; ++i)
    samples[i] = static_cast<uint16_t>(UnpackedSample(layout, line, i));
}

/// What UnpackHighBytes gives.
inline void UnpackHighBytes(const PackedLayout& layout, const uint8_t* line, uint8_t* samples,
                            size_t count) {
  for (size_t i = 0; i < count; ++i)
    samples[i] = static_cast<uint8_t>(UnpackedSample(layout, line, i) >> (layout.bits - 8));
}

inline void PackGev(const PackedLayout& layout, const uint16_t* samples, uint8_t* line,
                    size_t count) {
  const unsigned restBits = layout.bits - 8;
  const unsigned restMask = (1u << restBits) - 1;
  for (; count >= 2; count -= 2, samples += 2, line += 3) {
    line[0] = static_cast<uint8_t>(samples[0] >> restBits);
    line[1] = static_cast<uint8_t>((samples[0] & restMask) | (samples[1] & restMask) << 4);
    line[2] = static_cast<uint8_t>(samples[1] >> restBits);
  }
  if (count == 0) return;
  line[0] = static_cast<uint8_t>(samples[0] >> restBits);
  line[1] = static_cast<uint8_t>((line[1] & 0xF0) | (samples[0] & restMask));
}

inline void PackLsb(const PackedLayout& layout, const uint16_t* samples, uint8_t* line,
                    size_t count) {
  uint32_t bits = 0;
  unsigned filled = 0;
  for (size_t i = 0; i < count; ++i) {
    bits |= (samples[i] & ((1u << layout.bits) - 1)) << filled;
    for (filled += layout.bits; filled >= 8; filled -= 8, bits >>= 8)
      *line++ = static_cast<uint8_t>(bits);
  }
  if (filled != 0) *line = static_cast<uint8_t>(bits);
}

/// What PackSamples gives.
inline void PackSamples(const PackedLayout& layout, const uint16_t* samples, uint8_t* line,
                        size_t count) {
  layout.kind == PackedLayout::Kind::Gev ? PackGev(layout, samples, line, count)
                                         : PackLsb(layout, samples, line, count);
}

}  // namespace QvApi::Kernels::Scalar
