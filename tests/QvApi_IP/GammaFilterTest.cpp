// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvGammaCorrectionFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvGammaCorrectionFilter;

/// Which samples the curve goes on, of each group of pixels; a line has whole groups of them.
struct Layout {
  std::string samples;
  std::size_t pixels = 1;
};

Layout LayoutOf(PixelFormat format) {
  if (format == YCbCr8) return {"Ycc"};
  if (format == YCbCr422_8 || format == YCbCr709_422_8) return {"Yc"};
  if (format == YCbCr411_8) return {"YYc", 2};
  const std::size_t components = Info(format).GetComponentCount();
  return {components == 1 ? "M" : components == 3 ? "RGB" : "RGBa"};
}

/// The curve from `lower` to `top` in extended precision; samples below stay.
unsigned Corrected(unsigned sample, double gamma, unsigned lower, unsigned top) {
  if (gamma == 1.0) return sample;
  sample &= top;
  if (sample < lower) return sample;
  const auto range = static_cast<long double>(top - lower);
  const long double value =
      std::pow((sample - lower) / range, static_cast<long double>(gamma)) * range + lower + 0.5L;
  return value < top ? static_cast<unsigned>(value) : top;  // as is what is no number
}

void CorrectByHand(TestImage& image, double gamma) {
  const PixelFormat format = image.GetImagePixelFormat();
  const Layout layout = LayoutOf(format);
  const std::size_t count = image.GetImageWidth() / layout.pixels * layout.samples.size();
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t i = 0; i < count; ++i)
      if (std::string("ca").find(layout.samples[i % layout.samples.size()]) == std::string::npos)
        SetSample(image, i, y,
                  Corrected(SampleAt(image, i, y), gamma, format == YCbCr709_422_8 ? 16 : 0,
                            (1U << DepthOf(format)) - 1));
}

TEST(GammaFilter, CorrectsEveryFormatAndNothingBeside) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (PixelFormat format : SampleFormats()) {
    Filter filter;
    for (double gamma :
         {2.0, 0.0, 4.0, 0.45, 1.0, -1.0, -kInfinity, kInfinity, 1e300, -0.0, std::nan("")}) {
      SCOPED_TRACE(gamma);
      WriteRegister(filter, 0x10, gamma);
      CompareOnShapes(filter, format, [&](TestImage& image) { CorrectByHand(image, gamma); });
    }
  }
}

TEST(GammaFilter, EveryLevelWorkedByHand) {
  // (128 / 255)^2 * 255 = 64.25, (2000 / 4095)^2 * 4095 = 976.8, (1 / 255)^0.5 * 255 = 15.97
  const struct {
    PixelFormat format;
    double gamma;
    unsigned before, after;
  } kCases[] = {
      {Mono8, 2.0, 128, 64},       {Mono8, 2.0, 255, 255},   {Mono8, 2.0, 0, 0},
      {Mono12, 2.0, 2000, 977},    {Mono8, 0.5, 1, 16},      {Mono8, 0.0, 0, 255},
      {Mono10, 2.0, 0xFFFF, 1023}, {Mono10, 2.0, 0x0400, 0}, {Mono14, 1.0, 0xFFFF, 0xFFFF}};
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetGammaValue(c.gamma);
    EXPECT_EQ(FilterOne(filter, c.format, c.before), c.after) << NameOf(c.format) << c.before;
  }
}

TEST(GammaFilter, TableIsKeptByDepthAndGammaAlone) {
  // 16 + (112 / 239)^2 * 239 = 68.49; the whole range gives 64.
  const struct {
    double gamma;
    PixelFormat format;
    unsigned before, after;
    const char* why;
  } kSteps[] = {
      {2, YCbCr709_422_8, 128, 68, "made for the video range"},
      {2, Mono8, 128, 68, "and taken again"},
      {2, Mono8, 15, 15, "below it"},
      {2, Mono10, 1023, 1023, ""},
      {2, Mono8, 128, 64, "another depth ended the table"},
      {2, YCbCr709_422_8, 128, 64, "that of the full range stays as well"},
      {1, YCbCr709_422_8, 128, 128, ""},
      {2, YCbCr709_422_8, 128, 64, "gamma 1 leaves the table cached"},
      {3, YCbCr709_422_8, 16, 16, ""},
      {2, YCbCr709_422_8, 128, 68, "another gamma ended the table"},
  };
  Filter filter, another;
  for (const auto& step : kSteps) {
    filter.SetGammaValue(3.5);  // a setter does not touch the table
    filter.SetGammaValue(step.gamma);
    EXPECT_EQ(FilterOne(filter, step.format, step.before), step.after) << step.why;
  }
  another.SetGammaValue(2.0);
  EXPECT_EQ(FilterOne(another, Mono8, 128), 64U) << "two filters share no table";
}

TEST(GammaFilter, FormatsAndRegisters) {
  Filter filter;
  filter.SetGammaValue(2.0);
  ExpectSupportsOnly(filter, SampleFormats());
  ExpectDocumentMatchesRegisters(filter);
}

}  // namespace
}  // namespace QvApi
