// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>

#include "QvSDKCommon/IQvAllocator.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"
#include "QvSDKCommon/QvROIImage.h"

namespace QvApi {

/// An image in memory of its own, or in that of a caller's allocator. Others get it from
/// CreateIQvImageBuffer().
///
/// It has either memory, size and format, or none of them: a refused allocation leaves it empty.
class CQvImageBuffer final : public IQvImageBufferInside,
                             public IQvImageInside,
                             public IQvAllocator {
 public:
  /// @param allocator  null for the heap; else it must outlive the buffer
  explicit CQvImageBuffer(IQvAllocator* allocator);
  CQvImageBuffer(const CQvImageBuffer&) = delete;
  CQvImageBuffer& operator=(const CQvImageBuffer&) = delete;
  ~CQvImageBuffer() override;

  // IQvImageBuffer.
  void CreateBuffer(std::size_t width, std::size_t height, EQvPixelFormatNamingConvention_t format,
                    _EQvMemoryInitialization_t init) override;
  IQvImage* GetIQvImage() override;
  void CopyImage(IQvImage* source) override;
  void SetSize(std::size_t width, std::size_t height, EQvPixelFormatNamingConvention_t format,
               std::size_t lineAlignment) override;
  bool HasImageBuffer() const override { return m_buffer != nullptr; }

  // IQvImage.
  std::size_t GetImageWidth() const override { return m_width; }
  std::size_t GetImageHeight() const override { return m_height; }
  std::size_t GetImageLinePitch() const override { return m_linePitch; }
  std::size_t GetImagePlanePitch() const override { return m_height * m_linePitch; }
  EQvPixelFormatNamingConvention_t GetImagePixelFormat() const override { return m_format; }
  void* GetImageBuffer() const override { return m_buffer; }
  void* GetUserContext() const override { return m_userContext; }
  IQvImage* GetROIImage(std::size_t x, std::size_t y, std::size_t width,
                        std::size_t height) override;
  const CQvPixelComponent& GetIQvPixelComponentValue(std::size_t x, std::size_t y) override;

  // IQvAllocator: the buffer is its own where the caller gives none.
  void Allocate(void** buffer, std::size_t size, void** context) override;
  void Deallocate(void* buffer, std::size_t size, void* context) override;
  void OnDeregister() override {}

  // IQvReleasable.
  void Release() override { delete this; }

  /// SetSize() for a caller who has computed the bytes from line to line, at least the significant
  /// ones of a line.
  void SetSizeWithLinePitch(std::size_t width, std::size_t height,
                            EQvPixelFormatNamingConvention_t format, std::size_t linePitch);

 private:
  /// Draws the chart of one family of formats; false if it drew none.
  using ChartMaker = bool (CQvImageBuffer::*)(IQvImage* image, _EQvMemoryInitialization_t init);

  void Deallocate();
  void Reallocate(std::size_t size);
  bool Holds(const IQvImage& image) const;

  static ChartMaker GetFunction(EQvPixelFormatNamingConvention_t format);
  bool MakeChartMono8(IQvImage* image, _EQvMemoryInitialization_t init);
  bool MakeChartMono16(IQvImage* image, _EQvMemoryInitialization_t init);
  bool MakeChartBGR8(IQvImage* image, _EQvMemoryInitialization_t init);
  bool MakeChartBGR16(IQvImage* image, _EQvMemoryInitialization_t init);

  void* m_buffer = nullptr;
  void* m_userContext = nullptr;
  std::size_t m_allocatedSize = 0;
  IQvAllocator* m_allocator;
  std::size_t m_width = 0;
  std::size_t m_height = 0;
  std::size_t m_linePitch = 0;
  EQvPixelFormatNamingConvention_t m_format = EQvPixelFormatNamingConvention_t::None;
  CQvPixelComponent m_pixelComponent;
  std::unique_ptr<CQvROIImage> m_roiChild;
};

}  // namespace QvApi
