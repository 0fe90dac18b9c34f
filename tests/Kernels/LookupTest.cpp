// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Lookup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/LookupScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

/// Tables of exactly 2^bits entries on the heap, where a sanitizer sees each index beyond.
class Tables {
 public:
  explicit Tables(unsigned bits) {
    const size_t count = size_t{1} << bits;
    for (uint32_t k = 0; k < 4; ++k) {
      m_tables.emplace_back(count);
      for (size_t i = 0; i < count; ++i) {
        m_tables[k][i] = static_cast<uint16_t>((i + 1) * (0x9E3779B1u + 2 * k) >> 11);
      }
    }
  }
  const uint16_t* operator[](size_t k) const { return m_tables[k].data(); }

 private:
  std::vector<std::vector<uint16_t>> m_tables;
};

struct NamedPattern {
  const char* name;
  LookupPattern pattern;
};

std::vector<NamedPattern> Patterns(const Tables& t) {
  return {{"every sample", LookupPattern{t[0]}},
          {"one table for three components", LookupPattern{t[0], t[0], t[0]}},
          {"colour without alpha", LookupPattern{t[0], t[0], t[0], nullptr}},
          {"luminance of 4:4:4", LookupPattern{t[0], nullptr, nullptr}},
          {"luminance of 4:2:2", LookupPattern{t[0], nullptr}},
          {"luminance of 4:1:1", LookupPattern{t[0], t[0], nullptr}},
          {"Bayer row", LookupPattern{t[0], t[1]}},
          {"three components", LookupPattern{t[0], t[1], t[2]}},
          {"three components and alpha", LookupPattern{t[0], t[1], t[2], nullptr}},
          {"4:2:2", LookupPattern{t[0], t[1], t[0], t[2]}},
          {"4:1:1", LookupPattern{t[0], t[0], t[1], t[0], t[0], t[2]}},
          {"more tables than registers", LookupPattern{t[0], t[1], t[2], t[3]}},
          {"nothing", LookupPattern{static_cast<const uint16_t*>(nullptr)}}};
}

template <class T>
void CompareWithScalar(unsigned bits, bool inPlace, size_t count, size_t slack) {
  const Tables tables(bits);
  for (const NamedPattern& p : Patterns(tables)) {
    SCOPED_TRACE(std::string(p.name) + ", count " + std::to_string(count));
    GuardedLine<T> source(count, slack);
    source.FillRandom(static_cast<uint32_t>(count));
    GuardedLine<T> separate(count, (slack + 5) % 64);
    GuardedLine<T>& destination = inPlace ? source : separate;
    std::vector<T> expected(count);
    Scalar::LookupLine(p.pattern, bits, source.data(), expected.data(), count);

    const PreparedLookup<T> lookup(p.pattern, bits);
    LookupLine(lookup, source.data(), destination.data(), count);

    ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
    ASSERT_TRUE(source.SurroundingsIntact());
    ASSERT_TRUE(separate.SurroundingsIntact());
  }
}

template <class T>
class LookupTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(LookupTest, SampleTypes);

// Samples are random over all bits of their type, so most of them are above the smaller depths.
template <class T>
constexpr std::array<unsigned, 2> kDepths{8, 5};
template <>
constexpr std::array<unsigned, 2> kDepths<uint16_t>{12, 16};

TYPED_TEST(LookupTest, EveryWidthAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t count = 0; count <= 210; ++count) {
      for (bool inPlace : {true, false}) {
        CompareWithScalar<TypeParam>(kDepths<TypeParam>[0], inPlace, count, 0);
        if (::testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TYPED_TEST(LookupTest, EveryAlignmentAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      CompareWithScalar<TypeParam>(kDepths<TypeParam>[0], true, 131 + slack % 3, slack);
      CompareWithScalar<TypeParam>(kDepths<TypeParam>[0], false, 131 + slack % 3, slack);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(LookupTest, OtherDepthMasksSamplesAboveIt) {
  ForEachTarget(
      [](const std::string&) { CompareWithScalar<TypeParam>(kDepths<TypeParam>[1], true, 97, 1); });
}

TEST(LookupByHand, EightBitResultIsTheLowByteOfTheEntry) {
  std::vector<uint16_t> table(256);
  for (size_t i = 0; i < 256; ++i) table[i] = static_cast<uint16_t>(0x1200 + 255 - i);
  ForEachTarget([&](const std::string&) {
    std::vector<uint8_t> line(256);
    for (size_t i = 0; i < 256; ++i) line[i] = static_cast<uint8_t>(i);
    LookupLine(PreparedLookup<uint8_t>(LookupPattern{table.data()}), line.data(), line.data(), 256);
    for (size_t i = 0; i < 256; ++i) ASSERT_EQ(line[i], 255 - i);
  });
}

TEST(LookupByHand, PatternsChooseTableByPosition) {
  std::vector<uint16_t> plus10(256), times2(256);
  for (size_t i = 0; i < 256; ++i) {
    plus10[i] = static_cast<uint16_t>(i + 10);
    times2[i] = static_cast<uint16_t>(2 * i);
  }
  const uint16_t *p = plus10.data(), *t = times2.data();
  const auto map = [](const LookupPattern& pattern) {
    std::vector<uint8_t> line{1, 2, 3, 4, 5, 6, 7, 8};
    LookupLine(PreparedLookup<uint8_t>(pattern), line.data(), line.data(), line.size());
    return line;
  };
  ForEachTarget([&](const std::string&) {
    EXPECT_THAT(map(LookupPattern{p, p, p, nullptr}), ElementsAre(11, 12, 13, 4, 15, 16, 17, 8));
    EXPECT_THAT(map(LookupPattern{p, nullptr}), ElementsAre(11, 2, 13, 4, 15, 6, 17, 8));
    EXPECT_THAT(map(LookupPattern{p, t}), ElementsAre(11, 4, 13, 8, 15, 12, 17, 16));
    EXPECT_THAT(map(LookupPattern{p, nullptr, t}), ElementsAre(11, 2, 6, 14, 5, 12, 17, 8));
  });
}

TEST(LookupByHand, TwelveBitSampleAboveItsDepthIsMasked) {
  std::vector<uint16_t> table(4096);
  for (size_t i = 0; i < 4096; ++i) table[i] = static_cast<uint16_t>(4095 - i);
  ForEachTarget([&](const std::string&) {
    std::vector<uint16_t> line(9, 0x1001);  // one above full scale, and one more bit
    line[8] = 0xFFFF;
    LookupLine(PreparedLookup<uint16_t>(LookupPattern{table.data()}, 12), line.data(), line.data(),
               line.size());
    EXPECT_THAT(line, ElementsAre(4094, 4094, 4094, 4094, 4094, 4094, 4094, 4094, 0));
  });
}

TEST(LookupByHand, PreparedBytesDoNotNeedTheirTablesAnyMore) {
  auto table = std::make_unique<std::vector<uint16_t>>(256, uint16_t{7});
  const PreparedLookup<uint8_t> original(LookupPattern{table->data()});
  const PreparedLookup<uint8_t> copy = original;
  table.reset();
  ForEachTarget([&](const std::string&) {
    std::vector<uint8_t> line(100, 1);
    LookupLine(copy, line.data(), line.data(), line.size());
    EXPECT_THAT(line, ::testing::Each(7));
  });
}

}  // namespace
}  // namespace QvApi::Kernels
