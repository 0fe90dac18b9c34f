// SPDX-License-Identifier: MIT
// What filters that calibrate themselves must keep.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi::Testing {

/// All samples of an image, line by line.
using SampleLines = std::vector<std::vector<unsigned>>;

inline SampleLines Samples(const IQvImage& image) {
  SampleLines lines(image.GetImageHeight());
  for (std::size_t y = 0; y < lines.size(); ++y)
    for (std::size_t x = 0; x < image.GetImageWidth(); ++x)
      lines[y].push_back(SampleAt(image, x, y));
  return lines;
}

inline void SetSamples(const IQvImage& image, const SampleLines& lines) {
  for (std::size_t y = 0; y < lines.size(); ++y)
    for (std::size_t x = 0; x < lines[y].size(); ++x) SetSample(image, x, y, lines[y][x]);
}

/// An image of one level with the default pitch of its format, as calibrations agree with, or more.
class DefaultImage : public TestImage {
 public:
  DefaultImage(std::size_t width, std::size_t height, PixelFormat format, unsigned level = 0,
               std::size_t morePadding = 0)
      : TestImage(width, height, format,
                  Info(format).GetLinePitch(width, Info(format).GetDefaultLineAlignment()) -
                      LineBytes(format, width) + morePadding) {
    SetSamples(*this, {height, std::vector<unsigned>(width, level)});
  }
};

/// Hands in an image for calibration, which must not change.
template <class Filter>
void Calibrate(Filter& filter, TestImage& image) {
  const auto before = image.All();
  filter.SetCalibrationEnable(true);
  EXPECT_EQ(filter.Filter(&image), &image);
  filter.SetCalibrationEnable(false);
  EXPECT_EQ(image.All(), before);
}

/// Calibrates the filter by an image of 8 x 7 pixels of one level.
template <class Filter>
void CalibrateBy(Filter& filter, unsigned level) {
  DefaultImage image(8, 7, PixelFormat::Mono8, level);
  Calibrate(filter, image);
}

/// What the filter makes of an image of 8 x 7 pixels of level 50.
template <class Filter>
unsigned Corrected(Filter& filter) {
  DefaultImage image(8, 7, PixelFormat::Mono8, 50);
  filter.Filter(&image);
  return SampleAt(image, 4, 3);
}

/// After calibration the filter makes of an image what `reference(samples, calibration)` makes, and
/// writes nothing beside.
template <class Filter, class Reference>
void CompareCalibrated(Filter& filter, TestImage& calibration, TestImage& image,
                       Reference reference) {
  Calibrate(filter, calibration);
  DefaultImage expected(image.GetImageWidth(), image.GetImageHeight(), image.GetImagePixelFormat());
  expected.All() = image.All();
  SetSamples(expected, reference(Samples(image), Samples(calibration)));
  ASSERT_EQ(filter.Filter(&image), &image);
  ASSERT_EQ(image.All(), expected.All())
      << NameOf(image.GetImagePixelFormat()) << " " << image.GetImageWidth() << " x "
      << image.GetImageHeight();
}

/// A filter that changes images of level 50 if it was calibrated by one of level 10 does so only
/// with images that agree in all things.
template <class Filter>
void ExpectCorrectsImagesThatAgreeOnly(Filter& filter) {
  for (auto [format, other] : {std::pair{PixelFormat::Mono8, PixelFormat::BayerRG8},
                               {PixelFormat::BayerRG12, PixelFormat::BayerGR12}}) {
    SCOPED_TRACE(NameOf(format));
    const auto changes = [&](DefaultImage&& image) {
      const auto before = image.All();
      filter.Filter(&image);
      return image.All() != before;
    };
    DefaultImage flat(8, 7, format, 10), padded(8, 7, format, 10, 4);
    for (TestImage* image : {static_cast<TestImage*>(&flat), static_cast<TestImage*>(&padded)}) {
      Calibrate(filter, *image);
      EXPECT_TRUE(changes({8, 7, format, 50}));
      EXPECT_FALSE(changes({8, 6, format, 50}));
      EXPECT_FALSE(changes({7, 7, format, 50})) << "same pitch in Mono8";
      EXPECT_FALSE(changes({12, 7, format, 50}));
      EXPECT_FALSE(changes({8, 7, other, 50}));
      for (std::size_t padding : {1, 2, 4, 8})
        EXPECT_FALSE(changes({8, 7, format, 50, padding})) << "even if its own had that";
      EXPECT_TRUE(changes({8, 7, format, 50})) << "the calibration is still there";
    }
  }
}

/// While calibration is enabled each image replaces the one before and stays as it is; images
/// without pixels leave none. `level` is what an image of level 50 becomes by a flat one of 10, and
/// `otherLevel` by one of 20.
template <class Filter>
void ExpectKeepsTheLastCalibration(Filter& filter, unsigned level, unsigned otherLevel) {
  EXPECT_EQ(Corrected(filter), 50U) << "there is no calibration yet";
  CalibrateBy(filter, 20);
  EXPECT_EQ(Corrected(filter), otherLevel);
  EXPECT_EQ(Corrected(filter), otherLevel) << "again";
  DefaultImage ten(8, 7, PixelFormat::Mono8, 10), twenty(8, 7, PixelFormat::Mono8, 20);
  filter.SetCalibrationEnable(true);
  filter.Filter(&twenty);
  filter.Filter(&ten);
  filter.SetCalibrationEnable(false);
  EXPECT_EQ(Corrected(filter), level);
  filter.SetCalibrationEnable(true);
  filter.SetCalibrationEnable(false);
  std::ranges::fill(ten.All(), std::uint8_t{99});
  EXPECT_EQ(Corrected(filter), level) << "it is a copy, kept until the next image";

  filter.SetCalibrationEnable(true);
  ForeignImage noPixels(nullptr, 0, 0, 0, PixelFormat::Mono8);
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&noPixels); }),
            "There is no available image.");
  TestImage color(8, 7, PixelFormat::BGR8);
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&color); }),
            "Not supported pixelformat BGR8");
  filter.SetCalibrationEnable(false);
  EXPECT_EQ(Corrected(filter), 50U) << "the calibration that failed left none";
}

}  // namespace QvApi::Testing
