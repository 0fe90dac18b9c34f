// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/QvImageLines.h"

namespace QvApi {

/// A rectangle of an image of whole bytes a pixel, as an image of the same format. Unlike a view
/// from GetROIImage() it may lie anywhere, and the whole image knows nothing of it.
class ImagePart final : public IQvImage {
 public:
  struct Rectangle {
    std::size_t x, y, width, height;
  };

  /// `whole` must outlive this, and the rectangle must be inside.
  ImagePart(const IQvImage& whole, const Rectangle& part) : m_whole(whole), m_part(part) {}

  std::size_t GetImageWidth() const override { return m_part.width; }
  std::size_t GetImageHeight() const override { return m_part.height; }
  std::size_t GetImageLinePitch() const override { return m_whole.GetImageLinePitch(); }
  std::size_t GetImagePlanePitch() const override { return m_whole.GetImagePlanePitch(); }
  PixelFormat GetImagePixelFormat() const override { return m_whole.GetImagePixelFormat(); }
  void* GetImageBuffer() const override {
    const std::size_t pixelBytes = FormatInfo(GetImagePixelFormat()).GetTotalBitCount() / 8;
    return static_cast<std::uint8_t*>(m_whole.GetImageBuffer()) + m_part.y * GetImageLinePitch() +
           m_part.x * pixelBytes;
  }
  void* GetUserContext() const override { return m_whole.GetUserContext(); }
  IQvImage* GetROIImage(std::size_t, std::size_t, std::size_t, std::size_t) override {
    throw LOGICAL_ERROR_EXCEPTION("A part of an image has no views.");
  }
  const CQvPixelComponent& GetIQvPixelComponentValue(std::size_t, std::size_t) override {
    throw LOGICAL_ERROR_EXCEPTION("A part of an image has no component values.");
  }

 private:
  const IQvImage& m_whole;
  const Rectangle m_part;
};

}  // namespace QvApi
