// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Demosaic.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "DemosaicReference.h"
#include "ForEachTarget.h"
#include "GuardedMemory.h"

namespace QvApi::Kernels {
namespace {

template <class T>
size_t SourceSize(const MosaicFrame<T>& frame) {
  return static_cast<size_t>(frame.sourcePitch) / sizeof(T) * (frame.height - 1) + frame.width;
}
template <class T>
size_t DestinationSize(const MosaicFrame<T>& frame) {
  return static_cast<size_t>(frame.destinationPitch) / sizeof(T) * (frame.height - 1) +
         frame.width * frame.stride;
}

/// Kernel and reference on the same picture and the same former destination, between pages that
/// cannot be touched.
template <class T>
class Comparison {
 public:
  void Check(MosaicFrame<T> frame, DemosaicMethod method, bool reverse) {
    const unsigned picture = m_count++ % 5;
    const Side side = m_count % 2 ? Side::Front : Side::Back;
    const size_t size = DestinationSize(frame);
    T* const source = m_source.Place<T>(SourceSize(frame), side);
    T* const made = m_destination.Place<T>(size, side);
    Draw(picture, frame, source);
    for (size_t i = 0; i < size; ++i) made[i] = static_cast<T>(m_random());
    std::vector<T> expected(made, made + size);
    frame.source = source;
    frame.destination = expected.data();
    DemosaicReference<T>(frame, reverse).Run(method);
    frame.destination = made;
    Demosaic(frame, method, reverse);

    const auto at =
        static_cast<size_t>(std::mismatch(made, made + size, expected.begin()).first - made);
    if (at == size) return;
    const size_t pitch = static_cast<size_t>(frame.destinationPitch) / sizeof(T);
    ADD_FAILURE() << "method " << static_cast<int>(method) << ", " << frame.width << " x "
                  << frame.height << ", phase " << frame.phase << (frame.isBGR ? ", BGR" : ", RGB")
                  << ", stride " << frame.stride << (reverse ? ", reversed" : "") << ", maximum "
                  << frame.maximum << ", picture " << picture << ": sample " << at % pitch
                  << " of row " << at / pitch << " is " << +made[at] << ", not " << +expected[at];
  }

 private:
  uint32_t Below(uint32_t end) { return static_cast<uint32_t>((uint64_t{m_random()} * end) >> 32); }

  void Draw(unsigned picture, const MosaicFrame<T>& frame, T* source) {
    const uint32_t maximum = frame.maximum, base = Below(maximum - 5);
    const auto level = [&](uint32_t x, uint32_t y) {
      switch (picture) {
        case 0:
          return Below(maximum + 1);
        case 1:
          return Below(2) * maximum;
        case 2:
          return base + Below(3);
        case 3:
          return (x * 9 + y * (y % 16) * 5 + base) & maximum;
        default:  // some above the depth
          return Below(4) ? Below(maximum + 1) : ~0u;
      }
    };
    for (size_t i = 0; i < SourceSize(frame); ++i)
      source[i] = static_cast<T>(
          level(static_cast<uint32_t>(i % frame.width), static_cast<uint32_t>(i / frame.width)));
  }

  std::mt19937 m_random{20};
  unsigned m_count = 0;
  GuardedMemory m_source{1 << 20};
  GuardedMemory m_destination{1 << 20};
};

/// All settings of one size, with what does not interact with the method taken in turn.
template <class T>
void CheckSize(Comparison<T>& comparison, size_t width, size_t height) {
  static constexpr unsigned kBits[] = {10, 12, 14, 16};
  static unsigned turn = 0;
  for (int method = 0; method < 8; ++method)
    for (int phase : {2, 3, 4, 5})
      for (bool reverse : {false, true}) {
        ++turn;
        MosaicFrame<T> frame{.width = width, .height = height, .phase = phase};
        frame.isBGR = turn / 3 % 2 == 0;
        frame.stride = 3 + turn % 3 % 2;
        frame.maximum = (1u << (sizeof(T) == 1 ? 8 : kBits[turn / 3 % 4])) - 1;
        frame.sourcePitch = static_cast<ptrdiff_t>((width + turn % 5) * sizeof(T));
        frame.destinationPitch =
            static_cast<ptrdiff_t>((width * frame.stride + turn % 7) * sizeof(T));
        comparison.Check(frame, static_cast<DemosaicMethod>(method), reverse);
      }
}

template <class T>
void CheckAllSizes() {
  ForEachTarget([](const std::string&) {
    Comparison<T> comparison;
    for (size_t width = 2; width <= 17; ++width)
      for (size_t height = 2; height <= 13; ++height) {
        CheckSize(comparison, width, height);
        CheckSize(comparison, width, height);
      }
    // Around one and two vectors of every size.
    for (size_t width :
         {31, 32, 33, 34, 62, 63, 64, 65, 66, 67, 127, 128, 129, 130, 131, 191, 192, 193, 200, 257})
      for (size_t height : {4, 5, 6, 7, 8, 9, 12}) CheckSize(comparison, width, height);
    CheckSize(comparison, 65, 37);
    CheckSize(comparison, 130, 42);
  });
}

TEST(Demosaic, EqualsReferenceAt8Bits) { CheckAllSizes<uint8_t>(); }
TEST(Demosaic, EqualsReferenceAt16Bits) { CheckAllSizes<uint16_t>(); }

TEST(Demosaic, OtherPhasesLeaveTheDestination) {
  const std::vector<uint8_t> source(16, 5);
  std::vector<uint8_t> pixels(48, 77);
  for (int phase : {0, 1, 6, -1})
    Demosaic<uint8_t>({.source = source.data(),
                       .sourcePitch = 4,
                       .destination = pixels.data(),
                       .destinationPitch = 12,
                       .width = 4,
                       .height = 4,
                       .phase = phase},
                      DemosaicMethod::Mono, false);
  EXPECT_THAT(pixels, testing::Each(77));
}

}  // namespace
}  // namespace QvApi::Kernels
