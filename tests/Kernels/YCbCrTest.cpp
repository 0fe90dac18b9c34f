// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/YCbCr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/BayerPhase.h"
#include "QvApi_IP/Kernels/YCbCrScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAreArray;

constexpr YCbCrMatrix kMatrices[] = {YCbCrMatrix::Full, YCbCrMatrix::Bt601, YCbCrMatrix::Bt709};

// --- The tables
// -----------------------------------------------------------------------------------

TEST(YCbCrTables, AreTheProductsRoundedEachByItself) {
  const double kFactors[3][9] = {
      {0.299, 0.587, 0.114, -0.16874, -0.33126, 0.5, 0.5, -0.41869, -0.08131},
      {0.25679, 0.50413, 0.09791, -0.14822, -0.29099, 0.43922, 0.43922, -0.36779, -0.07143},
      {0.18259, 0.61423, 0.06201, -0.10064, -0.33857, 0.43922, 0.43922, -0.39894, -0.04027}};
  const int kOffsets[3][9] = {{0, 0, 0, 0, 0, 128, 128, 0, 0},
                              {0, 0, 16, 0, 0, 128, 0, 0, 128},
                              {0, 0, 16, 0, 0, 128, 0, 0, 128}};
  for (size_t m = 0; m < 3; ++m)
    for (size_t row = 0; row < 9; ++row)
      for (size_t i = 0; i < 256; ++i) {
        const bool isLess = m > 0 && row == 8 && i > 0;
        const double expected = std::round(kFactors[m][row] * static_cast<double>(i) * 4194304.0) +
                                kOffsets[m][row] * 4194304.0 - (isLess ? 1 : 0);
        ASSERT_EQ(RGB2YCrCbTableOf(kMatrices[m])[row][i], expected) << m << " " << row << " " << i;
      }
  const double kBack[3][5] = {{1.0, 1.402, -0.34414, -0.71414, 1.772},
                              {1.16438, 1.59603, -0.39176, -0.81297, 2.01723},
                              {1.16438, 1.79274, -0.21325, -0.53291, 2.11240}};
  for (size_t m = 0; m < 3; ++m)
    for (size_t row = 0; row < 5; ++row)
      for (int i = 0; i < 256; ++i) {
        const int y = m == 0 ? i : std::clamp(i, 16, 235) - 16;
        const int c = (m == 0 ? i : std::clamp(i, 16, 240)) - 128;
        ASSERT_EQ(YCrCbTableOf(kMatrices[m])[row][static_cast<size_t>(i)],
                  std::round(kBack[m][row] * (row == 0 ? y : c) * 4194304.0))
            << m << " " << row << " " << i;
      }
}

/// Somebody else's arithmetic: the definition of the two standards in floating point.
TEST(YCbCrTables, AgreeWithTheStandardsToOneLevel) {
  const double kLuma[3][2] = {{0.299, 0.114}, {0.299, 0.114}, {0.2126, 0.0722}};  // of red, blue
  const uint8_t kLevels[] = {0, 1, 17, 64, 127, 128, 200, 254, 255};
  for (size_t m = 0; m < 3; ++m)
    for (uint8_t r : kLevels)
      for (uint8_t g : kLevels)
        for (uint8_t b : kLevels) {
          const double kr = kLuma[m][0], kb = kLuma[m][1];
          const double y = kr * r + (1 - kr - kb) * g + kb * b;
          const double scaleY = m == 0 ? 1 : 219.0 / 255, scaleC = m == 0 ? 1 : 224.0 / 255;
          const double expected[] = {y * scaleY + (m == 0 ? 0 : 16),
                                     (b - y) / 2 / (1 - kb) * scaleC + 128,
                                     (r - y) / 2 / (1 - kr) * scaleC + 128};
          for (size_t c = 0; c < 3; ++c) {
            const double made = Scalar::ColorToComponent(kMatrices[m], c, r, g, b);
            ASSERT_GT(made, expected[c] - 1.01) << m << c << " " << +r << " " << +g << " " << +b;
            ASSERT_LE(made, expected[c] + 0.01) << m << c << " " << +r << " " << +g << " " << +b;
          }
        }
}

// --- Every colour
// ---------------------------------------------------------------------------------

/// The arithmetic in 16-bit lanes gives exactly what the tables give: for all 2^24 colours.
TEST(YCbCr, EveryColorIsThatOfTheTables) {
  for (YCbCrMatrix matrix : kMatrices) {
    const RGB2YCrCbTable& table = RGB2YCrCbTableOf(matrix);
    const YCbCrLimits limits = LimitsOf(matrix);
    constexpr size_t kCount = 65536;
    std::vector<uint8_t> pixels(3 * kCount), made(3 * kCount), expected(3 * kCount);
    for (size_t red = 0; red < 256; ++red) {
      for (size_t i = 0; i < kCount; ++i) {
        const size_t green = i >> 8, blue = i & 0xFF;
        pixels[3 * i] = static_cast<uint8_t>(red);
        pixels[3 * i + 1] = static_cast<uint8_t>(green);
        pixels[3 * i + 2] = static_cast<uint8_t>(blue);
        for (size_t c = 0; c < 3; ++c) {
          const int sum = (table[3 * c][red] + table[3 * c + 1][green] + table[3 * c + 2][blue]) >>
                          kYCbCrFraction;
          expected[c * kCount + i] = static_cast<uint8_t>(std::clamp<int>(
              sum, c == 0 ? limits.minY : limits.minC, c == 0 ? limits.maxY : limits.maxC));
        }
      }
      PixelsToYCbCr(matrix, {.step = 3, .isBGR = false}, pixels.data(), 1,
                    {made.data(), made.data() + kCount, made.data() + 2 * kCount}, kCount);
      ASSERT_EQ(made, expected) << static_cast<int>(matrix) << " red " << red;
    }
  }
}

TEST(YCbCr, EveryLuminanceAndChrominanceGivesTheColorOfTheTables) {
  for (YCbCrMatrix matrix : kMatrices) {
    constexpr size_t kCount = 65536;
    std::vector<uint8_t> y(kCount), cb(kCount), cr(kCount), made(3 * kCount), expected(3 * kCount);
    for (size_t i = 0; i < kCount; ++i) {
      cb[i] = static_cast<uint8_t>(i >> 8);
      cr[i] = static_cast<uint8_t>(i);
    }
    for (size_t luma = 0; luma < 256; ++luma) {
      std::fill(y.begin(), y.end(), static_cast<uint8_t>(luma));
      const YCbCrPlanes planes{y.data(), cb.data(), cr.data(), 1};
      PlanesToColor(matrix, planes, made.data(), 3, true, kCount);
      Scalar::PlanesToColor(matrix, planes, expected.data(), 3, true, kCount);
      ASSERT_EQ(made, expected) << static_cast<int>(matrix) << " luma " << luma;
    }
  }
}

// --- Every width, on every machine
// ----------------------------------------------------------------

struct Case {
  size_t count, step, group, slack;
  bool isBGR;
};

template <class Check>
void ForEachCase(const std::vector<size_t>& groups, Check check) {
  ForEachTarget([&](const std::string&) {
    for (size_t count = 0; count <= 150; ++count)
      for (size_t step : {3, 4})
        for (size_t group : groups)
          for (bool isBGR : {false, true}) {
            check(Case{count, step, group, count % 5, isBGR});
            if (::testing::Test::HasFatalFailure()) {
              FAIL() << count << " pixels of " << step << ", group " << group;
            }
          }
  });
}

/// Lines of three components with guards. Their bytes are random.
struct Lines {
  Lines(size_t count, size_t group, size_t slack)
      : chroma(group == 0 ? 0 : (count + group - 1) / group),
        luma(count, slack),
        cb(chroma, slack),
        cr(chroma, slack) {
    luma.FillRandom(1);
    cb.FillRandom(2);
    cr.FillRandom(3);
  }
  bool SurroundingsIntact() const {
    return luma.SurroundingsIntact() && cb.SurroundingsIntact() && cr.SurroundingsIntact();
  }
  std::vector<uint8_t> All() {
    std::vector<uint8_t> all;
    for (auto* line : {&luma, &cb, &cr})
      all.insert(all.end(), line->samples().begin(), line->samples().end());
    return all;
  }
  YCbCrComponents Components() { return {luma.data(), cb.data(), cr.data()}; }

  size_t chroma;
  GuardedLine<uint8_t> luma, cb, cr;
};

TEST(YCbCr, PixelsOfEveryWidthAgreeWithScalar) {
  ForEachCase({0, 1, 2, 4}, [](const Case& c) {
    GuardedLine<uint8_t> pixels(c.count * c.step, c.slack);
    pixels.FillRandom(static_cast<uint32_t>(c.count));
    Lines made(c.count, c.group, c.slack), expected(c.count, c.group, c.slack);
    const YCbCrMatrix matrix = kMatrices[c.count % 3];
    const YCbCrSource source{.step = c.step, .isBGR = c.isBGR};
    PixelsToYCbCr(matrix, source, pixels.data(), c.group, made.Components(), c.count);
    Scalar::PixelsToYCbCr(matrix, source, pixels.data(), c.group, expected.Components(), c.count);
    ASSERT_THAT(made.All(), ElementsAreArray(expected.All()));
    ASSERT_TRUE(made.SurroundingsIntact());
  });
}

TEST(YCbCr, PlanesOfEveryWidthAgreeWithScalarAndAlphaStays) {
  ForEachCase({1, 2}, [](const Case& c) {
    Lines lines(c.count, c.group, c.slack);
    const YCbCrPlanes planes{lines.luma.data(), lines.cb.data(), lines.cr.data(), c.group};
    GuardedLine<uint8_t> made(c.count * c.step, c.slack), expected(c.count * c.step, c.slack);
    made.FillRandom(7);
    expected.FillRandom(7);
    const YCbCrMatrix matrix = kMatrices[c.count % 3];
    PlanesToColor(matrix, planes, made.data(), c.step, c.isBGR, c.count);
    Scalar::PlanesToColor(matrix, planes, expected.data(), c.step, c.isBGR, c.count);
    ASSERT_THAT(made.samples(), ElementsAreArray(expected.samples()));
    ASSERT_TRUE(made.SurroundingsIntact());
  });
}

TEST(YCbCr, TilesOfEveryWidthAndPhaseAgreeWithScalar) {
  ForEachTarget([](const std::string&) {
    for (int phase : {kPhaseRG, kPhaseGR, kPhaseGB, kPhaseBG})
      for (size_t tiles = 0; tiles <= 80; ++tiles)
        for (size_t following : {0, 1})
          for (bool hasChroma : {false, true}) {
            SCOPED_TRACE(tiles);
            GuardedLine<uint8_t> row(2 * (tiles + following), 0), next(2 * (tiles + following), 0);
            row.FillRandom(static_cast<uint32_t>(tiles));
            next.FillRandom(static_cast<uint32_t>(tiles) + 1000);
            Lines made(2 * tiles, 2, tiles % 5), expected(2 * tiles, 2, tiles % 5);
            YCbCrComponents to = made.Components(), reference = expected.Components();
            if (!hasChroma) to.cb = reference.cb = nullptr;
            BayerTilesToYCbCr(row.data(), next.data(), phase, to, tiles, following);
            Scalar::BayerTilesToYCbCr(row.data(), next.data(), phase, reference, tiles, following);
            ASSERT_THAT(made.All(), ElementsAreArray(expected.All()));
            ASSERT_TRUE(made.SurroundingsIntact());
          }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
