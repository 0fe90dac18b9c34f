// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvDefectivePixelDetectionFilter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "QvApi_IP/Kernels/SampleSums.h"
#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvMemoryReport.h"
#include "QvApi_TL/PixelLayout.h"

namespace QvApi {

using namespace Families;

const FormatMap<CQvDefectivePixelDetectionFilter::Handler>
    CQvDefectivePixelDetectionFilter::m_mapFilters{
        {Mono8, &CQvDefectivePixelDetectionFilter::PerformMono8},
        {kMonoW + kMonoPacked - FormatList{Mono1p, Mono2p, Mono4p},
         &CQvDefectivePixelDetectionFilter::PerformMono16},
        {kBayer8 + kPolarized8 - kPolarizedBayer, &CQvDefectivePixelDetectionFilter::PerformBayer8},
        {kBayer - kBayer8 - kBayer4p + kPolarizedMono - kPolarized8,
         &CQvDefectivePixelDetectionFilter::PerformBayer16},
        {kPolarized8 - kPolarizedMono, &CQvDefectivePixelDetectionFilter::PerformPolBayer8},
        {kPolarizedBayer - kPolarized8, &CQvDefectivePixelDetectionFilter::PerformPolBayer16},
    };

template <unsigned target>
constexpr Register<CQvDefectivePixelDetectionFilter> CQvDefectivePixelDetectionFilter::Threshold() {
  using Self = CQvDefectivePixelDetectionFilter;
  return {
      .address = 0x100 + 0x10 * target,
      .size = sizeof(double),
      .read =
          [](const Self& self, unsigned char* bytes) {
            Registers::Encode<double>(self.m_thresholds.At(Target{target}), bytes);
          },
      .write =
          [](Self& self, const unsigned char* bytes) {
            self.m_thresholds.At(Target{target}).Store(Registers::Decode<double, kPlain>(bytes));
          }};
}

std::span<const Register<CQvDefectivePixelDetectionFilter>>
CQvDefectivePixelDetectionFilter::RegisterTable() {
  using Self = CQvDefectivePixelDetectionFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Threshold<0>(),
      Threshold<1>(),
      Threshold<2>(),
      Threshold<3>(),
      Threshold<4>(),
      Threshold<kTargets>(),  // is refused, as there is no such target
      Value<&Self::m_averagingArea>(0x500),
      Value<&Self::m_peripheralAreaSize>(0x510),
      Value<&Self::m_maximumPixelCount>(0x520),
      Constant<Self, kMaximumPixelCount.maximum + 1>(0x528),
  };
  return m_cRegisters;
}

void CQvDefectivePixelDetectionFilter::GetDetectionResult(
    _EQvDefectivePixelDetectionStatus_t* pStatus, std::size_t* pnCount,
    _SQvDefectivePixelInformation_t* pResults) {
  if (!pnCount) throw INVALID_ARGUMENT_EXCEPTION("pnCount is NULL.");
  GenApi::AutoLock lock(m_parameterLock);
  if (pStatus) *pStatus = m_pixels.GetStatus();
  if (pResults && m_pixels.GetStatus() != QvDefectivePixelDetectionStatus_None)
    m_pixels.CopyTo(pResults, *pnCount);
  *pnCount = m_pixels.Count();
}

void CQvDefectivePixelDetectionFilter::ClearDetectionResult() {
  GenApi::AutoLock lock(m_parameterLock);
  m_pixels.Clear();
}

IQvImage* CQvDefectivePixelDetectionFilter::Filter(IQvImage* image) {
  const Handler handler = RequireFilter(image);
  GenApi::AutoLock lock(m_parameterLock);
  IQvImage& working = m_workingImage.Make(*image, UnpackedFormat(image->GetImagePixelFormat()));
  m_pixels.BeginImage();
  WithMemoryReport([&] { Run(handler, working); });
  m_pixels.EndImage();
  return image;
}

void CQvDefectivePixelDetectionFilter::PerformMono8(IQvImage& image) {
  Perform<std::uint8_t>(image, 1);
}

void CQvDefectivePixelDetectionFilter::PerformMono16(IQvImage& image) {
  Perform<std::uint16_t>(image, 1);
}

void CQvDefectivePixelDetectionFilter::PerformBayer8(IQvImage& image) {
  Perform<std::uint8_t>(image, 2);
}

void CQvDefectivePixelDetectionFilter::PerformBayer16(IQvImage& image) {
  Perform<std::uint16_t>(image, 2);
}

void CQvDefectivePixelDetectionFilter::PerformPolBayer8(IQvImage& image) {
  Perform<std::uint8_t>(image, 4);
}

void CQvDefectivePixelDetectionFilter::PerformPolBayer16(IQvImage& image) {
  Perform<std::uint16_t>(image, 4);
}

namespace {

using Target = _EQvDefectivePixelDetectionThresholdTarget_t;

Target TargetAt(const PixelFormatRow& format, std::size_t x, std::size_t y) {
  switch (ChannelOf(ComponentsAt(format, x, y)[0])) {
    case Channel::R:
      return QvDefectivePixelDetectionThresholdTarget_BayerR;
    case Channel::Gr:
      return QvDefectivePixelDetectionThresholdTarget_BayerGr;
    case Channel::Gb:
      return QvDefectivePixelDetectionThresholdTarget_BayerGb;
    case Channel::B:
      return QvDefectivePixelDetectionThresholdTarget_BayerB;
    default:
      return QvDefectivePixelDetectionThresholdTarget_Mono;
  }
}

/// Calls `function(x, y)` for the phases that have pixels.
template <class Function>
void ForEachPhase(const ImageLines& lines, std::size_t period, Function function) {
  for (std::size_t y = 0; y < std::min(period, lines.Height()); ++y)
    for (std::size_t x = 0; x < std::min(period, lines.Width()); ++x) function(x, y);
}

/// The range of samples that are neither below `lower` nor above `upper`.
template <class T>
std::pair<T, T> RangeBetween(double lower, double upper) {
  constexpr T kMost = std::numeric_limits<T>::max();
  const double least = std::ceil(lower), most = std::floor(upper);
  if (least > kMost || most < 0) return {kMost, 0};  // an empty one
  // Limits that are no numbers exclude nothing.
  return {least > 0 ? static_cast<T>(least) : T{0}, most < kMost ? static_cast<T>(most) : kMost};
}

}  // namespace

template <class T>
void CQvDefectivePixelDetectionFilter::Perform(const IQvImage& image, std::size_t period) {
  const ImageLines lines(image);
  Mosaic mosaic{.lines = lines,
                .period = period,
                .fullScale = static_cast<double>(lines.FullScale()),
                .thresholds = {},
                .maximumPixelCount = m_maximumPixelCount};
  const PixelFormatRow& format = *FindPixelFormat(image.GetImagePixelFormat());
  ForEachPhase(lines, period, [&](std::size_t x, std::size_t y) {
    mosaic.thresholds[y][x] = m_thresholds.At(TargetAt(format, x, y));
  });
  m_found.resize(lines.Width());
  if (m_averagingArea == QvDefectivePixelDetectionAveragingArea_WholeImage)
    CompareWithWholeImage<T>(mosaic);
  else
    CompareWithSurroundings<T>(mosaic);
}

template <class T>
void CQvDefectivePixelDetectionFilter::CompareWithWholeImage(const Mosaic& mosaic) {
  const auto& [lines, period, fullScale, thresholds, maximum] = mosaic;
  std::array<Kernels::CycleSums, kMaximumPeriod> sums{};
  for (std::size_t y = 0; y < lines.Height(); ++y)
    Kernels::AddToCycle(lines.Line<const T>(y), lines.Width(), sums[y % period]);

  PhaseNumbers means;
  std::array<Kernels::SampleRanges<T>, kMaximumPeriod> ranges{};
  ForEachPhase(lines, period, [&](std::size_t x, std::size_t y) {
    std::uint64_t sum = 0;
    for (std::size_t i = x; i < Kernels::kSumCycle; i += period) sum += sums[y][i];
    const std::size_t count =
        ((lines.Width() - 1 - x) / period + 1) * ((lines.Height() - 1 - y) / period + 1);
    const double mean = static_cast<double>(sum) / static_cast<double>(count);
    const auto [least, most] = RangeBetween<T>(std::fma(-fullScale, thresholds[y][x], mean),
                                               std::fma(fullScale, thresholds[y][x], mean));
    means[y][x] = mean;
    for (std::size_t i = x; i < kMaximumPeriod; i += period) {
      ranges[y].least[i] = least;
      ranges[y].most[i] = most;
    }
  });

  for (std::size_t y = 0; y < lines.Height(); ++y) {
    const T* line = lines.Line<const T>(y);
    const std::size_t count =
        Kernels::FindOutside(line, ranges[y % period], lines.Width(), m_found.data());
    for (const std::size_t x : std::span(m_found).first(count))
      Add(mosaic, x, y, line[x], means[y % period][x % period]);
  }
}

template <class T>
void CQvDefectivePixelDetectionFilter::CompareWithSurroundings(const Mosaic& mosaic) {
  const auto& [lines, period, fullScale, thresholds, maximum] = mosaic;
  const WindowShape shape(lines, period, m_peripheralAreaSize);
  PhaseNumbers distances;
  ForEachPhase(lines, period, [&](std::size_t x, std::size_t y) {
    distances[y][x] = fullScale * thresholds[y][x];
  });

  const auto visit = [&](std::size_t y, const auto& windows) {
    const T* line = lines.Line<const T>(y);
    const std::size_t found = Kernels::FindOutliers(line, windows, m_found.data());
    for (const std::size_t x : std::span(m_found).first(found)) {
      const std::uint64_t count = windows.counts[x], sum = windows.sums[x];
      if (count < 2) continue;
      const double value = line[x];
      const double mean = static_cast<double>(sum - line[x]) / static_cast<double>(count - 1);
      const double distance = distances[y % period][x % period];
      if (value < mean - distance || value > mean + distance) Add(mosaic, x, y, value, mean);
    }
  };
  const auto search = [&]<class Sum>(SlidingWindows<Sum>& windows) {
    windows.template ForEachRow<T>(lines, shape, distances, visit);
  };
  const std::uint64_t mostSum = std::uint64_t{shape.MaximumCount()} * std::numeric_limits<T>::max();
  if constexpr (sizeof(T) == 1)
    if (mostSum <= 0xFFFF) return search(std::get<SlidingWindows<std::uint16_t>>(m_windows));
  if (mostSum <= 0xFFFFFFFF) return search(std::get<SlidingWindows<std::uint32_t>>(m_windows));
  search(std::get<SlidingWindows<std::uint64_t>>(m_windows));
}

void CQvDefectivePixelDetectionFilter::Add(const Mosaic& mosaic, std::size_t x, std::size_t y,
                                           double value, double mean) {
  m_pixels.Add({x, y, value, mean, std::abs(value - mean) / mosaic.fullScale},
               mosaic.maximumPixelCount);
}

}  // namespace QvApi
