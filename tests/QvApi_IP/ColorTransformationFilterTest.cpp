// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvColorTransformationFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvColorTransformationFilter;
using Matrix = CMatrixTable::Matrix;

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Settings {
  Matrix matrix = kIdentity;
  double hue = 0, saturation = 1;
};

void Apply(Filter& filter, const Settings& s) {
  WriteRegister(filter, 0x10, s.hue);
  WriteRegister(filter, 0x18, s.saturation);
  WriteRegister(filter, 0x20, 1U);
  for (std::uint64_t i = 0; i < 12; ++i) {
    WriteRegister(filter, 0x28, i);
    WriteRegister(filter, 0x30, s.matrix[i]);
  }
}

/// One more gain for each code, and the offset of a row in its first column; sums of 32 bits.
class Reference {
 public:
  Reference(const Settings& s, PixelFormat format)
      : m_top((1U << DepthOf(format)) - 1), m_red(NameOf(format).find('R')) {
    const Matrix mixed = CMatrixTable::GetMixedMatrix(s.matrix, s.hue, s.saturation);
    for (unsigned row = 0; row < 3; ++row)
      for (unsigned column = 0; column < 3; ++column) {
        double sum = 0;
        for (unsigned code = 0; code <= m_top; ++code) {
          sum += mixed[4 * row + column];
          const double part = column == 0 ? sum + s.matrix[4 * row + 3] : sum;
          m_parts[row][column].push_back(
              std::isnan(part)
                  ? 0
                  : static_cast<std::int32_t>(std::clamp<double>(part, INT32_MIN, INT32_MAX)));
        }
      }
  }

  void operator()(TestImage& image) const {
    const std::size_t step = Info(image.GetImagePixelFormat()).GetComponentCount();
    const std::size_t at[] = {m_red, 1, 2 - m_red};
    for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
      for (std::size_t i = 0; i < image.GetImageWidth() * step; i += step) {
        std::uint32_t sums[3] = {};
        for (unsigned row = 0; row < 3; ++row)
          for (unsigned column = 0; column < 3; ++column)
            sums[row] += static_cast<std::uint32_t>(
                m_parts[row][column][SampleAt(image, i + at[column], y) & m_top]);
        for (unsigned row = 0; row < 3; ++row)  // from 0x10000000 on they count as negative
          SetSample(image, i + at[row], y, sums[row] >> 28 ? 0 : std::min(sums[row], m_top));
      }
  }

 private:
  unsigned m_top;
  std::size_t m_red;
  std::vector<std::int32_t> m_parts[3][3];
};

TEST(ColorTransformationFilter, TransformsEveryFormatAndNothingBeside) {
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
    all.push_back({.hue = in(-180, 180), .saturation = in(0, 4)});
    for (unsigned k = 0; k < 12; ++k) all.back().matrix[k] = k % 4 == 3 ? in(-300, 300) : in(-2, 2);
  }
  // What only registers can hold.
  for (double wild : {kInfinity, -kInfinity, std::nan(""), 1e300, -1e9, 3e6}) {
    all.push_back({{wild, 0, 0, wild, 0, 1, wild, 0, 0, 0, 1, -wild}});
    all.push_back({.hue = wild, .saturation = 1});
    all.push_back({.hue = 30, .saturation = wild});
  }
  Filter filter;
  for (const Settings& s : all) {
    SCOPED_TRACE(&s - all.data());
    Apply(filter, s);
    for (PixelFormat format : ColorFormats()) CompareOnShapes(filter, format, Reference(s, format));
  }
}

TEST(ColorTransformationFilter, PixelsWorkedByHand) {
  const Matrix tenth{0.1, 0, 0, 0, 0.5, 0, 0, 0, 0, 0, 1, 0};
  const struct {
    PixelFormat format;
    Settings settings;
    std::array<unsigned, 3> bgr, after;
  } kCases[] = {
      {BGR8, {}, {0, 100, 255}, {1, 101, 255}},
      {BGR12, {}, {0, 4094, 4095}, {1, 4095, 4095}},
      {BGR10, {}, {0xFFFF, 0x0400, 5}, {1023, 1, 6}},
      // Ten times 0.1, added up, is less than one; ten times 0.5 is five.
      {BGR8, {tenth}, {9, 77, 9}, {10, 5, 0}},
      {BGR16, {tenth}, {9, 77, 9}, {10, 5, 0}},
      // Red's product and the offset are cut off together, 3 * 0.5 - 0.75 = 0.75 and 1.5 + 0.5 = 2,
      // the others alone.
      {BGR8, {{0.5, 0.5, 0, -0.75, 0.5, 0.5, 0, 0.5, 0, 0, 1, -20}}, {30, 2, 2}, {11, 3, 1}},
      // Each product is cut off towards 0: 3 * 0.5 = 1.5 and -1.5 and 5 * 0.5 = 2.5 give 1 - 1 + 2.
      {BGR8, {{0.5, -0.5, 0.5, 0, 0, 1, 0, 0, -1, 0, 0, 0}}, {4, 2, 2}, {0, 3, 2}},
      // At saturation 0 all are 0.2989 R + 0.5866 G + 0.1145 B: 29 + 29 + 22.
      {BGR8, {.saturation = 0}, {199, 49, 99}, {80, 80, 80}},
  };
  for (const auto& c : kCases) {
    Filter filter;
    Apply(filter, c.settings);
    TestImage image(1, 1, c.format);
    for (unsigned i = 0; i < 3; ++i) SetSample(image, i, 0, c.bgr[i]);
    filter.Filter(&image);
    for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(SampleAt(image, i, 0), c.after[i]) << &c - kCases;
  }
}

/// Luminance stays, and what red and blue differ from it turns as a vector and is scaled. Gains
/// come before, offsets are as they were.
TEST(ColorTransformationFilter, MixedMatrixTurnsDifferencesFromLuminance) {
  const double red = 0.2989, green = 0.5866, blue = 0.1145;
  const Matrix gains{0, 1, 0.5, 5, 0.25, 0, 2, -6, 3, -1, 0, 7};
  for (double hue : {-180.0, -60.0, 0.0, 17.5, 90.0, 180.0})
    for (double saturation : {0.0, 0.5, 1.0, 4.0}) {
      const Matrix mixed = CMatrixTable::GetMixedMatrix(gains, hue, saturation);
      const double c = std::cos(hue * M_PI / 180), s = std::sin(hue * M_PI / 180);
      for (unsigned offset : {3, 7, 11}) EXPECT_EQ(mixed[offset], gains[offset]);
      for (unsigned i = 0; i < 3; ++i) {
        const double y = red * gains[i] + green * gains[4 + i] + blue * gains[8 + i];
        const double u = gains[i] - y, v = gains[8 + i] - y;
        const double r = y + saturation * (c * u - s * v), b = y + saturation * (s * u + c * v);
        EXPECT_NEAR(mixed[i], r, 1e-6) << hue;
        EXPECT_NEAR(mixed[4 + i], (y - red * r - blue * b) / green, 1e-6) << hue;
        EXPECT_NEAR(mixed[8 + i], b, 1e-6) << hue;
      }
    }
  EXPECT_EQ(CMatrixTable::GetMixedMatrix(kIdentity, 0, 1), kIdentity);
}

TEST(ColorTransformationFilter, OtherColourPassesAndGreyIsRefusedWhileEnabled) {
  Filter filter;
  for (const PixelFormatRow& row : kPixelFormats) {
    TestImage image(8, 8, row.format);
    const auto before = image.Randomize(5).All();
    EXPECT_EQ(filter.Filter(&image), &image) << row.name;
    EXPECT_EQ(image.All(), before) << row.name;
  }
  Apply(filter, {.hue = 20});
  ExpectSupportsOnly(filter, ColorFormats(), [](const PixelFormatRow& r) { return r.IsColor(); });
}

TEST(ColorTransformationFilter, Settings) {
  Filter filter;
  ExpectSwitch(filter, "ColorTransformationEnable", 0x20, &Filter::GetColorTransformationEnable,
               &Filter::SetColorTransformationEnable);
  ExpectNumber(filter, "HueCorrection", 0x10, 0.0, -180.0, 180.0, &Filter::GetHueCorrection,
               &Filter::SetHueCorrection);
  ExpectNumber(filter, "SaturationCorrection", 0x18, 1.0, 0.0, 4.0,
               &Filter::GetSaturationCorrection, &Filter::SetSaturationCorrection);
  const GenApi::CEnumerationPtr node =
      filter.GetINodeMap()->GetNode("ColorTransformationValueSelector");
  const char* names[] = {"Gain00", "Gain01",  "Gain02", "Offset0", "Gain10", "Gain11",
                         "Gain12", "Offset1", "Gain20", "Gain21",  "Gain22", "Offset2"};
  for (unsigned i = 0; i < 12; ++i) {
    node->FromString(names[i]);
    const auto selector = static_cast<EQvColorTransformationValueSelector_t>(i);
    const double limit = i % 4 == 3 ? 65535 : 16;
    ExpectNumber(filter, "ColorTransformationValue", 0x30, kIdentity[i], -limit, limit,
                 &Filter::GetColorTransformationValue, &Filter::SetColorTransformationValue,
                 selector);
  }
  ExpectDescription(filter, "Color Transformation", "ColorTransformationControl", GenApi::Beginner,
                    {"ColorTransformationEnable", "ColorTransformationValueSelector",
                     "ColorTransformationValue", "HueCorrection", "SaturationCorrection"});
  for (std::uint64_t selector : {std::uint64_t{12}, std::uint64_t{1} << 32})
    ExpectNothingSelected(filter, 0x28, selector,
                          "eCTVS = " + std::to_string(selector) + " must be smaller than Max = 12",
                          {0x30});
}

}  // namespace
}  // namespace QvApi
