// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/EdgeEnhancement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/EdgeEnhancementScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::Each;

template <class T>
void CompareDifferences(size_t width, size_t slack, unsigned bits) {
  GuardedLine<T> lines[] = {{width + 2, slack}, {width + 2, slack}, {width + 2, 63 - slack}};
  const auto top = static_cast<T>((1u << bits) - 1);
  for (GuardedLine<T>& line : lines) {
    line.FillRandom(static_cast<uint32_t>(width + (&line - lines)));
    for (T& sample : line.samples())  // full scale often enough for the greatest sums
      sample = sample % 3 == 0 ? top : static_cast<T>(sample & top);
  }
  const LineWindow<T> window{lines[0].data() + 1, lines[1].data() + 1, lines[2].data() + 1,
                             width % 2 == 0 ? nullptr : lines[2].data(), 3};
  TwinLine<T> means(width, slack, 3), distances(width, slack, 5);
  DifferFromMeans(window, bits, means.vector(), distances.vector(), width);
  Scalar::DifferFromMeans(window, means.scalar(), distances.scalar(), width);
  means.Check();
  distances.Check();
}

const CorrectedSamples kLayouts[] = {{1, 0, 1}, {2, 0, 1}, {2, 1, 1}, {3, 0, 1},
                                     {3, 1, 1}, {3, 0, 3}, {4, 0, 3}};

template <class T>
void CompareCorrections(const CorrectedSamples& layout, size_t width, size_t slack, unsigned bits) {
  GuardedLine<T> levels(width, slack), means(width, 63 - slack), amounts(width, slack);
  uint32_t seed = static_cast<uint32_t>(2 * width);
  for (GuardedLine<T>* line : {&levels, &means, &amounts}) line->FillRandom(seed++);
  for (size_t x = 0; x < width; ++x) {
    T& amount = amounts.samples()[x];
    if (x % 4 == 0) amount = 0;
    if (x % 4 == 1) amount = static_cast<T>(amount & ((1u << bits) - 1) / 4);
    if (x % 5 == 0) means.samples()[x] = levels.samples()[x];
  }
  const Corrections<T> corrections{levels.data(), means.data(), amounts.data()};
  TwinLine<T> pixels(width * layout.step, slack, seed);
  CorrectPixels(layout, bits, corrections, pixels.vector(), width);
  Scalar::CorrectPixels(layout, bits, corrections, pixels.scalar(), width);
  pixels.Check();
}

template <class T>
void CompareWithScalar(size_t width, size_t slack, unsigned bits) {
  CompareDifferences<T>(width, slack, bits);
  for (const CorrectedSamples& layout : kLayouts) CompareCorrections<T>(layout, width, slack, bits);
}

TEST(EdgeEnhancementTest, EveryLineAgreesWithScalar) {
  ForEachLine([](size_t width, size_t slack) {
    CompareWithScalar<uint8_t>(width, slack, 8);
    for (unsigned bits : {10u, 13u, 14u, 16u}) CompareWithScalar<uint16_t>(width, slack, bits);
  });
}

TEST(EdgeEnhancementTest, SmallAndGreatDistancesAreLookedUp) {
  GuardedLine<uint16_t> table(4096, 0);
  table.FillRandom(1);
  ForEachLine([&](size_t width, size_t slack) {
    for (unsigned limit : {64u, 128u, 192u, 256u, 257u, 1000u, 4096u}) {
      TwinLine<uint16_t> distances(width, slack, static_cast<uint32_t>(2 * width + 1));
      distances.Shape([limit](size_t, uint16_t& distance) {
        distance = static_cast<uint16_t>(distance % limit);
      });
      LookUpDistances(table.data(), distances.vector(), width);
      Scalar::LookUpDistances(table.data(), distances.scalar(), width);
      distances.Check();
    }
  });
}

TEST(EdgeEnhancementTest, UnknownLayoutsWriteNothing) {
  const uint8_t levels[2] = {9, 9}, means[2] = {1, 1}, amounts[2] = {7, 7};
  uint8_t pixels[12] = {};
  for (const CorrectedSamples& layout :
       {CorrectedSamples{0, 0, 1}, CorrectedSamples{5, 0, 1}, CorrectedSamples{3, 1, 3},
        CorrectedSamples{2, 3, 1}, CorrectedSamples{3, 1, ~size_t{0}}})
    CorrectPixels(layout, 8, {levels, means, amounts}, pixels, 2);
  EXPECT_THAT(pixels, Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
