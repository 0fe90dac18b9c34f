// SPDX-License-Identifier: MIT
#pragma once

#include "QvSDKCommon/IQvImage.h"

namespace QvApi {

/// Makes interleaved colour of 8 bits of a YCbCr or YUV image; the alpha of the destination keeps
/// what it held. Pixels that share chrominance are made of the same values. Planar 4:2:0 counts as
/// of studio range by BT.601, and an odd last column or row takes the chrominance before it, or 128
/// if there is none. Other source formats do nothing.
/// @param destination  sized already, for the source's width and height
/// @param reverse      writes the image upside down
void mvTransform_YCrCb2BGR(IQvImage* source, IQvImage* destination, bool reverse);

/// Makes a grey image of 8 bits of the luminance, which is copied if it is of full range and
/// stretched to it otherwise. That of planar 4:2:0 is copied.
void mvTransform_YCrCb2Mono(IQvImage* source, IQvImage* destination, bool reverse);

}  // namespace QvApi
