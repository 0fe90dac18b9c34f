// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ChromaSuppression.h"

#include <gtest/gtest.h>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ChromaSuppressionScalar.h"

namespace QvApi::Kernels {
namespace {

/// Thresholds and strengths, in the order of the structure.
const ChromaSuppression kSettings[] = {{90, 3, 170, 2},
                                       {255, 255, 0, 255},
                                       {128, 1, 128, 1},
                                       {200, 7, 40, 5},
                                       {1, 1, 254, 1},
                                       {0, 0, 255, 0},
                                       {255, 255, 255, 0},
                                       {0, 0, 0, 255},
                                       {255, 1, 255, 1},
                                       {100, 0, 100, 0},
                                       {60000, 2, 255, 0},
                                       {~0U, 3, 7, ~0U},
                                       {3, 1U << 31, 9, 1U << 24},
                                       {300, 218, 255, 0},
                                       {255, 256, 250, 256}};

/// Random samples of all bits: with depths of 10 to 14 most of them lie above it. Each third pixel
/// is dark.
template <class T>
void CompareWithScalar(ChromaSuppression settings, size_t pixels, size_t slack) {
  for (size_t components : {3, 4})
    for (bool blueFirst : {false, true}) {
      settings.components = components;
      settings.blueFirst = blueFirst;
      TwinLine<T> line(pixels * components, slack, static_cast<uint32_t>(2 * pixels + 1));
      line.Shape([&](size_t i, T& sample) {
        if (i / components % 3 == 0) sample = static_cast<T>(sample % 4);
      });
      SuppressChroma(settings, line.vector(), pixels);
      Scalar::SuppressChroma(settings, line.scalar(), pixels);
      line.Check();
    }
}

TEST(ChromaSuppressionTest, EveryLineAgreesWithScalar) {
  ForEachLine([](size_t pixels, size_t slack) {
    for (ChromaSuppression settings : kSettings)
      for (unsigned depth : {8U, 10U, 12U, 14U, 16U}) {
        settings.depth = depth;
        if (depth == 8)
          CompareWithScalar<uint8_t>(settings, pixels, slack);
        else
          CompareWithScalar<uint16_t>(settings, pixels, slack);
      }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
