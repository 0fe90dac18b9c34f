// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>

#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// A view of a rectangle of an image. It shares the parent's pixels and does not keep the parent
/// alive. Of planar 4:2:0 it holds a copy instead, since the three planes have pitches of their
/// own.
///
/// Its pixels are gone, and asking for them throws, as soon as the rectangle no longer lies inside
/// the parent or the parent has changed from or to planar 4:2:0.
class CQvROIImage final : public IQvImageInside {
 public:
  explicit CQvROIImage(IQvImage* parent);
  CQvROIImage(const CQvROIImage&) = delete;
  CQvROIImage& operator=(const CQvROIImage&) = delete;
  ~CQvROIImage() override;

  /// Aims the view. Column and width are checked and taken first, so that they stay when row or
  /// height are refused.
  /// @throws GenICam::OutOfRangeException  the rectangle is off the parent or off the grid
  /// @throws GenICam::RuntimeException     planar 4:2:0 of odd size, or a parent without image
  void SetROI(std::size_t x, std::size_t y, std::size_t width, std::size_t height);

  const IQvImage& GetParent() const { return *m_parent; }

  std::size_t GetImageWidth() const override { return m_width; }
  std::size_t GetImageHeight() const override { return m_height; }
  std::size_t GetImageLinePitch() const override;
  std::size_t GetImagePlanePitch() const override;
  EQvPixelFormatNamingConvention_t GetImagePixelFormat() const override;
  void* GetImageBuffer() const override;
  void* GetUserContext() const override { return m_parent->GetUserContext(); }
  IQvImage* GetROIImage(std::size_t x, std::size_t y, std::size_t width,
                        std::size_t height) override;
  const CQvPixelComponent& GetIQvPixelComponentValue(std::size_t x, std::size_t y) override;

 private:
  bool HasCopyOfItsSize() const;
  bool HasPixels() const;
  void CheckPixels() const;
  void CopyPlanar420();

  IQvImage* m_parent;
  std::size_t m_x = 0;
  std::size_t m_y = 0;
  std::size_t m_width = 0;
  std::size_t m_height = 0;
  std::unique_ptr<CQvROIImage> m_child;
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> m_copy;
};

/// Aims the one view of `parent`, which is made when it is first asked for.
/// @throws GenICam::BadAllocException  no memory for the view
IQvImage* AimROIImage(std::unique_ptr<CQvROIImage>& child, IQvImage* parent, std::size_t x,
                      std::size_t y, std::size_t width, std::size_t height);

}  // namespace QvApi
