// SPDX-License-Identifier: MIT
// The table of formats against what their names and codes say.

#include <gtest/gtest.h>
#include <regex.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "QvApi_TL/PixelFormatTable.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"

namespace QvApi {
namespace {

const IQvPixelFormatInfoInside& Info(PixelFormat format) {
  return dynamic_cast<const IQvPixelFormatInfoInside&>(*GetIQvPixelFormatInfo(format));
}

std::size_t CodeBits(PixelFormat format) { return static_cast<std::uint32_t>(format) >> 16 & 0xFF; }

/// What the grammar of PFNC's names tells about a format.
struct Facts {
  std::size_t depth, components, planes = 1, pixelBits, componentBits;
  bool color, mono = !color, bayer = false, bgr = false, packed = false;
  int phase = 0;
  std::size_t pattern = 0;
};

std::size_t Number(const std::string& text) { return std::stoul(text); }

/// Bits of a sample of `depth` bits in its own word, or packed.
std::size_t Occupied(std::size_t depth, const std::string& packing) {
  if (packing == "p") return depth;
  if (packing == "Packed") return 12;
  return depth > 16 ? 32 : depth > 8 ? 16 : 8;
}

/// Matches a whole name with an extended regular expression; `groups[i]` is its group i.
bool Matches(const std::string& name, const std::string& pattern,
             std::vector<std::string>& groups) {
  regex_t regex;
  EXPECT_EQ(regcomp(&regex, ("^" + pattern + "$").c_str(), REG_EXTENDED), 0) << pattern;
  regmatch_t found[8];
  const bool matches = regexec(&regex, name.c_str(), 8, found, 0) == 0;
  regfree(&regex);
  groups.assign(8, "");
  for (std::size_t i = 0; matches && i < 8; ++i)
    if (found[i].rm_so >= 0)
      groups[i] = name.substr(static_cast<std::size_t>(found[i].rm_so),
                              static_cast<std::size_t>(found[i].rm_eo - found[i].rm_so));
  return matches;
}

Facts FactsOf(const std::string& name) {
  static const std::map<std::string, int> phases{{"RG", 2}, {"GR", 3}, {"GB", 4}, {"BG", 5}};
  static const std::map<std::string, std::size_t> patterns{
      {"", 1}, {"X", 2}, {"Y", 3}, {"XY", 4}, {"C", 5}, {"XC", 6}, {"YC", 7}, {"XYC", 8}};
  std::vector<std::string> m;
  if (Matches(name, "Mono([0-9]+)(p|Packed|s)?", m)) {
    const auto bits = Occupied(Number(m[1]), m[2]);
    return {.depth = Number(m[1]),
            .components = 1,
            .pixelBits = bits,
            .componentBits = bits,
            .color = false,
            .packed = m[2] == "Packed",
            .phase = 1};
  }
  if (Matches(name, "Bayer(..)([0-9]+)(p|Packed)?", m)) {
    const auto bits = Occupied(Number(m[2]), m[3]);
    return {.depth = Number(m[2]),
            .components = 1,
            .pixelBits = bits,
            .componentBits = bits,
            .color = true,
            .bayer = true,
            .packed = m[3] == "Packed",
            .phase = phases.at(m[1])};
  }
  if (Matches(name, "Pol1(Mono|BayerRG)(X?Y?C?)([0-9]+)(p)?", m)) {
    const auto bits = Occupied(Number(m[3]), m[4]);
    const bool color = m[1] == "BayerRG";
    return {.depth = Number(m[3]),
            .components = 1,
            .pixelBits = bits,
            .componentBits = bits,
            .color = color,
            .phase = color ? 0 : 1,
            .pattern = patterns.at(m[2])};
  }
  if (Matches(name, "C?(RGB|BGR)(a?)([0-9]+)(p32|p|_Planar)?", m)) {
    const std::size_t components = m[2] == "a" ? 4 : 3;
    const bool planar = m[4] == "_Planar";
    const std::size_t sample = m[4] == "p32" ? 10 : Occupied(Number(m[3]), m[4]);
    const std::size_t pixel = planar ? sample : m[4] == "p32" ? 32 : sample * components;
    return {.depth = Number(m[3]),
            .components = components,
            .planes = planar ? components : 1,
            .pixelBits = pixel,
            .componentBits = sample,
            .color = true,
            .bgr = m[1] == "BGR"};
  }
  if (name == "CYCbCr420_8_YY_Cb_Cr_Planar")
    return {.depth = 8,
            .components = 3,
            .planes = 3,
            .pixelBits = 8,
            .componentBits = 8,
            .color = true};
  EXPECT_TRUE(Matches(name, "(YCbCr(601_|709_)?|YUV)(422_|411_)?8.*", m)) << name;
  // Components and their bits are such that their product is what a pixel occupies on average.
  const std::size_t pixel = m[3] == "" ? 24 : m[3] == "422_" ? 16 : 12;
  const std::size_t components = pixel == 16 ? 2 : 3;
  return {.depth = 8,
          .components = components,
          .pixelBits = pixel,
          .componentBits = pixel / components,
          .color = true};
}

TEST(PixelFormatInfo, AnswersFollowFromTheName) {
  for (const auto& row : kPixelFormats) {
    const auto& info = Info(row.format);
    const std::string name = info.GetName().str();
    SCOPED_TRACE(name);
    const Facts facts = FactsOf(name);
    EXPECT_EQ(info.GetPixelFormat(), row.format);
    EXPECT_EQ(info.GetEachComponentEffectiveBitCount(), facts.depth);
    EXPECT_EQ(info.GetComponentCount(), facts.components);
    EXPECT_EQ(info.GetPlaneCount(), facts.planes);
    EXPECT_EQ(info.GetTotalBitCount(), facts.pixelBits);
    EXPECT_EQ(info.GetEachComponentTotalBitCount(), facts.componentBits);
    EXPECT_EQ(info.IsColor(), facts.color);
    EXPECT_EQ(info.IsMono(), facts.mono);
    EXPECT_EQ(info.IsBayer(), facts.bayer);
    EXPECT_EQ(info.IsBGR(), facts.bgr);
    EXPECT_EQ(info.IsGEVPacked(), facts.packed);
    EXPECT_EQ(info.GetPixelColorFilter(0, 0), facts.phase);
    EXPECT_EQ(info.IsPolarized(), facts.pattern != 0);
    EXPECT_EQ(info.GetPolarizerPatternNumber(), facts.pattern);
  }
}

TEST(PixelFormatInfo, EveryFormatOfTheTableAndNoOtherIsKnown) {
  std::map<std::uint32_t, std::size_t> classes;
  for (const auto& row : kPixelFormats) {
    const auto code = static_cast<std::uint32_t>(row.format);
    ++classes[code >> 24];
    EXPECT_EQ((code >> 24 & 2) != 0, Info(row.format).GetComponentCount() > 1) << row.name;
    if (!GetIQvPixelFormatInfo(static_cast<PixelFormat>(code ^ 0x00008000))) continue;
    ADD_FAILURE() << row.name << " with another id is known";
  }
  EXPECT_EQ(classes, (std::map<std::uint32_t, std::size_t>{
                         {0x01, 15 + 44}, {0x02, 42}, {0x81, 80}, {0x82, 2}}));
  for (std::uint32_t code : {0u, 0xFFFFFFFFu, 1u, 0x01080000u, 0x81080001u, 0x82FFFFFFu})
    EXPECT_EQ(GetIQvPixelFormatInfo(static_cast<PixelFormat>(code)), nullptr) << code;
}

TEST(PixelFormatInfo, LineBytesAreTheBitsOfTheCodeRoundedUp) {
  for (const auto& row : kPixelFormats) {
    const auto& info = Info(row.format);
    const bool planar420 = row.format == PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar;
    const std::size_t bits = planar420 ? 8 : CodeBits(row.format) / info.GetPlaneCount();
    for (std::size_t width = 1; width <= 40; ++width) {
      const std::size_t bytes = (width * bits + 7) / 8;
      ASSERT_EQ(info.GetLinePitch(width, 1), bytes) << row.name << " " << width;
      for (std::size_t alignment : {2u, 3u, 4u, 7u, 8u, 60u, 64u}) {
        const std::size_t padded =
            planar420 ? bytes : (bytes + alignment - 1) / alignment * alignment;
        ASSERT_EQ(info.GetLinePitch(width, alignment), padded) << row.name << " " << width;
      }
    }
  }
}

TEST(PixelFormatInfo, PitchBeyondTheAddressSpaceSaturates) {
  const auto& info = Info(PixelFormat::BGRa16);
  EXPECT_EQ(info.GetLinePitch(SIZE_MAX / 8, 1), SIZE_MAX);
  EXPECT_EQ(info.GetLinePitch(SIZE_MAX, 4), SIZE_MAX);
  EXPECT_EQ(Info(PixelFormat::Mono8).GetLinePitch(100, SIZE_MAX), SIZE_MAX);
  EXPECT_EQ(Info(PixelFormat::Mono8).GetLinePitch(SIZE_MAX / 8 - 1, SIZE_MAX / 2), SIZE_MAX / 2);
}

TEST(PixelFormatInfo, EffectivePixelBits) {
  const std::vector<std::pair<PixelFormat, std::size_t>> expected{
      {PixelFormat::Mono8, 8},         {PixelFormat::Mono10, 10},
      {PixelFormat::Mono12Packed, 12}, {PixelFormat::BGR8, 24},
      {PixelFormat::BGRa8, 32},        {PixelFormat::BGR10, 30},
      {PixelFormat::RGB10p32, 30},     {PixelFormat::RGB12_Planar, 36},
      {PixelFormat::Pol1Mono10, 10},   {PixelFormat::Pol1BayerRGXYC12p, 12},
      {PixelFormat::YCbCr422_8, 16},   {PixelFormat::YCbCr411_8, 12},
      {PixelFormat::YCbCr8, 24},       {PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar, 12}};
  for (const auto& [format, bits] : expected)
    EXPECT_EQ(Info(format).GetEffectivePixelBitCount(), bits) << Info(format).GetName();
}

TEST(PixelFormatInfo, OffsetsExchangeThePhaseAndNothingElse) {
  EXPECT_EQ(Info(PixelFormat::BayerRG8).GetPixelFormatAtOffset(1, 0), PixelFormat::BayerGR8);
  EXPECT_EQ(Info(PixelFormat::BayerRG8).GetPixelFormatAtOffset(0, 1), PixelFormat::BayerGB8);
  EXPECT_EQ(Info(PixelFormat::BayerRG8).GetPixelFormatAtOffset(1, 1), PixelFormat::BayerBG8);
  for (const auto& row : kPixelFormats) {
    const auto& info = Info(row.format);
    for (std::size_t x = 0; x < 4; ++x)
      for (std::size_t y = 0; y < 4; ++y) {
        const auto& moved = Info(info.GetPixelFormatAtOffset(x, y));
        SCOPED_TRACE(std::string(row.name) + " to " + moved.GetName().c_str());
        // The same move again leads back, and the other properties stay.
        EXPECT_EQ(moved.GetPixelFormatAtOffset(x, y), row.format);
        EXPECT_EQ(moved.GetPixelColorFilter(0, 0), info.GetPixelColorFilter(x, y));
        EXPECT_EQ(moved.GetPixelFormat() == row.format,
                  !info.IsBayer() || (x % 2 == 0 && y % 2 == 0));
        EXPECT_EQ(moved.GetTotalBitCount(), info.GetTotalBitCount());
        EXPECT_EQ(moved.GetEachComponentEffectiveBitCount(),
                  info.GetEachComponentEffectiveBitCount());
        EXPECT_EQ(moved.IsGEVPacked(), info.IsGEVPacked());
      }
  }
}

/// Colours of the 2 x 2 tile of each phase, line by line, are what the colour filter answers.
TEST(PixelFormatInfo, ColorFilterFollowsTheTile) {
  const std::map<int, std::string> tiles{{2, "RGGB"}, {3, "GRBG"}, {4, "GBRG"}, {5, "BGGR"}};
  for (const auto& [phase, tile] : tiles) {
    const auto& info = Info(phase == 2   ? PixelFormat::BayerRG12p
                            : phase == 3 ? PixelFormat::BayerGR12p
                            : phase == 4 ? PixelFormat::BayerGB12p
                                         : PixelFormat::BayerBG12p);
    for (std::size_t y = 0; y < 3; ++y)
      for (std::size_t x = 0; x < 3; ++x) {
        std::string seen;
        for (std::size_t i = 0; i < 4; ++i) seen += tile[(x + i % 2) % 2 + 2 * ((y + i / 2) % 2)];
        EXPECT_EQ(tiles.at(info.GetPixelColorFilter(x, y)), seen);
      }
  }
}

TEST(PixelFormatInfo, RoiIncrementsKeepWholeBytesGroupsAndTiles) {
  for (const auto& row : kPixelFormats) {
    SCOPED_TRACE(row.name);
    const auto& info = Info(row.format);
    const std::size_t x = info.GetROIIncrementX();
    const std::size_t y = info.GetROIIncrementY();
    const std::size_t tile = !info.IsPolarized() ? 1 : info.IsColor() ? 4 : 2;
    const std::size_t group = row.name.find("422_") != std::string::npos   ? 2
                              : row.name.find("411_") != std::string::npos ? 4
                                                                           : 1;
    EXPECT_EQ(y, tile);
    EXPECT_EQ(x * info.GetTotalBitCount() % 8, 0u);
    EXPECT_EQ(x % tile, 0u);
    EXPECT_EQ(x % group, 0u);
    // No smaller number would do.
    for (std::size_t less = 1; less < x; ++less)
      EXPECT_FALSE(less * info.GetTotalBitCount() % 8 == 0 && less % tile == 0 && less % group == 0)
          << less;
  }
}

TEST(PixelFormatInfo, LookUpFromManyThreads) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([] {
      for (int round = 0; round < 50; ++round)
        for (const auto& row : kPixelFormats)
          ASSERT_EQ(GetIQvPixelFormatInfo(row.format)->GetPixelFormat(), row.format);
    });
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace QvApi
