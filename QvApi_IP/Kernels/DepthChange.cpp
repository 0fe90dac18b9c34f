// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/DepthChange.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <type_traits>

#include "QvApi_IP/Kernels/DepthChangeScalar.h"
#include "QvApi_IP/Kernels/Lookup.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/DepthChange.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<uint16_t>;
using WordVector = hn::Vec<Words>;

HWY_INLINE WordVector LoadWords(const uint8_t* source) {
  const Words d;
  return hn::PromoteTo(d, hn::LoadU(hn::Rebind<uint8_t, Words>(), source));
}
HWY_INLINE WordVector LoadWords(const uint16_t* source) { return hn::LoadU(Words(), source); }

HWY_INLINE void StoreWords(WordVector words, uint8_t* destination) {
  const hn::Rebind<uint8_t, Words> d;
  const hn::RebindToSigned<Words> di;
  hn::StoreU(hn::DemoteTo(d, hn::BitCast(di, words)), d, destination);
}
HWY_INLINE void StoreWords(WordVector words, uint16_t* destination) {
  hn::StoreU(words, Words(), destination);
}

/// Whole vectors, the last of which ends with the line and may repeat samples of the one before.
template <class S, class D, class Change>
HWY_INLINE void MapVectors(const S* source, D* destination, size_t count, Change change) {
  const size_t n = hn::Lanes(Words());
  size_t i = 0;
  for (; i + n <= count; i += n) StoreWords(change(LoadWords(source + i)), destination + i);
  if (i < count) StoreWords(change(LoadWords(source + count - n)), destination + count - n);
}

template <class S, class D>
void Calculate(const DepthChange& change, const S* source, D* destination, size_t count) {
  const Words d;
  if (count < hn::Lanes(d)) return Scalar::ChangeDepth(change, source, destination, count);
  const auto mask = hn::Set(d, change.sampleMask);
  const auto multiplier = hn::Set(d, change.multiplier);
  const auto addend = hn::Set(d, change.addend);
  const auto numerator = hn::Set(d, change.numerator);
  const auto half = hn::Set(d, change.half);
  const auto factor = hn::Set(d, change.factor);
  if (change.factor == 0) {
    MapVectors(source, destination, count, [&](WordVector x) HWY_ATTR {
      return hn::Add(hn::Mul(hn::And(x, mask), multiplier), addend);
    });
  } else if (change.multiplier == 0) {
    MapVectors(source, destination, count,
               [&](WordVector x) HWY_ATTR { return hn::MulHigh(hn::And(x, mask), factor); });
  } else {
    MapVectors(source, destination, count, [&](WordVector x) HWY_ATTR {
      x = hn::And(x, mask);
      const auto dividend = hn::Add(hn::Mul(x, numerator), half);
      const auto quotient = hn::ShiftRightSame(hn::MulHigh(dividend, factor), change.shift);
      return hn::Add(hn::Mul(x, multiplier), quotient);
    });
  }
}

/// Only what changes the width of the words.
template <class S, class D>
void Resize(const S* source, D* destination, size_t count) {
  if (count < hn::Lanes(Words())) {
    std::transform(source, source + count, destination, [](S x) { return static_cast<D>(x); });
  } else {
    MapVectors(source, destination, count, [](WordVector x) HWY_ATTR { return x; });
  }
}

void Calculate8To8(const DepthChange& c, const uint8_t* source, uint8_t* destination, size_t n) {
  Calculate(c, source, destination, n);
}
void Calculate8To16(const DepthChange& c, const uint8_t* source, uint16_t* destination, size_t n) {
  Calculate(c, source, destination, n);
}
void Calculate16To8(const DepthChange& c, const uint16_t* source, uint8_t* destination, size_t n) {
  Calculate(c, source, destination, n);
}
void Calculate16To16(const DepthChange& c, const uint16_t* source, uint16_t* destination,
                     size_t n) {
  Calculate(c, source, destination, n);
}
void Widen(const uint8_t* source, uint16_t* destination, size_t n) {
  Resize(source, destination, n);
}
void Narrow(const uint16_t* source, uint8_t* destination, size_t n) {
  Resize(source, destination, n);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Calculate8To8);
HWY_EXPORT(Calculate8To16);
HWY_EXPORT(Calculate16To8);
HWY_EXPORT(Calculate16To16);
HWY_EXPORT(Widen);
HWY_EXPORT(Narrow);

namespace {

uint16_t Maximum(unsigned bits) { return static_cast<uint16_t>((1u << bits) - 1); }

/// Through the table in pieces that stay in the first-level cache: the look-up takes 16-bit samples
/// to 16-bit entries.
template <class S, class D>
void LookUp(const DepthChange& change, const S* source, D* destination, size_t count) {
  const auto bits = static_cast<unsigned>(std::popcount(change.sampleMask));
  const PreparedLookup<uint16_t> lookup(LookupPattern{change.table}, bits);
  constexpr size_t kPiece = 1024;
  alignas(64) uint16_t words[kPiece];
  for (size_t i = 0; i < count; i += kPiece) {
    const size_t n = std::min(kPiece, count - i);
    uint16_t* entries = words;
    if constexpr (std::is_same_v<D, uint16_t>) entries = destination + i;
    if constexpr (std::is_same_v<S, uint16_t>) {
      LookupLine(lookup, source + i, entries, n);
    } else {
      HWY_DYNAMIC_DISPATCH(Widen)(source + i, entries, n);
      LookupLine(lookup, entries, entries, n);
    }
    if constexpr (std::is_same_v<D, uint8_t>)
      HWY_DYNAMIC_DISPATCH(Narrow)(entries, destination + i, n);
  }
}

}  // namespace

DepthChange DepthChange::Keep(unsigned bits) { return {.sampleMask = Maximum(bits)}; }

DepthChange DepthChange::CutOff(unsigned sourceBits, unsigned destinationBits) {
  if (sourceBits <= destinationBits) return Keep(sourceBits);
  return {.sampleMask = Maximum(sourceBits),
          .multiplier = 0,
          .numerator = 1,
          .factor = static_cast<uint16_t>(1u << (16 - (sourceBits - destinationBits))),
          .isIdentity = false,
          .isHighByte = destinationBits == 8};
}

// With maxima m of the source and M of the destination, x * M / m is x * (M / m) plus x * n / q for
// a reduced fraction n / q < 1, and that fraction is rounded by adding half of q before dividing.
// The division is a multiplication by 2^(16 + shift) / q, rounded up: it is exact while the
// dividend fits 16 bits, which it does for all depths.
DepthChange DepthChange::Stretch(unsigned sourceBits, unsigned destinationBits) {
  if (sourceBits >= destinationBits) return CutOff(sourceBits, destinationBits);
  const unsigned from = Maximum(sourceBits);
  const unsigned to = Maximum(destinationBits);
  DepthChange change{.sampleMask = Maximum(sourceBits),
                     .multiplier = static_cast<uint16_t>(to / from),
                     .isIdentity = false};
  const unsigned rest = to % from;
  if (rest == 0) return change;
  const unsigned divisor = from / std::gcd(rest, from);
  change.numerator = static_cast<uint16_t>(rest / std::gcd(rest, from));
  change.half = static_cast<uint16_t>(divisor / 2);
  change.shift = static_cast<uint8_t>(std::bit_width(divisor) - 1);
  change.factor = static_cast<uint16_t>((uint64_t{1} << (16 + change.shift)) / divisor + 1);
  return change;
}

DepthChange DepthChange::ShiftLeft(unsigned sourceBits, unsigned bits, unsigned lowBits) {
  return {.sampleMask = Maximum(sourceBits),
          .multiplier = static_cast<uint16_t>(1u << bits),
          .addend = static_cast<uint16_t>(lowBits),
          .isIdentity = false};
}

DepthChange DepthChange::Relabel(unsigned sourceBits) { return ShiftLeft(sourceBits, 0, 0); }

DepthChange DepthChange::ThroughTable(const uint16_t* table, unsigned sourceBits) {
  return {.sampleMask = Maximum(sourceBits), .isIdentity = false, .table = table};
}

void ChangeDepth(const DepthChange& change, const uint8_t* source, uint8_t* destination,
                 size_t count) {
  if (change.table != nullptr) return LookUp(change, source, destination, count);
  HWY_DYNAMIC_DISPATCH(Calculate8To8)(change, source, destination, count);
}

void ChangeDepth(const DepthChange& change, const uint8_t* source, uint16_t* destination,
                 size_t count) {
  if (change.table != nullptr) return LookUp(change, source, destination, count);
  HWY_DYNAMIC_DISPATCH(Calculate8To16)(change, source, destination, count);
}

void ChangeDepth(const DepthChange& change, const uint16_t* source, uint8_t* destination,
                 size_t count) {
  if (change.table != nullptr) return LookUp(change, source, destination, count);
  HWY_DYNAMIC_DISPATCH(Calculate16To8)(change, source, destination, count);
}

void ChangeDepth(const DepthChange& change, const uint16_t* source, uint16_t* destination,
                 size_t count) {
  if (change.table != nullptr) return LookUp(change, source, destination, count);
  HWY_DYNAMIC_DISPATCH(Calculate16To16)(change, source, destination, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
