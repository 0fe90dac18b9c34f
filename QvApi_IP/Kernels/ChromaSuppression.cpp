// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ChromaSuppression.h"

#include "QvApi_IP/Kernels/ChromaSuppressionScalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QvApi_IP/Kernels/ChromaSuppression.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
// After highway.h, which sets the target.
#include "QvApi_IP/Kernels/Interleave-inl.h"
#include "QvApi_IP/Kernels/Luminance-inl.h"

HWY_BEFORE_NAMESPACE();
namespace QvApi::Kernels {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// The factors of half a vector of pixels, cut to 256, which moves all the way to green already: so
/// their product with a sample fits a lane of twice the sample's width.
template <class W>
struct Factors {
  hn::Mask<W> isMoved;    ///< The pixel is dark or bright.
  hn::Vec<W> aboveGreen;  ///< For components above green.
  hn::Vec<W> belowGreen;
};

template <class W, class V = hn::Vec<W>, class Lane = hn::TFromD<W>>
HWY_INLINE Factors<W> MakeFactors(W w, const ChromaSuppression& settings, V luminance) {
  const auto set = [w](uint32_t value) HWY_ATTR { return hn::Set(w, static_cast<Lane>(value)); };
  luminance = hn::ShiftRightSame(luminance, static_cast<int>(settings.depth) - 8);
  const V low = set(settings.lowThreshold);
  const V high = set(settings.highThreshold);
  const auto isDark = hn::Lt(luminance, low);
  const auto isBright = hn::Gt(luminance, high);
  const V dark = hn::Mul(hn::Sub(hn::Add(low, set(1)), luminance), set(settings.lowStrength));
  const V bright = hn::Mul(hn::Add(hn::Sub(luminance, high), set(1)), set(settings.highStrength));
  const V factor = hn::Min(
      hn::Max(hn::IfThenElseZero(isDark, dark), hn::IfThenElseZero(isBright, bright)), set(256));
  const auto isMoved = hn::Or(isDark, isBright);
  const auto jumps = hn::And(isMoved, hn::Eq(factor, hn::Zero(w)));
  return {isMoved, factor, hn::IfThenElse(jumps, set(256), factor)};
}

template <class W, class V = hn::Vec<W>>
HWY_INLINE V MoveToGreen(W, V component, V green, const Factors<W>& factors) {
  const V top = hn::Max(component, green);
  const V down = hn::ShiftRight<8>(hn::Mul(hn::Sub(top, green), factors.aboveGreen));
  const V up = hn::ShiftRight<8>(hn::Mul(hn::Sub(top, component), factors.belowGreen));
  return hn::Add(hn::Sub(component, down), up);
}

/// Changes a vector of pixels; false if all of them stay.
template <class D, class V = hn::Vec<D>>
HWY_INLINE bool SuppressPixels(D d, const ChromaSuppression& settings, V& c0, V c1, V& c2) {
  const PairTag<D> w;
  const V luminance =
      settings.blueFirst ? LuminanceVector(c2, c1, c0) : LuminanceVector(c0, c1, c2);
  const auto even = MakeFactors(w, settings, EvenSamples(d, luminance));
  const auto odd = MakeFactors(w, settings, OddSamples(d, luminance));
  if (hn::AllFalse(w, hn::Or(even.isMoved, odd.isMoved))) return false;
  const auto greenEven = EvenSamples(d, c1);
  const auto greenOdd = OddSamples(d, c1);
  for (V* component : {&c0, &c2})
    *component = MergeSamples(d, MoveToGreen(w, EvenSamples(d, *component), greenEven, even),
                              MoveToGreen(w, OddSamples(d, *component), greenOdd, odd));
  return true;
}

template <class T>
void Suppress(const ChromaSuppression& settings, T* line, size_t pixels) {
  const hn::ScalableTag<T> d;
  const size_t n = hn::Lanes(d);
  const size_t stride = settings.components;
  hn::Vec<decltype(d)> c0, c1, c2, c3;
  for (; pixels >= n; pixels -= n, line += n * stride) {
    if (stride == 3) {
      LoadPixels3(d, line, c0, c1, c2);
    } else {
      LoadPixels4(d, line, c0, c1, c2, c3);
    }
    if (SuppressPixels(d, settings, c0, c1, c2)) StorePixels(d, c0, c1, c2, line, stride);
  }
  if (pixels == 0) return;
  LoadPixelsN(d, line, stride, pixels, c0, c1, c2, c3);
  if (SuppressPixels(d, settings, c0, c1, c2)) StorePixelsN(d, c0, c1, c2, line, stride, pixels);
}

#else

template <class T>
void Suppress(const ChromaSuppression& settings, T* line, size_t pixels) {
  Scalar::SuppressChroma(settings, line, pixels);
}

#endif

void Suppress8(const ChromaSuppression& settings, uint8_t* line, size_t pixels) {
  Suppress(settings, line, pixels);
}
void Suppress16(const ChromaSuppression& settings, uint16_t* line, size_t pixels) {
  Suppress(settings, line, pixels);
}

}  // namespace HWY_NAMESPACE
}  // namespace QvApi::Kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace QvApi::Kernels {

HWY_EXPORT(Suppress8);
HWY_EXPORT(Suppress16);

namespace {

/// The vector forms compute factors in 16-bit lanes, which is enough for settings of 8 bits.
bool FitsVectors(const ChromaSuppression& settings) {
  return std::max({settings.lowThreshold, settings.lowStrength, settings.highThreshold,
                   settings.highStrength}) <= 255;
}

}  // namespace

void SuppressChroma(const ChromaSuppression& settings, uint8_t* line, size_t pixels) {
  if (!FitsVectors(settings)) return Scalar::SuppressChroma(settings, line, pixels);
  HWY_DYNAMIC_DISPATCH(Suppress8)(settings, line, pixels);
}

void SuppressChroma(const ChromaSuppression& settings, uint16_t* line, size_t pixels) {
  if (!FitsVectors(settings)) return Scalar::SuppressChroma(settings, line, pixels);
  HWY_DYNAMIC_DISPATCH(Suppress16)(settings, line, pixels);
}

}  // namespace QvApi::Kernels
#endif  // HWY_ONCE
