// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvImageLines.h"

#include <Base/GCException.h>

#include "QvApi_IP/QvFormatName.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

void ThrowNotSupported(PixelFormat format) {
  throw RUNTIME_EXCEPTION("Not supported pixelformat %s", FormatName(format).c_str());
}

const IQvPixelFormatInfoInside& FormatInfo(PixelFormat format) {
  const auto* info = dynamic_cast<const IQvPixelFormatInfoInside*>(GetIQvPixelFormatInfo(format));
  QV_ASSERT(info);
  return *info;
}

bool HasAlignedSamples(const IQvImage& image) {
  const std::size_t bits = FormatInfo(image.GetImagePixelFormat()).GetEachComponentTotalBitCount();
  const auto address = reinterpret_cast<std::uintptr_t>(image.GetImageBuffer());
  const auto steps = image.GetImageLinePitch() | image.GetImagePlanePitch();
  return bits % 16 != 0 || address == 0 || (address | steps) % (bits / 8) == 0;
}

ImageLines::ImageLines(const IQvImage& image, bool upward)
    : m_format(FormatInfo(image.GetImagePixelFormat())),
      m_width(image.GetImageWidth()),
      m_height(image.GetImageHeight()),
      m_planePitch(image.GetImagePlanePitch()),
      m_first(static_cast<std::uint8_t*>(image.GetImageBuffer())),
      m_pitch(static_cast<std::ptrdiff_t>(image.GetImageLinePitch())) {
  if (!m_first || m_width == 0 || m_height == 0)
    throw RUNTIME_EXCEPTION("There is no available image.");
  if (!upward) return;
  m_first += static_cast<std::ptrdiff_t>(m_height - 1) * m_pitch;
  m_pitch = -m_pitch;
}

}  // namespace QvApi
