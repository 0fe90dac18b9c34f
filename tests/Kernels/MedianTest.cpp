// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Median.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/MedianScalar.h"

namespace QvApi::Kernels {
namespace {

/// A row around which `above` and `below` rows exist.
template <class T>
void CompareWithScalar(size_t width, size_t slack, size_t above, size_t below) {
  std::vector<std::unique_ptr<GuardedLine<T>>> rows;
  MedianWindow<T> window{};
  for (size_t i = 2 - above; i <= 2 + below; ++i) {
    rows.push_back(std::make_unique<GuardedLine<T>>(width, slack));
    rows.back()->FillRandom(static_cast<uint32_t>(width * 5 + i));
    window[i] = rows.back()->data();
  }
  for (MedianSites sites : {MedianSites::Mono, MedianSites::GreenAtEven, MedianSites::GreenAtOdd}) {
    TwinLine<T> destination(width, slack, 3);
    MedianRow(window, destination.vector(), width, sites);
    Scalar::MedianRow(window, destination.scalar(), width, sites, 0, width);
    destination.Check();
  }
}

TEST(MedianTest, EveryLineAgreesWithScalar) {
  ForEachLine([](size_t width, size_t slack) {
    const std::pair<size_t, size_t> kRows[] = {{2, 2}, {width % 3, width / 3 % 3}};
    for (auto [above, below] : kRows) {
      CompareWithScalar<uint8_t>(width, slack, above, below);
      CompareWithScalar<uint16_t>(width, slack, above, below);
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
