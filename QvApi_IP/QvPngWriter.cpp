// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvPngWriter.h"

#include <Base/GCException.h>
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvInputFile.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvApi_TL/PixelFormatFamilies.h"

namespace QvApi {

using namespace Families;

namespace {

// libpng reports a failure by a jump to where setjmp was called. Each function that calls it is
// written as in C: it works on the plain data of a job, and neither it nor what it calls has
// objects with destructors, which a jump would skip.

[[noreturn]] void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void OnWarning(png_structp, png_const_charp) {}

/// libpng's two structures for one file, destroyed at the end of the scope.
class PngWriteStruct {
 public:
  PngWriteStruct()
      : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning)),
        info(png ? png_create_info_struct(png) : nullptr) {}
  PngWriteStruct(const PngWriteStruct&) = delete;
  PngWriteStruct& operator=(const PngWriteStruct&) = delete;
  ~PngWriteStruct() { png_destroy_write_struct(&png, &info); }

  png_structp png;
  png_infop info;
};

class PngReadStruct {
 public:
  PngReadStruct()
      : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning)),
        info(png ? png_create_info_struct(png) : nullptr) {}
  PngReadStruct(const PngReadStruct&) = delete;
  PngReadStruct& operator=(const PngReadStruct&) = delete;
  ~PngReadStruct() { png_destroy_read_struct(&png, &info, nullptr); }

  png_structp png;
  png_infop info;
};

struct WriteJob {
  png_structp png;
  png_infop info;
  std::FILE* file;
  png_uint_32 width;
  png_uint_32 height;
  int fileDepth;
  int colorType;
  png_byte significantBits;  ///< Of a sample in memory.
  bool blueFirst;
  const png_color* palette;
  const png_byte* firstLine;
  std::ptrdiff_t pitch;
  std::size_t lineBytes;

  const png_byte* Line(png_uint_32 y) const {
    return firstLine + static_cast<std::ptrdiff_t>(y) * pitch;
  }
};

/// Bytes of a line that, as differences to the line above, are at least the fourth of their value
/// in a row.
std::size_t CountRunBytes(const png_byte* line, const png_byte* above, std::size_t size) {
  std::size_t count = 0;
  int repeats = 0;
  for (std::size_t i = 1; i < size; ++i) {
    const bool same = line[i] - above[i] == line[i - 1] - above[i - 1];
    repeats = same ? repeats + 1 : 0;
    count += repeats >= 3 ? 1 : 0;
  }
  return count;
}

/// True if runs are worth a search: a camera's noise has none, a drawing is made of them. Looks at
/// some lines only.
bool HasRuns(const WriteJob& job) {
  constexpr std::size_t kWorthOneIn = 50;
  std::size_t runBytes = 0;
  std::size_t allBytes = 0;
  for (png_uint_32 y = 1; y < job.height; y += job.height / 61 + 1) {
    runBytes += CountRunBytes(job.Line(y), job.Line(y - 1), job.lineBytes);
    allBytes += job.lineBytes;
  }
  return runBytes * kWorthOneIn >= allBytes;
}

/// A full search for repeats takes many times as long as the rest, and gains nothing where noise
/// repeats nothing. The difference to the line above is as good a filter as any for pictures and
/// the best for charts.
void SetCompression(const WriteJob& job) {
  png_set_filter(job.png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
  png_set_compression_level(job.png, Z_BEST_SPEED);
  png_set_compression_strategy(job.png, HasRuns(job) ? Z_RLE : Z_HUFFMAN_ONLY);
  png_set_compression_buffer_size(job.png, std::size_t{1} << 16);
}

/// How samples in memory become those of the file, which are big-endian and of 8 or 16 bits.
void SetWriteTransforms(const WriteJob& job) {
  png_set_packing(job.png);
  if (job.blueFirst) png_set_bgr(job.png);
  if (job.significantBits > 8 && job.significantBits < 16) {
    const png_byte bits = job.significantBits;
    const png_color_8 shift = {bits, bits, bits, bits, bits};
    png_set_shift(job.png, &shift);
  }
  png_set_swap(job.png);
  png_set_packswap(job.png);
}

bool WriteFile(const WriteJob& job) {
  if (setjmp(png_jmpbuf(job.png))) return false;
  png_set_user_limits(job.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_init_io(job.png, job.file);
  SetCompression(job);
  png_set_IHDR(job.png, job.info, job.width, job.height, job.fileDepth, job.colorType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (job.palette) png_set_PLTE(job.png, job.info, job.palette, PNG_MAX_PALETTE_LENGTH);
  png_write_info(job.png, job.info);
  SetWriteTransforms(job);
  for (png_uint_32 y = 0; y < job.height; ++y) png_write_row(job.png, job.Line(y));
  png_write_end(job.png, job.info);
  return true;
}

struct ColorTypeRow {
  FormatList formats;
  int colorType;
};

constexpr ColorTypeRow kColorTypes[] = {
    {Mono8 + kMonoW, PNG_COLOR_TYPE_GRAY},
    {{RGB8, BGR8, RGB16, BGR10, BGR12, BGR14, BGR16}, PNG_COLOR_TYPE_RGB},
    {{RGBa8, BGRa8, BGRa10, BGRa12, BGRa14, BGRa16}, PNG_COLOR_TYPE_RGB_ALPHA},
};

std::optional<int> ColorTypeOf(PixelFormat format, bool withPalette) {
  if (format == Mono8 && withPalette) return PNG_COLOR_TYPE_PALETTE;
  for (const ColorTypeRow& row : kColorTypes)
    if (row.formats.Contains(format)) return row.colorType;
  return {};
}

std::array<png_color, PNG_MAX_PALETTE_LENGTH> MakePalette(EQvColorMapType_t type, bool inversion,
                                                          int phase) {
  std::array<unsigned, PNG_MAX_PALETTE_LENGTH> colors;
  SetColorMap(colors.data(), type, inversion, phase);
  std::array<png_color, PNG_MAX_PALETTE_LENGTH> palette;
  std::ranges::transform(colors, palette.begin(), [](unsigned color) {
    return png_color{.red = static_cast<png_byte>(color >> 16),
                     .green = static_cast<png_byte>(color >> 8),
                     .blue = static_cast<png_byte>(color)};
  });
  return palette;
}

struct ReadJob {
  png_structp png;
  png_infop info;
  std::FILE* file;
  // Found by ReadHeader().
  png_uint_32 width = 0;
  png_uint_32 height = 0;
  int passes = 0;
  // Found by StartPixels(): the lines as they are delivered.
  int depth = 0;
  int colorType = 0;
  std::size_t lineBytes = 0;
  // Filled by ReadPixels(), one line behind the other.
  png_byte* pixels = nullptr;
};

constexpr std::size_t kSignatureBytes = 8;

/// Text, colour profiles and the like are of no use here and could be of any size.
void IgnoreWhatIsNoPixel(png_structp png) {
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  png_set_chunk_cache_max(png, 64);
  png_set_chunk_malloc_max(png, std::size_t{1} << 20);
}

/// Reads to the first pixel.
bool ReadHeader(ReadJob& job) {
  if (setjmp(png_jmpbuf(job.png))) return false;
  png_set_user_limits(job.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  IgnoreWhatIsNoPixel(job.png);
  png_init_io(job.png, job.file);
  png_set_sig_bytes(job.png, kSignatureBytes);
  png_read_info(job.png, job.info);
  png_set_strip_16(job.png);
  png_set_packing(job.png);
  job.passes = png_set_interlace_handling(job.png);
  job.width = png_get_image_width(job.png, job.info);
  job.height = png_get_image_height(job.png, job.info);
  return true;
}

/// Makes libpng ready to deliver lines.
bool StartPixels(ReadJob& job) {
  if (setjmp(png_jmpbuf(job.png))) return false;
  png_read_update_info(job.png, job.info);
  job.depth = png_get_bit_depth(job.png, job.info);
  job.colorType = png_get_color_type(job.png, job.info);
  job.lineBytes = png_get_rowbytes(job.png, job.info);
  return true;
}

/// Reads all pixels and what follows them.
bool ReadPixels(const ReadJob& job) {
  if (setjmp(png_jmpbuf(job.png))) return false;
  for (int pass = 0; pass < job.passes; ++pass)
    for (png_uint_32 y = 0; y < job.height; ++y)
      png_read_row(job.png, job.pixels + y * job.lineBytes, nullptr);
  png_read_end(job.png, nullptr);
  return true;
}

/// False if the file is too small for its picture: deflate makes at most 1032 bytes out of one.
bool CanHold(std::uint64_t fileSize, const ReadJob& job) {
  constexpr std::uint64_t kMaxExpansion = 1032;
  const std::uint64_t bitsOfPixel =
      std::uint64_t{png_get_bit_depth(job.png, job.info)} * png_get_channels(job.png, job.info);
  std::uint64_t bits = 0;
  return !__builtin_mul_overflow(std::uint64_t{job.width} * job.height, bitsOfPixel, &bits) &&
         bits / 8 / kMaxExpansion <= fileSize;
}

/// None for a picture that has no format here.
PixelFormat LoadedFormat(const ReadJob& job) {
  if (job.depth != 8) return PixelFormat::None;
  switch (job.colorType) {
    case PNG_COLOR_TYPE_GRAY:
    case PNG_COLOR_TYPE_PALETTE:
      return PixelFormat::Mono8;
    case PNG_COLOR_TYPE_RGB:
      return PixelFormat::RGB8;
    case PNG_COLOR_TYPE_RGB_ALPHA:
      return PixelFormat::RGBa8;
    default:
      return PixelFormat::None;
  }
}

std::unique_ptr<png_byte[]> AllocatePixels(const ReadJob& job) {
  try {
    return std::make_unique_for_overwrite<png_byte[]>(job.lineBytes * job.height);
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
}

bool ReadSignature(std::FILE* file) {
  png_byte signature[kSignatureBytes];
  return ReadRecord(file, signature) && png_sig_cmp(signature, 0, kSignatureBytes) == 0;
}

}  // namespace

void WritePng(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
              EQvColorMapType_t type, bool inversion, int phase) {
  const bool withPalette = type != QvColorMapType_Normal || inversion || phase != 0;
  const std::optional<int> colorType = ColorTypeOf(image->GetImagePixelFormat(), withPalette);
  if (!colorType) ThrowNotSupported(image->GetImagePixelFormat());
  const ImageLines lines(*image);
  const auto palette = MakePalette(type, inversion, phase);
  const PngWriteStruct structs;
  if (!structs.info || lines.Width() > PNG_UINT_31_MAX || lines.Height() > PNG_UINT_31_MAX)
    ThrowUnwritable(fileName);

  const WriteJob job{.png = structs.png,
                     .info = structs.info,
                     .file = file,
                     .width = static_cast<png_uint_32>(lines.Width()),
                     .height = static_cast<png_uint_32>(lines.Height()),
                     .fileDepth = lines.Depth() > 8 ? 16 : 8,
                     .colorType = *colorType,
                     .significantBits = static_cast<png_byte>(lines.Depth()),
                     .blueFirst = lines.Format().IsBGR(),
                     .palette = *colorType == PNG_COLOR_TYPE_PALETTE ? palette.data() : nullptr,
                     .firstLine = lines.Line<const png_byte>(0),
                     .pitch = lines.Pitch(),
                     .lineBytes = lines.Format().GetLinePitch(lines.Width(), 1)};
  if (!WriteFile(job)) ThrowUnwritable(fileName);
}

void LoadPng(IQvImageBuffer* buffer, const GenICam::gcstring& fileName, std::FILE* file) {
  const std::uint64_t fileSize = GetFileSize(file);
  const PngReadStruct structs;
  ReadJob job{.png = structs.png, .info = structs.info, .file = file};
  if (!structs.info || !ReadSignature(file) || !ReadHeader(job) || !CanHold(fileSize, job) ||
      !StartPixels(job))
    ThrowUnreadable(fileName);
  const PixelFormat format = LoadedFormat(job);
  if (format == PixelFormat::None) ThrowUnreadable(fileName);

  // Decoded aside, so that a file that turns out damaged at its end has changed nothing.
  const auto pixels = AllocatePixels(job);
  job.pixels = pixels.get();
  if (!ReadPixels(job)) ThrowUnreadable(fileName);
  buffer->CreateBuffer(job.width, job.height, format, QvMemoryInitialization_None);
  const ImageLines lines(*buffer->GetIQvImage());
  for (std::size_t y = 0; y < job.height; ++y)
    std::memcpy(lines.Line<png_byte>(y), job.pixels + y * job.lineBytes, job.lineBytes);
}

}  // namespace QvApi
