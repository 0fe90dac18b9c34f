// SPDX-License-Identifier: MIT
#include <turbojpeg.h>

#include <cstdio>

#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

// BGR8, as the library's own files are.
void Write(IQvImage& image, const std::string& fileName) {
  constexpr int kQuality = 75;
  const tjhandle handle = tjInitCompress();
  unsigned char* jpeg = nullptr;
  unsigned long size = 0;
  tjCompress2(handle, static_cast<const unsigned char*>(image.GetImageBuffer()),
              static_cast<int>(image.GetImageWidth()), static_cast<int>(image.GetImageLinePitch()),
              static_cast<int>(image.GetImageHeight()), TJPF_BGR, &jpeg, &size, TJSAMP_422,
              kQuality, TJFLAG_FASTDCT);
  tjDestroy(handle);
  std::FILE* file = std::fopen(fileName.c_str(), "wb");
  std::fwrite(jpeg, 1, size, file);
  std::fclose(file);
  tjFree(jpeg);
}

constexpr Peer kPeers[] = {{"TurboJPEG", nullptr, Write}};

}  // namespace

std::span<const Peer> TurboJpegPeers() { return kPeers; }

}  // namespace Bench
