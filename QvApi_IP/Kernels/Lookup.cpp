// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Lookup.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Lookup.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After highway.h, which sets the target.
#include "QvApi_IP/Kernels/ByteTable-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Maps the samples first, first + period, ... through one table. Four loads go before four
/// stores, because the compiler has to assume that a store may change the table.
template <class T, class Entry>
void MapPosition(const Entry* table, T sampleMask, size_t period, size_t first, const T* source,
                 T* destination, size_t count) {
  const auto map = [&](size_t i) { return static_cast<T>(table[source[i] & sampleMask]); };
  size_t i = first;
  for (; i + 3 * period < count; i += 4 * period) {
    const T mapped[4] = {map(i), map(i + period), map(i + 2 * period), map(i + 3 * period)};
    for (size_t k = 0; k < 4; ++k) destination[i + k * period] = mapped[k];
  }
  for (; i < count; i += period) destination[i] = map(i);
}

template <class T>
void CopyPosition(size_t period, size_t first, const T* source, T* destination, size_t count) {
  if (source == destination) return;
  for (size_t i = first; i < count; i += period) destination[i] = source[i];
}

/// The road for every pattern: one walk over the line for each position.
void MapPositions(const PreparedLookup<uint8_t>& lookup, const uint8_t* source,
                  uint8_t* destination, size_t count) {
  for (size_t p = 0; p < lookup.period; ++p) {
    const uint8_t k = lookup.tableAt[p];
    if (k == lookup.kKeep) {
      CopyPosition(lookup.period, p, source, destination, count);
    } else {
      MapPosition(lookup.tables[k].data(), uint8_t{0xFF}, lookup.period, p, source, destination,
                  count);
    }
  }
}

void MapPositions(const PreparedLookup<uint16_t>& lookup, const uint16_t* source,
                  uint16_t* destination, size_t count) {
  for (size_t p = 0; p < lookup.period; ++p) {
    if (lookup.tables[p] == nullptr) {
      CopyPosition(lookup.period, p, source, destination, count);
    } else {
      MapPosition(lookup.tables[p], lookup.sampleMask, lookup.period, p, source, destination,
                  count);
    }
  }
}

#if HWY_TARGET == HWY_AVX3_DL

/// Maps a line by `step(offset, lanes)`, which handles 64 samples or those in `lanes`. Whole
/// vectors lie aligned in the destination: lines rarely start there, and stores that cross a cache
/// line cost a sixth of the speed.
template <class Step>
HWY_INLINE void WalkLine(const uint8_t* destination, size_t count, Step step) {
  const size_t toAligned = -reinterpret_cast<uintptr_t>(destination) % 64;
  size_t i = std::min(toAligned, count);
  if (i != 0) step(size_t{0}, (uint64_t{1} << i) - 1);
  for (; i + 64 <= count; i += 64) step(i, ~uint64_t{0});
  if (i < count) step(i, (uint64_t{1} << (count - i)) - 1);
}

void MapOneTable(const PreparedLookup<uint8_t>& lookup, const uint8_t* source, uint8_t* destination,
                 size_t count) {
  const ByteTable table(lookup.tables[0].data());
  WalkLine(destination, count, [&](size_t i, uint64_t lanes) HWY_ATTR {
    const __m512i samples = _mm512_maskz_loadu_epi8(lanes, source + i);
    _mm512_mask_storeu_epi8(destination + i, lanes, table(samples));
  });
}

/// kTables tables, each serving the samples that are its users; the rest keeps its value.
template <size_t kTables>
void MapTables(const PreparedLookup<uint8_t>& lookup, const uint8_t* source, uint8_t* destination,
               size_t count) {
  const ByteTable first(lookup.tables[0].data());
  const ByteTable second(lookup.tables[kTables > 1 ? 1 : 0].data());
  const ByteTable third(lookup.tables[kTables > 2 ? 2 : 0].data());
  const auto& users = lookup.users;
  WalkLine(destination, count, [&](size_t i, uint64_t lanes) HWY_ATTR {
    const size_t place = i % kLookupCycle;
    const __m512i samples = _mm512_maskz_loadu_epi8(lanes, source + i);
    __m512i mapped = _mm512_mask_mov_epi8(samples, users[0][place], first(samples));
    if constexpr (kTables > 1) {
      mapped = _mm512_mask_mov_epi8(mapped, users[1][place], second(samples));
    }
    if constexpr (kTables > 2) {
      mapped = _mm512_mask_mov_epi8(mapped, users[2][place], third(samples));
    }
    _mm512_mask_storeu_epi8(destination + i, lanes, mapped);
  });
}

void MapLine(const PreparedLookup<uint8_t>& lookup, const uint8_t* source, uint8_t* destination,
             size_t count) {
  if (lookup.tableCount == 1 && lookup.period == 1) {
    MapOneTable(lookup, source, destination, count);
  } else if (lookup.tableCount == 1) {
    MapTables<1>(lookup, source, destination, count);
  } else if (lookup.tableCount == 2) {
    MapTables<2>(lookup, source, destination, count);
  } else if (lookup.tableCount == 3) {
    MapTables<3>(lookup, source, destination, count);
  } else {
    MapPositions(lookup, source, destination, count);
  }
}

#elif HWY_TARGET <= HWY_AVX2

/// Maps whole vectors through the one table and returns how many samples that were. The table lies
/// in 16 pieces of 16 entries. A byte shuffle gives 0 for a negative index, so with each piece
/// xored with the one before, and 16 subtracted from the indices before each further piece, the
/// pieces up to the right one add up to its entry. Saturation keeps negative indices negative.
size_t MapVectors(const uint8_t* table, const uint8_t* source, uint8_t* destination, size_t count) {
  const hn::ScalableTag<uint8_t> d;
  const hn::RebindToSigned<decltype(d)> di;
  constexpr size_t kPieces = 8;  // in each half of the table
  hn::Vec<decltype(di)> lower[kPieces], upper[kPieces];
  for (size_t k = 0; k < kPieces; ++k) {
    const uint8_t* piece = table + 16 * k;
    const auto difference = [&](const uint8_t* p) HWY_ATTR {
      const auto entries = hn::LoadDup128(d, p);
      return hn::BitCast(di, k == 0 ? entries : hn::Xor(entries, hn::LoadDup128(d, p - 16)));
    };
    lower[k] = difference(piece);
    upper[k] = difference(piece + 128);
  }
  const auto sixteen = hn::Set(di, int8_t{16});
  const size_t n = hn::Lanes(d);
  size_t i = 0;
  for (; i + n <= count; i += n) {
    auto low = hn::BitCast(di, hn::LoadU(d, source + i));
    auto high = hn::Xor(low, hn::Set(di, int8_t{-128}));
    auto fromLower = hn::TableLookupBytesOr0(lower[0], low);
    auto fromUpper = hn::TableLookupBytesOr0(upper[0], high);
    for (size_t k = 1; k < kPieces; ++k) {
      low = hn::SaturatedSub(low, sixteen);
      high = hn::SaturatedSub(high, sixteen);
      fromLower = hn::Xor(fromLower, hn::TableLookupBytesOr0(lower[k], low));
      fromUpper = hn::Xor(fromUpper, hn::TableLookupBytesOr0(upper[k], high));
    }
    hn::StoreU(hn::BitCast(d, hn::Xor(fromLower, fromUpper)), d, destination + i);
  }
  return i;
}

/// Shuffles pay for a single table only; several tables are faster read from memory.
void MapLine(const PreparedLookup<uint8_t>& lookup, const uint8_t* source, uint8_t* destination,
             size_t count) {
  size_t done = 0;
  if (lookup.tableCount == 1 && lookup.period == 1) {
    done = MapVectors(lookup.tables[0].data(), source, destination, count);
  }
  MapPositions(lookup, source + done, destination + done, count - done);
}

#else

void MapLine(const PreparedLookup<uint8_t>& lookup, const uint8_t* source, uint8_t* destination,
             size_t count) {
  MapPositions(lookup, source, destination, count);
}

#endif

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

/// Maps eight samples, sample j through tables[(kFirst + j) % kPeriod]. Tables of 16-bit entries
/// stay in the first-level cache, so what costs is taking indices out and putting entries
/// together: two indices to a load, and entries inserted straight from memory.
template <size_t kPeriod, size_t kFirst>
HWY_INLINE void MapEight(const std::array<const uint16_t*, kMaxLookupPeriod>& tables,
                         uint32_t pairMask, const uint16_t* source, uint16_t* destination) {
  uint32_t pairs[4];
  for (size_t k = 0; k < 4; ++k) {
    std::memcpy(&pairs[k], source + 2 * k, sizeof(pairs[k]));
    pairs[k] &= pairMask;
  }
  const auto entry = [&](size_t j, uint32_t index) {
    return tables[(kFirst + j) % kPeriod][index];
  };
  __m128i mapped = _mm_cvtsi32_si128(entry(0, pairs[0] & 0xFFFF));
  mapped = _mm_insert_epi16(mapped, entry(1, pairs[0] >> 16), 1);
  mapped = _mm_insert_epi16(mapped, entry(2, pairs[1] & 0xFFFF), 2);
  mapped = _mm_insert_epi16(mapped, entry(3, pairs[1] >> 16), 3);
  mapped = _mm_insert_epi16(mapped, entry(4, pairs[2] & 0xFFFF), 4);
  mapped = _mm_insert_epi16(mapped, entry(5, pairs[2] >> 16), 5);
  mapped = _mm_insert_epi16(mapped, entry(6, pairs[3] & 0xFFFF), 6);
  mapped = _mm_insert_epi16(mapped, entry(7, pairs[3] >> 16), 7);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), mapped);
}

/// Maps whole periods in groups of eight samples and returns how many samples that were.
template <size_t kPeriod>
size_t MapGroups(const PreparedLookup<uint16_t>& lookup, const uint16_t* source,
                 uint16_t* destination, size_t count) {
  const auto tables = lookup.tables;
  const uint32_t pairMask = lookup.sampleMask * 0x10001u;
  size_t i = 0;
  if constexpr (kPeriod == 3) {
    for (; i + 24 <= count; i += 24) {
      MapEight<3, 0>(tables, pairMask, source + i, destination + i);
      MapEight<3, 2>(tables, pairMask, source + i + 8, destination + i + 8);
      MapEight<3, 1>(tables, pairMask, source + i + 16, destination + i + 16);
    }
  } else {
    for (; i + 8 <= count; i += 8) {
      MapEight<kPeriod, 0>(tables, pairMask, source + i, destination + i);
    }
  }
  return i;
}

#else

/// Elsewhere the road for every pattern serves.
template <size_t kPeriod>
size_t MapGroups(const PreparedLookup<uint16_t>&, const uint16_t*, uint16_t*, size_t) {
  return 0;
}

#endif

void MapWords(const PreparedLookup<uint16_t>& lookup, const uint16_t* source, uint16_t* destination,
              size_t count) {
  const auto& tables = lookup.tables;
  size_t done = 0;
  if (std::find(tables.begin(), tables.begin() + lookup.period, nullptr) ==
      tables.begin() + lookup.period) {
    if (lookup.period == 1) done = MapGroups<1>(lookup, source, destination, count);
    if (lookup.period == 2) done = MapGroups<2>(lookup, source, destination, count);
    if (lookup.period == 3) done = MapGroups<3>(lookup, source, destination, count);
  }
  MapPositions(lookup, source + done, destination + done, count - done);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(MapLine);
HWY_EXPORT(MapWords);

namespace {

/// One table for all is a pattern of period 1, whatever the caller made of it.
size_t ShortestPeriod(const LookupPattern& pattern) {
  const auto begin = pattern.tables.begin();
  const auto end = begin + pattern.period;
  const bool same = std::all_of(begin, end, [&](auto* table) { return table == *begin; });
  return same ? 1 : pattern.period;
}

/// For each place in the cycle, the samples from there on that are at one of `positions`.
std::array<uint64_t, kLookupCycle> UsersFrom(uint32_t positions, size_t period) {
  uint64_t cycle = 0;
  for (size_t i = 0; i < kLookupCycle; i += period) cycle |= uint64_t{positions} << i;
  std::array<uint64_t, kLookupCycle> users{};
  for (size_t i = 0; i < kLookupCycle; ++i) {
    const uint64_t turned = (cycle | cycle << kLookupCycle) >> i & 0xFFF;
    for (size_t bit = 0; bit < 64; bit += kLookupCycle) users[i] |= turned << bit;
  }
  return users;
}

}  // namespace

PreparedLookup<uint8_t>::PreparedLookup(const LookupPattern& pattern, unsigned bits)
    : period(ShortestPeriod(pattern)) {
  const size_t sampleMask = (size_t{1} << std::min(bits, 8u)) - 1;
  tableAt.fill(kKeep);
  for (size_t p = 0; p < period; ++p) {
    const uint16_t* table = pattern.tables[p];
    if (table == nullptr || tableAt[p] != kKeep) continue;
    uint32_t positions = 0;
    for (size_t q = p; q < period; ++q) {
      if (pattern.tables[q] != table) continue;
      positions |= 1u << q;
      tableAt[q] = static_cast<uint8_t>(tableCount);
    }
    for (size_t x = 0; x < 256; ++x) {
      tables[tableCount][x] = static_cast<uint8_t>(table[x & sampleMask]);
    }
    users[tableCount] = UsersFrom(positions, period);
    ++tableCount;
  }
}

PreparedLookup<uint16_t>::PreparedLookup(const LookupPattern& pattern, unsigned bits)
    : period(ShortestPeriod(pattern)),
      tables(pattern.tables),
      sampleMask(static_cast<uint16_t>((1u << std::min(bits, 16u)) - 1)) {}

void LookupLine(const PreparedLookup<uint8_t>& lookup, const uint8_t* source, uint8_t* destination,
                size_t count) {
  HWY_DYNAMIC_DISPATCH(MapLine)(lookup, source, destination, count);
}

void LookupLine(const PreparedLookup<uint16_t>& lookup, const uint16_t* source,
                uint16_t* destination, size_t count) {
  HWY_DYNAMIC_DISPATCH(MapWords)(lookup, source, destination, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
