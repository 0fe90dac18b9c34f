// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvChromaSuppressionFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvChromaSuppressionFilter;

constexpr auto kLow = QvChromaSuppressionPartSelector_LowLuminancePart;
constexpr auto kHigh = QvChromaSuppressionPartSelector_HighLuminancePart;
constexpr auto kNoPart = static_cast<EQvChromaSuppressionPartSelector_t>(2);

const struct {
  PixelFormat format;
  unsigned red, blue;
} kFormats[] = {{RGB8, 0, 2},  {RGBa8, 0, 2},  {BGR8, 2, 0},  {BGRa8, 2, 0},
                {BGR10, 2, 0}, {BGRa10, 2, 0}, {BGR12, 2, 0}, {BGRa12, 2, 0},
                {BGR14, 2, 0}, {BGRa14, 2, 0}, {BGR16, 2, 0}, {BGRa16, 2, 0}};

struct Settings {
  unsigned lowThreshold, highThreshold, low, high;
};

void Apply(Filter& filter, const Settings& s) {
  filter.SetThresholdValue(kLow, s.lowThreshold);
  filter.SetThresholdValue(kHigh, s.highThreshold);
  filter.SetSuppressionValue(kLow, s.low);
  filter.SetSuppressionValue(kHigh, s.high);
}

/// A component on its way to green: floor for what is added or taken away, and no further than it.
std::int64_t Moved(std::int64_t component, std::int64_t green, std::int64_t factor) {
  const std::int64_t step = std::abs(green - component) * factor / 256;
  if (component < green) return factor == 0 ? green : std::min(component + step, green);
  return std::max(component - step, green);
}

/// One pixel by the definition: a part of strength 0 has its threshold at the end of the 8-bit
/// range.
void SuppressByHand(TestImage& image, const Settings& s, unsigned redAt, unsigned blueAt) {
  const IQvPixelFormatInfoInside& info = Info(image.GetImagePixelFormat());
  const std::size_t step = info.GetComponentCount();
  const std::int64_t unit = std::int64_t{1} << (info.GetEachComponentEffectiveBitCount() - 8);
  const std::int64_t low = s.low ? s.lowThreshold : 0, high = s.high ? s.highThreshold : 255;
  if (low == 0 && high >= 256 * unit - 1) return;
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t i = 0; i < image.GetImageWidth() * step; i += step) {
      const std::int64_t red = SampleAt(image, i + redAt, y), green = SampleAt(image, i + 1, y),
                         blue = SampleAt(image, i + blueAt, y);
      const std::int64_t luminance = (2 * red + 5 * green + blue) / (8 * unit);
      std::int64_t factor = -1;
      if (luminance < low) factor = (low - luminance + 1) * s.low;
      if (luminance > high) factor = std::max(factor, (luminance - high + 1) * s.high);
      if (factor < 0) continue;
      SetSample(image, i + redAt, y, static_cast<unsigned>(Moved(red, green, factor)));
      SetSample(image, i + blueAt, y, static_cast<unsigned>(Moved(blue, green, factor)));
    }
}

std::vector<Settings> AllSettings() {
  std::vector<Settings> all{{0, 255, 0, 0},     {255, 0, 255, 255}, {128, 128, 9, 9},
                            {255, 255, 255, 0}, {0, 0, 0, 255},     {0, 255, 255, 255},
                            {200, 50, 1, 2},    {100, 100, 0, 0}};
  std::mt19937 random(1);
  const auto below = [&](unsigned end) { return static_cast<unsigned>(random()) % end; };
  for (int i = 0; i < 6; ++i) all.push_back({below(256), below(256), below(16), below(16)});
  return all;
}

TEST(ChromaSuppressionFilter, SuppressesInEveryFormatAndNothingBeside) {
  unsigned seed = 0;
  for (const auto& [format, red, blue] : kFormats)
    for (const Settings& settings : AllSettings()) {
      Filter filter;
      Apply(filter, settings);
      ForEachShape([&](std::size_t width, std::size_t height, std::size_t padding) {
        for (bool keepDepth : {true, false}) {
          TestImage image(width, height, format, padding), expected(width, height, format, padding);
          image.Randomize(++seed, keepDepth);
          expected.All() = image.All();
          SuppressByHand(expected, settings, red, blue);
          ASSERT_EQ(filter.Filter(&image), &image);
          ASSERT_EQ(image.All(), expected.All())
              << NameOf(format) << " " << width << " x " << height << " + " << padding
              << " thresholds " << settings.lowThreshold << ", " << settings.highThreshold
              << " strengths " << settings.low << ", " << settings.high;
        }
      });
    }
}

TEST(ChromaSuppressionFilter, ThresholdsAreInUnitsOfEightBits) {
  // Luminance 128 exactly, and the sample right below it.
  for (const auto& [format, red, blue] : kFormats) {
    const unsigned unit = 1U << (Info(format).GetEachComponentEffectiveBitCount() - 8);
    TestImage image(2, 1, format);
    for (std::size_t x : {0, 1}) {
      const std::size_t at = x * Info(format).GetComponentCount();
      SetSample(image, at + red, 0, 130 * unit);
      SetSample(image, at + 1, 0, 127 * unit);
      SetSample(image, at + blue, 0, 129 * unit - (x == 1 ? 1 : 0));
    }
    Filter filter;
    Apply(filter, {128, 255, 255, 0});
    filter.Filter(&image);
    EXPECT_EQ(SampleAt(image, red, 0), 130 * unit) << NameOf(format);
    EXPECT_EQ(SampleAt(image, Info(format).GetComponentCount() + red, 0), 127 * unit)
        << NameOf(format);
  }
}

TEST(ChromaSuppressionFilter, TypedSettersRefuseWhatIsOutOfRange) {
  using Error = GenICam::OutOfRangeException;
  Filter filter;
  for (auto set : {&Filter::SetThresholdValue, &Filter::SetSuppressionValue}) {
    EXPECT_EQ(MessageOf<Error>([&] { (filter.*set)(kNoPart, 999); }),
              "eCSPS = 2 must be smaller than Max = 2");
    EXPECT_EQ(MessageOf<Error>([&] { (filter.*set)(kHigh, 256); }),
              "value = 256 must be equal or smaller than Max = 255");
  }
  EXPECT_EQ(MessageOf<Error>([&] { filter.GetThresholdValue(kNoPart); }),
            "eCSPS = 2 must be smaller than Max = 2");
  EXPECT_EQ(filter.GetThresholdValue(kLow), 0U);
  EXPECT_EQ(filter.GetThresholdValue(kHigh), 255U);
  EXPECT_EQ(filter.GetSuppressionValue(kLow), 0U);
  EXPECT_EQ(filter.GetSuppressionValue(kHigh), 0U);
}

TEST(ChromaSuppressionFilter, RegistersAreTheSettingsOfTheSelectedPart) {
  Filter filter;
  const auto read = [&](std::int64_t address) {
    return ReadRegister<std::uint32_t>(filter, address);
  };
  const std::pair<std::int64_t, std::uint32_t> kConstants[] = {
      {0x30, 0}, {0x38, 255}, {0x50, 0}, {0x58, 255}};
  for (auto [address, value] : kConstants) {
    WriteRegister(filter, address, 9U);
    EXPECT_EQ(read(address), value) << address;
  }
  EXPECT_EQ(read(0x20), 0U);
  WriteRegister(filter, 0x10, std::uint64_t{0xABCD'0000'0001});
  EXPECT_EQ(ReadRegister<std::uint64_t>(filter, 0x10), 1U) << "the low half is taken";
  EXPECT_EQ(read(0x20), 255U);
  WriteRegister(filter, 0x20, 70000U);
  WriteRegister(filter, 0x40, 300U);
  EXPECT_EQ(filter.GetThresholdValue(kHigh), 70000U) << "no range is checked";
  EXPECT_EQ(filter.GetSuppressionValue(kHigh), 300U);
  EXPECT_EQ(filter.GetThresholdValue(kLow), 0U);
  EXPECT_EQ(filter.GetSuppressionValue(kLow), 0U);

  WriteRegister(filter, 0x10, std::uint64_t{2});
  for (std::int64_t address : {0x20, 0x40}) {
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] { read(address); }),
              "eCSPS = 2 must be smaller than Max = 2");
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] { WriteRegister(filter, address, 5U); }),
              "eCSPS = 2 must be smaller than Max = 2");
  }
}

TEST(ChromaSuppressionFilter, AnySettingThatARegisterCanHoldIsDefined) {
  std::mt19937 random(2);
  for (const auto& [format, red, blue] : kFormats)
    for (int round = 0; round < 40; ++round) {
      Filter filter;
      for (std::uint64_t part : {0, 1}) {
        WriteRegister(filter, 0x10, part);
        for (std::int64_t address : {0x20, 0x40})
          WriteRegister(filter, address, static_cast<std::uint32_t>(random() >> (random() % 32)));
      }
      TestImage image(50, 2, format), before(50, 2, format);
      before.All() = image.Randomize(static_cast<unsigned>(round), round % 2 == 0).All();
      filter.Filter(&image);
      const std::size_t step = Info(format).GetComponentCount();
      for (std::size_t i = 0; i < 50 * step; ++i) {
        const unsigned old = SampleAt(before, i, 0), now = SampleAt(image, i, 0);
        const unsigned green = SampleAt(before, i / step * step + 1, 0);
        const bool isColour = i % step == red || i % step == blue;
        EXPECT_TRUE(isColour ? now >= std::min(old, green) && now <= std::max(old, green)
                             : now == old);
      }
    }
}

TEST(ChromaSuppressionFilter, NodeMapAndSettersShowTheSameValues) {
  const Initialized initialized;
  const CQvAutoPtr<IQvFilterReleasable, IQvFilter> made(
      CreateIQvFilter(QvFilterType_ChromaSuppression));
  auto& filter = dynamic_cast<IQvChromaSuppressionFilter&>(*made.Get());
  EXPECT_EQ(filter.GetIQvFilterInfo()->GetFilterName(), "Chroma Suppression");
  GenApi::INodeMap* nodes = filter.GetINodeMap();
  const GenApi::CEnumerationPtr part = nodes->GetNode("ChromaSuppressionPartSelector");
  const GenApi::CIntegerPtr threshold = nodes->GetNode("ThresholdValue");
  const GenApi::CIntegerPtr suppression = nodes->GetNode("SuppressionValue");
  EXPECT_EQ(GenApi::CIntegerPtr(nodes->GetNode("SizeTSize"))->GetValue(), 8);

  EXPECT_EQ(threshold->GetValue(), 0);
  EXPECT_EQ(suppression->GetValue(), 0);
  part->FromString("HighLuminancePart");
  EXPECT_EQ(threshold->GetValue(), 255) << "the other part is not shown from the cache";
  EXPECT_EQ(threshold->GetMin(), 0);
  EXPECT_EQ(threshold->GetMax(), 255);
  threshold->SetValue(200);
  suppression->SetValue(7);
  EXPECT_EQ(filter.GetThresholdValue(kHigh), 200U);
  EXPECT_EQ(filter.GetSuppressionValue(kHigh), 7U);
  EXPECT_EQ(filter.GetSuppressionValue(kLow), 0U);
  filter.SetThresholdValue(kHigh, 201);
  filter.SetSuppressionValue(kHigh, 8);
  EXPECT_EQ(threshold->GetValue(), 201);
  EXPECT_EQ(suppression->GetValue(), 8);
  EXPECT_THROW(threshold->SetValue(256), GenICam::OutOfRangeException);
  part->SetIntValue(0);
  EXPECT_EQ(threshold->GetValue(), 0);

  GenApi::FeatureList_t selected;
  GenApi::CSelectorPtr(nodes->GetNode("ChromaSuppressionPartSelector"))
      ->GetSelectedFeatures(selected);
  EXPECT_EQ(selected.size(), 2U);
}

TEST(ChromaSuppressionFilter, RefusesOtherFormatsAndLeavesThemAlone) {
  std::vector<PixelFormat> supported;
  for (const auto& row : kFormats) supported.push_back(row.format);
  Filter filter;
  Apply(filter, {255, 0, 255, 255});
  ExpectSupportsOnly(filter, supported);
}

TEST(ChromaSuppressionFilter, DocumentMatchesRegisters) {
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
}

}  // namespace
}  // namespace QvApi
