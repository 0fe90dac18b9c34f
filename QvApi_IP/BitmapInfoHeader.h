// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace QvApi {

static_assert(std::endian::native == std::endian::little, "The layouts of files are little-endian");

/// How Windows describes a picture in bitmaps and in AVI files: BITMAPINFOHEADER.
#pragma pack(push, 1)
struct BitmapInfoHeader {
  std::uint32_t size;
  std::int32_t width;
  std::int32_t height;  ///< Positive: the last line comes first.
  std::uint16_t planes;
  std::uint16_t bitCount;
  std::uint32_t compression;
  std::uint32_t imageSize;
  std::int32_t pixelsPerMeterX;
  std::int32_t pixelsPerMeterY;
  std::uint32_t colorsUsed;
  std::uint32_t colorsImportant;
};
#pragma pack(pop)
static_assert(sizeof(BitmapInfoHeader) == 40);

/// Colours of 8-bit pixels, as SetColorMap() gives them.
using BitmapPalette = std::array<unsigned, 256>;
static_assert(sizeof(BitmapPalette) == 1024);

}  // namespace QvApi
