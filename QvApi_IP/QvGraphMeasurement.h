// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "QvApi_IP/QvGraphLayout.h"
#include "QvApi_IP/QvImageLines.h"

namespace QvApi {

/// Adds the samples of a region to its arrays, which are 0 before.
///
/// @tparam T  the word of a sample: 8 or 16 bits
template <class T>
class GraphMeasurement {
 public:
  /// @param layout  of the region
  /// @param region  its lines; these, layout and arrays must outlive this
  /// @param arrays  those without elements are null, others have what the layout says
  /// @param work    memory to work in, kept from image to image
  GraphMeasurement(const GraphLayout& layout, const ImageLines& region,
                   const GraphLayout::Arrays& arrays, std::vector<std::uint32_t>& work)
      : m_layout(layout),
        m_region(region),
        m_arrays(arrays),
        m_work(work),
        m_period(layout.Period()),
        m_channelCount(layout.ChannelCount()),
        m_samples(layout.Samples()) {}

  /// @throws std::bad_alloc
  void Measure(_EQvGraphDataType_t type);

 private:
  using Channels = GraphLayout::Channels;

  void CountValues();
  void CountRow(std::size_t row);
  void CountPairs();
  void AddColumns();
  void AddRows();

  const T* Row(std::size_t row) const { return m_region.Line<const T>(row); }
  Channels ChannelsOf(std::size_t row) const { return m_layout.ChannelsOf(m_arrays, row); }
  Channels HistogramsOf(std::size_t row);

  const GraphLayout& m_layout;
  const ImageLines& m_region;
  const GraphLayout::Arrays& m_arrays;
  std::vector<std::uint32_t>& m_work;
  const std::size_t m_period;
  const std::size_t m_channelCount;
  const std::size_t m_samples;  ///< Of a row.
};

}  // namespace QvApi
