// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// A matrix on colours, made of tables: each code of each component adds a part of its own to each
/// of the three components of the result. Components are in the order in which pixels hold them.
///
/// Made once for a set of tables and not changed by use, so several threads may share it.
struct ColorMatrix {
  /// A sum from here on, as an unsigned number, counts as negative.
  static constexpr uint32_t kNegative = 0x10000000;

  /// @param parts  four numbers for each code of each component: parts[4 * (c * 2^bits + code) + r]
  ///               is what `code` of component c adds to component r of the result; the fourth is
  ///               not used. The tables are borrowed.
  /// @param bits   depth of the samples, 8 to 16
  ColorMatrix(const int32_t* parts, unsigned bits);

  const int32_t* Parts(size_t component, size_t code) const {
    return parts + 4 * ((component << bits) + code);
  }

  const int32_t* parts;
  unsigned bits;

  /// The parts of one component in one result, as far as they are an offset plus, with the sign,
  /// (whole * (code + 1) + (fraction * (code + 1) >> 16)), less 1 for some codes: where multiples
  /// of a gain are whole numbers, sums of it come to lie now above and now below them.
  struct Line {
    uint16_t fraction = 0;
    int16_t whole = 0;  ///< With the sign.
    bool isNegative = false;
    int16_t offset = 0;
    std::array<uint8_t, 32> less{};  ///< A bit for each code.
  };
  /// An entry for each component of a pixel and of the result.
  template <class Entry>
  using ForEachPair = std::array<std::array<Entry, 3>, 3>;

  // Short forms, for 8 bits.
  bool sumsFitWords = false;   ///< No sum leaves 16 bits with a sign.
  bool hasLines = false;       ///< That too, and all tables are `lines`.
  bool linesAreExact = false;  ///< That too, and no part is less by 1.
  ForEachPair<Line> lines{};
  /// The lower and the upper bytes of the parts, if they fit.
  struct Bytes {
    alignas(64) std::array<uint8_t, 256> lower, upper;
  };
  ForEachPair<Bytes> bytes{};
};

/// Replaces each of `pixels` pixels, which are `step` (3 or 4) samples apart, by its sums. A sum
/// above full scale becomes full scale, a negative one (see kNegative; sums wrap at 32 bits) 0. A
/// fourth sample stays. Samples above the depth are masked to it.
void TransformColors(const ColorMatrix& matrix, uint8_t* line, size_t step, size_t pixels);
void TransformColors(const ColorMatrix& matrix, uint16_t* line, size_t step, size_t pixels);

}  // namespace QvApi::Kernels
