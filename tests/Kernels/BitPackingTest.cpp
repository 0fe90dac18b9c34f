// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/BitPacking.h"

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
#include "QvApi_IP/Kernels/BitPackingScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Kind = PackedLayout::Kind;

const std::vector<PackedLayout> kLayouts = [] {
  std::vector<PackedLayout> layouts{{Kind::Gev, 10}, {Kind::Gev, 12}};
  for (unsigned bits = 1; bits <= 15; ++bits) layouts.push_back({Kind::Lsb, bits});
  return layouts;
}();

std::string NameOf(const PackedLayout& layout) {
  return (layout.kind == Kind::Gev ? "three bytes, " : "stream, ") + std::to_string(layout.bits);
}

void CompareUnpacking(const PackedLayout& layout, size_t count, size_t slack) {
  GuardedLine<uint8_t> line(layout.Bytes(count), slack);
  line.FillRandom(static_cast<uint32_t>(count));

  GuardedLine<uint16_t> samples(count, (slack + 5) % 64);
  std::vector<uint16_t> expected(count);
  Scalar::UnpackSamples(layout, line.data(), expected.data(), count);
  UnpackSamples(layout, line.data(), samples.data(), count);
  ASSERT_THAT(samples.samples(), ElementsAreArray(expected));
  ASSERT_TRUE(samples.SurroundingsIntact());

  if (layout.bits < 8) return;
  GuardedLine<uint8_t> high(count, (slack + 7) % 64);
  std::vector<uint8_t> expectedHigh(count);
  Scalar::UnpackHighBytes(layout, line.data(), expectedHigh.data(), count);
  UnpackHighBytes(layout, line.data(), high.data(), count);
  ASSERT_THAT(high.samples(), ElementsAreArray(expectedHigh));
  ASSERT_TRUE(high.SurroundingsIntact());
}

/// Samples are random over 16 bits, so most of them are above their depth.
void ComparePacking(const PackedLayout& layout, size_t count, size_t slack) {
  GuardedLine<uint16_t> samples(count, (slack + 5) % 64);
  samples.FillRandom(static_cast<uint32_t>(count));
  GuardedLine<uint8_t> line(layout.Bytes(count), slack);
  line.FillRandom(static_cast<uint32_t>(count + 1));
  std::vector<uint8_t> expected(line.samples().begin(), line.samples().end());
  Scalar::PackSamples(layout, samples.data(), expected.data(), count);
  PackSamples(layout, samples.data(), line.data(), count);
  ASSERT_THAT(line.samples(), ElementsAreArray(expected));
  ASSERT_TRUE(line.SurroundingsIntact());
}

template <class Compare>
void ForEachLine(Compare compare) {
  ForEachTarget([&](const std::string&) {
    for (const PackedLayout& layout : kLayouts) {
      for (size_t i = 0; i < 210 + 64; ++i) {
        const size_t count = i < 210 ? i : 131 + i % 3;
        const size_t slack = i < 210 ? 0 : i - 210;
        SCOPED_TRACE(NameOf(layout) + ", count " + std::to_string(count));
        compare(layout, count, slack);
        if (::testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TEST(BitPacking, UnpackingAgreesWithScalar) { ForEachLine(CompareUnpacking); }
TEST(BitPacking, PackingAgreesWithScalar) { ForEachLine(ComparePacking); }

TEST(BitPacking, WhatIsPackedComesBack) {
  for (const PackedLayout& layout : kLayouts) {
    std::vector<uint16_t> samples(97), back(97);
    for (size_t i = 0; i < samples.size(); ++i)
      samples[i] = static_cast<uint16_t>(i * 0x9E37 & ((1u << layout.bits) - 1));
    std::vector<uint8_t> line(layout.Bytes(samples.size()));
    PackSamples(layout, samples.data(), line.data(), samples.size());
    UnpackSamples(layout, line.data(), back.data(), back.size());
    EXPECT_EQ(samples, back) << NameOf(layout);
  }
}

// Bytes as the format documents draw them.
TEST(BitPackingByHand, Layouts) {
  struct {
    PackedLayout layout;
    std::vector<uint16_t> samples;
    std::vector<uint8_t> line;
  } const cases[] = {
      {{Kind::Lsb, 1}, {1, 0, 0, 0, 1, 1, 0, 0, 1}, {0x31, 0x01}},
      {{Kind::Lsb, 2}, {1, 2, 3, 0, 2}, {0x39, 0x02}},
      {{Kind::Lsb, 4}, {0xA, 0xB, 0xC}, {0xBA, 0x0C}},
      {{Kind::Lsb, 10}, {0x3FF, 0, 0x155}, {0xFF, 0x03, 0x50, 0x15}},
      {{Kind::Lsb, 12}, {0xABC, 0x123, 0xFED}, {0xBC, 0x3A, 0x12, 0xED, 0x0F}},
      {{Kind::Lsb, 14}, {0x3FFF, 0, 0x2001}, {0xFF, 0x3F, 0x00, 0x10, 0x00, 0x02}},
      {{Kind::Gev, 12}, {0xABC, 0x123}, {0xAB, 0x3C, 0x12}},
      {{Kind::Gev, 10}, {0x3FD, 0x0AB}, {0xFF, 0x31, 0x2A}},
      {{Kind::Gev, 12}, {0xABC, 0x123, 0xFED}, {0xAB, 0x3C, 0x12, 0xFE, 0x0D}},
  };
  ForEachTarget([&](const std::string&) {
    for (const auto& c : cases) {
      SCOPED_TRACE(NameOf(c.layout));
      ASSERT_EQ(c.layout.Bytes(c.samples.size()), c.line.size());
      std::vector<uint8_t> line(c.line.size());
      PackSamples(c.layout, c.samples.data(), line.data(), c.samples.size());
      EXPECT_EQ(line, c.line);
      std::vector<uint16_t> samples(c.samples.size());
      UnpackSamples(c.layout, c.line.data(), samples.data(), samples.size());
      EXPECT_EQ(samples, c.samples);
    }
  });
}

TEST(BitPackingByHand, OddLastSampleOfThreeBytesKeepsTheUpperNibble) {
  const uint16_t sample = 0xABC;
  ForEachTarget([&](const std::string&) {
    std::vector<uint8_t> line{0x55, 0x55, 0x55};
    PackSamples({Kind::Gev, 12}, &sample, line.data(), 1);
    EXPECT_THAT(line, ElementsAre(0xAB, 0x5C, 0x55));
  });
}

}  // namespace
}  // namespace QvApi::Kernels
