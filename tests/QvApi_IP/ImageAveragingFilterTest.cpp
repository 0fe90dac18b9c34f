// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvImageAveragingFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvImageAveragingFilter;

std::size_t DepthOf(PixelFormat format) { return Info(format).GetEachComponentEffectiveBitCount(); }

/// Plain sums of samples in the depth that the filter works in: 8 bits at least.
class Sums {
 public:
  void Add(IQvImage& image) {
    const std::size_t depth = DepthOf(image.GetImagePixelFormat());
    const std::uint64_t factor = depth < 8 ? 255 / ((1U << depth) - 1) : 1;
    m_fullSum += static_cast<double>(((1U << depth) - 1) * factor);
    m_width = image.GetImageWidth();
    m_sums.resize(m_width * image.GetImageHeight());
    for (std::size_t i = 0; i < m_sums.size(); ++i)
      m_sums[i] += image.GetIQvPixelComponentValue(i % m_width, i / m_width).GetValue(0) * factor;
  }

  void ExpectMeans(Filter& filter, std::size_t nBits, PixelFormat format) const {
    const Buffer buffer = MakeBuffer();
    filter.GetAveragedImage(buffer.Get(), nBits);
    IQvImage& mean = *buffer->GetIQvImage();
    ASSERT_EQ(mean.GetImagePixelFormat(), format) << NameOf(format);
    ASSERT_EQ(mean.GetImageWidth(), m_width);
    ASSERT_EQ(mean.GetImageHeight(), m_sums.size() / m_width);
    const double fullScale = static_cast<double>((std::uint64_t{1} << DepthOf(format)) - 1);
    for (std::size_t i = 0; i < m_sums.size(); ++i) {
      const double expected = static_cast<double>(m_sums[i]) / (m_fullSum / fullScale) + 0.5;
      ASSERT_EQ(mean.GetIQvPixelComponentValue(i % m_width, i / m_width).GetValue(0),
                static_cast<std::uint32_t>(expected))
          << NameOf(format) << " " << i;
    }
  }

 private:
  std::vector<std::uint64_t> m_sums;
  std::size_t m_width = 0;
  double m_fullSum = 0;
};

/// Formats, the name of their kind that a depth completes, and depths that means may have; the
/// first one is that of the series.
const struct {
  std::vector<PixelFormat> formats;
  const char* kind;
  std::vector<std::size_t> depths;
} kSeries[] = {
    {{Mono8, Mono1p, Mono2p, Mono4p}, "Mono", {8, 10, 12, 14, 16, 32}},
    {{Mono10, Mono10p, Mono10Packed}, "Mono", {10, 8, 16, 32}},
    {{Mono12Packed, Mono12p}, "Mono", {12, 10, 14}},
    {{Mono16}, "Mono", {16, 8, 12, 32}},
    {{BayerGR8, BayerGR4p}, "BayerGR", {8, 10, 12, 14, 16}},
    {{BayerRG10, BayerRG10p, BayerRG10Packed}, "BayerRG", {10, 8, 16}},
    {{BayerGB12, BayerGB12p, BayerGB12Packed}, "BayerGB", {12, 14}},
    {{BayerBG14, BayerBG14p}, "BayerBG", {14, 10}},
    {{Pol1Mono8}, "Pol1Mono", {8, 10, 12}},
    {{Pol1MonoXYC12, Pol1MonoXYC12p}, "Pol1MonoXYC", {12, 8}},
    {{Pol1BayerRGY8}, "Pol1BayerRGY", {8, 12}},
    {{Pol1BayerRGC10, Pol1BayerRGC10p}, "Pol1BayerRGC", {10, 8}},
};

TEST(ImageAveragingFilter, MeansOfEveryKindAtEveryDepth) {
  for (const auto& row : kSeries)
    for (PixelFormat format : row.formats) {
      Filter filter;
      unsigned seed = 0;
      ForEachShape([&](std::size_t width, std::size_t height, std::size_t padding) {
        Sums sums;
        for (std::uint64_t count = 1; count <= 3; ++count) {
          TestImage image(width, height, format, padding);
          const auto before = image.Randomize(++seed).All();
          ASSERT_EQ(filter.Filter(&image), &image);
          ASSERT_EQ(image.All(), before) << NameOf(format);
          ASSERT_EQ(filter.GetFrameCount(), count);
          sums.Add(image);
        }
        sums.ExpectMeans(filter, 0, FormatOf(row.kind + std::to_string(row.depths[0])));
        for (std::size_t depth : row.depths)
          sums.ExpectMeans(filter, depth, FormatOf(row.kind + std::to_string(depth)));
        filter.ClearImageData();
      });
    }
}

TEST(ImageAveragingFilter, ViewsAtEveryOffset) {
  const Buffer buffer = MakeBuffer();
  for (PixelFormat format : {Mono8, BayerRG8, BayerGB12, Pol1BayerRG8}) {
    buffer->CreateBuffer(24, 16, format, QvMemoryInitialization_TestChart);
    const auto stepX = Info(format).GetROIIncrementX(), stepY = Info(format).GetROIIncrementY();
    Filter filter;
    for (std::size_t i = 0; i < 16; ++i) {
      IQvImage* view = buffer->GetIQvImage()->GetROIImage(i % 4 * stepX, i / 4 * stepY, 4, 4);
      Sums sums;
      sums.Add(*view);
      filter.Filter(view);
      sums.ExpectMeans(filter, 0, view->GetImagePixelFormat());
      filter.ClearImageData();
    }
  }
}

/// An image of one pixel.
TestImage Pixel(PixelFormat format, unsigned value) {
  TestImage image(1, 1, format);
  SetSample(image, 0, 0, value);
  return image;
}

std::uint64_t MeanOf(Filter& filter, std::size_t nBits) {
  const Buffer buffer = MakeBuffer();
  filter.GetAveragedImage(buffer.Get(), nBits);
  return buffer->GetIQvImage()->GetIQvPixelComponentValue(0, 0).GetValue(0);
}

TEST(ImageAveragingFilter, WorkedByHand) {
  const struct {
    PixelFormat format;
    std::vector<unsigned> values;
    std::size_t nBits;
    std::uint64_t mean;
  } kCases[] = {{Mono8, {1, 2, 2}, 0, 2},
                {Mono8, {1, 2}, 8, 2},
                {Mono8, {255, 255}, 16, 65535},
                {Mono8, {255}, 32, 0xFFFFFFFF},
                {Mono8, {128}, 10, 514},
                {Mono12, {4095, 0}, 8, 128},
                {Mono10, {1, 1, 1, 0}, 8, 0},
                // Samples above their depth end at full scale.
                {Mono10, {65535}, 0, 1023},
                {BayerRG12, {0xF000, 1}, 8, 255}};
  for (const auto& row : kCases) {
    Filter filter;
    for (unsigned value : row.values) {
      TestImage image = Pixel(row.format, value);
      filter.Filter(&image);
    }
    EXPECT_EQ(MeanOf(filter, row.nBits), row.mean) << NameOf(row.format) << row.values[0];
  }
}

TEST(ImageAveragingFilter, ASeriesEndsWhereSumsWould) {
  for (const auto& [format, most] :
       std::map<PixelFormat, std::uint64_t>{{BayerGB16, 1 << 16}, {Mono14p, 1 << 18}}) {
    Filter filter;
    TestImage image(1, 1, format);
    std::ranges::fill(image.All(), std::uint8_t{0xFF});
    for (std::uint64_t i = 0; i < most; ++i) filter.Filter(&image);
    EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&image); }),
              "Too many frame.");
    EXPECT_EQ(filter.GetFrameCount(), most);
    EXPECT_EQ(MeanOf(filter, 0), (1U << DepthOf(format)) - 1);
  }
}

TEST(ImageAveragingFilter, FailuresKeepTheSeries) {
  Filter filter;
  const auto refusalOf = [&](IQvImage* image) {
    return MessageOf<GenICam::InvalidArgumentException>([&] { filter.Filter(image); });
  };
  const auto refusalOfDepth = [&](std::size_t nBits) {
    return MessageOf<GenICam::RuntimeException>([&] { MeanOf(filter, nBits); });
  };
  std::uint8_t byte = 1;
  ForeignImage endless(&byte, SIZE_MAX / 2, 3, 1, Mono8);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(refusalOfDepth(0), "There is no image data.");
    EXPECT_EQ(refusalOf(nullptr), "IQvImage is NULL.");
    EXPECT_THROW(filter.GetAveragedImage(nullptr, 0), GenICam::InvalidArgumentException);
    EXPECT_THROW(filter.Filter(&endless), GenICam::BadAllocException);
    EXPECT_EQ(filter.GetFrameCount(), 0U);

    TestImage first = Pixel(Mono10, 100), second = Pixel(Mono10, 200), other = Pixel(Mono12, 1);
    TestImage wide(2, 1, Mono10), high(1, 2, Mono10);
    filter.Filter(&first);
    for (IQvImage* image : {&wide, &high, &other})
      EXPECT_EQ(refusalOf(image), "Pixel format or image size is changed.");
    filter.Filter(&second);
    for (std::size_t nBits : {std::size_t{1}, std::size_t{9}, std::size_t{24}, SIZE_MAX})
      EXPECT_EQ(refusalOfDepth(nBits), "Output pixel format is not valid.");
    EXPECT_EQ(filter.GetFrameCount(), 2U);
    EXPECT_EQ(MeanOf(filter, 0), 150U);
    EXPECT_EQ(MeanOf(filter, 8), 37U);
    filter.ClearImageData();
    filter.Filter(&wide);
    filter.ClearImageData();
  }
  for (const auto& [format, nBits] :
       std::map<PixelFormat, std::size_t>{{BayerRG12p, 32}, {Pol1Mono8, 14}, {Pol1BayerRG12, 16}}) {
    TestImage image(4, 4, format);
    filter.Filter(&image);
    EXPECT_EQ(refusalOfDepth(nBits), "Output pixel format is not valid.") << NameOf(format);
    filter.ClearImageData();
  }
}

TEST(ImageAveragingFilter, SupportsWhatItSaysAndHasNoFeatures) {
  std::size_t count = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    Filter filter;
    TestImage image(8, 8, row.format);
    const bool isSupported = filter.GetIQvFilterInfo()->IsSupported(row.format);
    EXPECT_EQ(MessageOf<GenICam::InvalidArgumentException>([&] { filter.Filter(&image); }),
              isSupported ? "nothing thrown" : "Not supported pixel format.")
        << row.name;
    count += isSupported;
  }
  EXPECT_EQ(count, 137U);
  Filter filter;
  GenApi::FeatureList_t features;
  GenApi::CCategoryPtr(filter.GetINodeMap()->GetNode("Root"))->GetFeatures(features);
  EXPECT_TRUE(features.empty());
}

}  // namespace
}  // namespace QvApi
