// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Flip.h"

#include <algorithm>
#include <array>

#include "QvApi_IP/Kernels/FlipScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Flip.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

// The file includes itself once for each target; what does not depend on the target stands once.
#ifndef QVAPI_KERNELS_FLIP_ONCE_
#define QVAPI_KERNELS_FLIP_ONCE_
namespace QvApi::Kernels {

inline constexpr size_t kMaxPixelBytes = 8;

/// What a byte shuffle does to a block of kBytes that ends with a pixel.
template <size_t kBytes>
struct MirrorShuffle {
  /// Source byte of each destination byte; behind the last whole pixel anything.
  alignas(kBytes) std::array<uint8_t, kBytes> index{};
  /// 0xFF for bytes that the destination keeps.
  alignas(kBytes) std::array<uint8_t, kBytes> kept{};
};

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

/// By the bytes of a pixel, and whether its last quarter is kept.
template <size_t kBytes>
inline constexpr auto kMirrorShuffles = [] {
  std::array<std::array<MirrorShuffle<kBytes>, 2>, kMaxPixelBytes + 1> all{};
  for (size_t step = 1; step <= kMaxPixelBytes; ++step) {
    for (size_t keeps = 0; keeps < 2; ++keeps) {
      all[step][keeps] = MakeMirrorShuffle<kBytes>(step, keeps);
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

/// Reads blocks backward and writes them forward. What a block has behind its last whole pixel the
/// next one writes over.
template <bool kKeepsLast>
void MirrorBlocks(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination,
                  size_t count) {
  const DBlock d;
  const auto& shuffle = kMirrorShuffles<kBlock>[bytes.step][kKeepsLast];
  const auto index = hn::Load(d, shuffle.index.data());
  const auto kept = hn::Ne(hn::Load(d, shuffle.kept.data()), hn::Zero(d));
  const size_t size = count * bytes.step;
  const size_t stride = kBlock / bytes.step * bytes.step;
  const auto mirror = [&](size_t place) HWY_ATTR {
    auto block = Shuffle(hn::LoadU(d, source + size - place - kBlock), index);
    if (kKeepsLast) block = hn::IfThenElse(kept, hn::LoadU(d, destination + place), block);
    hn::StoreU(block, d, destination + place);
  };
  size_t done = 0;
  // From the first aligned place on no block straddles cache lines. The block before may overlap.
  const size_t toAligned = -reinterpret_cast<uintptr_t>(destination) % kBlock;
  if (toAligned % bytes.step == 0 && kBlock <= size) {
    mirror(0);
    done = toAligned;
  }
  for (; done + kBlock <= size; done += stride) mirror(done);
  Scalar::MirrorPixels(bytes, source, destination + done, count - done / bytes.step);
}

void Mirror(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination, size_t count) {
  const auto run = bytes.moved != bytes.step ? &MirrorBlocks<true> : &MirrorBlocks<false>;
  run(bytes, source, destination, count);
}

#else

void Mirror(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination, size_t count) {
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
                  size_t count) {
  HWY_DYNAMIC_DISPATCH(Mirror)(bytes, source, destination, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
