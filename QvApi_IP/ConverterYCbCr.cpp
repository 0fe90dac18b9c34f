// SPDX-License-Identifier: MIT
// Handlers from and to luminance and chrominance.
#include "QvApi_IP/ColorInterpolation/ColorInterpolation_YCbCr.h"
#include "QvApi_IP/ColorInterpolation/ToYCbCr.h"
#include "QvApi_IP/QvPixelFormatConverter.h"

namespace QvApi {

void CQvPixelFormatConverter::Converter2YCbCr(IQvImage* source, IQvImageBuffer* destination,
                                              bool reverseY) {
  ConverterBayerToYCrCb(source, destination, reverseY);
}

void CQvPixelFormatConverter::ConverterYUV2MonoOrBGR(IQvImage* source, IQvImageBuffer* destination,
                                                     bool reverseY) {
  IQvImage* target = destination->GetIQvImage();
  const bool isMono = target->GetImagePixelFormat() == PixelFormat::Mono8;
  const auto run = isMono ? &mvTransform_YCrCb2Mono : &mvTransform_YCrCb2BGR;
  run(source, target, reverseY);
}

}  // namespace QvApi
