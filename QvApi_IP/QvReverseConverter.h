// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>

#include "QvApi_IP/IQvReverseConverter.h"
#include "QvApi_IP/Kernels/Flip.h"
#include "QvApi_IP/QvFormatMap.h"
#include "QvApi_IP/QvIPModuleBase.h"
#include "QvApi_IP/QvModuleInfo.h"

namespace QvApi {

/// What becomes of an image: where pixel (x, y) of w x h goes.
enum _EQV_FLIPPING_ROTATING_MODE : unsigned {
  QV_FLIPPING_ROTATING_MODE_NONE = 0,              ///< (x, y)
  QV_FLIPPING_ROTATING_MODE_REVERSE_X = 1,         ///< (w-1-x, y)
  QV_FLIPPING_ROTATING_MODE_REVERSE_Y = 2,         ///< (x, h-1-y)
  QV_FLIPPING_ROTATING_MODE_REVERSE_XY = 3,        ///< (w-1-x, h-1-y)
  QV_FLIPPING_ROTATING_MODE_CLOCKWISE = 4,         ///< (h-1-y, x)
  QV_FLIPPING_ROTATING_MODE_COUNTERCLOCKWISE = 5,  ///< (y, w-1-x)
  QV_FLIPPING_ROTATING_MODE_TRANSPOSE = 6,         ///< (y, x)
  QV_FLIPPING_ROTATING_MODE_ANTI_TRANSPOSE = 7,    ///< (h-1-y, w-1-x)
  QV_FLIPPING_ROTATING_MODE_COUNT = 8,
};

class IQvReverseConverterReleasable : public IQvReverseConverter, public IQvConverterReleasable {};
class IQvReverseConverterInside : public IQvReverseConverterReleasable {};

class CQvReverseConverter final
    : public CQvIPModule<CQvReverseConverter, IQvReverseConverterInside> {
 public:
  using Handler = void (CQvReverseConverter::*)(IQvImage* source, IQvImage* destination,
                                                _EQV_FLIPPING_ROTATING_MODE mode);

  static constexpr ModuleInfo<EQvConverterType_t> m_cInfo{QvConverterType_Reverse, "Reverse", 110};
  static const FormatMap<Handler> m_mapConverters;
  static std::span<const Register<CQvReverseConverter>> RegisterTable();

  CQvReverseConverter() : CQvIPModule(m_cInfo.resourceId) {}

  IQvConverterInfo* GetIQvConverterInfo() const override { return &m_info; }
  void Convert(IQvImage* source, IQvImageBuffer* destination) override;

  std::size_t GetLinePitchAlignment() const override { return m_linePitchAlignment; }
  void SetLinePitchAlignment(std::size_t value) override { Set(m_linePitchAlignment, value); }
  bool GetReverseX() const override { return m_reverseX; }
  void SetReverseX(bool value) override { Set(m_reverseX, value); }
  bool GetReverseY() const override { return m_reverseY; }
  void SetReverseY(bool value) override { Set(m_reverseY, value); }
  EQvRotationMode_t GetRotationMode() const override { return m_rotation; }
  void SetRotationMode(EQvRotationMode_t value) override { Set(m_rotation, value); }

  static bool IsSupported(PixelFormat format) { return m_mapConverters.Find(format) != nullptr; }

 private:
  /// The settings, as they are when an image comes.
  struct Operation {
    bool reverseX;
    bool reverseY;
    EQvRotationMode_t rotation;

    _EQV_FLIPPING_ROTATING_MODE Mode() const;
    /// The format in which the samples of an image keep their colours and polarizers.
    PixelFormat FormatOf(const IQvImage& source) const;
  };

  void mConvert(IQvImage* source, IQvImageBuffer* destination, const Operation& operation);

  void ConverterRawOrMono(IQvImage*, IQvImage*, _EQV_FLIPPING_ROTATING_MODE);
  void ConverterRGB(IQvImage*, IQvImage*, _EQV_FLIPPING_ROTATING_MODE);
  void ConverterRGB10p32(IQvImage*, IQvImage*, _EQV_FLIPPING_ROTATING_MODE);

  static constexpr auto kLinePitchAlignment = PlainSetting<std::size_t>("");
  static constexpr auto kReverseX = PlainSetting<bool>("ReverseXReg");
  static constexpr auto kReverseY = PlainSetting<bool>("ReverseYReg");
  static constexpr auto kRotation = SelectorSetting<EQvRotationMode_t>(
      "RotationModeReg", QvRotationMode_Counterclockwise90, "eRM");

  mutable CConverterInfo<CQvReverseConverter> m_info{*this};
  Setting<bool> m_reverseX{kReverseX, false};
  Setting<bool> m_reverseY{kReverseY, false};
  Setting<EQvRotationMode_t> m_rotation{kRotation, QvRotationMode_OFF};
  Setting<std::size_t> m_linePitchAlignment{kLinePitchAlignment, 1};
};

}  // namespace QvApi
