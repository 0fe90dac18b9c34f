// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Planes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

// The kernels have code of their own for this target, so it is tested too.
#ifndef HWY_WANT_AVX3_DL
#define HWY_WANT_AVX3_DL
#endif
#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/PlanesScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

/// A guarded line of random samples beside a copy that the scalar form works on.
template <class T>
struct Line {
  Line(size_t count, size_t slack, uint32_t seed) : guarded(count, slack) {
    guarded.FillRandom(seed);
    copy.assign(guarded.samples().begin(), guarded.samples().end());
  }
  void Check() {
    ASSERT_THAT(guarded.samples(), ElementsAreArray(copy));
    ASSERT_TRUE(guarded.SurroundingsIntact());
  }

  GuardedLine<T> guarded;
  std::vector<T> copy;
};

template <class T>
void CompareSplitAndMerge(size_t step, size_t count, size_t slack) {
  Line<T> pixels(count * step, slack, 1);
  Line<T> planes[] = {
      {count, (slack + 3) % 64, 2}, {count, (slack + 9) % 64, 3}, {count, slack, 4}};
  SplitPixels(pixels.guarded.data(), step,
              {planes[0].guarded.data(), planes[1].guarded.data(), planes[2].guarded.data()},
              count);
  Scalar::SplitPixels<T>(pixels.copy.data(), step,
                         {planes[0].copy.data(), planes[1].copy.data(), planes[2].copy.data()},
                         count);
  for (Line<T>& plane : planes) plane.Check();

  Line<T> merged(count * step, slack, 5);
  const PlaneLines<const T> order{planes[2].copy.data(), planes[1].copy.data(),
                                  planes[0].copy.data()};
  MergePixels(order, merged.guarded.data(), step, count);
  Scalar::MergePixels<T>(order, merged.copy.data(), step, count);
  merged.Check();
}

template <class T>
void CompareGrey(const ColorPixels& layout, size_t count, size_t slack) {
  Line<T> pixels(count * layout.step, slack, 1);
  Line<T> grey(count, (slack + 3) % 64, 2);
  PixelsToGrey(layout, pixels.guarded.data(), grey.guarded.data(), count);
  Scalar::PixelsToGrey(layout, pixels.copy.data(), grey.copy.data(), count);
  grey.Check();
}

void CompareWords(size_t step, bool exchange, size_t count, size_t slack) {
  Line<uint16_t> pixels(step * count, slack, 1);
  Line<uint8_t> words(4 * count, (slack + 3) % 64, 2);
  PackPixelWords(pixels.guarded.data(), step, exchange, words.guarded.data(), count);
  Scalar::PackPixelWords(pixels.copy.data(), step, exchange, words.copy.data(), count);
  words.Check();
}

void CompareUnpackedWords(size_t count, size_t slack) {
  Line<uint8_t> words(4 * count, slack, 3);
  Line<uint16_t> pixels(3 * count, (slack + 3) % 64, 1);
  UnpackPixelWords(words.guarded.data(), pixels.guarded.data(), count);
  Scalar::UnpackPixelWords(words.copy.data(), pixels.copy.data(), count);
  pixels.Check();
}

TEST(Planes, EveryWidthAndAlignmentAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t i = 1; i < 200 + 64; ++i) {
      const size_t count = i < 200 ? i : 131 + i % 3;
      const size_t slack = i < 200 ? 0 : i - 200;
      SCOPED_TRACE("count " + std::to_string(count) + ", slack " + std::to_string(slack));
      for (size_t step : {3u, 4u}) {
        CompareSplitAndMerge<uint8_t>(step, count, slack);
        CompareSplitAndMerge<uint16_t>(step, count, slack);
        for (bool isBGR : {false, true}) {
          CompareWords(step, isBGR, count, slack);
          CompareGrey<uint8_t>({step, isBGR, 8}, count, slack);
          CompareGrey<uint16_t>({step, isBGR, 12}, count, slack);
          CompareGrey<uint16_t>({step, isBGR, 16}, count, slack);
        }
      }
      CompareUnpackedWords(count, slack);
      if (::testing::Test::HasFailure()) return;
    }
  });
}

TEST(PlanesByHand, GreyOfFullScale) {
  ForEachTarget([](const std::string&) {
    for (size_t count : {1u, 64u}) {  // by scalar and by vector
      const auto grey8 = [&](bool isBGR, std::array<uint8_t, 3> pixel) {
        std::vector<uint8_t> pixels, grey(count);
        for (size_t i = 0; i < count; ++i) pixels.insert(pixels.end(), pixel.begin(), pixel.end());
        PixelsToGrey({3, isBGR, 8}, pixels.data(), grey.data(), count);
        return static_cast<unsigned>(grey[count - 1]);
      };
      EXPECT_EQ(grey8(false, {255, 255, 255}), 255u);
      EXPECT_EQ(grey8(false, {255, 0, 0}), 63u);
      EXPECT_EQ(grey8(false, {0, 255, 0}), 159u);
      EXPECT_EQ(grey8(false, {0, 0, 255}), 31u);
      EXPECT_EQ(grey8(true, {255, 0, 0}), 31u);
      std::vector<uint16_t> white(3 * count, 0xFFFF), grey(count);
      PixelsToGrey({3, true, 16}, white.data(), grey.data(), count);
      EXPECT_EQ(grey[count - 1], 0xFFFFu);
      PixelsToGrey({3, true, 12}, white.data(), grey.data(), count);
      EXPECT_EQ(grey[count - 1], 0xFFFu);
    }
  });
}

TEST(PlanesByHand, WordsHoldTheFirstComponentLowest) {
  const uint16_t pixel[]{0x3FF, 0, 0x201};
  std::vector<uint8_t> word(4);
  PackPixelWords(pixel, 3, true, word.data(), 1);
  EXPECT_THAT(word, ElementsAre(0x01, 0x02, 0xF0, 0x3F));
  PackPixelWords(pixel, 3, false, word.data(), 1);
  EXPECT_THAT(word, ElementsAre(0xFF, 0x03, 0x10, 0x20));
  word[3] |= 0xC0;  // the spare bits
  std::vector<uint16_t> back(3);
  UnpackPixelWords(word.data(), back.data(), 1);
  EXPECT_THAT(back, ElementsAre(0x3FF, 0, 0x201));
}

}  // namespace
}  // namespace QvApi::Kernels
