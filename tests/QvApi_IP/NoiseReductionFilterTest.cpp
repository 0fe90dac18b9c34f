// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <set>

#include "QvApi_IP/CalibrationChecks.h"
#include "QvApi_IP/QvNoiseReductionFilter.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvNoiseReductionFilter;
using Image = std::vector<std::vector<unsigned>>;

const std::vector<PixelFormat> kFormats = {Mono8,     Mono10,    Mono12,    Mono14,    Mono16,
                                           BayerGR8,  BayerRG8,  BayerGB8,  BayerBG8,  BayerGR10,
                                           BayerRG10, BayerGB10, BayerBG10, BayerGR12, BayerRG12,
                                           BayerGB12, BayerBG12, BayerGR14, BayerRG14, BayerGB14,
                                           BayerBG14, BayerGR16, BayerRG16, BayerGB16, BayerBG16};

/// The depth at the end of a format's name.
unsigned DepthOf(PixelFormat format) {
  const std::string name = NameOf(format);
  return static_cast<unsigned>(std::stoul(name.substr(name.find_first_of("0123456789"))));
}

/// The colour of a site by the letters in the format's name; 'M' for mono.
char ColourAt(PixelFormat format, std::size_t x, std::size_t y) {
  const std::string name = NameOf(format);
  if (name[0] == 'M') return 'M';
  const std::string tile = name.substr(5, 2);
  const std::string second = {tile[0] == 'G' ? (tile[1] == 'R' ? 'B' : 'R') : 'G',
                              tile[0] == 'G' ? 'G' : (tile[0] == 'R' ? 'B' : 'R')};
  return (y % 2 == 0 ? tile : second)[x % 2];
}

using Steps = std::vector<std::pair<int, int>>;
const Steps kDiagonal = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
const Steps kDirect = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
const Steps kDirectAtTwo = {{-2, 0}, {2, 0}, {0, -2}, {0, 2}};

/// The pixel and its neighbours that exist, sorted.
std::vector<unsigned> Neighbourhood(const Image& image, std::size_t x, std::size_t y,
                                    const Steps& steps) {
  std::vector<unsigned> samples{image[y][x]};
  for (const auto& [dx, dy] : steps) {
    const int column = static_cast<int>(x) + dx, line = static_cast<int>(y) + dy;
    if (column < 0 || line < 0 || column >= static_cast<int>(image[0].size()) ||
        line >= static_cast<int>(image.size()))
      continue;
    samples.push_back(image[static_cast<std::size_t>(line)][static_cast<std::size_t>(column)]);
  }
  std::ranges::sort(samples);
  return samples;
}

Image SimpleByHand(const Image& image, PixelFormat format) {
  Image result = image;
  for (std::size_t y = 0; y < image.size(); ++y)
    for (std::size_t x = 0; x < image[y].size(); ++x) {
      const char colour = ColourAt(format, x, y);
      const bool isInside = x >= 1 && x + 1 < image[y].size() && y >= 1 && y + 1 < image.size();
      const Steps& steps = colour == 'M'   ? (isInside ? kDiagonal : kDirect)
                           : colour == 'G' ? kDiagonal
                                           : kDirectAtTwo;
      const auto samples = Neighbourhood(image, x, y, steps);
      const std::size_t half = samples.size() / 2;
      result[y][x] =
          samples.size() % 2 == 1 ? samples[half] : (samples[half - 1] + samples[half]) / 2;
    }
  return result;
}

Image SubtractByHand(const Image& image, const Image& dark, PixelFormat format) {
  Image result = image;
  for (std::size_t y = 0; y < image.size(); ++y)
    for (std::size_t x = 0; x < image[y].size(); ++x)
      result[y][x] -= std::min(result[y][x], dark[y][x]);

  const unsigned bits = DepthOf(format), limit = (1U << bits) - 1 - (1U << (bits - 7));
  const std::size_t width = image[0].size(), height = image.size();
  const auto repair = [&](std::size_t x, std::size_t y) {
    if (image[y][x] < limit || result[y][x] >= limit) return;
    const char colour = ColourAt(format, x, y);
    const Steps& steps = colour == 'M' || colour == 'G' ? kDiagonal : kDirectAtTwo;
    result[y][x] = std::max(result[y][x], Neighbourhood(result, x, y, steps)[2]);
  };
  if (ColourAt(format, 0, 0) == 'M') {
    for (std::size_t y = 1; y + 1 < height; ++y)
      for (std::size_t x = 1; x + 1 < width; ++x) repair(x, y);
  } else if (width >= 6 && height >= 6) {
    for (std::size_t pair = 2; pair < height - 3; pair += 2)
      for (std::size_t y : {pair, pair + 1})
        for (std::size_t x = 2; x < width - 3; x += 2) repair(x, y), repair(x + 1, y);
  }
  return result;
}

/// As ForEachShape, and images that are repaired.
template <class Check>
void ForEachSize(Check check) {
  constexpr std::pair<std::size_t, std::size_t> kSizes[] = {
      {1, 1}, {1, 5}, {4, 1}, {2, 3}, {3, 3},   {5, 8},   {6, 5},
      {6, 6}, {7, 6}, {9, 9}, {8, 7}, {67, 12}, {131, 8}, {200, 7}};
  for (const auto& [width, height] : kSizes) check(width, height);
}

TEST(NoiseReductionFilter, SimpleTakesMediansOfEveryFormatAndNothingBeside) {
  EXPECT_EQ(kFormats.size(), 25U);
  unsigned seed = 0;
  for (PixelFormat format : kFormats) {
    Filter filter;
    filter.SetNoiseReductionMode(QvNoiseReductionMode_Simple);
    const auto check = [&](std::size_t width, std::size_t height, std::size_t padding) {
      TestImage image(width, height, format, padding), expected(width, height, format, padding);
      image.Randomize(++seed);
      expected.All() = image.All();
      SetSamples(expected, SimpleByHand(Samples(image), format));
      ASSERT_EQ(filter.Filter(&image), &image);
      ASSERT_EQ(image.All(), expected.All())
          << NameOf(format) << " " << width << " x " << height << " + " << padding;
    };
    ForEachShape(check);
    ForEachSize([&](std::size_t width, std::size_t height) { check(width, height, seed % 4); });
  }
}

/// Spots at or near full scale among other levels.
void FillWithSpots(TestImage& image, unsigned seed, unsigned oneIn) {
  std::mt19937 engine(seed);
  const auto random = [&] { return static_cast<unsigned>(engine()); };
  const unsigned bits = DepthOf(image.GetImagePixelFormat()), top = (1U << bits) - 1;
  Image samples = Samples(image);
  for (auto& line : samples)
    for (unsigned& sample : line)
      sample = random() % oneIn == 0 ? top - random() % (top / 64) : random() % (top + 1);
  SetSamples(image, samples);
}

TEST(NoiseReductionFilter, SubtractsAndRepairsEveryFormatAndNothingBeside) {
  unsigned seed = 0, repaired = 0;
  for (PixelFormat format : kFormats) {
    Filter filter;
    filter.SetNoiseReductionMode(QvNoiseReductionMode_SubtractingLightShieldingImage);
    ForEachSize([&](std::size_t width, std::size_t height) {
      for (unsigned spots : {1U, 2U, 30U}) {
        TestImage dark = DefaultImage(width, height, format);
        TestImage image = DefaultImage(width, height, format);
        TestImage expected = DefaultImage(width, height, format);
        seed += 2;
        FillWithSpots(dark.Randomize(seed), seed, 50);
        FillWithSpots(image.Randomize(seed + 1), seed + 1, spots);
        expected.All() = image.All();
        const Image samples = SubtractByHand(Samples(image), Samples(dark), format);
        SetSamples(expected, samples);
        for (std::size_t y = 0; y < height; ++y)
          for (std::size_t x = 0; x < width; ++x) {
            const unsigned before = SampleAt(image, x, y), level = SampleAt(dark, x, y);
            repaired += samples[y][x] != before - std::min(before, level);
          }
        Calibrate(filter, dark);
        ASSERT_EQ(filter.Filter(&image), &image);
        ASSERT_EQ(image.All(), expected.All())
            << NameOf(format) << " " << width << " x " << height << " spots " << spots;
      }
    });
  }
  EXPECT_GT(repaired, 10000U) << "the images must have something to repair";
}

TEST(NoiseReductionFilter, SubtractionWorkedByHand) {
  const struct {
    PixelFormat format;
    unsigned around, pixel, dark, after;  // the dark image is 0 around the pixel
  } kCases[] = {{Mono8, 80, 70, 70, 0},          {Mono8, 80, 71, 70, 1},
                {Mono8, 80, 9, 200, 0},          {Mono8, 255, 255, 0, 255},
                {Mono8, 255, 253, 0, 253},       {Mono8, 255, 253, 60, 255},
                {Mono8, 255, 252, 60, 192},      {Mono8, 100, 255, 255, 100},
                {Mono8, 100, 255, 60, 195},      {Mono8, 255, 255, 2, 253},
                {Mono8, 255, 255, 3, 255},       {Mono10, 1000, 1015, 900, 1000},
                {Mono10, 1000, 1014, 900, 114},  {Mono12, 4000, 4063, 4063, 4000},
                {Mono12, 4000, 4062, 4062, 0},   {Mono16, 65535, 65023, 65023, 65535},
                {Mono16, 65535, 65022, 1, 65021}};
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetNoiseReductionMode(QvNoiseReductionMode_SubtractingLightShieldingImage);
    TestImage dark = Uniform(5, 3, c.format, 0), image = Uniform(5, 3, c.format, c.around);
    SetSample(dark, 2, 1, c.dark);
    SetSample(image, 2, 1, c.pixel);
    Calibrate(filter, dark);
    filter.Filter(&image);
    EXPECT_EQ(SampleAt(image, 2, 1), c.after)
        << NameOf(c.format) << " " << c.pixel << " - " << c.dark;
    EXPECT_EQ(SampleAt(image, 1, 1), c.around);
  }
}

TEST(NoiseReductionFilter, SimpleWorkedByHand) {
  Filter filter;
  filter.SetNoiseReductionMode(QvNoiseReductionMode_Simple);
  TestImage mono(3, 3, Mono8);
  SetSamples(mono, {{10, 200, 31}, {41, 255, 60}, {70, 0, 90}});
  filter.Filter(&mono);
  EXPECT_EQ(Samples(mono), (Image{{41, 115, 60}, {55, 70, 75}, {41, 80, 60}}));
  TestImage mosaic(2, 2, BayerGR8);
  SetSamples(mosaic, {{10, 20}, {30, 41}});
  filter.Filter(&mosaic);
  EXPECT_EQ(Samples(mosaic), (Image{{25, 20}, {30, 25}}));
}

TEST(NoiseReductionFilter, KeepsTheLastCalibrationInEveryMode) {
  Filter filter;
  filter.SetNoiseReductionMode(QvNoiseReductionMode_SubtractingLightShieldingImage);
  ExpectKeepsTheLastCalibration(filter, 40, 30);

  const auto corrected = [&] {
    TestImage image = Uniform(8, 7, Mono8, 50);
    filter.Filter(&image);
    return SampleAt(image, 4, 3);
  };
  for (auto mode : {QvNoiseReductionMode_Off, QvNoiseReductionMode_Simple}) {
    filter.SetNoiseReductionMode(mode);
    TestImage dark = Uniform(8, 7, Mono8, 5U + mode);
    Calibrate(filter, dark);
    EXPECT_EQ(corrected(), 50U);
    filter.SetNoiseReductionMode(QvNoiseReductionMode_SubtractingLightShieldingImage);
    EXPECT_EQ(corrected(), 45U - mode) << "a change of mode leaves the calibration";
  }
}

TEST(NoiseReductionFilter, SubtractsFromImagesThatAgreeOnly) {
  Filter filter;
  filter.SetNoiseReductionMode(QvNoiseReductionMode_SubtractingLightShieldingImage);
  ExpectCorrectsImagesThatAgreeOnly(filter);
}

TEST(NoiseReductionFilter, ViewsHaveEdgesOfTheirOwn) {
  Filter filter;
  filter.SetNoiseReductionMode(QvNoiseReductionMode_Simple);
  for (PixelFormat format : {Mono8, Mono12, BayerRG8}) {
    TestImage frame(20, 14, format);
    frame.Randomize(8);
    const Buffer buffer = MakeBuffer();
    buffer->CopyImage(&frame);
    IQvImage& image = *buffer->GetIQvImage();
    Image expected = Samples(image);
    IQvImage* view = image.GetROIImage(3, 2, 11, 9);
    const Image inside = SimpleByHand(Samples(*view), view->GetImagePixelFormat());
    for (std::size_t y = 0; y < 9; ++y) std::ranges::copy(inside[y], &expected[y + 2][3]);
    filter.Filter(view);
    EXPECT_EQ(Samples(image), expected) << NameOf(format);
  }
}

TEST(NoiseReductionFilter, SettersAndRegistersAreOne) {
  Filter filter;
  EXPECT_EQ(filter.GetNoiseReductionMode(), QvNoiseReductionMode_Off);
  const GenApi::CEnumerationPtr feature(filter.GetINodeMap()->GetNode("NoiseReductionMode"));
  const char* const kNames[] = {"Off", "Simple", "SubtractingLightShieldingImage"};
  for (unsigned mode : {2U, 0U, 1U}) {
    filter.SetNoiseReductionMode(static_cast<EQvNoiseReductionMode_t>(mode));
    EXPECT_EQ(ReadRegister<unsigned>(filter, 0x10), mode);
    EXPECT_STREQ(feature->ToString().c_str(), kNames[mode]);
    WriteRegister(filter, 0x10, 7U);
    feature->FromString(kNames[mode]);
    EXPECT_EQ(filter.GetNoiseReductionMode(), mode);
  }
  for (unsigned mode : {3U, 0xFFFFFFFFU}) {
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] {
                filter.SetNoiseReductionMode(static_cast<EQvNoiseReductionMode_t>(mode));
              }),
              "eNRM = " + std::to_string(mode) + " must be smaller than Max = 3");
    EXPECT_EQ(filter.GetNoiseReductionMode(), QvNoiseReductionMode_Simple);
  }
  ExpectCalibrationEnableRegister(filter);
}

TEST(NoiseReductionFilter, ModesThatOnlyARegisterCanHoldDoNothing) {
  for (unsigned mode : {3U, 4U, 0x80000000U, 0xFFFFFFFFU}) {
    Filter filter;
    TestImage dark = Uniform(8, 7, Mono8, 10);
    Calibrate(filter, dark);
    WriteRegister(filter, 0x10, mode);
    EXPECT_EQ(filter.GetNoiseReductionMode(), mode);
    EXPECT_FALSE(Changes(filter, Uniform(8, 7, Mono8, 50))) << mode;
  }
}

TEST(NoiseReductionFilter, RefusesOtherFormatsAndLeavesThemAlone) {
  Filter filter;
  for (auto mode : {QvNoiseReductionMode_Off, QvNoiseReductionMode_Simple}) {
    filter.SetNoiseReductionMode(mode);
    ExpectSupportsOnly(filter, kFormats);
  }
}

TEST(NoiseReductionFilter, DocumentMatchesRegisters) {
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
  ExpectFeaturesForExperts(filter, {"NoiseReductionMode", "CalibrationEnable"});
}

}  // namespace
}  // namespace QvApi
