// SPDX-License-Identifier: MIT
// What filters that calibrate themselves must keep.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi::Testing {

/// Padding with which an image has the default pitch of its format.
inline std::size_t DefaultPadding(PixelFormat format, std::size_t width) {
  const IQvPixelFormatInfoInside& info = Info(format);
  return info.GetLinePitch(width, info.GetDefaultLineAlignment()) - info.GetLinePitch(width, 1);
}

/// An image that a calibration of its size and format agrees with.
inline TestImage DefaultImage(std::size_t width, std::size_t height, PixelFormat format) {
  return TestImage(width, height, format, DefaultPadding(format, width));
}

/// All samples of an image, line by line.
inline std::vector<std::vector<unsigned>> Samples(const IQvImage& image) {
  std::vector<std::vector<unsigned>> lines(image.GetImageHeight());
  for (std::size_t y = 0; y < lines.size(); ++y)
    for (std::size_t x = 0; x < image.GetImageWidth(); ++x)
      lines[y].push_back(SampleAt(image, x, y));
  return lines;
}

inline void SetSamples(const IQvImage& image, const std::vector<std::vector<unsigned>>& lines) {
  for (std::size_t y = 0; y < lines.size(); ++y)
    for (std::size_t x = 0; x < lines[y].size(); ++x) SetSample(image, x, y, lines[y][x]);
}

inline TestImage Uniform(std::size_t width, std::size_t height, PixelFormat format, unsigned value,
                         std::size_t morePadding = 0) {
  TestImage image(width, height, format, DefaultPadding(format, width) + morePadding);
  SetSamples(image, {height, std::vector<unsigned>(width, value)});
  return image;
}

/// Hands in an image for calibration, which must not change.
template <class Filter>
void Calibrate(Filter& filter, TestImage& image) {
  const auto before = image.All();
  filter.SetCalibrationEnable(true);
  EXPECT_EQ(filter.Filter(&image), &image);
  filter.SetCalibrationEnable(false);
  EXPECT_EQ(image.All(), before);
}

/// The filter changes the image.
template <class Filter>
bool Changes(Filter& filter, TestImage&& image) {
  const auto before = image.All();
  filter.Filter(&image);
  return image.All() != before;
}

/// A filter that changes images of level 50 if it was calibrated by one of level 10 does so only
/// with images that agree in all things.
template <class Filter>
void ExpectCorrectsImagesThatAgreeOnly(Filter& filter) {
  for (PixelFormat format : {PixelFormat::Mono8, PixelFormat::BayerRG12}) {
    SCOPED_TRACE(NameOf(format));
    const PixelFormat other =
        format == PixelFormat::Mono8 ? PixelFormat::BayerRG8 : PixelFormat::BayerGR12;
    TestImage flat = Uniform(8, 7, format, 10);
    Calibrate(filter, flat);
    EXPECT_TRUE(Changes(filter, Uniform(8, 7, format, 50)));
    EXPECT_FALSE(Changes(filter, Uniform(8, 6, format, 50)));
    EXPECT_FALSE(Changes(filter, Uniform(7, 7, format, 50))) << "same pitch in Mono8";
    EXPECT_FALSE(Changes(filter, Uniform(12, 7, format, 50)));
    EXPECT_FALSE(Changes(filter, Uniform(8, 7, other, 50)));
    for (std::size_t padding : {1, 2, 4, 8})
      EXPECT_FALSE(Changes(filter, Uniform(8, 7, format, 50, padding))) << padding;
    EXPECT_TRUE(Changes(filter, Uniform(8, 7, format, 50))) << "the calibration is still there";

    // One of an image with padding has the default pitch too, and agrees not even with its own.
    TestImage padded = Uniform(8, 7, format, 10, 4);
    Calibrate(filter, padded);
    EXPECT_FALSE(Changes(filter, Uniform(8, 7, format, 50, 4)));
    EXPECT_TRUE(Changes(filter, Uniform(8, 7, format, 50)));

    TestImage frame = Uniform(16, 14, format, 50);
    const Buffer buffer = MakeBuffer();
    buffer->CopyImage(&frame);
    IQvImage* view = buffer->GetIQvImage()->GetROIImage(0, 0, 8, 7);
    const auto before = Samples(*view);
    filter.Filter(view);
    EXPECT_EQ(Samples(*view), before) << "a view has the pitch of its image";
  }
}

/// While calibration is enabled each image replaces the one before and stays as it is; images
/// without pixels leave none. `level` is what an image of level 50 becomes by a flat one of 10, and
/// `otherLevel` by one of 20.
template <class Filter>
void ExpectKeepsTheLastCalibration(Filter& filter, unsigned level, unsigned otherLevel) {
  const auto corrected = [&] {
    TestImage image = Uniform(8, 7, PixelFormat::Mono8, 50);
    filter.Filter(&image);
    return SampleAt(image, 4, 3);
  };
  EXPECT_EQ(corrected(), 50U) << "there is no calibration yet";
  TestImage ten = Uniform(8, 7, PixelFormat::Mono8, 10),
            twenty = Uniform(8, 7, PixelFormat::Mono8, 20);
  Calibrate(filter, twenty);
  EXPECT_EQ(corrected(), otherLevel);
  EXPECT_EQ(corrected(), otherLevel) << "again";
  filter.SetCalibrationEnable(true);
  filter.Filter(&twenty);
  filter.Filter(&ten);
  filter.SetCalibrationEnable(false);
  EXPECT_EQ(corrected(), level);
  filter.SetCalibrationEnable(true);
  filter.SetCalibrationEnable(false);
  EXPECT_EQ(corrected(), level) << "it is kept until the next image";
  std::ranges::fill(ten.All(), std::uint8_t{99});
  EXPECT_EQ(corrected(), level) << "it is a copy";

  filter.SetCalibrationEnable(true);
  ForeignImage noPixels(nullptr, 0, 0, 0, PixelFormat::Mono8);
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&noPixels); }),
            "There is no available image.");
  TestImage color(8, 7, PixelFormat::BGR8);
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&color); }),
            "Not supported pixelformat BGR8");
  filter.SetCalibrationEnable(false);
  EXPECT_EQ(corrected(), 50U) << "the calibration that failed left none";
}

/// `CalibrationEnable` in its three forms: typed, register 0x20 and feature.
template <class Filter>
void ExpectCalibrationEnableRegister(Filter& filter) {
  EXPECT_FALSE(filter.GetCalibrationEnable());
  for (unsigned value : {1U, 2U, 1U, 0U, 1U, 0xFFFFFFFFU, 1U, 257U}) {
    WriteRegister(filter, 0x20, value);
    EXPECT_EQ(filter.GetCalibrationEnable(), value == 1) << value;
    EXPECT_EQ(ReadRegister<unsigned>(filter, 0x20), value == 1 ? 1U : 0U) << value;
  }
  const GenApi::CBooleanPtr feature(filter.GetINodeMap()->GetNode("CalibrationEnable"));
  for (bool value : {true, false, true}) {
    filter.SetCalibrationEnable(value);
    EXPECT_EQ(ReadRegister<unsigned>(filter, 0x20), value ? 1U : 0U);
    EXPECT_EQ(feature->GetValue(), value) << "the setter made the node forget";
    feature->SetValue(!value);
    EXPECT_EQ(filter.GetCalibrationEnable(), !value);
  }
  filter.SetCalibrationEnable(false);
}

/// The features of the document's only category, each for experts and streamable.
template <class Filter>
void ExpectFeaturesForExperts(Filter& filter, const std::vector<std::string>& names) {
  GenApi::FeatureList_t root, features;
  GenApi::INodeMap* map = filter.GetINodeMap();
  GenApi::CCategoryPtr(map->GetNode("Root"))->GetFeatures(root);
  ASSERT_EQ(root.size(), 1U);
  EXPECT_EQ(std::string(root[0]->GetNode()->GetName().c_str()), "FilterInformation");
  GenApi::CCategoryPtr(map->GetNode("FilterInformation"))->GetFeatures(features);
  std::vector<std::string> found;
  for (GenApi::IValue* feature : features) {
    const GenApi::INode* node = feature->GetNode();
    found.emplace_back(node->GetName().c_str());
    EXPECT_EQ(node->GetVisibility(), GenApi::Expert) << found.back();
    EXPECT_TRUE(node->IsStreamable()) << found.back();
    EXPECT_EQ(feature->GetAccessMode(), GenApi::RW) << found.back();
  }
  EXPECT_EQ(found, names);
}

}  // namespace QvApi::Testing
