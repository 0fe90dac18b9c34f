// SPDX-License-Identifier: MIT
#include "QvApi_IP/PixelFormatRoutes.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "QvApi_TL/PixelFormatFamilies.h"

namespace QvApi {
namespace {

using namespace Families;

constexpr std::size_t kFormatCount = kPixelFormats.size();

/// What must hold between source and destination beside their families.
using Relation = bool (*)(const PixelFormatRow& source, const PixelFormatRow& destination);

constexpr bool Any(const PixelFormatRow&, const PixelFormatRow&) { return true; }
constexpr bool Another(const PixelFormatRow& s, const PixelFormatRow& d) {
  return s.format != d.format;
}
constexpr bool SamePhase(const PixelFormatRow& s, const PixelFormatRow& d) {
  return s.phase == d.phase && s.format != d.format;
}
constexpr bool SameDepth(const PixelFormatRow& s, const PixelFormatRow& d) {
  return s.depth == d.depth;
}
/// The arrangement of a polarizer mosaic stays.
constexpr bool SamePattern(const PixelFormatRow& s, const PixelFormatRow& d) {
  return s.kind == d.kind && s.polarizerPattern == d.polarizerPattern;
}
constexpr bool SamePatternAndDepth(const PixelFormatRow& s, const PixelFormatRow& d) {
  return SamePattern(s, d) && SameDepth(s, d);
}

/// Routes every source to every destination in relation with it. Where rules overlap, the first one
/// holds; so a rule may speak of "the rest" by standing behind.
struct Rule {
  FormatList sources;
  FormatList destinations;
  Relation relation;
  Route route;
};

constexpr FormatList kMonoUnpacked = FormatList{Mono8} + kMonoW;
constexpr FormatList kBayerUnpacked = kBayer8 + kBayerW;
constexpr FormatList kBayerDeepLsb = kBayerLsb - kBayer4p;
constexpr FormatList kBayerDeepPacked = kBayerDeepLsb + kBayerGev;
constexpr FormatList kMonoDeepPacked = kMonoPacked - FormatList{Mono1p, Mono2p, Mono4p};
constexpr FormatList kBGRxAny = kBGRx8 + kBGRxW;
constexpr FormatList kYCbCrOfBayer = k420 + YCbCr422_8;
constexpr FormatList kPlanarOfPolarized{RGB16_Planar, RGB8_Planar};

constexpr FormatList kPolarizedMono8 = kPolarized8 - kPolarizedBayer;
constexpr FormatList kPolarizedMonoW = kPolarizedW - kPolarizedBayer;
constexpr FormatList kPolarizedBayer8 = kPolarized8 - kPolarizedMono;
constexpr FormatList kPolarizedBayerW = kPolarizedW - kPolarizedMono;

constexpr Rule kMonoRules[] = {
    {Mono8, kMonoW, Any, Route::ConverterRawMono8ToRawMono16},
    {Mono8, kMonoLsb, Any, Route::ConverterUnpackedToPacked8},
    {Mono8, kMonoGev, Any, Route::ConverterUnpackedBToGevPacked},
    {Mono8, kBGRx8, Any, Route::ConverterMonoB2BGRB_RGBB},
    {Mono8, kBGRxW, Any, Route::ConverterMonoB2BGRW_RGBW},
    {Mono8, RGB8_Planar, Any, Route::ConverterMonoToPlanar_8_8},
    {Mono8, kPlanarW, Any, Route::ConverterMonoToPlanar_8_16},
    {Mono8, k420, Any, Route::Converter2YCbCr},
    {kMonoW, kMonoW, Another, Route::ConverterRawMono16ToRawMono16},
    {kMonoW, Mono8, Any, Route::ConverterRawMono16ToRawMono8},
    {kMonoW - Mono16, kBGRxW, Any, Route::ConverterMonoW2BGRW_RGBW},
    {Mono16, kBGRx16, Any, Route::ConverterMonoW2BGRW_RGBW},
    {kMonoW, kBGRx8, Any, Route::ConverterViaRaw},
    {kMonoW, kPlanarW, Any, Route::ConverterMonoToPlanar_16_16},
    {kMonoW, RGB8_Planar, Any, Route::ConverterMonoToPlanar_16_8},
    {kMonoW, k420, Any, Route::Converter2YCbCr},
    {kMonoLsb, kMonoUnpacked, Any, Route::ConverterPackedToUnpacked},
    {kMonoGev, kMonoUnpacked, Any, Route::ConverterGEVPackedToUnpacked},
    {kMonoPacked, kBGRx8 + kBGRx16, Any, Route::ConverterViaRaw},
    {kMonoPacked, kPlanar, Any, Route::ConverterViaUnpack},
    {kMonoDeepPacked, kBGRW, SameDepth, Route::ConverterViaUnpack},
    {kMonoDeepPacked - Mono14p, k420, Any, Route::ConverterViaUnpack},
};

constexpr Rule kBayerRules[] = {
    {kBayer8, kBayerW, SamePhase, Route::ConverterRawMono8ToRawMono16},
    {kBayer8, kBayerLsb, SamePhase, Route::ConverterUnpackedToPacked8},
    {kBayer8, kBayerGev, SamePhase, Route::ConverterUnpackedBToGevPacked},
    {kBayer8, Mono8, Any, Route::ConverterBayerBToMonoB},
    {kBayer8, Mono16, Any, Route::ConverterViaRaw},
    {kBayer8, kBGRx8, Any, Route::ConverterColorInterporation},
    {kBayer8, kYCbCrOfBayer, Any, Route::Converter2YCbCr},
    {kBayer8, kBGRxW + kPlanar + kP32, Any, Route::ConverterViaSameBitBGR},
    {kBayerW, kBayerW, SamePhase, Route::ConverterRawMono16ToRawMono16},
    {kBayerW, kBayer8, SamePhase, Route::ConverterRawMono16ToRawMono8},
    {kBayerW, kMonoW, SameDepth, Route::ConverterBayerWToMonoW},
    {kBayerW, kBGRxW, SameDepth, Route::ConverterColorInterporation},
    {kBayerW, kBGRx8 + Mono8 + Mono16 + kYCbCrOfBayer, Any, Route::ConverterViaRaw},
    {kBayerW, kBGRxW + kPlanar + kP32, Any, Route::ConverterViaSameBitBGR},
    {kBayer4p, kBayerUnpacked, SamePhase, Route::ConverterPackedToUnpacked},
    {kBayer4p,
     kBGRx8 + (kBGRxW - FormatList{BGR10, BGRa10}) + Mono8 + Mono16 + kPlanar + kP32 +
         kYCbCrOfBayer,
     Any, Route::ConverterViaRaw},
    {kBayerDeepLsb, kBayerUnpacked, SamePhase, Route::ConverterPackedToUnpacked},
    {kBayerGev, kBayerUnpacked - FormatList{BayerGR14, BayerRG14, BayerGB14, BayerBG14}, SamePhase,
     Route::ConverterGEVPackedToUnpacked},
    {kBayerDeepPacked, kBGRW + kMonoW, SameDepth, Route::ConverterViaUnpack},
    {kBayerDeepPacked, kBGRx8 + Mono8 + Mono16 + kYCbCrOfBayer, Any, Route::ConverterViaRaw},
    // BayerGR12Packed has no way to the 10-bit colour formats, where the other phases have one.
    {kBayerDeepPacked - BayerGR12Packed, kBGRxW + kPlanar + kP32, Any,
     Route::ConverterViaSameBitBGR},
    {BayerGR12Packed, (kBGRxW - FormatList{BGR10, BGRa10}) + kPlanar, Any,
     Route::ConverterViaSameBitBGR},
};

constexpr Rule kColorRules[] = {
    {kBGRx8, kBGRx8, Another, Route::ConverterBGRx8ToBGRx8},
    {kBGRx8, kBGRxW, Any, Route::ConverterBGRx8ToBGRx16},
    {kBGRx8, kBGRp, Any, Route::ConverterBGRxToBGRXp_8_16},
    {kBGRx8, kP32, Any, Route::ConverterBGRx8ToBGR10p},
    {kBGRx8, RGB8_Planar, Any, Route::ConverterNonPlanarToPlanar_8_8},
    {kBGRx8, kPlanarW, Any, Route::ConverterNonPlanarToPlanar_8_16},
    {kBGRx8, Mono8, Any, Route::ConverterBGR8ToMono8},
    {kBGRx8, kBayer8, Any, Route::ConverterBGR8ToBayer8},
    {kBGRx8, kMonoW + kMonoPacked + (kBayer - kBayer8), Any, Route::ConverterViaSameBitRaw},
    {kBGRx8, k420 + kYUV, Any, Route::Converter2YCbCr},
    {kBGRxW, kBGRxW, Another, Route::ConverterBGRxWToBGRxW},
    {kBGRxW, kBGRx8, Any, Route::ConverterBGRx16ToBGRx8},
    {kBGRxW, kP32, Any, Route::ConverterBGRx16ToBGR10p},
    {{BGR10, BGRa10}, kBGRp, Any, Route::ConverterBGRxToBGRXp_16_16},
    {{BGR12, BGRa12}, {BGR12p, RGB12p}, Any, Route::ConverterBGRxToBGRXp_16_16},
    {kBGRxW, Mono8, Any, Route::ConverterBGR16ToMono8},
    {kBGRxW, kMonoW - Mono16, Any, Route::ConverterBGR16ToMono16},
    {kBGRx16, Mono16, Any, Route::ConverterBGR16ToMono16},
    {kBGRxW, Mono16, Any, Route::ConverterViaSameBitRaw},
    {kBGRxW, kBayerW, SameDepth, Route::ConverterBGR16ToBayer16},
    {kBGRxW, RGB8_Planar, Any, Route::ConverterNonPlanarToPlanar_16_8},
    {kBGRxW, kPlanarW, Any, Route::ConverterNonPlanarToPlanar_16_16},
    {kBGRxW, k420, Any, Route::ConverterViaBGRa8},
    {RGB8_Planar, kBGRx8, Any, Route::ConverterPlanarToNonPlanar_8_8},
    {RGB8_Planar, kBGRxW, Any, Route::ConverterPlanarToNonPlanar_8_16},
    {RGB8_Planar, kPlanarW, Any, Route::ConverterPlanarToPlanar_8_16},
    {kPlanarW, kBGRx8, Any, Route::ConverterPlanarToNonPlanar_16_8},
    {kPlanarW, kBGRxW, Any, Route::ConverterPlanarToNonPlanar_16_16},
    {kPlanarW, kPlanarW, Another, Route::ConverterPlanarToPlanar_16_16},
    {kPlanarW, RGB8_Planar, Any, Route::ConverterPlanarToPlanar_16_8},
    {kPlanar, kP32 + k420 + Mono8 + Mono16, Any, Route::ConverterViaSameBitBGR},
    {kP32, kBGRx8, Any, Route::ConverterBGR10p32ToBGRx8},
    {kP32, kBGRxW, Any, Route::ConverterBGR10pToBGRx16},
    {kP32, kP32, Another, Route::ConverterViaSameBitBGR},
    {kP32, kMonoUnpacked + kPlanar, Any, Route::ConverterViaSameBitBGR},
    {kP32, k420, Any, Route::ConverterViaBGRa8},
    {{BGR10p, RGB10p}, {BGR10, BGRa10}, Any, Route::ConverterBGRpxToBGRX_16_16},
    {{BGR12p, RGB12p}, {BGR10, BGR12, BGRa10, BGRa12}, Any, Route::ConverterBGRpxToBGRX_16_16},
    {kBGRp, kBGRx8, Any, Route::ConverterBGRpxToBGRX_16_8},
    {kBGRp, kMonoW, SameDepth, Route::ConverterViaSameBitBGR},
    {kBGRp, kBGRx16 + Mono8 + Mono16 + kPlanar, Any, Route::ConverterViaSameBitBGR},
    {kBGRp, k420, Any, Route::ConverterViaBGRa8},
    {kYUV + k420, kBGRx8 + Mono8, Any, Route::ConverterYUV2MonoOrBGR},
    {kYUV + k420, kBGRxW + kPlanar + kP32, Any, Route::ConverterViaSameBitBGR},
    {kYUV + k420, Mono16, Any, Route::ConverterViaSameBitRaw},
    {kYUV, k420, Any, Route::ConverterViaBGRa8},
};

constexpr Rule kPolarizationRules[] = {
    {kPolarizedMono8, kBGRx8, Any, Route::ConverterPolarizationImageBToBGRB},
    {kPolarizedMono8, Mono8, Any, Route::ConverterPolarizationImageBToMonoB},
    {kPolarizedMono8, Mono16, Any, Route::ConverterPolarizationImageBToMonoW},
    {kPolarizedMonoW, kBGRW, SameDepth, Route::ConverterPolarizationImageWToBGRW},
    {kPolarizedMonoW, kMonoW, SameDepth, Route::ConverterPolarizationImageWToMonoW},
    {kPolarizedMonoW, Mono16, Any, Route::ConverterPolarizationImageWToMonoW},
    {kPolarizedMonoW, Mono8, Any, Route::ConverterPolarizationImageWToMonoB},
    {kPolarizedBayer8, kBGRx8, Any, Route::ConverterPolarizationColorImageBToBGRB},
    {kPolarizedBayer8, Mono8, Any, Route::ConverterPolarizationColorImageBToMonoB},
    {kPolarizedBayer8, Mono16, Any, Route::ConverterPolarizationColorImageBToMonoW},
    {kPolarizedBayerW, kBGRW, SameDepth, Route::ConverterPolarizationColorImageWToBGRW},
    {kPolarizedBayerW, kMonoW, SameDepth, Route::ConverterPolarizationColorImageWToMonoW},
    {kPolarizedBayerW, Mono16, Any, Route::ConverterPolarizationColorImageWToMonoW},
    {kPolarizedBayerW, Mono8, Any, Route::ConverterPolarizationColorImageWToMonoB},
    {kPolarized8, kPolarizedW, SamePattern, Route::ConverterRawMono8ToRawMono16},
    {kPolarized8, kPolarizedLsb, SamePattern, Route::ConverterUnpackedToPacked8},
    {kPolarizedW, kPolarized8, SamePattern, Route::ConverterRawMono16ToRawMono8},
    {kPolarizedLsb, kPolarized8, SamePattern, Route::ConverterPackedToUnpacked},
    {kPolarizedLsb, kPolarizedW, SamePatternAndDepth, Route::ConverterPackedToUnpacked},
    {kPolarized8 + kPolarizedW, kBGRx16 + kPlanarOfPolarized, Any, Route::ConverterViaSameBitBGR},
    {kPolarizedW, kBGRx8, Any, Route::ConverterViaSameBitBGR},
    {kPolarizedLsb, kBGRx8 + kBGRx16 + Mono8 + Mono16 + kPlanarOfPolarized, Any,
     Route::ConverterViaUnpack},
    {kPolarizedLsb, kBGRW + kMonoW, SameDepth, Route::ConverterViaUnpack},
};

/// All formats by ascending code, so that a code is found by bisection.
constexpr auto kCodes = [] {
  std::array<PixelFormat, kFormatCount> codes{};
  for (std::size_t i = 0; i < kFormatCount; ++i) codes[i] = kPixelFormats[i].format;
  std::sort(codes.begin(), codes.end());
  return codes;
}();

/// Place of a format in kCodes; kFormatCount for an unknown code.
constexpr std::size_t IndexOf(PixelFormat format) {
  const auto found = std::lower_bound(kCodes.begin(), kCodes.end(), format);
  if (found == kCodes.end() || *found != format) return kFormatCount;
  return static_cast<std::size_t>(found - kCodes.begin());
}

using RouteMap = std::array<std::array<Route, kFormatCount>, kFormatCount>;

constexpr void Apply(const Rule& rule, RouteMap& map) {
  for (PixelFormat source : rule.sources) {
    const PixelFormatRow& sourceRow = *FindPixelFormat(source);
    auto& line = map[IndexOf(source)];
    for (PixelFormat destination : rule.destinations) {
      Route& route = line[IndexOf(destination)];
      if (route == Route::None && rule.relation(sourceRow, *FindPixelFormat(destination)))
        route = rule.route;
    }
  }
}

constexpr RouteMap kRoutes = [] {
  RouteMap map{};
  for (const Rule& rule : kMonoRules) Apply(rule, map);
  for (const Rule& rule : kBayerRules) Apply(rule, map);
  for (const Rule& rule : kColorRules) Apply(rule, map);
  for (const Rule& rule : kPolarizationRules) Apply(rule, map);
  return map;
}();

struct Counts {
  std::size_t pairs = 0, sources = 0, destinations = 0;
};

constexpr Counts kCounts = [] {
  Counts counts;
  for (std::size_t i = 0; i < kFormatCount; ++i) {
    bool isSource = false, isDestination = false;
    for (std::size_t j = 0; j < kFormatCount; ++j) {
      if (kRoutes[i][j] != Route::None) isSource = true, ++counts.pairs;
      if (kRoutes[j][i] != Route::None) isDestination = true;
    }
    counts.sources += isSource;
    counts.destinations += isDestination;
  }
  return counts;
}();

static_assert(kCounts.pairs == 4011);
static_assert(kCounts.sources == 179);
static_assert(kCounts.destinations == 179);

}  // namespace

Route FindRoute(PixelFormat source, PixelFormat destination) {
  const std::size_t from = IndexOf(source);
  const std::size_t to = IndexOf(destination);
  return from < kFormatCount && to < kFormatCount ? kRoutes[from][to] : Route::None;
}

}  // namespace QvApi
