// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>

#include "QvApi_IP/CalibrationChecks.h"
#include "QvApi_IP/QvFlatFieldCorrectionFilter.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvFlatFieldCorrectionFilter;
using Mode = EQvFlatFieldCorrectionMode_t;

constexpr auto kMultiplication = QvFlatFieldCorrectionMode_Multiplication;
constexpr auto kAddition = QvFlatFieldCorrectionMode_Addition;

/// What one pixel shall have been in the calibration image.
std::int64_t TargetAt(const SampleLines& flat, bool isBayer, std::size_t x, std::size_t y) {
  const std::size_t width = flat[0].size(), height = flat.size();
  const std::size_t least = std::min(width, height), side = least > 3 ? least / 4 : least;
  double sum = 0, count = 0;
  for (std::size_t v = (height - side) / 2; v < (height - side) / 2 + side; ++v)
    for (std::size_t u = (width - side) / 2; u < (width - side) / 2 + side; ++u)
      if (!isBayer || (u % 2 == x % 2 && v % 2 == y % 2)) sum += flat[v][u], count += 1;
  return count == 0 ? 128 : static_cast<std::int64_t>(sum / count);
}

SampleLines CorrectByHand(SampleLines image, const SampleLines& flat, Mode mode,
                          std::int64_t target, PixelFormat format) {
  const std::int64_t top = (1 << DepthOf(format)) - 1;
  std::array<std::int64_t, 4> targets;
  for (std::size_t q = 0; q < 4; ++q)
    targets[q] = target != 0 ? target : TargetAt(flat, Info(format).IsBayer(), q % 2, q / 2);
  for (std::size_t y = 0; y < image.size(); ++y)
    for (std::size_t x = 0; x < image[y].size(); ++x) {
      const std::int64_t t = targets[x % 2 + 2 * (y % 2)], c = flat[y][x], old = image[y][x];
      const std::int64_t made = mode == kMultiplication
                                    ? old * (c > t / 16 ? t * 128 / c : 2048) / 128
                                    : std::max<std::int64_t>(0, old + t - c);
      image[y][x] = static_cast<unsigned>(std::min(made, top));
    }
  return image;
}

TEST(FlatFieldCorrectionFilter, CorrectsEveryFormatAndNothingBeside) {
  constexpr std::pair<std::size_t, std::size_t> kSizes[] = {
      {1, 1}, {1, 7}, {2, 2}, {3, 3}, {4, 4}, {5, 9}, {16, 17}, {67, 12}, {131, 8}};
  unsigned seed = 0;
  for (PixelFormat format : RawFormats())
    for (Mode mode : {kMultiplication, kAddition})
      for (unsigned target : {0U, 1U, 100U, (1U << DepthOf(format)) - 1, 65535U})
        for (const auto& [width, height] : kSizes) {
          if (HasFatalFailure()) return;
          SCOPED_TRACE("mode " + std::to_string(mode) + " target " + std::to_string(target));
          Filter filter;
          filter.SetFlatFieldCorrectionMode(mode);
          filter.SetCalibrationTargetValue(target);
          DefaultImage flat(width, height, format), image(width, height, format);
          flat.Randomize(++seed);
          image.Randomize(++seed);
          CompareCalibrated(filter, flat, image, [&](const auto& samples, const auto& level) {
            return CorrectByHand(samples, level, mode, target, format);
          });
        }
}

TEST(FlatFieldCorrectionFilter, EveryLevelWorkedByHand) {
  const struct {
    PixelFormat format;
    Mode mode;
    unsigned target, flat, before, after;
  } kCases[] = {
      {Mono8, kMultiplication, 100, 50, 60, 120},
      {Mono8, kMultiplication, 100, 99, 99, 99},    // 129 / 128 of it, rounded down
      {Mono8, kMultiplication, 100, 50, 200, 255},  // ends at full scale
      {Mono8, kMultiplication, 100, 6, 3, 48},      // gain 16 up to the 16th of the target
      {Mono8, kMultiplication, 100, 7, 7, 99},      // above it: 1828 / 128
      {Mono8, kMultiplication, 0, 0, 3, 48},        // black: target 0
      {Mono12, kMultiplication, 65535, 4095, 10, 160},
      {Mono12, kMultiplication, 65535, 4096, 10, 159},  // 2047 / 128, above the depth
      {Mono8, kAddition, 100, 120, 21, 1},
      {Mono8, kAddition, 100, 120, 19, 0},
      {Mono8, kAddition, 300, 200, 20, 120},
      {Mono12, kAddition, 65535, 0, 0, 4095},
  };
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetFlatFieldCorrectionMode(c.mode);
    filter.SetCalibrationTargetValue(c.target);
    DefaultImage flat(3, 2, c.format, c.flat), image(3, 2, c.format, c.before);
    Calibrate(filter, flat);
    filter.Filter(&image);
    EXPECT_EQ(Samples(image), SampleLines(2, std::vector(3, c.after))) << "row " << &c - kCases;
  }
}

TEST(FlatFieldCorrectionFilter, KeepsTheLastCalibrationForImagesThatAgree) {
  for (Mode mode : {kMultiplication, kAddition}) {
    Filter filter;
    filter.SetFlatFieldCorrectionMode(mode);
    filter.SetCalibrationTargetValue(30);
    const bool multiplies = mode == kMultiplication;
    ExpectKeepsTheLastCalibration(filter, multiplies ? 150 : 70, multiplies ? 75 : 60);
    ExpectCorrectsImagesThatAgreeOnly(filter);
  }
}

TEST(FlatFieldCorrectionFilter, AChangeOfModeEndsTheCalibration) {
  Filter filter;
  const GenApi::CEnumerationPtr node(filter.GetINodeMap()->GetNode("FlatFieldCorrectionMode"));
  filter.SetCalibrationTargetValue(30);
  const std::function<void(Mode)> kRoads[] = {
      [&](Mode mode) { filter.SetFlatFieldCorrectionMode(mode); },
      [&](Mode mode) { WriteRegister(filter, 0x10, static_cast<unsigned>(mode)); },
      [&](Mode mode) { node->SetIntValue(mode); }};
  for (const auto& set : kRoads) {
    set(kMultiplication);
    CalibrateBy(filter, 10);
    set(kMultiplication);
    EXPECT_THROW(filter.SetFlatFieldCorrectionMode(Mode{3}), GenICam::OutOfRangeException);
    EXPECT_EQ(Corrected(filter), 150U) << "neither the same mode nor a refusal changes anything";
    set(kAddition);
    EXPECT_EQ(Corrected(filter), 50U);
    set(kMultiplication);
    EXPECT_EQ(Corrected(filter), 50U) << "it does not come back";
    set(QvFlatFieldCorrectionMode_Off);
    CalibrateBy(filter, 10);
    EXPECT_EQ(Corrected(filter), 50U);
    set(kAddition);
    EXPECT_EQ(Corrected(filter), 50U) << "made in another mode";
  }
}

TEST(FlatFieldCorrectionFilter, TheTargetCountsWhenTheMapIsMade) {
  Filter filter;
  filter.SetFlatFieldCorrectionMode(kMultiplication);
  CalibrateBy(filter, 10);
  filter.SetCalibrationTargetValue(20);
  EXPECT_EQ(Corrected(filter), 100U) << "the map is made with the first image";
  filter.SetCalibrationTargetValue(30);
  DefaultImage smaller(4, 4, Mono8, 50);
  filter.Filter(&smaller);
  EXPECT_EQ(Corrected(filter), 100U) << "and stays";
  CalibrateBy(filter, 10);
  EXPECT_EQ(Corrected(filter), 150U);

  // What only registers can hold: other modes are as Addition, targets have no limit.
  WriteRegister(filter, 0x10, 0xFFFFFFFFU);
  CalibrateBy(filter, 10);
  EXPECT_EQ(Corrected(filter), 70U);
  for (Mode mode : {kMultiplication, kAddition})
    for (unsigned target : {65536U, 70000U, 0xFFFFFFFFU}) {
      filter.SetFlatFieldCorrectionMode(mode);
      WriteRegister(filter, 0x30, target);
      CalibrateBy(filter, 10);
      EXPECT_EQ(Corrected(filter), 255U) << target;
    }
}

TEST(FlatFieldCorrectionFilter, FormatsAndSettings) {
  Filter filter;
  ExpectSupportsOnly(filter, RawFormats());
  ExpectChoice(filter, "FlatFieldCorrectionMode", 0x10, {"Off", "Multiplication", "Addition"},
               "eFFCM", &Filter::GetFlatFieldCorrectionMode, &Filter::SetFlatFieldCorrectionMode);
  ExpectSwitch(filter, "CalibrationEnable", 0x20, &Filter::GetCalibrationEnable,
               &Filter::SetCalibrationEnable);
  ExpectNumber(filter, "CalibrationTargetValue", 0x30, 0U, 0U, 65535U,
               &Filter::GetCalibrationTargetValue, &Filter::SetCalibrationTargetValue);
  ExpectDescription(filter, "Flat Field Correction", "FilterInformation", GenApi::Expert,
                    {"FlatFieldCorrectionMode", "CalibrationEnable", "CalibrationTargetValue"});
}

}  // namespace
}  // namespace QvApi
