// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>
#include <vector>

#include "QvApi_IP/IQvDefectivePixelDetectionFilter.h"
#include "QvApi_IP/QvDefectivePixelList.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvSlidingWindows.h"
#include "QvApi_IP/QvWorkingImage.h"

namespace QvApi {

class IQvDefectivePixelDetectionFilterInside : public IQvDefectivePixelDetectionFilter,
                                               public IQvFilterReleasable {};

class CQvDefectivePixelDetectionFilter final
    : public CQvFilterDispatch<CQvDefectivePixelDetectionFilter,
                               IQvDefectivePixelDetectionFilterInside> {
 public:
  using Area = _EQvDefectivePixelDetectionAveragingArea_t;
  using Target = _EQvDefectivePixelDetectionThresholdTarget_t;

  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_DefectivePixelDetection,
                                                       "Defective Pixel Detection", 122};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvDefectivePixelDetectionFilter>> RegisterTable();

  IQvImage* Filter(IQvImage* image) override;
  void GetDetectionResult(_EQvDefectivePixelDetectionStatus_t* pStatus, std::size_t* pnCount,
                          _SQvDefectivePixelInformation_t* pResults) override;
  void ClearDetectionResult() override;

  double GetThreshold(Target eTarget) const override { return m_thresholds.At(eTarget); }
  void SetThreshold(Target eTarget, double dValue) override {
    Set(m_thresholds.At(eTarget), dValue);
  }
  Area GetDefectivePixelDetectionAveragingArea() const override { return m_averagingArea; }
  void SetDefectivePixelDetectionAveragingArea(Area eValue) override {
    Set(m_averagingArea, eValue);
  }
  std::size_t GetPeripheralAreaSize() const override { return m_peripheralAreaSize; }
  void SetPeripheralAreaSize(std::size_t nSize) override { Set(m_peripheralAreaSize, nSize); }
  std::size_t GetMaximumPixelCount() const override { return m_maximumPixelCount; }
  void SetMaximumPixelCount(std::size_t nCount) override { Set(m_maximumPixelCount, nCount); }

 private:
  static constexpr std::size_t kTargets = 5;
  static constexpr auto kTarget =
      SelectorSetting("", QvDefectivePixelDetectionThresholdTarget_BayerB, "eDPDTT");
  static constexpr auto kThreshold = PlainSetting<double>("ThresholdRatioReg");
  static constexpr auto kAveragingArea = SelectorSetting(
      "AveragingAreaReg", QvDefectivePixelDetectionAveragingArea_WholeImage, "eDPDAA");
  static constexpr SettingInfo<std::size_t> kPeripheralAreaSize{"PeripheralAreaSizeReg", 1, 255,
                                                                RangeWords::Selector, "nSize"};
  // No node of the document has this name, so that the node map keeps the value that it read last.
  static constexpr SettingInfo<std::size_t> kMaximumPixelCount{"MuximumPixelCountReg", 1, 8191,
                                                               RangeWords::Selector, "nCount"};

  /// What the search needs to know of an image and of the settings.
  struct Mosaic {
    ImageLines lines;
    std::size_t period;
    double fullScale;
    PhaseNumbers thresholds;
    std::size_t maximumPixelCount;
  };
  template <unsigned target>
  static constexpr Register<CQvDefectivePixelDetectionFilter> Threshold();

  void PerformMono8(IQvImage& image);
  void PerformMono16(IQvImage& image);
  void PerformBayer8(IQvImage& image);
  void PerformBayer16(IQvImage& image);
  void PerformPolBayer8(IQvImage& image);
  void PerformPolBayer16(IQvImage& image);

  template <class T>
  void Perform(const IQvImage& image, std::size_t period);
  template <class T>
  void CompareWithWholeImage(const Mosaic& mosaic);
  template <class T>
  void CompareWithSurroundings(const Mosaic& mosaic);
  void Add(const Mosaic& mosaic, std::size_t x, std::size_t y, double value, double mean);

  SelectedSettings<Target, double, kTargets> m_thresholds{
      kTarget, kThreshold, {0.15, 0.15, 0.15, 0.15, 0.15}};
  Setting<Area> m_averagingArea{kAveragingArea,
                                QvDefectivePixelDetectionAveragingArea_AroundTheTargetPixel};
  Setting<std::size_t> m_peripheralAreaSize{kPeripheralAreaSize, 2};
  Setting<std::size_t> m_maximumPixelCount{kMaximumPixelCount, 4095};

  // Guarded by the parameter lock.
  CQvDefectivePixelList m_pixels;
  CQvWorkingImage m_workingImage;
  std::tuple<SlidingWindows<std::uint16_t>, SlidingWindows<std::uint32_t>,
             SlidingWindows<std::uint64_t>>
      m_windows;
  std::vector<std::size_t> m_found;  ///< Columns of one row.
};

}  // namespace QvApi
