// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "QvApi_IP/IQvEdgeEnhancementFilter.h"
#include "QvApi_IP/Kernels/EdgeEnhancement.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

class IQvEdgeEnhancementFilterInside : public IQvEdgeEnhancementFilter,
                                       public IQvFilterReleasable {};

/// What differences from the mean add.
struct CEdgeEnhancementTable {
  /// A table for images of `bits` bits, with `thresh` in units of 8-bit images.
  CEdgeEnhancementTable(double strength, unsigned thresh, unsigned bits);

  /// What the difference `difference` adds in images of any depth. One beyond the end of the table
  /// takes the last entry.
  std::uint16_t At(std::size_t difference, unsigned imageBits) const;

  unsigned bits;
  unsigned thresh;
  std::vector<std::uint16_t> entries;  ///< 2^bits of them
};

/// The tables of an edge enhancement.
class CEdgeEnhancementTables {
 public:
  /// Which changes of the two settings a table has seen.
  struct Changes {
    std::uint32_t strength;
    std::uint32_t thresh;
    bool operator==(const Changes&) const = default;
  };
  using Entries = std::shared_ptr<const std::vector<std::uint16_t>>;

  /// 2^bits entries for samples of `bits` bits, or null if the strength changes nothing. They come
  /// from the table that is kept by the changes alone: one made for another depth serves this one
  /// too, until a setting changes.
  /// @throws GenICam::BadAllocException
  Entries LockEntries(const Changes& changes, double strength, unsigned thresh, unsigned bits);

 private:
  struct FittedKey {
    Changes changes;
    unsigned bits;
    bool operator==(const FittedKey&) const = default;
  };

  TableCache<Changes, CEdgeEnhancementTable> m_table;
  TableCache<FittedKey, std::vector<std::uint16_t>> m_fitted;
};

class CQvEdgeEnhancementFilter final
    : public CQvIPFilter<CQvEdgeEnhancementFilter, IQvEdgeEnhancementFilterInside> {
 public:
  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_EdgeEnhancement,
                                                       "Edge Enhancement", 104};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvEdgeEnhancementFilter>> RegisterTable();

  double GetStrength() const override { return m_strength; }
  void SetStrength(double value) override { Set(m_strength, value); }
  unsigned int GetThresh() const override { return m_thresh; }
  void SetThresh(unsigned int value) override { Set(m_thresh, value); }

 private:
  static constexpr auto kStrength = RealSetting("StrengthReg", 0.0, 32.0);
  static constexpr auto kThresh = IntegerSetting("ThreshReg", 0U, 255U);

  void PerformMono8(IQvImage& image);
  void PerformMono16(IQvImage& image);
  void PerformBGRx8(IQvImage& image);
  void PerformBGRx16(IQvImage& image);
  void PerformYxx444_422_8(IQvImage& image);

  template <class T>
  void PerformBGRx(IQvImage& image);

  /// @param samples  the samples of a pixel that are corrected
  /// @param measure  `measure(line, levels, spare0, spare1)` brings what is compared of the pixels
  ///                 of a line, each within the depth, into `levels`; it may use two spare lines
  template <class T, class Measure>
  void Enhance(const ImageLines& lines, const Kernels::CorrectedSamples& samples, Measure measure);

  Setting<double> m_strength{kStrength, 0.0};
  Setting<unsigned> m_thresh{kThresh, 0};
  CEdgeEnhancementTables m_tables;
};

}  // namespace QvApi
