// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstdio>

#include "QvApi_IP/ColorMap.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// Writes a PNG file of a grey or colour image; samples of 10 to 14 bits are spread over 16. A
/// `Mono8` image with a colour map other than the plain one gets that as its palette.
/// @throws GenICam::RuntimeException  "Not supported pixelformat %s", "File %s is unwritable."
void WritePng(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
              EQvColorMapType_t type, bool inversion, int phase);

/// Reads a PNG file as `Mono8`, `RGB8` or `RGBa8`: samples of 16 bits lose their lower half, those
/// below 8 keep their value, and of a palette image the indices are taken. Grey with alpha is
/// refused. What is refused leaves the buffer as it was.
/// @throws GenICam::RuntimeException   "File %s is unreadable."
/// @throws GenICam::BadAllocException  no memory
void LoadPng(IQvImageBuffer* buffer, const GenICam::gcstring& fileName, std::FILE* file);

}  // namespace QvApi
