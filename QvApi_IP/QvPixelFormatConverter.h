// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>

#include "QvApi_IP/ColorMapSettings.h"
#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/PixelFormatRoutes.h"
#include "QvApi_IP/QvColorMapTable.h"
#include "QvApi_IP/QvDepthChange.h"
#include "QvApi_IP/QvIPModuleBase.h"
#include "QvApi_IP/QvLookUpTable.h"
#include "QvApi_IP/QvModuleInfo.h"
#include "QvApi_IP/QvPolarizationTables.h"

namespace QvApi {

class IQvPixelFormatConverterInside : public IQvPixelFormatConverter,
                                      public IQvConverterReleasable {};

class PolarizationOperation;

/// Finds the handler for a pair of formats and runs it, alone or in hops.
///
/// A handler is called with the destination sized already. Handlers stand in files by family
/// (Converter...cpp); this class holds the settings and the road to them.
class CQvPixelFormatConverter final
    : public CQvIPModule<CQvPixelFormatConverter, IQvPixelFormatConverterInside> {
 public:
  using Handler = void (CQvPixelFormatConverter::*)(IQvImage* source, IQvImageBuffer* destination,
                                                    bool reverseY);

  static constexpr ModuleInfo<EQvConverterType_t> m_cInfo{QvConverterType_PixelFormat,
                                                          "Pixel Format", 109};
  static std::span<const Register<CQvPixelFormatConverter>> RegisterTable();

  CQvPixelFormatConverter() : CQvIPModule(m_cInfo.resourceId) {}

  IQvConverterInfo* GetIQvConverterInfo() const override { return &m_info; }
  void Convert(IQvImage* source, IQvImageBuffer* destination) override;

  std::size_t GetLinePitchAlignment() const override { return m_linePitchAlignment; }
  void SetLinePitchAlignment(std::size_t value) override { Set(m_linePitchAlignment, value); }
  PixelFormat GetDestinationPixelFormat() const override { return m_destinationFormat; }
  void SetDestinationPixelFormat(PixelFormat value) override { Set(m_destinationFormat, value); }
  bool GetReverseY() const override { return m_reverseY; }
  void SetReverseY(bool value) override { Set(m_reverseY, value); }
  EQvBayerInterpolationMethod_t GetBayerInterpolationMethod() const override { return m_method; }
  void SetBayerInterpolationMethod(EQvBayerInterpolationMethod_t value) override {
    Set(m_method, value);
  }
  double GetGammaValue() const override { return m_gamma; }
  void SetGammaValue(double value) override { Set(m_gamma, value); }
  bool GetDestinationPixelFormatNodeLock() const override { return m_destinationNodeLock; }
  void SetDestinationPixelFormatNodeLock(bool value) override { Set(m_destinationNodeLock, value); }
  _EQvBitExpansionMode_t GetBitExpansionMode() const override { return m_bitExpansionMode; }
  void SetBitExpansionMode(_EQvBitExpansionMode_t value) override {
    Set(m_bitExpansionMode, value);
  }
  EQvPolarizationImageTransformationMethod_t GetPolarizationImageTransformationMethod()
      const override {
    return m_polarizationMethod;
  }
  void SetPolarizationImageTransformationMethod(
      EQvPolarizationImageTransformationMethod_t value) override {
    Set(m_polarizationMethod, value);
  }
  double GetPolarizationSpecifiedAngle() const override { return m_specifiedAngle; }
  void SetPolarizationSpecifiedAngle(double value) override { Set(m_specifiedAngle, value); }
  EQvColorMapType_t GetColorMapType() const override { return m_colorMapType; }
  void SetColorMapType(EQvColorMapType_t value) override { Set(m_colorMapType, value); }
  bool GetColorMapInversion() const override { return m_colorMapInversion; }
  void SetColorMapInversion(bool value) override { Set(m_colorMapInversion, value); }
  int GetColorMapPhase() const override { return m_colorMapPhase; }
  void SetColorMapPhase(int value) override { Set(m_colorMapPhase, value); }
  _EQvInterpolationMethodForSpecifiedAngle_t GetInterpolationMethodForSpecifiedAngle()
      const override {
    return m_specifiedAngleMethod;
  }
  void SetInterpolationMethodForSpecifiedAngle(
      _EQvInterpolationMethodForSpecifiedAngle_t value) override {
    Set(m_specifiedAngleMethod, value);
  }
  bool GetADOLPDarkMode() const override { return m_adolpDarkMode; }
  void SetADOLPDarkMode(bool value) override { Set(m_adolpDarkMode, value); }
  bool GetADOLPColorInversion() const override { return m_adolpInversion; }
  void SetADOLPColorInversion(bool value) override { Set(m_adolpInversion, value); }
  int GetADOLPColorPhase() const override { return m_adolpPhase; }
  void SetADOLPColorPhase(int value) override { Set(m_adolpPhase, value); }

  /// The handler of a pair of formats, ConverterCopy for equal ones, or null.
  static Handler GetConverter(PixelFormat source, PixelFormat destination);

  /// Images of this format can be converted to the present destination format.
  bool IsSupported(PixelFormat format) const {
    return GetConverter(format, m_destinationFormat) != nullptr;
  }

 private:
  /// The handler of each route, null for no route.
  static Handler HandlerOf(Route route);
  /// Throws RuntimeException with the names of both formats.
  [[noreturn]] static void ThrowNotConvertible(PixelFormat source, PixelFormat destination);

  /// One hop.
  void mConvert(IQvImage* source, IQvImageBuffer* destination, PixelFormat destinationFormat,
                bool reverseY);
  /// Two hops; only the first one flips.
  void ConvertViaTmp(IQvImage* source, IQvImageBuffer* destination, PixelFormat intermediate,
                     bool reverseY);

  /// Calls `walk(s, d, from, to, depthChange)` with the lines of both images, s and d being of the
  /// types of their samples. Defined in ConverterSamples.h.
  template <class Walk>
  void ConvertSamples(IQvImage* source, IQvImageBuffer* destination, bool reverseY, Walk walk);

  // Handlers, by the file that holds them.
  // QvPixelFormatConverter.cpp
  void ConverterCopy(IQvImage*, IQvImageBuffer*, bool);
  // ConverterHops.cpp
  void ConverterViaBGRa8(IQvImage*, IQvImageBuffer*, bool);
  void ConverterViaRaw(IQvImage*, IQvImageBuffer*, bool);
  void ConverterViaSameBitBGR(IQvImage*, IQvImageBuffer*, bool);
  void ConverterViaSameBitRaw(IQvImage*, IQvImageBuffer*, bool);
  void ConverterViaUnpack(IQvImage*, IQvImageBuffer*, bool);
  // ConverterMosaic.cpp
  void ConverterColorInterporation(IQvImage*, IQvImageBuffer*, bool);
  void ConverterBayerBToMonoB(IQvImage*, IQvImageBuffer*, bool);
  void ConverterBayerWToMonoW(IQvImage*, IQvImageBuffer*, bool);
  void ConverterBGR8ToBayer8(IQvImage*, IQvImageBuffer*, bool);
  void ConverterBGR16ToBayer16(IQvImage*, IQvImageBuffer*, bool);
  // ConverterMono.cpp
  void ConverterRawToRaw(IQvImage*, IQvImageBuffer*, bool);
  void ConverterMonoToColor(IQvImage*, IQvImageBuffer*, bool);
  void ConverterMonoToPlanar(IQvImage*, IQvImageBuffer*, bool);
  void ConverterColorToMono(IQvImage*, IQvImageBuffer*, bool);
  // ConverterColor.cpp
  void ConverterColorToColor(IQvImage*, IQvImageBuffer*, bool);
  void ConverterColorToPlanar(IQvImage*, IQvImageBuffer*, bool);
  void ConverterPlanarToColor(IQvImage*, IQvImageBuffer*, bool);
  void ConverterPlanarToPlanar(IQvImage*, IQvImageBuffer*, bool);
  // ConverterYCbCr.cpp
  void Converter2YCbCr(IQvImage*, IQvImageBuffer*, bool);
  void ConverterYUV2MonoOrBGR(IQvImage*, IQvImageBuffer*, bool);
  // ConverterPolarizationMono.cpp
  /// The method that is set; a register takes any number, and those that are none throw.
  EQvPolarizationImageTransformationMethod_t GetPolarizationMethod(
      const IQvImage& source, const IQvImage& destination) const;
  PolarizationOperation GetPolarizationOperation(EQvPolarizationImageTransformationMethod_t method,
                                                 std::size_t depth);
  Kernels::HueStyle GetPolarizationHueStyle() const;
  void ConverterPolarizationOff(IQvImage*, IQvImageBuffer*, bool);
  void ConverterPolarizationImageToMono(IQvImage*, IQvImageBuffer*, bool);
  void ConverterPolarizationImageToBGR(IQvImage*, IQvImageBuffer*, bool);
  // ConverterPolarizationColor.cpp
  void ColorsToMono(const IQvImage& source, const IQvImage& destination,
                    EQvPolarizationImageTransformationMethod_t method, bool reverseY);
  void ColorsToBGR(const IQvImage& source, const IQvImage& destination, bool reverseY);
  void AnglesToBGR(const IQvImage& source, const IQvImage& destination, bool reverseY);
  void CellsToBGR(const IQvImage& source, IQvImageBuffer& destination,
                  const PolarizationOperation& operation, bool reverseY);
  void ConverterPolarizationColorImageToMono(IQvImage*, IQvImageBuffer*, bool);
  void ConverterPolarizationColorImageToBGR(IQvImage*, IQvImageBuffer*, bool);

  static constexpr auto kLinePitchAlignment = PlainSetting<std::size_t>("");
  static constexpr auto kDestinationFormat = PlainSetting<PixelFormat>("DestinationPixelFormatReg");
  static constexpr auto kReverseY = PlainSetting<bool>("ReverseYReg");
  static constexpr auto kMethod =
      SelectorSetting("BayerInterpolationMethodReg", QvBayerInterpolationMethod_Bilinear3, "eBIM");
  static constexpr auto kGamma = RealSetting("GammaReg", 0.0, 4.0, "Gamma Value");
  static constexpr auto kDestinationNodeLock =
      PlainSetting<bool>("DestinationPixelFormatNodeLockReg");
  // No node of the document has this name, so that the node map keeps the value that it read last.
  static constexpr auto kBitExpansionMode =
      RealSetting("BigExpansionModeReg", QvBitExpansionMode_Gamma, QvBitExpansionMode_LeftShiftBy1,
                  "Bit Expansion Mode Value");
  static constexpr auto kPolarizationMethod =
      SelectorSetting("PolarizationImageTransformationMethodReg",
                      QvPolarizationImageTransformationMethod_DifferenceOfPixelValues, "ePITM");
  static constexpr auto kSpecifiedAngle =
      RealSetting("PolarizationSpecifiedAngleReg", 0.0, 180.0, "Polarization Specified Angle");
  static constexpr auto kSpecifiedAngleMethod = SelectorSetting(
      "PolarizationSpecifiedAngleInterpolationMethodReg",
      QvInterpolationMethodForSpecifiedAngle_Cosine, "Interpolation Method For Specified Angle");
  static constexpr auto kADOLPDarkMode = PlainSetting<bool>("ADOLPDarkModeReg");
  static constexpr auto kADOLPInversion = PlainSetting<bool>("ADOLPColorInversionReg");
  static constexpr auto kADOLPPhase = SelectorSetting("ADOLPColorPhaseReg", 255, "nPhase");

  mutable CConverterInfo<CQvPixelFormatConverter> m_info{*this};
  Setting<std::size_t> m_linePitchAlignment{kLinePitchAlignment, 0};
  Setting<PixelFormat> m_destinationFormat{kDestinationFormat, PixelFormat::BGR8};
  Setting<bool> m_reverseY{kReverseY, false};
  Setting<EQvBayerInterpolationMethod_t> m_method{kMethod,
                                                  QvBayerInterpolationMethod_NearestNeighbor2};
  Setting<double> m_gamma{kGamma, 1.0};
  Setting<bool> m_destinationNodeLock{kDestinationNodeLock, false};
  Setting<_EQvBitExpansionMode_t> m_bitExpansionMode{kBitExpansionMode, QvBitExpansionMode_Gamma};
  Setting<EQvPolarizationImageTransformationMethod_t> m_polarizationMethod{
      kPolarizationMethod, QvPolarizationImageTransformationMethod_EachAngle};
  Setting<double> m_specifiedAngle{kSpecifiedAngle, 0.0};
  Setting<_EQvInterpolationMethodForSpecifiedAngle_t> m_specifiedAngleMethod{
      kSpecifiedAngleMethod, QvInterpolationMethodForSpecifiedAngle_Linear};
  Setting<EQvColorMapType_t> m_colorMapType{ColorMapSettings::kType, QvColorMapType_Normal};
  Setting<bool> m_colorMapInversion{ColorMapSettings::kInversion, false};
  Setting<int> m_colorMapPhase{ColorMapSettings::kPhase, 0};
  Setting<bool> m_adolpDarkMode{kADOLPDarkMode, false};
  Setting<bool> m_adolpInversion{kADOLPInversion, false};
  Setting<int> m_adolpPhase{kADOLPPhase, 0};

  CQvLookUpTableManager m_depthTables;
  CQvLookUpTableForVirtualPolarizerManager m_virtualPolarizerTable;
  CColorMapTableManager m_colorMapTable;
};

}  // namespace QvApi
