// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/DepthChange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/DepthChangeScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAreArray;

std::vector<uint16_t> AllSamples(unsigned bits) {
  std::vector<uint16_t> samples(size_t{1} << bits);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<uint16_t>(i);
  return samples;
}

/// Checks every sample of the source depth on every instruction set, in 16-bit words.
template <class Expected>
void CheckAllSamples(const DepthChange& change, unsigned bits, Expected expected) {
  const std::vector<uint16_t> samples = AllSamples(bits);
  std::vector<uint16_t> result(samples.size());
  ChangeDepth(change, samples.data(), result.data(), samples.size());
  for (size_t x = 0; x < samples.size(); ++x) {
    ASSERT_EQ(result[x], expected(static_cast<unsigned>(x))) << "sample " << x;
    ASSERT_EQ(Scalar::ChangedSample(change, static_cast<uint32_t>(x)), result[x]) << x;
  }
}

// The arithmetic stands for tables that are made in floating point, entry by entry.
TEST(DepthChange, EveryPairOfDepthsIsExactForEverySample) {
  ForEachTarget([](const std::string&) {
    for (unsigned from = 1; from <= 16; ++from) {
      for (unsigned to = 1; to <= 16; ++to) {
        SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
        const double fromMaximum = std::ldexp(1.0, static_cast<int>(from)) - 1;
        const double toMaximum = std::ldexp(1.0, static_cast<int>(to)) - 1;
        if (to <= from) {
          CheckAllSamples(DepthChange::CutOff(from, to), from,
                          [&](unsigned x) { return x >> (from - to); });
        } else {
          CheckAllSamples(DepthChange::Stretch(from, to), from, [&](unsigned x) {
            return static_cast<unsigned>(std::fma(x / fromMaximum, toMaximum, 0.5));
          });
          const unsigned low = (1u << (to - from)) - 1;
          CheckAllSamples(DepthChange::ShiftLeft(from, to - from, low), from,
                          [&](unsigned x) { return x << (to - from) | low; });
          CheckAllSamples(DepthChange::ShiftLeft(from, to - from, 0), from,
                          [&](unsigned x) { return x << (to - from); });
          CheckAllSamples(DepthChange::Relabel(from), from, [&](unsigned x) { return x; });
        }
        if (::testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

struct NamedChange {
  const char* name;
  DepthChange change;
  bool fitsByte;
};

/// Samples are random over all bits of their type, so most of them are above their depth.
template <class S, class D>
void CompareWithScalar(const NamedChange& named, size_t count, size_t slack) {
  if (sizeof(D) == 1 && !named.fitsByte) return;
  SCOPED_TRACE(std::string(named.name) + ", count " + std::to_string(count));
  GuardedLine<S> source(count, slack);
  source.FillRandom(static_cast<uint32_t>(count));
  GuardedLine<D> destination(count, (slack + 5) % 64);
  std::vector<D> expected(count);
  Scalar::ChangeDepth(named.change, source.data(), expected.data(), count);
  ChangeDepth(named.change, source.data(), destination.data(), count);
  ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
  ASSERT_TRUE(source.SurroundingsIntact());
  ASSERT_TRUE(destination.SurroundingsIntact());
}

TEST(DepthChange, EveryWidthAndAlignmentAgreesWithScalar) {
  std::vector<uint16_t> bytes(16), words(256), deep(4096);
  for (size_t i = 0; i < deep.size(); ++i) deep[i] = static_cast<uint16_t>(i * 37 & 0xFF);
  for (size_t i = 0; i < words.size(); ++i) words[i] = static_cast<uint16_t>(i * 0x9E37);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint16_t>(255 - 9 * i);
  const NamedChange changes[] = {
      {"keep", DepthChange::Keep(8), true},
      {"cut off", DepthChange::CutOff(12, 8), true},
      {"stretch to words", DepthChange::Stretch(8, 12), false},
      {"stretch to bytes", DepthChange::Stretch(4, 8), true},
      {"stretch with a fraction", DepthChange::Stretch(10, 16), false},
      {"low ones", DepthChange::ShiftLeft(8, 4, 15), false},
      {"table of 4 bits", DepthChange::ThroughTable(bytes.data(), 4), true},
      {"table of words", DepthChange::ThroughTable(words.data(), 8), false},
      {"table of 12 bits", DepthChange::ThroughTable(deep.data(), 12), true},
  };
  ForEachTarget([&](const std::string&) {
    for (const NamedChange& named : changes) {
      for (size_t i = 0; i < 210 + 64; ++i) {
        const size_t count = i < 210 ? i : 131 + i % 3;
        const size_t slack = i < 210 ? 0 : i - 210;
        CompareWithScalar<uint8_t, uint8_t>(named, count, slack);
        CompareWithScalar<uint8_t, uint16_t>(named, count, slack);
        CompareWithScalar<uint16_t, uint8_t>(named, count, slack);
        CompareWithScalar<uint16_t, uint16_t>(named, count, slack);
        if (::testing::Test::HasFatalFailure()) return;
      }
      CompareWithScalar<uint16_t, uint8_t>(named, 3000, 1);  // more than one piece of a line
      CompareWithScalar<uint8_t, uint16_t>(named, 3000, 1);
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
