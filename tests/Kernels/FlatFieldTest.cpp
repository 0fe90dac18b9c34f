// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/FlatField.h"

#include <gtest/gtest.h>

#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/FlatFieldScalar.h"

namespace QvApi::Kernels {
namespace {

/// Samples of all levels, some low and some above full scale.
template <class T>
class Row : public TwinLine<T> {
 public:
  Row(size_t width, size_t slack)
      : TwinLine<T>(width, slack, static_cast<uint32_t>(2 * width + 1)) {
    this->Shape([](size_t x, T& sample) {
      if (x % 5 == 0) sample = static_cast<T>(sample % 512);
      if (x % 7 == 0) sample = static_cast<T>(~T{0});
    });
  }
};

template <class T>
void CompareWithScalar(size_t width, size_t slack, T fullScale) {
  GuardedLine<T> flat(width, 63 - slack);
  GuardedLine<uint16_t> gains(width, 63 - slack);
  flat.FillRandom(static_cast<uint32_t>(width));
  gains.FillRandom(static_cast<uint32_t>(width));
  for (size_t x = 0; x < width; ++x) {  // all gains, the greatest, and those around 1
    uint16_t& gain = gains.samples()[x];
    gain = static_cast<uint16_t>(x % 3 == 0   ? gain % (kMaximumGain + 1)
                                 : x % 3 == 1 ? kMaximumGain
                                              : 120 + gain % 16);
  }
  Row<T> multiplied(width, slack);
  MultiplyGainRow(multiplied.vector(), gains.data(), width, fullScale);
  Scalar::MultiplyGainRow(multiplied.scalar(), gains.data(), width, fullScale);
  multiplied.Check();
  for (FlatFieldTargets targets :
       {FlatFieldTargets{100, 200}, FlatFieldTargets{1, fullScale}, FlatFieldTargets{300, 65535},
        FlatFieldTargets{70000, 131000}, FlatFieldTargets{0xFFFFFFFF, 0}}) {
    Row<T> added(width, slack);
    AddDifferenceRow(added.vector(), flat.data(), width, targets, fullScale);
    Scalar::AddDifferenceRow(added.scalar(), flat.data(), width, targets, fullScale);
    added.Check();
  }
}

TEST(FlatFieldTest, EveryLineAgreesWithScalar) {
  ForEachLine([](size_t width, size_t slack) {
    CompareWithScalar<uint8_t>(width, slack, 255);
    for (uint16_t fullScale : std::vector<uint16_t>{1023, 4095, 16383, 65535})
      CompareWithScalar<uint16_t>(width, slack, fullScale);
  });
}

}  // namespace
}  // namespace QvApi::Kernels
