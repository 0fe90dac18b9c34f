// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvTiffWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvApi_TL/PixelFormatFamilies.h"

namespace QvApi {

using namespace Families;

namespace {

static_assert(std::endian::native == std::endian::little);

// The layout of the file, as TIFF 6.0 names its parts. Two things differ from its habits and are
// meant so: widths and heights are of type SHORT and yet fill all of the value, so that large ones
// are kept, and ExtraSamples stands ahead of RowsPerStrip.
enum Tag : std::uint16_t {
  kImageWidth = 0x0100,
  kImageLength = 0x0101,
  kBitsPerSample = 0x0102,
  kCompression = 0x0103,
  kPhotometricInterpretation = 0x0106,
  kStripOffsets = 0x0111,
  kSamplesPerPixel = 0x0115,
  kRowsPerStrip = 0x0116,
  kStripByteCounts = 0x0117,
  kXResolution = 0x011A,
  kYResolution = 0x011B,
  kPlanarConfiguration = 0x011C,
  kResolutionUnit = 0x0128,
  kColorMap = 0x0140,
  kExtraSamples = 0x0152,
};
enum Type : std::uint16_t { kShort = 3, kLong = 4, kRational = 5 };
enum Photometric : std::uint32_t { kBlackIsZero = 1, kRgb = 2, kPalette = 3 };
constexpr std::uint32_t kUncompressed = 1;
constexpr std::uint32_t kInch = 2;
constexpr std::uint32_t kChunky = 1;
constexpr std::uint32_t kPlanar = 2;
constexpr std::uint32_t kUnspecified = 0;

struct Entry {
  Tag tag;
  Type type;
  std::uint32_t count;
  std::uint32_t value;  ///< Or the offset of the values.
};
struct Rational {
  std::uint32_t numerator;
  std::uint32_t denominator;
};
#pragma pack(push, 1)
struct FileStart {
  std::array<char, 2> byteOrder{'I', 'I'};
  std::uint16_t version = 42;
  std::uint32_t directoryOffset = 8;
  std::uint16_t entryCount;
};
#pragma pack(pop)
struct DirectoryEnd {
  std::uint32_t nextDirectory = 0;
  Rational xResolution{720000, 10000};
  Rational yResolution{720000, 10000};
};
static_assert(sizeof(FileStart) == 10 && sizeof(Entry) == 12 && sizeof(DirectoryEnd) == 20);

/// Where things stand behind a directory of so many entries.
struct Offsets {
  explicit constexpr Offsets(std::size_t entryCount, std::size_t tableBytes = 0)
      : xResolution(static_cast<std::uint32_t>(sizeof(FileStart) + entryCount * sizeof(Entry) +
                                               offsetof(DirectoryEnd, xResolution))),
        pixels(tables + static_cast<std::uint32_t>(tableBytes)) {}

  std::uint32_t xResolution;
  std::uint32_t yResolution = xResolution + std::uint32_t{sizeof(Rational)};
  std::uint32_t tables = yResolution + std::uint32_t{sizeof(Rational)};
  std::uint32_t pixels;
};

/// All red values, then all green ones, then all blue ones.
using ColorMap = std::array<std::array<std::uint16_t, 256>, 3>;

struct ColorTables {
  std::array<std::uint32_t, 3> stripByteCounts{};  ///< Filled for planes only, as the next one is.
  std::array<std::uint32_t, 3> stripOffsets{};
  std::array<std::uint16_t, 4> bitsPerSample{};  ///< Ends the tables with the last component.
};

static_assert(Offsets(11).pixels == 162 && Offsets(12, sizeof(ColorMap)).pixels == 1710);

/// What the entries say about the image.
struct Picture {
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t components;
  std::uint32_t planes;
  std::uint32_t depth;
  std::uint32_t stripBytes;  ///< Of one plane.
};

/// Nothing if the file would be too large for its fields of 32 bits.
std::optional<Picture> MakePicture(const ImageLines& lines, std::size_t rowBytes) {
  constexpr std::size_t kMaxPixelBytes = UINT32_MAX - 2048;  // leaves room for all that is no pixel
  const std::size_t planes = lines.Format().GetPlaneCount();
  if (lines.Height() > kMaxPixelBytes || rowBytes > kMaxPixelBytes / lines.Height() / planes)
    return {};
  return Picture{.width = static_cast<std::uint32_t>(lines.Width()),
                 .height = static_cast<std::uint32_t>(lines.Height()),
                 .components = static_cast<std::uint32_t>(lines.Components()),
                 .planes = static_cast<std::uint32_t>(planes),
                 .depth = static_cast<std::uint32_t>(lines.Depth()),
                 .stripBytes = static_cast<std::uint32_t>(rowBytes * lines.Height())};
}

ColorMap MakeColorMap(EQvColorMapType_t type, bool inversion, int phase) {
  std::array<unsigned, 256> colors;
  SetColorMap(colors.data(), type, inversion, phase);
  ColorMap map;
  for (unsigned c = 0; c < 3; ++c)
    std::ranges::transform(colors, map[c].begin(), [shift = 16 - 8 * c](unsigned color) {
      return static_cast<std::uint16_t>((color >> shift & 0xFF) * 0x0101);
    });
  return map;
}

/// Lines of the file without padding. An image whose pitch is shorter than its lines ends each with
/// zeros.
void AddLines(GatheredWriter& writer, const ImageLines& lines, std::size_t rowBytes) {
  const std::size_t present = std::min(rowBytes, static_cast<std::size_t>(lines.Pitch()));
  for (std::size_t plane = 0; plane < lines.Format().GetPlaneCount(); ++plane)
    for (std::size_t y = 0; y < lines.Height(); ++y) {
      writer.Add(lines.Line<std::uint8_t>(y, plane), present);
      writer.AddZeros(rowBytes - present);
    }
}

bool WriteFile(std::FILE* file, std::span<const Entry> entries, std::span<const std::byte> tables,
               const ImageLines& lines, std::size_t rowBytes) {
  const FileStart start{.entryCount = static_cast<std::uint16_t>(entries.size())};
  const DirectoryEnd end;
  GatheredWriter writer(file);
  writer.Add(&start, sizeof(start));
  writer.Add(entries.data(), entries.size_bytes());
  writer.Add(&end, sizeof(end));
  writer.Add(tables.data(), tables.size());
  AddLines(writer, lines, rowBytes);
  return writer.Flush();
}

/// `colors` are empty for an image without a palette.
bool WriterTIFF_Gray(std::FILE* file, const Picture& picture, std::span<const ColorMap> colors,
                     const ImageLines& lines, std::size_t rowBytes) {
  const std::size_t entryCount = colors.empty() ? 11 : 12;
  const Offsets offsets(entryCount, colors.size_bytes());
  const Entry entries[] = {
      {kImageWidth, kShort, 1, picture.width},
      {kImageLength, kShort, 1, picture.height},
      {kBitsPerSample, kShort, 1, picture.depth},
      {kCompression, kShort, 1, kUncompressed},
      {kPhotometricInterpretation, kShort, 1, colors.empty() ? kBlackIsZero : kPalette},
      {kStripOffsets, kLong, 1, offsets.pixels},
      {kRowsPerStrip, kShort, 1, picture.height},
      {kStripByteCounts, kLong, 1, picture.stripBytes},
      {kXResolution, kRational, 1, offsets.xResolution},
      {kYResolution, kRational, 1, offsets.yResolution},
      {kResolutionUnit, kShort, 1, kInch},
      {kColorMap, kShort, sizeof(ColorMap) / sizeof(std::uint16_t), offsets.tables},
  };
  return WriteFile(file, std::span(entries).first(entryCount), std::as_bytes(colors), lines,
                   rowBytes);
}

bool WriterTIFF_Color(std::FILE* file, const Picture& picture, const ImageLines& lines,
                      std::size_t rowBytes) {
  const bool planar = picture.planes > 1;
  const bool hasAlpha = picture.components > 3;
  const std::size_t tableBytes =
      offsetof(ColorTables, bitsPerSample) + picture.components * sizeof(std::uint16_t);
  const Offsets offsets(picture.components + 10, tableBytes);
  const auto at = [&](std::size_t place) {
    return offsets.tables + static_cast<std::uint32_t>(place);
  };
  ColorTables tables;
  tables.bitsPerSample.fill(static_cast<std::uint16_t>(picture.depth));
  for (std::uint32_t plane = 0; planar && plane < picture.planes; ++plane) {
    tables.stripByteCounts[plane] = picture.stripBytes;
    tables.stripOffsets[plane] = offsets.pixels + plane * picture.stripBytes;
  }
  std::vector<Entry> entries{
      {kImageWidth, kShort, 1, picture.width},
      {kImageLength, kShort, 1, picture.height},
      {kBitsPerSample, kShort, picture.components, at(offsetof(ColorTables, bitsPerSample))},
      {kCompression, kShort, 1, kUncompressed},
      {kPhotometricInterpretation, kShort, 1, kRgb},
      {kStripOffsets, kLong, picture.planes,
       planar ? at(offsetof(ColorTables, stripOffsets)) : offsets.pixels},
      {kSamplesPerPixel, kShort, 1, picture.components},
      {kExtraSamples, kShort, 1, kUnspecified},
      {kRowsPerStrip, kShort, 1, picture.height},
      {kStripByteCounts, kLong, picture.planes,
       planar ? at(offsetof(ColorTables, stripByteCounts)) : picture.stripBytes},
      {kXResolution, kRational, 1, offsets.xResolution},
      {kYResolution, kRational, 1, offsets.yResolution},
      {kPlanarConfiguration, kLong, 1, planar ? kPlanar : kChunky},
      {kResolutionUnit, kShort, 1, kInch},
  };
  if (!hasAlpha)
    std::erase_if(entries, [](const Entry& each) { return each.tag == kExtraSamples; });
  return WriteFile(file, entries, std::as_bytes(std::span(&tables, 1)).first(tableBytes), lines,
                   rowBytes);
}

constexpr FormatList kGray{Mono8, Mono16};
constexpr FormatList kColor{RGB8, RGBa8, RGB8_Planar, RGB16, RGB16_Planar};

}  // namespace

void WriteTiff(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
               EQvColorMapType_t type, bool inversion, int phase) {
  const PixelFormat format = image->GetImagePixelFormat();
  if (!(kGray + kColor).Contains(format)) ThrowNotSupported(format);
  const ImageLines lines(*image);
  const std::size_t rowBytes = lines.Format().GetLinePitch(lines.Width(), 1);
  const std::optional<Picture> picture = MakePicture(lines, rowBytes);
  const bool withPalette =
      format == Mono8 && (type != QvColorMapType_Normal || inversion || phase != 0);
  const ColorMap colors = MakeColorMap(type, inversion, phase);
  const bool written =
      picture && (kColor.Contains(format)
                      ? WriterTIFF_Color(file, *picture, lines, rowBytes)
                      : WriterTIFF_Gray(file, *picture, std::span(&colors, withPalette ? 1 : 0),
                                        lines, rowBytes));
  if (!written) ThrowUnwritable(fileName);
}

}  // namespace QvApi
