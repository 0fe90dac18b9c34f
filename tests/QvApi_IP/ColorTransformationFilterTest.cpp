// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvColorTransformationFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvColorTransformationFilter;
using Matrix = CMatrixTable::Matrix;
using Selector = EQvColorTransformationValueSelector_t;

const struct {
  PixelFormat format;
  std::array<unsigned, 3> at;  ///< Where red, green and blue are.
} kFormats[] = {{RGB8, {0, 1, 2}},  {RGBa8, {0, 1, 2}},  {BGR8, {2, 1, 0}},  {BGRa8, {2, 1, 0}},
                {BGR10, {2, 1, 0}}, {BGRa10, {2, 1, 0}}, {BGR12, {2, 1, 0}}, {BGRa12, {2, 1, 0}},
                {BGR14, {2, 1, 0}}, {BGRa14, {2, 1, 0}}, {BGR16, {2, 1, 0}}, {BGRa16, {2, 1, 0}}};

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

struct Settings {
  Matrix matrix = kIdentity;
  double hue = 0, saturation = 1;
};

void Apply(Filter& filter, const Settings& s) {
  filter.SetColorTransformationEnable(true);
  for (unsigned i = 0; i < 12; ++i)
    filter.SetColorTransformationValue(static_cast<Selector>(i), s.matrix[i]);
  filter.SetHueCorrection(s.hue);
  filter.SetSaturationCorrection(s.saturation);
}

/// One more gain for each code, and the offset of a row in its first column.
class Reference {
 public:
  Reference(const Settings& s, unsigned bits) : m_top((1 << bits) - 1) {
    const Matrix mixed = CMatrixTable::GetMixedMatrix(s.matrix, s.hue, s.saturation);
    for (unsigned row = 0; row < 3; ++row)
      for (unsigned column = 0; column < 3; ++column) {
        volatile double sum = 0;
        for (int code = 0; code <= m_top; ++code) {
          sum = sum + mixed[4 * row + column];
          const double part = column == 0 ? sum + s.matrix[4 * row + 3] : double{sum};
          m_parts[row][column].push_back(static_cast<int>(part));
        }
      }
  }

  void Transform(TestImage& image, const std::array<unsigned, 3>& at) const {
    const std::size_t step = Info(image.GetImagePixelFormat()).GetComponentCount();
    for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
      for (std::size_t i = 0; i < image.GetImageWidth() * step; i += step) {
        int sums[3] = {};
        for (unsigned row = 0; row < 3; ++row)
          for (unsigned column = 0; column < 3; ++column)
            sums[row] += m_parts[row][column]
                                [SampleAt(image, i + at[column], y) & static_cast<unsigned>(m_top)];
        for (unsigned row = 0; row < 3; ++row)
          SetSample(image, i + at[row], y, static_cast<unsigned>(std::clamp(sums[row], 0, m_top)));
      }
  }

 private:
  int m_top;
  std::vector<int> m_parts[3][3];
};

std::vector<Settings> AllSettings() {
  std::vector<Settings> all{
      {},
      {{1.62, -0.45, -0.17, 0, -0.21, 1.4, -0.19, 3, 0.03, -0.52, 1.49, -7}},
      {{16, -16, 16, -65535, -16, 16, 0, 65535, 0.1, 0.1, 0.1, 100.75}},
      {kIdentity, -180, 4},
      {{0.5, 0.25, 0.25, 1.5, 0, 1, 0, -3.75, 1, -1, 1, 0}, 90, 0},
  };
  std::mt19937 random(1);
  const auto in = [&](double lowest, double highest) {
    return std::uniform_real_distribution<double>(lowest, highest)(random);
  };
  for (int i = 0; i < 4; ++i) {
    Settings s{.hue = in(-180, 180), .saturation = in(0, 4)};
    for (unsigned k = 0; k < 12; ++k) s.matrix[k] = k % 4 == 3 ? in(-300, 300) : in(-2, 2);
    all.push_back(s);
  }
  return all;
}

TEST(ColorTransformationFilter, TransformsEveryFormatAndNothingBeside) {
  unsigned seed = 0;
  for (const Settings& settings : AllSettings()) {
    std::map<unsigned, Reference> references;
    Filter filter;
    Apply(filter, settings);
    for (const auto& [format, at] : kFormats) {
      const auto bits = static_cast<unsigned>(Info(format).GetEachComponentEffectiveBitCount());
      const Reference& reference = references.try_emplace(bits, settings, bits).first->second;
      const auto compare = [&, format = format, at = at](std::size_t width, std::size_t height,
                                                         std::size_t padding) {
        for (bool keepDepth : {true, false}) {
          TestImage image(width, height, format, padding), expected(width, height, format, padding);
          image.Randomize(++seed, keepDepth);
          expected.All() = image.All();
          reference.Transform(expected, at);
          ASSERT_EQ(filter.Filter(&image), &image);
          ASSERT_EQ(image.All(), expected.All())
              << NameOf(format) << " " << width << " x " << height << " + " << padding << " hue "
              << settings.hue << " saturation " << settings.saturation;
        }
      };
      ForEachShape(compare);
    }
  }
}

/// A pixel of BGR by a matrix.
std::array<unsigned, 3> Transformed(PixelFormat format, const Settings& settings,
                                    std::array<unsigned, 3> bgr) {
  Filter filter;
  Apply(filter, settings);
  TestImage image(1, 1, format);
  for (unsigned c = 0; c < 3; ++c) SetSample(image, c, 0, bgr[c]);
  filter.Filter(&image);
  return {SampleAt(image, 0, 0), SampleAt(image, 1, 0), SampleAt(image, 2, 0)};
}

TEST(ColorTransformationFilter, PixelsWorkedByHand) {
  using Pixel = std::array<unsigned, 3>;
  const Settings identity;
  EXPECT_EQ(Transformed(BGR8, identity, {0, 100, 255}), (Pixel{1, 101, 255}));
  EXPECT_EQ(Transformed(BGR12, identity, {0, 4094, 4095}), (Pixel{1, 4095, 4095}));
  EXPECT_EQ(Transformed(BGR10, identity, {0xFFFF, 0x0400, 5}), (Pixel{1023, 1, 6}));
  // Ten times 0.1, added up, is less than one; ten times 0.5 is five.
  const Settings tenth{{0.1, 0, 0, 0, 0.5, 0, 0, 0, 0, 0, 1, 0}};
  EXPECT_EQ(Transformed(BGR8, tenth, {9, 77, 9}), (Pixel{10, 5, 0}));
  EXPECT_EQ(Transformed(BGR16, tenth, {9, 77, 9}), (Pixel{10, 5, 0}));
  // Red's product and the offset are cut off together, 3 * 0.5 - 0.75 = 0.75 and 1.5 + 0.5 = 2, the
  // others alone.
  const Settings offsets{{0.5, 0.5, 0, -0.75, 0.5, 0.5, 0, 0.5, 0, 0, 1, -20}};
  EXPECT_EQ(Transformed(BGR8, offsets, {30, 2, 2}), (Pixel{11, 3, 1}));
  // Each product is cut off towards 0: 3 * 0.5 = 1.5 and -1.5 and 5 * 0.5 = 2.5 give 1 - 1 + 2.
  const Settings signs{{0.5, -0.5, 0.5, 0, 0, 1, 0, 0, -1, 0, 0, 0}};
  EXPECT_EQ(Transformed(BGR8, signs, {4, 2, 2}), (Pixel{0, 3, 2}));
  // At saturation 0 all are 0.2989 R + 0.5866 G + 0.1145 B: 29 + 29 + 22.
  EXPECT_EQ(Transformed(BGR8, {.saturation = 0}, {199, 49, 99}), (Pixel{80, 80, 80}));
}

TEST(ColorTransformationFilter, MixedMatrixKeepsGreyAndLuminance) {
  constexpr double kWeights[3] = {0.2989, 0.5866, 0.1145};
  for (double hue : {-180.0, -60.0, 0.0, 17.5, 90.0, 180.0})
    for (double saturation : {0.0, 0.5, 1.0, 4.0}) {
      const Matrix m = CMatrixTable::GetMixedMatrix(kIdentity, hue, saturation);
      for (unsigned i = 0; i < 3; ++i) {
        EXPECT_NEAR(m[4 * i] + m[4 * i + 1] + m[4 * i + 2], 1, 1e-6) << hue;
        double luminance = 0;
        for (unsigned row = 0; row < 3; ++row) luminance += kWeights[row] * m[4 * row + i];
        EXPECT_NEAR(luminance, kWeights[i], 1e-6) << hue;
      }
      // Turning back, at the inverse saturation, undoes it.
      if (saturation == 0) continue;
      Matrix back = CMatrixTable::GetMixedMatrix(m, -hue, 1);
      const Matrix scaled = CMatrixTable::GetMixedMatrix(kIdentity, 0, saturation);
      for (unsigned i = 0; i < 12; ++i) EXPECT_NEAR(back[i], scaled[i], 0.01 * saturation) << hue;
    }
  // Differences to red and to blue turn as a vector: at 90 degrees R - Y becomes R - Y of blue's
  // sign.
  const Matrix quarter = CMatrixTable::GetMixedMatrix(kIdentity, 90, 1);
  EXPECT_NEAR(quarter[0], 0.2989 + 0.2989, 1e-6);
  EXPECT_NEAR(quarter[2], 0.1145 - 0.8855, 1e-6);
  EXPECT_NEAR(quarter[8], 0.7011 + 0.2989, 1e-6);
  EXPECT_NEAR(quarter[10], 0.1145 - 0.1145, 1e-6);
  const Matrix same = CMatrixTable::GetMixedMatrix(kIdentity, 0, 1);
  EXPECT_EQ(same, kIdentity);
  // Gains first, then hue and saturation; offsets as they are.
  const Matrix gains{0, 1, 0, 5, 0, 0, 2, -6, 3, 0, 0, 7};
  const Matrix grey = CMatrixTable::GetMixedMatrix(gains, 33, 0);
  for (unsigned row = 0; row < 3; ++row) {
    EXPECT_NEAR(grey[4 * row], 3 * 0.1145, 1e-6);
    EXPECT_NEAR(grey[4 * row + 1], 0.2989, 1e-6);
    EXPECT_NEAR(grey[4 * row + 2], 2 * 0.5866, 1e-6);
    EXPECT_EQ(grey[4 * row + 3], gains[4 * row + 3]);
  }
}

TEST(ColorTransformationFilter, TablesFollowSettingsDepthAndOrder) {
  Filter filter;
  Apply(filter, {});
  const auto first = [&](PixelFormat format) {
    TestImage image(1, 1, format);
    SetSample(image, 0, 0, 100);
    filter.Filter(&image);
    return SampleAt(image, 0, 0);
  };
  EXPECT_EQ(first(BGR8), 101U);
  filter.SetColorTransformationValue(QvColorTransformationValueSelector_Offset2, 50);
  EXPECT_EQ(first(BGR8), 151U);
  EXPECT_EQ(first(RGB8), 101U) << "the offset is blue's";
  EXPECT_EQ(first(BGR10), 151U);
  EXPECT_EQ(first(BGRa8), 151U);
  WriteRegister(filter, 0x28, std::uint64_t{11});
  WriteRegister(filter, 0x30, 900.0);
  EXPECT_EQ(first(BGR8), 255U);
  EXPECT_EQ(first(BGR10), 1001U);
  filter.SetSaturationCorrection(0);
  EXPECT_EQ(first(BGR10), 911U) << "101 * 0.1145 = 11.56";
  filter.SetColorTransformationEnable(false);
  EXPECT_EQ(first(BGR10), 100U);
}

TEST(ColorTransformationFilter, OtherColourPassesAndGreyIsRefusedWhileEnabled) {
  std::vector<PixelFormat> supported;
  for (const auto& row : kFormats) supported.push_back(row.format);
  Filter filter;
  Apply(filter, {.hue = 20});
  ExpectSupportsOnly(filter, supported, [](const PixelFormatRow& row) { return row.IsColor(); });
  filter.SetColorTransformationEnable(false);
  for (const PixelFormatRow& row : kPixelFormats) {
    TestImage image(8, 8, row.format);
    const auto before = image.Randomize(5).All();
    EXPECT_EQ(filter.Filter(&image), &image) << row.name;
    EXPECT_EQ(image.All(), before) << row.name;
  }
}

TEST(ColorTransformationFilter, TypedSettersRefuseWhatIsOutOfRange) {
  using Error = GenICam::OutOfRangeException;
  Filter filter;
  EXPECT_FALSE(filter.GetColorTransformationEnable());
  EXPECT_EQ(filter.GetHueCorrection(), 0.0);
  EXPECT_EQ(filter.GetSaturationCorrection(), 1.0);
  for (unsigned i = 0; i < 12; ++i)
    EXPECT_EQ(filter.GetColorTransformationValue(static_cast<Selector>(i)), kIdentity[i]);
  const auto setter = [&](unsigned selector) {
    return [&filter, selector](double value) {
      filter.SetColorTransformationValue(static_cast<Selector>(selector), value);
    };
  };
  const struct {
    std::function<void(double)> set;
    double value;
    const char* words;
  } kCases[] = {
      {[&](double v) { filter.SetHueCorrection(v); }, -180.5,
       "value = -180.500000 must be greater than or equal -180.000000"},
      {[&](double v) { filter.SetHueCorrection(v); }, 181,
       "value = 181.000000 must be smaller than or equal 180.000000"},
      {[&](double v) { filter.SetSaturationCorrection(v); }, -1,
       "value = -1.000000 must be greater than or equal 0.000000"},
      {[&](double v) { filter.SetSaturationCorrection(v); }, 4.5,
       "value = 4.500000 must be smaller than or equal 4.000000"},
      {setter(10), 17, "value = 17.000000 must be smaller than or equal 16.000000"},
      {setter(4), -17, "value = -17.000000 must be greater than or equal -16.000000"},
      {setter(3), 65536, "value = 65536.000000 must be smaller than or equal 65535.000000"},
      {setter(11), -65536, "value = -65536.000000 must be greater than or equal -65535.000000"},
      {setter(12), 99, "eCTVS = 12 must be smaller than Max = 12"},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(MessageOf<Error>([&] { c.set(c.value); }), c.words) << c.words;
  EXPECT_EQ(filter.GetColorTransformationValue(QvColorTransformationValueSelector_Gain22), 1.0);
  for (unsigned i : {3, 7, 11}) EXPECT_NO_THROW(setter(i)(65535.0));
  EXPECT_EQ(
      MessageOf<Error>([&] { filter.GetColorTransformationValue(static_cast<Selector>(12)); }),
      "eCTVS = 12 must be smaller than Max = 12");
}

TEST(ColorTransformationFilter, RegistersAreTheSettings) {
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
}

TEST(ColorTransformationFilter, RegistersCheckNoRange) {
  Filter filter;
  const std::pair<std::int64_t, double> kConstants[] = {
      {0x50, 16.0}, {0x58, -16.0}, {0x60, 180.0},   {0x68, -180.0},
      {0x70, 4.0},  {0x78, 0.0},   {0x80, 65535.0}, {0x88, -65535.0}};
  for (auto [address, value] : kConstants) EXPECT_EQ(ReadRegister<double>(filter, address), value);
  WriteRegister(filter, 0x10, 500.0);
  WriteRegister(filter, 0x18, -5.0);
  EXPECT_EQ(filter.GetHueCorrection(), 500.0);
  EXPECT_EQ(filter.GetSaturationCorrection(), -5.0);
  for (auto [word, isSet] : {std::pair{2U, false}, {1U, true}, {0x101U, false}}) {
    WriteRegister(filter, 0x20, word);
    EXPECT_EQ(filter.GetColorTransformationEnable(), isSet) << word;
  }
  for (unsigned i = 0; i < 12; ++i) {
    WriteRegister(filter, 0x28, std::uint64_t{i});
    WriteRegister(filter, 0x30, 1e6 + i);
    EXPECT_EQ(ReadRegister<double>(filter, 0x30), 1e6 + i);
    EXPECT_EQ(filter.GetColorTransformationValue(static_cast<Selector>(i)), 1e6 + i);
  }
  for (std::uint64_t selector : {std::uint64_t{12}, std::uint64_t{0x1'0000'0000}}) {
    WriteRegister(filter, 0x28, selector);
    EXPECT_EQ(ReadRegister<std::uint64_t>(filter, 0x28), selector) << "all of it is stored";
    const std::string words =
        "eCTVS = " + std::to_string(selector) + " must be smaller than Max = 12";
    using Error = GenICam::OutOfRangeException;
    EXPECT_EQ(MessageOf<Error>([&] { ReadRegister<double>(filter, 0x30); }), words);
    EXPECT_EQ(MessageOf<Error>([&] { WriteRegister(filter, 0x30, 1.0); }), words);
  }
}

TEST(ColorTransformationFilter, AnySettingThatARegisterCanHoldIsDefined) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double wild : {infinity, -infinity, std::nan(""), 1e300, -1e9, 3e6})
    for (const auto& [format, at] : kFormats)
      for (std::int64_t address : {0x10, 0x18, 0x30}) {
        Filter filter;
        filter.SetColorTransformationEnable(true);
        for (std::uint64_t selector : {0, 3, 6}) {
          WriteRegister(filter, 0x28, selector);
          WriteRegister(filter, address, wild);
        }
        TestImage image(40, 1, format);
        image.Randomize(3);
        filter.Filter(&image);
        const unsigned top = (1U << Info(format).GetEachComponentEffectiveBitCount()) - 1;
        for (std::size_t i = 0; i < 40; ++i) EXPECT_LE(SampleAt(image, i, 0), top) << wild;
      }
  // Huge sums are not taken for large ones: a gain of 3e6 at code 99 is 3e8, above 0x10000000.
  Filter filter;
  filter.SetColorTransformationEnable(true);
  WriteRegister(filter, 0x30, 3e6);
  TestImage image(2, 1, RGB8);
  for (unsigned i = 0; i < 6; ++i) SetSample(image, i, 0, i < 3 ? 50 : 99);
  filter.Filter(&image);
  EXPECT_EQ(SampleAt(image, 0, 0), 255U);
  EXPECT_EQ(SampleAt(image, 3, 0), 0U);
}

TEST(ColorTransformationFilter, NodeMapAndSettersShowTheSameValues) {
  const Initialized initialized;
  const CQvAutoPtr<IQvFilterReleasable, IQvFilter> made(
      CreateIQvFilter(QvFilterType_ColorTransformation));
  auto& filter = dynamic_cast<IQvColorTransformationFilter&>(*made.Get());
  EXPECT_EQ(filter.GetIQvFilterInfo()->GetFilterName(), "Color Transformation");
  GenApi::INodeMap* nodes = filter.GetINodeMap();
  EXPECT_EQ(GenApi::CIntegerPtr(nodes->GetNode("SizeTSize"))->GetValue(), 8);
  const GenApi::CEnumerationPtr selector = nodes->GetNode("ColorTransformationValueSelector");
  const GenApi::CFloatPtr value = nodes->GetNode("ColorTransformationValue");
  const GenApi::CFloatPtr hue = nodes->GetNode("HueCorrection");
  const GenApi::CFloatPtr saturation = nodes->GetNode("SaturationCorrection");
  const GenApi::CBooleanPtr enable = nodes->GetNode("ColorTransformationEnable");

  const char* names[] = {"Gain00", "Gain01",  "Gain02", "Offset0", "Gain10", "Gain11",
                         "Gain12", "Offset1", "Gain20", "Gain21",  "Gain22", "Offset2"};
  for (unsigned i = 0; i < 12; ++i) {
    selector->FromString(names[i]);
    EXPECT_EQ(value->GetValue(), kIdentity[i]) << names[i];
    const double limit = i % 4 == 3 ? 65535 : 16;
    EXPECT_EQ(value->GetMin(), -limit) << names[i];
    EXPECT_EQ(value->GetMax(), limit) << names[i];
    value->SetValue(-1.5 - i);
    EXPECT_EQ(filter.GetColorTransformationValue(static_cast<Selector>(i)), -1.5 - i);
    filter.SetColorTransformationValue(static_cast<Selector>(i), 2.25);
    EXPECT_EQ(value->GetValue(), 2.25);
    EXPECT_THROW(value->SetValue(limit + 1), GenICam::OutOfRangeException);
  }

  EXPECT_EQ(hue->GetMin(), -180);
  EXPECT_EQ(hue->GetMax(), 180);
  EXPECT_EQ(saturation->GetMin(), 0);
  EXPECT_EQ(saturation->GetMax(), 4);
  hue->SetValue(-30);
  saturation->SetValue(2);
  enable->SetValue(true);
  EXPECT_EQ(filter.GetHueCorrection(), -30);
  EXPECT_EQ(filter.GetSaturationCorrection(), 2);
  EXPECT_TRUE(filter.GetColorTransformationEnable());
  filter.SetHueCorrection(45);
  filter.SetSaturationCorrection(0.5);
  filter.SetColorTransformationEnable(false);
  EXPECT_EQ(hue->GetValue(), 45);
  EXPECT_EQ(saturation->GetValue(), 0.5);
  EXPECT_FALSE(enable->GetValue());
}

}  // namespace
}  // namespace QvApi
