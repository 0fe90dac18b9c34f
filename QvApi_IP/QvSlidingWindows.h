// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "QvApi_IP/Kernels/Outliers.h"
#include "QvApi_IP/QvImageLines.h"

namespace QvApi {

/// Period of the largest mosaic, in both directions.
inline constexpr std::size_t kMaximumPeriod = 4;

/// A number for each phase of a mosaic, by row and column.
using PhaseNumbers = std::array<std::array<double, kMaximumPeriod>, kMaximumPeriod>;

/// Windows along one side of an image: those pixels of the phase in question that are at most so
/// many pixels of the phase away.
class WindowSide {
 public:
  /// A greater `steps` than the image has pixels reaches everywhere.
  WindowSide(std::size_t size, std::size_t period, std::size_t steps)
      : m_size(size), m_period(period), m_steps(std::min(steps, (size - 1) / period)) {}

  /// Pixels from the middle of a whole window to its end.
  std::size_t Reach() const { return m_steps * m_period; }
  /// Pixels in the window at a place.
  std::size_t CountAt(std::size_t at) const {
    return std::min(at / m_period, m_steps) + std::min((m_size - 1 - at) / m_period, m_steps) + 1;
  }
  /// No window has more.
  std::size_t MaximumCount() const {
    return std::min(2 * m_steps + 1, (m_size - 1) / m_period + 1);
  }

 private:
  std::size_t m_size, m_period, m_steps;
};

/// The windows of an image.
struct WindowShape {
  WindowShape(const ImageLines& lines, std::size_t mosaicPeriod, std::size_t steps)
      : period(mosaicPeriod),
        across(lines.Width(), mosaicPeriod, steps),
        down(lines.Height(), mosaicPeriod, steps) {}

  std::size_t MaximumCount() const { return across.MaximumCount() * down.MaximumCount(); }

  std::size_t period;
  WindowSide across, down;
};

/// Moves windows down an image. Keeps its memory from image to image.
///
/// @tparam Sum  see Kernels::Windows
template <class Sum>
class SlidingWindows {
 public:
  /// Calls `visit(y, windows)` for each row from the first to the last. The limits of the windows
  /// are such that Kernels::FindOutliers() misses no sample that differs from the mean of the
  /// others by `distances` or more.
  template <class T, class Visit>
  void ForEachRow(const ImageLines& lines, const WindowShape& shape, const PhaseNumbers& distances,
                  Visit visit) {
    const std::size_t reach = shape.down.Reach();
    Start<T>(lines, shape);
    for (std::size_t y = 0; y < lines.Height(); ++y) {
      const std::size_t phase = y % shape.period;
      const auto windows = WindowsOf(phase, shape);
      // Wraps round at the top.
      Kernels::AdvanceWindows(LineOrBlank<T>(lines, y + reach),
                              LineOrBlank<T>(lines, y - reach - shape.period), windows);
      SetRows(m_phases[phase], shape, shape.down.CountAt(y), distances[phase]);
      visit(y, windows);
    }
  }

 private:
  /// What differs between the rows of a mosaic.
  struct RowPhase {
    std::vector<Sum> columns;
    std::size_t rows;
    std::vector<Sum> counts, limits;
  };

  template <class T>
  const T* LineOrBlank(const ImageLines& lines, std::size_t y) const {
    static_assert(sizeof(T) <= sizeof(std::uint16_t));
    return y < lines.Height() ? lines.Line<const T>(y) : reinterpret_cast<const T*>(m_blank.data());
  }

  Kernels::Windows<Sum> WindowsOf(std::size_t phase, const WindowShape& shape) {
    const std::size_t reach = shape.across.Reach();
    RowPhase& row = m_phases[phase];
    return {.columns = row.columns.data() + reach,
            .sums = m_sums.data(),
            .spare = m_spare.data(),
            .counts = row.counts.data(),
            .limits = row.limits.data(),
            .width = m_sums.size(),
            .reach = reach,
            .period = shape.period};
  }

  /// Brings into the windows of the first rows what is below them.
  template <class T>
  void Start(const ImageLines& lines, const WindowShape& shape) {
    const std::size_t width = lines.Width(), whole = width + 2 * shape.across.Reach();
    m_blank.assign(width, 0);
    m_sums.resize(width);
    m_spare.resize(whole + shape.period);
    m_across.resize(width);
    for (std::size_t x = 0; x < width; ++x) m_across[x] = static_cast<Sum>(shape.across.CountAt(x));
    for (std::size_t phase = 0; phase < std::min(shape.period, lines.Height()); ++phase) {
      RowPhase& row = m_phases[phase];
      row.columns.assign(whole, 0);
      row.rows = 0;
      row.counts.resize(width);
      row.limits.resize(width);
      auto windows = WindowsOf(phase, shape);
      windows.reach = 0;  // needs no sums yet
      for (std::size_t y = phase; y < phase + shape.down.Reach(); y += shape.period)
        Kernels::AdvanceWindows(LineOrBlank<T>(lines, y), LineOrBlank<T>(lines, SIZE_MAX), windows);
    }
  }

  void SetRows(RowPhase& row, const WindowShape& shape, std::size_t rows,
               const std::array<double, kMaximumPeriod>& distances) {
    if (row.rows == rows) return;
    row.rows = rows;
    for (std::size_t x = 0; x < row.counts.size(); ++x) {
      const auto count = static_cast<Sum>(rows * m_across[x]);
      row.counts[x] = count;
      row.limits[x] = x >= shape.period && row.counts[x - shape.period] == count
                          ? row.limits[x - shape.period]
                          : LimitOf(count, distances[x % shape.period]);
    }
  }

  /// |sample * count - sum| is |sample - mean of the others| * (count - 1). The distance is lowered
  /// by more than is lost in doubles; each pixel that is found is to be looked at again.
  static Sum LimitOf(Sum count, double distance) {
    constexpr double kLoss = 1e-6;
    constexpr Sum kNever = std::numeric_limits<Sum>::max();
    const double limit = std::floor((static_cast<double>(count) - 1) * (distance - kLoss));
    if (limit <= 0) return 0;
    return limit < static_cast<double>(kNever) ? static_cast<Sum>(limit) : kNever;
  }

  std::array<RowPhase, kMaximumPeriod> m_phases;
  std::vector<Sum> m_sums, m_spare;
  std::vector<Sum> m_across;  ///< Pixels across the windows.
  std::vector<std::uint16_t> m_blank;
};

}  // namespace QvApi
