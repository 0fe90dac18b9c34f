// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/BitPacking.h"

// The kernels have code of their own for this target, so it is tested too.
#ifndef HWY_WANT_AVX3_DL
#define HWY_WANT_AVX3_DL
#endif
#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/BitPackingScalar.h"

namespace QvApi::Kernels {
namespace {

using Kind = PackedLayout::Kind;

/// Samples are random over 16 bits, so most of them are above their depth.
TEST(BitPacking, AgreesWithScalar) {
  std::vector<PackedLayout> layouts{{Kind::Gev, 10}, {Kind::Gev, 12}};
  for (unsigned bits = 1; bits <= 15; ++bits) layouts.push_back({Kind::Lsb, bits});
  ForEachLine([&](size_t count, size_t slack) {
    for (const PackedLayout& layout : layouts) {
      SCOPED_TRACE((layout.kind == Kind::Gev ? "three bytes, " : "stream, ") +
                   std::to_string(layout.bits));
      TwinLine<uint8_t> line(layout.Bytes(count), slack, 1), high(count, slack, 2);
      TwinLine<uint16_t> samples(count, slack, 3);
      UnpackSamples(layout, line.vector(), samples.vector(), count);
      Scalar::UnpackSamples(layout, line.scalar(), samples.scalar(), count);
      samples.Check();
      if (layout.bits >= 8) {
        UnpackHighBytes(layout, line.vector(), high.vector(), count);
        Scalar::UnpackHighBytes(layout, line.scalar(), high.scalar(), count);
        high.Check();
      }
      TwinLine<uint16_t> source(count, slack, 5);
      PackSamples(layout, source.vector(), line.vector(), count);
      Scalar::PackSamples(layout, source.scalar(), line.scalar(), count);
      line.Check();
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
