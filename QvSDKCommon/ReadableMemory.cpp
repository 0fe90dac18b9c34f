// SPDX-License-Identifier: MIT
#include "QvSDKCommon/ReadableMemory.h"

#include <cstdint>

#include "QvSDKCommon/ImageCopy.h"
#include "QvSDKCommon/PixelFormatAccess.h"
#include "QvSDKCommon/QvImageBuffer.h"
#include "QvSDKCommon/QvROIImage.h"

namespace QvApi {
namespace {

std::uintptr_t AddressOf(const IQvImage& image) {
  return reinterpret_cast<std::uintptr_t>(image.GetImageBuffer());
}

}  // namespace

std::size_t GetReadableSize(const IQvImage& image) {
  if (dynamic_cast<const CQvImageBuffer*>(&image))
    return image.GetImagePlanePitch() *
           RequirePixelFormatInfo(image.GetImagePixelFormat()).GetPlaneCount();
  if (const auto* view = dynamic_cast<const CQvROIImage*>(&image)) {
    const IQvImage& parent = view->GetParent();
    const std::uintptr_t end = AddressOf(parent) + GetReadableSize(parent);
    // A view of planar 4:2:0 lies elsewhere, in a copy.
    if (AddressOf(image) >= AddressOf(parent) && AddressOf(image) < end)
      return end - AddressOf(image);
  }
  return GetImageMemory(image).size;
}

}  // namespace QvApi
