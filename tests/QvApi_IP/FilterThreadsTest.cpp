// SPDX-License-Identifier: MIT
// Settings change while images are filtered: no image is half of one and half of another setting.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <set>
#include <span>
#include <thread>
#include <vector>

#include "QvApi_IP/QvBalanceRatioFilter.h"
#include "QvApi_IP/QvColorTransformationFilter.h"
#include "QvApi_IP/QvDefectivePixelDetectionFilter.h"
#include "QvApi_IP/QvEdgeEnhancementFilter.h"
#include "QvApi_IP/QvFlatFieldCorrectionFilter.h"
#include "QvApi_IP/QvImageAveragingFilter.h"
#include "QvApi_IP/QvNoiseReductionFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

/// Runs `filterOne` in two threads and `change(round)` in a third one, until both have filtered
/// `kImages` images.
template <class FilterOne, class Change>
void FilterWhileChanging(FilterOne filterOne, Change change) {
  constexpr int kImages = 2000;
  std::atomic<int> running = 2;
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < 2; ++thread)
    threads.emplace_back([&, thread] {
      for (int i = 0; i < kImages && !testing::Test::HasFatalFailure(); ++i) filterOne(thread);
      --running;
    });
  for (int round = 0; running != 0; ++round) change(round);
}

/// 40 x 30 pixels of one colour. Made and checked line by line: the threads shall filter meanwhile.
struct ColorImage : TestImage {
  ColorImage(PixelFormat format, const std::vector<unsigned>& color) : TestImage(40, 30, format) {
    for (std::size_t i = 0; i < 40 * color.size(); ++i)
      SetSample(*this, i, 0, color[i % color.size()]);
    for (std::size_t y = 1; y < 30; ++y) std::copy_n(Line(0), GetImageLinePitch(), Line(y));
  }
};

void ExpectOneColor(const IQvImage& image) {
  const PixelFormat format = image.GetImagePixelFormat();
  const std::size_t step = Info(format).GetComponentCount();
  for (std::size_t i = step; i < 40 * step; ++i)
    ASSERT_EQ(SampleAt(image, i, 0), SampleAt(image, i % step, 0));
  for (std::size_t y = 1; y < 30; ++y)
    ASSERT_EQ(std::memcmp(Bytes(&image) + y * image.GetImageLinePitch(), Bytes(&image),
                          LineBytes(format, 40)),
              0);
}

/// An image of one colour is of one colour again when it is filtered, with components of `levels`.
void ExpectOneOf(IQvFilter& filter, PixelFormat format, const std::vector<unsigned>& color,
                 const std::set<unsigned>& levels) {
  ColorImage image(format, color);
  filter.Filter(&image);
  ExpectOneColor(image);
  for (std::size_t i = 0; i < color.size(); ++i)
    ASSERT_TRUE(levels.count(SampleAt(image, i, 0))) << SampleAt(image, i, 0);
}

TEST(BalanceRatioFilterThreads, AnImageKeepsItsTable) {
  CQvBalanceRatioFilter filter;
  constexpr auto kGreen = QvBalanceRatioSelector_Green;
  FilterWhileChanging(
      [&](int) {
        ExpectOneOf(filter, BGR10, {100, 100, 100}, {100, 200, 107, 214});
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
        if (thread == 0)
          ExpectOneOf(filter, RGB8, {50, 100, 200}, {200});
        else
          ExpectOneOf(filter, RGB8, {120, 60, 30}, {120});
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
    ExpectOneOf(filter, RGB8, {9, 9, 9}, {9});
    other.join();
    EXPECT_EQ(filter.GetBalanceWhiteAuto(), QvBalanceWhiteAuto_Continuous);
  }
}

TEST(ColorTransformationFilterThreads, AnImageKeepsItsTable) {
  CQvColorTransformationFilter filter;
  filter.SetColorTransformationEnable(true);
  FilterWhileChanging(
      [&](int thread) {
        ExpectOneOf(filter, thread == 0 ? BGR8 : BGR10, {100, 100, 100}, {101, 202, 108, 209});
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
        TestImage image(41, 33, Mono8);
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

/// The last image of level 10 or 20 counts, or one of level 50 of another thread meanwhile.
template <class Filter>
void Recalibrate(Filter& filter, int round) {
  filter.SetCalibrationEnable(true);
  ColorImage image(Mono8, {round % 2 == 0 ? 10U : 20U});
  filter.Filter(&image);
  filter.SetCalibrationEnable(false);
}

TEST(NoiseReductionFilterThreads, AnImageKeepsItsDarkImage) {
  CQvNoiseReductionFilter filter;
  FilterWhileChanging(
      [&](int) {
        ExpectOneOf(filter, Mono8, {50}, {50, 40, 30, 0});
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
        ExpectOneOf(filter, Mono8, {50}, {50, 150, 75, 29, 70, 60, 30});
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

TEST(ImageAveragingFilterThreads, MeansAreOfWholeImages) {
  CQvImageAveragingFilter filter;
  FilterWhileChanging(
      [&](int thread) {
        ColorImage image(Mono8, {thread == 0 ? 10U : 35U});
        filter.Filter(&image);
      },
      [&](int round) {
        if (round % 5 == 4) filter.ClearImageData();
        const Buffer buffer = MakeBuffer();
        try {
          filter.GetAveragedImage(buffer.Get(), round % 2 == 0 ? 8 : 16);
        } catch (const GenICam::RuntimeException&) {
          return;  // there is no image yet
        }
        ExpectOneColor(*buffer->GetIQvImage());
      });
}

TEST(DefectivePixelDetectionFilterThreads, PixelsAreThoseOfWholeImages) {
  CQvDefectivePixelDetectionFilter filter;
  FilterWhileChanging(
      [&](int thread) {
        ColorImage image(Mono8, {100});
        SetSample(image, thread == 0 ? 3 : 30, 20, 200);
        filter.Filter(&image);
      },
      [&](int round) {
        filter.SetPeripheralAreaSize(1 + static_cast<std::size_t>(round) % 12);
        filter.SetThreshold(QvDefectivePixelDetectionThresholdTarget_Mono, round % 3 * 0.15);
        if (round % 7 == 6) filter.ClearDetectionResult();
        std::array<_SQvDefectivePixelInformation_t, 2000> pixels;
        std::size_t count = pixels.size();
        filter.GetDetectionResult(nullptr, &count, pixels.data());
        for (const auto& pixel : std::span(pixels).first(count)) {
          if (pixel.value != 200) continue;  // with a threshold of 0 its neighbours too are found
          ASSERT_EQ(pixel.mean, 100);
          ASSERT_TRUE(pixel.y == 20 && (pixel.x == 3 || pixel.x == 30));
        }
      });
}

}  // namespace
}  // namespace QvApi
