// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Lookup.h"

#include <gmock/gmock.h>

#include <memory>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/LookupScalar.h"

namespace QvApi::Kernels {
namespace {

/// Tables of exactly 2^bits entries on the heap, where a sanitizer sees each index beyond.
std::array<std::vector<uint16_t>, 4> MakeTables(unsigned bits) {
  std::array<std::vector<uint16_t>, 4> tables;
  for (uint32_t k = 0; k < tables.size(); ++k)
    for (uint32_t i = 0; i < 1u << bits; ++i)
      tables[k].push_back(static_cast<uint16_t>((i + 1) * (0x9E3779B1u + 2 * k) >> 11));
  return tables;
}

/// Samples are random over all bits of their type, so most of them are above the smaller depths.
template <class T>
void CompareWithScalar(unsigned bits, size_t count, size_t slack) {
  const auto tables = MakeTables(bits);
  const uint16_t *a = tables[0].data(), *b = tables[1].data(), *c = tables[2].data(),
                 *d = tables[3].data(), *none = nullptr;
  const LookupPattern patterns[]{
      LookupPattern{a},                 // every sample
      LookupPattern{a, a, a},           // one table for three components
      LookupPattern{a, a, a, none},     // colour without alpha
      LookupPattern{a, none, none},     // luminance of 4:4:4
      LookupPattern{a, none},           // of 4:2:2
      LookupPattern{a, a, none},        // of 4:1:1
      LookupPattern{a, b},              // a row of a Bayer mosaic
      LookupPattern{a, b, c},           // three components
      LookupPattern{a, b, c, none},     // and alpha
      LookupPattern{a, b, a, c},        // 4:2:2
      LookupPattern{a, a, b, a, a, c},  // 4:1:1
      LookupPattern{a, b, c, d},        // more tables than registers
      LookupPattern{none},
  };
  for (size_t i = 0; i < std::size(patterns); ++i) {
    SCOPED_TRACE("pattern " + std::to_string(i) + ", bits " + std::to_string(bits));
    const PreparedLookup<T> lookup(patterns[i], bits);
    TwinLine<T> source(count, slack, 1), destination(count, slack, 3);
    LookupLine(lookup, source.vector(), destination.vector(), count);
    Scalar::LookupLine(patterns[i], bits, source.scalar(), destination.scalar(), count);
    destination.Check();
    LookupLine(lookup, source.vector(), source.vector(), count);
    Scalar::LookupLine(patterns[i], bits, source.scalar(), source.scalar(), count);
    source.Check();
  }
}

TEST(Lookup, AgreesWithScalarAndInPlace) {
  ForEachLine([](size_t count, size_t slack) {
    CompareWithScalar<uint8_t>(count % 8 == 1 ? 5 : 8, count, slack);
    CompareWithScalar<uint16_t>(count % 32 == 1 ? 16 : 12, count, slack);
  });
}

TEST(Lookup, PreparedBytesDoNotNeedTheirTablesAnyMore) {
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
