// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Planes.h"

// The kernels have code of their own for this target, so it is tested too.
#ifndef HWY_WANT_AVX3_DL
#define HWY_WANT_AVX3_DL
#endif
#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/PlanesScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
void CompareSplitAndMerge(size_t step, size_t count, size_t slack) {
  TwinLine<T> pixels(count * step, slack, 1);
  TwinLine<T> a(count, slack, 2), b(count, slack, 3), c(count, slack, 4);
  SplitPixels(pixels.vector(), step, {a.vector(), b.vector(), c.vector()}, count);
  Scalar::SplitPixels<T>(pixels.scalar(), step, {a.scalar(), b.scalar(), c.scalar()}, count);
  for (TwinLine<T>* plane : {&a, &b, &c}) plane->Check();
  MergePixels({c.vector(), b.vector(), a.vector()}, pixels.vector(), step, count);
  Scalar::MergePixels<T>({c.scalar(), b.scalar(), a.scalar()}, pixels.scalar(), step, count);
  pixels.Check();
}

template <class T>
void CompareGrey(const ColorPixels& layout, size_t count, size_t slack) {
  TwinLine<T> pixels(count * layout.step, slack, 1), grey(count, slack, 2);
  PixelsToGrey(layout, pixels.vector(), grey.vector(), count);
  Scalar::PixelsToGrey(layout, pixels.scalar(), grey.scalar(), count);
  grey.Check();
}

void CompareWords(size_t step, bool exchange, size_t count, size_t slack) {
  TwinLine<uint16_t> pixels(step * count, slack, 1), back(3 * count, slack, 3);
  TwinLine<uint8_t> words(4 * count, slack, 2);
  UnpackPixelWords(words.vector(), back.vector(), count);  // random in their spare bits too
  Scalar::UnpackPixelWords(words.scalar(), back.scalar(), count);
  back.Check();
  PackPixelWords(pixels.vector(), step, exchange, words.vector(), count);
  Scalar::PackPixelWords(pixels.scalar(), step, exchange, words.scalar(), count);
  words.Check();
}

TEST(Planes, AgreeWithScalar) {
  ForEachLine([](size_t count, size_t slack) {
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
  });
}

}  // namespace
}  // namespace QvApi::Kernels
