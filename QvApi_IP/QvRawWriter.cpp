// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvRawWriter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvInputFile.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvSDKCommon/ReadableMemory.h"

namespace QvApi {
namespace {

/// Everything of a file but its pixels.
struct Header {
  RawFileHeader file;
  std::uint64_t width;
  std::uint64_t height;
  std::uint64_t linePitch;
  std::int64_t pixelFormat;  ///< Code of 32 bits with its sign; the loader reads those 32 bits.

  PixelFormat Format() const { return static_cast<PixelFormat>(pixelFormat); }
};
static_assert(sizeof(Header) == 72 && offsetof(Header, pixelFormat) == 64);

Header MakeHeader(const IQvImage& image, std::size_t planes) {
  return {.file = MakeRawFileHeader(RawFileKind::Image, sizeof(Header),
                                    image.GetImagePlanePitch() * planes),
          .width = image.GetImageWidth(),
          .height = image.GetImageHeight(),
          .linePitch = image.GetImageLinePitch(),
          .pixelFormat = static_cast<std::int32_t>(image.GetImagePixelFormat())};
}

/// The header of a file, after all of it has been checked against the bytes that are there.
std::optional<Header> ReadHeader(std::FILE* file) {
  Header header;
  if (!SeekTo(file, 0) || !ReadRecord(file, header) ||
      !IsRawFileHeader(header.file, RawFileKind::Image) ||
      header.file.headerSize != sizeof(Header) || header.width == 0 || header.height == 0 ||
      header.linePitch == 0)
    return {};
  if (!GetIQvPixelFormatInfo(header.Format())) return {};
  const IQvPixelFormatInfoInside& info = FormatInfo(header.Format());
  std::uint64_t size = 0;
  std::uint64_t end = 0;
  if (info.GetLinePitch(header.width, header.linePitch) != header.linePitch ||
      __builtin_mul_overflow(header.linePitch, header.height, &size) ||
      __builtin_mul_overflow(size, info.GetPlaneCount(), &size) || size != header.file.dataSize ||
      __builtin_add_overflow(size, sizeof(Header), &end) || end > GetFileSize(file))
    return {};
  return header;
}

/// The buffer, which may be the application's own, has become what the header says.
bool Agrees(const IQvImage& image, const Header& header) {
  return image.GetImageLinePitch() == header.linePitch &&
         image.GetImagePlanePitch() * FormatInfo(header.Format()).GetPlaneCount() ==
             header.file.dataSize;
}

}  // namespace

void WriteRaw(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file) {
  const PixelFormat format = image->GetImagePixelFormat();
  if (!GetIQvPixelFormatInfo(format)) ThrowNotSupported(format);
  const ImageLines lines(*image);
  const Header header = MakeHeader(*image, lines.Format().GetPlaneCount());
  const std::size_t present = std::min<std::size_t>(header.file.dataSize, GetReadableSize(*image));

  GatheredWriter writer(file);
  writer.Add(&header, sizeof(header));
  writer.Add(lines.Line<std::uint8_t>(0), present);
  writer.AddZeros(header.file.dataSize - present);
  if (!writer.Flush()) ThrowUnwritable(fileName);
}

void LoadRaw(IQvImageBuffer* buffer, const GenICam::gcstring& fileName, std::FILE* file) {
  const std::optional<Header> header = ReadHeader(file);
  if (!header) ThrowUnreadable(fileName);
  buffer->SetSize(header->width, header->height, header->Format(), header->linePitch);
  const IQvImage& image = *buffer->GetIQvImage();
  if (!Agrees(image, *header)) ThrowUnreadable(fileName);
  if (ReadBytes(file, image.GetImageBuffer(), header->file.dataSize)) return;
  std::memset(image.GetImageBuffer(), 0, header->file.dataSize);
  ThrowUnreadable(fileName);
}

}  // namespace QvApi
