// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvGammaCorrectionFilter.h"

#include <cmath>
#include <numeric>

namespace QvApi {

using namespace Families;
using Kernels::LookupPattern;

const FormatMap<CQvGammaCorrectionFilter::Handler> CQvGammaCorrectionFilter::m_mapFilters{
    {Mono8 + kBayer8, &CQvGammaCorrectionFilter::CorrectionMono8},
    {kMonoW + kBayerW, &CQvGammaCorrectionFilter::CorrectionMono16},
    {kBGRx8, &CQvGammaCorrectionFilter::CorrectionBGR8},
    {kBGRW, &CQvGammaCorrectionFilter::CorrectionBGR16},
    {{YCbCr8, YCbCr422_8, YCbCr411_8, YCbCr709_422_8}, &CQvGammaCorrectionFilter::CorrectionYCbCr},
};

std::span<const Register<CQvGammaCorrectionFilter>> CQvGammaCorrectionFilter::RegisterTable() {
  using Self = CQvGammaCorrectionFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_gamma>(0x10),
      Minimum<Self, kGamma>(0x20),
      Maximum<Self, kGamma>(0x28),
  };
  return m_cRegisters;
}

CQvGammaComponent::TableReference CQvGammaComponent::LockTable(double gamma, unsigned bits,
                                                               std::uint16_t lower,
                                                               std::uint16_t upper) {
  if (gamma == 1.0) return nullptr;
  return m_cache.Lock({bits, gamma}, [&] {
    Table table(std::size_t{1} << bits);
    std::iota(table.begin(), table.end(), std::uint16_t{0});
    const unsigned top = upper != 0 ? upper : (1U << bits) - 1;
    const double range = top - lower;
    for (unsigned i = 0; lower + i <= top; ++i) {
      // Compared as a double: a power without bounds ends at the top, and a NaN does too.
      const double value = std::fma(std::pow(i / range, gamma), range, lower) + 0.5;
      table[lower + i] = static_cast<std::uint16_t>(value < top ? value : top);
    }
    return table;
  });
}

template <class T>
void CQvGammaCorrectionFilter::Correct(const ImageLines& lines, Samples samples,
                                       std::uint16_t lower, std::uint16_t upper) {
  const auto bits = static_cast<unsigned>(lines.Depth());
  const auto table = m_component.LockTable(m_gamma, bits, lower, upper);
  if (!table) return;
  const Kernels::PreparedLookup<T> lookup(samples.pattern(table->data()), bits);
  lines.ForEach<T>([&](T* line) { Kernels::LookupLine(lookup, line, line, samples.count); });
}

CQvGammaCorrectionFilter::Samples CQvGammaCorrectionFilter::ColorSamples(const ImageLines& lines) {
  const std::size_t count = lines.Width() * lines.Components();
  if (lines.Components() == 3) return {count, [](auto t) { return LookupPattern(t); }};
  return {count, [](auto t) { return LookupPattern(t, t, t, nullptr); }};
}

void CQvGammaCorrectionFilter::CorrectionMono8(IQvImage& image) {
  const ImageLines lines(image);
  Correct<std::uint8_t>(lines, {lines.Width(), [](auto t) { return LookupPattern(t); }});
}

void CQvGammaCorrectionFilter::CorrectionMono16(IQvImage& image) {
  const ImageLines lines(image);
  Correct<std::uint16_t>(lines, {lines.Width(), [](auto t) { return LookupPattern(t); }});
}

void CQvGammaCorrectionFilter::CorrectionBGR8(IQvImage& image) {
  const ImageLines lines(image);
  Correct<std::uint8_t>(lines, ColorSamples(lines));
}

void CQvGammaCorrectionFilter::CorrectionBGR16(IQvImage& image) {
  const ImageLines lines(image);
  Correct<std::uint16_t>(lines, ColorSamples(lines));
}

void CQvGammaCorrectionFilter::CorrectionYCbCr(IQvImage& image) {
  const ImageLines lines(image);
  const std::size_t width = lines.Width();
  switch (image.GetImagePixelFormat()) {
    case YCbCr8:
      return Correct<std::uint8_t>(
          lines, {width * 3, [](auto t) { return LookupPattern(t, nullptr, nullptr); }});
    case YCbCr411_8:
      // Pairs of pixels; the last one of an odd width stays.
      return Correct<std::uint8_t>(
          lines, {width / 2 * 3, [](auto t) { return LookupPattern(t, t, nullptr); }});
    case YCbCr709_422_8:
      return Correct<std::uint8_t>(
          lines, {width * 2, [](auto t) { return LookupPattern(t, nullptr); }}, 16, 255);
    default:
      return Correct<std::uint8_t>(lines,
                                   {width * 2, [](auto t) { return LookupPattern(t, nullptr); }});
  }
}

}  // namespace QvApi
