// SPDX-License-Identifier: MIT
#include "QvApi_IP/ColorMap.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <vector>

namespace QvApi {
namespace {

using Table = std::vector<unsigned int>;

Table MapOf(EQvColorMapType_t type, bool inversion, int phase) {
  Table table(256 + 2, 0xDEADBEEF);
  SetColorMap(table.data() + 1, type, inversion, phase);
  EXPECT_EQ(table.front(), 0xDEADBEEF);
  EXPECT_EQ(table.back(), 0xDEADBEEF);
  return {table.begin() + 1, table.end() - 1};
}

/// The circle of hues from blue over green and red: courses of red, green and blue per sixth, full,
/// rising or falling.
Table Hues(const std::vector<unsigned>& lengths, unsigned step) {
  constexpr const char* kCourses[] = {"0+f", "0f-", "+f0", "f-0", "f0+", "-0f"};
  Table ring;
  for (std::size_t sixth = 0; sixth < 6; ++sixth)
    for (unsigned j = 0; j < lengths[sixth]; ++j) {
      unsigned color = 0;
      for (int c = 0; c < 3; ++c) {
        const char course = kCourses[sixth][c];
        const unsigned i = step * j;
        color = color << 8 | (course == 'f'   ? 255
                              : course == '+' ? i
                              : course == '-' ? 255 - i
                                              : 0);
      }
      ring.push_back(color);
    }
  return ring;
}

Table RingOf(EQvColorMapType_t type) {
  if (type == QvColorMapType_PseudoColor_BGR) return Hues({64, 64, 64, 64, 64, 64}, 4);
  Table ring;
  if (type == QvColorMapType_PseudoColor_BGRB) {
    ring = Hues({42, 43, 43, 43, 42, 42}, 6);
    ring.push_back(0x0000FF);  // closed by the colour that it began with
  } else {
    for (unsigned i = 0; i < 256; ++i) ring.push_back(i * 0x010101);
  }
  return ring;
}

TEST(ColorMap, TurnsAndReversesTheRingOfItsType) {
  const int phases[] = {0,    1,     10,      127,         128,     254,        255,
                        256,  257,   1000,    -1,          -10,     -255,       -256,
                        -257, -1000, INT_MAX, INT_MAX - 1, INT_MIN, INT_MIN + 1};
  for (unsigned number : {0U, 1U, 2U, 3U, 77U}) {
    const auto type = static_cast<EQvColorMapType_t>(number);
    const Table ring = RingOf(type);
    const auto size = static_cast<long>(ring.size());
    for (int phase : phases)
      for (bool inversion : {false, true}) {
        // The remainder of a negative phase too, so that -1 begins at 255.
        const long turn = ((phase % 256L) + 256) % 256;
        Table expected;
        for (long k = 0; k < 256; ++k) {
          const long place = inversion ? 255 - turn - k : turn + k;
          expected.push_back(ring[static_cast<std::size_t>((place + size) % size)]);
        }
        EXPECT_EQ(MapOf(type, inversion, phase), expected) << number << inversion << phase;
      }
  }
}

}  // namespace
}  // namespace QvApi
