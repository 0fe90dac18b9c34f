// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <span>
#include <utility>

#include "QvApi_IP/ColorMapSettings.h"
#include "QvApi_IP/IQvStillImageFiler.h"
#include "QvApi_IP/QvIPModuleBase.h"
#include "QvApi_IP/QvModuleInfo.h"
#include "QvApi_TL/PixelFormatFamilies.h"

namespace QvApi {

class IQvStillImageFilerInside : public IQvStillImageFiler, public IQvFilerReleasable {};

/// Finds the writer for a pixel format and a kind of file, and converts the image before where that
/// kind of file cannot hold it as it is.
class CQvStillImageWriter final
    : public CQvIPModule<CQvStillImageWriter, IQvStillImageFilerInside> {
 public:
  using Writer = void (CQvStillImageWriter::*)(IQvImage& image,
                                               const GenICam::gcstring& fileName) const;

  static constexpr ModuleInfo<EQvFilerType_t> m_cInfo{QvFilerType_StillImage, "Still Image", 117};
  static std::span<const Register<CQvStillImageWriter>> RegisterTable();

  CQvStillImageWriter() : CQvIPModule(m_cInfo.resourceId) {}

  IQvFilerInfo* GetIQvFilerInfo() const override { return &m_objFilerInfo; }
  static CFilerInfo<CQvStillImageWriter> m_objFilerInfo;

  bool IsSaveSupported(PixelFormat format, EQvStillImageFileFormat_t fileFormat) const override;
  bool IsLoadSupported(PixelFormat format, EQvStillImageFileFormat_t fileFormat) const override;
  void Save(IQvImage* pImage, EQvStillImageFileFormat_t fileFormat,
            const GenICam::gcstring& fileName) const override;
  void Load(IQvImageBuffer* buffer, const GenICam::gcstring& fileName) const override;

  unsigned int GetQuality() const override { return m_quality; }
  void SetQuality(unsigned int value) override { Set(m_quality, value); }
  EQvColorMapType_t GetColorMapType() const override { return m_colorMapType; }
  void SetColorMapType(EQvColorMapType_t type) override { Set(m_colorMapType, type); }
  bool GetColorMapInversion() const override { return m_colorMapInversion; }
  void SetColorMapInversion(bool inversion) override { Set(m_colorMapInversion, inversion); }
  int GetColorMapPhase() const override { return m_colorMapPhase; }
  void SetColorMapPhase(int phase) override { Set(m_colorMapPhase, phase); }

 private:
  static constexpr auto kQuality = IntegerSetting("QualityReg", 0U, 100U, "nValue");

  /// Pixel formats that one kind of file takes, as they are or converted to `destination` first.
  struct Row {
    FormatList formats;
    EQvStillImageFileFormat_t fileFormat;
    Writer writer;
    PixelFormat destination = PixelFormat::None;
  };
  struct WriterInfo {
    Writer writer;
    PixelFormat destination;
  };
  using WriterMap = std::map<std::pair<PixelFormat, EQvStillImageFileFormat_t>, WriterInfo>;

  static const Row m_cConvArray[];
  static const WriterMap m_mapWriters;
  static const WriterInfo m_WriterInfoForRaw;
  static WriterMap MakeWriterMap();
  /// Null if images of the format cannot be saved so.
  static const WriterInfo* GetWriter(PixelFormat format, EQvStillImageFileFormat_t fileFormat);

  bool HasColorMap() const;
  void SaveConverted(IQvImage& image, EQvStillImageFileFormat_t fileFormat, PixelFormat destination,
                     const GenICam::gcstring& fileName) const;

  /// A function that writes an image with a colour map to an open file.
  using MapWriter = void (*)(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
                             EQvColorMapType_t type, bool inversion, int phase);
  template <MapWriter write>
  void WriterWithMap(IQvImage& image, const GenICam::gcstring& fileName) const;
  void WriterBMP(IQvImage& image, const GenICam::gcstring& fileName) const;
  void WriterTIF(IQvImage& image, const GenICam::gcstring& fileName) const;
  void WriterPNG(IQvImage& image, const GenICam::gcstring& fileName) const;
  void WriterRaw(IQvImage& image, const GenICam::gcstring& fileName) const;
  void WriterCsv(IQvImage& image, const GenICam::gcstring& fileName) const;
  void WriterJPG(IQvImage& image, const GenICam::gcstring& fileName) const;

  Setting<unsigned int> m_quality{kQuality, 75};
  Setting<EQvColorMapType_t> m_colorMapType{ColorMapSettings::kType, QvColorMapType_Normal};
  Setting<bool> m_colorMapInversion{ColorMapSettings::kInversion, false};
  Setting<int> m_colorMapPhase{ColorMapSettings::kPhase, 0};
};

}  // namespace QvApi
