// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstdio>

#include "QvApi_IP/ColorMap.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// Writes a Windows bitmap: `Mono8` with the colour map as its palette, `BGR8`, `BGRa8`, and as
/// bit fields `Mono10` to `Mono16` and `CBGR10p32`. Lines are as long as the image's pitch, so that
/// of a view what lies beside it goes along.
/// @throws GenICam::RuntimeException  "Not supported pixelformat %s", "File %s is unwritable."
void WriteBMP(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
              EQvColorMapType_t type, bool inversion, int phase);

/// Reads a Windows bitmap of one of these kinds; a palette must be the grey ramp. What is refused
/// leaves the buffer as it was, unless reading fails halfway: then the image is black.
/// @throws GenICam::RuntimeException  "File %s is unreadable."
void LoadBMP(IQvImageBuffer* buffer, const GenICam::gcstring& fileName, std::FILE* file);

}  // namespace QvApi
