// SPDX-License-Identifier: MIT
// Settings change while images are filtered: no image is half of one and half of another setting.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "QvApi_IP/QvBalanceRatioFilter.h"
#include "QvApi_IP/QvColorTransformationFilter.h"
#include "QvApi_IP/QvEdgeEnhancementFilter.h"
#include "QvApi_IP/QvFlatFieldCorrectionFilter.h"
#include "QvApi_IP/QvNoiseReductionFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;

/// Runs `filterOne` in two threads and `change(round)` in a third one, until both have filtered
/// `kImages` images.
template <class FilterOne, class Change>
void FilterWhileChanging(FilterOne filterOne, Change change) {
  constexpr int kImages = 200;
  std::atomic<int> running = 2;
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < 2; ++thread)
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kImages && !testing::Test::HasFatalFailure(); ++i) filterOne(thread);
      --running;
    });
  for (int round = 0; running != 0; ++round) change(round);
}

/// Fills an image of three-component pixels with one colour.
void Fill(TestImage& image, std::array<unsigned, 3> color) {
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t i = 0; i < 3 * image.GetImageWidth(); ++i)
      SetSample(image, i, y, color[i % 3]);
}

TEST(BalanceRatioFilterThreads, AnImageKeepsItsTable) {
  CQvBalanceRatioFilter filter;
  constexpr auto kGreen = QvBalanceRatioSelector_Green;
  FilterWhileChanging(
      [&](int) {
        TestImage image(40, 30, PixelFormat::BGR10);
        Fill(image, {100, 100, 100});
        filter.Filter(&image);
        const unsigned green = SampleAt(image, 1, 0);
        ASSERT_TRUE(green == 100 || green == 200 || green == 107 || green == 214) << green;
        for (std::size_t y = 0; y < 30; ++y)
          for (std::size_t x = 0; x < 40; ++x) ASSERT_EQ(SampleAt(image, 3 * x + 1, y), green);
      },
      [&](int round) {
        filter.SetBalanceRatio(kGreen, 1 + round % 2);
        filter.SetOffsetLevelBeforeGain(kGreen, round / 2 % 2 * 7);
        EXPECT_GE(filter.GetBalanceRatio(kGreen), 1.0);
      });
}

TEST(BalanceRatioFilterThreads, AMeasuredImageGetsItsOwnRatios) {
  CQvBalanceRatioFilter filter;
  filter.SetBalanceWhiteAuto(QvBalanceWhiteAuto_Continuous);
  GenApi::CFloatPtr ratio = filter.GetINodeMap()->GetNode("BalanceRatio");
  FilterWhileChanging(
      [&](int thread) {
        TestImage image(20, 10, PixelFormat::RGB8);
        if (thread == 0)
          Fill(image, {50, 100, 200});
        else
          Fill(image, {120, 60, 30});
        filter.Filter(&image);
        for (std::size_t i = 0; i < 60; ++i)
          ASSERT_EQ(SampleAt(image, i, 9), thread == 0 ? 200U : 120U);
      },
      [&](int round) {
        filter.SetBalanceRatio(QvBalanceRatioSelector_Blue, round % 16);
        EXPECT_GE(ratio->GetValue(), 1.0);
      });
}

TEST(BalanceRatioFilterThreads, EndingOnceLosesNoOtherMode) {
  for (int round = 0; round < 300; ++round) {
    CQvBalanceRatioFilter filter;
    filter.SetBalanceWhiteAuto(QvBalanceWhiteAuto_Once);
    std::jthread other([&] { filter.SetBalanceWhiteAuto(QvBalanceWhiteAuto_Continuous); });
    TestImage image(4, 4, PixelFormat::RGB8);
    Fill(image, {9, 9, 9});
    filter.Filter(&image);
    other.join();
    EXPECT_EQ(filter.GetBalanceWhiteAuto(), QvBalanceWhiteAuto_Continuous);
  }
}

TEST(ColorTransformationFilterThreads, AnImageKeepsItsTable) {
  CQvColorTransformationFilter filter;
  filter.SetColorTransformationEnable(true);
  FilterWhileChanging(
      [&](int thread) {
        TestImage image(40, 30, thread == 0 ? PixelFormat::BGR8 : PixelFormat::BGR10);
        Fill(image, {100, 100, 100});
        filter.Filter(&image);
        const unsigned green = SampleAt(image, 1, 0);
        ASSERT_TRUE(green == 101 || green == 202 || green == 108 || green == 209) << green;
        for (std::size_t y = 0; y < 30; ++y)
          for (std::size_t x = 0; x < 40; ++x) ASSERT_EQ(SampleAt(image, 3 * x + 1, y), green);
      },
      [&](int round) {
        filter.SetColorTransformationValue(QvColorTransformationValueSelector_Gain11,
                                           1 + round % 2);
        filter.SetColorTransformationValue(QvColorTransformationValueSelector_Offset1,
                                           round / 2 % 2 * 7);
      });
}

TEST(EdgeEnhancementFilterThreads, AnImageKeepsItsTableAndItsDeadBand) {
  CQvEdgeEnhancementFilter filter;
  filter.SetStrength(1);
  GenApi::CFloatPtr strength(filter.GetINodeMap()->GetNode("Strength"));
  FilterWhileChanging(
      [&](int) {
        TestImage image(41, 33, PixelFormat::Mono8);
        for (std::size_t y = 2; y < 33; y += 4)
          for (std::size_t x = 2; x < 41; x += 4) SetSample(image, x, y, 10);
        filter.Filter(&image);
        const unsigned spot = SampleAt(image, 2, 2);  // of 10 among zeros
        ASSERT_TRUE(spot == 20 || spot == 30 || spot == 16 || spot == 22) << spot;
        for (std::size_t y = 2; y < 32; y += 4)
          for (std::size_t x = 2; x < 40; x += 4) ASSERT_EQ(SampleAt(image, x, y), spot);
      },
      [&](int round) {
        if (round % 2 == 0)
          strength->SetValue(1 + round / 2 % 2);
        else
          filter.SetThresh(round / 4 % 2 * 4);
      });
}

TestImage Level(unsigned value) {
  TestImage image(40, 30, PixelFormat::Mono8);
  std::ranges::fill(image.All(), static_cast<std::uint8_t>(value));
  return image;
}

/// All pixels of a filtered image of level 50 have the same one of `levels`.
template <class Filter>
void ExpectOneLevel(Filter& filter, const std::set<unsigned>& levels) {
  TestImage image = Level(50);
  filter.Filter(&image);
  ASSERT_TRUE(levels.count(SampleAt(image, 0, 0))) << SampleAt(image, 0, 0);
  for (std::size_t y = 0; y < 30; ++y)
    for (std::size_t x = 0; x < 40; ++x) ASSERT_EQ(SampleAt(image, x, y), SampleAt(image, 0, 0));
}

/// The last image of level 10 or 20 counts, or one of level 50 of another thread meanwhile.
template <class Filter>
void Recalibrate(Filter& filter, int round) {
  filter.SetCalibrationEnable(true);
  TestImage image = Level(round % 2 == 0 ? 10 : 20);
  filter.Filter(&image);
  filter.SetCalibrationEnable(false);
}

TEST(NoiseReductionFilterThreads, AnImageKeepsItsDarkImage) {
  CQvNoiseReductionFilter filter;
  FilterWhileChanging(
      [&](int) {
        ExpectOneLevel(filter, {50, 40, 30, 0});
      },
      [&](int round) {
        filter.SetNoiseReductionMode(static_cast<EQvNoiseReductionMode_t>(round / 2 % 3));
        Recalibrate(filter, round);
      });
}

TEST(FlatFieldCorrectionFilterThreads, AnImageKeepsItsMapAndTheModeOfThat) {
  CQvFlatFieldCorrectionFilter filter;
  filter.SetCalibrationTargetValue(30);
  GenApi::CEnumerationPtr mode(filter.GetINodeMap()->GetNode("FlatFieldCorrectionMode"));
  // Gains for 10, 20 and 50 are 3, 1.5 and 76 / 128, offsets 20, 10 and -20.
  FilterWhileChanging(
      [&](int) {
        ExpectOneLevel(filter, {50, 150, 75, 29, 70, 60, 30});
      },
      [&](int round) {
        Recalibrate(filter, round);
        if (round % 3 == 0)
          mode->SetIntValue(1 + round / 3 % 2);
        else
          filter.SetFlatFieldCorrectionMode(
              static_cast<EQvFlatFieldCorrectionMode_t>(1 + round / 3 % 2));
      });
}

}  // namespace
}  // namespace QvApi
