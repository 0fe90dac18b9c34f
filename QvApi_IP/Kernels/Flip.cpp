// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Flip.h"

#include <algorithm>
#include <array>

#include "QvApi_IP/Kernels/FlipScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Flip.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

// The file includes itself once for each target; what does not depend on the target stands once.
#ifndef QVAPI_KERNELS_FLIP_ONCE_
#define QVAPI_KERNELS_FLIP_ONCE_
namespace QvApi::Kernels {

inline constexpr size_t kMaxPixelBytes = 8;

/// What a byte shuffle does to a block of kBytes.
template <size_t kBytes>
struct MirrorShuffle {
  /// Source byte of each destination byte; where no whole pixel is, anything.
  alignas(kBytes) std::array<uint8_t, kBytes> index{};
  /// 0xFF for bytes that the destination keeps.
  alignas(kBytes) std::array<uint8_t, kBytes> kept{};
};

/// For blocks of the source that end with a pixel, and of the destination that begin with one.
template <size_t kBytes>
constexpr MirrorShuffle<kBytes> MakeMirrorShuffle(size_t step, bool keepsLast) {
  MirrorShuffle<kBytes> shuffle;
  const size_t moved = keepsLast ? step / 4 * 3 : step;
  for (size_t i = 0; i < kBytes / step * step; ++i) {
    const size_t pixel = i / step;
    shuffle.index[i] = static_cast<uint8_t>(kBytes - (pixel + 1) * step + i % step);
    shuffle.kept[i] = i % step < moved ? 0 : 0xFF;
  }
  return shuffle;
}

/// For the block of the source that begins the line, and of the destination that ends it.
template <size_t kBytes>
constexpr MirrorShuffle<kBytes> MakeLastMirrorShuffle(size_t step, bool keepsLast) {
  const MirrorShuffle<kBytes> others = MakeMirrorShuffle<kBytes>(step, keepsLast);
  const size_t cut = kBytes % step;
  MirrorShuffle<kBytes> shuffle;
  for (size_t i = 0; i < cut; ++i) shuffle.kept[i] = 0xFF;
  for (size_t i = cut; i < kBytes; ++i) {
    shuffle.index[i] = static_cast<uint8_t>(others.index[i - cut] - cut);
    shuffle.kept[i] = others.kept[i - cut];
  }
  return shuffle;
}

/// By the bytes of a pixel, whether its last quarter is kept, and whether the block is the last.
template <size_t kBytes>
inline constexpr auto kMirrorShuffles = [] {
  std::array<std::array<std::array<MirrorShuffle<kBytes>, 2>, 2>, kMaxPixelBytes + 1> all{};
  for (size_t step = 1; step <= kMaxPixelBytes; ++step) {
    for (size_t keeps = 0; keeps < 2; ++keeps) {
      all[step][keeps] = {MakeMirrorShuffle<kBytes>(step, keeps),
                          MakeLastMirrorShuffle<kBytes>(step, keeps)};
    }
  }
  return all;
}();

}  // namespace QvApi::Kernels
#endif

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

#if HWY_TARGET == HWY_AVX3_DL
inline constexpr size_t kBlock = 64;  // in one byte permutation
#else
inline constexpr size_t kBlock = 16;
#endif
using DBlock = hn::FixedTag<uint8_t, kBlock>;
using VBlock = hn::Vec<DBlock>;

HWY_INLINE VBlock Shuffle(VBlock bytes, VBlock index) {
#if HWY_TARGET == HWY_AVX3_DL
  return VBlock{_mm512_permutexvar_epi8(index.raw, bytes.raw)};
#else
  return hn::TableLookupBytes(bytes, index);
#endif
}

HWY_INLINE VBlock MirrorBlock(const MirrorShuffle<kBlock>& shuffle, const uint8_t* source) {
  const DBlock d;
  return Shuffle(hn::LoadU(d, source), hn::Load(d, shuffle.index.data()));
}

HWY_INLINE void StoreMoved(const MirrorShuffle<kBlock>& shuffle, VBlock block,
                           uint8_t* destination) {
  const DBlock d;
  const auto kept = hn::Ne(hn::Load(d, shuffle.kept.data()), hn::Zero(d));
  hn::StoreU(hn::IfThenElse(kept, hn::LoadU(d, destination), block), d, destination);
}

/// Reads blocks backward and writes them forward. What a block has behind its last whole pixel the
/// next one writes over; the last one overlaps the one before.
template <bool kKeepsLast>
void MirrorBlocks(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination,
                  size_t count, const uint8_t* next) {
  const DBlock d;
  const auto& [shuffle, lastShuffle] = kMirrorShuffles<kBlock>[bytes.step][kKeepsLast];
  const size_t size = count * bytes.step;
  if (size < kBlock) return Scalar::MirrorPixels(bytes, source, destination, count);

  const size_t stride = kBlock / bytes.step * bytes.step;
  const auto mirror = [&](size_t place) HWY_ATTR {
    const VBlock block = MirrorBlock(shuffle, source + size - place - kBlock);
    if constexpr (kKeepsLast) {
      StoreMoved(shuffle, block, destination + place);
    } else {
      hn::StoreU(block, d, destination + place);
    }
  };
  size_t done = 0;
  // From the first aligned place on no block straddles cache lines. The block before may overlap.
  const size_t toAligned = -reinterpret_cast<uintptr_t>(destination) % kBlock;
  if (toAligned % bytes.step == 0) {
    mirror(0);
    done = toAligned;
  }
  for (; done + kBlock <= size; done += stride) {
    hwy::Prefetch(next + done);
    mirror(done);
  }
  StoreMoved(lastShuffle, MirrorBlock(lastShuffle, source), destination + size - kBlock);
}

void Mirror(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination, size_t count,
            const uint8_t* next) {
  const auto run = bytes.moved != bytes.step ? &MirrorBlocks<true> : &MirrorBlocks<false>;
  run(bytes, source, destination, count, next);
}

#else

void Mirror(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination, size_t count,
            const uint8_t*) {
  Scalar::MirrorPixels(bytes, source, destination, count);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Mirror);

void MirrorPixels(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination,
                  size_t count, const uint8_t* next) {
  HWY_DYNAMIC_DISPATCH(Mirror)(bytes, source, destination, count, next);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
