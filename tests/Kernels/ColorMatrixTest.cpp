// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColorMatrix.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ColorMatrixScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

/// Which of the forms for 8 bits serves.
enum class Form { Exact, Lines, Words, Parts };

struct Gains {
  Form form;
  double gain[9];  ///< Of component c in result r at 3 * r + c.
  double offset[3] = {0, 0, 0};
  int32_t step = 0;  ///< Added to all parts of the second half of the first component.
};

const Gains kGains[] = {
    {Form::Exact, {1, 0, 0, 0, 1, 0, 0, 0, 1}},
    {Form::Exact, {0.299, 0.587, 0.114, -0.168736, -0.331264, 0.5, 0.5, -0.418688, -0.081312}},
    {Form::Exact,
     {1.73205, -0.41421, -0.31416, -0.27183, 1.61803, -0.34641, 0.10101, -0.57721, 1.5}},
    {Form::Exact, {16, 0, -16, -16, 16, 0, 3.99609, -2.5, 0}, {1000, -2000, 30}},
    {Form::Lines, {0.1, 0.7, 0.2, 1.27, -0.3, 0.03, -0.6, 0.6, 1.1}},
    {Form::Lines, {-0.5, 1, 0.25, 2, -1.5, 0.5, 1, 1, -1}, {20, -60, 0.9}},
    {Form::Words, {1, 0, 0.25, 0, 1, 0, 0, 0, 1}, {20.25, 0, 0}},
    {Form::Words, {0.5, -0.5, 1, 1, 2, 0.1, 0.1, 0, 0}, {0, -300.5, 0}, 7},
    {Form::Parts, {1, 1, 1, -1, -1, -1, 0.5, 0, 0}, {65535, -65535, 40000}},
    {Form::Parts, {1e9, 0.5, 0, -1e9, 0, 1, 1e6, 1e6, 2e6}, {5, 6, 7}},
};

/// Sums of the gains, the offsets being those of the last component.
std::vector<int32_t> MakeParts(const Gains& gains, unsigned bits) {
  std::vector<int32_t> parts;
  for (size_t c = 0; c < 3; ++c) {
    double sum[3] = {};
    for (size_t code = 0; code < size_t{1} << bits; ++code) {
      for (size_t r = 0; r < 3; ++r) {
        const double value = (sum[r] += gains.gain[3 * r + c]) + (c == 2 ? gains.offset[r] : 0);
        parts.push_back(static_cast<int32_t>(std::clamp(value, -2147483648.0, 2147483647.0)));
        if (c == 0 && code >= 128) parts.back() += gains.step;
      }
      parts.push_back(static_cast<int32_t>(0xDEADBEEF));
    }
  }
  return parts;
}

template <class T>
void CompareWithScalar(const ColorMatrix& matrix, size_t pixels, size_t slack) {
  for (size_t step : {3, 4}) {
    GuardedLine<T> line(pixels * step, slack);
    line.FillRandom(static_cast<uint32_t>(pixels + slack));
    std::vector<T> expected(line.samples().begin(), line.samples().end());
    Scalar::TransformColors(matrix, expected.data(), step, pixels);

    TransformColors(matrix, line.data(), step, pixels);

    ASSERT_THAT(line.samples(), ElementsAreArray(expected)) << pixels << " pixels of " << step;
    ASSERT_TRUE(line.SurroundingsIntact());
  }
}

template <class T>
void CompareAll(unsigned bits) {
  for (const Gains& gains : kGains) {
    SCOPED_TRACE(&gains - kGains);
    const std::vector<int32_t> parts = MakeParts(gains, bits);
    const ColorMatrix matrix(parts.data(), bits);
    for (size_t pixels = 0; pixels <= 140; ++pixels) CompareWithScalar<T>(matrix, pixels, 0);
    for (size_t slack = 1; slack < 64; ++slack) CompareWithScalar<T>(matrix, 70, slack);
    if (::testing::Test::HasFatalFailure()) return;
  }
}

TEST(ColorMatrixTest, EveryWidthAndAlignmentAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    CompareAll<uint8_t>(8);
    CompareAll<uint16_t>(10);
    CompareAll<uint16_t>(12);
  });
}

TEST(ColorMatrixTest, EveryCodeOfEveryComponentAgreesWithScalar) {
  std::vector<uint8_t> all;
  std::mt19937 random(1);
  for (unsigned c = 0; c < 3; ++c)
    for (unsigned code = 0; code < 256 * 16; ++code)
      for (unsigned i = 0; i < 3; ++i)
        all.push_back(static_cast<uint8_t>(i == c ? code : random()));
  ForEachTarget([&](const std::string&) {
    for (const Gains& gains : kGains) {
      const std::vector<int32_t> parts = MakeParts(gains, 8);
      const ColorMatrix matrix(parts.data(), 8);
      std::vector<uint8_t> expected = all, made = all;
      Scalar::TransformColors(matrix, expected.data(), 3, all.size() / 3);
      TransformColors(matrix, made.data(), 3, all.size() / 3);
      ASSERT_EQ(made, expected) << &gains - kGains;
    }
  });
}

TEST(ColorMatrixTest, AnyTablesAgreeWithScalar) {
  std::mt19937 random(2);
  ForEachTarget([&](const std::string&) {
    for (int shift = 0; shift < 32; ++shift) {
      std::vector<int32_t> parts(3 * 256 * 4);
      for (int32_t& part : parts) part = static_cast<int32_t>(random()) >> shift;
      const ColorMatrix matrix(parts.data(), 8);
      CompareWithScalar<uint8_t>(matrix, 200, 0);
      CompareWithScalar<uint16_t>(matrix, 200, 0);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TEST(ColorMatrixTest, TakesTheShortFormsThatHold) {
  for (const Gains& gains : kGains) {
    const std::vector<int32_t> parts = MakeParts(gains, 8);
    const ColorMatrix matrix(parts.data(), 8);
    EXPECT_EQ(matrix.linesAreExact, gains.form == Form::Exact) << &gains - kGains;
    EXPECT_EQ(matrix.hasLines, gains.form <= Form::Lines) << &gains - kGains;
    EXPECT_EQ(matrix.sumsFitWords, gains.form <= Form::Words) << &gains - kGains;
  }
}

TEST(ColorMatrixTest, OneEntryBesideTheLineCounts) {
  ForEachTarget([](const std::string&) {
    for (size_t code : {0, 1, 128, 254, 255})
      for (int change : {-2, -1, 1, 2}) {
        std::vector<int32_t> parts = MakeParts(kGains[1], 8);
        parts[4 * (256 + code) + 1] += change;
        const ColorMatrix matrix(parts.data(), 8);
        std::vector<uint8_t> expected;
        for (unsigned green = 0; green < 256; ++green)
          for (unsigned sample : {7u, green, 255u})
            expected.push_back(static_cast<uint8_t>(sample));
        std::vector<uint8_t> made = expected;
        Scalar::TransformColors(matrix, expected.data(), 3, 256);
        TransformColors(matrix, made.data(), 3, 256);
        EXPECT_EQ(made, expected) << code << " by " << change;
      }
  });
}

TEST(ColorMatrixTest, SumsAreClippedByHand) {
  std::vector<int32_t> parts(3 * 256 * 4);
  const auto sumOf = [&](int32_t a, int32_t b, int32_t c) {
    for (size_t r = 0; r < 3; ++r) parts[r] = a, parts[4 * 256 + r] = b, parts[8 * 256 + r] = c;
    const ColorMatrix matrix(parts.data(), 8);
    uint8_t pixel[4] = {0, 0, 0, 99};
    TransformColors(matrix, pixel, 4, 1);
    EXPECT_EQ(pixel[3], 99);
    return unsigned{pixel[1]};
  };
  ForEachTarget([&](const std::string&) {
    EXPECT_EQ(sumOf(100, 200, -45), 255U);
    EXPECT_EQ(sumOf(100, 200, -44), 255U);
    EXPECT_EQ(sumOf(100, 200, -46), 254U);
    EXPECT_EQ(sumOf(100, -200, 99), 0U);
    EXPECT_EQ(sumOf(0x0FFFFFFF, 0, 0), 255U);
    EXPECT_EQ(sumOf(0x0FFFFFFF, 1, 0), 0U);
    EXPECT_EQ(sumOf(INT32_MAX, INT32_MAX, 9), 7U) << "2^32 + 7";
    EXPECT_EQ(sumOf(INT32_MIN, INT32_MIN, 300), 255U);
    EXPECT_EQ(sumOf(32767, 1, 0), 255U);
    EXPECT_EQ(sumOf(-32768, -1, 0), 0U);
    EXPECT_EQ(sumOf(-32768, 32767, 11), 10U);
  });
}

}  // namespace
}  // namespace QvApi::Kernels
