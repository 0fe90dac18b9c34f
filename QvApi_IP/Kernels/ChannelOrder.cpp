// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ChannelOrder.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "QvApi_IP/Kernels/ChannelOrderScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/ChannelOrder.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

// The file includes itself once for each target; what does not depend on the target stands once.
#ifndef QVAPI_KERNELS_CHANNEL_ORDER_ONCE_
#define QVAPI_KERNELS_CHANNEL_ORDER_ONCE_
namespace QvApi::Kernels {

inline constexpr size_t kBlockBytes = 16;

/// What a byte shuffle does to a block that starts with a pixel.
struct BlockShuffle {
  /// Source byte of each destination byte; bytes that are not written name themselves.
  alignas(16) std::array<uint8_t, kBlockBytes> index{};
  /// 0xFF for bytes of a destination's alpha.
  alignas(16) std::array<uint8_t, kBlockBytes> alpha{};
  size_t pixels = 0;
};

constexpr BlockShuffle MakeBlockShuffle(size_t sampleBytes, size_t sourceComponents,
                                        size_t destinationComponents, bool exchange) {
  BlockShuffle shuffle;
  const size_t sourceStep = sourceComponents * sampleBytes;
  const size_t destinationStep = destinationComponents * sampleBytes;
  shuffle.pixels = kBlockBytes / std::max(sourceStep, destinationStep);
  for (size_t i = 0; i < kBlockBytes; ++i) {
    const size_t pixel = i / destinationStep;
    const size_t component = i % destinationStep / sampleBytes;
    const size_t from = exchange ? 2 - component : component;
    const bool isWritten = pixel < shuffle.pixels && component != 3;
    shuffle.index[i] = static_cast<uint8_t>(
        isWritten ? pixel * sourceStep + from * sampleBytes + i % sampleBytes : i);
    shuffle.alpha[i] = component == 3 ? 0xFF : 0;
  }
  return shuffle;
}

/// Bits of the place: 1 exchange, 2 four destination components, 4 four source components,
/// 8 samples of 16 bits.
inline constexpr auto kBlockShuffles = [] {
  std::array<BlockShuffle, 16> all{};
  for (size_t i = 0; i < all.size(); ++i) {
    all[i] = MakeBlockShuffle(i & 8 ? 2 : 1, i & 4 ? 4 : 3, i & 2 ? 4 : 3, i & 1);
  }
  return all;
}();

template <class T>
const BlockShuffle& FindBlockShuffle(const ChannelOrder& order) {
  return kBlockShuffles[(sizeof(T) == 2 ? 8 : 0) + (order.sourceComponents == 4 ? 4 : 0) +
                        (order.destinationComponents == 4 ? 2 : 0) + (order.exchange ? 1 : 0)];
}

}  // namespace QvApi::Kernels
#endif

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Works in blocks of 16 bytes, which every machine can shuffle and which keep up with memory. A
/// block's spare bytes are stored as they were loaded and overwritten by the next block: where the
/// line is its own source they are that block's pixels.
template <class T>
void Reorder(const T* source, T* destination, size_t pixels, const ChannelOrder& order) {
  const BlockShuffle& shuffle = FindBlockShuffle<T>(order);
  const hn::FixedTag<uint8_t, kBlockBytes> d;
  const auto index = hn::Load(d, shuffle.index.data());
  const auto alpha = hn::Ne(hn::Load(d, shuffle.alpha.data()), hn::Zero(d));
  const bool keepsAlpha = order.destinationComponents == 4;
  const size_t smallerPixel =
      std::min(order.sourceComponents, order.destinationComponents) * sizeof(T);

  size_t rest = pixels;
  for (; rest * smallerPixel >= kBlockBytes; rest -= shuffle.pixels) {
    auto* to = reinterpret_cast<uint8_t*>(destination);
    const auto loaded = hn::LoadU(d, reinterpret_cast<const uint8_t*>(source));
    auto block = hn::TableLookupBytes(loaded, index);
    if (keepsAlpha) block = hn::IfThenElse(alpha, hn::LoadU(d, to), block);
    hn::StoreU(block, d, to);
    source += shuffle.pixels * order.sourceComponents;
    destination += shuffle.pixels * order.destinationComponents;
  }
  Scalar::ReorderChannels(source, destination, rest, order);
}

#else

template <class T>
void Reorder(const T* source, T* destination, size_t pixels, const ChannelOrder& order) {
  Scalar::ReorderChannels(source, destination, pixels, order);
}

#endif

void Reorder8(const uint8_t* source, uint8_t* destination, size_t pixels,
              const ChannelOrder& order) {
  Reorder(source, destination, pixels, order);
}
void Reorder16(const uint16_t* source, uint16_t* destination, size_t pixels,
               const ChannelOrder& order) {
  Reorder(source, destination, pixels, order);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Reorder8);
HWY_EXPORT(Reorder16);

namespace {

bool IsPixel(unsigned components) { return components == 3 || components == 4; }

template <class T, class Kernel>
void Dispatch(const T* source, T* destination, size_t pixels, const ChannelOrder& order,
              Kernel kernel) {
  if (!IsPixel(order.sourceComponents) || !IsPixel(order.destinationComponents)) return;
  if (!order.exchange && order.sourceComponents == 3 && order.destinationComponents == 3) {
    if (source != destination && pixels != 0) {
      std::memcpy(destination, source, pixels * 3 * sizeof(T));
    }
    return;
  }
  kernel(source, destination, pixels, order);
}

}  // namespace

void ReorderChannels(const uint8_t* source, uint8_t* destination, size_t pixels,
                     const ChannelOrder& order) {
  Dispatch(source, destination, pixels, order, HWY_DYNAMIC_DISPATCH(Reorder8));
}

void ReorderChannels(const uint16_t* source, uint16_t* destination, size_t pixels,
                     const ChannelOrder& order) {
  Dispatch(source, destination, pixels, order, HWY_DYNAMIC_DISPATCH(Reorder16));
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
