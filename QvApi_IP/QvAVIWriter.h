// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "QvApi_IP/AVIWriter/VideoFile.h"
#include "QvApi_IP/ColorMapSettings.h"
#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/IQvVideoFiler.h"
#include "QvApi_IP/QvIPModuleBase.h"
#include "QvApi_IP/QvModuleInfo.h"
#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/EventObject.h"

namespace QvApi {

class IQvVideoFilerInside : public IQvVideoFiler, public IQvFilerReleasable {};

/// Converts images into frames and queues them for the worker of a video file, whom it gives names
/// and whose reports it turns into callbacks.
///
/// Frames go round between two queues: requested ones are filled on the caller's thread, filled
/// ones are written on the worker's.
class CQvAVIWriter final : public CQvIPModule<CQvAVIWriter, IQvVideoFilerInside>,
                           private IAVIFileStatusListener {
 public:
  static constexpr ModuleInfo<EQvFilerType_t> m_cInfo{QvFilerType_Video, "AVI", 119};
  static std::span<const Register<CQvAVIWriter>> RegisterTable();

  CQvAVIWriter();
  ~CQvAVIWriter() override;

  IQvFilerInfo* GetIQvFilerInfo() const override { return &m_objFilerInfo; }
  static CFilerInfo<CQvAVIWriter> m_objFilerInfo;

  EQvVideoFileFormat_t GetVideoFileFormat() const override { return m_fileFormat; }
  void SetVideoFileFormat(EQvVideoFileFormat_t format) override { SetAnew(m_fileFormat, format); }
  EQvVideoFileCompression_t GetVideoFileCompression() const override { return m_compression; }
  void SetVideoFileCompression(EQvVideoFileCompression_t compression) override {
    SetAnew(m_compression, compression);
  }
  unsigned int GetQuality() const override { return m_quality; }
  void SetQuality(unsigned int value) override { Set(m_quality, value); }
  bool GetReverseY() const override { return m_reverseY; }
  void SetReverseY(bool reverse) override { SetAnew(m_reverseY, reverse); }
  double GetFPS() const override { return m_fps; }
  void SetFPS(double fps) override { SetAnew(m_fps, fps); }
  std::size_t GetMaximumFrameCountPerFile() const override { return m_maximumFrameCount; }
  void SetMaximumFrameCountPerFile(std::size_t value) override {
    SetAnew(m_maximumFrameCount, value);
  }
  EQvColorMapType_t GetColorMapType() const override { return m_colorMapType; }
  void SetColorMapType(EQvColorMapType_t type) override { Set(m_colorMapType, type); }
  bool GetColorMapInversion() const override { return m_colorMapInversion; }
  void SetColorMapInversion(bool inversion) override { Set(m_colorMapInversion, inversion); }
  int GetColorMapPhase() const override { return m_colorMapPhase; }
  void SetColorMapPhase(int phase) override { Set(m_colorMapPhase, phase); }

  void RegisterFileName(const GenICam::gcstring& name) override;
  void RegisterIQvImage(IQvImage* image, unsigned int frameNumber) override;
  bool IsStopped() override;
  void Reset() override;

 private:
  using FrameQueue = CBufferQueue<CFrameData>;

  /// What all frames of a recording have in common.
  struct Geometry {
    PixelFormat format = PixelFormat::BGR8;
    std::size_t width = 640;
    std::size_t height = 480;
    std::size_t linePitch = 1920;
    bool operator==(const Geometry&) const = default;
  };

  static constexpr auto kFileFormat =
      SelectorSetting("FileFormatValueReg", QvVideoFileFormat_AVI2, "eAVIFileFormat");
  static constexpr auto kCompression =
      SelectorSetting("CodecValueReg", QvVideoFileCompression_MotionJPEG, "eAVICodec");
  // No node has this name, so that a node map keeps the quality that it read last.
  static constexpr auto kQuality = IntegerSetting("QualityValueReg", 0U, 100U, "nValue");
  static constexpr auto kReverseY = PlainSetting<bool>("ReverseYValueReg");
  static constexpr auto kFPS = RealSetting("FrameRateValueReg", 0.001, 65535.0, "FPS");
  static constexpr auto kMaximumFrameCount =
      IntegerSetting<std::size_t>("MaximumFrameCountPerFileValueReg", 1, 100000, "nValue");

  /// A setter for what a file cannot change under way: ends the recording first.
  template <class T>
  void SetAnew(Setting<T>& setting, T value) {
    setting.Check(value);
    if (setting == value) return;
    Close();
    Set(setting, value);
  }
  /// The register of such a setting.
  template <auto setting, unsigned rules = kPlain>
  static constexpr Register<CQvAVIWriter> ValueAnew(std::int64_t address) {
    Register<CQvAVIWriter> row = Registers::Value<setting, rules>(address);
    row.write = [](CQvAVIWriter& module, const unsigned char* bytes) {
      using T = typename Registers::MemberOf<setting>::Value;
      const T value = Registers::Decode<T, rules>(bytes);
      if (module.*setting == value) return;
      module.Close();
      (module.*setting).Store(value);
    };
    return row;
  }

  // IAVIFileStatusListener, called by the worker.
  bool GetNextFileName(GenICam::gcstring& name) override;
  void* GetNextFileExistEvent() override { return &m_nextFileEvent; }
  void OnFileOpened(const GenICam::gcstring& name) override;
  void OnFileClosed(const GenICam::gcstring& name) override;
  void OnException(const GenICam::GenericException& exception) override;

  /// Stops if no name is left.
  void StopWithoutNames();
  /// Calls the listeners.
  template <class Param>
  void Report(Param&& param);

  bool HasColorMap() const;
  Geometry GeometryOf(const IQvImage& image) const;
  /// Counts on without wraps.
  std::uint64_t FrameIndexOf(unsigned int frameNumber);
  /// A frame to fill, or null if the filer is stopped.
  CFrameData* WaitForFrame();
  void Convert(IQvImage& image, IQvImageBuffer& destination);

  void Open(const Geometry& geometry);
  std::unique_ptr<CVideoFile> MakeVideoFile();
  void Close();
  void CreateBuffer();
  void RemoveBuffer();

  Setting<EQvVideoFileFormat_t> m_fileFormat{kFileFormat, QvVideoFileFormat_AVI2};
  Setting<EQvVideoFileCompression_t> m_compression{kCompression, QvVideoFileCompression_MotionJPEG};
  Setting<unsigned int> m_quality{kQuality, 75};
  Setting<std::size_t> m_maximumFrameCount{kMaximumFrameCount, 600};
  Setting<bool> m_reverseY{kReverseY, false};
  Setting<double> m_fps{kFPS, 1.0 / 60.0};
  Setting<EQvColorMapType_t> m_colorMapType{ColorMapSettings::kType, QvColorMapType_Normal};
  Setting<bool> m_colorMapInversion{ColorMapSettings::kInversion, false};
  Setting<int> m_colorMapPhase{ColorMapSettings::kPhase, 0};

  Geometry m_geometry;
  std::vector<std::unique_ptr<CFrameData>> m_allFrames;
  FrameQueue m_requestQueue;  ///< Those to be filled.
  FrameQueue m_writeQueue;    ///< Those to be written.
  unsigned int m_dwRequestQueueBufferCount = 10;
  std::unique_ptr<CVideoFile> m_videoFile;  ///< Ends before its queues.
  const CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter> m_converter;

  GenApi::CLock m_fileNameLock;
  GenICam::gcstring_vector m_fileNames;
  CEventObject m_nextFileEvent{nullptr, true, false, nullptr};
  CEventObject m_stoppedEvent{nullptr, true, true, nullptr};

  std::uint64_t m_acceptedFrames = 0;  ///< Of this recording.
  std::uint32_t m_firstFrameNumber = 0;
  std::uint32_t m_lastFrameNumber = 0;
  std::uint64_t m_wrapOffset = 0;
};

}  // namespace QvApi
