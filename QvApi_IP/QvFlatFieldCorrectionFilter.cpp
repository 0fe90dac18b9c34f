// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvFlatFieldCorrectionFilter.h"

#include <algorithm>
#include <numeric>

#include "QvApi_IP/Kernels/FlatField.h"

namespace QvApi {

using namespace Families;

const FormatMap<CQvFlatFieldCorrectionFilter::Handler> CQvFlatFieldCorrectionFilter::m_mapFilters{
    {Mono8 + kBayer8, &CQvFlatFieldCorrectionFilter::FilterRaw8},
    {kMonoW + kBayerW, &CQvFlatFieldCorrectionFilter::FilterRaw16},
};

Register<CQvFlatFieldCorrectionFilter> CQvFlatFieldCorrectionFilter::ModeRegister() {
  using Self = CQvFlatFieldCorrectionFilter;
  auto row = Registers::Value<&Self::m_mode>(0x10);
  row.write = [](Self& filter, const unsigned char* bytes) {
    const auto mode = Registers::Decode<EQvFlatFieldCorrectionMode_t, kPlain>(bytes);
    filter.m_calibration.DropIf([&] { return filter.m_mode.Store(mode); });
  };
  return row;
}

std::span<const Register<CQvFlatFieldCorrectionFilter>>
CQvFlatFieldCorrectionFilter::RegisterTable() {
  using Self = CQvFlatFieldCorrectionFilter;
  using namespace Registers;
  static const Register<Self> m_cRegisters[]{
      ModeRegister(),
      Value<&Self::m_calibrationEnable>(0x20),
      Value<&Self::m_target>(0x30),
      Minimum<Self, kTarget>(0x40),
      Maximum<Self, kTarget>(0x48),
  };
  return m_cRegisters;
}

void CQvFlatFieldCorrectionFilter::SetFlatFieldCorrectionMode(EQvFlatFieldCorrectionMode_t mode) {
  if (m_calibration.DropIf([&] { return m_mode.StoreChecked(mode); }))
    NodeMap().Invalidate(m_mode.Node());
}

namespace {

using Targets = std::array<unsigned, 4>;

struct Sum {
  std::uint64_t sum = 0, count = 0;

  /// 128 if there are no samples.
  unsigned Mean(unsigned fullScale) const {
    const double mean = count != 0 ? static_cast<double>(sum) / static_cast<double>(count) : 128.0;
    return static_cast<unsigned>(std::min(mean, static_cast<double>(fullScale)));
  }
};

/// Means of a square in the middle of the calibration image: one for each position in the tile of a
/// mosaic, else one for all.
template <class T>
Targets MeasureTargets(const ImageLines& flat) {
  const std::size_t shorter = std::min(flat.Width(), flat.Height());
  const std::size_t side = shorter > 3 ? shorter / 4 : shorter;
  const std::size_t left = (flat.Width() - side) / 2, top = (flat.Height() - side) / 2;
  std::array<Sum, 4> sums;
  for (std::size_t y = top; y < top + side; ++y) {
    const T* line = flat.Line<const T>(y);
    for (std::size_t x = left; x < left + side; ++x) {
      Sum& sum = sums[x % 2 + y % 2 * 2];
      sum.sum += line[x];
      ++sum.count;
    }
  }
  if (!flat.Format().IsBayer()) {
    Sum all;
    for (const Sum& each : sums) all.sum += each.sum, all.count += each.count;
    sums.fill(all);
  }
  Targets targets;
  std::ranges::transform(sums, targets.begin(),
                         [&](const Sum& sum) { return sum.Mean(flat.FullScale()); });
  return targets;
}

/// Brings `level` to `target`, but not from below its 16th.
std::uint16_t GainFor(unsigned level, unsigned target) {
  constexpr unsigned kLimit = Kernels::kMaximumGain >> Kernels::kGainFractionBits;
  if (level <= target / kLimit) return Kernels::kMaximumGain;
  return static_cast<std::uint16_t>((target << Kernels::kGainFractionBits) / level);
}

template <class T>
std::vector<std::uint16_t> MakeGains(const ImageLines& flat, const Targets& targets) {
  std::vector<std::uint16_t> gains(flat.Width() * flat.Height());
  auto gain = gains.begin();
  for (std::size_t y = 0; y < flat.Height(); ++y) {
    const T* line = flat.Line<const T>(y);
    for (std::size_t x = 0; x < flat.Width(); ++x)
      *gain++ = GainFor(line[x], targets[x % 2 + y % 2 * 2]);
  }
  return gains;
}

}  // namespace

template <class T>
std::shared_ptr<const FlatFieldMap> CFFCCalibrationImage::GetMapRaw(unsigned target) const {
  return m_map.Lock({}, [&] {
    const ImageLines flat(Image());
    FlatFieldMap map;
    if (target == 0)
      map.targets = MeasureTargets<T>(flat);
    else
      map.targets.fill(target);
    if (m_mode == QvFlatFieldCorrectionMode_Multiplication)
      map.gains = MakeGains<T>(flat, map.targets);
    return map;
  });
}

template <class T>
void CQvFlatFieldCorrectionFilter::Correct(const ImageLines& lines,
                                           const CFFCCalibrationImage* calibration) {
  if (!calibration || calibration->Mode() == QvFlatFieldCorrectionMode_Off) return;
  const auto map = calibration->GetMapRaw<T>(m_target);
  const std::size_t width = lines.Width();
  const auto fullScale = static_cast<T>(lines.FullScale());
  if (calibration->Mode() == QvFlatFieldCorrectionMode_Multiplication) {
    for (std::size_t y = 0; y < lines.Height(); ++y)
      Kernels::MultiplyGainRow(lines.Line<T>(y), &map->gains[y * width], width, fullScale);
    return;
  }
  const ImageLines flat(calibration->Image());
  for (std::size_t y = 0; y < lines.Height(); ++y) {
    const unsigned* targets = &map->targets[y % 2 * 2];
    Kernels::AddDifferenceRow(lines.Line<T>(y), flat.Line<const T>(y), width,
                              {targets[0], targets[1]}, fullScale);
  }
}

void CQvFlatFieldCorrectionFilter::FilterRaw8(IQvImage& image,
                                              const CFFCCalibrationImage* calibration) {
  Correct<std::uint8_t>(ImageLines(image), calibration);
}

void CQvFlatFieldCorrectionFilter::FilterRaw16(IQvImage& image,
                                               const CFFCCalibrationImage* calibration) {
  Correct<std::uint16_t>(ImageLines(image), calibration);
}

}  // namespace QvApi
