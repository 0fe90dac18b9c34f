// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvSNMeasurement.h"

#include <Base/GCException.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

#include "QvApi_IP/Kernels/SampleMoments.h"
#include "QvApi_TL/PixelLayout.h"

namespace QvApi {
namespace {

using Kernels::CycleMoments;
using Kernels::kSumCycle;

/// The sums of one component.
struct CCalSN {
  std::size_t count = 0;
  double sum = 0;
  double sumOfSquares = 0;

  static double Mean(double sum, std::size_t count) {
    return count == 0 ? 0.0 : sum / static_cast<double>(count);
  }
};

/// Which of the components each sample of a line is.
class SampleClasses {
 public:
  static constexpr std::size_t kNone = 16;  ///< Of alpha.
  using Sums = std::array<CCalSN, kNone + 1>;
  /// By the sample's place in a cycle.
  using Pattern = std::array<std::uint8_t, kSumCycle>;

  explicit SampleClasses(PixelFormat format)
      : m_row(*FindPixelFormat(format)), m_period(TilePeriod(m_row)) {}

  /// Samples of a pixel.
  std::size_t Step() const { return m_row.componentCount; }
  std::size_t Period() const { return m_period; }
  std::size_t Count() const { return IsRaw() ? m_period * m_period : 3; }

  EQvPixelComponent_t Component(std::size_t index) const {
    if (IsSubsampled())
      return std::array{EQvPixelComponent_t::Y8, EQvPixelComponent_t::Cr8,
                        EQvPixelComponent_t::Cb8}[index];
    if (!IsRaw()) return ComponentsAt(m_row, 0, 0)[index];
    return RawComponent(index % m_period, index / m_period);
  }

  /// Of a line of the image from this pixel on.
  Pattern InImage(std::size_t x, std::size_t y) const {
    Pattern pattern;
    for (std::size_t i = 0; i < kSumCycle; ++i)
      pattern[i] = static_cast<std::uint8_t>(At(x + i / Step(), y, i % Step()));
    return pattern;
  }
  /// Of a line of a region that begins in this column, as the figures of frames count them.
  Pattern InRegion(std::size_t x, std::size_t row) const { return InImage(IsRaw() ? 0 : x, row); }

 private:
  bool IsRaw() const { return Step() == 1; }
  bool IsSubsampled() const { return Step() == 2; }

  std::size_t At(std::size_t x, std::size_t y, std::size_t sample) const {
    if (IsRaw()) return y % m_period * m_period + x % m_period;
    if (IsSubsampled()) return sample == 0 ? 0 : 1 + x % 2;
    return sample < 3 ? sample : kNone;
  }

  /// The greens of transposed polarizer sensors carry each other's names in this measurement.
  EQvPixelComponent_t RawComponent(std::size_t x, std::size_t y) const {
    const EQvPixelComponent_t component = ComponentsAt(m_row, x, y)[0];
    if (m_row.kind != PixelKind::PolarizedBayer || m_row.polarizerPattern <= 4) return component;
    const auto code = static_cast<std::uint32_t>(component);
    const auto channel = static_cast<Channel>(code >> 24);
    const auto angle = static_cast<PolarizerAngle>(code & 0xFF);
    if (channel == Channel::Gr) return ComponentCode(Channel::Gb, m_row.depth, angle);
    if (channel == Channel::Gb) return ComponentCode(Channel::Gr, m_row.depth, angle);
    return component;
  }

  const PixelFormatRow& m_row;
  const std::size_t m_period;
};

/// Walks the region once, line by line through all frames, since sums over pixels must come in
/// raster order. Sums of samples and squares are integers, so theirs may come in any.
template <class T>
class Measurement {
 public:
  Measurement(std::span<const ImageLines> frames, const SNRegion& region,
              const SampleClasses& classes)
      : m_frames(frames),
        m_region(region),
        m_classes(classes),
        m_count(region.width * classes.Step()),
        m_lines(frames.size()),
        m_sums(m_count),
        m_squares(m_count),
        m_means(m_count),
        m_deviations(m_count),
        m_moments(frames.size() * classes.Period()) {}

  std::vector<CSNMeasurementValue> Run() {
    for (std::size_t row = 0; row < m_region.height; ++row) AddRow(row);
    for (std::size_t frame = 0; frame < m_frames.size(); ++frame) AddFrame(frame);
    std::vector<CSNMeasurementValue> values;
    for (std::size_t k = 0; k < m_classes.Count(); ++k) {
      const CCalSN &pixels = m_pixelSD[k], &frames = m_frameSD[k];
      values.push_back({m_classes.Component(k), pixels.count,
                        CCalSN::Mean(pixels.sum, pixels.count),
                        CCalSN::Mean(pixels.sumOfSquares, pixels.count),
                        CCalSN::Mean(frames.sum, frames.count)});
    }
    return values;
  }

 private:
  /// How many samples of a line are at a place in the cycle.
  std::size_t SamplesAt(std::size_t place) const {
    return (m_count + kSumCycle - 1 - place) / kSumCycle;
  }

  /// The figures of each pixel of a row.
  void AddRow(std::size_t row) {
    const std::size_t y = m_region.y + row;
    for (std::size_t i = 0; i < m_frames.size(); ++i)
      m_lines[i] = m_frames[i].Line<const T>(y) + m_region.x * m_classes.Step();
    std::ranges::fill(m_sums, 0);
    std::ranges::fill(m_squares, 0);
    Kernels::AddMoments(m_lines.data(), m_lines.size(), m_count, m_sums.data(), m_squares.data(),
                        &m_moments[row % m_classes.Period() * m_frames.size()]);
    Kernels::MeansAndDeviations(m_sums.data(), m_squares.data(), m_count, m_frames.size(),
                                m_means.data(), m_deviations.data());
    const auto pattern = m_classes.InImage(m_region.x, y);
    for (std::size_t i = 0; i < kSumCycle; ++i) m_pixelSD[pattern[i]].count += SamplesAt(i);
    for (std::size_t i = 0; i < m_count; ++i) {
      CCalSN& pixels = m_pixelSD[pattern[i % kSumCycle]];
      pixels.sum += m_means[i];
      pixels.sumOfSquares += m_deviations[i];
    }
  }

  /// The figures of a frame, whose rows have been added up by their place in the period.
  void AddFrame(std::size_t frame) {
    struct Total {
      std::size_t count = 0;
      std::uint64_t sum = 0, squares = 0;
    };
    std::array<Total, SampleClasses::kNone + 1> totals;
    const std::size_t period = m_classes.Period();
    for (std::size_t row = 0; row < period; ++row) {
      const std::size_t rows = (m_region.height + period - 1 - row) / period;
      const auto pattern = m_classes.InRegion(m_region.x, row);
      const CycleMoments& moments = m_moments[row * m_frames.size() + frame];
      for (std::size_t i = 0; i < kSumCycle; ++i) {
        Total& total = totals[pattern[i]];
        total.count += rows * SamplesAt(i);
        total.sum += moments.sums[i];
        total.squares += moments.squares[i];
      }
    }
    for (std::size_t k = 0; k < m_classes.Count(); ++k) {
      const double mean = CCalSN::Mean(static_cast<double>(totals[k].sum), totals[k].count);
      const double variance =
          CCalSN::Mean(static_cast<double>(totals[k].squares), totals[k].count) - mean * mean;
      ++m_frameSD[k].count;
      m_frameSD[k].sum += std::sqrt(std::max(0.0, variance));
    }
  }

  const std::span<const ImageLines> m_frames;
  const SNRegion m_region;
  const SampleClasses& m_classes;
  const std::size_t m_count;  ///< Samples of a line.
  // Of one line: where it is in each frame, and its samples over the frames.
  std::vector<const T*> m_lines;
  std::vector<std::uint64_t> m_sums, m_squares;
  std::vector<double> m_means, m_deviations;
  std::vector<CycleMoments> m_moments;  ///< By a row's place in the period, then by frame.
  SampleClasses::Sums m_pixelSD, m_frameSD;
};

}  // namespace

std::vector<CSNMeasurementValue> MeasureSN(std::span<const ImageLines> frames,
                                           const SNRegion& region) try {
  const auto& format = frames.front().Format();
  const SampleClasses classes(format.GetPixelFormat());
  if (format.GetEachComponentTotalBitCount() == 8)
    return Measurement<std::uint8_t>(frames, region, classes).Run();
  return Measurement<std::uint16_t>(frames, region, classes).Run();
} catch (const std::bad_alloc& error) {
  throw BAD_ALLOC_EXCEPTION("%s", error.what());
}

}  // namespace QvApi
