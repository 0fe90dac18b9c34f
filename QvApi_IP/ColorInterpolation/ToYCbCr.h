// SPDX-License-Identifier: MIT
#pragma once

#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// Makes luminance and chrominance of 8 bits: of interleaved colour of 8 bits in any layout; of
/// grey and of 8-bit mosaics in planar 4:2:0, which is of full range; of 8-bit mosaics also in
/// `YCbCr422_8`. Other pairs of formats do nothing.
///
/// Where pixels share chrominance it is that of the means of their colours, in a line: planar 4:2:0
/// takes it from every other line, beginning with the first. An odd last column or row has none
/// there.
///
/// @param destination  sized already, for the source's width and height
/// @param reverse      writes each plane upside down
void ConverterBayerToYCrCb(IQvImage* source, IQvImageBuffer* destination, bool reverse);

}  // namespace QvApi
