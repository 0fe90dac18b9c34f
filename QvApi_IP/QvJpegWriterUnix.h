// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstdio>

#include "QvSDKCommon/IQvImage.h"

namespace QvApi {

/// Writes a JPEG file of `Mono8`, `RGB8` or `BGR8`, or of `YCbCr8`, `YCbCr422_8` or `YCbCr411_8`,
/// whose components are compressed as they are. Colour pixels share chrominance in pairs, YCbCr
/// ones as their format says. Of `Mono10` each byte counts as a pixel.
/// @param quality  0 to 100; more counts as 100
/// @throws GenICam::RuntimeException  "Not supported pixelformat %s", "File %s is unwritable.", the
///                                    latter also for sides above 65500
void WriteJPG(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
              unsigned quality);

}  // namespace QvApi
