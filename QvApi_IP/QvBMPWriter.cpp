// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvBMPWriter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

#include "QvApi_IP/BitmapInfoHeader.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvInputFile.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvSDKCommon/ReadableMemory.h"

namespace QvApi {
namespace {

// BITMAPFILEHEADER
#pragma pack(push, 1)
struct FileHeader {
  std::uint16_t type;
  std::uint32_t fileSize;
  std::uint32_t reserved;
  std::uint32_t dataOffset;
};
#pragma pack(pop)
static_assert(sizeof(FileHeader) == 14);

using InfoHeader = BitmapInfoHeader;

constexpr std::uint16_t kType = 0x4D42;  // "BM"
constexpr std::uint32_t kRgb = 0;
constexpr std::uint32_t kBitFields = 3;

using Palette = BitmapPalette;
constexpr std::size_t kPaletteEntries = std::tuple_size_v<Palette>;
using Masks = std::array<std::uint32_t, 3>;  // red, green, blue

constexpr Masks Grey(unsigned depth) {
  const std::uint32_t mask = (1U << depth) - 1;
  return {mask, mask, mask};
}

/// How a pixel format stands in a file.
struct Layout {
  PixelFormat format;
  std::uint16_t bitCount;
  std::uint32_t compression;
  Masks masks{};

  constexpr bool HasPalette() const { return bitCount == 8; }
  constexpr bool HasMasks() const { return compression == kBitFields; }
  constexpr std::uint32_t DataOffset() const {
    return static_cast<std::uint32_t>(sizeof(FileHeader) + sizeof(InfoHeader) +
                                      (HasPalette() ? sizeof(Palette) : 0) +
                                      (HasMasks() ? sizeof(Masks) : 0));
  }
};

constexpr Layout kLayouts[] = {
    {PixelFormat::Mono8, 8, kRgb},
    {PixelFormat::Mono10, 16, kBitFields, Grey(10)},
    {PixelFormat::Mono12, 16, kBitFields, Grey(12)},
    {PixelFormat::Mono14, 16, kBitFields, Grey(14)},
    {PixelFormat::Mono16, 16, kBitFields, Grey(16)},
    {PixelFormat::BGR8, 24, kRgb},
    {PixelFormat::BGRa8, 32, kRgb},
    {PixelFormat::CBGR10p32, 32, kBitFields, {0x3FF00000, 0x000FFC00, 0x000003FF}},
};
static_assert(kLayouts[0].DataOffset() == 1078 && kLayouts[1].DataOffset() == 66 &&
              kLayouts[5].DataOffset() == 54);

const Layout* FindLayout(PixelFormat format) {
  const auto* found = std::ranges::find(kLayouts, format, &Layout::format);
  return found == std::end(kLayouts) ? nullptr : found;
}

const Layout* FindLayout(const InfoHeader& info, const Masks& masks) {
  const auto* found = std::ranges::find_if(kLayouts, [&](const Layout& layout) {
    return layout.bitCount == info.bitCount && layout.compression == info.compression &&
           layout.masks == masks;
  });
  return found == std::end(kLayouts) ? nullptr : found;
}

/// Everything of a file but its pixels.
struct Headers {
  FileHeader file;
  InfoHeader info;
};

static_assert(sizeof(Headers) == 54);

/// Nothing if the image does not fit into the fields of 32 bits.
std::optional<Headers> MakeHeaders(const Layout& layout, const ImageLines& lines,
                                   std::uint64_t stride) {
  const std::uint64_t height = lines.Height();
  std::uint64_t imageSize = 0;
  if (lines.Width() > INT32_MAX || height > INT32_MAX ||
      __builtin_mul_overflow(stride, height, &imageSize) ||
      imageSize > UINT32_MAX - layout.DataOffset())
    return {};
  const std::uint32_t colors = layout.HasPalette() ? kPaletteEntries : 0;
  return Headers{.file{.type = kType,
                       .fileSize = layout.DataOffset() + static_cast<std::uint32_t>(imageSize),
                       .reserved = 0,
                       .dataOffset = layout.DataOffset()},
                 .info{.size = sizeof(InfoHeader),
                       .width = static_cast<std::int32_t>(lines.Width()),
                       .height = static_cast<std::int32_t>(height),
                       .planes = 1,
                       .bitCount = layout.bitCount,
                       .compression = layout.compression,
                       .imageSize = static_cast<std::uint32_t>(imageSize),
                       .pixelsPerMeterX = 0,
                       .pixelsPerMeterY = 0,
                       .colorsUsed = colors,
                       .colorsImportant = colors}};
}

/// Writes the lines from the last to the first, each as long as the pitch and padded to the stride
/// with zeros. `readable` are the bytes of the image that exist; further ones count as zeros.
bool WriteLines(std::FILE* file, const ImageLines& lines, std::size_t stride,
                std::size_t readable) {
  const auto pitch = static_cast<std::size_t>(lines.Pitch());
  GatheredWriter writer(file);
  for (std::size_t y = lines.Height(); y-- > 0;) {
    const std::size_t present = std::min(pitch, readable - y * pitch);
    writer.Add(lines.Line<std::uint8_t>(y), present);
    writer.AddZeros(stride - present);
  }
  return writer.Flush();
}

bool IsGreyRamp(const Palette& palette) {
  for (unsigned i = 0; i < kPaletteEntries; ++i)
    if ((palette[i] & 0xFFFFFF) != i * 0x010101) return false;
  return true;
}

/// Reads what stands between the headers and the pixels. Null if the file is of no kind that can be
/// loaded.
const Layout* ReadLayout(std::FILE* file, const InfoHeader& info) {
  Masks masks{};
  if (info.compression == kBitFields && !ReadRecord(file, masks)) return nullptr;
  const Layout* layout = FindLayout(info, masks);
  if (!layout || !layout->HasPalette()) return layout;
  const bool allColors =
      info.colorsUsed == kPaletteEntries && info.colorsImportant == kPaletteEntries;
  const bool unsaid = info.colorsUsed == 0 && info.colorsImportant == 0;
  Palette palette;
  if (!(allColors || unsaid) || !ReadRecord(file, palette) || !IsGreyRamp(palette)) return nullptr;
  return layout;
}

/// What a file holds, after all of it has been checked against the bytes that are there.
struct Picture {
  PixelFormat format;
  std::size_t width;
  std::size_t height;
  std::uint32_t dataOffset;
  bool topDown;
};

std::optional<Picture> ReadPicture(std::FILE* file) {
  Headers headers;
  if (!SeekTo(file, 0) || !ReadRecord(file, headers.file) || headers.file.type != kType ||
      !ReadRecord(file, headers.info))
    return {};
  const InfoHeader& info = headers.info;
  const Layout* layout = ReadLayout(file, info);
  // The header of OS/2 is shorter and has other fields.
  if (!layout || info.size < sizeof(InfoHeader) || info.width <= 0 || info.height == 0) return {};

  const std::int64_t height = info.height;
  const Picture picture{.format = layout->format,
                        .width = static_cast<std::size_t>(info.width),
                        .height = static_cast<std::size_t>(height < 0 ? -height : height),
                        .dataOffset = headers.file.dataOffset,
                        .topDown = height < 0};
  const IQvPixelFormatInfoInside& format = FormatInfo(layout->format);
  const std::uint64_t pitch = format.GetLinePitch(picture.width, format.GetDefaultLineAlignment());
  std::uint64_t end = 0;
  if (picture.dataOffset < layout->DataOffset() ||
      __builtin_mul_overflow(pitch, picture.height, &end) ||
      __builtin_add_overflow(end, picture.dataOffset, &end) || end > headers.file.fileSize ||
      end > GetFileSize(file))
    return {};
  return picture;
}

bool ReadLines(std::FILE* file, const IQvImage& image, bool topDown) {
  const ImageLines lines(image, !topDown);
  for (std::size_t y = 0; y < lines.Height(); ++y)
    if (!ReadBytes(file, lines.Line<std::uint8_t>(y), image.GetImageLinePitch())) return false;
  return true;
}

}  // namespace

void WriteBMP(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
              EQvColorMapType_t type, bool inversion, int phase) {
  const Layout* layout = FindLayout(image->GetImagePixelFormat());
  if (!layout) ThrowNotSupported(image->GetImagePixelFormat());
  const ImageLines lines(*image);
  // Of the pitch, not of the width.
  const std::size_t stride = (image->GetImageLinePitch() + 3) & ~std::size_t{3};

  const std::optional<Headers> headers = MakeHeaders(*layout, lines, stride);
  bool written = headers && WriteBytes(file, &*headers, sizeof(Headers));
  if (layout->HasMasks()) written = written && WriteBytes(file, &layout->masks, sizeof(Masks));
  if (layout->HasPalette()) {
    Palette palette;
    SetColorMap(palette.data(), type, inversion, phase);
    written = written && WriteBytes(file, palette.data(), sizeof(palette));
  }
  if (!written || !WriteLines(file, lines, stride, GetReadableSize(*image)))
    ThrowUnwritable(fileName);
}

void LoadBMP(IQvImageBuffer* buffer, const GenICam::gcstring& fileName, std::FILE* file) {
  const std::optional<Picture> picture = ReadPicture(file);
  if (!picture || !SeekTo(file, picture->dataOffset)) ThrowUnreadable(fileName);
  buffer->CreateBuffer(picture->width, picture->height, picture->format,
                       QvMemoryInitialization_None);
  const IQvImage& image = *buffer->GetIQvImage();
  if (ReadLines(file, image, picture->topDown)) return;
  std::memset(image.GetImageBuffer(), 0, image.GetImagePlanePitch());
  ThrowUnreadable(fileName);
}

}  // namespace QvApi
