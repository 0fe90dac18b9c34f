// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/FlatField.h"

#include <limits>

#include "QvApi_IP/Kernels/FlatFieldScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/FlatField.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Words = hn::ScalableTag<uint16_t>;
using Bytes = hn::Rebind<uint8_t, Words>;

/// Bytes go as the high halves of words, so that the high half of a product by twice the gain is
/// the product without its fraction.
HWY_INLINE hn::Vec<Bytes> Multiply(hn::Vec<Bytes> samples, hn::Vec<Words> gains,
                                   hn::Vec<Bytes> fullScale) {
  const auto high = hn::ShiftLeft<8>(hn::PromoteTo(Words(), samples));
  const auto product = hn::MulHigh(high, hn::Add(gains, gains));
  const hn::RebindToSigned<Words> di;
  return hn::Min(hn::DemoteTo(Bytes(), hn::BitCast(di, product)), fullScale);
}

HWY_INLINE hn::Vec<Words> Multiply(hn::Vec<Words> samples, hn::Vec<Words> gains,
                                   hn::Vec<Words> fullScale) {
  const Words d;
  const hn::RebindToSigned<Words> di;
  const auto high = hn::MulHigh(samples, gains), low = hn::Mul(samples, gains);
  const auto product =
      hn::Or(hn::ShiftLeft<16 - kGainFractionBits>(high), hn::ShiftRight<kGainFractionBits>(low));
  const auto limit = hn::Set(di, (1 << kGainFractionBits) - 1);
  const auto isTooGreat = hn::BitCast(d, hn::VecFromMask(di, hn::Gt(hn::BitCast(di, high), limit)));
  return hn::Min(hn::Or(product, isTooGreat), fullScale);
}

template <class D, class T>
void MultiplyGains(D d, T* row, const uint16_t* gains, size_t width, T fullScale) {
  const size_t n = hn::Lanes(d);
  if (width < n) return Scalar::MultiplyGainRow(row, gains, width, fullScale);
  const auto limit = hn::Set(d, fullScale);
  const auto result = [=](size_t x) HWY_ATTR {
    return Multiply(hn::LoadU(d, row + x), hn::LoadU(Words(), gains + x), limit);
  };
  // The last vector ends with the row; its samples are read before others overwrite them.
  const auto last = result(width - n);
  for (size_t x = 0; x + n <= width; x += n) hn::StoreU(result(x), d, row + x);
  hn::StoreU(last, d, row + width - n);
}

/// The targets of the columns from one column on, in two parts, as those above the samples' range
/// do not fit in one.
template <class D>
struct Targets {
  Targets(D d, uint32_t even, uint32_t odd)
      : base(hn::OddEven(hn::Set(d, Base(odd)), hn::Set(d, Base(even)))),
        rest(hn::OddEven(hn::Set(d, Rest(odd)), hn::Set(d, Rest(even)))) {}

  using T = hn::TFromD<D>;
  static constexpr uint32_t kTop = std::numeric_limits<T>::max();
  static T Base(uint32_t target) { return static_cast<T>(std::min(target, kTop)); }
  static T Rest(uint32_t target) { return static_cast<T>(std::min(target - Base(target), kTop)); }

  hn::Vec<D> base, rest;
};

template <class T>
void AddDifferences(T* row, const T* flat, size_t width, FlatFieldTargets targets, T fullScale) {
  using D = hn::ScalableTag<T>;
  const D d;
  const size_t n = hn::Lanes(d);
  if (width < n) return Scalar::AddDifferenceRow(row, flat, width, targets, fullScale);
  const auto limit = hn::Set(d, fullScale);
  // Of what is to be added and what is to be taken off, one is always 0.
  const auto result = [=](size_t x, const Targets<D>& target) HWY_ATTR {
    const auto level = hn::LoadU(d, flat + x);
    const auto more = hn::SaturatedAdd(hn::SaturatedSub(target.base, level), target.rest);
    const auto less = hn::SaturatedSub(level, target.base);
    return hn::Min(hn::SaturatedSub(hn::SaturatedAdd(hn::LoadU(d, row + x), more), less), limit);
  };
  const Targets<D> fromEven(d, targets.even, targets.odd), fromOdd(d, targets.odd, targets.even);
  const auto last = result(width - n, (width - n) % 2 == 0 ? fromEven : fromOdd);
  for (size_t x = 0; x + n <= width; x += n) hn::StoreU(result(x, fromEven), d, row + x);
  hn::StoreU(last, d, row + width - n);
}

void MultiplyGains8(uint8_t* row, const uint16_t* gains, size_t width, uint8_t fullScale) {
  MultiplyGains(Bytes(), row, gains, width, fullScale);
}
void MultiplyGains16(uint16_t* row, const uint16_t* gains, size_t width, uint16_t fullScale) {
  MultiplyGains(Words(), row, gains, width, fullScale);
}
void AddDifferences8(uint8_t* row, const uint8_t* flat, size_t width, FlatFieldTargets targets,
                     uint8_t fullScale) {
  AddDifferences(row, flat, width, targets, fullScale);
}
void AddDifferences16(uint16_t* row, const uint16_t* flat, size_t width, FlatFieldTargets targets,
                      uint16_t fullScale) {
  AddDifferences(row, flat, width, targets, fullScale);
}

#else

void MultiplyGains8(uint8_t* row, const uint16_t* gains, size_t width, uint8_t fullScale) {
  Scalar::MultiplyGainRow(row, gains, width, fullScale);
}
void MultiplyGains16(uint16_t* row, const uint16_t* gains, size_t width, uint16_t fullScale) {
  Scalar::MultiplyGainRow(row, gains, width, fullScale);
}
void AddDifferences8(uint8_t* row, const uint8_t* flat, size_t width, FlatFieldTargets targets,
                     uint8_t fullScale) {
  Scalar::AddDifferenceRow(row, flat, width, targets, fullScale);
}
void AddDifferences16(uint16_t* row, const uint16_t* flat, size_t width, FlatFieldTargets targets,
                      uint16_t fullScale) {
  Scalar::AddDifferenceRow(row, flat, width, targets, fullScale);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(MultiplyGains8);
HWY_EXPORT(MultiplyGains16);
HWY_EXPORT(AddDifferences8);
HWY_EXPORT(AddDifferences16);

void MultiplyGainRow(uint8_t* row, const uint16_t* gains, size_t width, uint8_t fullScale) {
  HWY_DYNAMIC_DISPATCH(MultiplyGains8)(row, gains, width, fullScale);
}

void MultiplyGainRow(uint16_t* row, const uint16_t* gains, size_t width, uint16_t fullScale) {
  HWY_DYNAMIC_DISPATCH(MultiplyGains16)(row, gains, width, fullScale);
}

void AddDifferenceRow(uint8_t* row, const uint8_t* flat, size_t width, FlatFieldTargets targets,
                      uint8_t fullScale) {
  HWY_DYNAMIC_DISPATCH(AddDifferences8)(row, flat, width, targets, fullScale);
}

void AddDifferenceRow(uint16_t* row, const uint16_t* flat, size_t width, FlatFieldTargets targets,
                      uint16_t fullScale) {
  HWY_DYNAMIC_DISPATCH(AddDifferences16)(row, flat, width, targets, fullScale);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
