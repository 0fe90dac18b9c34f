// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvGraphMeasurement.h"

#include <algorithm>
#include <type_traits>

#include "QvApi_IP/Kernels/ColumnSums.h"
#include "QvApi_IP/Kernels/Histogram.h"
#include "QvApi_IP/Kernels/SampleSums.h"

namespace QvApi {

static_assert(std::is_same_v<GraphLayout::Channels, Kernels::Histograms>);

template <class T>
void GraphMeasurement<T>::Measure(_EQvGraphDataType_t type) {
  if (type == QvGraphDataType_Histogram)
    CountValues();
  else if (type == QvGraphDataType_VerticalIntegration)
    AddColumns();
  else
    AddRows();
}

/// The histograms of a row. Alpha has one as well, which is forgotten.
template <class T>
GraphLayout::Channels GraphMeasurement<T>::HistogramsOf(std::size_t row) {
  Channels histograms = ChannelsOf(row);
  std::replace(histograms.begin(), histograms.end(), static_cast<std::uint32_t*>(nullptr),
               m_work.data());
  return histograms;
}

template <class T>
void GraphMeasurement<T>::CountValues() {
  m_work.assign(std::size_t{1} << m_layout.Depth(), 0);
  if constexpr (sizeof(T) == 1) {
    // To fill and to empty tables takes as long as to count their size of samples in pairs.
    const std::size_t pixels = m_region.Width() * m_region.Height();
    if (pixels / m_period >= 4 * Kernels::kPairCounters) return CountPairs();
  }
  for (std::size_t row = 0; row < m_region.Height(); ++row) CountRow(row);
}

template <class T>
void GraphMeasurement<T>::CountRow(std::size_t row) {
  Kernels::AddToHistograms(Row(row), m_samples, m_channelCount,
                           static_cast<unsigned>(m_layout.Depth()), HistogramsOf(row));
}

/// Counts rows of one phase in twos, phase by phase.
template <>
void GraphMeasurement<std::uint8_t>::CountPairs() {
  const std::size_t height = m_region.Height(), unwanted = m_work.size();
  for (std::size_t phase = 0; phase < std::min(m_period, height); ++phase) {
    m_work.assign(unwanted + m_channelCount * Kernels::kPairCounters, 0);
    std::uint32_t* const pairs = m_work.data() + unwanted;
    const Channels histograms = HistogramsOf(phase);
    std::size_t row = phase;
    for (; row + m_period < height; row += 2 * m_period)
      Kernels::AddToPairs(Row(row), Row(row + m_period), m_samples, m_channelCount, histograms,
                          pairs);
    Kernels::AddPairs(pairs, m_channelCount, histograms);
    if (row < height) CountRow(row);
  }
}

template <class T>
void GraphMeasurement<T>::AddColumns() {
  constexpr std::size_t kLines = Kernels::kMaxColumnLines;
  const std::size_t height = m_region.Height(), phases = std::min(m_period, height);
  const auto pitch = m_region.Pitch() * static_cast<std::ptrdiff_t>(m_period);
  m_work.assign(phases * m_samples, 0);
  for (std::size_t first = 0; first < height; first += kLines * m_period)
    for (std::size_t row = first; row < std::min(first + phases, height); ++row)
      Kernels::AddToColumns(Row(row), pitch,
                            std::min((height - row + m_period - 1) / m_period, kLines), m_samples,
                            &m_work[(row - first) * m_samples]);

  const std::uint32_t* sums = m_work.data();
  for (std::size_t phase = 0; phase < phases; ++phase, sums += m_samples) {
    const Channels channels = ChannelsOf(phase);
    for (std::size_t channel = 0; channel < m_channelCount; ++channel)
      if (std::uint32_t* element = channels[channel])
        for (std::size_t i = channel; i < m_samples; i += m_channelCount) *element++ = sums[i];
  }
}

namespace {

/// The sums of the channels of a row, at places that repeat after their number.
template <class T>
Kernels::CycleSums SumsOf(const T* row, std::size_t samples, std::size_t channelCount) {
  Kernels::CycleSums sums{};
  if constexpr (sizeof(T) == 1)
    if (channelCount == 1) {
      sums[0] = Kernels::SumBytes(row, samples);
      return sums;
    }
  Kernels::AddToCycle(row, samples, sums);
  return sums;
}

}  // namespace

template <class T>
void GraphMeasurement<T>::AddRows() {
  for (std::size_t row = 0; row < m_region.Height(); ++row) {
    const Channels channels = ChannelsOf(row);
    const Kernels::CycleSums sums = SumsOf(Row(row), m_samples, m_channelCount);
    for (std::size_t i = 0; i < sums.size(); ++i)
      if (std::uint32_t* const array = channels[i % m_channelCount])
        array[row / m_period] += static_cast<std::uint32_t>(sums[i]);
  }
}

template class GraphMeasurement<std::uint8_t>;
template class GraphMeasurement<std::uint16_t>;

}  // namespace QvApi
