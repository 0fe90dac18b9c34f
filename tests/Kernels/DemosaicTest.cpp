// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Demosaic.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/Kernels/DemosaicReference.h"
#include "tests/Kernels/ForEachTarget.h"
#include "tests/Kernels/GuardedMemory.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr DemosaicMethod kMethods[] = {
    DemosaicMethod::None,     DemosaicMethod::NearestNeighbor, DemosaicMethod::NearestNeighbor2,
    DemosaicMethod::Bilinear, DemosaicMethod::Bilinear2,       DemosaicMethod::Bicubic,
    DemosaicMethod::Mono,     DemosaicMethod::Bilinear3,
};
constexpr int kRG = 2, kGR = 3, kGB = 4, kBG = 5;
constexpr int kPhases[] = {kRG, kGR, kGB, kBG};

/// Everything that says what comes out, but the samples.
struct Setting {
  DemosaicMethod method;
  size_t width;
  size_t height;
  int phase = kRG;
  bool isBGR = true;
  unsigned stride = 3;
  bool reverse = false;
  unsigned bits = 8;
  /// Samples behind each row of the source and of the destination.
  size_t sourcePadding = 0;
  size_t destinationPadding = 0;

  uint32_t Maximum() const { return (1u << bits) - 1; }
  std::string Text() const {
    return "method " + std::to_string(static_cast<int>(method)) + ", " + std::to_string(width) +
           " x " + std::to_string(height) + ", phase " + std::to_string(phase) +
           (isBGR ? ", BGR" : ", RGB") + ", stride " + std::to_string(stride) +
           (reverse ? ", reversed" : "") + ", " + std::to_string(bits) + " bits, padding " +
           std::to_string(sourcePadding) + " and " + std::to_string(destinationPadding);
  }
};

enum class Picture { Noise, Extremes, FewLevels, Slopes, AboveDepth };
constexpr Picture kPictures[] = {Picture::Noise, Picture::Extremes, Picture::FewLevels,
                                 Picture::Slopes, Picture::AboveDepth};

class Random {
 public:
  uint32_t Below(uint32_t end) { return static_cast<uint32_t>((uint64_t{m_engine()} * end) >> 32); }
  template <class T>
  void Fill(std::vector<T>& samples) {
    for (T& sample : samples) sample = static_cast<T>(m_engine());
  }

 private:
  std::mt19937 m_engine{20};
};

template <class T>
std::vector<T> MakeSource(const Setting& setting, Picture picture, Random& random) {
  const size_t pitch = setting.width + setting.sourcePadding;
  std::vector<T> source(pitch * (setting.height - 1) + setting.width);
  const uint32_t maximum = setting.Maximum();
  const uint32_t base = random.Below(maximum - 5);
  for (size_t i = 0; i < source.size(); ++i) {
    const auto x = static_cast<uint32_t>(i % pitch), y = static_cast<uint32_t>(i / pitch);
    uint32_t value = 0;
    switch (picture) {
      case Picture::Noise:
        value = random.Below(maximum + 1);
        break;
      case Picture::Extremes:
        value = random.Below(2) * maximum;
        break;
      case Picture::FewLevels:
        value = base + random.Below(3);
        break;
      case Picture::Slopes:
        value = (x * 9 + y * (y % 16) * 5 + base) & maximum;
        break;
      case Picture::AboveDepth:
        value = random.Below(4) ? random.Below(maximum + 1) : ~0u;
        break;
    }
    source[i] = static_cast<T>(value);
  }
  return source;
}

template <class T>
MosaicFrame<T> MakeFrame(const Setting& setting, const T* source, T* destination) {
  MosaicFrame<T> frame;
  frame.source = source;
  frame.sourcePitch = static_cast<ptrdiff_t>((setting.width + setting.sourcePadding) * sizeof(T));
  frame.destination = destination;
  frame.destinationPitch = static_cast<ptrdiff_t>(
      (setting.width * setting.stride + setting.destinationPadding) * sizeof(T));
  frame.width = setting.width;
  frame.height = setting.height;
  frame.stride = setting.stride;
  frame.isBGR = setting.isBGR;
  frame.phase = setting.phase;
  frame.maximum = setting.Maximum();
  return frame;
}

size_t DestinationSize(const Setting& setting) {
  return (setting.width * setting.stride + setting.destinationPadding) * (setting.height - 1) +
         setting.width * setting.stride;
}

/// Kernel and reference on the same picture and the same former destination, under every
/// instruction set, between pages that cannot be touched.
template <class T>
class Comparison {
 public:
  explicit Comparison(Random& random) : m_random(random) {}

  void Check(const Setting& setting) {
    const Picture picture = kPictures[m_count++ % std::size(kPictures)];
    const std::vector<T> source = MakeSource<T>(setting, picture, m_random);
    std::vector<T> former(DestinationSize(setting));
    m_random.Fill(former);

    std::vector<T> expected = former;
    DemosaicReference<T>(MakeFrame(setting, source.data(), expected.data()), setting.reverse)
        .Run(setting.method);

    const Side side = m_count % 2 ? Side::Front : Side::Back;
    T* const guardedSource = m_source.Place<T>(source.size(), side);
    std::copy(source.begin(), source.end(), guardedSource);
    T* const guarded = m_destination.Place<T>(former.size(), side);
    const MosaicFrame<T> frame = MakeFrame(setting, guardedSource, guarded);
    std::copy(former.begin(), former.end(), guarded);
    Demosaic(frame, setting.method, setting.reverse);
    const std::vector<T> actual(guarded, guarded + former.size());
    if (actual == expected) return;
    const size_t at = static_cast<size_t>(
        std::mismatch(actual.begin(), actual.end(), expected.begin()).first - actual.begin());
    const size_t pitch = setting.width * setting.stride + setting.destinationPadding;
    ADD_FAILURE() << setting.Text() << ", picture " << static_cast<int>(picture) << ": pixel "
                  << at % pitch / setting.stride << ", row " << at / pitch << ", component "
                  << at % pitch % setting.stride << " is " << +actual[at] << ", not "
                  << +expected[at];
  }

 private:
  Random& m_random;
  unsigned m_count = 0;
  GuardedMemory m_source{1 << 20};
  GuardedMemory m_destination{1 << 20};
};

/// All settings of one size, with what does not interact with the method taken in turn.
template <class T>
void CheckSize(Comparison<T>& comparison, size_t width, size_t height, bool everyOrder) {
  static constexpr unsigned kBits[] = {10, 12, 14, 16};
  static unsigned turn = 0;
  for (const DemosaicMethod method : kMethods) {
    for (const int phase : kPhases) {
      for (const bool reverse : {false, true}) {
        for (const bool isBGR : {false, true}) {
          ++turn;
          if (!everyOrder && isBGR != (turn / 2 % 2 == 0)) continue;
          Setting setting{method, width, height, phase, isBGR};
          setting.stride = 3 + turn % 3 % 2;
          setting.reverse = reverse;
          setting.bits = sizeof(T) == 1 ? 8 : kBits[turn / 3 % 4];
          setting.sourcePadding = turn % 5;
          setting.destinationPadding = turn % 7;
          comparison.Check(setting);
        }
      }
    }
  }
}

template <class T>
void CheckAllSizes() {
  ForEachTarget([](const std::string&) {
    Random random;
    Comparison<T> comparison(random);
    for (size_t width = 2; width <= 17; ++width) {
      for (size_t height = 2; height <= 13; ++height) CheckSize(comparison, width, height, true);
    }
    // Around one and two vectors of every size.
    for (const size_t width : {31,  32,  33,  34,  62,  63,  64,  65,  66,  67,
                               127, 128, 129, 130, 131, 191, 192, 193, 200, 257}) {
      for (const size_t height : {4, 5, 6, 7, 8, 9, 12}) {
        CheckSize(comparison, width, height, false);
      }
    }
    CheckSize(comparison, 65, 37, true);
    CheckSize(comparison, 130, 42, true);
  });
}

TEST(Demosaic, EqualsReferenceAt8Bits) { CheckAllSizes<uint8_t>(); }
TEST(Demosaic, EqualsReferenceAt16Bits) { CheckAllSizes<uint16_t>(); }

template <class T>
std::vector<T> Demosaiced(const Setting& setting, const std::vector<T>& source, T former = 0) {
  std::vector<T> destination(DestinationSize(setting), former);
  Demosaic(MakeFrame(setting, source.data(), destination.data()), setting.method, setting.reverse);
  return destination;
}

/// One component of one row.
template <class T>
std::vector<int> Component(const Setting& setting, const std::vector<T>& pixels, size_t row,
                           size_t component) {
  std::vector<int> values;
  const size_t pitch = setting.width * setting.stride + setting.destinationPadding;
  for (size_t x = 0; x < setting.width; ++x) {
    values.push_back(pixels[row * pitch + x * setting.stride + component]);
  }
  return values;
}

/// A 4 x 4 mosaic whose results were worked out on paper.
TEST(Demosaic, WorkedByHand) {
  const std::vector<uint8_t> source = {
      10,  20,  30,  41,   // R G R G
      50,  60,  71,  80,   // G B G B
      90,  100, 110, 120,  // R G R G
      131, 140, 150, 160,  // G B G B
  };
  struct Case {
    DemosaicMethod method;
    size_t row;
    std::vector<int> red, green, blue;
  };
  const Case cases[] = {
      {DemosaicMethod::None, 1, {0, 0, 0, 0}, {50, 0, 71, 0}, {0, 60, 0, 80}},
      {DemosaicMethod::Mono, 0, {10, 20, 30, 41}, {10, 20, 30, 41}, {10, 20, 30, 41}},
      {DemosaicMethod::NearestNeighbor, 0, {10, 10, 30, 30}, {20, 20, 41, 41}, {60, 60, 80, 80}},
      {DemosaicMethod::NearestNeighbor, 1, {10, 10, 30, 30}, {50, 50, 71, 71}, {60, 60, 80, 80}},
      // Greens: (20 + 50) / 2, (20 + 71) / 2, (41 + 71) / 2, and the last pixel's own.
      {DemosaicMethod::NearestNeighbor2, 0, {10, 30, 30, 30}, {35, 45, 56, 41}, {60, 60, 80, 80}},
      // Row 4 is row 2. Greens: (131 + 100) / 2, (150 + 100) / 2, (150 + 120) / 2, (150 + 120) / 2.
      {DemosaicMethod::NearestNeighbor2,
       3,
       {90, 110, 110, 110},
       {115, 125, 135, 135},
       {140, 140, 160, 160}},
      {DemosaicMethod::Bilinear, 1, {50, 60, 70, 70}, {50, 60, 71, 71}, {60, 60, 70, 80}},
      // Blue of row 2: rows 1 and 3 hold 60 60 70 80 and 140 140 150 160.
      {DemosaicMethod::Bilinear,
       2,
       {90, 100, 110, 110},
       {100, 100, 110, 120},
       {100, 100, 110, 120}},
      // Red at (0, 0): (9 * 10 + 3 * 30 + 3 * 90 + 110) / 16 = 35; at (1, 0): (270 + 30 + 330 + 90)
      // / 16 = 45. Blue at (0, 0), where column -1 and row -1 are 1: 60.
      {DemosaicMethod::Bilinear2, 0, {35, 45, 50, 50}, {35, 45, 56, 41}, {60, 65, 75, 80}},
  };
  for (const Case& c : cases) {
    const Setting setting{c.method, 4, 4};
    SCOPED_TRACE(setting.Text() + ", row " + std::to_string(c.row));
    const std::vector<uint8_t> pixels = Demosaiced(setting, source);
    EXPECT_THAT(Component(setting, pixels, c.row, 2), ElementsAreArray(c.red));
    EXPECT_THAT(Component(setting, pixels, c.row, 1), ElementsAreArray(c.green));
    EXPECT_THAT(Component(setting, pixels, c.row, 0), ElementsAreArray(c.blue));
  }
}

/// A step between columns: the cubic kernel undershoots to 0 and overshoots to the maximum.
TEST(Demosaic, BicubicClampsBesideAStep) {
  const Setting setting{DemosaicMethod::Bicubic, 16, 8};
  std::vector<uint8_t> source;
  for (size_t i = 0; i < 16 * 8; ++i) source.push_back(i % 16 < 8 ? 0 : 255);
  const std::vector<uint8_t> pixels = Demosaiced(setting, source);
  // Red samples stand at even columns. At 5 the far ones are 0 and 255: -(255 >> 3). At 7 the near
  // ones are 0 and 255 and so are the far ones: 31 + 127 - 31. At 9: 63 + 255 - 31, above 255.
  EXPECT_THAT(Component(setting, pixels, 0, 2),
              ElementsAre(0, 0, 0, 0, 0, 0, 0, 127, 255, 255, 255, 255, 255, 255, 255, 255));
}

/// Vertical stripes: green at a red site must come from above and below alone.
TEST(Demosaic, Bilinear3FollowsTheEdge) {
  const Setting setting{DemosaicMethod::Bilinear3, 8, 8};
  std::vector<uint8_t> source;
  for (size_t i = 0; i < 8 * 8; ++i) source.push_back(i % 8 < 4 ? 40 : 200);
  const std::vector<uint8_t> pixels = Demosaiced(setting, source);
  for (size_t component = 0; component < 3; ++component) {
    EXPECT_THAT(Component(setting, pixels, 4, component),
                ElementsAre(40, 40, 40, 40, 200, 200, 200, 200));
  }
}

TEST(Demosaic, FlatImageStaysFlat) {
  for (const DemosaicMethod method :
       {DemosaicMethod::NearestNeighbor, DemosaicMethod::NearestNeighbor2, DemosaicMethod::Bilinear,
        DemosaicMethod::Bilinear2, DemosaicMethod::Bicubic, DemosaicMethod::Bilinear3}) {
    for (const int phase : kPhases) {
      for (const uint16_t value : std::initializer_list<uint16_t>{0, 7, 1000, 4095}) {
        Setting setting{method, 75, 11, phase};
        setting.bits = 12;
        SCOPED_TRACE(setting.Text());
        const std::vector<uint16_t> source(setting.width * setting.height, value);
        const std::vector<uint16_t> pixels = Demosaiced<uint16_t>(setting, source);
        EXPECT_EQ(pixels, std::vector<uint16_t>(pixels.size(), value));
      }
    }
  }
}

/// Exchanging red and blue in the mosaic is exchanging them in the pixels.
TEST(Demosaic, PhasesAndOrdersMirrorEachOther) {
  Random random;
  for (const DemosaicMethod method : kMethods) {
    for (const auto& [one, other] : {std::pair{kRG, kBG}, std::pair{kGR, kGB}}) {
      for (const bool reverse : {false, true}) {
        for (size_t height = 2; height <= 9; ++height) {
          Setting setting{method, 71, height, one, true};
          setting.reverse = reverse;
          Setting mirrored = setting;
          mirrored.phase = other;
          mirrored.isBGR = false;
          const auto source = MakeSource<uint8_t>(setting, Picture::Noise, random);
          EXPECT_EQ(Demosaiced<uint8_t>(setting, source, 99),
                    Demosaiced<uint8_t>(mirrored, source, 99))
              << setting.Text();
        }
      }
    }
  }
}

TEST(Demosaic, OtherPhasesLeaveTheDestination) {
  for (const int phase : {0, 1, 6, -1}) {
    const Setting setting{DemosaicMethod::Mono, 4, 4, phase};
    EXPECT_EQ(Demosaiced<uint8_t>(setting, std::vector<uint8_t>(16, 5), 77),
              std::vector<uint8_t>(48, 77));
  }
}

}  // namespace
}  // namespace QvApi::Kernels
