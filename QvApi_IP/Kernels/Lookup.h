// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>

namespace QvApi::Kernels {

/// Longest pattern of tables: Y Y Cb Y Y Cr.
inline constexpr size_t kMaxLookupPeriod = 6;
/// Every period divides this number, so a pattern seen from sample i is the one from i mod 12.
inline constexpr size_t kLookupCycle = 12;

/// Which table serves which sample of a line: sample i goes through tables[i % period]. A null
/// table keeps the sample as it is. Examples: {t} for every sample, {t, t, t, nullptr} for the
/// colours of BGRa, {t, nullptr} for the luminance of 4:2:2, {red, green} for a Bayer row.
///
/// A table holds 2^bits entries, bits being what the lookup is prepared with. It is borrowed.
struct LookupPattern {
  template <std::convertible_to<const uint16_t*>... Tables>
  requires(sizeof...(Tables) != 0 && sizeof...(Tables) <= kMaxLookupPeriod &&
           kLookupCycle % sizeof...(Tables) == 0) explicit LookupPattern(Tables... list)
      : tables{list...}, period(sizeof...(Tables)) {}
  /// The same from a list made at run time, of an allowed length.
  explicit LookupPattern(std::span<const uint16_t* const> list) : tables{}, period(list.size()) {
    std::copy(list.begin(), list.end(), tables.begin());
  }

  std::array<const uint16_t*, kMaxLookupPeriod> tables;
  size_t period;
};

/// A pattern made ready for lines of uint8_t or uint16_t samples: once for an image, on the
/// caller's stack. It is not changed by use, so several threads may share it.
template <class T>
struct PreparedLookup;

/// For 8-bit samples the tables are copied into bytes (the low byte of each entry), a form that
/// fits into vector registers; the pattern's tables are not needed afterwards.
template <>
struct PreparedLookup<uint8_t> {
  static constexpr uint8_t kKeep = 0xFF;

  /// bits: 1 to 8; larger values count as 8. Samples above 2^bits - 1 are masked to the depth.
  explicit PreparedLookup(const LookupPattern& pattern, unsigned bits = 8);

  size_t period;
  /// Number of different tables.
  size_t tableCount = 0;
  /// Table of each position in the period, or kKeep.
  std::array<uint8_t, kMaxLookupPeriod> tableAt;
  alignas(64) std::array<std::array<uint8_t, 256>, kMaxLookupPeriod> tables;
  /// Bit j of users[k][i]: table k serves sample i + j.
  std::array<std::array<uint64_t, kLookupCycle>, kMaxLookupPeriod> users;
};

/// For 16-bit samples the tables are used where they are and must outlive this object.
template <>
struct PreparedLookup<uint16_t> {
  /// bits: 1 to 16; larger values count as 16. Samples above 2^bits - 1 are masked to the depth.
  explicit PreparedLookup(const LookupPattern& pattern, unsigned bits);

  size_t period;
  std::array<const uint16_t*, kMaxLookupPeriod> tables;
  uint16_t sampleMask;
};

/// Maps `count` samples of one line, the first of which is at position 0 of the pattern.
/// destination may be source itself (the line is then mapped in place, and samples that are kept
/// are not touched or written with their own value); otherwise the two must not overlap.
void LookupLine(const PreparedLookup<uint8_t>& lookup, const uint8_t* source, uint8_t* destination,
                size_t count);
void LookupLine(const PreparedLookup<uint16_t>& lookup, const uint16_t* source,
                uint16_t* destination, size_t count);

}  // namespace QvApi::Kernels
