// SPDX-License-Identifier: MIT
#include <tiffio.h>

#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

// Interleaved, uncompressed, one strip.
void Write(IQvImage& image, const std::string& fileName) {
  const IQvPixelFormatInfo* info = GetIQvPixelFormatInfo(image.GetImagePixelFormat());
  const auto width = static_cast<std::uint32_t>(image.GetImageWidth());
  const auto height = static_cast<std::uint32_t>(image.GetImageHeight());
  const std::size_t components = info->GetComponentCount();
  TIFF* file = TIFFOpen(fileName.c_str(), "w");
  TIFFSetField(file, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(file, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, info->GetEachComponentTotalBitCount());
  TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, components);
  TIFFSetField(file, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(file, TIFFTAG_PHOTOMETRIC,
               components > 1 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, height);
  TIFFWriteEncodedStrip(file, 0, image.GetImageBuffer(),
                        static_cast<tmsize_t>(image.GetImageLinePitch() * height));
  TIFFClose(file);
}

constexpr Peer kPeers[] = {{"libtiff", nullptr, Write}};

}  // namespace

std::span<const Peer> TiffPeers() { return kPeers; }

}  // namespace Bench
