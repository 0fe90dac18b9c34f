// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvChromaSuppressionFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvChromaSuppressionFilter;

constexpr auto kLow = QvChromaSuppressionPartSelector_LowLuminancePart;
constexpr auto kHigh = QvChromaSuppressionPartSelector_HighLuminancePart;

struct Settings {
  std::uint32_t lowThreshold, low, highThreshold, high;
};

void Apply(Filter& filter, const Settings& s) {
  for (auto [part, threshold, strength] :
       {std::tuple{kLow, s.lowThreshold, s.low}, {kHigh, s.highThreshold, s.high}}) {
    WriteRegister(filter, 0x10, std::uint64_t{part});
    WriteRegister(filter, 0x20, threshold);
    WriteRegister(filter, 0x40, strength);
  }
}

/// A component on its way to green: floor for what is added or taken away, and no further than it.
unsigned Moved(std::int64_t component, std::int64_t green, std::int64_t factor) {
  const std::int64_t step = std::abs(green - component) * factor / 256;
  if (component >= green) return static_cast<unsigned>(std::max(component - step, green));
  return static_cast<unsigned>(factor == 0 ? green : std::min(component + step, green));
}

/// A part of strength 0 has its threshold at the end of the 8-bit range. Factors have 32 bits.
void SuppressByHand(TestImage& image, const Settings& s) {
  const PixelFormat format = image.GetImagePixelFormat();
  const std::size_t step = Info(format).GetComponentCount(), redAt = NameOf(format).find('R');
  const unsigned shift = DepthOf(format) - 8;
  const std::uint32_t low = s.low ? s.lowThreshold : 0, high = s.high ? s.highThreshold : 255;
  if (low == 0 && high >= (256U << shift) - 1) return;
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t i = 0; i < image.GetImageWidth() * step; i += step) {
      const unsigned red = SampleAt(image, i + redAt, y), green = SampleAt(image, i + 1, y),
                     blue = SampleAt(image, i + 2 - redAt, y);
      const std::uint32_t luminance = (2 * red + 5 * green + blue) / 8 >> shift;
      if (luminance >= low && luminance <= high) continue;
      std::uint32_t factor = 0;
      if (luminance < low) factor = (low - luminance + 1) * s.low;
      if (luminance > high) factor = std::max(factor, (luminance - high + 1) * s.high);
      SetSample(image, i + redAt, y, Moved(red, green, factor));
      SetSample(image, i + 2 - redAt, y, Moved(blue, green, factor));
    }
}

TEST(ChromaSuppressionFilter, SuppressesInEveryFormatAndNothingBeside) {
  std::vector<Settings> all{{0, 0, 255, 0},
                            {255, 255, 0, 255},
                            {128, 9, 128, 9},
                            {255, 255, 255, 0},
                            {0, 0, 0, 255},
                            {0, 255, 255, 255},
                            {200, 1, 50, 2},
                            {100, 0, 100, 0},
                            {60000, 2, 255, 0},
                            {~0U, 3, 7, ~0U},
                            {3, 1U << 31, 9, 1U << 24},
                            {~0U, 1, 255, 0}};
  std::mt19937 random(1);
  const auto below = [&](unsigned end) { return static_cast<std::uint32_t>(random()) % end; };
  for (int i = 0; i < 6; ++i) all.push_back({below(256), below(16), below(256), below(16)});
  for (PixelFormat format : ColorFormats())
    for (const Settings& s : all) {
      SCOPED_TRACE(
          testing::PrintToString(std::array{s.lowThreshold, s.low, s.highThreshold, s.high}));
      Filter filter;
      Apply(filter, s);
      CompareOnShapes(filter, format, [&](TestImage& image) { SuppressByHand(image, s); });
    }
}

TEST(ChromaSuppressionFilter, PixelsWorkedByHand) {
  using Pixel = std::array<unsigned, 4>;
  const struct {
    PixelFormat format;
    Settings settings;
    Pixel before, after;
  } kCases[] = {
      // Y = (2 * 60 + 5 * 20 + 4) / 8 = 28, factor (40 + 1 - 28) * 4 = 52: blue + 16 * 52 / 256,
      // red - 40 * 52 / 256.
      {BGRa8, {40, 4, 255, 0}, {4, 20, 60, 99}, {7, 20, 52, 99}},
      {BGRa16, {40, 4, 255, 0}, {1024, 5120, 15360, 9}, {1856, 5120, 13280, 9}},
      // The same in the other order: Y = (8 + 100 + 60) / 8 = 21, factor 80.
      {RGBa8, {40, 4, 255, 0}, {4, 20, 60, 99}, {9, 20, 48, 99}},
      // Y = (400 + 1150 + 250) / 8 = 225, factor (225 - 220 + 1) * 10 = 60.
      {BGRa8, {0, 0, 220, 10}, {250, 230, 200, 1}, {246, 230, 207, 1}},
      // At both thresholds a pixel stays; of two factors the larger one counts, 28 - 10 + 1.
      {BGRa8, {28, 255, 28, 255}, {4, 20, 60, 99}, {4, 20, 60, 99}},
      {BGRa8, {30, 1, 10, 1}, {4, 20, 60, 99}, {5, 20, 58, 99}},
      // Thresholds are in units of eight bits: 128 * 4 exactly, and the sample right below.
      {BGRa10, {128, 255, 255, 0}, {516, 508, 520, 0}, {516, 508, 520, 0}},
      {BGRa10, {128, 255, 255, 0}, {515, 508, 520, 0}, {508, 508, 508, 0}},
      // Above the depth: Y = (131070 + 5 * 65535) / 8 >> 2 is far above 255 by strength 0, and with
      // factor 0 what is below green becomes green.
      {BGRa10, {0, 0, 255, 0}, {0, 65535, 65535, 0}, {65535, 65535, 65535, 0}},
  };
  for (const auto& c : kCases) {
    Filter filter;
    Apply(filter, c.settings);
    TestImage image(1, 1, c.format);
    for (std::size_t i = 0; i < 4; ++i) SetSample(image, i, 0, c.before[i]);
    filter.Filter(&image);
    for (std::size_t i = 0; i < 4; ++i)
      EXPECT_EQ(SampleAt(image, i, 0), c.after[i]) << &c - kCases << ": " << i;
  }
}

TEST(ChromaSuppressionFilter, SettingsOfEachPart) {
  Filter filter;
  const GenApi::CEnumerationPtr selector =
      filter.GetINodeMap()->GetNode("ChromaSuppressionPartSelector");
  for (auto part : {kLow, kHigh}) {
    selector->FromString(part == kLow ? "LowLuminancePart" : "HighLuminancePart");
    ExpectNumber(filter, "ThresholdValue", 0x20, part == kLow ? 0U : 255U, 0U, 255U,
                 &Filter::GetThresholdValue, &Filter::SetThresholdValue, part);
    ExpectNumber(filter, "SuppressionValue", 0x40, 0U, 0U, 255U, &Filter::GetSuppressionValue,
                 &Filter::SetSuppressionValue, part);
  }
  ExpectNothingSelected(filter, 0x10, 2, "eCSPS = 2 must be smaller than Max = 2", {0x20, 0x40});
}

TEST(ChromaSuppressionFilter, FormatsAndDocument) {
  Filter filter;
  Apply(filter, {255, 255, 0, 255});
  ExpectSupportsOnly(filter, ColorFormats());
  ExpectDescription(filter, "Chroma Suppression", "FilterInformation", GenApi::Expert,
                    {"ChromaSuppressionPartSelector", "ThresholdValue", "SuppressionValue"});
}

}  // namespace
}  // namespace QvApi
