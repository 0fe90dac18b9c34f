// SPDX-License-Identifier: MIT
#include "QvApi_IP/ColorMap.h"

#include <array>
#include <cstddef>
#include <span>

namespace QvApi {
namespace {

constexpr std::size_t kEntries = 256;

/// Entries at equal steps.
struct Run {
  unsigned first;
  int step;
  std::size_t count;
};

// Colours are 0xRRGGBB; in each run one component rises or falls.
constexpr Run kNormal[] = {{0x000000, +0x010101, kEntries}};
constexpr Run kPseudoColorBGR[] = {
    {0x0000FF, +0x000400, 64},  // blue to cyan
    {0x00FFFF, -0x000004, 64},  // cyan to green
    {0x00FF00, +0x040000, 64},  // green to yellow
    {0xFFFF00, -0x000400, 64},  // yellow to red
    {0xFF0000, +0x000004, 64},  // red to magenta
    {0xFF00FF, -0x040000, 64},  // magenta to blue
};
// The single entries fill up to 256, which six equal runs do not give.
constexpr Run kPseudoColorBGRB[] = {
    {0x0000FF, +0x000600, 42},                    // blue to cyan
    {0x00FFFF, -0x000006, 42}, {0x00FF03, 0, 1},  // cyan to green
    {0x00FF00, +0x060000, 42}, {0xFCFF00, 0, 1},  // green to yellow
    {0xFFFF00, -0x000600, 42}, {0xFF0300, 0, 1},  // yellow to red
    {0xFF0000, +0x000006, 42},                    // red to magenta
    {0xFF00FF, -0x060000, 42}, {0x0000FF, 0, 1},  // magenta to blue
};

constexpr std::size_t CountOf(std::span<const Run> runs) {
  std::size_t count = 0;
  for (const Run& run : runs) count += run.count;
  return count;
}

/// The ring of colours that the runs make one after the other.
template <const auto& runs>
constexpr auto MakeRing() {
  std::array<unsigned, CountOf(runs)> ring{};
  auto* entry = ring.data();
  for (const Run& run : runs)
    for (std::size_t i = 0; i < run.count; ++i)
      *entry++ = run.first + static_cast<unsigned>(run.step) * static_cast<unsigned>(i);
  return ring;
}

template <const auto& runs>
constexpr auto kRing = MakeRing<runs>();

static_assert(kRing<kNormal>.size() == kEntries && kRing<kPseudoColorBGR>.size() == 384 &&
              kRing<kPseudoColorBGRB>.size() == kEntries);

std::span<const unsigned> RingOf(EQvColorMapType_t type) {
  switch (type) {
    case QvColorMapType_PseudoColor_BGR:
      return kRing<kPseudoColorBGR>;
    case QvColorMapType_PseudoColor_BGRB:
      return kRing<kPseudoColorBGRB>;
    default:
      return kRing<kNormal>;
  }
}

}  // namespace

void SetColorMap(unsigned int* table, EQvColorMapType_t type, bool inversion, int phase) {
  const std::span<const unsigned> ring = RingOf(type);
  const auto turn = static_cast<unsigned>(phase);
  std::size_t i = (inversion ? ~turn : turn) & (kEntries - 1);
  for (unsigned int& entry : std::span(table, kEntries)) {
    entry = ring[i];
    if (inversion)
      i = (i == 0 ? ring.size() : i) - 1;
    else
      i = i + 1 == ring.size() ? 0 : i + 1;
  }
}

}  // namespace QvApi
