// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvEdgeEnhancementFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvEdgeEnhancementFilter;

std::vector<PixelFormat> Formats() {
  return OfAllDepths(
      {"Mono", "BGR", "BGRa"},
      {"RGB8", "RGBa8", "YCbCr8", "YCbCr8_CbYCr", "YCbCr709_8_CbYCr", "YCbCr601_8_CbYCr",
       "YUV8_UYV", "YCbCr422_8", "YCbCr709_422_8", "YCbCr601_422_8", "YUV422_8",
       "YCbCr422_8_CbYCrY", "YCbCr709_422_8_CbYCrY", "YCbCr601_422_8_CbYCrY", "YUV422_8_UYVY"});
}

/// How a pixel lies in its line: samples from pixel to pixel, and those that are corrected. With
/// three of them the pixel is compared in grey, red being sample `red`.
struct Layout {
  std::size_t step = 1, first = 0, count = 1, red = 0;
};

Layout LayoutOf(PixelFormat format) {
  const std::string name = NameOf(format);
  const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
  if (has("Mono")) return {};
  if (has("G")) return {Info(format).GetComponentCount(), 0, 3, name.find('R')};
  return {has("422") ? 2U : 3U, has("_CbY") || has("_UY") ? 1U : 0U};
}

struct Settings {
  double strength;
  std::uint32_t thresh;
};

void Apply(Filter& filter, const Settings& settings) {
  WriteRegister(filter, 0x10, settings.strength);
  WriteRegister(filter, 0x18, settings.thresh);
}

/// What a difference adds, entry by entry.
std::vector<int> Table(const Settings& settings, unsigned depth) {
  std::vector<int> table(std::size_t{1} << depth, 0);
  if (!(settings.strength > 0)) return table;
  const int fullScale = (1 << depth) - 1;
  double sum = 0;
  for (auto i = (std::uint64_t{settings.thresh} << (depth - 8)) + 1; i < table.size(); ++i) {
    sum += settings.strength;
    table[i] = sum >= fullScale ? fullScale : static_cast<int>(std::floor(sum + 0.5));
  }
  return table;
}

/// The definition, pixel by pixel, from a copy of the image.
void EnhanceByHand(TestImage& image, const std::vector<int>& table, std::uint64_t thresh) {
  const PixelFormat format = image.GetImagePixelFormat();
  const Layout layout = LayoutOf(format);
  const unsigned depth = DepthOf(format);
  const int fullScale = (1 << depth) - 1;
  const std::size_t width = image.GetImageWidth();
  const auto sample = [&](std::size_t x, std::size_t y, std::size_t c) {
    return static_cast<int>(SampleAt(image, x * layout.step + c, y)) & fullScale;
  };
  std::vector<int> levels;
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t x = 0; x < width; ++x)
      levels.push_back(layout.count == 1 ? sample(x, y, layout.first)
                                         : (2 * sample(x, y, layout.red) + 5 * sample(x, y, 1) +
                                            sample(x, y, 2 - layout.red)) /
                                               8);
  for (std::size_t y = 1; y + 1 < image.GetImageHeight(); ++y)
    for (std::size_t x = 1; x + 1 < width; ++x) {
      const int level = levels[y * width + x];
      int sum = -level;
      for (std::size_t v = y - 1; v <= y + 1; ++v)
        for (std::size_t u = x - 1; u <= x + 1; ++u) sum += levels[v * width + u];
      const int difference = level - (sum + 4) / 8;
      const auto distance = static_cast<std::uint64_t>(std::abs(difference));
      if (distance <= thresh << (depth - 8)) continue;
      int amount = table[std::min<std::size_t>(distance, table.size() - 1)];
      if (depth == 8) amount &= 0xFF;
      if (amount == 0) continue;
      for (std::size_t c = layout.first; c < layout.first + layout.count; ++c) {
        const int made = sample(x, y, c) + (difference > 0 ? amount : -amount);
        SetSample(image, x * layout.step + c, y,
                  static_cast<unsigned>(std::clamp(made, 0, fullScale)));
      }
    }
}

/// Little contrast, so that differences on both sides of thresholds occur, or much.
void Fill(TestImage& image, unsigned seed) {
  FillAtRandom(image, seed);
  const unsigned unit = 1U << (DepthOf(image.GetImagePixelFormat()) - 8);
  const std::size_t count = image.GetImageWidth() * LayoutOf(image.GetImagePixelFormat()).step;
  for (std::size_t y = 0; y < image.GetImageHeight() && seed % 2 == 0; ++y)
    for (std::size_t i = 0; i < count; ++i)
      SetSample(image, i, y, 100 * unit + SampleAt(image, i, y) % (32 * unit));
}

TEST(EdgeEnhancementFilter, EnhancesEveryFormatAndNothingBeside) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::vector<Settings> all{{0.0, 0},          {32.0, 0},       {32.0, 255},    {1.0, 0},
                            {0.1, 0},          {1.5, 10},       {-1.0, 0},      {-kInfinity, 0},
                            {std::nan(""), 0}, {1e-300, 0},     {kInfinity, 1}, {1e300, 0},
                            {32.0, 256},       {3.0, 1U << 24}, {32.0, ~0U}};
  std::mt19937 random(2);
  for (unsigned i = 0; i < 4; ++i)
    all.push_back({std::uniform_real_distribution(0.0, i % 2 ? 32.0 : 3.0)(random),
                   static_cast<unsigned>(random()) % (i < 2 ? 30 : 256)});
  for (PixelFormat format : Formats())
    for (const Settings& s : all) {
      SCOPED_TRACE("strength " + std::to_string(s.strength) + " thresh " +
                   std::to_string(s.thresh));
      Filter filter;
      Apply(filter, s);
      const std::vector<int> table = Table(s, DepthOf(format));
      CompareOnShapes(
          filter, format, [&](TestImage& image) { EnhanceByHand(image, table, s.thresh); }, Fill);
    }
}

/// Rows that follow one another on one filter. What a difference adds is a table that is made with
/// the first image after a change of a setting, for its depth, and serves all images from then on.
TEST(EdgeEnhancementFilter, DifferencesWorkedByHand) {
  const struct {
    Settings settings;
    PixelFormat format;
    unsigned around, spot, after;
  } kCases[] = {
      {{0.0, 4}, Mono8, 100, 110, 110},
      {{1.0, 0}, Mono8, 100, 105, 110},
      {{0.1, 0}, Mono8, 100, 165, 171},  // 65 tenths fall short of 6.5
      {{0.1, 0}, Mono8, 100, 105, 106},  // 5 tenths do not
      {{32.0, 0}, Mono8, 100, 105, 255},
      {{32.0, 0}, Mono8, 100, 96, 0},
      {{2.0, 1}, BGRa12, 500, 520, 528},
      {{1.0, 10}, Mono8, 100, 110, 110},
      {{1.0, 10}, Mono8, 100, 111, 112},
      // The dead band is that of the image: entries are 0 up to 10, 161 takes entry 161.
      {{1.0, 10}, Mono12, 1000, 1160, 1160},
      {{1.0, 10}, Mono12, 1000, 1161, 1312},
      {{2.0, 0}, Mono8, 100, 110, 130},
      {{2.0, 0}, Mono12, 1000, 1200, 1455},  // entries end at 255
      {{2.0, 0}, Mono12, 2000, 1000, 745},   // and so do differences
      {{3.0, 0}, Mono12, 1000, 1200, 1800},
      {{2.0, 0}, BGR12, 1000, 1200, 1600},
      {{2.0, 0}, Mono8, 70, 200, 204},  // 260, of which a byte is left
  };
  Filter filter;
  for (const auto& c : kCases) {
    Apply(filter, c.settings);
    const Layout layout = LayoutOf(c.format);
    TestImage image(3, 3, c.format);
    for (std::size_t y = 0; y < 3; ++y)
      for (std::size_t i = 0; i < 3 * layout.step; ++i) SetSample(image, i, y, c.around);
    for (std::size_t i = 0; i < layout.count; ++i) SetSample(image, layout.step + i, 1, c.spot);
    filter.Filter(&image);
    EXPECT_EQ(SampleAt(image, layout.step, 1), c.after) << "row " << &c - kCases;
  }
}

/// Any series of settings and images gives what a filter with one dirty flag and one table gives.
/// Images without an inside count, those that are refused do not.
TEST(EdgeEnhancementFilter, SeriesAgreesWithOneTableAndOneFlag) {
  constexpr PixelFormat kSeries[] = {Mono8, Mono10, Mono16, BGR8, BGRa12, YCbCr422_8, BayerRG8};
  constexpr double kStrengths[] = {0.0, 0.7, 2.0, 32.0};
  constexpr unsigned kThreshs[] = {0, 3, 40};
  std::mt19937 random(3);
  const auto pick = [&](const auto& list) { return list[random() % std::size(list)]; };
  Filter filter;
  Settings settings{};
  bool isDirty = false;
  std::vector<int> table;
  for (unsigned step = 0; step < 800; ++step) {
    if (random() % 3 == 0) {
      const double value = pick(kStrengths);
      isDirty |= value != settings.strength;
      settings.strength = value;
      random() % 2 ? filter.SetStrength(value) : WriteRegister(filter, 0x10, value);
    }
    if (random() % 4 == 0) {
      const unsigned value = pick(kThreshs);
      isDirty |= value != settings.thresh;
      settings.thresh = value;
      random() % 2 ? filter.SetThresh(value) : WriteRegister(filter, 0x18, value);
    }
    const PixelFormat format = pick(kSeries);
    const std::size_t width = random() % 6 == 0 ? 2 : 20, height = random() % 6 == 0 ? 2 : 5;
    TestImage image(width, height, format), expected(width, height, format);
    if (format == BayerRG8) {
      EXPECT_THROW(filter.Filter(&image), GenICam::RuntimeException);
      continue;
    }
    Fill(image, step);
    expected.All() = image.All();
    if (isDirty)
      table = settings.strength > 0 ? Table(settings, DepthOf(format)) : std::vector<int>();
    isDirty = false;
    if (!table.empty()) EnhanceByHand(expected, table, settings.thresh);
    filter.Filter(&image);
    ASSERT_EQ(image.All(), expected.All()) << "step " << step;
  }
}

TEST(EdgeEnhancementFilter, FormatsAndSettings) {
  Filter filter;
  ExpectNumber(filter, "Strength", 0x10, 0.0, 0.0, 32.0, &Filter::GetStrength,
               &Filter::SetStrength);
  ExpectNumber(filter, "Thresh", 0x18, 0U, 0U, 255U, &Filter::GetThresh, &Filter::SetThresh);
  ExpectSupportsOnly(filter, Formats());
  ExpectDescription(filter, "Edge Enhancement", "FilterInformation", GenApi::Beginner,
                    {"Strength", "Thresh"});
}

}  // namespace
}  // namespace QvApi
