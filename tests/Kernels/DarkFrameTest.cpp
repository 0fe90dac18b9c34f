// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/DarkFrame.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/DarkFrameScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
constexpr T kTop = static_cast<T>(~T{0});

template <class T>
void CompareSubtraction(size_t width, size_t slack, T limit) {
  TwinLine<T> row(width, slack, static_cast<uint32_t>(2 * width + 1));
  GuardedLine<T> dark(width, 63 - slack);
  GuardedLine<uint8_t> marks(DarkMarkBytes(width), slack);
  std::vector<uint8_t> expectedMarks(DarkMarkBytes(width));
  dark.FillRandom(static_cast<uint32_t>(width + 1000));
  for (size_t x = 0; x < width; x += 2) dark.samples()[x] = static_cast<T>(x % 5);
  row.Shape([](size_t x, T& sample) {
    if (x % 3 == 0) sample = static_cast<T>(kTop<T> - x % 7);
  });
  EXPECT_EQ(SubtractDarkRow(row.vector(), dark.data(), width, limit, marks.data()),
            Scalar::SubtractDarkRow(row.scalar(), dark.data(), width, limit, expectedMarks.data()));
  row.Check();
  for (size_t x = 0; x < width; ++x)
    ASSERT_EQ(marks.samples()[x / 8] >> x % 8 & 1, expectedMarks[x / 8] >> x % 8 & 1) << x;
  ASSERT_TRUE(marks.SurroundingsIntact());
}

template <class T>
void CompareRepair(size_t width, size_t slack, MedianSites sites, unsigned oneIn) {
  std::vector<std::unique_ptr<TwinLine<T>>> rows;
  MedianWindow<T> window{};
  for (uint32_t i = 0; i < 5; ++i) {
    rows.push_back(std::make_unique<TwinLine<T>>(width, slack, i + 1));
    window[i] = rows[i]->vector();
  }
  MedianWindow<T> scalarWindow = window;
  scalarWindow[2] = rows[2]->scalar();
  std::minstd_rand random(static_cast<unsigned>(width));
  std::vector<uint8_t> marks(DarkMarkBytes(width));
  for (size_t x = 0; x < width; ++x)
    if (random() / 64 % oneIn == 0) marks[x / 8] = static_cast<uint8_t>(marks[x / 8] | 1U << x % 8);
  const DarkRepairRange range = DarkRepairs(sites, width);
  RepairDarkRow(window, rows[2]->vector(), width, sites, marks.data());
  Scalar::RepairDarkRow(scalarWindow, rows[2]->scalar(), width, sites, marks.data(), range.begin,
                        range.end);
  rows[2]->Check();
}

template <class T>
void CompareWithScalar(size_t width, size_t slack) {
  for (T limit : {T{0}, T{3}, static_cast<T>(kTop<T> - kTop<T> / 128 - 1), kTop<T>})
    CompareSubtraction<T>(width, slack, limit);
  for (MedianSites sites : {MedianSites::Mono, MedianSites::GreenAtEven, MedianSites::GreenAtOdd})
    for (unsigned oneIn : {1U, 2U, 40U}) CompareRepair<T>(width, slack, sites, oneIn);
}

TEST(DarkFrameTest, EveryLineAgreesWithScalar) {
  ForEachLine([](size_t width, size_t slack) {
    CompareWithScalar<uint8_t>(width, slack);
    CompareWithScalar<uint16_t>(width, slack);
  });
}

}  // namespace
}  // namespace QvApi::Kernels
