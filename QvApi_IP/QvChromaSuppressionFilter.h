// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "QvApi_IP/IQvChromaSuppressionFilter.h"
#include "QvApi_IP/QvIPFilter.h"

namespace QvApi {

class IQvChromaSuppressionFilterInside : public IQvChromaSuppressionFilter,
                                         public IQvFilterReleasable {};

class CQvChromaSuppressionFilter final
    : public CQvIPFilter<CQvChromaSuppressionFilter, IQvChromaSuppressionFilterInside> {
 public:
  using Part = EQvChromaSuppressionPartSelector_t;

  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_ChromaSuppression,
                                                       "Chroma Suppression", 114};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvChromaSuppressionFilter>> RegisterTable();

  unsigned int GetThresholdValue(Part part) const override { return m_threshold.At(part); }
  void SetThresholdValue(Part part, unsigned int value) override {
    Set(m_threshold.At(part), value);
  }
  unsigned int GetSuppressionValue(Part part) const override { return m_suppression.At(part); }
  void SetSuppressionValue(Part part, unsigned int value) override {
    Set(m_suppression.At(part), value);
  }

 private:
  static constexpr Part kLow = QvChromaSuppressionPartSelector_LowLuminancePart;
  static constexpr Part kHigh = QvChromaSuppressionPartSelector_HighLuminancePart;
  static constexpr auto kPart = SelectorSetting("ChromaSuppressionPartSelectorReg", kHigh, "eCSPS");
  static constexpr auto kThreshold = IntegerSetting("ThresholdValueReg", 0U, 255U);
  static constexpr auto kSuppression = IntegerSetting("SuppressionValueReg", 0U, 255U);

  void FilterBGRx8(IQvImage& image);
  void FilterBGRx16(IQvImage& image);

  template <class T>
  void Suppress(const ImageLines& lines) const;

  Setting<Part> m_selectedPart{kPart, kLow};
  SelectedSettings<Part, unsigned int, 2> m_threshold{
      kPart, kThreshold, {kThreshold.minimum, kThreshold.maximum}};
  SelectedSettings<Part, unsigned int, 2> m_suppression{kPart, kSuppression, {0, 0}};
};

}  // namespace QvApi
