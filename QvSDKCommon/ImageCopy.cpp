// SPDX-License-Identifier: MIT
#include "QvSDKCommon/ImageCopy.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "QvSDKCommon/PixelFormatAccess.h"
#include "QvSDKCommon/Planar420.h"

namespace QvApi {
namespace {

const IQvPixelFormatInfoInside& InfoOf(const IQvImage& image) {
  return RequirePixelFormatInfo(image.GetImagePixelFormat());
}

/// Significant bytes of a line in one plane.
std::size_t LineBytesOf(const IQvImage& image) {
  return InfoOf(image).GetLinePitch(image.GetImageWidth(), 1);
}

bool IsPlanar420(const IQvImage& image) {
  return image.GetImagePixelFormat() == PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar;
}

std::uint8_t* BytesOf(const IQvImage& image) {
  return static_cast<std::uint8_t*>(image.GetImageBuffer());
}

void CopyPlanar420(const IQvImage& source, const IQvImage& destination, bool reverseY) {
  const Planar420 from(source.GetImageWidth(), source.GetImageHeight(), source.GetImageLinePitch());
  const Planar420 to(destination.GetImageWidth(), destination.GetImageHeight(),
                     destination.GetImageLinePitch());
  for (std::size_t i = 0; i < 3; ++i) {
    const Planar420::Plane& a = from.planes[i];
    const Planar420::Plane& b = to.planes[i];
    CopyPlane({BytesOf(source) + a.offset, a.width, a.height, a.pitch},
              {BytesOf(destination) + b.offset, b.width, b.height, b.pitch}, reverseY);
  }
}

/// Copies a line by cache lines of the destination, ends overlapping, and fetches the next line
/// meanwhile. memcpy starts slowly on a line, and upward steps the machine does not foresee.
void CopyLine(std::uint8_t* destination, const std::uint8_t* source, std::size_t bytes,
              const std::uint8_t* next) {
  constexpr std::size_t kPiece = 64;
  if (bytes < kPiece) {
    std::memcpy(destination, source, bytes);
    return;
  }
  std::memcpy(destination, source, kPiece);
  for (std::size_t i = -reinterpret_cast<std::uintptr_t>(destination) % kPiece; i + kPiece <= bytes;
       i += kPiece) {
    __builtin_prefetch(next + i);
    std::memcpy(destination + i, source + i, kPiece);
  }
  std::memcpy(destination + bytes - kPiece, source + bytes - kPiece, kPiece);
}

}  // namespace

void CopyPlane(const PlaneLines<const std::uint8_t>& source,
               const PlaneLines<std::uint8_t>& destination, bool reverseY) {
  const std::size_t height = std::min(source.height, destination.height);
  const std::size_t lineBytes = std::min(source.lineBytes, destination.lineBytes);
  const std::size_t pitch = std::min(source.pitch, destination.pitch);
  if (height == 0) return;
  if (source.pitch == destination.pitch && !reverseY) {
    std::memcpy(destination.bytes, source.bytes, (height - 1) * pitch + lineBytes);
    return;
  }
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t line = reverseY ? height - 1 - y : y;
    const std::size_t next = reverseY ? line - 1 : line + 1;
    CopyLine(destination.bytes + y * destination.pitch, source.bytes + line * source.pitch,
             line + 1 < height ? pitch : lineBytes,
             source.bytes + (next < height ? next : line) * source.pitch);
  }
}

bool ImageMemory::Overlaps(const ImageMemory& other) const {
  const std::less<const std::uint8_t*> before;
  return size != 0 && other.size != 0 && before(bytes, other.bytes + other.size) &&
         before(other.bytes, bytes + size);
}

ImageMemory GetImageMemory(const IQvImage& image) {
  const std::size_t width = image.GetImageWidth();
  const std::size_t height = image.GetImageHeight();
  const std::size_t pitch = image.GetImageLinePitch();
  if (width == 0 || height == 0) return {BytesOf(image), 0};
  if (IsPlanar420(image)) {
    const Planar420::Plane last = Planar420(width, height, pitch).planes[2];
    const std::size_t chromaEnd =
        last.height == 0 ? last.offset : last.offset + (last.height - 1) * last.pitch + last.width;
    return {BytesOf(image), std::max(chromaEnd, (height - 1) * pitch + width)};
  }
  return {BytesOf(image), (InfoOf(image).GetPlaneCount() - 1) * image.GetImagePlanePitch() +
                              (height - 1) * pitch + LineBytesOf(image)};
}

bool ShareMemory(const IQvImage& a, const IQvImage& b) {
  return GetImageMemory(a).Overlaps(GetImageMemory(b));
}

void CopyImagePixels(const IQvImage& source, const IQvImage& destination, bool reverseY) {
  if (IsPlanar420(source) && IsPlanar420(destination))
    return CopyPlanar420(source, destination, reverseY);
  const std::size_t planes =
      std::min(InfoOf(source).GetPlaneCount(), InfoOf(destination).GetPlaneCount());
  for (std::size_t plane = 0; plane < planes; ++plane) {
    CopyPlane(
        {BytesOf(source) + plane * source.GetImagePlanePitch(), LineBytesOf(source),
         source.GetImageHeight(), source.GetImageLinePitch()},
        {BytesOf(destination) + plane * destination.GetImagePlanePitch(), LineBytesOf(destination),
         destination.GetImageHeight(), destination.GetImageLinePitch()},
        reverseY);
  }
}

}  // namespace QvApi
