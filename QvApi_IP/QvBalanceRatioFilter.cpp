// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvBalanceRatioFilter.h"

#include <algorithm>
#include <cmath>

#include "QvApi_IP/Kernels/Lookup.h"
#include "QvApi_IP/Kernels/SampleSums.h"
#include "QvApi_IP/QvChannelCycle.h"

namespace QvApi {

using namespace Families;

const FormatMap<CQvBalanceRatioFilter::Handler> CQvBalanceRatioFilter::m_mapFilters{
    {kBGRx8, &CQvBalanceRatioFilter::FilterBGR8},
    {kBGRW, &CQvBalanceRatioFilter::FilterBGR16},
    {Mono8, &CQvBalanceRatioFilter::FilterMono8},
    {kMonoW, &CQvBalanceRatioFilter::FilterMono16},
    {kBayer8, &CQvBalanceRatioFilter::FilterBayer8},
    {kBayerW, &CQvBalanceRatioFilter::FilterBayer16},
    {{Families::YCbCr8, YCbCr422_8, YCbCr411_8, YCbCr709_422_8}, &CQvBalanceRatioFilter::YCbCr8},
};

std::span<const Register<CQvBalanceRatioFilter>> CQvBalanceRatioFilter::RegisterTable() {
  using Self = CQvBalanceRatioFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Selector<&Self::m_selector>(0x10),
      Selected<&Self::m_ratios, &Self::m_selector>(0x18),
      Maximum<Self, kRatio>(0x20),
      Minimum<Self, kRatio>(0x28),
      Selected<&Self::m_offsetsBefore, &Self::m_selector>(0x30),
      Maximum<Self, kOffsetBefore>(0x40),
      Minimum<Self, kOffsetBefore>(0x48),
      Selected<&Self::m_offsetsAfter, &Self::m_selector>(0x50),
      Maximum<Self, kOffsetAfter>(0x60),
      Minimum<Self, kOffsetAfter>(0x68),
      Value<&Self::m_balanceWhiteAuto>(0x70),
  };
  return m_cRegisters;
}

CGainTableManager::TableReference CGainTableManager::LockTable(const GainCurve& curve,
                                                               unsigned long bits,
                                                               unsigned short minimum,
                                                               unsigned short maximum) {
  return m_cache.Lock({curve, bits, minimum, maximum}, [&] {
    Table table(std::size_t{1} << bits);
    const int top = maximum != 0 ? maximum : static_cast<int>(table.size()) - 1;
    const double before = curve.offsetBefore;
    const double after = std::min(curve.offsetAfter, top);
    for (std::size_t i = 0; i < table.size(); ++i) {
      const double y = std::fma(curve.gain, static_cast<double>(i) + before, after);
      if (y >= top)
        table[i] = static_cast<std::uint16_t>(top);
      else if (y <= minimum)
        table[i] = minimum;
      else if (!std::isnan(y))  // which counts as 0
        table[i] = static_cast<std::uint16_t>(y);
    }
    return table;
  });
}

CQvBalanceRatioFilter::Curves CQvBalanceRatioFilter::CurrentCurves() const {
  Curves curves;
  for (unsigned i = 0; i < kChannels; ++i) {
    const auto channel = static_cast<Channel>(i);
    curves[i] = {m_ratios.At(channel), m_offsetsBefore.At(channel), m_offsetsAfter.At(channel)};
  }
  return curves;
}

template <class T>
CQvBalanceRatioFilter::Sums CQvBalanceRatioFilter::SumChannels(const IQvImage& image) {
  const ImageLines lines(image);
  const LineCycles& cycles = ChannelsOf(image.GetImagePixelFormat());
  const std::size_t count = cycles[0].Samples(lines.Width());
  std::array<Kernels::CycleSums, 2> places{};
  for (std::size_t y = 0; y < lines.Height(); ++y)
    Kernels::AddToCycle(lines.Line<const T>(y), count, places[y % 2]);

  Sums sums{};
  for (std::size_t odd : {0, 1}) {
    const std::size_t height = (lines.Height() + 1 - odd) / 2;
    for (std::size_t k = 0; k < Kernels::kSumCycle; ++k) {
      const Channel channel = cycles[odd].channels[k % cycles[odd].period];
      if (channel == kNoChannel) continue;
      sums[channel].count += height * ((count + Kernels::kSumCycle - 1 - k) / Kernels::kSumCycle);
      sums[channel].sum += places[odd][k];
    }
  }
  return sums;
}

void CQvBalanceRatioFilter::UpdateRGBGain(const Sums& sums, Curves& curves) {
  const std::array means{sums[QvBalanceRatioSelector_Red].Mean(),
                         sums[QvBalanceRatioSelector_Green].Mean(),
                         sums[QvBalanceRatioSelector_Blue].Mean()};
  const auto reference = static_cast<std::size_t>(std::ranges::max_element(means) - means.begin());
  const double level = means[reference] + curves[reference].offsetBefore;

  double squaredChange = 0;
  for (std::size_t i = 0; i < means.size(); ++i) {
    double ratio = 1;
    if (i != reference) {
      const double denominator = means[i] + curves[i].offsetBefore;
      ratio = denominator < 0 ? kRatio.maximum : level / denominator;
      // A black image has none: NaN stays.
      if (ratio > kRatio.maximum) ratio = kRatio.maximum;
    }
    const double change = ratio - curves[i].gain;
    squaredChange = std::fma(change, change, squaredChange);
    curves[i].gain = ratio;
    SetFound(m_ratios.At(static_cast<Channel>(i)), ratio);
  }
  if (squaredChange <= 0.0025) EndOnce();
}

void CQvBalanceRatioFilter::YCbCr8UpdateGain(const Sums& sums, Curves& curves) {
  double squaredChange = 0;
  for (Channel channel : {QvBalanceRatioSelector_Cb, QvBalanceRatioSelector_Cr}) {
    const GainCurve found{1.0, static_cast<int>(-sums[channel].Mean()), 128};
    const double change = static_cast<double>(found.offsetBefore) - curves[channel].offsetBefore;
    squaredChange += change * change;
    curves[channel] = found;
    SetFound(m_ratios.At(channel), found.gain);
    SetFound(m_offsetsAfter.At(channel), found.offsetAfter);
    SetFound(m_offsetsBefore.At(channel), found.offsetBefore);
  }
  if (squaredChange <= 8.0) EndOnce();
}

template <class T>
void CQvBalanceRatioFilter::Apply(IQvImage& image, const Curves& curves, LimitsOf limitsOf) {
  const ImageLines lines(image);
  const auto bits = static_cast<unsigned>(lines.Depth());
  std::array<CGainTableManager::TableReference, kChannels> tables;
  const auto lookupOf = [&](const ChannelCycle& cycle) {
    std::array<const std::uint16_t*, Kernels::kMaxLookupPeriod> entries{};
    for (std::size_t i = 0; i < cycle.period; ++i) {
      const Channel channel = cycle.channels[i];
      if (channel == kNoChannel) continue;
      const Limits limits = limitsOf(channel);
      if (!tables[channel])
        tables[channel] =
            m_tables[channel].LockTable(curves[channel], bits, limits.minimum, limits.maximum);
      entries[i] = tables[channel]->data();
    }
    return Kernels::PreparedLookup<T>(Kernels::LookupPattern({entries.data(), cycle.period}), bits);
  };

  const LineCycles& cycles = ChannelsOf(image.GetImagePixelFormat());
  const Kernels::PreparedLookup<T> lookups[]{lookupOf(cycles[0]), lookupOf(cycles[1])};
  const std::size_t count = cycles[0].Samples(lines.Width());
  for (std::size_t y = 0; y < lines.Height(); ++y) {
    T* line = lines.Line<T>(y);
    Kernels::LookupLine(lookups[y % 2], line, line, count);
  }
}

template <class T>
void CQvBalanceRatioFilter::FilterColor(IQvImage& image) {
  Curves curves = CurrentCurves();
  if (IsAutomatic()) UpdateRGBGain(SumChannels<T>(image), curves);
  Apply<T>(image, curves);
}

void CQvBalanceRatioFilter::YCbCr8(IQvImage& image) {
  Curves curves = CurrentCurves();
  if (IsAutomatic()) YCbCr8UpdateGain(SumChannels<std::uint8_t>(image), curves);
  // BT.709 video keeps codes beyond these for other purposes.
  if (image.GetImagePixelFormat() == YCbCr709_422_8)
    Apply<std::uint8_t>(image, curves, [](Channel channel) {
      return channel == QvBalanceRatioSelector_Y ? Limits{16, 235} : Limits{16, 240};
    });
  else
    Apply<std::uint8_t>(image, curves, [](Channel) { return Limits{0, 255}; });
}

}  // namespace QvApi
