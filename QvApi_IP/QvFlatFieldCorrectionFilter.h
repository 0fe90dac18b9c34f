// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <variant>
#include <vector>

#include "QvApi_IP/IQvFlatFieldCorrectionFilter.h"
#include "QvApi_IP/QvCalibratedFilter.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

class IQvFlatFieldCorrectionFilterInside : public IQvFlatFieldCorrectionFilter,
                                           public IQvFilterReleasable {};

/// What brings a calibration image to its target.
struct FlatFieldMap {
  /// By position in the 2 x 2 tile, line by line.
  std::array<unsigned, 4> targets{};
  /// For multiplication: by pixel, without padding. Empty for addition, where target and
  /// calibration image say the same in a quarter of the memory.
  std::vector<std::uint16_t> gains;
};

/// A calibration image with its mode and its map.
class CFFCCalibrationImage : public CalibrationImage {
 public:
  CFFCCalibrationImage(IQvImage& image, EQvFlatFieldCorrectionMode_t mode)
      : CalibrationImage(image), m_mode(mode) {}

  /// That of the filter, whose change ends the calibration.
  EQvFlatFieldCorrectionMode_t Mode() const { return m_mode; }

  /// The map, built at the first call: `target` counts then only.
  /// @throws GenICam::BadAllocException
  template <class T>
  std::shared_ptr<const FlatFieldMap> GetMapRaw(unsigned target) const;

 private:
  const EQvFlatFieldCorrectionMode_t m_mode;
  mutable TableCache<std::monostate, FlatFieldMap> m_map;
};

class CQvFlatFieldCorrectionFilter final
    : public CQvCalibratedFilter<CQvFlatFieldCorrectionFilter, IQvFlatFieldCorrectionFilterInside,
                                 CFFCCalibrationImage> {
 public:
  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_FlatFieldCorrection,
                                                       "Flat Field Correction", 113};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvFlatFieldCorrectionFilter>> RegisterTable();

  EQvFlatFieldCorrectionMode_t GetFlatFieldCorrectionMode() const override { return m_mode; }
  void SetFlatFieldCorrectionMode(EQvFlatFieldCorrectionMode_t mode) override;
  bool GetCalibrationEnable() const override { return m_calibrationEnable; }
  void SetCalibrationEnable(bool enable) override { Set(m_calibrationEnable, enable); }
  unsigned int GetCalibrationTargetValue() const override { return m_target; }
  void SetCalibrationTargetValue(unsigned int value) override { Set(m_target, value); }

  auto MakeCalibration(IQvImage& image) const {
    return std::make_shared<const CFFCCalibrationImage>(image, m_mode);
  }

 private:
  static constexpr auto kMode =
      SelectorSetting("FlatFieldCorrectionModeReg", QvFlatFieldCorrectionMode_Addition, "eFFCM");
  static constexpr auto kCalibrationEnable = PlainSetting<bool>("CalibrationEnableReg");
  static constexpr auto kTarget = IntegerSetting("CalibrationTargetValueReg", 0U, 65535U);

  static Register<CQvFlatFieldCorrectionFilter> ModeRegister();

  void FilterRaw8(IQvImage& image, const CFFCCalibrationImage* calibration);
  void FilterRaw16(IQvImage& image, const CFFCCalibrationImage* calibration);

  template <class T>
  void Correct(const ImageLines& lines, const CFFCCalibrationImage* calibration);

  Setting<EQvFlatFieldCorrectionMode_t> m_mode{kMode, QvFlatFieldCorrectionMode_Off};
  Setting<bool> m_calibrationEnable{kCalibrationEnable, false};
  Setting<unsigned int> m_target{kTarget, 0U};
};

}  // namespace QvApi
