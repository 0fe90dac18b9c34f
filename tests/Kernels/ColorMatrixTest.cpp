// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColorMatrix.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ColorMatrixScalar.h"

namespace QvApi::Kernels {
namespace {

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
void CompareWithScalar(const std::vector<int32_t>& parts, unsigned bits, size_t pixels,
                       size_t slack) {
  const ColorMatrix matrix(parts.data(), bits);
  for (size_t step : {3, 4}) {
    TwinLine<T> line(pixels * step, slack, static_cast<uint32_t>(2 * pixels + 1));
    TransformColors(matrix, line.vector(), step, pixels);
    Scalar::TransformColors(matrix, line.scalar(), step, pixels);
    line.Check();
  }
}

TEST(ColorMatrixTest, EveryLineAgreesWithScalar) {
  for (const Gains& gains : kGains) {
    SCOPED_TRACE(&gains - kGains);
    const std::vector<int32_t> bytes = MakeParts(gains, 8), words = MakeParts(gains, 11);
    ForEachLine([&](size_t pixels, size_t slack) {
      CompareWithScalar<uint8_t>(bytes, 8, pixels, slack);
      CompareWithScalar<uint16_t>(words, 11, pixels, slack);
    });
    const ColorMatrix matrix(bytes.data(), 8);
    EXPECT_EQ(matrix.linesAreExact, gains.form == Form::Exact);
    EXPECT_EQ(matrix.hasLines, gains.form <= Form::Lines);
    EXPECT_EQ(matrix.sumsFitWords, gains.form <= Form::Words);
  }
}

TEST(ColorMatrixTest, AnyTablesAgreeWithScalar) {
  std::mt19937 random(2);
  ForEachTarget([&](const std::string&) {
    for (int shift = 0; shift < 32; ++shift) {
      std::vector<int32_t> parts(3 * 256 * 4);
      for (int32_t& part : parts) part = static_cast<int32_t>(random()) >> shift;
      CompareWithScalar<uint8_t>(parts, 8, 200, 0);
      CompareWithScalar<uint16_t>(parts, 8, 200, 0);
    }
    for (size_t code : {0, 1, 128, 254, 255})  // one entry beside a line
      for (int change : {-2, -1, 1, 2}) {
        std::vector<int32_t> parts = MakeParts(kGains[1], 8);
        parts[4 * (256 + code) + 1] += change;
        CompareWithScalar<uint8_t>(parts, 8, 2000, 0);
      }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
