// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/BitPacking.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "QvApi_IP/Kernels/BitPackingScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/BitPacking.cpp"
#ifndef HWY_WANT_AVX3_DL
#define HWY_WANT_AVX3_DL
#endif
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

// The file includes itself once for each target; what does not depend on the target stands once.
#ifndef QVAPI_KERNELS_BIT_PACKING_ONCE_
#define QVAPI_KERNELS_BIT_PACKING_ONCE_
namespace QvApi::Kernels {

/// Bytes of eight samples.
constexpr size_t BlockBytes(const PackedLayout& layout) { return layout.Bytes(8); }

/// A shuffle index that gives 0.
inline constexpr uint8_t kNothing = 0x80;

/// How the bit stream's eight samples come out of 16 bytes. With o the place of a sample in its
/// first byte, two bytes shifted left by 16 - bits - o begin with the sample; where the sample
/// reaches into a third byte the shift may go right, and the third byte's part joins.
struct LsbBlock {
  alignas(16) std::array<uint8_t, 16> pair{};
  alignas(16) std::array<uint8_t, 16> third{};
  alignas(16) std::array<uint16_t, 8> left{};    ///< Multiplies, for a shift to the left.
  alignas(16) std::array<uint16_t, 8> right{};   ///< Multiplies with the upper half as result.
  alignas(16) std::array<uint16_t, 8> joined{};  ///< Multiplies the third byte.
  bool hasThird = false;
};

constexpr LsbBlock MakeLsbBlock(unsigned bits) {
  LsbBlock block;
  for (unsigned i = 0; i < 8; ++i) {
    const unsigned byte = i * bits / 8;
    const unsigned place = i * bits % 8;
    const bool needsSecond = place + bits > 8;
    const bool needsThird = place + bits > 16;
    block.pair[2 * i] = static_cast<uint8_t>(byte);
    block.pair[2 * i + 1] = needsSecond ? static_cast<uint8_t>(byte + 1) : kNothing;
    block.third[2 * i] = needsThird ? static_cast<uint8_t>(byte + 2) : kNothing;
    block.third[2 * i + 1] = kNothing;
    if (needsThird) {
      block.hasThird = true;
      block.right[i] = static_cast<uint16_t>(1u << (32 - bits - place));
      block.joined[i] = static_cast<uint16_t>(1u << (32 - bits - place));
    } else {
      block.left[i] = static_cast<uint16_t>(1u << (16 - bits - place));
    }
  }
  return block;
}

inline constexpr auto kLsbBlocks = [] {
  std::array<LsbBlock, 16> blocks{};
  for (unsigned bits = 1; bits < blocks.size(); ++bits) blocks[bits] = MakeLsbBlock(bits);
  return blocks;
}();

/// Lanes of two bytes for each sample of the three-byte layout: the shared byte below the own one.
template <size_t kSamples>
constexpr std::array<uint8_t, 2 * kSamples> MakeGevPairs() {
  std::array<uint8_t, 2 * kSamples> index{};
  for (size_t i = 0; i < kSamples; ++i) {
    index[2 * i] = static_cast<uint8_t>(i / 2 * 3 + 1);
    index[2 * i + 1] = static_cast<uint8_t>(i / 2 * 3 + (i % 2 == 0 ? 0 : 2));
  }
  return index;
}

/// How 32 samples come out of 64 bytes: a permute brings the bytes of four samples into each lane
/// of 64 bits, from which a multishift picks any eight bits as a byte.
struct WideBlock {
  alignas(64) std::array<uint8_t, 64> bytes{};
  /// Places of the bits of each sample's two bytes in a lane.
  alignas(64) std::array<uint8_t, 64> samples{};
  /// Places of the upper bytes of the samples, in the lower half of each lane.
  alignas(64) std::array<uint8_t, 64> highBytes{};
};

constexpr WideBlock MakeWideLsbBlock(unsigned bits) {
  WideBlock block;
  for (unsigned i = 0; i < 64; ++i) {
    const unsigned start = i / 8 * 4 * bits;
    block.bytes[i] = static_cast<uint8_t>(start / 8 + i % 8);
    block.samples[i] = static_cast<uint8_t>(start % 8 + i % 8 / 2 * bits + i % 2 * 8);
    block.highBytes[i] = static_cast<uint8_t>((start % 8 + i % 4 * bits + bits + 56) % 64);
  }
  return block;
}

constexpr WideBlock MakeWideGevBlock() {
  WideBlock block;
  block.bytes = MakeGevPairs<32>();
  for (unsigned i = 0; i < 64; ++i) block.highBytes[i] = static_cast<uint8_t>(i % 4 * 16 + 8);
  return block;
}

/// By number of bits of a stream; the first one is the three-byte layout's.
inline constexpr auto kWideBlocks = [] {
  std::array<WideBlock, 16> blocks{};
  blocks[0] = MakeWideGevBlock();
  for (unsigned bits = 1; bits < blocks.size(); ++bits) blocks[bits] = MakeWideLsbBlock(bits);
  return blocks;
}();

/// Byte shuffle that closes the gaps between groups of `used` bytes in lanes of `lane` bytes.
template <size_t kBytes>
constexpr std::array<uint8_t, kBytes> MakeClosing(size_t lane, size_t used) {
  std::array<uint8_t, kBytes> index{};
  const size_t total = kBytes / lane * used;
  for (size_t i = 0; i < kBytes; ++i) {
    index[i] = static_cast<uint8_t>(i < total ? i / used * lane + i % used : kBytes - 1);
  }
  return index;
}

/// The same for each even number of bits of a stream, four samples in a lane of eight bytes.
template <size_t kBytes>
struct Closings {
  alignas(kBytes) std::array<std::array<uint8_t, kBytes>, 16> lsb{};
  alignas(kBytes) std::array<uint8_t, kBytes> gev = MakeClosing<kBytes>(4, 3);

  constexpr Closings() {
    for (size_t bits = 2; bits < lsb.size(); bits += 2)
      lsb[bits] = MakeClosing<kBytes>(8, bits / 2);
  }
  const uint8_t* For(const PackedLayout& layout) const {
    return layout.kind == PackedLayout::Kind::Gev ? gev.data() : lsb[layout.bits].data();
  }
};

template <size_t kBytes>
inline constexpr Closings<kBytes> kClosings;

}  // namespace QvApi::Kernels
#endif

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// The samples of the three-byte layout from their lanes of two bytes.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V GevSamples(D d, V lanes, V restMask, int restBits) {
  const auto isOdd = hn::Ne(hn::And(hn::Iota(d, 0), hn::Set(d, uint16_t{1})), hn::Zero(d));
  const V rest = hn::And(hn::IfThenElse(isOdd, hn::ShiftRight<4>(lanes), lanes), restMask);
  return hn::Or(hn::ShiftLeftSame(hn::ShiftRight<8>(lanes), restBits), rest);
}

/// Joins samples, masked to their depth, in lanes of 32 or 64 bits: three bytes of two samples of
/// the three-byte layout, or the bits of four samples of a stream.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V JoinSamples(D d, V samples, const PackedLayout& layout) {
  const hn::RepartitionToWide<D> pairs;
  const auto lower = hn::Set(pairs, 0xFFFFu);
  const int bits = static_cast<int>(layout.bits);
  if (layout.kind == PackedLayout::Kind::Gev) {
    const auto restMask = hn::Set(d, static_cast<uint16_t>((1u << (bits - 8)) - 1));
    const auto rest = hn::BitCast(pairs, hn::And(samples, restMask));
    const auto own = hn::BitCast(pairs, hn::ShiftRightSame(samples, bits - 8));
    const auto shared =
        hn::Or(hn::ShiftLeft<8>(hn::And(rest, lower)), hn::ShiftLeft<12>(hn::ShiftRight<16>(rest)));
    return hn::BitCast(d, hn::Or(own, shared));
  }
  const hn::RepartitionToWide<decltype(pairs)> quads;
  const auto pair = hn::BitCast(pairs, samples);
  const auto two = hn::BitCast(
      quads, hn::Or(hn::And(pair, lower), hn::ShiftLeftSame(hn::ShiftRight<16>(pair), bits)));
  const auto four = hn::Or(hn::And(two, hn::Set(quads, uint64_t{0xFFFFFFFF})),
                           hn::ShiftLeftSame(hn::ShiftRight<32>(two), 2 * bits));
  return hn::BitCast(d, four);
}

#if HWY_TARGET == HWY_AVX3_DL

/// 32 samples from one load.
struct WideUnpacker {
  explicit WideUnpacker(const PackedLayout& packed)
      : WideUnpacker(packed,
                     kWideBlocks[packed.kind == PackedLayout::Kind::Gev ? 0 : packed.bits]) {}
  WideUnpacker(const PackedLayout& packed, const WideBlock& block)
      : layout(packed),
        bytes(static_cast<__mmask64>(~uint64_t{0} >> (64 - packed.Bytes(32)))),
        lanes(_mm512_load_si512(block.bytes.data())),
        bytesOfSamples(_mm512_load_si512(block.samples.data())),
        highBytes(_mm512_load_si512(block.highBytes.data())) {}

  HWY_INLINE __m512i Lanes(const uint8_t* line, __mmask64 present) const {
    return _mm512_permutexvar_epi8(lanes, _mm512_maskz_loadu_epi8(present, line));
  }
  HWY_INLINE __m512i Samples(__m512i spread) const {
    const hn::ScalableTag<uint16_t> d;
    const auto mask = [&](unsigned bits)
                          HWY_ATTR { return hn::Set(d, static_cast<uint16_t>((1u << bits) - 1)); };
    if (layout.kind == PackedLayout::Kind::Gev) {
      const int restBits = static_cast<int>(layout.bits) - 8;
      return GevSamples(d, hn::Vec<decltype(d)>{spread}, mask(layout.bits - 8), restBits).raw;
    }
    return _mm512_and_si512(_mm512_multishift_epi64_epi8(bytesOfSamples, spread),
                            mask(layout.bits).raw);
  }
  /// The upper bytes of 64 samples.
  HWY_INLINE __m512i High(__m512i spread0, __m512i spread1) const {
    const __m512i lowerHalves =
        _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    return _mm512_permutex2var_epi32(_mm512_multishift_epi64_epi8(highBytes, spread0), lowerHalves,
                                     _mm512_multishift_epi64_epi8(highBytes, spread1));
  }

  const PackedLayout layout;
  const __mmask64 bytes;
  const __m512i lanes, bytesOfSamples, highBytes;
};

/// The lowest `count` bits set, at most 64.
HWY_INLINE __mmask64 Lowest(size_t count) {
  return count >= 64 ? ~__mmask64{0} : (__mmask64{1} << count) - 1;
}

void Unpack(const PackedLayout& layout, const uint8_t* line, uint16_t* samples, size_t count) {
  const WideUnpacker unpack(layout);
  const size_t step = layout.Bytes(32);
  for (; count >= 32; count -= 32, line += step, samples += 32) {
    _mm512_storeu_si512(samples, unpack.Samples(unpack.Lanes(line, unpack.bytes)));
  }
  if (count == 0) return;
  const __m512i rest = unpack.Samples(unpack.Lanes(line, Lowest(layout.Bytes(count))));
  _mm512_mask_storeu_epi16(samples, static_cast<__mmask32>(Lowest(count)), rest);
}

void UnpackHigh(const PackedLayout& layout, const uint8_t* line, uint8_t* samples, size_t count) {
  const WideUnpacker unpack(layout);
  const size_t step = layout.Bytes(32);
  for (; count >= 64; count -= 64, line += 2 * step, samples += 64) {
    _mm512_storeu_si512(samples, unpack.High(unpack.Lanes(line, unpack.bytes),
                                             unpack.Lanes(line + step, unpack.bytes)));
  }
  if (count == 0) return;
  const size_t bytes = layout.Bytes(count);
  const __m512i first = unpack.Lanes(line, Lowest(std::min(bytes, step)));
  const __m512i second = bytes > step ? unpack.Lanes(line + step, Lowest(bytes - step)) : first;
  _mm512_mask_storeu_epi8(samples, Lowest(count), unpack.High(first, second));
}

/// Packs samples, an even number of them in the three-byte layout, of an even number of bits in a
/// stream.
void PackEven(const PackedLayout& layout, const uint16_t* samples, uint8_t* line, size_t count) {
  const hn::ScalableTag<uint16_t> d;
  const auto mask = hn::Set(d, static_cast<uint16_t>((1u << layout.bits) - 1));
  const __m512i closing = _mm512_load_si512(kClosings<64>.For(layout));
  const size_t step = layout.Bytes(32);
  size_t left = layout.Bytes(count);
  const auto pack = [&](__m512i loaded) HWY_ATTR {
    const auto masked = hn::And(hn::Vec<decltype(d)>{loaded}, mask);
    return _mm512_permutexvar_epi8(closing, JoinSamples(d, masked, layout).raw);
  };
  // A vector's spare bytes are overwritten by the next one, as long as they lie in the line.
  for (; left >= 64; count -= 32, left -= step, line += step, samples += 32) {
    _mm512_storeu_si512(line, pack(_mm512_loadu_si512(samples)));
  }
  for (; left != 0; line += step, samples += 32) {
    const auto present = static_cast<__mmask32>(Lowest(std::min<size_t>(count, 32)));
    const size_t bytes = std::min(left, step);
    _mm512_mask_storeu_epi8(line, Lowest(bytes), pack(_mm512_maskz_loadu_epi16(present, samples)));
    left -= bytes;
    count -= std::min<size_t>(count, 32);
  }
}

#elif HWY_TARGET != HWY_SCALAR

using Words8 = hn::FixedTag<uint16_t, 8>;
using Bytes16 = hn::FixedTag<uint8_t, 16>;

/// Eight samples of a block that has 16 readable bytes.
HWY_INLINE hn::Vec<Words8> UnpackBlock(const PackedLayout& layout, const uint8_t* block) {
  const Bytes16 d8;
  const Words8 d;
  const auto bytes = hn::LoadU(d8, block);
  const int bits = static_cast<int>(layout.bits);
  if (layout.kind == PackedLayout::Kind::Gev) {
    alignas(16) static constexpr auto kPairs = MakeGevPairs<8>();
    const auto lanes = hn::TableLookupBytes(bytes, hn::Load(d8, kPairs.data()));
    const auto restMask = hn::Set(d, static_cast<uint16_t>((1u << (bits - 8)) - 1));
    return GevSamples(d, hn::BitCast(d, lanes), restMask, bits - 8);
  }
  const LsbBlock& lsb = kLsbBlocks[layout.bits];
  const auto shuffle = [&](const std::array<uint8_t, 16>& index) HWY_ATTR {
    return hn::BitCast(d, hn::TableLookupBytesOr0(bytes, hn::Load(d8, index.data())));
  };
  const auto pair = shuffle(lsb.pair);
  auto top = hn::Mul(pair, hn::Load(d, lsb.left.data()));
  if (lsb.hasThird) {
    top = hn::Or(top, hn::MulHigh(pair, hn::Load(d, lsb.right.data())));
    top = hn::Or(top, hn::Mul(shuffle(lsb.third), hn::Load(d, lsb.joined.data())));
  }
  return hn::ShiftRightSame(top, 16 - bits);
}

/// Calls `store(samples, to)` for each block of eight samples, and for what is left of them by way
/// of the stack.
template <class T, class Store>
HWY_INLINE void UnpackBlocks(const PackedLayout& layout, const uint8_t* line, T* samples,
                             size_t count, Store store) {
  const size_t step = BlockBytes(layout);
  size_t left = layout.Bytes(count);
  for (; count >= 8 && left >= 16; count -= 8, left -= step, line += step, samples += 8) {
    store(UnpackBlock(layout, line), samples);
  }
  while (count != 0) {
    std::array<uint8_t, 16> block{};
    std::array<T, 8> unpacked;
    const size_t here = std::min<size_t>(count, 8);
    const size_t bytes = std::min(left, step);
    std::memcpy(block.data(), line, bytes);
    store(UnpackBlock(layout, block.data()), unpacked.data());
    std::memcpy(samples, unpacked.data(), here * sizeof(T));
    count -= here, left -= bytes, line += bytes, samples += here;
  }
}

void Unpack(const PackedLayout& layout, const uint8_t* line, uint16_t* samples, size_t count) {
  UnpackBlocks(layout, line, samples, count, [](hn::Vec<Words8> unpacked, uint16_t* to) HWY_ATTR {
    hn::StoreU(unpacked, Words8(), to);
  });
}

void UnpackHigh(const PackedLayout& layout, const uint8_t* line, uint8_t* samples, size_t count) {
  const int spare = static_cast<int>(layout.bits) - 8;
  UnpackBlocks(layout, line, samples, count, [=](hn::Vec<Words8> unpacked, uint8_t* to) HWY_ATTR {
    const auto high = hn::BitCast(hn::FixedTag<int16_t, 8>(), hn::ShiftRightSame(unpacked, spare));
    const hn::FixedTag<uint8_t, 8> d;
    hn::StoreU(hn::DemoteTo(d, high), d, to);
  });
}

void PackEven(const PackedLayout& layout, const uint16_t* samples, uint8_t* line, size_t count) {
  const Words8 d;
  const Bytes16 d8;
  const auto mask = hn::Set(d, static_cast<uint16_t>((1u << layout.bits) - 1));
  const auto closing = hn::Load(d8, kClosings<16>.For(layout));
  const size_t step = BlockBytes(layout);
  size_t left = layout.Bytes(count);
  const auto pack = [&](const uint16_t* from, uint8_t* to) HWY_ATTR {
    const auto joined = JoinSamples(d, hn::And(hn::LoadU(d, from), mask), layout);
    hn::StoreU(hn::TableLookupBytes(hn::BitCast(d8, joined), closing), d8, to);
  };
  for (; left >= 16; count -= 8, left -= step, line += step, samples += 8) pack(samples, line);
  while (left != 0) {
    std::array<uint16_t, 8> rest{};
    std::array<uint8_t, 16> block;
    const size_t here = std::min<size_t>(count, 8);
    const size_t bytes = std::min(left, step);
    std::memcpy(rest.data(), samples, here * sizeof(uint16_t));
    pack(rest.data(), block.data());
    std::memcpy(line, block.data(), bytes);
    count -= here, left -= bytes, line += bytes, samples += here;
  }
}

#else

void Unpack(const PackedLayout& layout, const uint8_t* line, uint16_t* samples, size_t count) {
  Scalar::UnpackSamples(layout, line, samples, count);
}
void UnpackHigh(const PackedLayout& layout, const uint8_t* line, uint8_t* samples, size_t count) {
  Scalar::UnpackHighBytes(layout, line, samples, count);
}
void PackEven(const PackedLayout& layout, const uint16_t* samples, uint8_t* line, size_t count) {
  Scalar::PackSamples(layout, samples, line, count);
}

#endif

#if HWY_TARGET != HWY_SCALAR
/// Single bits are what a comparison gives.
void PackBits(const uint16_t* samples, uint8_t* line, size_t count) {
  const hn::ScalableTag<uint16_t> d;
  const size_t n = hn::Lanes(d);
  const auto one = hn::Set(d, uint16_t{1});
  size_t i = 0;
  for (; i + n <= count; i += n) {
    uint8_t bits[8];
    hn::StoreMaskBits(d, hn::Eq(hn::And(hn::LoadU(d, samples + i), one), one), bits);
    std::memcpy(line + i / 8, bits, n / 8);
  }
  Scalar::PackLsb({.bits = 1}, samples + i, line + i / 8, count - i);
}
#else
void PackBits(const uint16_t* samples, uint8_t* line, size_t count) {
  Scalar::PackLsb({.bits = 1}, samples, line, count);
}
#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Unpack);
HWY_EXPORT(UnpackHigh);
HWY_EXPORT(PackEven);
HWY_EXPORT(PackBits);

void UnpackSamples(const PackedLayout& layout, const uint8_t* line, uint16_t* samples,
                   size_t count) {
  HWY_DYNAMIC_DISPATCH(Unpack)(layout, line, samples, count);
}

void UnpackHighBytes(const PackedLayout& layout, const uint8_t* line, uint8_t* samples,
                     size_t count) {
  HWY_DYNAMIC_DISPATCH(UnpackHigh)(layout, line, samples, count);
}

void PackSamples(const PackedLayout& layout, const uint16_t* samples, uint8_t* line, size_t count) {
  const bool isGev = layout.kind == PackedLayout::Kind::Gev;
  if (!isGev && layout.bits == 1) return HWY_DYNAMIC_DISPATCH(PackBits)(samples, line, count);
  // No format has another odd number of bits, of which four samples make no whole bytes.
  if (!isGev && layout.bits % 2 != 0) return Scalar::PackSamples(layout, samples, line, count);
  const size_t vectorCount = isGev ? count / 2 * 2 : count;
  HWY_DYNAMIC_DISPATCH(PackEven)(layout, samples, line, vectorCount);
  if (vectorCount == count) return;
  Scalar::PackSamples(layout, samples + vectorCount, line + layout.Bytes(vectorCount), 1);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
