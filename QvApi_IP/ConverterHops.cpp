// SPDX-License-Identifier: MIT
// Handlers that reach their destination through an intermediate format.
#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {
namespace {

BayerPhase PhaseOf(const IQvImage& image) {
  return static_cast<BayerPhase>(FormatInfo(image.GetImagePixelFormat()).GetPixelColorFilter(0, 0));
}

std::size_t DepthOf(const IQvImage& image) {
  return FormatInfo(image.GetImagePixelFormat()).GetEachComponentEffectiveBitCount();
}

}  // namespace

void CQvPixelFormatConverter::ConverterViaBGRa8(IQvImage* source, IQvImageBuffer* destination,
                                                bool reverseY) {
  ConvertViaTmp(source, destination, PixelFormat::BGRa8, reverseY);
}

void CQvPixelFormatConverter::ConverterViaSameBitBGR(IQvImage* source, IQvImageBuffer* destination,
                                                     bool reverseY) {
  const PixelFormat intermediate = FindBGRa(DepthOf(*source));
  if (intermediate == PixelFormat::None) QV_ASSERT(false);
  ConvertViaTmp(source, destination, intermediate, reverseY);
}

void CQvPixelFormatConverter::ConverterViaRaw(IQvImage* source, IQvImageBuffer* destination,
                                              bool reverseY) {
  const std::size_t depth = DepthOf(*destination->GetIQvImage()) > 8 ? 16 : 8;
  const PixelFormat intermediate = FindRawFormat(PhaseOf(*source), depth, Storage::Unpacked);
  if (intermediate == PixelFormat::None) QV_ASSERT(false);
  ConvertViaTmp(source, destination, intermediate, reverseY);
}

void CQvPixelFormatConverter::ConverterViaSameBitRaw(IQvImage* source, IQvImageBuffer* destination,
                                                     bool reverseY) {
  const IQvImage& target = *destination->GetIQvImage();
  PixelFormat intermediate = FindRawFormat(PhaseOf(target), DepthOf(*source), Storage::Unpacked);
  if (intermediate == PixelFormat::None) intermediate = target.GetImagePixelFormat();
  ConvertViaTmp(source, destination, intermediate, reverseY);
}

void CQvPixelFormatConverter::ConverterViaUnpack(IQvImage* source, IQvImageBuffer* destination,
                                                 bool reverseY) {
  const PixelFormat intermediate = UnpackedFormat(source->GetImagePixelFormat());
  if (intermediate == PixelFormat::None) QV_ASSERT(false);
  ConvertViaTmp(source, destination, intermediate, reverseY);
}

}  // namespace QvApi
