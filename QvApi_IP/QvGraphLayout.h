// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "QvApi_IP/IQvGraphDataBuffer.h"
#include "QvApi_IP/QvImagePart.h"
#include "QvApi_TL/PixelLayout.h"

namespace QvApi {

/// Which arrays a region of an image is measured into, and which samples go to which.
///
/// The samples of a row repeat after some channels: the columns of a mosaic's tile or the
/// components of a colour pixel. The rows repeat after the tile's period.
class GraphLayout {
 public:
  static constexpr std::size_t kMaxArrays = 16;
  static constexpr std::size_t kMaxChannels = 4;
  /// The elements of each array; null for an array without any.
  using Arrays = std::array<std::uint32_t*, kMaxArrays>;
  /// The array of each channel of a row; null for samples that belong to none, such as alpha.
  using Channels = std::array<std::uint32_t*, kMaxChannels>;

  /// @param format  raw or interleaved colour, of one word a sample
  GraphLayout(const PixelFormatRow& format, const ImagePart::Rectangle& region)
      : m_format(format),
        m_region(region),
        m_period(TilePeriod(format)),
        m_isColor(format.kind == PixelKind::Color) {}

  std::size_t ArrayCount() const { return m_isColor ? 3 : m_period * m_period; }
  std::size_t Period() const { return m_period; }
  std::size_t ChannelCount() const { return m_isColor ? m_format.componentCount : m_period; }
  /// Samples of a row.
  std::size_t Samples() const { return m_region.width * m_format.componentCount; }
  std::size_t Depth() const { return m_format.depth; }

  EQvPixelComponent_t Component(std::size_t array) const {
    return m_isColor ? ComponentsAt(m_format, 0, 0)[array]
                     : ComponentsAt(m_format, ColumnOf(array), RowOf(array))[0];
  }
  /// Columns of the region that have pixels of an array.
  std::size_t Columns(std::size_t array) const {
    return CountPhase(m_region.x, m_region.width, ColumnOf(array));
  }
  /// Rows of the region that have pixels of an array.
  std::size_t Rows(std::size_t array) const {
    return CountPhase(m_region.y, m_region.height, RowOf(array));
  }

  /// The arrays that the samples of a row of the region go to, beginning with its first column.
  Channels ChannelsOf(const Arrays& arrays, std::size_t row) const {
    Channels channels{};
    if (m_isColor) {
      std::copy_n(arrays.begin(), ArrayCount(), channels.begin());
      return channels;
    }
    const std::size_t first = (m_region.y + row) % m_period * m_period;
    for (std::size_t i = 0; i < m_period; ++i)
      channels[i] = arrays[first + (m_region.x + i) % m_period];
    return channels;
  }

  /// Elements of an array.
  std::size_t Length(std::size_t array, _EQvGraphDataType_t type) const {
    if (type == QvGraphDataType_Histogram) return std::size_t{1} << Depth();
    const std::size_t columns = Columns(array), rows = Rows(array);
    // Tiles of four keep empty sums, those of two do not.
    if (m_period == 2 && (columns == 0 || rows == 0)) return 0;
    return type == QvGraphDataType_VerticalIntegration ? columns : rows;
  }

 private:
  std::size_t ColumnOf(std::size_t array) const { return array % m_period; }
  std::size_t RowOf(std::size_t array) const { return array / m_period % m_period; }

  /// Numbers from `first` on, `count` of them, that leave `phase` when divided by the period, which
  /// is a power of two.
  std::size_t CountPhase(std::size_t first, std::size_t count, std::size_t phase) const {
    return ((first - 1 - phase) % m_period + count) / m_period;
  }

  const PixelFormatRow& m_format;
  const ImagePart::Rectangle m_region;
  const std::size_t m_period;
  const bool m_isColor;
};

}  // namespace QvApi
