// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvGammaCorrectionFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvGammaCorrectionFilter;

enum class Layout { Single, Color3, Color4, Y444, Y422, Y422Video, Y411 };

const struct {
  Layout layout;
  std::vector<PixelFormat> formats;
} kFormats[] = {
    {Layout::Single, {Mono8, BayerGR8, BayerRG8, BayerGB8, BayerBG8}},
    {Layout::Single, {Mono10, Mono12, Mono14, Mono16}},
    {Layout::Single, {BayerGR10, BayerRG10, BayerGB10, BayerBG10}},
    {Layout::Single, {BayerGR12, BayerRG12, BayerGB12, BayerBG12}},
    {Layout::Single, {BayerGR14, BayerRG14, BayerGB14, BayerBG14}},
    {Layout::Single, {BayerGR16, BayerRG16, BayerGB16, BayerBG16}},
    {Layout::Color3, {RGB8, BGR8, BGR10, BGR12, BGR14, BGR16}},
    {Layout::Color4, {RGBa8, BGRa8, BGRa10, BGRa12, BGRa14, BGRa16}},
    {Layout::Y444, {YCbCr8}},
    {Layout::Y422, {YCbCr422_8}},
    {Layout::Y422Video, {YCbCr709_422_8}},
    {Layout::Y411, {YCbCr411_8}},
};

/// The samples of a line that the curve goes on, told pixel by pixel.
std::vector<std::size_t> MappedSamples(Layout layout, std::size_t width) {
  std::vector<std::size_t> at;
  for (std::size_t x = 0; x < width; ++x) switch (layout) {
      case Layout::Single:
        at.push_back(x);
        break;
      case Layout::Color3:
        for (std::size_t c : {0, 1, 2}) at.push_back(3 * x + c);
        break;
      case Layout::Color4:
        for (std::size_t c : {0, 1, 2}) at.push_back(4 * x + c);
        break;
      case Layout::Y444:
        at.push_back(3 * x);
        break;
      case Layout::Y422:
      case Layout::Y422Video:
        at.push_back(2 * x);
        break;
      case Layout::Y411:  // Y Y C, in whole pairs
        if (x % 2 == 0 && x + 1 < width) at.push_back(x / 2 * 3), at.push_back(x / 2 * 3 + 1);
        break;
    }
  return at;
}

/// The curve from `lower` to `top` in extended precision; other samples stay.
unsigned Corrected(unsigned sample, double gamma, unsigned lower, unsigned top) {
  if (gamma == 1.0 || sample < lower) return sample;
  const auto range = static_cast<long double>(top - lower);
  return static_cast<unsigned>(std::pow((sample - lower) / range, static_cast<long double>(gamma)) *
                                   range +
                               static_cast<long double>(lower) + 0.5L);
}

void CorrectByHand(TestImage& image, Layout layout, double gamma) {
  const std::size_t depth = Info(image.GetImagePixelFormat()).GetEachComponentEffectiveBitCount();
  const unsigned lower = layout == Layout::Y422Video ? 16 : 0;
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t i : MappedSamples(layout, image.GetImageWidth()))
      SetSample(image, i, y, Corrected(SampleAt(image, i, y), gamma, lower, (1U << depth) - 1));
}

TEST(GammaFilter, CorrectsEveryFormatAndNothingBeside) {
  std::size_t count = 0;
  for (const auto& [layout, formats] : kFormats)
    for (PixelFormat format : formats) {
      ++count;
      Filter filter;
      unsigned seed = 0;
      for (double gamma : {2.0, 0.0, 4.0, 0.45, 1.0}) {
        filter.SetGammaValue(gamma);
        ForEachShape([&](std::size_t width, std::size_t height, std::size_t padding) {
          TestImage image(width, height, format, padding), expected(width, height, format, padding);
          image.Randomize(++seed);
          expected.All() = image.All();
          CorrectByHand(expected, layout, gamma);
          ASSERT_EQ(filter.Filter(&image), &image);
          ASSERT_EQ(image.All(), expected.All()) << NameOf(format) << " gamma " << gamma << " "
                                                 << width << " x " << height << " + " << padding;
        });
      }
    }
  EXPECT_EQ(count, 41U);
}

TEST(GammaFilter, EveryLevelWorkedByHand) {
  // (128 / 255)^2 * 255 = 64.25, (2000 / 4095)^2 * 4095 = 976.8, (1 / 255)^0.5 * 255 = 15.97
  const struct {
    PixelFormat format;
    double gamma;
    unsigned before, after;
  } kCases[] = {{Mono8, 2.0, 128, 64},        {Mono8, 2.0, 255, 255},   {Mono8, 2.0, 0, 0},
                {Mono12, 2.0, 2000, 977},     {Mono8, 0.5, 1, 16},      {Mono8, 0.0, 0, 255},
                {Mono10, 0.0, 5, 1023},       {Mono16, 1.0, 777, 777},  {Mono16, 4.0, 65535, 65535},
                {Mono10, 2.0, 0xFFFF, 1023},  {Mono10, 2.0, 0x0400, 0}, {Mono12, 0.0, 0xF000, 4095},
                {Mono14, 1.0, 0xFFFF, 0xFFFF}};
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetGammaValue(c.gamma);
    TestImage image(1, 1, c.format);
    SetSample(image, 0, 0, c.before);
    filter.Filter(&image);
    EXPECT_EQ(SampleAt(image, 0, 0), c.after) << NameOf(c.format) << " " << c.before;
  }
}

TEST(GammaFilter, SamplesAboveTheDepthStayInsideTheTable) {
  for (PixelFormat format : {Mono10, BayerRG12, BGR14, BGRa10, Mono16}) {
    const unsigned maximum = (1U << Info(format).GetEachComponentEffectiveBitCount()) - 1;
    Filter filter;
    filter.SetGammaValue(2.0);
    TestImage wild(100, 2, format), masked(100, 2, format);
    wild.Randomize(1, false);
    masked.All() = wild.All();
    const bool hasAlpha = Info(format).GetComponentCount() == 4;
    for (std::size_t y = 0; y < 2; ++y)
      for (std::size_t i = 0; i < 100 * Info(format).GetComponentCount(); ++i)
        if (!hasAlpha || i % 4 != 3) SetSample(masked, i, y, SampleAt(masked, i, y) & maximum);
    filter.Filter(&wild);
    filter.Filter(&masked);
    EXPECT_EQ(wild.All(), masked.All()) << NameOf(format);
  }
}

TEST(GammaFilter, AnyGammaThatARegisterCanHoldIsDefined) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double gamma : {-1.0, -infinity, infinity, 1e300, -0.0, std::nan("")})
    for (PixelFormat format : {Mono8, Mono10, BGRa8, YCbCr709_422_8}) {
      Filter filter;
      filter.Write(&gamma, 0x10, 8);
      const unsigned maximum = (1U << Info(format).GetEachComponentEffectiveBitCount()) - 1;
      TestImage image(64, 2, format);
      image.Randomize(3);
      SetSample(image, 0, 0, maximum);
      filter.Filter(&image);
      filter.Filter(&image);
      EXPECT_EQ(SampleAt(image, 0, 0), maximum) << gamma;
      for (std::size_t i = 0; i < 64; ++i) EXPECT_LE(SampleAt(image, i, 1), maximum) << gamma;
    }
}

unsigned FilterOne(Filter& filter, PixelFormat format, unsigned sample) {
  TestImage image(1, 1, format);
  SetSample(image, 0, 0, sample);
  filter.Filter(&image);
  return SampleAt(image, 0, 0);
}

TEST(GammaFilter, TableIsKeptByDepthAndGammaAlone) {
  Filter filter;
  filter.SetGammaValue(2.0);
  // 16 + (112 / 239)^2 * 239 = 68.49; the whole range gives 64.
  EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 128), 68U);
  EXPECT_EQ(FilterOne(filter, Mono8, 128), 68U) << "the table of the video range is taken again";
  EXPECT_EQ(FilterOne(filter, Mono8, 15), 15U);
  EXPECT_EQ(FilterOne(filter, Mono10, 1023), 1023U);
  EXPECT_EQ(FilterOne(filter, Mono8, 128), 64U) << "another depth ended the table";
  EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 128), 64U) << "that of the full range stays as well";
  filter.SetGammaValue(1.0);
  EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 128), 128U);
  filter.SetGammaValue(2.0);
  EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 128), 64U) << "gamma 1 leaves the table cached";
  filter.SetGammaValue(3.0);
  filter.SetGammaValue(2.0);
  EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 128), 64U) << "a setter does not touch the table";
  filter.SetGammaValue(3.0);
  EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 16), 16U);
  filter.SetGammaValue(2.0);
  EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 128), 68U);
  Filter another;
  another.SetGammaValue(2.0);
  EXPECT_EQ(FilterOne(another, Mono8, 128), 64U) << "two filters share no table";
}

TEST(GammaFilter, RefusesOtherFormatsAndLeavesThemAlone) {
  std::vector<PixelFormat> supported;
  for (const auto& row : kFormats)
    supported.insert(supported.end(), row.formats.begin(), row.formats.end());
  Filter filter;
  filter.SetGammaValue(2.0);
  ExpectSupportsOnly(filter, supported);
}

TEST(GammaFilter, DocumentMatchesRegisters) {
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
}

TEST(GammaFilter, WorksOnAViewOnly) {
  Filter filter;
  filter.SetGammaValue(0.0);
  const Buffer buffer = MakeBuffer();
  for (PixelFormat format : {Mono8, BayerRG12, BGR8}) {
    buffer->CreateBuffer(9, 7, format, QvMemoryInitialization_Zero);
    IQvImage* image = buffer->GetIQvImage();
    IQvImage* view = image->GetROIImage(3, 1, 4, 5);
    EXPECT_EQ(filter.Filter(view), view);
    const std::size_t components = Info(format).GetComponentCount();
    const unsigned maximum = (1U << Info(format).GetEachComponentEffectiveBitCount()) - 1;
    for (std::size_t y = 0; y < 7; ++y)
      for (std::size_t i = 0; i < 9 * components; ++i) {
        const std::size_t x = i / components;
        const bool inside = x >= 3 && x < 7 && y >= 1 && y < 6;
        ASSERT_EQ(SampleAt(*image, i, y), inside ? maximum : 0) << NameOf(format) << x << "," << y;
      }
  }
}

}  // namespace
}  // namespace QvApi
