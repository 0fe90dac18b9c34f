// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstdio>

#include "QvApi_IP/ColorMap.h"
#include "QvSDKCommon/IQvImage.h"

namespace QvApi {

/// Writes an uncompressed TIFF file of one strip, or one for each plane: `Mono8`, `Mono16`, `RGB8`,
/// `RGBa8`, `RGB16`, `RGB8_Planar` and `RGB16_Planar`. A `Mono8` image with a colour map other than
/// the plain one gets that as its palette.
/// @throws GenICam::RuntimeException  "Not supported pixelformat %s", "File %s is unwritable.", the
///                                    latter also for what 32 bits cannot count
void WriteTiff(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
               EQvColorMapType_t type, bool inversion, int phase);

}  // namespace QvApi
