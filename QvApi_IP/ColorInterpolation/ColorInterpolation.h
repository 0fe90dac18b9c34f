// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvSDKCommon/IQvImage.h"

namespace QvApi {

/// Turns a Bayer mosaic into a colour image of the same size and depth.
///
/// @tparam X  sample type of both images, unsigned char or unsigned short
/// @param destination  interleaved colour of three or four components; the fourth keeps its value
/// @param reverse      writes the image upside down
/// @throws GenICam::RuntimeException  "Not supported image size %u x %u" for a side of 1
template <class X>
void ColorInterporation(const IQvImage& source, const IQvImage& destination, bool reverse,
                        EQvBayerInterpolationMethod_t method);

extern template void ColorInterporation<unsigned char>(const IQvImage&, const IQvImage&, bool,
                                                       EQvBayerInterpolationMethod_t);
extern template void ColorInterporation<unsigned short>(const IQvImage&, const IQvImage&, bool,
                                                        EQvBayerInterpolationMethod_t);

/// The same with the samples that the source's format has.
void ColorInterporation(const IQvImage& source, const IQvImage& destination, bool reverse,
                        EQvBayerInterpolationMethod_t method);

}  // namespace QvApi
