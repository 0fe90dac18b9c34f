// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/DarkFrame.h"

#include <array>

#include "QvApi_IP/Kernels/DarkFrameScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/DarkFrame.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#include "QvApi_IP/Kernels/Median-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

template <class T>
bool Subtract(T* row, const T* dark, size_t width, T limit, uint8_t* marks) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  const auto least = hn::Set(d, limit);
  bool found = false;
  const auto step = [&](T* pixels, const T* darkPixels, uint8_t* bits) HWY_ATTR {
    const auto before = hn::LoadU(d, pixels);
    const auto after = hn::SaturatedSub(before, hn::LoadU(d, darkPixels));
    hn::StoreU(after, d, pixels);
    const auto mark = hn::And(hn::Eq(hn::Max(before, least), before), hn::Lt(after, least));
    hn::StoreMaskBits(d, mark, bits);
    found |= !hn::AllFalse(d, mark);
  };
  size_t x = 0;
  for (; x + n <= width; x += n) step(row + x, dark + x, marks + x / 8);
  if (x < width) {
    // Zeros behind the row's end are never marked, since a limit of 0 is above no difference.
    std::array<T, HWY_MAX_BYTES / sizeof(T)> pixels{}, darkPixels{};
    std::copy(row + x, row + width, pixels.begin());
    std::copy(dark + x, dark + width, darkPixels.begin());
    step(pixels.data(), darkPixels.data(), marks + x / 8);
    std::copy_n(pixels.begin(), width - x, row + x);
  }
  return found;
}

/// Pixels of a row take nothing from each other here, so they can go in vectors.
template <class T>
void RepairMono(const MedianWindow<T>& window, T* row, size_t width, const uint8_t* marks) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  const auto [begin, end] = DarkRepairs(MedianSites::Mono, width);
  const T *above = window[1], *below = window[3];
  const auto scalar = [&](size_t from, size_t to) {
    Scalar::RepairDarkRow(window, row, width, MedianSites::Mono, marks, from, to);
  };
  // Vectors begin where their bits do; the first one would reach over the left edge.
  scalar(begin, std::min(n, end));
  size_t x = n;
  for (; x + n <= end; x += n) {
    const auto mark = hn::LoadMaskBits(d, marks + x / 8);
    if (hn::AllFalse(d, mark)) continue;
    const auto here = hn::LoadU(d, row + x);
    const auto median = Median5(hn::LoadU(d, above + x - 1), hn::LoadU(d, above + x + 1),
                                hn::LoadU(d, below + x - 1), hn::LoadU(d, below + x + 1), here);
    hn::StoreU(hn::IfThenElse(mark, hn::Max(here, median), here), d, row + x);
  }
  scalar(x, end);
}

#else

template <class T>
bool Subtract(T* row, const T* dark, size_t width, T limit, uint8_t* marks) {
  return Scalar::SubtractDarkRow(row, dark, width, limit, marks);
}

template <class T>
void RepairMono(const MedianWindow<T>& window, T* row, size_t width, const uint8_t* marks) {
  const auto [begin, end] = DarkRepairs(MedianSites::Mono, width);
  Scalar::RepairDarkRow(window, row, width, MedianSites::Mono, marks, begin, end);
}

#endif

bool Subtract8(uint8_t* row, const uint8_t* dark, size_t width, uint8_t limit, uint8_t* marks) {
  return Subtract(row, dark, width, limit, marks);
}
bool Subtract16(uint16_t* row, const uint16_t* dark, size_t width, uint16_t limit, uint8_t* marks) {
  return Subtract(row, dark, width, limit, marks);
}
void RepairMono8(const MedianWindow<uint8_t>& window, uint8_t* row, size_t width,
                 const uint8_t* marks) {
  RepairMono(window, row, width, marks);
}
void RepairMono16(const MedianWindow<uint16_t>& window, uint16_t* row, size_t width,
                  const uint8_t* marks) {
  RepairMono(window, row, width, marks);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Subtract8);
HWY_EXPORT(Subtract16);
HWY_EXPORT(RepairMono8);
HWY_EXPORT(RepairMono16);

namespace {

/// Red and blue pixels see the repair two columns before, so a mosaic's row goes pixel by pixel.
template <class T>
void RepairMosaic(const MedianWindow<T>& window, T* row, size_t width, MedianSites sites,
                  const uint8_t* marks) {
  const auto [begin, end] = DarkRepairs(sites, width);
  Scalar::RepairDarkRow(window, row, width, sites, marks, begin, end);
}

}  // namespace

bool SubtractDarkRow(uint8_t* row, const uint8_t* dark, size_t width, uint8_t limit,
                     uint8_t* marks) {
  return HWY_DYNAMIC_DISPATCH(Subtract8)(row, dark, width, limit, marks);
}

bool SubtractDarkRow(uint16_t* row, const uint16_t* dark, size_t width, uint16_t limit,
                     uint8_t* marks) {
  return HWY_DYNAMIC_DISPATCH(Subtract16)(row, dark, width, limit, marks);
}

void RepairDarkRow(const MedianWindow<uint8_t>& window, uint8_t* row, size_t width,
                   MedianSites sites, const uint8_t* marks) {
  if (sites != MedianSites::Mono) return RepairMosaic(window, row, width, sites, marks);
  HWY_DYNAMIC_DISPATCH(RepairMono8)(window, row, width, marks);
}

void RepairDarkRow(const MedianWindow<uint16_t>& window, uint16_t* row, size_t width,
                   MedianSites sites, const uint8_t* marks) {
  if (sites != MedianSites::Mono) return RepairMosaic(window, row, width, sites, marks);
  HWY_DYNAMIC_DISPATCH(RepairMono16)(window, row, width, marks);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
