// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "QvApi_IP/IQvSNMeasurementFilter.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/QvSNMeasurement.h"
#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/IQvImageBuffer.h"
#include "QvSDKCommon/Worker.h"

namespace QvApi {

class IQvSNMesurementFilterInside : public IQvSNMeasurementFilter, public IQvFilterReleasable {};

/// The results as registers: those of the selected component. An access that begins at a register
/// stays there, however long it is.
class CSNMeasurementResult final : public GenApi::IPort {
 public:
  /// @param lock  guards the results and the selection
  CSNMeasurementResult(std::mutex& lock, const std::vector<CSNMeasurementValue>& values)
      : m_lock(lock), m_values(values) {}

  GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
  void Read(void* buffer, std::int64_t address, std::int64_t length) override;
  void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

  /// Throws OutOfRangeException for an index that has no result.
  void CheckIndex(const char* name, std::int64_t index) const;

 private:
  static std::span<const Register<CSNMeasurementResult>> RegisterTable();
  template <auto member>
  static constexpr Register<CSNMeasurementResult> Selected(std::int64_t address);

  std::mutex& m_lock;
  const std::vector<CSNMeasurementValue>& m_values;
  std::int64_t m_index = 0;
};

class CQvSNMeasurementFilter final
    : public CQvFilterDispatch<CQvSNMeasurementFilter, IQvSNMesurementFilterInside>,
      public CWorker,
      public IQvSNMeasurementResult {
 public:
  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_SNMeasurement, "SN Measurement",
                                                       103};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvSNMeasurementFilter>> RegisterTable();

  CQvSNMeasurementFilter();
  ~CQvSNMeasurementFilter() override;

  /// The format in which images of `format` are measured; PixelFormat::None if they are not.
  static PixelFormat GetRegisteredIQvImagePixelFormat(PixelFormat format);
  /// Denies two formats that Filter() takes, as the descriptor always has.
  static bool IsSupported(PixelFormat format);

  IQvImage* Filter(IQvImage* image) override;
  GenApi::INodeMap* GetINodeMap() override;

  void ClearGrabbedImage() override;
  std::size_t GetFrameCount() const override { return m_frameCount; }
  void SetFrameCount(std::size_t value) override;
  EQvROIMode_t GetROIMode() const override { return m_mode; }
  void SetROIMode(EQvROIMode_t eRM) override { SetROI(m_mode, eRM); }
  std::size_t GetOffsetX() const override { return m_offsetX; }
  void SetOffsetX(std::size_t value) override { SetROI(m_offsetX, value); }
  std::size_t GetOffsetY() const override { return m_offsetY; }
  void SetOffsetY(std::size_t value) override { SetROI(m_offsetY, value); }
  std::size_t GetWidth() const override { return m_width; }
  void SetWidth(std::size_t value) override { SetROI(m_width, value); }
  std::size_t GetHeight() const override { return m_height; }
  void SetHeight(std::size_t value) override { SetROI(m_height, value); }
  IQvSNMeasurementResult* RetrieveIQvSNMeasurementResult(unsigned int nTimeout,
                                                         EQvTimeoutHandling_t eHandling) override;

  std::size_t GetComponentCount() const override;
  void GetSNMeasurementValue(std::size_t nIndex, EQvPixelComponent_t* pComponent,
                             std::size_t* pPixelCount, double* pAverage, double* pTemporalSD,
                             double* pFrameSD) override;

 private:
  static constexpr auto kFrameCount = IntegerSetting<std::size_t>("FrameCountReg", 1, 1024);
  static constexpr auto kMode = SelectorSetting("FilterROIModeReg", QvROIMode_CenterOfImage, "eRM");
  static constexpr auto kOffsetX = PlainSetting<std::size_t>("OffsetXReg");
  static constexpr auto kOffsetY = PlainSetting<std::size_t>("OffsetYReg");
  static constexpr auto kWidth = PlainSetting<std::size_t>("WidthReg");
  static constexpr auto kHeight = PlainSetting<std::size_t>("HeightReg");
  static constexpr auto kBitExpansionMode =
      PlainSetting<_EQvBitExpansionMode_t>("BitExpansionModeReg");
  static constexpr auto kImageWidth = PlainSetting<std::size_t>("WidthMax");
  static constexpr auto kImageHeight = PlainSetting<std::size_t>("HeightMax");
  static constexpr const char* kResultPort = "IPResultPort";

  using Image = CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer>;

  void Collect(IQvImage& image);
  bool Append(IQvImage& image);
  void ClearImages();
  void RequestWork();
  template <class T>
  void SetROI(Setting<T>& setting, T value) {
    if (!setting.StoreChecked(value)) return;
    RequestWork();
    NodeMap().Invalidate(setting.Node());
  }

  int mWork() override;
  void Measure();
  SNRegion Region() const;

  Setting<std::size_t> m_frameCount{kFrameCount, 50};
  Setting<EQvROIMode_t> m_mode{kMode, QvROIMode_CenterOfImage};
  Setting<std::size_t> m_offsetX{kOffsetX, 0};
  Setting<std::size_t> m_offsetY{kOffsetY, 0};
  Setting<std::size_t> m_width{kWidth, 100};
  Setting<std::size_t> m_height{kHeight, 100};
  Setting<_EQvBitExpansionMode_t> m_bitExpansionMode{kBitExpansionMode, QvBitExpansionMode_Gamma};
  Setting<std::size_t> m_imageWidth{kImageWidth, 4096};
  Setting<std::size_t> m_imageHeight{kImageHeight, 4096};

  // Three locks, taken in this order, and the node map's before any of them: so no node is
  // invalidated under one of them. The result lock is held while a measurement runs. The parameter
  // lock of the base guards the series: its images and their format.
  mutable GenApi::CLock m_resultLock;
  PixelFormat m_format = PixelFormat::None;
  std::vector<Image> m_images;  ///< Oldest first.
  CQvPixelFormatConverter m_converter;

  /// Held for moments only. Guards the results, and changes of events that must be seen together.
  mutable std::mutex m_stateLock;
  std::vector<CSNMeasurementValue> m_results;
  CEventObject m_framesComplete{nullptr, true, false, "FramesCompleteEvent"};
  CEventObject m_workRequest{nullptr, true, false, "WorkRequestEvent"};
  CEventObject m_resultReady{nullptr, true, false, "ResultReadyEvent"};

  CSNMeasurementResult m_resultPort{m_stateLock, m_results};
  std::once_flag m_resultPortConnected;
};

}  // namespace QvApi
