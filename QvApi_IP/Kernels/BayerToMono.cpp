// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/BayerToMono.h"

#include "QvApi_IP/Kernels/BayerToMonoScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/BayerToMono.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After highway.h, which sets the target.
#include "QvApi_IP/Kernels/Luminance-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// The grey pixels of the windows from column x on, red being in columns x + kRedColumn, ... of its
/// row. The mean of the greens is rounded down, so it too is taken of complements.
template <size_t kRedColumn, class D, class T = hn::TFromD<D>>
HWY_INLINE hn::Vec<D> WindowsToMono(D d, const Scalar::BayerRowPair<T>& rows, size_t x) {
  const auto red0 = hn::Not(hn::LoadU(d, rows.red + x));
  const auto red1 = hn::Not(hn::LoadU(d, rows.red + x + 1));
  const auto blue0 = hn::Not(hn::LoadU(d, rows.blue + x));
  const auto blue1 = hn::Not(hn::LoadU(d, rows.blue + x + 1));
  const auto pick = [](auto odd, auto even) HWY_ATTR {
    return kRedColumn == 0 ? hn::OddEven(odd, even) : hn::OddEven(even, odd);
  };
  const auto green = pick(hn::AverageRound(red0, blue1), hn::AverageRound(red1, blue0));
  const auto red = pick(red1, red0);
  const auto blue = pick(blue0, blue1);
  return hn::Not(LuminanceOfComplements(red, green, blue));
}

template <size_t kRedColumn, class T>
void MonoRow(const T* row, const T* nextRow, T* destination, size_t width, int phase) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  if (width <= n) {
    Scalar::BayerRowToMono(row, nextRow, destination, width, phase);
    return;
  }
  const Scalar::BayerRowPair<T> rows(row, nextRow, phase);
  const size_t last = width - 1;
  for (size_t x = 0; x + n <= last; x += n) {
    hn::StoreU(WindowsToMono<kRedColumn>(d, rows, x), d, destination + x);
  }
  // The rest as one more vector that ends where the windows end.
  const size_t x = last - n;
  hn::StoreU(x % 2 == 0 ? WindowsToMono<kRedColumn>(d, rows, x)
                        : WindowsToMono<1 - kRedColumn>(d, rows, x),
             d, destination + x);
  destination[last] = Scalar::BayerPixelToMono(row, nextRow, last, width, phase);
}

template <class T>
void Mono(const T* row, const T* nextRow, T* destination, size_t width, int phase) {
  if (Scalar::BayerRowPair<T>(row, nextRow, phase).redIsEven) {
    MonoRow<0>(row, nextRow, destination, width, phase);
  } else {
    MonoRow<1>(row, nextRow, destination, width, phase);
  }
}

#else

template <class T>
void Mono(const T* row, const T* nextRow, T* destination, size_t width, int phase) {
  Scalar::BayerRowToMono(row, nextRow, destination, width, phase);
}

#endif

void Mono8(const uint8_t* row, const uint8_t* nextRow, uint8_t* destination, size_t width,
           int phase) {
  Mono(row, nextRow, destination, width, phase);
}
void Mono16(const uint16_t* row, const uint16_t* nextRow, uint16_t* destination, size_t width,
            int phase) {
  Mono(row, nextRow, destination, width, phase);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Mono8);
HWY_EXPORT(Mono16);

void BayerRowToMono(const uint8_t* row, const uint8_t* nextRow, uint8_t* destination, size_t width,
                    int phase) {
  if (IsBayerPhase(phase)) HWY_DYNAMIC_DISPATCH(Mono8)(row, nextRow, destination, width, phase);
}

void BayerRowToMono(const uint16_t* row, const uint16_t* nextRow, uint16_t* destination,
                    size_t width, int phase) {
  if (IsBayerPhase(phase)) HWY_DYNAMIC_DISPATCH(Mono16)(row, nextRow, destination, width, phase);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
