// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// The handlers of CQvPixelFormatConverter that a pair of formats may be routed to.
enum class Route : std::uint8_t {
  None,

  // Hops through an intermediate format.
  ConverterViaBGRa8,
  ConverterViaRaw,
  ConverterViaSameBitBGR,
  ConverterViaSameBitRaw,
  ConverterViaUnpack,

  // Mosaics.
  ConverterColorInterporation,
  ConverterBayerBToMonoB,
  ConverterBayerWToMonoW,
  ConverterBGR8ToBayer8,
  ConverterBGR16ToBayer16,

  // Depth and packing of single components.
  ConverterRawMono8ToRawMono16,
  ConverterRawMono16ToRawMono16,
  ConverterRawMono16ToRawMono8,
  ConverterUnpackedToPacked8,
  ConverterUnpackedBToGevPacked,
  ConverterPackedToUnpacked,
  ConverterGEVPackedToUnpacked,

  // Between mono and colour.
  ConverterMonoB2BGRB_RGBB,
  ConverterMonoB2BGRW_RGBW,
  ConverterMonoW2BGRW_RGBW,
  ConverterMonoToPlanar_8_8,
  ConverterMonoToPlanar_8_16,
  ConverterMonoToPlanar_16_16,
  ConverterMonoToPlanar_16_8,
  ConverterBGR8ToMono8,
  ConverterBGR16ToMono8,
  ConverterBGR16ToMono16,

  // Between layouts of colour.
  ConverterBGRx8ToBGRx8,
  ConverterBGRx8ToBGRx16,
  ConverterBGRx16ToBGRx8,
  ConverterBGRxWToBGRxW,
  ConverterBGRx8ToBGR10p,
  ConverterBGRx16ToBGR10p,
  ConverterBGR10p32ToBGRx8,
  ConverterBGR10pToBGRx16,
  ConverterBGRxToBGRXp_8_16,
  ConverterBGRxToBGRXp_16_16,
  ConverterBGRpxToBGRX_16_8,
  ConverterBGRpxToBGRX_16_16,
  ConverterNonPlanarToPlanar_8_8,
  ConverterNonPlanarToPlanar_8_16,
  ConverterNonPlanarToPlanar_16_8,
  ConverterNonPlanarToPlanar_16_16,
  ConverterPlanarToNonPlanar_8_8,
  ConverterPlanarToNonPlanar_8_16,
  ConverterPlanarToNonPlanar_16_8,
  ConverterPlanarToNonPlanar_16_16,
  ConverterPlanarToPlanar_8_16,
  ConverterPlanarToPlanar_16_8,
  ConverterPlanarToPlanar_16_16,

  // Luminance and chrominance.
  Converter2YCbCr,
  ConverterYUV2MonoOrBGR,

  // Polarizer sensors, mono and colour.
  ConverterPolarizationImageBToBGRB,
  ConverterPolarizationImageBToMonoB,
  ConverterPolarizationImageBToMonoW,
  ConverterPolarizationImageWToBGRW,
  ConverterPolarizationImageWToMonoW,
  ConverterPolarizationImageWToMonoB,
  ConverterPolarizationColorImageBToBGRB,
  ConverterPolarizationColorImageBToMonoB,
  ConverterPolarizationColorImageBToMonoW,
  ConverterPolarizationColorImageWToBGRW,
  ConverterPolarizationColorImageWToMonoW,
  ConverterPolarizationColorImageWToMonoB,

  Count,
};

/// The route leads through an intermediate format.
constexpr bool IsHop(Route route) {
  return route >= Route::ConverterViaBGRa8 && route <= Route::ConverterViaUnpack;
}

/// The route starts at a polarizer sensor, and the method chosen decides what happens.
constexpr bool IsPolarization(Route route) {
  return route >= Route::ConverterPolarizationImageBToBGRB && route < Route::Count;
}

/// The route from one format to another, or Route::None. Constant time; safe from any thread.
Route FindRoute(PixelFormat source, PixelFormat destination);

}  // namespace QvApi
