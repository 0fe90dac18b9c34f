// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColumnSums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ColumnSumsScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
class ColumnSumsTest : public ::testing::Test {
 protected:
  /// Lines with `gap` samples between them, the last one ending `slack` samples before the end.
  static void CompareWithScalar(size_t count, size_t lines, size_t gap, size_t slack, bool full) {
    const size_t step = count + gap;
    GuardedLine<T> image((lines - 1) * step + count, slack);
    image.FillRandom(static_cast<uint32_t>(step));
    if (full) std::ranges::fill(image.samples(), std::numeric_limits<T>::max());
    GuardedLine<uint32_t> sums(count, slack), expected(count, 0);
    for (auto* each : {&sums, &expected}) each->FillRandom(7);  // sums of before, which may wrap
    const auto pitch = static_cast<ptrdiff_t>(step * sizeof(T));
    AddToColumns(image.data(), pitch, lines, count, sums.data());
    Scalar::AddToColumns(image.data(), pitch, lines, count, expected.data());
    ASSERT_TRUE(std::ranges::equal(sums.samples(), expected.samples()))
        << count << " columns, " << lines << " lines, slack " << slack;
    ASSERT_TRUE(sums.SurroundingsIntact());
  }
};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(ColumnSumsTest, SampleTypes);

TYPED_TEST(ColumnSumsTest, AgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t lines = 1; lines <= kMaxColumnLines; ++lines)
      for (bool full : {false, true}) {
        for (size_t count = 1; count <= 140; ++count)
          TestFixture::CompareWithScalar(count, lines, count % 5, 0, full);
        for (size_t slack = 1; slack < 64; ++slack)
          TestFixture::CompareWithScalar(100, lines, 3, slack, full);
      }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
