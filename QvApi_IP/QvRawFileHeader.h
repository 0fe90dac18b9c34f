// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace QvApi {

/// What a raw file begins with.
inline constexpr const char* pszRawHeader = "QVRW";

enum class RawFileKind : std::uint32_t { Image = 0, GraphData = 1 };

/// The first bytes of every raw file, little-endian.
struct RawFileHeader {
  std::array<char, 4> magic;           ///< pszRawHeader
  std::array<std::uint32_t, 4> marks;  ///< Always the same; a loader asks for nothing.
  RawFileKind kind;
  std::uint64_t headerSize;  ///< Bytes before the data.
  std::uint64_t dataSize;
};
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(RawFileHeader) == 40 && offsetof(RawFileHeader, headerSize) == 24);

namespace RawFiles {
inline constexpr std::array<char, 4> kMagic{pszRawHeader[0], pszRawHeader[1], pszRawHeader[2],
                                            pszRawHeader[3]};
}

constexpr RawFileHeader MakeRawFileHeader(RawFileKind kind, std::uint64_t headerSize,
                                          std::uint64_t dataSize) {
  return {RawFiles::kMagic, {1, 1, 2, 0x10000}, kind, headerSize, dataSize};
}

/// The file is a raw file of this kind.
constexpr bool IsRawFileHeader(const RawFileHeader& header, RawFileKind kind) {
  return header.magic == RawFiles::kMagic && header.kind == kind;
}

}  // namespace QvApi
