// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/YCbCrLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/YCbCrLayoutScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

const YCbCrLayout kLayouts[] = {
    {1, 3, {0}, 1, 2},    {1, 3, {1}, 0, 2},          {2, 4, {0, 2}, 1, 3},
    {2, 4, {1, 3}, 0, 2}, {4, 6, {0, 1, 3, 4}, 2, 5}, {4, 6, {1, 2, 4, 5}, 0, 3},
};

TEST(YCbCrLayout, WeavesByHand) {
  const std::vector<uint8_t> luma{1, 2, 3, 4, 5, 6, 7}, cb{50, 51, 52, 53, 54, 55, 56},
      cr{90, 91, 92, 93, 94, 95, 96};
  const auto woven = [&](const YCbCrLayout& layout, size_t width) {
    std::vector<uint8_t> line(12, 0xEE);
    WeaveYCbCr(layout, {luma.data(), cb.data(), cr.data()}, line.data(), width);
    return line;
  };
  constexpr uint8_t kOld = 0xEE;
  EXPECT_THAT(woven(kLayouts[0], 2),
              ElementsAre(1, 50, 90, 2, 51, 91, kOld, kOld, kOld, kOld, kOld, kOld));
  EXPECT_THAT(woven(kLayouts[2], 3),
              ElementsAre(1, 50, 2, 90, 3, 51, kOld, kOld, kOld, kOld, kOld, kOld));
  EXPECT_THAT(woven(kLayouts[3], 3),
              ElementsAre(50, 1, 90, 2, 51, 3, kOld, kOld, kOld, kOld, kOld, kOld));
  EXPECT_THAT(woven(kLayouts[4], 5),
              ElementsAre(1, 2, 50, 3, 4, 90, 5, kOld, kOld, kOld, kOld, kOld));
  EXPECT_THAT(woven(kLayouts[4], 6), ElementsAre(1, 2, 50, 3, 4, 90, 5, 6, 51, kOld, kOld, kOld));
  EXPECT_THAT(woven(kLayouts[4], 7), ElementsAre(1, 2, 50, 3, 4, 90, 5, 6, 51, 7, kOld, kOld));
  EXPECT_THAT(woven(kLayouts[5], 5),
              ElementsAre(50, 1, 2, 90, 3, 4, 51, 5, kOld, kOld, kOld, kOld));
  EXPECT_THAT(woven(kLayouts[5], 7), ElementsAre(50, 1, 2, 90, 3, 4, 51, 5, 6, 91, 7, kOld));
}

TEST(YCbCrLayout, EveryWidthAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (const YCbCrLayout& layout : kLayouts)
      for (size_t width = 0; width <= 300; ++width) {
        SCOPED_TRACE(std::to_string(layout.pixels) + " pixels, width " + std::to_string(width));
        const size_t groups = (width + layout.pixels - 1) / layout.pixels;
        GuardedLine<uint8_t> luma(width, width % 3), cb(groups, 0), cr(groups, 0);
        luma.FillRandom(1);
        cb.FillRandom(2);
        cr.FillRandom(3);
        GuardedLine<uint8_t> made(layout.LineBytes(width), 0);
        std::vector<uint8_t> expected(layout.LineBytes(width), 0xC5);
        WeaveYCbCr(layout, {luma.data(), cb.data(), cr.data()}, made.data(), width);
        Scalar::WeaveYCbCr(layout, {luma.data(), cb.data(), cr.data()}, expected.data(), width);
        ASSERT_THAT(made.samples(), ElementsAreArray(expected));
        ASSERT_TRUE(made.SurroundingsIntact());

        made.FillRandom(4);
        const size_t values = (width + 3) / 4 * 4;
        std::vector<uint8_t> lines[2][3];
        for (size_t form : {0, 1}) {
          for (auto& line : lines[form]) line.assign(values + 1, 0xEE);
          const YCbCrLines<uint8_t> to{lines[form][0].data(), lines[form][1].data(),
                                       lines[form][2].data()};
          const auto run = form == 0 ? &UnweaveYCbCr : &Scalar::UnweaveYCbCr;
          run(layout, made.data(), false, to, width);
        }
        for (size_t c = 0; c < 3; ++c) ASSERT_EQ(lines[0][c], lines[1][c]) << c;
      }
  });
}

TEST(YCbCrLayout, MissingChrominanceIsThatOfTheGroupBefore) {
  const std::vector<uint8_t> line{50, 1, 90, 2, 51, 3};  // three pixels of CbYCrY
  std::vector<uint8_t> luma(4), cb(4), cr(4);
  const YCbCrLines<uint8_t> to{luma.data(), cb.data(), cr.data()};
  UnweaveYCbCr(kLayouts[3], line.data(), false, to, 3);
  EXPECT_THAT(cb, ElementsAre(50, 51, 0, 0));
  EXPECT_THAT(cr, ElementsAre(90, 90, 0, 0));
  UnweaveYCbCr(kLayouts[3], line.data() + 4, true, to, 1);
  EXPECT_EQ(cr[0], 90);
  UnweaveYCbCr(kLayouts[3], line.data() + 4, false, to, 1);
  EXPECT_EQ(cb[0], 51);
  EXPECT_EQ(cr[0], 128);
  const std::vector<uint8_t> luma4{1, 2, 50, 3, 4, 90, 5};  // five pixels of YYCbYYCr
  luma.resize(8);
  cb.resize(8);
  cr.resize(8);
  UnweaveYCbCr(kLayouts[4], luma4.data(), false, {luma.data(), cb.data(), cr.data()}, 5);
  EXPECT_EQ(cb[2], 50);
  EXPECT_EQ(cr[2], 90);
}

}  // namespace
}  // namespace QvApi::Kernels
