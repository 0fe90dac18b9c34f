// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <random>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvEdgeEnhancementFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvEdgeEnhancementFilter;

constexpr std::int64_t kStrengthReg = 0x10, kThreshReg = 0x18;

/// How a pixel lies in its line: samples from pixel to pixel, and those that are corrected. With
/// three of them the pixel is compared in grey, red being sample `red`.
struct Layout {
  std::size_t step = 1, first = 0, count = 1, red = 0;
};

const struct {
  Layout layout;
  std::vector<PixelFormat> formats;
} kFormats[] = {
    {{}, {Mono8, Mono10, Mono12, Mono14, Mono16}},
    {{3, 0, 3, 0}, {RGB8}},
    {{3, 0, 3, 2}, {BGR8, BGR10, BGR12, BGR14, BGR16}},
    {{4, 0, 3, 0}, {RGBa8}},
    {{4, 0, 3, 2}, {BGRa8, BGRa10, BGRa12, BGRa14, BGRa16}},
    {{3, 0, 1}, {YCbCr8}},
    {{3, 1, 1}, {YCbCr8_CbYCr, YCbCr709_8_CbYCr, YCbCr601_8_CbYCr, YUV8_UYV}},
    {{2, 0, 1}, {YCbCr422_8, YCbCr709_422_8, YCbCr601_422_8, YUV422_8}},
    {{2, 1, 1}, {YCbCr422_8_CbYCrY, YCbCr709_422_8_CbYCrY, YCbCr601_422_8_CbYCrY, YUV422_8_UYVY}},
};

const Layout& LayoutOf(PixelFormat format) {
  for (const auto& row : kFormats)
    if (std::count(row.formats.begin(), row.formats.end(), format) != 0) return row.layout;
  throw std::invalid_argument(NameOf(format));
}

int DepthOf(PixelFormat format) {
  return static_cast<int>(Info(format).GetEachComponentEffectiveBitCount());
}

/// What a difference adds, entry by entry.
std::vector<int> Table(double strength, std::uint64_t thresh, int depth) {
  std::vector<int> table(std::size_t{1} << depth, 0);
  const int fullScale = (1 << depth) - 1;
  double sum = 0;
  for (std::uint64_t i = (thresh << (depth - 8)) + 1; i < table.size(); ++i) {
    sum += strength;
    table[i] = sum >= fullScale ? fullScale : static_cast<int>(std::floor(sum + 0.5));
  }
  return table;
}

/// The definition, pixel by pixel, from a copy of the image.
void EnhanceByHand(TestImage& image, const std::vector<int>& table, std::uint64_t thresh) {
  const PixelFormat format = image.GetImagePixelFormat();
  const Layout layout = LayoutOf(format);
  const int depth = DepthOf(format), fullScale = (1 << depth) - 1;
  const auto width = static_cast<std::ptrdiff_t>(image.GetImageWidth());
  const auto height = static_cast<std::ptrdiff_t>(image.GetImageHeight());
  const auto sample = [&](std::ptrdiff_t x, std::ptrdiff_t y, std::size_t c) {
    return static_cast<int>(SampleAt(image, static_cast<std::size_t>(x) * layout.step + c,
                                     static_cast<std::size_t>(y)) &
                            static_cast<unsigned>(fullScale));
  };
  std::vector<int> levels;
  for (std::ptrdiff_t y = 0; y < height; ++y)
    for (std::ptrdiff_t x = 0; x < width; ++x)
      levels.push_back(layout.count == 1 ? sample(x, y, layout.first)
                                         : (2 * sample(x, y, layout.red) + 5 * sample(x, y, 1) +
                                            sample(x, y, 2 - layout.red)) /
                                               8);
  const auto level = [&](std::ptrdiff_t x, std::ptrdiff_t y) {
    return levels[static_cast<std::size_t>(y * width + x)];
  };
  for (std::ptrdiff_t y = 1; y + 1 < height; ++y)
    for (std::ptrdiff_t x = 1; x + 1 < width; ++x) {
      int sum = -level(x, y);
      for (int v : {-1, 0, 1})
        for (int u : {-1, 0, 1}) sum += level(x + u, y + v);
      const int difference = level(x, y) - (sum + 4) / 8;
      const auto distance = static_cast<std::uint64_t>(std::abs(difference));
      if (distance <= thresh << (depth - 8)) continue;
      int amount = table[std::min<std::size_t>(distance, table.size() - 1)];
      if (depth == 8) amount &= 0xFF;
      if (amount == 0) continue;
      for (std::size_t c = layout.first; c < layout.first + layout.count; ++c) {
        const int old = sample(x, y, c);
        const int made = difference > 0 ? (amount < fullScale - old ? old + amount : fullScale)
                                        : (old > amount ? old - amount : 0);
        SetSample(image, static_cast<std::size_t>(x) * layout.step + c, static_cast<std::size_t>(y),
                  static_cast<unsigned>(made));
      }
    }
}

/// Little contrast, so that differences on both sides of thresholds occur, or much.
void Fill(TestImage& image, unsigned seed, bool isFlat, bool keepDepth = true) {
  image.Randomize(seed, keepDepth);
  if (!isFlat) return;
  const unsigned unit = 1U << (DepthOf(image.GetImagePixelFormat()) - 8);
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t i = 0; i < image.GetImageWidth() * LayoutOf(image.GetImagePixelFormat()).step;
         ++i)
      SetSample(image, i, y, 100 * unit + SampleAt(image, i, y) % (32 * unit));
}

struct Settings {
  double strength;
  unsigned thresh;
};

std::vector<Settings> AllSettings() {
  std::vector<Settings> all{{0.0, 0}, {32.0, 0}, {32.0, 255}, {1.0, 0}, {0.1, 0}, {1.5, 10}};
  std::mt19937 random(2);
  for (int i = 0; i < 4; ++i)
    all.push_back({std::uniform_real_distribution(0.0, i % 2 ? 32.0 : 3.0)(random),
                   static_cast<unsigned>(random()) % (i < 2 ? 30 : 256)});
  return all;
}

TEST(EdgeEnhancementFilter, EnhancesEveryFormatAndNothingBeside) {
  std::size_t count = 0;
  unsigned seed = 0;
  for (const auto& [layout, formats] : kFormats)
    for (PixelFormat format : formats) {
      ++count;
      for (const auto& [strength, thresh] : AllSettings()) {
        Filter filter;
        filter.SetStrength(strength);
        filter.SetThresh(thresh);
        const std::vector<int> table = Table(strength, thresh, DepthOf(format));
        const auto check = [&](std::size_t width, std::size_t height, std::size_t padding) {
          TestImage image(width, height, format, padding), expected(width, height, format, padding);
          ++seed;
          Fill(image, seed, seed % 2 == 0, seed % 3 != 0);
          expected.All() = image.All();
          EnhanceByHand(expected, table, thresh);
          ASSERT_EQ(filter.Filter(&image), &image);
          ASSERT_EQ(image.All(), expected.All())
              << NameOf(format) << " strength " << strength << " thresh " << thresh << " " << width
              << " x " << height << " + " << padding;
        };
        ForEachShape(check);
        check(3, 3, 0);
        check(66, 9, 1);  // a window's worth of lines more than once
        if (HasFatalFailure()) return;
      }
    }
  EXPECT_EQ(count, 30U);
}

/// A pixel among equal neighbours.
unsigned FilterSpot(Filter& filter, PixelFormat format, unsigned spot, unsigned around) {
  const Layout layout = LayoutOf(format);
  TestImage image(3, 3, format);
  for (std::size_t y = 0; y < 3; ++y)
    for (std::size_t i = 0; i < 3 * layout.step; ++i) SetSample(image, i, y, around);
  for (std::size_t c = 0; c < layout.count; ++c)
    SetSample(image, layout.step + layout.first + c, 1, spot);
  filter.Filter(&image);
  return SampleAt(image, layout.step + layout.first, 1);
}

TEST(EdgeEnhancementFilter, DifferencesWorkedByHand) {
  const struct {
    PixelFormat format;
    double strength;
    unsigned thresh, around, spot, after;
  } kCases[] = {
      {Mono8, 1.0, 0, 100, 105, 110},      {Mono8, 1.0, 0, 100, 95, 90},
      {Mono8, 0.1, 0, 100, 165, 171},  // 65 tenths fall short of 6.5
      {Mono8, 0.1, 0, 100, 105, 106},  // 5 tenths do not
      {Mono8, 1.0, 10, 100, 110, 110},     {Mono8, 1.0, 10, 100, 111, 112},
      {Mono8, 32.0, 0, 100, 101, 133},     {Mono8, 32.0, 0, 100, 105, 255},
      {Mono8, 32.0, 0, 100, 96, 0},        {Mono8, 32.0, 255, 0, 255, 255},
      {Mono12, 1.0, 10, 1000, 1160, 1160}, {Mono12, 1.0, 10, 1000, 1161, 1162},
      {Mono12, 1.0, 10, 1000, 839, 838},   {Mono16, 32.0, 0, 0, 65535, 65535},
      {BGR8, 2.0, 0, 50, 60, 80},          {BGRa12, 2.0, 1, 500, 520, 528},
      {YCbCr8, 1.0, 0, 100, 105, 110},     {YUV422_8_UYVY, 1.0, 0, 100, 105, 110},
  };
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetStrength(c.strength);
    filter.SetThresh(c.thresh);
    EXPECT_EQ(FilterSpot(filter, c.format, c.spot, c.around), c.after)
        << NameOf(c.format) << " strength " << c.strength << " thresh " << c.thresh << ": "
        << c.spot << " among " << c.around;
  }
}

TEST(EdgeEnhancementFilter, TableStaysUntilASettingChanges) {
  Filter filter;
  EXPECT_EQ(FilterSpot(filter, Mono8, 110, 100), 110U) << "nothing was set";
  filter.SetThresh(4);
  EXPECT_EQ(FilterSpot(filter, Mono8, 110, 100), 110U) << "strength is 0 still";
  filter.SetThresh(0);
  filter.SetStrength(2.0);
  EXPECT_EQ(FilterSpot(filter, Mono8, 110, 100), 130U);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1010, 1000), 1030U);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1200, 1000), 1455U) << "entries end at 255";
  EXPECT_EQ(FilterSpot(filter, Mono12, 1000, 2000), 745U) << "and so do differences";
  filter.SetStrength(2.0);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1200, 1000), 1455U) << "the same value is no change";
  filter.SetStrength(3.0);
  filter.SetStrength(2.0);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1200, 1000), 1600U) << "there and back is one";
  EXPECT_EQ(FilterSpot(filter, Mono8, 10, 137), 0U) << "254";
  EXPECT_EQ(FilterSpot(filter, Mono8, 200, 70), 204U) << "260, of which a byte is left";
  EXPECT_EQ(FilterSpot(filter, Mono8, 10, 140), 6U);
  EXPECT_EQ(FilterSpot(filter, BGR12, 1200, 1000), 1600U) << "it serves all kinds of images";
  filter.SetStrength(0.0);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1200, 1000), 1200U);
  filter.SetStrength(2.0);
  EXPECT_EQ(FilterSpot(filter, Mono8, 10, 140), 0U) << "made for 8 bits now";
}

TEST(EdgeEnhancementFilter, DeadBandIsThatOfTheImage) {
  Filter filter;
  filter.SetStrength(1.0);
  filter.SetThresh(10);
  EXPECT_EQ(FilterSpot(filter, Mono8, 111, 100), 112U);
  // Entries are 0 up to 10 and then count from 1: 161 takes entry 161, which is 151.
  EXPECT_EQ(FilterSpot(filter, Mono12, 1160, 1000), 1160U);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1161, 1000), 1312U);
  filter.SetThresh(11);
  filter.SetThresh(10);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1161, 1000), 1162U);
  // Entries are 0 up to 160.
  EXPECT_EQ(FilterSpot(filter, Mono8, 111, 100), 111U);
  EXPECT_EQ(FilterSpot(filter, Mono8, 161, 0), 162U);
}

TEST(EdgeEnhancementFilter, ImagesThatAreNotFilteredCount) {
  Filter filter;
  filter.SetStrength(2.0);
  TestImage bayer(4, 4, BayerRG8), narrow(2, 9, Mono8), low(9, 2, Mono8);
  EXPECT_THROW(filter.Filter(&bayer), GenICam::RuntimeException);
  EXPECT_EQ(FilterSpot(filter, Mono12, 1200, 1000), 1600U) << "a refused image makes no table";
  for (TestImage* image : {&narrow, &low}) {
    filter.SetStrength(3.0);
    filter.SetStrength(2.0);
    const auto before = image->Randomize(1).All();
    filter.Filter(image);
    EXPECT_EQ(image->All(), before);
    EXPECT_EQ(FilterSpot(filter, Mono12, 1200, 1000), 1455U) << "one without an inside does";
  }
}

/// Any series of settings and images gives what a filter with one dirty flag and one table gives.
TEST(EdgeEnhancementFilter, SeriesAgreesWithOneTableAndOneFlag) {
  constexpr PixelFormat kSeries[] = {Mono8, Mono10, Mono16, BGR8, BGRa12, YCbCr422_8};
  constexpr double kStrengths[] = {0.0, 0.7, 2.0, 32.0};
  constexpr unsigned kThreshs[] = {0, 3, 40};
  std::mt19937 random(3);
  const auto pick = [&](const auto& list) { return list[random() % std::size(list)]; };
  Filter filter;
  double strength = 0;
  unsigned thresh = 0;
  bool isDirty = false;
  std::optional<std::vector<int>> table;
  for (unsigned step = 0; step < 600; ++step) {
    if (random() % 3 == 0) {
      const double value = pick(kStrengths);
      isDirty |= value != strength;
      strength = value;
      random() % 2 ? filter.SetStrength(value) : WriteRegister(filter, kStrengthReg, value);
    }
    if (random() % 4 == 0) {
      const unsigned value = pick(kThreshs);
      isDirty |= value != thresh;
      thresh = value;
      random() % 2 ? filter.SetThresh(value) : WriteRegister(filter, kThreshReg, value);
    }
    TestImage image(20, 5, pick(kSeries)), expected(20, 5, image.GetImagePixelFormat());
    Fill(image, step, random() % 2 == 0);
    expected.All() = image.All();
    if (isDirty) {
      table.reset();
      if (strength > 0) table = Table(strength, thresh, DepthOf(image.GetImagePixelFormat()));
    }
    isDirty = false;
    if (table) EnhanceByHand(expected, *table, thresh);
    filter.Filter(&image);
    ASSERT_EQ(image.All(), expected.All()) << "step " << step;
  }
}

TEST(EdgeEnhancementFilter, AnyValueThatARegisterCanHoldIsDefined) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double strength : {-1.0, -infinity, std::nan(""), -0.0, 1e-300}) {
    Filter filter;
    WriteRegister(filter, kStrengthReg, strength);
    EXPECT_EQ(FilterSpot(filter, Mono8, 105, 100), 105U) << strength;
  }
  for (double strength : {infinity, 1e300}) {
    Filter filter;
    WriteRegister(filter, kStrengthReg, strength);
    EXPECT_EQ(FilterSpot(filter, Mono10, 105, 100), 1023U) << strength;
    EXPECT_EQ(FilterSpot(filter, Mono10, 99, 100), 0U) << strength;
  }
  for (unsigned thresh : {256U, 0x01000000U, 0xFFFFFFFFU})
    for (PixelFormat format : {Mono8, Mono16, BGR16}) {
      Filter filter;
      filter.SetStrength(32.0);
      WriteRegister(filter, kThreshReg, thresh);
      EXPECT_EQ(filter.GetThresh(), thresh);
      const unsigned fullScale = (1U << DepthOf(format)) - 1;
      EXPECT_EQ(FilterSpot(filter, format, fullScale, 0), fullScale) << thresh;
    }
}

TEST(EdgeEnhancementFilter, SamplesAboveTheDepthAreMaskedWhereTheyChange) {
  Filter filter;
  filter.SetStrength(1.0);
  EXPECT_EQ(FilterSpot(filter, Mono10, 0xFC00 + 105, 100), 110U);
  EXPECT_EQ(FilterSpot(filter, Mono10, 0xFC00 + 100, 100), 0xFC00U + 100) << "no difference";
  EXPECT_EQ(FilterSpot(filter, Mono10, 105, 0xFC00 + 100), 110U);
}

TEST(EdgeEnhancementFilter, RefusesOtherFormatsAndLeavesThemAlone) {
  std::vector<PixelFormat> supported;
  for (const auto& row : kFormats)
    supported.insert(supported.end(), row.formats.begin(), row.formats.end());
  Filter filter;
  filter.SetStrength(2.0);
  ExpectSupportsOnly(filter, supported);
}

TEST(EdgeEnhancementFilter, TypedSettersRefuseWhatIsOutOfRange) {
  using Error = GenICam::OutOfRangeException;
  Filter filter;
  EXPECT_EQ(MessageOf<Error>([&] { filter.SetStrength(-0.5); }),
            "value = -0.500000 must be greater than or equal 0.000000");
  EXPECT_EQ(MessageOf<Error>([&] { filter.SetStrength(32.5); }),
            "value = 32.500000 must be smaller than or equal 32.000000");
  EXPECT_EQ(MessageOf<Error>([&] { filter.SetThresh(256); }),
            "value = 256 must be equal or smaller than Max = 255");
  EXPECT_EQ(MessageOf<Error>([&] { filter.SetThresh(0xFFFFFFFF); }),
            "value = 4294967295 must be equal or smaller than Max = 255");
  EXPECT_EQ(filter.GetStrength(), 0.0);
  EXPECT_EQ(filter.GetThresh(), 0U);
  filter.SetStrength(32.0);
  filter.SetThresh(255);
  EXPECT_EQ(filter.GetStrength(), 32.0);
  EXPECT_EQ(filter.GetThresh(), 255U);
}

TEST(EdgeEnhancementFilter, RegistersAndSettersAreOneRoadEach) {
  Filter filter;
  filter.SetStrength(1.25);
  filter.SetThresh(77);
  EXPECT_EQ(ReadRegister<double>(filter, kStrengthReg), 1.25);
  EXPECT_EQ(ReadRegister<std::uint32_t>(filter, kThreshReg), 77U);
  WriteRegister(filter, kStrengthReg, 99.5);
  WriteRegister(filter, kThreshReg, 1000U);
  EXPECT_EQ(filter.GetStrength(), 99.5) << "without a check";
  EXPECT_EQ(filter.GetThresh(), 1000U);
  EXPECT_EQ(ReadRegister<std::uint8_t>(filter, 0), sizeof(std::size_t));
  EXPECT_EQ(ReadRegister<double>(filter, 0x20), 0.0);
  EXPECT_EQ(ReadRegister<double>(filter, 0x28), 32.0);
  EXPECT_EQ(ReadRegister<std::uint32_t>(filter, 0x30), 0U);
  EXPECT_EQ(ReadRegister<std::uint32_t>(filter, 0x38), 255U);
}

TEST(EdgeEnhancementFilter, NodeMapShowsTheSettings) {
  Filter filter;
  filter.SetStrength(2.5);
  GenApi::INodeMap& nodes = *filter.GetINodeMap();
  const GenApi::CFloatPtr strength = nodes.GetNode("Strength");
  const GenApi::CIntegerPtr thresh = nodes.GetNode("Thresh");
  ASSERT_TRUE(strength.IsValid() && thresh.IsValid());
  EXPECT_EQ(strength->GetValue(), 2.5);
  EXPECT_EQ(strength->GetMin(), 0.0);
  EXPECT_EQ(strength->GetMax(), 32.0);
  EXPECT_EQ(thresh->GetMin(), 0);
  EXPECT_EQ(thresh->GetMax(), 255);
  filter.SetStrength(4.0);
  filter.SetThresh(9);
  EXPECT_EQ(strength->GetValue(), 4.0) << "a setter ends the cached value";
  EXPECT_EQ(thresh->GetValue(), 9);
  strength->SetValue(0.5);
  thresh->SetValue(3);
  EXPECT_EQ(filter.GetStrength(), 0.5);
  EXPECT_EQ(filter.GetThresh(), 3U);
  EXPECT_THROW(strength->SetValue(32.5), GenICam::OutOfRangeException);
  EXPECT_THROW(thresh->SetValue(256), GenICam::OutOfRangeException);
  EXPECT_EQ(filter.GetThresh(), 3U);
  for (const char* name : {"Strength", "Thresh"}) {
    EXPECT_TRUE(nodes.GetNode(name)->IsStreamable()) << name;
    EXPECT_EQ(nodes.GetNode(name)->GetAccessMode(), GenApi::RW) << name;
  }
  EXPECT_EQ(nodes.GetNode("SizeTSize")->GetVisibility(), GenApi::Guru);
}

TEST(EdgeEnhancementFilter, DocumentMatchesRegisters) {
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
}

TEST(EdgeEnhancementFilter, FactoryMakesIt) {
  const Initialized initialized;
  CQvAutoPtr<IQvFilterReleasable, IQvEdgeEnhancementFilter> filter(
      CreateIQvFilter(QvFilterType_EdgeEnhancement));
  EXPECT_EQ(filter->GetIQvFilterInfo()->GetFilterType(), QvFilterType_EdgeEnhancement);
  EXPECT_EQ(filter->GetIQvFilterInfo()->GetFilterName(), "Edge Enhancement");
  EXPECT_EQ(filter->GetStrength(), 0.0);
}

TEST(EdgeEnhancementFilter, NeighboursOfAViewAreInsideIt) {
  Filter filter;
  filter.SetStrength(1.0);
  const Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(9, 7, Mono8, QvMemoryInitialization_Zero);
  IQvImage* image = buffer->GetIQvImage();
  for (std::size_t y = 1; y < 4; ++y)
    for (std::size_t x = 2; x < 5; ++x) SetSample(*image, x, y, 40);
  filter.Filter(image->GetROIImage(2, 1, 3, 3));
  EXPECT_EQ(SampleAt(*image, 3, 2), 40U) << "flat inside the view";
  EXPECT_EQ(SampleAt(*image, 2, 1), 40U) << "the border of the view stays";
  filter.Filter(image);
  EXPECT_EQ(SampleAt(*image, 2, 1), 65U);  // 40 and the difference from (3 * 40 + 4) / 8
}

}  // namespace
}  // namespace QvApi
