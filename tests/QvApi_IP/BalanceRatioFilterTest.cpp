// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvBalanceRatioFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvBalanceRatioFilter;
using Channel = EQvBalanceRatioSelector_t;

constexpr auto kRed = QvBalanceRatioSelector_Red, kGreen = QvBalanceRatioSelector_Green,
               kBlue = QvBalanceRatioSelector_Blue, kY = QvBalanceRatioSelector_Y,
               kCb = QvBalanceRatioSelector_Cb, kCr = QvBalanceRatioSelector_Cr;
constexpr Channel kChannels[] = {kRed, kGreen, kBlue, kY, kCb, kCr};
constexpr auto kOff = QvBalanceWhiteAuto_Off, kOnce = QvBalanceWhiteAuto_Once,
               kContinuous = QvBalanceWhiteAuto_Continuous;

const std::vector<PixelFormat> kMono{Mono8, Mono10, Mono12, Mono14, Mono16};
const std::vector<PixelFormat> kColor{
    BGR8,      BGRa8,     RGB8,      RGBa8,     BGR10,     BGRa10,    BGR12,     BGRa12,
    BGR14,     BGRa14,    BGR16,     BGRa16,    BayerGR8,  BayerRG8,  BayerGB8,  BayerBG8,
    BayerGR10, BayerRG10, BayerGB10, BayerBG10, BayerGR12, BayerRG12, BayerGB12, BayerBG12,
    BayerGR14, BayerRG14, BayerGB14, BayerBG14, BayerGR16, BayerRG16, BayerGB16, BayerBG16};
const std::vector<PixelFormat> kYCbCr{YCbCr8, YCbCr422_8, YCbCr411_8, YCbCr709_422_8};

std::vector<PixelFormat> AllFormats() {
  std::vector<PixelFormat> all = kMono;
  all.insert(all.end(), kColor.begin(), kColor.end());
  all.insert(all.end(), kYCbCr.begin(), kYCbCr.end());
  return all;
}

struct Curve {
  double gain = 1.0;
  int before = 0, after = 0;
};

/// The filter told pixel by pixel, from the names of the formats.
struct Reference {
  std::array<Curve, 6> curves{Curve{}, {}, {}, {}, {1.0, -128, 128}, {1.0, -128, 128}};
  EQvBalanceWhiteAuto_t mode = kOff;

  /// The channel of sample i of line y as the letter R, G, B, Y, b (Cb), r (Cr), or a blank.
  static char ChannelAt(const std::string& name, std::size_t width, std::size_t i, std::size_t y) {
    if (name.starts_with("Mono")) return i < width ? 'Y' : ' ';
    if (name.starts_with("Bayer")) {
      const std::string quad = name.substr(5, 2) == "RG"   ? "RGGB"
                               : name.substr(5, 2) == "GR" ? "GRBG"
                               : name.substr(5, 2) == "GB" ? "GBRG"
                                                           : "BGGR";
      return i < width ? quad[y % 2 * 2 + i % 2] : ' ';
    }
    if (name == "YCbCr8") return i < 3 * width ? "Ybr"[i % 3] : ' ';
    if (name == "YCbCr411_8") return i / 6 < width / 4 ? "YYbYYr"[i % 6] : ' ';
    if (name.starts_with("YCbCr")) return i / 4 < width / 2 ? "YbYr"[i % 4] : ' ';
    const std::size_t components = name[3] == 'a' ? 4 : 3;
    return i % components == 3 || i / components >= width ? ' ' : name[i % components];
  }

  template <class Visit>
  static void ForEachSample(const IQvImage& image, Visit visit) {
    const std::string name = NameOf(image.GetImagePixelFormat());
    for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
      for (std::size_t i = 0; i < 4 * image.GetImageWidth(); ++i) {
        const char channel = ChannelAt(name, image.GetImageWidth(), i, y);
        if (channel != ' ') visit(std::string("RGBYbr").find(channel), i, y);
      }
  }

  static unsigned Balanced(unsigned code, const Curve& curve, int low, int top) {
    __extension__ using Quad = __float128;  // holds the product exactly
    const Quad exact = static_cast<Quad>(curve.gain) * (code + static_cast<double>(curve.before)) +
                       std::min(curve.after, top);
    const auto value = static_cast<double>(exact);
    if (std::isnan(value)) return 0;
    return static_cast<unsigned>(std::min<double>(std::max<double>(value, low), top));
  }

  void Measure(const IQvImage& image) {
    std::array<double, 6> sums{}, counts{}, means{};
    ForEachSample(image, [&](std::size_t channel, std::size_t i, std::size_t y) {
      sums[channel] += SampleAt(image, i, y);
      counts[channel] += 1;
    });
    for (std::size_t c = 0; c < 6; ++c) means[c] = counts[c] > 0 ? sums[c] / counts[c] : 0;
    double change = 0;
    if (Info(image.GetImagePixelFormat()).IsMono()) return;
    if (NameOf(image.GetImagePixelFormat()).starts_with("YCbCr")) {
      for (std::size_t c : {4, 5}) {
        const Curve found{1.0, static_cast<int>(std::trunc(-means[c])), 128};
        change += std::pow(found.before - static_cast<double>(curves[c].before), 2);
        curves[c] = found;
      }
      if (mode == kOnce && change <= 8) mode = kOff;
      return;
    }
    std::size_t best = 0;
    for (std::size_t c : {1, 2})
      if (means[c] > means[best]) best = c;
    const double level = means[best] + curves[best].before;
    for (std::size_t c : {0, 1, 2}) {
      const double denominator = means[c] + curves[c].before;
      double ratio = denominator < 0 ? 16.0 : level / denominator;
      if (ratio > 16) ratio = 16;
      if (c == best) ratio = 1;
      change = std::fma(ratio - curves[c].gain, ratio - curves[c].gain, change);
      curves[c].gain = ratio;
    }
    if (mode == kOnce && change <= 0.0025) mode = kOff;
  }

  void operator()(IQvImage& image) {
    if (mode != kOff) Measure(image);
    const PixelFormat format = image.GetImagePixelFormat();
    const int fullScale = (1 << Info(format).GetEachComponentEffectiveBitCount()) - 1;
    const bool isVideo = format == YCbCr709_422_8;
    ForEachSample(image, [&](std::size_t channel, std::size_t i, std::size_t y) {
      const unsigned code = SampleAt(image, i, y) & static_cast<unsigned>(fullScale);
      const int top = !isVideo ? fullScale : channel == 3 ? 235 : 240;
      SetSample(image, i, y, Balanced(code, curves[channel], isVideo ? 16 : 0, top));
    });
  }

  void Set(Channel channel, const Curve& curve, Filter& filter) {
    curves[channel] = curve;
    filter.SetBalanceRatio(channel, curve.gain);
    filter.SetOffsetLevelBeforeGain(channel, curve.before);
    filter.SetOffsetLevelAfterGain(channel, curve.after);
  }
  void SetMode(EQvBalanceWhiteAuto_t value, Filter& filter) {
    mode = value;
    filter.SetBalanceWhiteAuto(value);
  }

  void ExpectSameSettings(const Filter& filter, const std::string& where) const {
    for (Channel channel : kChannels) {
      const double gain = filter.GetBalanceRatio(channel);
      if (std::isnan(curves[channel].gain))
        ASSERT_TRUE(std::isnan(gain)) << where << channel;
      else
        ASSERT_EQ(gain, curves[channel].gain) << where << channel;
      ASSERT_EQ(filter.GetOffsetLevelBeforeGain(channel), curves[channel].before) << where;
      ASSERT_EQ(filter.GetOffsetLevelAfterGain(channel), curves[channel].after) << where;
    }
    ASSERT_EQ(filter.GetBalanceWhiteAuto(), mode) << where;
  }
};

void CompareOnShapes(PixelFormat format, Filter& filter, Reference& reference,
                     const std::string& settings) {
  unsigned seed = 0;
  ForEachShape([&](std::size_t width, std::size_t height, std::size_t padding) {
    TestImage image(width, height, format, padding), expected(width, height, format, padding);
    ++seed;
    image.Randomize(seed, seed % 4 != 0);
    expected.All() = image.All();
    reference(expected);
    ASSERT_EQ(filter.Filter(&image), &image);
    const std::string where = NameOf(format) + settings + " " + std::to_string(width) + " x " +
                              std::to_string(height) + " + " + std::to_string(padding) + " ";
    ASSERT_EQ(image.All(), expected.All()) << where;
    reference.ExpectSameSettings(filter, where);
  });
}

/// Gains and offsets at their limits, and random ones between.
Curve CurveOf(int kind, std::mt19937& random) {
  const auto from = [&](double low, double high) {
    return std::uniform_real_distribution(low, high)(random);
  };
  if (kind < 4) return {kind % 2 != 0 ? 16.0 : 0.0, kind < 2 ? -255 : 255, kind % 3 != 0 ? 255 : 0};
  return {from(0, kind % 2 != 0 ? 16 : 2), static_cast<int>(from(-255, 255)),
          static_cast<int>(from(0, 255))};
}

TEST(BalanceRatioFilter, BalancesEveryFormatAndNothingBeside) {
  std::mt19937 random(1);
  ASSERT_EQ(AllFormats().size(), 41U);
  for (PixelFormat format : AllFormats()) {
    Filter filter;
    Reference reference;
    CompareOnShapes(format, filter, reference, " at the start");
    for (int kind = 0; kind < 8; ++kind) {
      for (Channel channel : kChannels) reference.Set(channel, CurveOf(kind, random), filter);
      CompareOnShapes(format, filter, reference, " settings " + std::to_string(kind));
      if (HasFatalFailure()) return;
    }
  }
}

TEST(BalanceRatioFilter, MeasuresEveryFormat) {
  std::mt19937 random(2);
  for (PixelFormat format : AllFormats())
    for (auto mode : {kOnce, kContinuous}) {
      Filter filter;
      Reference reference;
      for (int kind = 3; kind < 7; ++kind) {
        for (Channel channel : kChannels) reference.Set(channel, CurveOf(kind, random), filter);
        reference.SetMode(mode, filter);
        CompareOnShapes(format, filter, reference, " automatic");
        if (HasFatalFailure()) return;
      }
    }
}

unsigned FilterOne(Filter& filter, PixelFormat format, std::size_t index, unsigned sample) {
  TestImage image(4, 1, format);
  SetSample(image, index, 0, sample);
  filter.Filter(&image);
  return SampleAt(image, index, 0);
}

TEST(BalanceRatioFilter, EveryLevelWorkedByHand) {
  const struct {
    PixelFormat format;
    std::size_t index;
    Channel channel;
    Curve curve;
    unsigned before, after;
  } kCases[] = {
      {YCbCr8, 1, kCb, {1.27, -128, 128}, 28, 0},  // 0.9999... with one rounding, 1 with two
      {Mono8, 0, kY, {1.5, 0, 0}, 101, 151},       // 151.5 is cut
      {Mono8, 0, kY, {1.0, -10, 0}, 5, 0},
      {Mono8, 0, kY, {1.0, -10, 20}, 5, 15},
      {Mono8, 0, kY, {1.0, 0, 255}, 0, 255},
      {BGR12, 2, kRed, {16.0, 0, 255}, 100, 1855},
      {BGR12, 2, kRed, {16.0, 0, 255}, 300, 4095},
      {BGR12, 2, kBlue, {16.0, 0, 255}, 300, 300},
      {BGR8, 0, kBlue, {2.0, 0, 0}, 40, 80},
      {RGB8, 0, kBlue, {2.0, 0, 0}, 40, 40},
      {RGBa8, 3, kRed, {2.0, 0, 0}, 40, 40},
      {BayerGB8, 1, kBlue, {2.0, 0, 0}, 40, 80},
      {YCbCr411_8, 5, kCr, {2.0, -128, 128}, 138, 148},
      {YCbCr709_422_8, 0, kCr, {1.0, 0, 0}, 3, 16},
      {YCbCr709_422_8, 0, kCr, {1.0, 0, 0}, 250, 235},
      {YCbCr709_422_8, 1, kCr, {1.0, 0, 0}, 250, 240},
      {YCbCr422_8, 1, kCr, {1.0, 0, 0}, 250, 250},
      {Mono10, 0, kY, {1.0, 0, 0}, 0xFFFF, 1023},  // masked to its depth
      {Mono10, 0, kY, {1.0, 0, 0}, 0x0405, 5},
  };
  for (const auto& c : kCases) {
    Filter filter;
    Reference().Set(c.channel, c.curve, filter);
    EXPECT_EQ(FilterOne(filter, c.format, c.index, c.before), c.after)
        << NameOf(c.format) << " " << c.before;
  }
}

TEST(BalanceRatioFilter, AnythingThatRegistersCanHoldIsDefined) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double gain : {-1.0, -infinity, infinity, 1e300, -0.0, std::nan("")})
    for (int offset : {0, INT_MAX, INT_MIN})
      for (PixelFormat format : {Mono8, Mono16, YCbCr709_422_8}) {
        Filter filter;
        Reference reference;
        for (Channel channel : {kY, kCb, kCr}) {
          reference.curves[channel] = {gain, offset, -(offset / 2)};
          WriteRegister<std::uint64_t>(filter, 0x10, channel);
          WriteRegister(filter, 0x18, gain);
          WriteRegister(filter, 0x30, offset);
          WriteRegister(filter, 0x50, -(offset / 2));
        }
        for (int twice = 0; twice < 2; ++twice) {
          TestImage image(64, 2, format), expected(64, 2, format);
          image.Randomize(3);
          expected.All() = image.All();
          filter.Filter(&image);
          reference(expected);
          ASSERT_EQ(image.All(), expected.All()) << gain << " " << offset << NameOf(format);
        }
      }
}

TEST(BalanceRatioFilter, TableFollowsSettingsDepthAndLimits) {
  Filter filter;
  filter.SetBalanceRatio(kY, 2.0);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(FilterOne(filter, Mono8, 0, 125), 250U);
    EXPECT_EQ(FilterOne(filter, YCbCr709_422_8, 0, 125), 235U);
    EXPECT_EQ(FilterOne(filter, YCbCr8, 0, 125), 250U);
    EXPECT_EQ(FilterOne(filter, Mono16, 0, 125), 250U);
    EXPECT_EQ(FilterOne(filter, Mono10, 0, 511), 1022U);
    filter.SetOffsetLevelBeforeGain(kY, 1);
    EXPECT_EQ(FilterOne(filter, Mono8, 0, 100), 202U);
    filter.SetOffsetLevelAfterGain(kY, 3);
    EXPECT_EQ(FilterOne(filter, Mono8, 0, 100), 205U);
    filter.SetOffsetLevelBeforeGain(kY, 0);
    filter.SetOffsetLevelAfterGain(kY, 0);
  }
  EXPECT_EQ(FilterOne(filter, BGR8, 1, 100), 100U) << "other channels have tables of their own";
  Filter another;
  EXPECT_EQ(FilterOne(another, Mono8, 0, 100), 100U);
}

/// An image of 4 x 2 pixels of one colour.
void FilterColor(Filter& filter, PixelFormat format, std::array<unsigned, 3> components) {
  TestImage image(4, 2, format);
  for (std::size_t y = 0; y < 2; ++y)
    for (std::size_t i = 0; i < 12; ++i) SetSample(image, i, y, components[i % 3]);
  filter.Filter(&image);
}

std::array<double, 3> Ratios(const Filter& filter) {
  return {filter.GetBalanceRatio(kRed), filter.GetBalanceRatio(kGreen),
          filter.GetBalanceRatio(kBlue)};
}
using Three = std::array<double, 3>;

TEST(BalanceRatioFilterAuto, RatiosWorkedByHand) {
  const struct {
    std::array<unsigned, 3> color;
    std::array<int, 3> before;
    Three ratios;
  } kCases[] = {
      {{100, 50, 25}, {}, {1, 2, 4}},
      {{50, 100, 25}, {}, {2, 1, 4}},
      {{50, 100, 100}, {}, {2, 1, 1}},
      {{80, 80, 80}, {}, {1, 1, 1}},
      {{200, 10, 0}, {}, {1, 16, 16}},
      {{100, 50, 50}, {20, -20, -60}, {1, 4, 16}},
      {{100, 50, 50}, {-150, 0, -60}, {1, -1, 16}},  // not limited below
  };
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetBalanceWhiteAuto(kContinuous);
    for (Channel channel : {kRed, kGreen, kBlue})
      filter.SetOffsetLevelBeforeGain(channel, c.before[channel]);
    for (int frame = 0; frame < 3; ++frame) {  // the same image again finds the same
      FilterColor(filter, RGB8, c.color);
      EXPECT_EQ(Ratios(filter), c.ratios) << c.color[0] << " " << c.color[1];
    }
    EXPECT_EQ(filter.GetBalanceWhiteAuto(), kContinuous);
  }
}

TEST(BalanceRatioFilterAuto, TheMeasuredImageIsBalanced) {
  Filter filter;
  filter.SetBalanceWhiteAuto(kContinuous);
  TestImage image(1, 1, BGR8);
  for (std::size_t i : {0, 1, 2}) SetSample(image, i, 0, static_cast<unsigned>(60 * (i + 1)));
  filter.Filter(&image);
  for (std::size_t i : {0, 1, 2}) EXPECT_EQ(SampleAt(image, i, 0), 180U);
}

TEST(BalanceRatioFilterAuto, OnceEndsWhereRatiosSettle) {
  Filter filter;
  const auto filterUnder = [&](EQvBalanceWhiteAuto_t mode, std::array<unsigned, 3> color) {
    filter.SetBalanceWhiteAuto(mode);
    FilterColor(filter, RGB8, color);
    return filter.GetBalanceWhiteAuto();
  };
  EXPECT_EQ(filterUnder(kOnce, {90, 90, 90}), kOff) << "nothing changes";
  EXPECT_EQ(filterUnder(kOnce, {90, 45, 90}), kOnce);
  TestImage mono(2, 2, Mono8);
  filter.Filter(&mono);
  EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOnce) << "no image that ends it";
  EXPECT_EQ(filterUnder(kOnce, {90, 45, 90}), kOff);
  EXPECT_EQ(Ratios(filter), (Three{1, 2, 1}));
  FilterColor(filter, RGB8, {10, 20, 30});
  EXPECT_EQ(Ratios(filter), (Three{1, 2, 1})) << "Off keeps them";
  // The change is squared and summed: 200 / 97 is 0.062 from 2, 200 / 98 is 0.041.
  EXPECT_EQ(filterUnder(kOnce, {200, 97, 200}), kOnce);
  filter.SetBalanceRatio(kGreen, 2.0);
  EXPECT_EQ(filterUnder(kOnce, {200, 98, 200}), kOff);
  EXPECT_EQ(filterUnder(kContinuous, {200, 98, 200}), kContinuous);
}

TEST(BalanceRatioFilterAuto, BlackHasNoRatioAndEndsNoOnce) {
  Filter filter;
  filter.SetBalanceWhiteAuto(kOnce);
  for (int frame = 0; frame < 2; ++frame) {
    FilterColor(filter, BGR10, {0, 0, 0});
    EXPECT_EQ(filter.GetBalanceRatio(kRed), 1.0);
    EXPECT_TRUE(std::isnan(filter.GetBalanceRatio(kGreen)));
    EXPECT_TRUE(std::isnan(filter.GetBalanceRatio(kBlue)));
    EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOnce);
  }
  filter.SetBalanceWhiteAuto(kOff);
  EXPECT_EQ(FilterOne(filter, BGR8, 0, 255), 0U);
  EXPECT_EQ(FilterOne(filter, BGR8, 2, 255), 255U);
  filter.SetBalanceWhiteAuto(kOnce);
  FilterColor(filter, RGB8, {9, 9, 9});
  EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOnce) << "a change from no number is no small one";
  FilterColor(filter, RGB8, {9, 9, 9});
  EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOff);
}

TEST(BalanceRatioFilterAuto, ChrominanceIsCentred) {
  Filter filter;
  filter.SetBalanceRatio(kCb, 3.0);
  filter.SetOffsetLevelAfterGain(kCr, 7);
  const auto filterImage = [&](unsigned cb, unsigned cr) {
    TestImage image(4, 1, YCbCr422_8);
    for (std::size_t i = 0; i < 8; i += 4) {
      SetSample(image, i, 0, 77);
      SetSample(image, i + 1, 0, cb + static_cast<unsigned>(i / 4));
      SetSample(image, i + 3, 0, cr);
    }
    filter.Filter(&image);
    return std::array{SampleAt(image, 0, 0), SampleAt(image, 1, 0), SampleAt(image, 5, 0),
                      SampleAt(image, 3, 0)};
  };
  using Four = std::array<unsigned, 4>;
  filter.SetBalanceWhiteAuto(kOnce);
  EXPECT_EQ(filterImage(100, 140), (Four{77, 128, 129, 128})) << "-100.5 is cut to -100";
  EXPECT_EQ(filter.GetOffsetLevelBeforeGain(kCb), -100);
  EXPECT_EQ(filter.GetOffsetLevelBeforeGain(kCr), -140);
  for (Channel channel : {kCb, kCr}) {
    EXPECT_EQ(filter.GetBalanceRatio(channel), 1.0);
    EXPECT_EQ(filter.GetOffsetLevelAfterGain(channel), 128);
  }
  EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOnce);
  EXPECT_EQ(filterImage(102, 143), (Four{77, 128, 129, 128}));
  EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOnce) << "4 + 9";
  EXPECT_EQ(filterImage(100, 141), (Four{77, 128, 129, 128}));
  EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOff) << "4 + 4";
  EXPECT_EQ(filterImage(120, 141), (Four{77, 148, 149, 128}));
}

TEST(BalanceRatioFilterAuto, LinesWithoutAGroupMeasureNothing) {
  Filter filter;
  filter.SetBalanceWhiteAuto(kContinuous);
  TestImage narrow(3, 2, YCbCr411_8);
  const auto before = narrow.Randomize(1).All();
  filter.Filter(&narrow);
  EXPECT_EQ(narrow.All(), before);
  EXPECT_EQ(filter.GetOffsetLevelBeforeGain(kCb), 0);
  EXPECT_EQ(filter.GetOffsetLevelBeforeGain(kCr), 0);

  TestImage column(1, 2, BayerRG8);  // red and green alone
  SetSample(column, 0, 0, 40);
  SetSample(column, 0, 1, 20);
  filter.Filter(&column);
  EXPECT_EQ(Ratios(filter), (Three{1, 2, 16}));
}

TEST(BalanceRatioFilterAuto, ModeBeyondTheLastActsAsContinuous) {
  Filter filter;
  WriteRegister(filter, 0x70, 7U);
  for (int frame = 0; frame < 2; ++frame) FilterColor(filter, RGB8, {100, 50, 25});
  EXPECT_EQ(Ratios(filter), (Three{1, 2, 4}));
  EXPECT_EQ(ReadRegister<unsigned>(filter, 0x70), 7U);
}

TEST(BalanceRatioFilterSettings, RegistersAndSettersShowTheSameValues) {
  Filter filter;
  for (Channel channel : kChannels) {
    const bool isChroma = channel == kCb || channel == kCr;
    WriteRegister<std::uint64_t>(filter, 0x10, 0xABCD00000000 + channel);
    EXPECT_EQ(ReadRegister<std::uint64_t>(filter, 0x10), channel) << "the low half counts";
    EXPECT_EQ(ReadRegister<double>(filter, 0x18), 1.0);
    EXPECT_EQ(ReadRegister<int>(filter, 0x30), isChroma ? -128 : 0);
    EXPECT_EQ(ReadRegister<int>(filter, 0x50), isChroma ? 128 : 0);
    WriteRegister(filter, 0x18, 99.0 + static_cast<int>(channel));  // no range here
    WriteRegister(filter, 0x30, -1000);
    WriteRegister(filter, 0x50, 70000);
    EXPECT_EQ(filter.GetBalanceRatio(channel), 99.0 + static_cast<int>(channel));
    EXPECT_EQ(filter.GetOffsetLevelBeforeGain(channel), -1000);
    EXPECT_EQ(filter.GetOffsetLevelAfterGain(channel), 70000);
    filter.SetBalanceRatio(channel, 16.0);
    filter.SetOffsetLevelBeforeGain(channel, -255);
    filter.SetOffsetLevelAfterGain(channel, 255);
    EXPECT_EQ(ReadRegister<double>(filter, 0x18), 16.0);
    EXPECT_EQ(ReadRegister<int>(filter, 0x30), -255);
    EXPECT_EQ(ReadRegister<int>(filter, 0x50), 255);
  }
  filter.SetBalanceWhiteAuto(kContinuous);
  EXPECT_EQ(ReadRegister<unsigned>(filter, 0x70), 2U);
  WriteRegister(filter, 0x70, 1U);
  EXPECT_EQ(filter.GetBalanceWhiteAuto(), kOnce);
  EXPECT_EQ(ReadRegister<double>(filter, 0x20), 16.0);
  EXPECT_EQ(ReadRegister<double>(filter, 0x28), 0.0);
  EXPECT_EQ(ReadRegister<int>(filter, 0x40), 255);
  EXPECT_EQ(ReadRegister<int>(filter, 0x48), -255);
  EXPECT_EQ(ReadRegister<int>(filter, 0x60), 255);
  EXPECT_EQ(ReadRegister<int>(filter, 0x68), 0);
}

TEST(BalanceRatioFilterSettings, OutOfRangeIsRefusedByText) {
  Filter filter;
  const auto six = static_cast<Channel>(6);
  const std::string noChannel = "eBRS = 6 must be smaller than Max = 6";
  const std::pair<std::function<void()>, std::string> kCases[] = {
      {[&] { filter.SetBalanceRatio(kCr, -0.5); },
       "value = -0.500000 must be greater than or equal 0.000000"},
      {[&] { filter.SetBalanceRatio(kCr, 16.5); },
       "value = 16.500000 must be smaller than or equal 16.000000"},
      {[&] { filter.SetOffsetLevelBeforeGain(kCr, -256); },
       "value = -256 must be equal or greater than Min = -255"},
      {[&] { filter.SetOffsetLevelBeforeGain(kCr, 256); },
       "value = 256 must be equal or smaller than Max = 255"},
      {[&] { filter.SetOffsetLevelAfterGain(kCr, -1); },
       "value = -1 must be equal or greater than Min = 0"},
      {[&] { filter.SetOffsetLevelAfterGain(kCr, 256); },
       "value = 256 must be equal or smaller than Max = 255"},
      {[&] { filter.SetBalanceWhiteAuto(static_cast<EQvBalanceWhiteAuto_t>(3)); },
       "eBWA = 3 must be smaller than Max = 3"},
      {[&] { filter.SetBalanceRatio(six, 1.0); }, noChannel},
      {[&] { filter.SetOffsetLevelBeforeGain(six, 0); }, noChannel},
      {[&] { filter.SetOffsetLevelAfterGain(six, 0); }, noChannel},
      {[&] { (void)filter.GetBalanceRatio(six); }, noChannel},
      {[&] { (void)filter.GetOffsetLevelBeforeGain(six); }, noChannel},
      {[&] { (void)filter.GetOffsetLevelAfterGain(six); }, noChannel},
      {[&] { WriteRegister<std::uint64_t>(filter, 0x10, 6); }, "nothing thrown"},
      {[&] { ReadRegister<double>(filter, 0x18); }, noChannel},
      {[&] { ReadRegister<int>(filter, 0x30); }, noChannel},
      {[&] { ReadRegister<int>(filter, 0x50); }, noChannel},
      {[&] { WriteRegister(filter, 0x18, 2.0); }, noChannel},
      {[&] { WriteRegister(filter, 0x30, 2); }, noChannel},
      {[&] { WriteRegister(filter, 0x50, 2); }, noChannel},
  };
  for (const auto& [call, message] : kCases)
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>(call), message);
  EXPECT_THROW(filter.SetBalanceRatio(kCr, std::nan("")), GenICam::OutOfRangeException);
  Reference().ExpectSameSettings(filter, "after refusals");
}

class BalanceRatioNodeMap : public testing::Test {
 protected:
  GenApi::INode* Node(const char* name) {
    GenApi::INode* node = filter.GetINodeMap()->GetNode(name);
    if (!node) throw std::runtime_error(std::string("no node ") + name);
    return node;
  }
  void Select(const char* channel) { selector->FromString(channel); }

  Filter filter;
  const GenApi::CEnumerationPtr selector = Node("BalanceRatioSelector");
  const GenApi::CEnumerationPtr mode = Node("BalanceWhiteAuto");
  const GenApi::CFloatPtr ratio = Node("BalanceRatio");
  const GenApi::CIntegerPtr before = Node("OffsetLevelBeforeGain");
  const GenApi::CIntegerPtr after = Node("OffsetLevelAfterGain");
};

TEST_F(BalanceRatioNodeMap, FeaturesFollowTheSelector) {
  const char* const kNames[] = {"Red", "Green", "Blue", "Y", "Cb", "Cr"};
  for (Channel channel : kChannels) {
    Select(kNames[channel]);
    EXPECT_EQ(selector->GetIntValue(), channel);
    const int index = static_cast<int>(channel);
    ratio->SetValue(index + 0.5);
    before->SetValue(-index);
    after->SetValue(10 + index);
  }
  for (Channel channel : kChannels) {
    const int index = static_cast<int>(channel);
    EXPECT_EQ(filter.GetBalanceRatio(channel), index + 0.5);
    Select(kNames[channel]);
    EXPECT_EQ(ratio->GetValue(), index + 0.5);
    EXPECT_EQ(before->GetValue(), -index);
    EXPECT_EQ(after->GetValue(), 10 + index);
    filter.SetBalanceRatio(channel, 3.0);
    filter.SetOffsetLevelBeforeGain(channel, -9);
    filter.SetOffsetLevelAfterGain(channel, 9);
    EXPECT_EQ(ratio->GetValue(), 3.0) << "cached values end with the setter";
    EXPECT_EQ(before->GetValue(), -9);
    EXPECT_EQ(after->GetValue(), 9);
  }
  EXPECT_EQ(ratio->GetMin(), 0.0);
  EXPECT_EQ(ratio->GetMax(), 16.0);
  EXPECT_EQ(before->GetMin(), -255);
  EXPECT_EQ(before->GetMax(), 255);
  EXPECT_EQ(after->GetMin(), 0);
  EXPECT_EQ(after->GetMax(), 255);
  EXPECT_THROW(ratio->SetValue(16.1), GenICam::OutOfRangeException);
  EXPECT_THROW(before->SetValue(-256), GenICam::OutOfRangeException);
  EXPECT_THROW(after->SetValue(-1), GenICam::OutOfRangeException);
  EXPECT_THROW(selector->SetIntValue(6), GenICam::GenericException);
}

TEST_F(BalanceRatioNodeMap, AutomaticModesLockWhatTheyWrite) {
  const struct {
    const char* channel;
    bool ratio, offsets;  // locked
  } kLocks[] = {{"Red", true, false}, {"Green", true, false}, {"Blue", true, false},
                {"Y", false, false},  {"Cb", true, true},     {"Cr", true, true}};
  const auto access = [](bool isLocked) { return isLocked ? GenApi::RO : GenApi::RW; };
  for (auto value : {kOff, kOnce, kOff, kContinuous}) {
    const bool isAutomatic = value != kOff;
    for (bool typed : {false, true}) {
      if (typed)
        filter.SetBalanceWhiteAuto(value);
      else
        mode->SetIntValue(value);
      EXPECT_EQ(filter.GetBalanceWhiteAuto(), value);
      for (const auto& lock : kLocks) {
        Select(lock.channel);
        EXPECT_EQ(ratio->GetAccessMode(), access(isAutomatic && lock.ratio)) << lock.channel;
        EXPECT_EQ(before->GetAccessMode(), access(isAutomatic && lock.offsets)) << lock.channel;
        EXPECT_EQ(after->GetAccessMode(), access(isAutomatic && lock.offsets)) << lock.channel;
      }
      filter.SetBalanceWhiteAuto(isAutomatic && !typed ? kOff : value);
    }
  }
  Select("Cb");
  EXPECT_THROW(before->SetValue(1), GenICam::AccessException);
  filter.SetOffsetLevelBeforeGain(kCb, 1);  // the typed road is not locked
  EXPECT_EQ(before->GetValue(), 1);
}

TEST_F(BalanceRatioNodeMap, WhatIsFoundShowsAtOnce) {
  Select("Green");
  mode->FromString("Once");
  EXPECT_EQ(ratio->GetValue(), 1.0);
  FilterColor(filter, RGB8, {100, 50, 25});
  EXPECT_EQ(ratio->GetValue(), 2.0);
  EXPECT_STREQ(mode->ToString().c_str(), "Once");
  EXPECT_EQ(ratio->GetAccessMode(), GenApi::RO);
  FilterColor(filter, RGB8, {100, 50, 25});
  EXPECT_STREQ(mode->ToString().c_str(), "Off") << "it ended itself";
  EXPECT_EQ(ratio->GetAccessMode(), GenApi::RW);
  EXPECT_TRUE(GenApi::CEnumEntryPtr(mode->GetEntryByName("Once"))->IsSelfClearing());

  Select("Cr");
  mode->FromString("Continuous");
  EXPECT_EQ(before->GetValue(), -128);
  TestImage image(4, 2, YCbCr8);
  filter.Filter(&image);
  EXPECT_EQ(before->GetValue(), 0);
}

TEST_F(BalanceRatioNodeMap, StatesKindsAndVisibility) {
  GenApi::FeatureList_t features;
  GenApi::CCategoryPtr(Node("AnalogControl"))->GetFeatures(features);
  std::vector<std::string> names;
  for (GenApi::IValue* feature : features) {
    GenApi::INode* node = feature->GetNode();
    names.emplace_back(node->GetName().c_str());
    EXPECT_EQ(node->GetVisibility(), GenApi::Expert) << names.back();
    EXPECT_EQ(node->IsStreamable(), names.back() != "BalanceRatioSelector") << names.back();
  }
  EXPECT_EQ(names, (std::vector<std::string>{"BalanceRatioSelector", "BalanceRatio",
                                             "OffsetLevelBeforeGain", "OffsetLevelAfterGain",
                                             "BalanceWhiteAuto"}));
  EXPECT_EQ(Node("AnalogControl")->GetAccessMode(), GenApi::RO);
  EXPECT_EQ(GenApi::CIntegerPtr(Node("SizeTSize"))->GetValue(), 8);
  ExpectDocumentMatchesRegisters(filter);
}

TEST(BalanceRatioFilter, RefusesOtherFormatsAndLeavesThemAlone) {
  Filter filter;
  filter.SetBalanceRatio(kY, 2.0);
  ExpectSupportsOnly(filter, AllFormats());
}

TEST(BalanceRatioFilter, WorksOnAViewOnlyInItsOwnPhase) {
  Filter filter;
  filter.SetBalanceRatio(kRed, 0.0);
  const Buffer buffer = MakeBuffer();
  for (PixelFormat format : {BayerRG8, BayerGB12}) {
    buffer->CreateBuffer(9, 8, format, QvMemoryInitialization_Zero);
    IQvImage* image = buffer->GetIQvImage();
    for (std::size_t y = 0; y < 8; ++y)
      for (std::size_t x = 0; x < 9; ++x) SetSample(*image, x, y, 50);
    filter.Filter(image->GetROIImage(3, 1, 5, 6));
    for (std::size_t y = 0; y < 8; ++y)
      for (std::size_t x = 0; x < 9; ++x) {
        const bool inside = x >= 3 && x < 8 && y >= 1 && y < 7;
        const bool isRed = Reference::ChannelAt(NameOf(format), 9, x, y) == 'R';
        ASSERT_EQ(SampleAt(*image, x, y), inside && isRed ? 0U : 50U) << x << "," << y;
      }
  }
}

}  // namespace
}  // namespace QvApi
