// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvPixelFormatConverter.h"

#include <Base/GCException.h>

#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvAlignedImage.h"
#include "QvApi_IP/QvFormatName.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvSDKCommon/ImageCopy.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

// The map of handlers. Which pair of formats takes which route stands in PixelFormatRoutes.cpp.
CQvPixelFormatConverter::Handler CQvPixelFormatConverter::HandlerOf(Route route) {
  using Self = CQvPixelFormatConverter;
#define QV_HANDLER(name) \
  case Route::name:      \
    return &Self::name
  switch (route) {
    QV_HANDLER(ConverterViaBGRa8);
    QV_HANDLER(ConverterViaRaw);
    QV_HANDLER(ConverterViaSameBitBGR);
    QV_HANDLER(ConverterViaSameBitRaw);
    QV_HANDLER(ConverterViaUnpack);
    QV_HANDLER(ConverterColorInterporation);
    QV_HANDLER(ConverterBayerBToMonoB);
    QV_HANDLER(ConverterBayerWToMonoW);
    QV_HANDLER(ConverterBGR8ToBayer8);
    QV_HANDLER(ConverterBGR16ToBayer16);
    QV_HANDLER(Converter2YCbCr);
    QV_HANDLER(ConverterYUV2MonoOrBGR);

    case Route::ConverterRawMono8ToRawMono16:
    case Route::ConverterRawMono16ToRawMono16:
    case Route::ConverterRawMono16ToRawMono8:
    case Route::ConverterUnpackedToPacked8:
    case Route::ConverterUnpackedBToGevPacked:
    case Route::ConverterPackedToUnpacked:
    case Route::ConverterGEVPackedToUnpacked:
      return &Self::ConverterRawToRaw;
    case Route::ConverterMonoB2BGRB_RGBB:
    case Route::ConverterMonoB2BGRW_RGBW:
    case Route::ConverterMonoW2BGRW_RGBW:
      return &Self::ConverterMonoToColor;
    case Route::ConverterMonoToPlanar_8_8:
    case Route::ConverterMonoToPlanar_8_16:
    case Route::ConverterMonoToPlanar_16_16:
    case Route::ConverterMonoToPlanar_16_8:
      return &Self::ConverterMonoToPlanar;
    case Route::ConverterBGR8ToMono8:
    case Route::ConverterBGR16ToMono8:
    case Route::ConverterBGR16ToMono16:
      return &Self::ConverterColorToMono;
    case Route::ConverterBGRx8ToBGRx8:
    case Route::ConverterBGRx8ToBGRx16:
    case Route::ConverterBGRx16ToBGRx8:
    case Route::ConverterBGRxWToBGRxW:
    case Route::ConverterBGRx8ToBGR10p:
    case Route::ConverterBGRx16ToBGR10p:
    case Route::ConverterBGR10p32ToBGRx8:
    case Route::ConverterBGR10pToBGRx16:
    case Route::ConverterBGRxToBGRXp_8_16:
    case Route::ConverterBGRxToBGRXp_16_16:
    case Route::ConverterBGRpxToBGRX_16_8:
    case Route::ConverterBGRpxToBGRX_16_16:
      return &Self::ConverterColorToColor;
    case Route::ConverterNonPlanarToPlanar_8_8:
    case Route::ConverterNonPlanarToPlanar_8_16:
    case Route::ConverterNonPlanarToPlanar_16_8:
    case Route::ConverterNonPlanarToPlanar_16_16:
      return &Self::ConverterColorToPlanar;
    case Route::ConverterPlanarToNonPlanar_8_8:
    case Route::ConverterPlanarToNonPlanar_8_16:
    case Route::ConverterPlanarToNonPlanar_16_8:
    case Route::ConverterPlanarToNonPlanar_16_16:
      return &Self::ConverterPlanarToColor;
    case Route::ConverterPlanarToPlanar_8_16:
    case Route::ConverterPlanarToPlanar_16_8:
    case Route::ConverterPlanarToPlanar_16_16:
      return &Self::ConverterPlanarToPlanar;
    case Route::ConverterPolarizationImageBToMonoB:
    case Route::ConverterPolarizationImageBToMonoW:
    case Route::ConverterPolarizationImageWToMonoW:
    case Route::ConverterPolarizationImageWToMonoB:
      return &Self::ConverterPolarizationImageToMono;
    case Route::ConverterPolarizationImageBToBGRB:
    case Route::ConverterPolarizationImageWToBGRW:
      return &Self::ConverterPolarizationImageToBGR;
    case Route::ConverterPolarizationColorImageBToMonoB:
    case Route::ConverterPolarizationColorImageBToMonoW:
    case Route::ConverterPolarizationColorImageWToMonoW:
    case Route::ConverterPolarizationColorImageWToMonoB:
      return &Self::ConverterPolarizationColorImageToMono;
    case Route::ConverterPolarizationColorImageBToBGRB:
    case Route::ConverterPolarizationColorImageWToBGRW:
      return &Self::ConverterPolarizationColorImageToBGR;

    case Route::None:
    case Route::Count:
      break;
  }
#undef QV_HANDLER
  return nullptr;
}

std::span<const Register<CQvPixelFormatConverter>> CQvPixelFormatConverter::RegisterTable() {
  using Self = CQvPixelFormatConverter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_destinationFormat>(0x10),
      Value<&Self::m_reverseY>(0x18),
      Value<&Self::m_method>(0x20),
      Value<&Self::m_gamma>(0x28),
      Minimum<Self, kGamma>(0x30),
      Maximum<Self, kGamma>(0x38),
      Value<&Self::m_destinationNodeLock>(0x40),
      Value<&Self::m_bitExpansionMode>(0x48),
      Value<&Self::m_polarizationMethod>(0x50),
      Value<&Self::m_specifiedAngle>(0x58),
      Value<&Self::m_colorMapType, kFullRead | kChecked>(0x60),
      Value<&Self::m_colorMapInversion, kFullRead | kNotZero>(0x64),
      Value<&Self::m_colorMapPhase, kFullRead | kChecked>(0x68),
      Value<&Self::m_adolpDarkMode, kFullRead | kNotZero>(0x70),
      Value<&Self::m_adolpInversion, kFullRead | kNotZero>(0x74),
      Value<&Self::m_adolpPhase, kFullRead | kChecked>(0x78),
      Value<&Self::m_specifiedAngleMethod, kFullRead>(0x80),
  };
  return m_cRegisters;
}

void CQvPixelFormatConverter::Convert(IQvImage* source, IQvImageBuffer* destination) {
  if (!source) throw INVALID_ARGUMENT_EXCEPTION("IQvImage is NULL.");
  if (!destination) throw INVALID_ARGUMENT_EXCEPTION("IQvImageBuffer is NULL.");
  const bool reverseY = m_reverseY;
  const PixelFormat format = m_destinationFormat;

  IQvImage* present = nullptr;
  try {
    if (destination->HasImageBuffer()) present = destination->GetIQvImage();
  } catch (const GenICam::GenericException&) {
    // A buffer without an image is not the source's.
  }
  if (present == source && format == source->GetImagePixelFormat() && !reverseY) return;
  // An unknown format has no lines that could be compared; mConvert refuses it.
  const bool isKnown = GetIQvPixelFormatInfo(source->GetImagePixelFormat()) != nullptr;
  if (!present || (present != source && !(isKnown && ShareMemory(*present, *source))))
    return mConvert(source, destination, format, reverseY);

  const TemporaryBuffer copy(*this);
  copy->CopyImage(source);
  mConvert(copy->GetIQvImage(), destination, format, reverseY);
}

CQvPixelFormatConverter::Handler CQvPixelFormatConverter::GetConverter(PixelFormat source,
                                                                       PixelFormat destination) {
  if (source == destination) return &CQvPixelFormatConverter::ConverterCopy;
  return HandlerOf(FindRoute(source, destination));
}

void CQvPixelFormatConverter::ThrowNotConvertible(PixelFormat source, PixelFormat destination) {
  throw RUNTIME_EXCEPTION("Converting a pixelformat from  %s to %s is not supported.",
                          FormatName(source).c_str(), FormatName(destination).c_str());
}

void CQvPixelFormatConverter::mConvert(IQvImage* source, IQvImageBuffer* destination,
                                       PixelFormat destinationFormat, bool reverseY) {
  const PixelFormat sourceFormat = source->GetImagePixelFormat();
  const Route route = FindRoute(sourceFormat, destinationFormat);
  const Handler handler = GetConverter(sourceFormat, destinationFormat);
  if (!handler) ThrowNotConvertible(sourceFormat, destinationFormat);
  const auto* pSrcIQvImageInside = dynamic_cast<IQvImageInside*>(source);
  QV_ASSERT((pSrcIQvImageInside) != NULL);
  const std::size_t width = source->GetImageWidth();
  const std::size_t height = source->GetImageHeight();
  if (reverseY) destinationFormat = FlippedFormat(sourceFormat, destinationFormat, height);

  auto* pDestIQvImageInside = dynamic_cast<IQvImageBufferInside*>(destination);
  QV_ASSERT((pDestIQvImageInside) != NULL);
  pDestIQvImageInside->SetSize(width, height, destinationFormat, m_linePitchAlignment);
  // A copy looks at no sample, and each hop comes back here by itself.
  // Those of polarizer sensors choose between hops and walks by themselves.
  if (route == Route::None || IsHop(route) || IsPolarization(route))
    return (this->*handler)(source, destination, reverseY);

  const AlignedImage from(*this, *source);
  const AlignedImage to(*this, *destination->GetIQvImage());
  (this->*handler)(&from.Get(), to.CopyBuffer() ? to.CopyBuffer() : destination, reverseY);
  to.Store();
}

void CQvPixelFormatConverter::ConvertViaTmp(IQvImage* source, IQvImageBuffer* destination,
                                            PixelFormat intermediate, bool reverseY) {
  const PixelFormat destinationFormat = destination->GetIQvImage()->GetImagePixelFormat();
  const TemporaryBuffer temporary(*this);
  mConvert(source, temporary.Get(), intermediate, reverseY);
  mConvert(temporary->GetIQvImage(), destination, destinationFormat, false);
}

void CQvPixelFormatConverter::ConverterCopy(IQvImage* source, IQvImageBuffer* destination,
                                            bool reverseY) {
  CopyImagePixels(*source, *destination->GetIQvImage(), reverseY);
}

}  // namespace QvApi
