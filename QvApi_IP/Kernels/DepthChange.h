// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// How samples of one depth become samples of another: by arithmetic that every vector unit does in
/// 16-bit lanes, or by a table. Made once for an image; not changed by use.
///
/// By arithmetic sample x, masked to its depth, becomes
///   x * multiplier + addend + ((x * numerator + half) * factor >> 16 >> shift)
/// in which no product leaves 32 bits and no other term leaves 16. Cutting bits off, shifting bits
/// in and stretching the range to full scale are all of this form.
struct DepthChange {
  uint16_t sampleMask = 0xFFFF;
  uint16_t multiplier = 1;
  uint16_t addend = 0;
  uint16_t numerator = 0;
  uint16_t half = 0;
  uint16_t factor = 0;
  uint8_t shift = 0;
  /// Samples change nothing but the width of their words; those above their depth are masked.
  bool isIdentity = true;
  /// The result is the upper 8 bits of each sample.
  bool isHighByte = false;
  /// Entry of each sample, 2^sourceBits of them, used instead of the arithmetic. Borrowed.
  const uint16_t* table = nullptr;

  /// Bits are 1 to 16 everywhere.
  static DepthChange Keep(unsigned bits);
  /// Low bits go: x >> (sourceBits - destinationBits).
  static DepthChange CutOff(unsigned sourceBits, unsigned destinationBits);
  /// Full scale becomes full scale, for destinationBits >= sourceBits: the whole number next to
  /// x * (2^destinationBits - 1) / (2^sourceBits - 1), exact for every sample (there are no ties,
  /// the divisor being odd).
  static DepthChange Stretch(unsigned sourceBits, unsigned destinationBits);
  /// x << bits, the new low bits being `lowBits`.
  static DepthChange ShiftLeft(unsigned sourceBits, unsigned bits, unsigned lowBits);
  /// The value stays, the depth grows.
  static DepthChange Relabel(unsigned sourceBits);
  static DepthChange ThroughTable(const uint16_t* table, unsigned sourceBits);
};

/// Changes the depth of `count` samples of one line. Samples above their depth are masked to it;
/// results for 8-bit destinations must fit, else the low byte is unspecified. The lines must not
/// overlap.
void ChangeDepth(const DepthChange& change, const uint8_t* source, uint8_t* destination,
                 size_t count);
void ChangeDepth(const DepthChange& change, const uint8_t* source, uint16_t* destination,
                 size_t count);
void ChangeDepth(const DepthChange& change, const uint16_t* source, uint8_t* destination,
                 size_t count);
void ChangeDepth(const DepthChange& change, const uint16_t* source, uint16_t* destination,
                 size_t count);

}  // namespace QvApi::Kernels
