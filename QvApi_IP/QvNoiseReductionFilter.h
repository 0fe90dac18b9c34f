// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <span>

#include "QvApi_IP/IQvNoiseReductionFilter.h"
#include "QvApi_IP/Kernels/Median.h"
#include "QvApi_IP/QvCalibratedFilter.h"

namespace QvApi {

class IQvNoiseReductionFilterInside : public IQvNoiseReductionFilter, public IQvFilterReleasable {};

using CNoiseReductionCalibrationImage = CalibrationImage;

class CQvNoiseReductionFilter final
    : public CQvCalibratedFilter<CQvNoiseReductionFilter, IQvNoiseReductionFilterInside,
                                 CNoiseReductionCalibrationImage> {
 public:
  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_NoiseReduction,
                                                       "Noise Reduction", 112};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvNoiseReductionFilter>> RegisterTable();

  EQvNoiseReductionMode_t GetNoiseReductionMode() const override { return m_mode; }
  void SetNoiseReductionMode(EQvNoiseReductionMode_t mode) override { Set(m_mode, mode); }
  bool GetCalibrationEnable() const override { return m_calibrationEnable; }
  void SetCalibrationEnable(bool enable) override { Set(m_calibrationEnable, enable); }

  static auto MakeCalibration(IQvImage& image) {
    return std::make_shared<const CNoiseReductionCalibrationImage>(image);
  }

 private:
  static constexpr auto kMode = SelectorSetting(
      "NoiseReductionModeReg", QvNoiseReductionMode_SubtractingLightShieldingImage, "eNRM");
  static constexpr auto kCalibrationEnable = PlainSetting<bool>("CalibrationEnableReg");

  void FilterMono8(IQvImage& image, const CNoiseReductionCalibrationImage* calibration);
  void FilterMono16(IQvImage& image, const CNoiseReductionCalibrationImage* calibration);
  void FilterBayer8(IQvImage& image, const CNoiseReductionCalibrationImage* calibration);
  void FilterBayer16(IQvImage& image, const CNoiseReductionCalibrationImage* calibration);

  template <class T>
  void Reduce(const ImageLines& lines, const CNoiseReductionCalibrationImage* calibration,
              Kernels::MedianSites firstSites);
  template <class T>
  void Simple(const ImageLines& lines, Kernels::MedianSites firstSites);
  template <class T>
  void Subtract(const ImageLines& lines, const ImageLines& dark, Kernels::MedianSites firstSites);

  Setting<EQvNoiseReductionMode_t> m_mode{kMode, QvNoiseReductionMode_Off};
  Setting<bool> m_calibrationEnable{kCalibrationEnable, false};
};

}  // namespace QvApi
