// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ColorToBayer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

struct NamedPhase {
  int phase;
  std::string colours;
};
const NamedPhase kPhases[] = {
    {kPhaseRG, "RG"}, {kPhaseGR, "GR"}, {kPhaseGB, "GB"}, {kPhaseBG, "BG"}};

template <class T>
void CompareWithReference(size_t width, size_t slack) {
  for (const NamedPhase& p : kPhases) {
    for (unsigned components : {3u, 4u}) {
      for (bool isBGR : {false, true}) {
        SCOPED_TRACE(p.colours + ", components " + std::to_string(components) + ", width " +
                     std::to_string(width));
        GuardedLine<T> source(width * components, slack), destination(width, 63 - slack);
        source.FillRandom(static_cast<uint32_t>(width));
        std::vector<T> expected;
        for (size_t x = 0; x < width; ++x) {
          const size_t component = (isBGR ? std::string("BGR") : "RGB").find(p.colours[x % 2]);
          expected.push_back(source.samples()[x * components + component]);
        }

        ColorRowToBayer(source.data(), destination.data(), width, {components, isBGR}, p.phase);

        ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
        ASSERT_TRUE(destination.SurroundingsIntact());
      }
    }
  }
}

template <class T>
class ColorToBayerTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(ColorToBayerTest, SampleTypes);

TYPED_TEST(ColorToBayerTest, EveryWidthAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t width = 0; width <= 200; ++width) {
      CompareWithReference<TypeParam>(width, 0);
      CompareWithReference<TypeParam>(width, 63);  // the destination ends at the page
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(ColorToBayerTest, EveryAlignmentAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      CompareWithReference<TypeParam>(140 + slack % 2, slack);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TEST(ColorToBayerByHand, PhaseNamesTheComponents) {
  const uint8_t bgra[8] = {1, 2, 3, 99, 4, 5, 6, 99};
  const auto sample = [&](bool isBGR, int phase) {
    std::vector<uint8_t> mosaic(2);
    ColorRowToBayer(bgra, mosaic.data(), 2, {4, isBGR}, phase);
    return mosaic;
  };
  ForEachTarget([&](const std::string&) {
    EXPECT_THAT(sample(true, kPhaseRG), ElementsAre(3, 5));
    EXPECT_THAT(sample(true, kPhaseGB), ElementsAre(2, 4));
    EXPECT_THAT(sample(false, kPhaseRG), ElementsAre(1, 5));
    EXPECT_THAT(sample(false, kPhaseBG), ElementsAre(3, 5));
    EXPECT_THAT(sample(false, kPhaseGR), ElementsAre(2, 4));
  });
}

TEST(ColorToBayerByHand, UnknownPhaseOrLayoutWritesNothing) {
  const uint8_t pixels[10] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
  uint8_t mosaic[2] = {};
  ColorRowToBayer(pixels, mosaic, 2, {3, true}, 1);
  ColorRowToBayer(pixels, mosaic, 2, {3, true}, 6);
  ColorRowToBayer(pixels, mosaic, 2, {5, true}, kPhaseRG);
  EXPECT_THAT(mosaic, Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
