// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColorToBayer.h"

#include <gmock/gmock.h>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ColorToBayerScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
void CompareWithScalar(size_t width, size_t slack, const ColorLayout& layout, int phase) {
  SCOPED_TRACE("phase " + std::to_string(phase) + ", components " +
               std::to_string(layout.components) + (layout.isBGR ? " BGR" : " RGB"));
  TwinLine<T> pixels(width * layout.components, slack, 1), mosaic(width, slack, 3);
  ColorRowToBayer(pixels.vector(), mosaic.vector(), width, layout, phase);
  Scalar::ColorRowToBayer(pixels.scalar(), mosaic.scalar(), width, layout, phase);
  mosaic.Check();
}

TEST(ColorToBayer, AgreesWithScalar) {
  ForEachLine([](size_t width, size_t slack) {
    for (int phase : {kPhaseRG, kPhaseGR, kPhaseGB, kPhaseBG})
      for (unsigned components : {3u, 4u})
        for (bool isBGR : {false, true}) {
          CompareWithScalar<uint8_t>(width, slack, {components, isBGR}, phase);
          CompareWithScalar<uint16_t>(width, slack, {components, isBGR}, phase);
        }
  });
}

TEST(ColorToBayer, UnknownPhaseOrLayoutWritesNothing) {
  const uint8_t pixels[10] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
  uint8_t mosaic[2] = {};
  ColorRowToBayer(pixels, mosaic, 2, {3, true}, 1);
  ColorRowToBayer(pixels, mosaic, 2, {3, true}, 6);
  ColorRowToBayer(pixels, mosaic, 2, {5, true}, kPhaseRG);
  EXPECT_THAT(mosaic, ::testing::Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
