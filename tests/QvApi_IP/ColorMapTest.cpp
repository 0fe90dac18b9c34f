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

/// One component along a run: nothing, full, rising or falling.
unsigned Component(char course, unsigned i) {
  switch (course) {
    case 'f':
      return 255;
    case '+':
      return i;
    case '-':
      return 255 - i;
    default:
      return 0;
  }
}

/// The circle of hues from blue over green and red: courses of red, green and blue per sixth.
Table Hues(const std::vector<std::size_t>& lengths, unsigned step) {
  constexpr const char* kCourses[] = {"0+f", "0f-", "+f0", "f-0", "f0+", "-0f"};
  Table ring;
  for (std::size_t sixth = 0; sixth < 6; ++sixth)
    for (unsigned j = 0; j < lengths[sixth]; ++j) {
      const auto component = [&](int c) { return Component(kCourses[sixth][c], step * j); };
      ring.push_back(component(0) << 16 | component(1) << 8 | component(2));
    }
  return ring;
}

Table RingOf(EQvColorMapType_t type) {
  if (type == QvColorMapType_PseudoColor_BGR) return Hues({64, 64, 64, 64, 64, 64}, 4);
  if (type == QvColorMapType_PseudoColor_BGRB) {
    Table ring = Hues({42, 43, 43, 43, 42, 42}, 6);
    ring.push_back(0x0000FF);  // closed by the colour that it began with
    return ring;
  }
  Table ring;
  for (unsigned i = 0; i < 256; ++i) ring.push_back(i << 16 | i << 8 | i);
  return ring;
}

TEST(ColorMap, TurnsAndReversesTheRingOfItsType) {
  const int phases[] = {0,    1,     10,      127,         128,     254,        255,
                        256,  257,   1000,    -1,          -10,     -255,       -256,
                        -257, -1000, INT_MAX, INT_MAX - 1, INT_MIN, INT_MIN + 1};
  for (unsigned type : {0U, 1U, 2U, 3U, 77U}) {
    const Table ring = RingOf(static_cast<EQvColorMapType_t>(type));
    const auto size = static_cast<long>(ring.size());
    for (int phase : phases)
      for (bool inversion : {false, true}) {
        // The remainder of a negative phase too, so that -1 begins at 255.
        const long turn = ((phase % 256L) + 256) % 256;
        const long start = inversion ? 255 - turn : turn;
        Table expected;
        for (long k = 0; k < 256; ++k)
          expected.push_back(
              ring[static_cast<std::size_t>((start + (inversion ? -k : k) + size) % size)]);
        EXPECT_EQ(MapOf(static_cast<EQvColorMapType_t>(type), inversion, phase), expected)
            << type << ' ' << inversion << ' ' << phase;
      }
  }
}

TEST(ColorMap, GivesTheColorsWorkedOutByHand) {
  constexpr struct {
    EQvColorMapType_t type;
    bool inversion;
    int phase;
    std::size_t index;
    unsigned color;
  } kCases[] = {
      {QvColorMapType_Normal, false, 0, 200, 0xC8C8C8},
      {QvColorMapType_Normal, true, 0, 200, 0x373737},
      {QvColorMapType_Normal, false, 10, 245, 0xFFFFFF},
      {QvColorMapType_Normal, false, 10, 246, 0x000000},
      {QvColorMapType_PseudoColor_BGR, false, 0, 0, 0x0000FF},
      {QvColorMapType_PseudoColor_BGR, false, 0, 63, 0x00FCFF},
      {QvColorMapType_PseudoColor_BGR, false, 0, 64, 0x00FFFF},
      {QvColorMapType_PseudoColor_BGR, false, 0, 255, 0xFF0300},
      {QvColorMapType_PseudoColor_BGR, true, 255, 0, 0x0000FF},
      {QvColorMapType_PseudoColor_BGR, true, 255, 1, 0x0300FF},  // entry 383
      {QvColorMapType_PseudoColor_BGRB, false, 0, 84, 0x00FF03},
      {QvColorMapType_PseudoColor_BGRB, false, 0, 127, 0xFCFF00},
      {QvColorMapType_PseudoColor_BGRB, false, 0, 170, 0xFF0300},
      {QvColorMapType_PseudoColor_BGRB, false, 0, 254, 0x0900FF},
      {QvColorMapType_PseudoColor_BGRB, false, 0, 255, 0x0000FF},
  };
  for (const auto& row : kCases)
    EXPECT_EQ(MapOf(row.type, row.inversion, row.phase)[row.index], row.color)
        << row.type << ' ' << row.index;
}

}  // namespace
}  // namespace QvApi
