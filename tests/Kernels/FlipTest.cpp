// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Flip.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/Rotate.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAreArray;

constexpr PixelBytes kPixels[] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {4, 3}, {6, 6}, {8, 8}, {8, 6}};

std::string Describe(const PixelBytes& bytes) {
  return std::to_string(bytes.moved) + " of " + std::to_string(bytes.step) + " bytes ";
}

/// Old bytes with those of the pixels that an index formula names.
template <class Formula>
std::vector<uint8_t> Moved(const PixelBytes& bytes, std::span<const uint8_t> source,
                           std::span<const uint8_t> old, Formula sourceOf) {
  std::vector<uint8_t> expected(old.begin(), old.end());
  for (size_t i = 0; i < expected.size() / bytes.step; ++i)
    for (size_t k = 0; k < bytes.moved; ++k)
      expected[i * bytes.step + k] = source[sourceOf(i) * bytes.step + k];
  return expected;
}

TEST(Flip, MirrorsEveryWidth) {
  ForEachTarget([](const std::string&) {
    for (const PixelBytes& bytes : kPixels)
      for (size_t count = 0; count <= 200; ++count) {
        SCOPED_TRACE(Describe(bytes) + std::to_string(count));
        GuardedLine<uint8_t> source(count * bytes.step, count % 7);
        GuardedLine<uint8_t> destination(count * bytes.step, count % 4);
        source.FillRandom(1);
        destination.FillRandom(2);
        const auto expected = Moved(bytes, source.samples(), destination.samples(),
                                    [&](size_t i) { return count - 1 - i; });
        MirrorPixels(bytes, source.data(), destination.data(), count, source.data());
        ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
        ASSERT_TRUE(destination.SurroundingsIntact());
      }
  });
}

TEST(Flip, TransposesEverySize) {
  ForEachTarget([](const std::string&) {
    for (const PixelBytes& bytes : kPixels)
      for (size_t width : {1, 2, 3, 5, 8, 15, 16, 17, 33, 40})
        for (size_t height : {1, 2, 4, 7, 8, 15, 16, 17, 31, 48, 130, 261}) {
          SCOPED_TRACE(Describe(bytes) + std::to_string(width) + " x " + std::to_string(height));
          const size_t size = width * height * bytes.step;
          GuardedLine<uint8_t> source(size, 0), destination(size, 0);
          source.FillRandom(1);
          destination.FillRandom(2);
          const auto expected = Moved(bytes, source.samples(), destination.samples(),
                                      [&](size_t i) { return i % height * width + i / height; });
          TransposePixels(bytes, source.data(), static_cast<ptrdiff_t>(width * bytes.step),
                          destination.data(), static_cast<ptrdiff_t>(height * bytes.step), width,
                          height);
          ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
          ASSERT_TRUE(destination.SurroundingsIntact());
        }
  });
}

TEST(Flip, TransposesUpwardAndBetweenLinesWithPadding) {
  ForEachTarget([](const std::string&) {
    for (const PixelBytes& bytes : kPixels)
      for (int upward = 0; upward < 4; ++upward) {
        constexpr size_t kWidth = 37, kHeight = 29, kPadding = 5;
        const size_t sourcePitch = kWidth * bytes.step + kPadding;
        const size_t pitch = kHeight * bytes.step + kPadding;
        GuardedLine<uint8_t> source(sourcePitch * kHeight - kPadding, 0);
        GuardedLine<uint8_t> destination(pitch * kWidth - kPadding, 0);
        source.FillRandom(3);
        destination.FillRandom(4);
        std::vector<uint8_t> expected(destination.samples().begin(), destination.samples().end());
        for (size_t y = 0; y < kHeight; ++y)
          for (size_t x = 0; x < kWidth; ++x) {
            const size_t fromRow = upward & 1 ? kHeight - 1 - y : y;
            const size_t toRow = upward & 2 ? kWidth - 1 - x : x;
            for (size_t k = 0; k < bytes.moved; ++k)
              expected[toRow * pitch + y * bytes.step + k] =
                  source.samples()[fromRow * sourcePitch + x * bytes.step + k];
          }
        const auto signedPitch = static_cast<ptrdiff_t>(pitch);
        const auto signedSourcePitch = static_cast<ptrdiff_t>(sourcePitch);
        TransposePixels(bytes, source.data() + (upward & 1 ? sourcePitch * (kHeight - 1) : 0),
                        upward & 1 ? -signedSourcePitch : signedSourcePitch,
                        destination.data() + (upward & 2 ? pitch * (kWidth - 1) : 0),
                        upward & 2 ? -signedPitch : signedPitch, kWidth, kHeight);
        ASSERT_THAT(destination.samples(), ElementsAreArray(expected)) << Describe(bytes) << upward;
        ASSERT_TRUE(destination.SurroundingsIntact());
      }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
