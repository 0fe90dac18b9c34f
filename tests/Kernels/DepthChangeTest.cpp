// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/DepthChange.h"

#include <cmath>
#include <numeric>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/DepthChangeScalar.h"

namespace QvApi::Kernels {
namespace {

/// Checks every sample of the source depth, in 16-bit words.
template <class Expected>
void CheckAllSamples(const DepthChange& change, unsigned bits, Expected expected) {
  std::vector<uint16_t> samples(size_t{1} << bits), result(samples.size());
  std::iota(samples.begin(), samples.end(), uint16_t{0});
  ChangeDepth(change, samples.data(), result.data(), samples.size());
  for (unsigned x = 0; x < samples.size(); ++x) {
    ASSERT_EQ(result[x], expected(x)) << "sample " << x;
    ASSERT_EQ(Scalar::ChangedSample(change, x), result[x]) << "sample " << x;
  }
}

// The arithmetic stands for tables that are made in floating point, entry by entry.
TEST(DepthChange, EveryPairOfDepthsIsExactForEverySample) {
  ForEachTarget([](const std::string&) {
    for (unsigned from = 1; from <= 16; ++from)
      for (unsigned to = 1; to <= 16; ++to) {
        SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
        if (to <= from) {
          CheckAllSamples(DepthChange::CutOff(from, to), from,
                          [&](unsigned x) { return x >> (from - to); });
          continue;
        }
        const double fromMaximum = (1u << from) - 1, toMaximum = (1u << to) - 1;
        CheckAllSamples(DepthChange::Stretch(from, to), from, [&](unsigned x) {
          return static_cast<unsigned>(std::fma(x / fromMaximum, toMaximum, 0.5));
        });
        for (unsigned low : {0u, (1u << (to - from)) - 1})
          CheckAllSamples(DepthChange::ShiftLeft(from, to - from, low), from,
                          [&](unsigned x) { return x << (to - from) | low; });
        CheckAllSamples(DepthChange::Relabel(from), from, [&](unsigned x) { return x; });
        if (::testing::Test::HasFatalFailure()) return;
      }
  });
}

/// Samples are random over all bits of their type, so most of them are above their depth.
template <class S, class D>
void CompareWithScalar(const DepthChange& change, size_t count, size_t slack) {
  TwinLine<S> source(count, slack, 1);
  TwinLine<D> destination(count, slack, 3);
  ChangeDepth(change, source.vector(), destination.vector(), count);
  Scalar::ChangeDepth(change, source.scalar(), destination.scalar(), count);
  destination.Check();
}

TEST(DepthChange, AgreesWithScalar) {
  std::vector<uint16_t> bytes(4096), words(256);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint16_t>(i * 37 & 0xFF);
  for (size_t i = 0; i < words.size(); ++i) words[i] = static_cast<uint16_t>(i * 0x9E37);
  const std::vector toBytes{DepthChange::Keep(8), DepthChange::CutOff(12, 8),
                            DepthChange::Stretch(4, 8), DepthChange::ThroughTable(&bytes[7], 4),
                            DepthChange::ThroughTable(bytes.data(), 12)};
  const std::vector toWords{DepthChange::Stretch(8, 12), DepthChange::Stretch(10, 16),
                            DepthChange::ShiftLeft(8, 4, 15),
                            DepthChange::ThroughTable(words.data(), 8)};
  const auto check = [&](size_t count, size_t slack) {
    for (const auto* changes : {&toBytes, &toWords})
      for (const DepthChange& change : *changes) {
        CompareWithScalar<uint8_t, uint16_t>(change, count, slack);
        CompareWithScalar<uint16_t, uint16_t>(change, count, slack);
      }
    for (const DepthChange& change : toBytes) {
      CompareWithScalar<uint8_t, uint8_t>(change, count, slack);
      CompareWithScalar<uint16_t, uint8_t>(change, count, slack);
    }
  };
  ForEachLine(check);
  check(3000, 1);  // more than one piece of a line
}

}  // namespace
}  // namespace QvApi::Kernels
