// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// The lines of one plane in memory.
template <class Byte>
struct PlaneLines {
  Byte* bytes;            ///< First byte of the first line.
  std::size_t lineBytes;  ///< Significant bytes of a line.
  std::size_t height;
  std::size_t pitch;
};

/// Copies lines between planes that share no memory: in one block if the pitches are equal and
/// nothing is reversed, else line by line. Of the padding behind a line goes along what both have
/// room for, but no byte behind the last significant one of `source` is read.
/// @param reverseY  puts the plane upside down
QVAPI_EXPORT void CopyPlane(const PlaneLines<const std::uint8_t>& source,
                            const PlaneLines<std::uint8_t>& destination, bool reverseY);

/// The bytes of an image from its first to its last significant one.
struct QVAPI_EXPORT ImageMemory {
  const std::uint8_t* bytes;
  std::size_t size;

  bool Overlaps(const ImageMemory& other) const;
};

/// @param image  an image with memory and a known format
QVAPI_EXPORT ImageMemory GetImageMemory(const IQvImage& image);

/// True if the pixels of both images share memory, as with an image and a view of it.
QVAPI_EXPORT bool ShareMemory(const IQvImage& a, const IQvImage& b);

/// Copies the pixels of `source` to `destination` of the same size and layout, plane by plane as
/// CopyPlane() does. Those of planar 4:2:0 are its true planes: luminance, and chrominance of half
/// the sides. The images must not share memory.
/// @param reverseY  puts each plane upside down
QVAPI_EXPORT void CopyImagePixels(const IQvImage& source, const IQvImage& destination,
                                  bool reverseY);

}  // namespace QvApi
