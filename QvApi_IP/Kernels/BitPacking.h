// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// How samples lie packed in a line.
struct PackedLayout {
  enum class Kind : uint8_t {
    /// PFNC "p": a little-endian bit stream, sample i in bits i * bits and up. 1 to 15 bits.
    Lsb,
    /// GigE Vision 1.x "Packed": two samples in three bytes B0 B1 B2. B0 and B2 hold the upper 8
    /// bits of the first and the second, the nibbles of B1 the rest of the first (low nibble) and
    /// of
    /// the second. 10 or 12 bits.
    Gev,
  };

  Kind kind = Kind::Lsb;
  unsigned bits = 8;

  /// Bytes that `count` samples occupy; the last one may be occupied in part.
  constexpr size_t Bytes(size_t count) const {
    return kind == Kind::Gev ? count / 2 * 3 + count % 2 * 2 : (count * bits + 7) / 8;
  }
};

/// Reads `count` samples from the start of a packed line. No byte behind those that the samples
/// occupy is read.
void UnpackSamples(const PackedLayout& layout, const uint8_t* line, uint16_t* samples,
                   size_t count);

/// The same, but gives the upper 8 bits of each sample; for layouts of 8 bits and more.
void UnpackHighBytes(const PackedLayout& layout, const uint8_t* line, uint8_t* samples,
                     size_t count);

/// Writes `count` samples to the start of a packed line. Samples above their depth are masked to
/// it. Just the bytes that the samples occupy are written, spare bits of a bit stream's last byte
/// as 0. An odd last sample of the three-byte layout leaves the upper nibble of its second byte.
void PackSamples(const PackedLayout& layout, const uint16_t* samples, uint8_t* line, size_t count);

}  // namespace QvApi::Kernels
