// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvNoiseReductionFilter.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "QvApi_IP/Kernels/BayerPhase.h"
#include "QvApi_IP/Kernels/DarkFrame.h"
#include "QvApi_IP/Kernels/Median.h"

namespace QvApi {

using namespace Families;
using Kernels::MedianSites;
using Kernels::MedianWindow;

const FormatMap<CQvNoiseReductionFilter::Handler> CQvNoiseReductionFilter::m_mapFilters{
    {Mono8, &CQvNoiseReductionFilter::FilterMono8},
    {kMonoW, &CQvNoiseReductionFilter::FilterMono16},
    {kBayer8, &CQvNoiseReductionFilter::FilterBayer8},
    {kBayerW, &CQvNoiseReductionFilter::FilterBayer16},
};

std::span<const Register<CQvNoiseReductionFilter>> CQvNoiseReductionFilter::RegisterTable() {
  using Self = CQvNoiseReductionFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_mode>(0x10),
      Value<&Self::m_calibrationEnable>(0x20),
  };
  return m_cRegisters;
}

namespace {

constexpr std::size_t kRowsAbove = 2;

/// Sites of line `y` of an image whose first line has the sites `first`.
MedianSites SitesOfLine(MedianSites first, std::size_t y) {
  return y % 2 == 0 ? first : SitesOfNextRow(first);
}

MedianSites SitesOfMosaic(const ImageLines& lines) {
  const int phase = lines.Format().GetPixelColorFilter(0, 0);
  return Kernels::StartsGreen(phase) ? MedianSites::GreenAtEven : MedianSites::GreenAtOdd;
}

/// Line `y` and those around it; `above(y)` gives line y and those above, which exist.
template <class T, class Above>
MedianWindow<T> WindowAt(const ImageLines& lines, std::size_t y, Above above) {
  const auto below = [&](std::size_t at) {
    return at < lines.Height() ? lines.Line<const T>(at) : nullptr;
  };
  return {y >= 2 ? above(y - 2) : nullptr, y >= 1 ? above(y - 1) : nullptr, above(y), below(y + 1),
          below(y + 2)};
}

/// From this value on a pixel counts as saturated.
template <class T>
T SaturationLimit(const ImageLines& lines) {
  return static_cast<T>(lines.FullScale() - (1U << (lines.Depth() - 7)));
}

}  // namespace

/// The median of each pixel, written over it. What lines below need of a line that is overwritten
/// is kept in a ring of lines.
template <class T>
void CQvNoiseReductionFilter::Simple(const ImageLines& lines, MedianSites firstSites) {
  const TemporaryBuffer ring(*this);
  ring->SetSize(lines.Width(), kRowsAbove + 1, lines.Format().GetPixelFormat(), 0);
  const ImageLines kept(*ring->GetIQvImage());
  const auto original = [&](std::size_t y) { return kept.Line<T>(y % kept.Height()); };
  for (std::size_t y = 0; y < lines.Height(); ++y) {
    T* line = lines.Line<T>(y);
    std::memcpy(original(y), line, lines.Width() * sizeof(T));
    Kernels::MedianRow(WindowAt<T>(lines, y, original), line, lines.Width(),
                       SitesOfLine(firstSites, y));
  }
}

/// Subtracts line by line. A line is repaired as soon as those below it that this needs are
/// subtracted too; until then the pixels in question are remembered as bits.
template <class T>
void CQvNoiseReductionFilter::Subtract(const ImageLines& lines, const ImageLines& dark,
                                       MedianSites firstSites) {
  constexpr std::size_t kKept = kRowsAbove + 1;
  const std::size_t width = lines.Width(), delay = firstSites == MedianSites::Mono ? 1 : 2;
  const auto repairs = Kernels::DarkRepairs(firstSites, lines.Height());
  const auto limit = SaturationLimit<T>(lines);
  const TemporaryBuffer memory(*this);
  memory->SetSize(Kernels::DarkMarkBytes(width), kKept, Mono8, 0);
  const ImageLines marks(*memory->GetIQvImage());
  std::array<bool, kKept> isMarked{};
  for (std::size_t below = 0; below < lines.Height(); ++below) {
    isMarked[below % kKept] =
        Kernels::SubtractDarkRow(lines.Line<T>(below), dark.Line<const T>(below), width, limit,
                                 marks.Line<std::uint8_t>(below % kKept));
    const std::size_t y = below - delay;  // wraps round before the first
    if (!repairs.Contains(y) || !isMarked[y % kKept]) continue;
    const auto subtracted = [&](std::size_t at) { return lines.Line<const T>(at); };
    Kernels::RepairDarkRow(WindowAt<T>(lines, y, subtracted), lines.Line<T>(y), width,
                           SitesOfLine(firstSites, y), marks.Line<std::uint8_t>(y % kKept));
  }
}

template <class T>
void CQvNoiseReductionFilter::Reduce(const ImageLines& lines,
                                     const CNoiseReductionCalibrationImage* calibration,
                                     MedianSites firstSites) {
  switch (m_mode) {
    case QvNoiseReductionMode_Simple:
      return Simple<T>(lines, firstSites);
    case QvNoiseReductionMode_SubtractingLightShieldingImage:
      if (calibration) Subtract<T>(lines, ImageLines(calibration->Image()), firstSites);
      return;
    default:
      return;
  }
}

void CQvNoiseReductionFilter::FilterMono8(IQvImage& image,
                                          const CNoiseReductionCalibrationImage* calibration) {
  Reduce<std::uint8_t>(ImageLines(image), calibration, MedianSites::Mono);
}

void CQvNoiseReductionFilter::FilterMono16(IQvImage& image,
                                           const CNoiseReductionCalibrationImage* calibration) {
  Reduce<std::uint16_t>(ImageLines(image), calibration, MedianSites::Mono);
}

void CQvNoiseReductionFilter::FilterBayer8(IQvImage& image,
                                           const CNoiseReductionCalibrationImage* calibration) {
  const ImageLines lines(image);
  Reduce<std::uint8_t>(lines, calibration, SitesOfMosaic(lines));
}

void CQvNoiseReductionFilter::FilterBayer16(IQvImage& image,
                                            const CNoiseReductionCalibrationImage* calibration) {
  const ImageLines lines(image);
  Reduce<std::uint16_t>(lines, calibration, SitesOfMosaic(lines));
}

}  // namespace QvApi
