// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "QvApi_IP/IQvColorTransformationFilter.h"
#include "QvApi_IP/Kernels/ColorMatrix.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

class IQvColorTransformationFilterInside : public IQvColorTransformationFilter,
                                           public IQvFilterReleasable {};

/// A colour matrix as tables: what each code of each component adds to each component.
class CMatrixTable {
 public:
  /// Row by row: gains for red, green and blue, offset.
  using Matrix = std::array<double, 12>;

  /// `bits` is the depth of the samples; pixels hold their components in the order of `isBGR`. An
  /// entry is the sum of code + 1 gains, to which red adds the offset, cut off to a whole number.
  CMatrixTable(const Matrix& matrix, unsigned bits, bool isBGR);
  CMatrixTable(CMatrixTable&&) = default;

  /// `matrix` with its gains followed by a turn of hue, a scaling of saturation.
  static Matrix GetMixedMatrix(const Matrix& matrix, double hueDegrees, double saturation);

  const Kernels::ColorMatrix& Tables() const { return m_tables; }

 private:
  std::vector<std::int32_t> m_parts;
  Kernels::ColorMatrix m_tables;
};

class CQvColorTransformationFilter final
    : public CQvIPFilter<CQvColorTransformationFilter, IQvColorTransformationFilterInside> {
 public:
  using ValueSelector = EQvColorTransformationValueSelector_t;

  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_ColorTransformation,
                                                       "Color Transformation", 111};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvColorTransformationFilter>> RegisterTable();

  IQvImage* Filter(IQvImage* image) override;

  double GetHueCorrection() const override { return m_hue; }
  void SetHueCorrection(double value) override { Set(m_hue, value); }
  double GetSaturationCorrection() const override { return m_saturation; }
  void SetSaturationCorrection(double value) override { Set(m_saturation, value); }
  bool GetColorTransformationEnable() const override { return m_enable; }
  void SetColorTransformationEnable(bool value) override { Set(m_enable, value); }
  double GetColorTransformationValue(ValueSelector selector) const override {
    return m_matrix.At(selector);
  }
  void SetColorTransformationValue(ValueSelector selector, double value) override {
    Set(m_matrix.At(selector), value);
  }

 private:
  using Matrix = CMatrixTable::Matrix;

  static constexpr auto kEnable = PlainSetting<bool>("ColorTransformationEnableReg");
  static constexpr auto kHue = RealSetting("HueCorrectionReg", -180.0, 180.0);
  static constexpr auto kSaturation = RealSetting("SaturationCorrectionReg", 0.0, 4.0);
  static constexpr auto kGain = RealSetting("ColorTransformationValueReg", -16.0, 16.0);
  static constexpr auto kOffset = RealSetting("ColorTransformationValueReg", -65535.0, 65535.0);
  static constexpr auto kValueSelector = SelectorSetting<std::size_t>(
      "ColorTransformationValueSelectorReg", QvColorTransformationValueSelector_Offset2, "eCTVS");
  static constexpr const SettingInfo<double>& InfoOf(std::size_t selector) {
    return selector % 4 == 3 ? kOffset : kGain;
  }
  static constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

  /// What tables are made of.
  struct Key {
    unsigned bits;
    bool isBGR;
    double hue, saturation;
    Matrix matrix;
    bool operator==(const Key&) const = default;
  };

  void CorrectionBGR8(IQvImage& image);
  void CorrectionBGR16(IQvImage& image);

  template <class T>
  void CorrectionBGR(const ImageLines& lines);

  Setting<bool> m_enable{kEnable, false};
  SelectedSettings<std::size_t, double, 12> m_matrix{kValueSelector, InfoOf, kIdentity};
  Setting<double> m_hue{kHue, 0.0};
  Setting<double> m_saturation{kSaturation, 1.0};
  Setting<std::size_t> m_valueSelector{kValueSelector, 0};
  TableCache<Key, CMatrixTable> m_cache;
};

}  // namespace QvApi
