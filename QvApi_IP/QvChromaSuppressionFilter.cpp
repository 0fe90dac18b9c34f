// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvChromaSuppressionFilter.h"

#include "QvApi_IP/Kernels/ChromaSuppression.h"

namespace QvApi {

using namespace Families;

const FormatMap<CQvChromaSuppressionFilter::Handler> CQvChromaSuppressionFilter::m_mapFilters{
    {kBGRx8, &CQvChromaSuppressionFilter::FilterBGRx8},
    {kBGRW, &CQvChromaSuppressionFilter::FilterBGRx16},
};

std::span<const Register<CQvChromaSuppressionFilter>> CQvChromaSuppressionFilter::RegisterTable() {
  using Self = CQvChromaSuppressionFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Selector<&Self::m_selectedPart>(0x10),
      Selected<&Self::m_threshold, &Self::m_selectedPart>(0x20),
      Minimum<Self, kThreshold>(0x30),
      Maximum<Self, kThreshold>(0x38),
      Selected<&Self::m_suppression, &Self::m_selectedPart>(0x40),
      Minimum<Self, kSuppression>(0x50),
      Maximum<Self, kSuppression>(0x58),
  };
  return m_cRegisters;
}

template <class T>
void CQvChromaSuppressionFilter::Suppress(const ImageLines& lines) const {
  Kernels::ChromaSuppression settings{
      .lowThreshold = m_threshold.At(kLow),
      .lowStrength = m_suppression.At(kLow),
      .highThreshold = m_threshold.At(kHigh),
      .highStrength = m_suppression.At(kHigh),
      .depth = static_cast<unsigned>(lines.Depth()),
      .components = lines.Components(),
      .blueFirst = lines.Format().IsBGR(),
  };
  if (settings.lowStrength == 0) settings.lowThreshold = kThreshold.minimum;
  if (settings.highStrength == 0) settings.highThreshold = kThreshold.maximum;
  if (settings.lowThreshold <= kThreshold.minimum && settings.highThreshold >= lines.FullScale())
    return;
  lines.ForEach<T>([&](T* line) { Kernels::SuppressChroma(settings, line, lines.Width()); });
}

void CQvChromaSuppressionFilter::FilterBGRx8(IQvImage& image) {
  Suppress<std::uint8_t>(ImageLines(image));
}

void CQvChromaSuppressionFilter::FilterBGRx16(IQvImage& image) {
  Suppress<std::uint16_t>(ImageLines(image));
}

}  // namespace QvApi
