// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "QvApi_IP/CalibrationChecks.h"
#include "QvApi_IP/QvNoiseReductionFilter.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvNoiseReductionFilter;
using Mode = EQvNoiseReductionMode_t;

constexpr auto kSimple = QvNoiseReductionMode_Simple;
constexpr auto kSubtracting = QvNoiseReductionMode_SubtractingLightShieldingImage;

using Steps = std::vector<std::pair<int, int>>;
const Steps kDiagonal = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
const Steps kDirect = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
const Steps kDirectAtTwo = {{-2, 0}, {2, 0}, {0, -2}, {0, 2}};

char ColorAt(PixelFormat format, std::size_t x, std::size_t y) {
  return Info(format).IsMono() ? 'M' : BayerColor(NameOf(format), x, y);
}

/// The pixel and its neighbours that exist, sorted.
std::vector<unsigned> Neighbourhood(const SampleLines& image, std::size_t x, std::size_t y,
                                    const Steps& steps) {
  std::vector<unsigned> samples{image[y][x]};
  for (const auto& [dx, dy] : steps) {
    const std::size_t column = x + static_cast<std::size_t>(dx);  // wraps round before the first
    const std::size_t line = y + static_cast<std::size_t>(dy);
    if (line < image.size() && column < image[0].size()) samples.push_back(image[line][column]);
  }
  std::ranges::sort(samples);
  return samples;
}

SampleLines SimpleByHand(const SampleLines& image, PixelFormat format) {
  SampleLines result = image;
  for (std::size_t y = 0; y < image.size(); ++y)
    for (std::size_t x = 0; x < image[y].size(); ++x) {
      const char color = ColorAt(format, x, y);
      const bool isInside = x >= 1 && x + 1 < image[y].size() && y >= 1 && y + 1 < image.size();
      const Steps& steps = color == 'M'   ? (isInside ? kDiagonal : kDirect)
                           : color == 'G' ? kDiagonal
                                          : kDirectAtTwo;
      const auto samples = Neighbourhood(image, x, y, steps);
      const std::size_t half = samples.size() / 2;
      result[y][x] =
          samples.size() % 2 == 1 ? samples[half] : (samples[half - 1] + samples[half]) / 2;
    }
  return result;
}

/// Counts what it repairs.
SampleLines SubtractByHand(const SampleLines& image, const SampleLines& dark, PixelFormat format,
                           unsigned& repaired) {
  SampleLines result = image;
  for (std::size_t y = 0; y < image.size(); ++y)
    for (std::size_t x = 0; x < image[y].size(); ++x)
      result[y][x] -= std::min(result[y][x], dark[y][x]);

  const unsigned bits = DepthOf(format), limit = (1U << bits) - 1 - (1U << (bits - 7));
  const std::size_t width = image[0].size(), height = image.size();
  const bool isMono = Info(format).IsMono();
  // Of a mosaic whole tiles are repaired, which have two pixels or more around them.
  const auto isInside = [&](std::size_t at, std::size_t size) {
    return isMono ? at >= 1 && at + 1 < size : at >= 2 && at / 2 * 2 + 3 < size;
  };
  for (std::size_t y = 0; y < height; ++y)
    for (std::size_t x = 0; x < width; ++x) {
      if (!isInside(x, width) || !isInside(y, height)) continue;
      if (image[y][x] < limit || result[y][x] >= limit) continue;
      const bool isDiagonal = isMono || ColorAt(format, x, y) == 'G';
      const unsigned median = Neighbourhood(result, x, y, isDiagonal ? kDiagonal : kDirectAtTwo)[2];
      repaired += median > result[y][x];
      result[y][x] = std::max(result[y][x], median);
    }
  return result;
}

TEST(NoiseReductionFilter, SimpleTakesMediansOfEveryFormatAndNothingBeside) {
  for (PixelFormat format : RawFormats()) {
    Filter filter;
    filter.SetNoiseReductionMode(kSimple);
    CompareOnShapes(filter, format, [&](TestImage& image) {
      SetSamples(image, SimpleByHand(Samples(image), format));
    });
  }
}

TEST(NoiseReductionFilter, SimpleWorkedByHand) {
  Filter filter;
  filter.SetNoiseReductionMode(kSimple);
  TestImage mono(3, 3, Mono8), mosaic(2, 2, BayerGR8);
  SetSamples(mono, {{10, 200, 31}, {41, 255, 60}, {70, 0, 90}});
  filter.Filter(&mono);
  EXPECT_EQ(Samples(mono), (SampleLines{{41, 115, 60}, {55, 70, 75}, {41, 80, 60}}));
  SetSamples(mosaic, {{10, 20}, {30, 41}});
  filter.Filter(&mosaic);
  EXPECT_EQ(Samples(mosaic), (SampleLines{{25, 20}, {30, 25}}));
}

/// Spots at or near full scale among other levels.
void FillWithSpots(TestImage& image, unsigned seed, unsigned oneIn) {
  SampleLines samples = Samples(image.Randomize(seed));
  std::mt19937 random(seed);
  const unsigned top = (1U << DepthOf(image.GetImagePixelFormat())) - 1;
  for (auto& line : samples)
    for (unsigned& sample : line)
      if (random() % oneIn == 0) sample = top - static_cast<unsigned>(random()) % (top / 64);
  SetSamples(image, samples);
}

TEST(NoiseReductionFilter, SubtractsAndRepairsEveryFormatAndNothingBeside) {
  constexpr std::pair<std::size_t, std::size_t> kSizes[] = {
      {1, 1}, {1, 5}, {4, 1}, {2, 3}, {3, 3},   {5, 8},   {6, 5},
      {6, 6}, {7, 6}, {9, 9}, {8, 7}, {67, 12}, {131, 8}, {200, 7}};
  unsigned seed = 0, repaired = 0;
  for (PixelFormat format : RawFormats())
    for (const auto& [width, height] : kSizes)
      for (unsigned spots : {1U, 2U, 30U}) {
        if (HasFatalFailure()) return;
        Filter filter;
        filter.SetNoiseReductionMode(kSubtracting);
        DefaultImage dark(width, height, format), image(width, height, format);
        FillWithSpots(dark, ++seed, 50);
        FillWithSpots(image, ++seed, spots);
        CompareCalibrated(filter, dark, image, [&](const auto& samples, const auto& level) {
          return SubtractByHand(samples, level, format, repaired);
        });
      }
  EXPECT_GT(repaired, 10000U) << "the images must have something to repair";
}

TEST(NoiseReductionFilter, SubtractionWorkedByHand) {
  const struct {
    PixelFormat format;
    unsigned around, pixel, dark, after;  // the dark image is 0 around the pixel
  } kCases[] = {{Mono8, 80, 71, 70, 1},          {Mono8, 80, 9, 200, 0},
                {Mono8, 255, 253, 0, 253},       {Mono8, 255, 253, 60, 255},
                {Mono8, 255, 252, 60, 192},      {Mono8, 100, 255, 255, 100},
                {Mono8, 100, 255, 60, 195},      {Mono8, 255, 255, 2, 253},
                {Mono8, 255, 255, 3, 255},       {Mono10, 1000, 1015, 900, 1000},
                {Mono10, 1000, 1014, 900, 114},  {Mono12, 4000, 4063, 4063, 4000},
                {Mono12, 4000, 4062, 4062, 0},   {Mono16, 65535, 65023, 65023, 65535},
                {Mono16, 65535, 65022, 1, 65021}};
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetNoiseReductionMode(kSubtracting);
    DefaultImage dark(5, 3, c.format), image(5, 3, c.format, c.around);
    SetSample(dark, 2, 1, c.dark);
    SetSample(image, 2, 1, c.pixel);
    Calibrate(filter, dark);
    filter.Filter(&image);
    EXPECT_EQ(SampleAt(image, 2, 1), c.after) << "row " << &c - kCases;
  }
}

TEST(NoiseReductionFilter, KeepsTheLastCalibrationInEveryMode) {
  Filter filter;
  filter.SetNoiseReductionMode(kSubtracting);
  ExpectKeepsTheLastCalibration(filter, 40, 30);
  ExpectCorrectsImagesThatAgreeOnly(filter);
  // Modes beyond the last one, which only a register can hold, do nothing, as Off.
  for (unsigned mode : {0U, 1U, 3U, 0xFFFFFFFFU}) {
    WriteRegister(filter, 0x10, mode);
    const unsigned level = mode % 8;
    CalibrateBy(filter, level);
    DefaultImage noise(8, 7, Mono8);
    const auto before = noise.Randomize(1).All();
    filter.Filter(&noise);
    EXPECT_EQ(noise.All() == before, mode != kSimple);
    filter.SetNoiseReductionMode(kSubtracting);
    EXPECT_EQ(Corrected(filter), 50U - level) << "a change of mode leaves the calibration";
  }
}

TEST(NoiseReductionFilter, FormatsAndSettings) {
  Filter filter;
  ExpectSupportsOnly(filter, RawFormats());
  ExpectChoice(filter, "NoiseReductionMode", 0x10,
               {"Off", "Simple", "SubtractingLightShieldingImage"}, "eNRM",
               &Filter::GetNoiseReductionMode, &Filter::SetNoiseReductionMode);
  ExpectSwitch(filter, "CalibrationEnable", 0x20, &Filter::GetCalibrationEnable,
               &Filter::SetCalibrationEnable);
  ExpectDescription(filter, "Noise Reduction", "FilterInformation", GenApi::Expert,
                    {"NoiseReductionMode", "CalibrationEnable"});
}

}  // namespace
}  // namespace QvApi
