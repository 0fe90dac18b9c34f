// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"

/// What the tests of images share.
namespace QvApi::Testing {

using Buffer = CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer>;

inline Buffer MakeBuffer(IQvAllocator* allocator = nullptr) {
  return Buffer(CreateIQvImageBuffer(allocator));
}

inline std::uint8_t* Bytes(const IQvImage* image) {
  return static_cast<std::uint8_t*>(image->GetImageBuffer());
}

/// The bytes of an image without padding in between: planes times height times pitch.
inline std::vector<std::uint8_t> AllBytes(const IQvImage* image, std::size_t planes = 1) {
  return {Bytes(image), Bytes(image) + planes * image->GetImagePlanePitch()};
}

/// A byte pattern in which neighbours and lines differ.
inline std::uint8_t PatternByte(std::size_t i) {
  return static_cast<std::uint8_t>(i * 7 + i / 251 + 1);
}

inline void FillPattern(std::uint8_t* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) bytes[i] = PatternByte(i);
}

/// The text of the exception of type T that `action` throws.
template <class T, class Action>
std::string MessageOf(Action action) {
  try {
    action();
  } catch (const T& e) {
    return e.GetDescription();
  } catch (const GenICam::GenericException& e) {
    return std::string("another type: ") + e.what();
  }
  return "nothing thrown";
}

/// An image in memory that the test arranges by itself.
class ForeignImage : public IQvImageInside {
 public:
  ForeignImage(void* bytes, std::size_t width, std::size_t height, std::size_t linePitch,
               PixelFormat format)
      : m_bytes(bytes),
        m_width(width),
        m_height(height),
        m_linePitch(linePitch),
        m_format(format) {}

  std::size_t GetImageWidth() const override { return m_width; }
  std::size_t GetImageHeight() const override { return m_height; }
  std::size_t GetImageLinePitch() const override { return m_linePitch; }
  std::size_t GetImagePlanePitch() const override { return m_linePitch * m_height; }
  PixelFormat GetImagePixelFormat() const override { return m_format; }
  void* GetImageBuffer() const override { return m_bytes; }
  void* GetUserContext() const override { return nullptr; }
  IQvImage* GetROIImage(std::size_t, std::size_t, std::size_t, std::size_t) override {
    return nullptr;
  }
  const CQvPixelComponent& GetIQvPixelComponentValue(std::size_t x, std::size_t y) override {
    m_component.SetPixelComponent(this, x, y);
    return m_component;
  }

 private:
  void* m_bytes;
  std::size_t m_width;
  std::size_t m_height;
  std::size_t m_linePitch;
  PixelFormat m_format;
  CQvPixelComponent m_component;
};

}  // namespace QvApi::Testing
