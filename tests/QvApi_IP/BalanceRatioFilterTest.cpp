// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
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
using Mode = EQvBalanceWhiteAuto_t;

constexpr auto kRed = QvBalanceRatioSelector_Red, kGreen = QvBalanceRatioSelector_Green,
               kBlue = QvBalanceRatioSelector_Blue, kY = QvBalanceRatioSelector_Y,
               kCb = QvBalanceRatioSelector_Cb, kCr = QvBalanceRatioSelector_Cr;
constexpr Channel kChannels[] = {kRed, kGreen, kBlue, kY, kCb, kCr};
constexpr auto kOff = QvBalanceWhiteAuto_Off, kOnce = QvBalanceWhiteAuto_Once,
               kContinuous = QvBalanceWhiteAuto_Continuous;

struct Curve {
  double gain = 1.0;
  int before = 0, after = 0;
};

/// The filter told pixel by pixel, from the names of the formats.
struct Reference {
  std::array<Curve, 6> curves{Curve{}, {}, {}, {}, {1.0, -128, 128}, {1.0, -128, 128}};
  Mode mode = kOff;

  /// Calls `visit(channel, i, y)` for sample i of line y; a line has whole groups of pixels.
  template <class Visit>
  static void ForEachSample(const IQvImage& image, Visit visit) {
    const std::string name = NameOf(image.GetImagePixelFormat());
    const bool isBayer = name.starts_with("Bayer");
    std::string group = name.substr(0, name[3] == 'a' ? 4 : 3);
    std::size_t pixels = 1;
    if (name.starts_with("Mono") || isBayer) group = "Y";
    if (name == "YCbCr8") group = "Ybr";
    if (name.find("422") != std::string::npos) group = "YbYr", pixels = 2;
    if (name.find("411") != std::string::npos) group = "YYbYYr", pixels = 4;
    for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
      for (std::size_t i = 0; i < image.GetImageWidth() / pixels * group.size(); ++i) {
        const char channel = isBayer ? BayerColor(name, i, y) : group[i % group.size()];
        if (channel != 'a') visit(std::string("RGBYbr").find(channel), i, y);
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
    if (Info(image.GetImagePixelFormat()).IsMono()) return;
    std::array<double, 6> sums{}, counts{}, means{};
    ForEachSample(image, [&](std::size_t channel, std::size_t i, std::size_t y) {
      sums[channel] += SampleAt(image, i, y);
      counts[channel] += 1;
    });
    for (std::size_t c = 0; c < 6; ++c) means[c] = counts[c] > 0 ? sums[c] / counts[c] : 0;
    const bool isYCbCr = NameOf(image.GetImagePixelFormat()).starts_with("YCbCr");
    std::size_t best = 0;
    for (std::size_t c : {1, 2})
      if (means[c] > means[best]) best = c;
    const double level = means[best] + curves[best].before;
    double change = 0;
    for (std::size_t c = isYCbCr ? 4 : 0; c < (isYCbCr ? 6 : 3); ++c) {
      const Curve old = curves[c];
      if (isYCbCr) {
        curves[c] = {1.0, static_cast<int>(std::trunc(-means[c])), 128};
        change += std::pow(curves[c].before - static_cast<double>(old.before), 2);
        continue;
      }
      const double denominator = means[c] + old.before;
      double& ratio = curves[c].gain;
      ratio = denominator < 0 ? 16.0 : level / denominator;
      if (ratio > 16) ratio = 16;
      if (c == best) ratio = 1;
      change = std::fma(ratio - old.gain, ratio - old.gain, change);
    }
    if (mode == kOnce && change <= (isYCbCr ? 8 : 0.0025)) mode = kOff;
  }

  void operator()(IQvImage& image) {
    if (mode != kOff) Measure(image);
    const PixelFormat format = image.GetImagePixelFormat();
    const int fullScale = (1 << DepthOf(format)) - 1;
    const bool isVideo = format == YCbCr709_422_8;
    ForEachSample(image, [&](std::size_t channel, std::size_t i, std::size_t y) {
      const unsigned code = SampleAt(image, i, y) & static_cast<unsigned>(fullScale);
      const int top = !isVideo ? fullScale : channel == kY ? 235 : 240;
      SetSample(image, i, y, Balanced(code, curves[channel], isVideo ? 16 : 0, top));
    });
  }

  void Apply(Filter& filter) const {
    for (Channel channel : kChannels) {
      WriteRegister(filter, 0x10, 0xABCD00000000 + channel);  // the low half counts
      WriteRegister(filter, 0x18, curves[channel].gain);
      WriteRegister(filter, 0x30, curves[channel].before);
      WriteRegister(filter, 0x50, curves[channel].after);
    }
    WriteRegister(filter, 0x70, static_cast<std::uint32_t>(mode));
  }

  void ExpectSameSettings(const Filter& filter) const {
    for (Channel channel : kChannels) {
      const double gain = filter.GetBalanceRatio(channel), expected = curves[channel].gain;
      ASSERT_TRUE(gain == expected || (std::isnan(gain) && std::isnan(expected))) << gain;
      ASSERT_EQ(filter.GetOffsetLevelBeforeGain(channel), curves[channel].before);
      ASSERT_EQ(filter.GetOffsetLevelAfterGain(channel), curves[channel].after);
    }
    ASSERT_EQ(filter.GetBalanceWhiteAuto(), mode);
  }
};

/// Images and what is found with them, of a format under the settings of the reference.
void CompareImages(PixelFormat format, Filter& filter, Reference& reference) {
  reference.Apply(filter);
  CompareOnShapes(filter, format, [&](TestImage& image) {
    reference.ExpectSameSettings(filter);  // as the image before left them
    reference(image);
  });
  reference.ExpectSameSettings(filter);
}

/// Gains and offsets at their limits, and random ones between.
void Choose(Reference& reference, int kind, std::mt19937& random) {
  const auto from = [&](double low, double high) {
    return std::uniform_real_distribution(low, high)(random);
  };
  for (Curve& curve : reference.curves)
    if (kind < 4)
      curve = {kind % 2 != 0 ? 16.0 : 0.0, kind < 2 ? -255 : 255, kind % 3 != 0 ? 255 : 0};
    else
      curve = {from(0, kind % 2 != 0 ? 16 : 2), static_cast<int>(from(-255, 255)),
               static_cast<int>(from(0, 255))};
}

TEST(BalanceRatioFilter, BalancesEveryFormatAndNothingBeside) {
  std::mt19937 random(1);
  Filter filter;
  Reference reference;
  reference.ExpectSameSettings(filter);
  for (int kind = -1; kind < 8; ++kind) {
    SCOPED_TRACE(kind);
    if (kind >= 0) Choose(reference, kind, random);
    for (PixelFormat format : SampleFormats()) CompareImages(format, filter, reference);
  }
  // What only registers can hold.
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (double gain : {-1.0, -kInfinity, kInfinity, 1e300, -0.0, std::nan("")})
    for (int offset : {0, INT_MAX, INT_MIN})
      for (PixelFormat format : {Mono8, BGR16, YCbCr709_422_8}) {
        SCOPED_TRACE(gain);
        reference.curves.fill({gain, offset, -(offset / 2)});
        CompareImages(format, filter, reference);
      }
}

TEST(BalanceRatioFilter, MeasuresEveryFormat) {
  std::mt19937 random(2);
  for (PixelFormat format : SampleFormats())
    for (Mode mode : {kOnce, kContinuous, Mode{7}})  // beyond the last is as Continuous
      for (int kind = 3; kind < 7; ++kind) {
        Filter filter;
        Reference reference;
        Choose(reference, kind, random);
        reference.mode = mode;
        CompareImages(format, filter, reference);
      }
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
      {Mono8, 0, kY, {1.0, -10, 20}, 5, 15},
      {BGR12, 2, kRed, {16.0, 0, 255}, 100, 1855},
      {BGR12, 2, kRed, {16.0, 0, 255}, 300, 4095},
      {RGBa8, 3, kRed, {2.0, 0, 0}, 40, 40},
      {BayerGB8, 1, kBlue, {2.0, 0, 0}, 40, 80},
      {YCbCr411_8, 5, kCr, {2.0, -128, 128}, 138, 148},
      {YCbCr709_422_8, 0, kCr, {1.0, 0, 0}, 3, 16},
      {YCbCr709_422_8, 0, kCr, {1.0, 0, 0}, 250, 235},
      {YCbCr709_422_8, 1, kCr, {1.0, 0, 0}, 250, 240},
      {Mono10, 0, kY, {1.0, 0, 0}, 0x0405, 5},  // masked to its depth
  };
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetBalanceRatio(c.channel, c.curve.gain);
    filter.SetOffsetLevelBeforeGain(c.channel, c.curve.before);
    filter.SetOffsetLevelAfterGain(c.channel, c.curve.after);
    EXPECT_EQ(FilterOne(filter, c.format, c.before, c.index), c.after) << "row " << &c - kCases;
  }
}

/// An image of 4 x 2 pixels of one colour.
void FilterColor(Filter& filter, PixelFormat format, std::array<unsigned, 3> components) {
  TestImage image(4, 2, format);
  for (std::size_t y = 0; y < 2; ++y)
    for (std::size_t i = 0; i < 12; ++i) SetSample(image, i, y, components[i % 3]);
  filter.Filter(&image);
}

using Three = std::array<double, 3>;
Three Ratios(const Filter& filter) {
  return {filter.GetBalanceRatio(kRed), filter.GetBalanceRatio(kGreen),
          filter.GetBalanceRatio(kBlue)};
}

TEST(BalanceRatioFilterAuto, RatiosWorkedByHand) {
  const struct {
    std::array<unsigned, 3> color;
    std::array<int, 3> before;
    Three ratios;
  } kCases[] = {
      {{100, 50, 25}, {}, {1, 2, 4}},
      {{50, 100, 100}, {}, {2, 1, 1}},
      {{200, 10, 0}, {}, {1, 16, 16}},
      {{100, 50, 50}, {20, -20, -60}, {1, 4, 16}},
      {{100, 50, 50}, {-150, 0, -60}, {1, -1, 16}},  // not limited below
  };
  for (const auto& c : kCases) {
    Filter filter;
    filter.SetBalanceWhiteAuto(kContinuous);
    for (Channel channel : {kRed, kGreen, kBlue})
      filter.SetOffsetLevelBeforeGain(channel, c.before[channel]);
    for (int frame = 0; frame < 2; ++frame) {  // the same image again finds the same
      FilterColor(filter, RGB8, c.color);
      EXPECT_EQ(Ratios(filter), c.ratios) << "row " << &c - kCases;
    }
  }
}

TEST(BalanceRatioFilterAuto, OnceEndsWhereSettingsSettle) {
  Filter filter;
  const auto modeAfter = [&](Mode mode, std::array<unsigned, 3> color, PixelFormat format = RGB8) {
    filter.SetBalanceWhiteAuto(mode);
    FilterColor(filter, format, color);
    return filter.GetBalanceWhiteAuto();
  };
  EXPECT_EQ(modeAfter(kOnce, {90, 90, 90}), kOff) << "nothing changes";
  EXPECT_EQ(modeAfter(kOnce, {90, 45, 90}), kOnce);
  EXPECT_EQ(modeAfter(kOnce, {90, 90, 90}, Mono8), kOnce) << "no image that ends it";
  EXPECT_EQ(modeAfter(kOnce, {90, 45, 90}), kOff);
  FilterColor(filter, RGB8, {10, 20, 30});
  EXPECT_EQ(Ratios(filter), (Three{1, 2, 1})) << "Off keeps them";
  // The change is squared and summed: 200 / 97 is 0.062 from 2, 200 / 98 is 0.041.
  EXPECT_EQ(modeAfter(kOnce, {200, 97, 200}), kOnce);
  filter.SetBalanceRatio(kGreen, 2.0);
  EXPECT_EQ(modeAfter(kOnce, {200, 98, 200}), kOff);
  EXPECT_EQ(modeAfter(kContinuous, {200, 98, 200}), kContinuous);

  // Black has no ratio, and a change to no number or from it is no small one.
  for (unsigned level : {0, 0, 9}) {
    EXPECT_EQ(modeAfter(kOnce, {level, level, level}), kOnce);
    EXPECT_EQ(filter.GetBalanceRatio(kRed), 1.0);
    EXPECT_EQ(std::isnan(filter.GetBalanceRatio(kGreen)), level == 0);
    EXPECT_EQ(std::isnan(filter.GetBalanceRatio(kBlue)), level == 0);
  }
  EXPECT_EQ(modeAfter(kOnce, {9, 9, 9}), kOff);

  // Offsets of YCbCr: the squares of 4 and 3 are too much, those of 2 and 2 are not.
  for (auto [cb, cr, mode] :
       {std::tuple{100U, 140U, kOnce}, {104U, 143U, kOnce}, {102U, 141U, kOff}})
    EXPECT_EQ(modeAfter(kOnce, {77, cb, cr}, YCbCr8), mode) << cb;
  for (Channel channel : {kCb, kCr}) {
    EXPECT_EQ(filter.GetOffsetLevelBeforeGain(channel), channel == kCb ? -102 : -141);
    EXPECT_EQ(filter.GetBalanceRatio(channel), 1.0);
    EXPECT_EQ(filter.GetOffsetLevelAfterGain(channel), 128);
  }
}

TEST(BalanceRatioFilter, FormatsAndSettings) {
  Filter filter;
  filter.SetBalanceRatio(kY, 2.0);
  ExpectSupportsOnly(filter, SampleFormats());
  filter.SetBalanceRatio(kY, 1.0);
  const GenApi::CEnumerationPtr selector = filter.GetINodeMap()->GetNode("BalanceRatioSelector");
  const char* const kNames[] = {"Red", "Green", "Blue", "Y", "Cb", "Cr"};
  for (Channel channel : kChannels) {
    selector->FromString(kNames[channel]);
    EXPECT_EQ(ReadRegister<std::uint64_t>(filter, 0x10), channel);
    const bool isChroma = channel == kCb || channel == kCr;
    ExpectNumber(filter, "BalanceRatio", 0x18, 1.0, 0.0, 16.0, &Filter::GetBalanceRatio,
                 &Filter::SetBalanceRatio, channel);
    ExpectNumber(filter, "OffsetLevelBeforeGain", 0x30, isChroma ? -128 : 0, -255, 255,
                 &Filter::GetOffsetLevelBeforeGain, &Filter::SetOffsetLevelBeforeGain, channel);
    ExpectNumber(filter, "OffsetLevelAfterGain", 0x50, isChroma ? 128 : 0, 0, 255,
                 &Filter::GetOffsetLevelAfterGain, &Filter::SetOffsetLevelAfterGain, channel);
  }
  EXPECT_THROW(filter.SetBalanceRatio(kCr, std::nan("")), GenICam::OutOfRangeException);
  EXPECT_THROW(filter.GetBalanceRatio(Channel{6}), GenICam::OutOfRangeException);
  ExpectChoice(filter, "BalanceWhiteAuto", 0x70, {"Off", "Once", "Continuous"}, "eBWA",
               &Filter::GetBalanceWhiteAuto, &Filter::SetBalanceWhiteAuto);
  ExpectDescription(filter, "Balance Ratio", "AnalogControl", GenApi::Expert,
                    {"BalanceRatioSelector", "BalanceRatio", "OffsetLevelBeforeGain",
                     "OffsetLevelAfterGain", "BalanceWhiteAuto"});
  ExpectNothingSelected(filter, 0x10, 6, "eBRS = 6 must be smaller than Max = 6",
                        {0x18, 0x30, 0x50});
}

TEST(BalanceRatioFilter, NodeMapFollowsAutomaticModes) {
  Filter filter;
  GenApi::INodeMap& nodes = *filter.GetINodeMap();
  const GenApi::CEnumerationPtr selector = nodes.GetNode("BalanceRatioSelector");
  const GenApi::CEnumerationPtr mode = nodes.GetNode("BalanceWhiteAuto");
  const GenApi::CFloatPtr ratio = nodes.GetNode("BalanceRatio");
  const GenApi::CIntegerPtr before = nodes.GetNode("OffsetLevelBeforeGain");
  const GenApi::CIntegerPtr after = nodes.GetNode("OffsetLevelAfterGain");

  // Automatic modes lock what they write, but for typed setters.
  const auto access = [](bool isLocked) { return isLocked ? GenApi::RO : GenApi::RW; };
  for (bool typed : {false, true})
    for (Mode value : {kOff, kOnce, kOff, kContinuous}) {
      typed ? filter.SetBalanceWhiteAuto(value) : mode->SetIntValue(value);
      for (Channel channel : kChannels) {
        selector->SetIntValue(channel);
        const bool isAutomatic = value != kOff, isChroma = channel > kY;
        EXPECT_EQ(ratio->GetAccessMode(), access(isAutomatic && channel != kY)) << channel;
        EXPECT_EQ(before->GetAccessMode(), access(isAutomatic && isChroma)) << channel;
        EXPECT_EQ(after->GetAccessMode(), access(isAutomatic && isChroma)) << channel;
      }
    }
  filter.SetOffsetLevelAfterGain(kCr, 3);
  EXPECT_EQ(after->GetValue(), 3);

  // What is found shows at once.
  EXPECT_EQ(before->GetValue(), -128);
  FilterColor(filter, YCbCr8, {0, 0, 0});
  EXPECT_EQ(before->GetValue(), 0);
  EXPECT_EQ(after->GetValue(), 128);
  selector->FromString("Green");
  mode->FromString("Once");
  for (bool isSettled : {false, true}) {
    EXPECT_EQ(ratio->GetValue(), isSettled ? 2.0 : 1.0);
    FilterColor(filter, RGB8, {100, 50, 25});
    EXPECT_EQ(ratio->GetValue(), 2.0);
    EXPECT_STREQ(mode->ToString().c_str(), isSettled ? "Off" : "Once");
    EXPECT_EQ(ratio->GetAccessMode(), isSettled ? GenApi::RW : GenApi::RO);
  }
  EXPECT_TRUE(GenApi::CEnumEntryPtr(mode->GetEntryByName("Once"))->IsSelfClearing());
}

}  // namespace
}  // namespace QvApi
