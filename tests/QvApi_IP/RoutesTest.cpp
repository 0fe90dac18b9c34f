// SPDX-License-Identifier: MIT
// The routing map, written down a second time: as rows of names with braces and variables, which
// are expanded by text alone and know nothing of the format table or of families.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "QvApi_IP/PixelFormatRoutes.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using Testing::FormatOf;

/// Formats are patterns with {a,b,...} and [Set], several of them parted by blanks. <P> and <N>
/// stand for the same text in source and destinations; the row counts for each of their values.
struct Row {
  const char* sources;
  const char* destinations;
  Route route;
  const char* variable = "";  ///< Such as "N=10,12".
};

const std::map<std::string, std::string> kSets{
    {"BGRx8", "{BGR,BGRa,RGB,RGBa}8"},
    {"BGRx16", "BGR16 BGRa16 RGB16"},
    {"BGRxW", "{BGR,BGRa}{10,12,14,16} RGB16"},
    {"PlanarW", "RGB{10,12,16}_Planar"},
    {"Planar", "RGB{8,10,12,16}_Planar"},
    {"p32", "{CBGR,RGB}10p32"},
    {"BGRp", "{BGR,RGB}{10,12}p"},
    {"420", "CYCbCr420_8_YY_Cb_Cr_Planar"},
    {"YUV",
     "YUV411_8_UYYVYY {YCbCr,YCbCr601_,YCbCr709_}411_8_CbYYCrYY YCbCr411_8 YUV422_8_UYVY YUV422_8 "
     "{YCbCr,YCbCr601_,YCbCr709_}422_8 {YCbCr,YCbCr601_,YCbCr709_}422_8_CbYCrY YUV8_UYV "
     "{YCbCr,YCbCr601_,YCbCr709_}8_CbYCr YCbCr8"},
    {"MonoW", "Mono{10,12,14,16}"},
    {"MonoBits", "Mono{1,2,4,10,12,14}p"},
    {"MonoPacked", "Mono{1,2,4,10,12,14}p Mono{10,12}Packed"},
    {"RawFromBGR8",
     "[MonoW] [MonoPacked] Bayer{RG,GR,GB,BG}{10,12,14,16,4p,10p,12p,14p}"
     " Bayer{RG,GR,GB,BG}{10,12}Packed"},
    {"Tile", "{,X,Y,XY,C,XC,YC,XYC}"},
};

const char* const kPhases = "P=RG,GR,GB,BG";
const char* const kTiles = "P=,X,Y,XY,C,XC,YC,XYC";

// clang-format off
const Row kRows[] = {
    // Mono.
    {"Mono8", "[MonoW]", Route::ConverterRawMono8ToRawMono16},
    {"Mono8", "[MonoBits]", Route::ConverterUnpackedToPacked8},
    {"Mono8", "Mono{10,12}Packed", Route::ConverterUnpackedBToGevPacked},
    {"Mono8", "[BGRx8]", Route::ConverterMonoB2BGRB_RGBB},
    {"Mono8", "[BGRxW]", Route::ConverterMonoB2BGRW_RGBW},
    {"Mono8", "RGB8_Planar", Route::ConverterMonoToPlanar_8_8},
    {"Mono8", "[PlanarW]", Route::ConverterMonoToPlanar_8_16},
    {"Mono8", "[420]", Route::Converter2YCbCr},
    {"[MonoW]", "[MonoW]", Route::ConverterRawMono16ToRawMono16},
    {"[MonoW]", "Mono8", Route::ConverterRawMono16ToRawMono8},
    {"Mono{10,12,14}", "[BGRxW]", Route::ConverterMonoW2BGRW_RGBW},
    {"Mono16", "[BGRx16]", Route::ConverterMonoW2BGRW_RGBW},
    {"[MonoW]", "[BGRx8]", Route::ConverterViaRaw},
    {"[MonoW]", "[PlanarW]", Route::ConverterMonoToPlanar_16_16},
    {"[MonoW]", "RGB8_Planar", Route::ConverterMonoToPlanar_16_8},
    {"[MonoW]", "[420]", Route::Converter2YCbCr},
    {"[MonoBits]", "Mono8 [MonoW]", Route::ConverterPackedToUnpacked},
    {"Mono{10,12}Packed", "Mono8 [MonoW]", Route::ConverterGEVPackedToUnpacked},
    {"[MonoPacked]", "[BGRx8] [BGRx16]", Route::ConverterViaRaw},
    {"[MonoPacked]", "[Planar]", Route::ConverterViaUnpack},
    {"Mono<N>{p,Packed}", "BGR{,a}<N>", Route::ConverterViaUnpack, "N=10,12"},
    {"Mono14p", "BGR{,a}14", Route::ConverterViaUnpack},
    {"Mono{10,12}{p,Packed}", "[420]", Route::ConverterViaUnpack},

    // Bayer, bytes.
    {"Bayer<P>8", "Bayer<P>{10,12,14,16}", Route::ConverterRawMono8ToRawMono16, kPhases},
    {"Bayer<P>8", "Bayer<P>{4,10,12,14}p", Route::ConverterUnpackedToPacked8, kPhases},
    {"Bayer<P>8", "Bayer<P>{10,12}Packed", Route::ConverterUnpackedBToGevPacked, kPhases},
    {"Bayer<P>8", "Mono8", Route::ConverterBayerBToMonoB, kPhases},
    {"Bayer<P>8", "Mono16", Route::ConverterViaRaw, kPhases},
    {"Bayer<P>8", "[BGRx8]", Route::ConverterColorInterporation, kPhases},
    {"Bayer<P>8", "[420] YCbCr422_8", Route::Converter2YCbCr, kPhases},
    {"Bayer<P>8", "[BGRxW] [Planar] [p32]", Route::ConverterViaSameBitBGR, kPhases},
    // Bayer, words.
    {"Bayer<P>{10,12,14,16}", "Bayer<P>{10,12,14,16}", Route::ConverterRawMono16ToRawMono16, kPhases},
    {"Bayer<P>{10,12,14,16}", "Bayer<P>8", Route::ConverterRawMono16ToRawMono8, kPhases},
    {"Bayer{RG,GR,GB,BG}<N>", "Mono<N>", Route::ConverterBayerWToMonoW, "N=10,12,14,16"},
    {"Bayer{RG,GR,GB,BG}<N>", "BGR{,a}<N>", Route::ConverterColorInterporation, "N=10,12,14,16"},
    {"Bayer{RG,GR,GB,BG}16", "RGB16", Route::ConverterColorInterporation},
    {"Bayer{RG,GR,GB,BG}{10,12,14,16}", "[BGRx8] Mono8 [420] YCbCr422_8", Route::ConverterViaRaw},
    {"Bayer{RG,GR,GB,BG}{10,12,14}", "Mono16", Route::ConverterViaRaw},
    {"Bayer{RG,GR,GB,BG}{10,12,14,16}", "[BGRxW] [Planar] [p32]", Route::ConverterViaSameBitBGR},
    // Bayer, packed.
    {"Bayer<P>4p", "Bayer<P>{8,10,12,14,16}", Route::ConverterPackedToUnpacked, kPhases},
    {"Bayer{RG,GR,GB,BG}4p",
     "[BGRx8] BGR{12,14,16} BGRa{12,14,16} RGB16 Mono8 Mono16 [Planar] [p32] [420] YCbCr422_8",
     Route::ConverterViaRaw},
    {"Bayer<P>{10,12,14}p", "Bayer<P>{8,10,12,14,16}", Route::ConverterPackedToUnpacked, kPhases},
    {"Bayer<P>{10,12}Packed", "Bayer<P>{8,10,12,16}", Route::ConverterGEVPackedToUnpacked, kPhases},
    {"Bayer{RG,GR,GB,BG}<N>{p,Packed}", "BGR{,a}<N> Mono<N>", Route::ConverterViaUnpack, "N=10,12"},
    {"Bayer{RG,GR,GB,BG}14p", "BGR{,a}14 Mono14", Route::ConverterViaUnpack},
    {"Bayer{RG,GR,GB,BG}{10p,12p,14p,10Packed,12Packed}",
     "[BGRx8] Mono8 Mono16 [420] YCbCr422_8", Route::ConverterViaRaw},
    {"Bayer{RG,GR,GB,BG}{10p,12p,14p,10Packed}", "[BGRxW] [Planar] [p32]",
     Route::ConverterViaSameBitBGR},
    {"Bayer{RG,GB,BG}12Packed", "[BGRxW] [Planar] [p32]", Route::ConverterViaSameBitBGR},
    {"BayerGR12Packed", "{BGR,BGRa}{12,14,16} RGB16 [Planar]", Route::ConverterViaSameBitBGR},

    // Colour, bytes.
    {"[BGRx8]", "[BGRx8]", Route::ConverterBGRx8ToBGRx8},
    {"[BGRx8]", "[BGRxW]", Route::ConverterBGRx8ToBGRx16},
    {"[BGRx8]", "[BGRp]", Route::ConverterBGRxToBGRXp_8_16},
    {"[BGRx8]", "[p32]", Route::ConverterBGRx8ToBGR10p},
    {"[BGRx8]", "RGB8_Planar", Route::ConverterNonPlanarToPlanar_8_8},
    {"[BGRx8]", "[PlanarW]", Route::ConverterNonPlanarToPlanar_8_16},
    {"[BGRx8]", "Mono8", Route::ConverterBGR8ToMono8},
    {"[BGRx8]", "Bayer{RG,GR,GB,BG}8", Route::ConverterBGR8ToBayer8},
    {"[BGRx8]", "[RawFromBGR8]", Route::ConverterViaSameBitRaw},
    {"[BGRx8]", "[420] [YUV]", Route::Converter2YCbCr},
    // Colour, words.
    {"[BGRxW]", "[BGRxW]", Route::ConverterBGRxWToBGRxW},
    {"[BGRxW]", "[BGRx8]", Route::ConverterBGRx16ToBGRx8},
    {"[BGRxW]", "[p32]", Route::ConverterBGRx16ToBGR10p},
    {"BGR{,a}10", "[BGRp]", Route::ConverterBGRxToBGRXp_16_16},
    {"BGR{,a}12", "{BGR,RGB}12p", Route::ConverterBGRxToBGRXp_16_16},
    {"[BGRxW]", "Mono8", Route::ConverterBGR16ToMono8},
    {"[BGRxW]", "Mono{10,12,14}", Route::ConverterBGR16ToMono16},
    {"[BGRx16]", "Mono16", Route::ConverterBGR16ToMono16},
    {"BGR{,a}{10,12,14}", "Mono16", Route::ConverterViaSameBitRaw},
    {"BGR{,a}<N>", "Bayer{RG,GR,GB,BG}<N>", Route::ConverterBGR16ToBayer16, "N=10,12,14,16"},
    {"RGB16", "Bayer{RG,GR,GB,BG}16", Route::ConverterBGR16ToBayer16},
    {"[BGRxW]", "RGB8_Planar", Route::ConverterNonPlanarToPlanar_16_8},
    {"[BGRxW]", "[PlanarW]", Route::ConverterNonPlanarToPlanar_16_16},
    {"[BGRxW]", "[420]", Route::ConverterViaBGRa8},
    // Planes.
    {"RGB8_Planar", "[BGRx8]", Route::ConverterPlanarToNonPlanar_8_8},
    {"RGB8_Planar", "[BGRxW]", Route::ConverterPlanarToNonPlanar_8_16},
    {"RGB8_Planar", "[PlanarW]", Route::ConverterPlanarToPlanar_8_16},
    {"[PlanarW]", "[BGRx8]", Route::ConverterPlanarToNonPlanar_16_8},
    {"[PlanarW]", "[BGRxW]", Route::ConverterPlanarToNonPlanar_16_16},
    {"[PlanarW]", "[PlanarW]", Route::ConverterPlanarToPlanar_16_16},
    {"[PlanarW]", "RGB8_Planar", Route::ConverterPlanarToPlanar_16_8},
    {"[Planar]", "[p32] [420] Mono8 Mono16", Route::ConverterViaSameBitBGR},
    // Packed colour.
    {"[p32]", "[BGRx8]", Route::ConverterBGR10p32ToBGRx8},
    {"[p32]", "[BGRxW]", Route::ConverterBGR10pToBGRx16},
    {"[p32]", "[p32] Mono8 [MonoW] [Planar]", Route::ConverterViaSameBitBGR},
    {"[p32]", "[420]", Route::ConverterViaBGRa8},
    {"{BGR,RGB}10p", "BGR{,a}10", Route::ConverterBGRpxToBGRX_16_16},
    {"{BGR,RGB}12p", "BGR{,a}{10,12}", Route::ConverterBGRpxToBGRX_16_16},
    {"[BGRp]", "[BGRx8]", Route::ConverterBGRpxToBGRX_16_8},
    {"{BGR,RGB}<N>p", "[BGRx16] Mono<N> Mono8 Mono16 [Planar]", Route::ConverterViaSameBitBGR, "N=10,12"},
    {"[BGRp]", "[420]", Route::ConverterViaBGRa8},
    // Luminance and chrominance.
    {"[YUV] [420]", "[BGRx8] Mono8", Route::ConverterYUV2MonoOrBGR},
    {"[YUV] [420]", "{BGR,BGRa}{10,12,14,16} RGB16 [Planar] [p32]", Route::ConverterViaSameBitBGR},
    {"[YUV] [420]", "Mono16", Route::ConverterViaSameBitRaw},
    {"[YUV]", "[420]", Route::ConverterViaBGRa8},

    // Polarizer sensors.
    {"Pol1Mono[Tile]8", "[BGRx8]", Route::ConverterPolarizationImageBToBGRB},
    {"Pol1Mono[Tile]8", "Mono8", Route::ConverterPolarizationImageBToMonoB},
    {"Pol1Mono[Tile]8", "Mono16", Route::ConverterPolarizationImageBToMonoW},
    {"Pol1Mono[Tile]<N>", "BGR{,a}<N>", Route::ConverterPolarizationImageWToBGRW, "N=10,12"},
    {"Pol1Mono[Tile]<N>", "Mono<N> Mono16", Route::ConverterPolarizationImageWToMonoW, "N=10,12"},
    {"Pol1Mono[Tile]{10,12}", "Mono8", Route::ConverterPolarizationImageWToMonoB},
    {"Pol1BayerRG[Tile]8", "[BGRx8]", Route::ConverterPolarizationColorImageBToBGRB},
    {"Pol1BayerRG[Tile]8", "Mono8", Route::ConverterPolarizationColorImageBToMonoB},
    {"Pol1BayerRG[Tile]8", "Mono16", Route::ConverterPolarizationColorImageBToMonoW},
    {"Pol1BayerRG[Tile]<N>", "BGR{,a}<N>", Route::ConverterPolarizationColorImageWToBGRW, "N=10,12"},
    {"Pol1BayerRG[Tile]<N>", "Mono<N> Mono16", Route::ConverterPolarizationColorImageWToMonoW, "N=10,12"},
    {"Pol1BayerRG[Tile]{10,12}", "Mono8", Route::ConverterPolarizationColorImageWToMonoB},
    {"Pol1Mono<P>8", "Pol1Mono<P>{10,12}", Route::ConverterRawMono8ToRawMono16, kTiles},
    {"Pol1BayerRG<P>8", "Pol1BayerRG<P>{10,12}", Route::ConverterRawMono8ToRawMono16, kTiles},
    {"Pol1Mono<P>8", "Pol1Mono<P>{10,12}p", Route::ConverterUnpackedToPacked8, kTiles},
    {"Pol1BayerRG<P>8", "Pol1BayerRG<P>{10,12}p", Route::ConverterUnpackedToPacked8, kTiles},
    {"Pol1Mono<P>{10,12}", "Pol1Mono<P>8", Route::ConverterRawMono16ToRawMono8, kTiles},
    {"Pol1BayerRG<P>{10,12}", "Pol1BayerRG<P>8", Route::ConverterRawMono16ToRawMono8, kTiles},
    {"Pol1Mono<P>10p", "Pol1Mono<P>{8,10}", Route::ConverterPackedToUnpacked, kTiles},
    {"Pol1Mono<P>12p", "Pol1Mono<P>{8,12}", Route::ConverterPackedToUnpacked, kTiles},
    {"Pol1BayerRG<P>10p", "Pol1BayerRG<P>{8,10}", Route::ConverterPackedToUnpacked, kTiles},
    {"Pol1BayerRG<P>12p", "Pol1BayerRG<P>{8,12}", Route::ConverterPackedToUnpacked, kTiles},
    {"Pol1{Mono,BayerRG}[Tile]{8,10,12}", "[BGRx16] RGB16_Planar RGB8_Planar",
     Route::ConverterViaSameBitBGR},
    {"Pol1{Mono,BayerRG}[Tile]{10,12}", "[BGRx8]", Route::ConverterViaSameBitBGR},
    {"Pol1{Mono,BayerRG}[Tile]<N>p",
     "[BGRx8] BGR{,a}<N> [BGRx16] Mono8 Mono<N> Mono16 RGB16_Planar RGB8_Planar",
     Route::ConverterViaUnpack, "N=10,12"},
};
// clang-format on

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts{""};
  for (char c : text) c == separator ? parts.emplace_back() : parts.back() += c;
  return parts;
}

/// Every name that a pattern with braces stands for.
void ExpandBraces(const std::string& pattern, std::vector<std::string>& names) {
  const auto open = pattern.find('{');
  if (open == std::string::npos) return names.push_back(pattern);
  const auto close = pattern.find('}', open);
  for (const std::string& choice : Split(pattern.substr(open + 1, close - open - 1), ','))
    ExpandBraces(pattern.substr(0, open) + choice + pattern.substr(close + 1), names);
}

std::vector<std::string> Names(std::string patterns) {
  for (int level = 0; level < 2; ++level)
    for (const auto& [name, members] : kSets)
      patterns = Replace(patterns, "[" + name + "]", members);
  std::vector<std::string> names;
  std::istringstream words(patterns);
  for (std::string word; words >> word;) ExpandBraces(word, names);
  return names;
}

using Pairs = std::map<std::pair<std::string, std::string>, Route>;

/// Where rows overlap, the first one counts, as "the rest" in a later one means.
void AddRow(const Row& row, Pairs& pairs) {
  const std::string name = std::string("<") + row.variable[0] + ">";
  const std::string values = row.variable[0] ? row.variable + 2 : "";
  for (const std::string& value : Split(values, ',')) {
    const auto destinations = Names(Replace(row.destinations, name, value));
    for (const std::string& source : Names(Replace(row.sources, name, value)))
      for (const std::string& destination : destinations)
        if (source != destination) pairs.emplace(std::pair(source, destination), row.route);
  }
}

TEST(Routes, AgreeWithTheRulesWrittenAsNames) {
  Pairs pairs;
  for (const Row& row : kRows) AddRow(row, pairs);
  std::set<std::string> sources, destinations;
  for (const auto& [pair, route] : pairs) {
    EXPECT_NE(FormatOf(pair.first), PixelFormat::None);
    EXPECT_NE(FormatOf(pair.second), PixelFormat::None);
    sources.insert(pair.first), destinations.insert(pair.second);
  }
  EXPECT_EQ(pairs.size(), 4011U);
  EXPECT_EQ(sources.size(), 179U);
  EXPECT_EQ(sources, destinations);
  for (const char* name : {"Mono8s", "BGRa10p", "BGRa12p", "Mono32"})
    EXPECT_EQ(sources.count(name), 0U) << name;

  for (const PixelFormatRow& from : kPixelFormats)
    for (const PixelFormatRow& to : kPixelFormats) {
      const auto found = pairs.find({std::string(from.name), std::string(to.name)});
      EXPECT_EQ(FindRoute(from.format, to.format),
                found == pairs.end() ? Route::None : found->second)
          << from.name << " to " << to.name;
    }
}

TEST(Routes, UnknownCodesHaveNone) {
  for (unsigned code : {0U, 1U, 0x01080003U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    const auto unknown = static_cast<PixelFormat>(code);
    EXPECT_EQ(FindRoute(unknown, PixelFormat::BGR8), Route::None) << code;
    EXPECT_EQ(FindRoute(PixelFormat::Mono8, unknown), Route::None) << code;
    EXPECT_EQ(FindRoute(unknown, unknown), Route::None) << code;
  }
}

}  // namespace
}  // namespace QvApi
