// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "QvApi_IP/CalibrationChecks.h"
#include "QvApi_IP/QvFlatFieldCorrectionFilter.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvFlatFieldCorrectionFilter;
using Image = std::vector<std::vector<unsigned>>;

constexpr auto kMultiplication = QvFlatFieldCorrectionMode_Multiplication;
constexpr auto kAddition = QvFlatFieldCorrectionMode_Addition;

const struct {
  bool isBayer;
  unsigned bits;
  std::vector<PixelFormat> formats;
} kFormats[] = {
    {false, 8, {Mono8}},
    {false, 10, {Mono10}},
    {false, 12, {Mono12}},
    {false, 14, {Mono14}},
    {false, 16, {Mono16}},
    {true, 8, {BayerGR8, BayerRG8, BayerGB8, BayerBG8}},
    {true, 10, {BayerGR10, BayerRG10, BayerGB10, BayerBG10}},
    {true, 12, {BayerGR12, BayerRG12, BayerGB12, BayerBG12}},
    {true, 14, {BayerGR14, BayerRG14, BayerGB14, BayerBG14}},
    {true, 16, {BayerGR16, BayerRG16, BayerGB16, BayerBG16}},
};

/// What one pixel shall have been in the calibration image.
std::int64_t TargetAt(const Image& flat, bool isBayer, unsigned bits, std::size_t x,
                      std::size_t y) {
  const std::size_t width = flat[0].size(), height = flat.size();
  const std::size_t least = std::min(width, height), side = least > 3 ? least / 4 : least;
  double sum = 0, count = 0;
  for (std::size_t v = (height - side) / 2; v < (height - side) / 2 + side; ++v)
    for (std::size_t u = (width - side) / 2; u < (width - side) / 2 + side; ++u)
      if (!isBayer || (u % 2 == x % 2 && v % 2 == y % 2)) sum += flat[v][u], count += 1;
  const double mean = count == 0 ? 128.0 : sum / count;
  return static_cast<std::int64_t>(std::min(mean, static_cast<double>((1U << bits) - 1)));
}

Image CorrectByHand(const Image& image, const Image& flat, EQvFlatFieldCorrectionMode_t mode,
                    std::int64_t target, bool isBayer, unsigned bits) {
  Image result = image;
  std::array<std::int64_t, 4> targets;
  for (std::size_t q = 0; q < 4; ++q)
    targets[q] = target != 0 ? target : TargetAt(flat, isBayer, bits, q % 2, q / 2);
  const std::int64_t top = (1U << bits) - 1;
  for (std::size_t y = 0; y < image.size(); ++y)
    for (std::size_t x = 0; x < image[y].size(); ++x) {
      const std::int64_t t = targets[x % 2 + 2 * (y % 2)], c = flat[y][x];
      std::int64_t value = image[y][x];
      if (mode == kMultiplication)
        value = value * (c > t / 16 ? t * 128 / c : 2048) / 128;
      else
        value = std::max<std::int64_t>(0, value + t - c);
      result[y][x] = static_cast<unsigned>(std::min(value, top));
    }
  return result;
}

/// Random samples that cover the whole depth, with some dead ones.
void FillFlat(TestImage& image, unsigned seed, unsigned bits) {
  std::mt19937 engine(seed);
  const auto random = [&] { return static_cast<unsigned>(engine()); };
  Image samples = Samples(image.Randomize(seed));
  for (auto& line : samples)
    for (unsigned& sample : line) {
      sample = (1U << (bits - 1)) + random() % (1U << (bits - 2));
      if (random() % 10 == 0) sample = random() % 8;
    }
  SetSamples(image, samples);
}

TEST(FlatFieldCorrectionFilter, CorrectsEveryFormatAndNothingBeside) {
  constexpr std::pair<std::size_t, std::size_t> kSizes[] = {
      {1, 1}, {1, 7}, {2, 2}, {3, 3}, {4, 4}, {5, 9}, {16, 17}, {67, 12}, {131, 8}};
  unsigned seed = 0;
  std::size_t count = 0;
  for (const auto& [isBayer, bits, formats] : kFormats)
    for (PixelFormat format : formats) {
      ++count;
      for (auto mode : {kMultiplication, kAddition})
        for (unsigned target : {0U, 1U, 100U, (1U << bits) - 1, 65535U})
          for (const auto& [width, height] : kSizes) {
            Filter filter;
            filter.SetFlatFieldCorrectionMode(mode);
            filter.SetCalibrationTargetValue(target);
            TestImage flat = DefaultImage(width, height, format);
            TestImage image = DefaultImage(width, height, format);
            TestImage expected = DefaultImage(width, height, format);
            FillFlat(flat, ++seed, bits);
            image.Randomize(++seed);
            Calibrate(filter, flat);
            for (int i = 0; i < 2; ++i) {
              expected.All() = image.All();
              SetSamples(expected,
                         CorrectByHand(Samples(image), Samples(flat), mode, target, isBayer, bits));
              ASSERT_EQ(filter.Filter(&image), &image);
              ASSERT_EQ(image.All(), expected.All())
                  << NameOf(format) << " mode " << mode << " target " << target << " " << width
                  << " x " << height;
            }
          }
    }
  EXPECT_EQ(count, 25U);
}

TEST(FlatFieldCorrectionFilter, EveryLevelWorkedByHand) {
  const struct {
    PixelFormat format;
    EQvFlatFieldCorrectionMode_t mode;
    unsigned target, flat, before, after;
  } kCases[] = {
      {Mono8, kMultiplication, 100, 50, 60, 120},
      {Mono8, kMultiplication, 100, 100, 77, 77},
      {Mono8, kMultiplication, 100, 99, 99, 99},     // 129 / 128 of it, rounded down
      {Mono8, kMultiplication, 100, 200, 255, 127},  // 64 / 128
      {Mono8, kMultiplication, 100, 50, 200, 255},   // ends at full scale
      {Mono8, kMultiplication, 100, 0, 3, 48},       // gain 16 for a dead pixel
      {Mono8, kMultiplication, 100, 6, 3, 48},       // at the 16th of the target
      {Mono8, kMultiplication, 100, 7, 7, 99},       // above it: 1828 / 128
      {Mono8, kMultiplication, 0, 0, 3, 48},         // black: target 0
      {Mono10, kMultiplication, 1023, 512, 1000, 1023},
      {Mono12, kMultiplication, 65535, 4095, 10, 160},
      {Mono12, kMultiplication, 65535, 4096, 10, 159},  // 2047 / 128, above the depth
      {Mono8, kAddition, 100, 120, 20, 0},
      {Mono8, kAddition, 100, 120, 21, 1},
      {Mono8, kAddition, 100, 80, 250, 255},
      {Mono8, kAddition, 300, 200, 20, 120},
      {Mono16, kAddition, 1, 65535, 65535, 1},
      {Mono12, kAddition, 65535, 0, 0, 4095},
  };
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetFlatFieldCorrectionMode(c.mode);
    filter.SetCalibrationTargetValue(c.target);
    TestImage flat = Uniform(3, 2, c.format, c.flat), image = Uniform(3, 2, c.format, c.before);
    Calibrate(filter, flat);
    filter.Filter(&image);
    EXPECT_EQ(Samples(image), Image(2, std::vector(3, c.after)))
        << NameOf(c.format) << " mode " << c.mode << " target " << c.target << " flat " << c.flat
        << " sample " << c.before;
  }
}

TEST(FlatFieldCorrectionFilter, MosaicsKeepTheRatioOfTheirColours) {
  const Image tile = {{40, 80}, {120, 20}};
  for (auto mode : {kMultiplication, kAddition}) {
    for (PixelFormat format : {BayerRG8, Mono8}) {
      Filter filter;
      filter.SetFlatFieldCorrectionMode(mode);
      TestImage flat = DefaultImage(16, 16, format);
      Image samples(16, std::vector<unsigned>(16));
      for (std::size_t y = 0; y < 16; ++y)
        for (std::size_t x = 0; x < 16; ++x) samples[y][x] = tile[y % 2][x % 2];
      SetSamples(flat, samples);
      Calibrate(filter, flat);
      TestImage image = DefaultImage(16, 16, format);
      SetSamples(image, samples);
      filter.Filter(&image);
      if (format == BayerRG8) {
        EXPECT_EQ(Samples(image), samples);
        continue;
      }
      // All positions to their mean, 65; gains are 208, 104, 69 and 416 of 128.
      const Image level = mode == kAddition ? Image{{65, 65}, {65, 65}} : Image{{65, 65}, {64, 65}};
      for (std::size_t y = 0; y < 2; ++y)
        for (std::size_t x = 0; x < 2; ++x) EXPECT_EQ(SampleAt(image, x, y), level[y][x]) << mode;
    }
  }
}

TEST(FlatFieldCorrectionFilter, KeepsTheLastCalibration) {
  Filter filter;
  filter.SetCalibrationTargetValue(30);
  filter.SetFlatFieldCorrectionMode(kMultiplication);
  ExpectKeepsTheLastCalibration(filter, 150, 75);
  Filter adding;
  adding.SetCalibrationTargetValue(30);
  adding.SetFlatFieldCorrectionMode(kAddition);
  ExpectKeepsTheLastCalibration(adding, 70, 60);
}

TEST(FlatFieldCorrectionFilter, CorrectsImagesThatAgreeOnly) {
  Filter filter;
  filter.SetCalibrationTargetValue(30);
  for (auto mode : {kMultiplication, kAddition}) {
    filter.SetFlatFieldCorrectionMode(mode);
    ExpectCorrectsImagesThatAgreeOnly(filter);
  }
}

/// A filter that works, and what it makes of level 50.
struct Working {
  Working() {
    filter.SetFlatFieldCorrectionMode(kMultiplication);
    filter.SetCalibrationTargetValue(30);
    Calibrate();
  }
  void Calibrate() {
    TestImage flat = Uniform(8, 7, Mono8, 10);
    Testing::Calibrate(filter, flat);
  }
  unsigned Corrected() {
    TestImage image = Uniform(8, 7, Mono8, 50);
    filter.Filter(&image);
    return SampleAt(image, 4, 3);
  }
  Filter filter;
};

TEST(FlatFieldCorrectionFilter, AChangeOfModeEndsTheCalibration) {
  Working w;
  EXPECT_EQ(w.Corrected(), 150U);
  w.filter.SetFlatFieldCorrectionMode(kMultiplication);
  WriteRegister(w.filter, 0x10, 1U);
  EXPECT_EQ(w.Corrected(), 150U) << "the same mode again is no change";
  EXPECT_THROW(w.filter.SetFlatFieldCorrectionMode(static_cast<EQvFlatFieldCorrectionMode_t>(3)),
               GenICam::OutOfRangeException);
  EXPECT_EQ(w.Corrected(), 150U) << "a refusal changes nothing";

  w.filter.SetFlatFieldCorrectionMode(kAddition);
  EXPECT_EQ(w.Corrected(), 50U);
  w.filter.SetFlatFieldCorrectionMode(kMultiplication);
  EXPECT_EQ(w.Corrected(), 50U) << "it does not come back";
  w.Calibrate();
  EXPECT_EQ(w.Corrected(), 150U);
  WriteRegister(w.filter, 0x10, 2U);
  EXPECT_EQ(w.Corrected(), 50U);
  w.Calibrate();
  EXPECT_EQ(w.Corrected(), 70U);
  GenApi::CEnumerationPtr(w.filter.GetINodeMap()->GetNode("FlatFieldCorrectionMode"))
      ->FromString("Multiplication");
  EXPECT_EQ(w.Corrected(), 50U);

  // In mode Off images are kept as well, but the mode in which they are used is another one.
  w.filter.SetFlatFieldCorrectionMode(QvFlatFieldCorrectionMode_Off);
  w.Calibrate();
  EXPECT_EQ(w.Corrected(), 50U);
  w.filter.SetFlatFieldCorrectionMode(kMultiplication);
  EXPECT_EQ(w.Corrected(), 50U);
}

TEST(FlatFieldCorrectionFilter, TheTargetCountsWhenTheMapIsMade) {
  Working w;
  w.filter.SetCalibrationTargetValue(20);
  EXPECT_EQ(w.Corrected(), 100U) << "the map is made with the first image";
  w.filter.SetCalibrationTargetValue(30);
  EXPECT_EQ(w.Corrected(), 100U) << "and stays";
  w.filter.SetCalibrationEnable(true);
  w.filter.SetCalibrationEnable(false);
  EXPECT_EQ(w.Corrected(), 100U);
  TestImage smaller = Uniform(4, 4, Mono8, 50);
  w.filter.Filter(&smaller);
  EXPECT_EQ(w.Corrected(), 100U) << "an image that does not agree leaves it";
  w.Calibrate();
  EXPECT_EQ(w.Corrected(), 150U);
}

TEST(FlatFieldCorrectionFilter, WhatOnlyARegisterCanHoldIsDefined) {
  Working w;
  for (unsigned mode : {3U, 0xFFFFFFFFU}) {
    WriteRegister(w.filter, 0x10, mode);
    EXPECT_EQ(w.filter.GetFlatFieldCorrectionMode(), mode);
    w.Calibrate();
    EXPECT_EQ(w.Corrected(), 70U) << "as Addition";
  }
  for (unsigned target : {65536U, 70000U, 0xFFFFFFFFU})
    for (auto mode : {kMultiplication, kAddition}) {
      w.filter.SetFlatFieldCorrectionMode(mode);
      WriteRegister(w.filter, 0x30, target);
      EXPECT_EQ(w.filter.GetCalibrationTargetValue(), target);
      w.Calibrate();
      EXPECT_EQ(w.Corrected(), 255U) << target;
    }
}

TEST(FlatFieldCorrectionFilter, SettersAndRegistersAreOne) {
  Filter filter;
  EXPECT_EQ(filter.GetFlatFieldCorrectionMode(), QvFlatFieldCorrectionMode_Off);
  EXPECT_EQ(filter.GetCalibrationTargetValue(), 0U);
  GenApi::INodeMap* map = filter.GetINodeMap();
  const GenApi::CEnumerationPtr mode(map->GetNode("FlatFieldCorrectionMode"));
  const char* const kNames[] = {"Off", "Multiplication", "Addition"};
  for (unsigned value : {2U, 0U, 1U}) {
    filter.SetFlatFieldCorrectionMode(static_cast<EQvFlatFieldCorrectionMode_t>(value));
    EXPECT_EQ(ReadRegister<unsigned>(filter, 0x10), value);
    EXPECT_STREQ(mode->ToString().c_str(), kNames[value]);
    WriteRegister(filter, 0x10, 7U);
    mode->FromString(kNames[value]);
    EXPECT_EQ(filter.GetFlatFieldCorrectionMode(), value);
  }
  for (unsigned value : {3U, 0xFFFFFFFFU})
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] {
                filter.SetFlatFieldCorrectionMode(static_cast<EQvFlatFieldCorrectionMode_t>(value));
              }),
              "eFFCM = " + std::to_string(value) + " must be smaller than Max = 3");
  EXPECT_EQ(filter.GetFlatFieldCorrectionMode(), kMultiplication);

  const GenApi::CIntegerPtr target(map->GetNode("CalibrationTargetValue"));
  EXPECT_EQ(target->GetMin(), 0);
  EXPECT_EQ(target->GetMax(), 65535);
  for (unsigned value : {65535U, 1U, 0U, 4711U}) {
    filter.SetCalibrationTargetValue(value);
    EXPECT_EQ(ReadRegister<unsigned>(filter, 0x30), value);
    EXPECT_EQ(target->GetValue(), value);
    target->SetValue(12);
    EXPECT_EQ(filter.GetCalibrationTargetValue(), 12U);
    WriteRegister(filter, 0x30, value + 1);
    EXPECT_EQ(filter.GetCalibrationTargetValue(), value + 1);
  }
  filter.SetCalibrationTargetValue(4711);
  EXPECT_EQ(
      MessageOf<GenICam::OutOfRangeException>([&] { filter.SetCalibrationTargetValue(65536); }),
      "value = 65536 must be equal or smaller than Max = 65535");
  EXPECT_THROW(target->SetValue(65536), GenICam::OutOfRangeException);
  EXPECT_EQ(filter.GetCalibrationTargetValue(), 4711U);
  ExpectCalibrationEnableRegister(filter);
}

TEST(FlatFieldCorrectionFilter, RefusesOtherFormatsAndLeavesThemAlone) {
  std::vector<PixelFormat> supported;
  for (const auto& row : kFormats)
    supported.insert(supported.end(), row.formats.begin(), row.formats.end());
  Filter filter;
  ExpectSupportsOnly(filter, supported);
}

TEST(FlatFieldCorrectionFilter, DocumentMatchesRegisters) {
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
  ExpectFeaturesForExperts(
      filter, {"FlatFieldCorrectionMode", "CalibrationEnable", "CalibrationTargetValue"});
}

}  // namespace
}  // namespace QvApi
