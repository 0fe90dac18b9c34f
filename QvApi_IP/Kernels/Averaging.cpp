// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Averaging.h"

#include <cmath>
#include <numeric>

#include "QvApi_IP/Kernels/AveragingScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/Averaging.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Memory is the limit, and serves short vectors faster than long ones.
template <class T>
void Add(const T* samples, uint32_t* sums, size_t count) {
  const hn::Full128<uint32_t> d;
  const hn::Rebind<T, decltype(d)> part;
  constexpr size_t kLanes = 4, kUnrolled = 4 * kLanes;
  size_t i = 0;
  for (; i + kUnrolled <= count; i += kUnrolled) {
    for (size_t k = 0; k < kUnrolled; k += kLanes) {
      const auto sample = hn::PromoteTo(d, hn::LoadU(part, samples + i + k));
      hn::StoreU(hn::Add(hn::LoadU(d, sums + i + k), sample), d, sums + i + k);
    }
  }
  Scalar::AddToSums(samples + i, sums + i, count - i);
}

/// Quotients of k + 0.5 end above k all. Only a divisor that was rounded up can let one fall short,
/// and there are such quotients only if the denominator is even.
bool HalvesRoundUp(uint32_t fullSum, uint32_t maximum) {
  const double divisor = static_cast<double>(fullSum) / maximum;
  return std::fma(divisor, maximum, -static_cast<double>(fullSum)) <= 0 ||
         fullSum / std::gcd(fullSum, maximum) % 2 == 1;
}

/// 2^52: added to a double below, it leaves the nearest integer in the low bits.
constexpr double kUnit = 4503599627370496.0;

/// @param scale  makes means of sums, plus kUnit
template <class T, class Scale>
void ScaleLine(const uint32_t* sums, uint32_t fullSum, T maximum, T* means, size_t count,
               Scale scale) {
  const hn::ScalableTag<double> d;
  const hn::RebindToUnsigned<decltype(d)> d64;
  const hn::Rebind<uint32_t, decltype(d)> d32;
  const hn::Rebind<T, decltype(d)> narrow;
  const auto unit = hn::Set(d, kUnit);
  const auto full = hn::Set(d32, fullSum);
  const size_t n = hn::Lanes(d);
  size_t i = 0;
  for (; i + n <= count; i += n) {
    const auto sum = hn::PromoteTo(d64, hn::Min(hn::LoadU(d32, sums + i), full));
    const auto real = hn::Sub(hn::BitCast(d, hn::Or(sum, hn::BitCast(d64, unit))), unit);
    const auto mean = hn::BitCast(d64, scale(real));
    hn::StoreU(hn::TruncateTo(narrow, mean), narrow, means + i);
  }
  Scalar::ScaleSums(sums + i, fullSum, maximum, means + i, count - i);
}

template <class T>
void Scale(const uint32_t* sums, uint32_t fullSum, T maximum, T* means, size_t count) {
  const hn::ScalableTag<double> d;
  const auto unit = hn::Set(d, kUnit);
  if (HalvesRoundUp(fullSum, maximum)) {
    // Any quotient but k + 0.5 is 1 / (2 fullSum) away from that at least, far more than doubles of
    // 16 bits lose. So a product will do, if it is raised enough for all k + 0.5 to round up.
    const auto factor = hn::Set(d, (1 + 0x1p-51) * maximum / fullSum);
    ScaleLine(sums, fullSum, maximum, means, count,
              [&](auto sum) HWY_ATTR { return hn::MulAdd(sum, factor, unit); });
  } else {
    const auto divisor = hn::Set(d, static_cast<double>(fullSum) / maximum);
    const auto half = hn::Set(d, 0.5);
    ScaleLine(sums, fullSum, maximum, means, count, [&](auto sum) HWY_ATTR {
      return hn::Add(hn::Floor(hn::Add(hn::Div(sum, divisor), half)), unit);
    });
  }
}

#else

template <class T>
void Add(const T* samples, uint32_t* sums, size_t count) {
  Scalar::AddToSums(samples, sums, count);
}

template <class T>
void Scale(const uint32_t* sums, uint32_t fullSum, T maximum, T* means, size_t count) {
  Scalar::ScaleSums(sums, fullSum, maximum, means, count);
}

#endif

void Add8(const uint8_t* samples, uint32_t* sums, size_t count) { Add(samples, sums, count); }
void Add16(const uint16_t* samples, uint32_t* sums, size_t count) { Add(samples, sums, count); }
void Scale8(const uint32_t* sums, uint32_t fullSum, uint8_t maximum, uint8_t* means, size_t count) {
  Scale(sums, fullSum, maximum, means, count);
}
void Scale16(const uint32_t* sums, uint32_t fullSum, uint16_t maximum, uint16_t* means,
             size_t count) {
  Scale(sums, fullSum, maximum, means, count);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Add8);
HWY_EXPORT(Add16);
HWY_EXPORT(Scale8);
HWY_EXPORT(Scale16);

void AddToSums(const uint8_t* samples, uint32_t* sums, size_t count) {
  HWY_DYNAMIC_DISPATCH(Add8)(samples, sums, count);
}

void AddToSums(const uint16_t* samples, uint32_t* sums, size_t count) {
  HWY_DYNAMIC_DISPATCH(Add16)(samples, sums, count);
}

void ScaleSums(const uint32_t* sums, uint32_t fullSum, uint8_t maximum, uint8_t* means,
               size_t count) {
  HWY_DYNAMIC_DISPATCH(Scale8)(sums, fullSum, maximum, means, count);
}

void ScaleSums(const uint32_t* sums, uint32_t fullSum, uint16_t maximum, uint16_t* means,
               size_t count) {
  HWY_DYNAMIC_DISPATCH(Scale16)(sums, fullSum, maximum, means, count);
}

void ScaleSums(const uint32_t* sums, uint32_t fullSum, uint32_t maximum, uint32_t* means,
               size_t count) {
  Scalar::ScaleSums(sums, fullSum, maximum, means, count);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
