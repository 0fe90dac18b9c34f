// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/BayerToMono.h"

#include <gmock/gmock.h>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/BayerToMonoScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
void CompareWithScalar(size_t width, size_t slack, int phase) {
  SCOPED_TRACE("phase " + std::to_string(phase));
  TwinLine<T> row(width, slack, 1), nextRow(width, slack, 2), grey(width, slack, 3);
  BayerRowToMono(row.vector(), nextRow.vector(), grey.vector(), width, phase);
  Scalar::BayerRowToMono(row.scalar(), nextRow.scalar(), grey.scalar(), width, phase);
  grey.Check();
}

TEST(BayerToMono, AgreesWithScalar) {
  ForEachLine([](size_t width, size_t slack) {
    for (int phase : {kPhaseRG, kPhaseGR, kPhaseGB, kPhaseBG}) {
      if (width == 0) continue;
      CompareWithScalar<uint8_t>(width, slack, phase);
      CompareWithScalar<uint16_t>(width, slack, phase);
    }
  });
}

TEST(BayerToMono, UnknownPhaseWritesNothing) {
  const uint8_t row[4] = {9, 9, 9, 9};
  uint8_t mono[4] = {};
  for (int phase : {0, 1, 6, -1}) BayerRowToMono(row, row, mono, 4, phase);
  EXPECT_THAT(mono, ::testing::Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
