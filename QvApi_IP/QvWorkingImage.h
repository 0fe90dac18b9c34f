// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/IQvImageBuffer.h"
#include "QvSDKCommon/ImageCopy.h"

namespace QvApi {

/// Brings images into the formats that a measurement works in. Keeps the memory of the last one,
/// so it is for one image at a time.
class CQvWorkingImage {
 public:
  /// The image in this format, with each 16-bit sample at an even address: `image` itself, or else
  /// a copy, which the next call replaces.
  /// @throws GenICam::RuntimeException   "There is no available image.", or it cannot be converted
  /// @throws GenICam::BadAllocException  no memory
  IQvImage& Make(IQvImage& image, PixelFormat format) {
    const ImageLines lines(image);  // has pixels
    if (image.GetImagePixelFormat() != format) {
      m_converter.SetDestinationPixelFormat(format);
      m_converter.Convert(&image, m_buffer.Get());
      return *m_buffer->GetIQvImage();
    }
    if (HasAlignedSamples(image)) return image;
    m_buffer->SetSize(lines.Width(), lines.Height(), format, 0);
    CopyImagePixels(image, *m_buffer->GetIQvImage(), false);
    return *m_buffer->GetIQvImage();
  }

 private:
  CQvPixelFormatConverter m_converter;
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> m_buffer{CreateIQvImageBuffer(nullptr)};
};

}  // namespace QvApi
