// SPDX-License-Identifier: MIT
// The routing map is a table of its own; here stands how many pairs of formats take each way,
// worked out by hand from the sizes of families, and what is odd about some of them.
#include <gtest/gtest.h>

#include <map>

#include "QvApi_IP/PixelFormatRoutes.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;

/// One route stands for all whose handlers differ by formats alone; the tests of the conversions
/// see whether the handler fits.
Route WayOf(Route route) {
  const auto isBetween = [&](Route first, Route last) { return route >= first && route <= last; };
  for (const auto& [first, last] :
       {std::pair{Route::ConverterBayerBToMonoB, Route::ConverterBayerWToMonoW},
        {Route::ConverterBGR8ToBayer8, Route::ConverterBGR16ToBayer16},
        {Route::ConverterRawMono8ToRawMono16, Route::ConverterPlanarToPlanar_16_16},
        {Route::ConverterPolarizationImageBToBGRB, Route::ConverterPolarizationColorImageWToMonoB}})
    if (isBetween(first, last)) return first;
  return route;
}

TEST(Routes, AsManyPairsTakeEachWayAsTheFamiliesGive) {
  // Families by their sizes: Mono8 1, kMonoW 4, kMonoPacked 8; BGRx8 4, BGRxW 9 of which 3 have
  // 16 bits, Planar 4, p32 2, BGRp 4; YUV 18 and 420 1. Of each of 4 phases Bayer has 8 bits once,
  // 4 in words, 4p, 3 deep streams and 2 in three bytes. 16 polarizer mosaics have 8, 10, 12 bits.
  const struct {
    Route way;
    PixelKind from;
    int count;
  } kWays[]{
      {Route::ConverterViaBGRa8, PixelKind::Color, 9 + 2 + 4},
      {Route::ConverterViaBGRa8, PixelKind::YCbCr, 18},
      {Route::ConverterViaRaw, PixelKind::Mono, 4 * 4 + 8 * (4 + 3)},
      // To Mono16; words to bytes and Mono16; 4p to all but 10 bits; deep ones to bytes and Mono16.
      {Route::ConverterViaRaw, PixelKind::Bayer, 4 * (1 + (4 * 7 + 3) + 21 + 5 * 8)},
      {Route::ConverterViaSameBitBGR, PixelKind::Color, 4 * 5 + 2 * (1 + 5 + 4) + 4 * (3 + 3 + 4)},
      // 15 colour formats; from words and packed words less those of the same depth.
      {Route::ConverterViaSameBitBGR, PixelKind::Bayer,
       4 * (15 + (3 * 13 + 12) + 4 * 13) + 3 * 13 + 9},
      {Route::ConverterViaSameBitBGR, PixelKind::YCbCr, 19 * (9 + 4 + 2)},
      {Route::ConverterViaSameBitBGR, PixelKind::PolarizedMono, 8 * (3 * (3 + 2) + 2 * 4)},
      {Route::ConverterViaSameBitBGR, PixelKind::PolarizedBayer, 8 * (3 * (3 + 2) + 2 * 4)},
      {Route::ConverterViaSameBitRaw, PixelKind::Color, 4 * (4 + 8 + 4 * 10) + 6},
      {Route::ConverterViaSameBitRaw, PixelKind::YCbCr, 19},
      {Route::ConverterViaUnpack, PixelKind::Mono, 8 * 4 + 4 * 3 + 2},
      {Route::ConverterViaUnpack, PixelKind::Bayer, 4 * (4 + 1) * 3},
      {Route::ConverterViaUnpack, PixelKind::PolarizedMono, 8 * 2 * (4 + 2 + 3 + 3 + 2)},
      {Route::ConverterViaUnpack, PixelKind::PolarizedBayer, 8 * 2 * (4 + 2 + 3 + 3 + 2)},
      {Route::ConverterColorInterporation, PixelKind::Bayer, 4 * (4 + 4 * 2 + 1)},
      {Route::ConverterBayerBToMonoB, PixelKind::Bayer, 4 * 5},
      {Route::ConverterBGR8ToBayer8, PixelKind::Color, (4 + 9) * 4},
      {Route::ConverterRawMono8ToRawMono16, PixelKind::Mono,
       (4 + 8 + 4 + 9 + 4) + 4 * (4 + 4) + (3 * 9 + 3) + 8 * 5},
      {Route::ConverterRawMono8ToRawMono16, PixelKind::Bayer, 4 * (10 + 4 * 4 + 4 * 5 + 2 * 4)},
      // From bytes, words, planes, p32 and BGRp.
      {Route::ConverterRawMono8ToRawMono16, PixelKind::Color,
       4 * (3 + 9 + 4 + 2 + 4 + 1) + (9 * (8 + 4 + 2 + 4 + 4) + 3 + 2 * 4 + 2 * 2) +
           4 * (4 + 9 + 3) + 2 * (4 + 9) + (4 * (4 + 2) + 2 * 2)},
      {Route::ConverterRawMono8ToRawMono16, PixelKind::PolarizedMono, 8 * (4 + 4 + 2)},
      {Route::ConverterRawMono8ToRawMono16, PixelKind::PolarizedBayer, 8 * (4 + 4 + 2)},
      {Route::Converter2YCbCr, PixelKind::Mono, 5},
      {Route::Converter2YCbCr, PixelKind::Bayer, 4 * 2},
      {Route::Converter2YCbCr, PixelKind::Color, 4 * 19},
      {Route::ConverterYUV2MonoOrBGR, PixelKind::YCbCr, 19 * 5},
      {Route::ConverterPolarizationImageBToBGRB, PixelKind::PolarizedMono, 8 * (6 + 2 * 5)},
      {Route::ConverterPolarizationImageBToBGRB, PixelKind::PolarizedBayer, 8 * (6 + 2 * 5)},
  };
  std::map<std::pair<Route, PixelKind>, int> counts;
  for (const PixelFormatRow& from : kPixelFormats)
    for (const PixelFormatRow& to : kPixelFormats)
      ++counts[{WayOf(FindRoute(from.format, to.format)), from.kind}];
  int sum = 0;
  for (const auto& [way, from, count] : kWays) {
    EXPECT_EQ((counts[{way, from}]), count) << static_cast<int>(way) << static_cast<int>(from);
    sum += count;
  }
  EXPECT_EQ(sum, 4011);
}

TEST(Routes, OddOnesAndUnknownCodes) {
  using enum EQvPixelFormatNamingConvention_t;
  for (PixelFormat to : {BGR10, BGRa10, RGB10p32, CBGR10p32}) {
    EXPECT_EQ(FindRoute(BayerGR12Packed, to), Route::None) << NameOf(to);
    for (PixelFormat from : {BayerRG12Packed, BayerGB12Packed, BayerBG12Packed})
      EXPECT_EQ(FindRoute(from, to), Route::ConverterViaSameBitBGR) << NameOf(to);
  }
  for (const char* name : {"Mono8s", "BGRa10p", "BGRa12p", "Mono32"})
    for (const PixelFormatRow& row : kPixelFormats) {
      EXPECT_EQ(FindRoute(FormatOf(name), row.format), Route::None) << name << row.name;
      EXPECT_EQ(FindRoute(row.format, FormatOf(name)), Route::None) << name << row.name;
    }
  for (unsigned code : {0U, 1U, 0x01080003U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    const auto unknown = static_cast<PixelFormat>(code);
    EXPECT_EQ(FindRoute(unknown, BGR8), Route::None) << code;
    EXPECT_EQ(FindRoute(Mono8, unknown), Route::None) << code;
  }
}

}  // namespace
}  // namespace QvApi
