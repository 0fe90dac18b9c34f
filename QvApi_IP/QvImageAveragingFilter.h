// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "QvApi_IP/IQvImageAveragingFilter.h"
#include "QvApi_IP/QvIPFilter.h"
#include "QvApi_IP/QvWorkingImage.h"
#include "QvSDKCommon/LargePageAllocator.h"

namespace QvApi {

class IQvImageAveragingFilterInside : public IQvImageAveragingFilter, public IQvFilterReleasable {};

class CQvImageAveragingFilter final
    : public CQvFilterDispatch<CQvImageAveragingFilter, IQvImageAveragingFilterInside> {
 public:
  static constexpr ModuleInfo<EQvFilterType_t> m_cInfo{QvFilterType_ImageAveraging,
                                                       "Image Averaging", 121};
  static const FormatMap<Handler> m_mapFilters;
  static std::span<const Register<CQvImageAveragingFilter>> RegisterTable() { return {}; }

  IQvImage* Filter(IQvImage* image) override;
  void GetAveragedImage(IQvImageBuffer* pBuffer, std::size_t nBits) override;
  void ClearImageData() override { m_frameCount = 0; }
  std::uint64_t GetFrameCount() override;

 private:
  /// What all images of a series have in common.
  struct Series {
    PixelFormat sourceFormat = PixelFormat::None;
    PixelFormat workingFormat = PixelFormat::None;
    std::size_t width = 0;
    std::size_t height = 0;
  };

  void Begin(const IQvImage& image);
  void CheckContinues(const IQvImage& image, std::uint64_t count) const;
  void AddBytes(IQvImage& image);
  void AddWords(IQvImage& image);
  template <class T>
  void Add(const ImageLines& lines);

  PixelFormat OutputFormat(std::size_t nBits) const;
  void GetAveragedImage(IQvImageBuffer& buffer, PixelFormat format, std::uint64_t count);
  template <class T>
  void Scale(const ImageLines& lines, std::uint64_t count) const;

  // Written under the parameter lock, but to end a series.
  std::atomic<std::uint64_t> m_frameCount{0};
  // Guarded by the parameter lock.
  Series m_series;
  /// Line by line, without padding.
  std::vector<std::uint32_t, LargePageAllocator<std::uint32_t>> m_sums;
  CQvWorkingImage m_workingImage;
};

}  // namespace QvApi
