// SPDX-License-Identifier: MIT
#include <array>
#include <cstddef>
#include <utility>

#include "QvApi_TL/PixelFormatTable.h"
#include "QvApi_TL/PixelLayout.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"

namespace QvApi {
namespace {

/// Formats of the same mosaic seen from an even or odd column and row; index: column + 2 * row.
using FormatsAtOffset = std::array<PixelFormat, 4>;

constexpr FormatsAtOffset FindFormatsAtOffset(const PixelFormatRow& row) {
  FormatsAtOffset formats;
  formats.fill(row.format);
  if (!row.IsBayer()) return formats;
  for (const auto& other : kPixelFormats) {
    if (!other.IsBayer() || other.storage != row.storage || other.depth != row.depth) continue;
    for (std::size_t i = 0; i < formats.size(); ++i)
      if (other.phase == PhaseAt(row.phase, i % 2, i / 2)) formats[i] = other.format;
  }
  return formats;
}

/// Sum of the significant bits of a pixel. Subsampled formats share their chrominance, so theirs is
/// what a pixel occupies on average.
constexpr std::size_t EffectivePixelBits(const PixelFormatRow& row) {
  if (row.kind == PixelKind::YCbCr) return PixelFormatRows::OccupiedBits(row.format);
  return std::size_t{row.depth} * row.componentCount;
}

/// All answers about one row of the format table.
class CPixelFormatInfo final : public IQvPixelFormatInfoInside {
 public:
  constexpr explicit CPixelFormatInfo(const PixelFormatRow& row)
      : m_row(row), m_atOffset(FindFormatsAtOffset(row)) {}

  PixelFormat GetPixelFormat() const override { return m_row.format; }
  GenICam::gcstring GetName() const override { return {m_row.name.data(), m_row.name.size()}; }
  std::size_t GetTotalBitCount() const override { return m_row.bits; }
  std::size_t GetEachComponentTotalBitCount() const override { return m_row.componentBits; }
  std::size_t GetEachComponentEffectiveBitCount() const override { return m_row.depth; }
  std::size_t GetComponentCount() const override { return m_row.componentCount; }
  std::size_t GetPlaneCount() const override { return m_row.planeCount; }
  std::size_t GetROIIncrementX() const override { return m_row.roiIncrementX; }
  std::size_t GetROIIncrementY() const override { return m_row.roiIncrementY; }
  bool IsColor() const override { return m_row.IsColor(); }
  bool IsMono() const override { return m_row.IsMono(); }
  bool IsBayer() const override { return m_row.IsBayer(); }
  int GetPixelColorFilter(std::size_t x, std::size_t y) const override {
    return static_cast<int>(PhaseAt(m_row.phase, x, y));
  }

  std::size_t GetDefaultLineAlignment() const override { return m_row.lineAlignment; }
  std::size_t GetLinePitch(std::size_t width, std::size_t alignment) const override {
    return m_row.LinePitch(width, alignment);
  }
  std::size_t GetEffectivePixelBitCount() const override { return EffectivePixelBits(m_row); }
  PixelFormat GetPixelFormatAtOffset(std::size_t x, std::size_t y) const override {
    return m_atOffset[x % 2 + 2 * (y % 2)];
  }
  bool IsBGR() const override { return m_row.IsBGR(); }
  bool IsGEVPacked() const override { return m_row.storage == Storage::GevPacked; }
  bool IsPolarized() const override { return m_row.IsPolarized(); }
  std::size_t GetPolarizerPatternNumber() const override { return m_row.polarizerPattern; }

 private:
  const PixelFormatRow& m_row;
  FormatsAtOffset m_atOffset;
};

template <std::size_t... I>
constexpr std::array<CPixelFormatInfo, sizeof...(I)> MakeInfos(std::index_sequence<I...>) {
  return {CPixelFormatInfo(kPixelFormats[I])...};
}

// Ready before any code runs, since tables of other units are built from it at load time.
constinit const auto kInfos = MakeInfos(std::make_index_sequence<kPixelFormats.size()>());

}  // namespace

const IQvPixelFormatInfo* GetIQvPixelFormatInfo(PixelFormat format) {
  const std::size_t row = kPixelFormatIndex.Find(static_cast<std::uint32_t>(format));
  return row < kInfos.size() ? &kInfos[row] : nullptr;
}

}  // namespace QvApi
