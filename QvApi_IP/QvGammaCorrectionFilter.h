// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "QvApi_IP/IQvGammaCorrectionFilter.h"
#include "QvApi_IP/Kernels/Lookup.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

class IQvGammaCorrectionFilterInside : public IQvGammaCorrectionFilter,
                                       public IQvFilterReleasable {};

/// The tables of gamma curves.
class CQvGammaComponent {
 public:
  /// 2^bits entries.
  using Table = std::vector<std::uint16_t>;
  using TableReference = std::shared_ptr<const Table>;

  /// The table for samples of `bits` bits, or null at gamma 1, which changes nothing. The curve
  /// runs from `lower` to `upper` (0 stands for full scale); other samples keep their value. The
  /// table is kept by bits and gamma alone: one made for a narrower range serves a wider one too,
  /// until either of the two changes.
  /// @throws GenICam::BadAllocException
  TableReference LockTable(double gamma, unsigned bits, std::uint16_t lower, std::uint16_t upper);

 private:
  struct Key {
    unsigned bits;
    double gamma;
    bool operator==(const Key&) const = default;
  };

  TableCache<Key, Table> m_cache;
};

class CQvGammaCorrectionFilter final
    : public CQvIPFilter<CQvGammaCorrectionFilter, IQvGammaCorrectionFilterInside> {
 public:
  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_GammaCorrection,
                                                       "Gamma Correction", 105};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvGammaCorrectionFilter>> RegisterTable();

  double GetGammaValue() const override { return m_gamma; }
  void SetGammaValue(double value) override { Set(m_gamma, value); }

 private:
  static constexpr auto kGamma = RealSetting("GammaReg", 0.0, 4.0);

  void CorrectionMono8(IQvImage& image);
  void CorrectionMono16(IQvImage& image);
  void CorrectionBGR8(IQvImage& image);
  void CorrectionBGR16(IQvImage& image);
  void CorrectionYCbCr(IQvImage& image);

  /// Which samples of a line are mapped.
  struct Samples {
    std::size_t count;
    Kernels::LookupPattern (*pattern)(const std::uint16_t* table);
  };
  static Samples ColorSamples(const ImageLines& lines);

  template <class T>
  void Correct(const ImageLines& lines, Samples samples, std::uint16_t lower = 0,
               std::uint16_t upper = 0);

  Setting<double> m_gamma{kGamma, 1.0};
  CQvGammaComponent m_component;
};

}  // namespace QvApi
