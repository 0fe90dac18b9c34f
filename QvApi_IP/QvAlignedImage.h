// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvTemporaryBuffers.h"
#include "QvSDKCommon/ImageCopy.h"

namespace QvApi {

/// An image as kernels need it, with each 16-bit sample at an even address: the image itself, or if
/// its lines begin at odd addresses a copy in a temporary buffer of the module. Any line pitch is
/// allowed, but an odd one is too rare for every kernel to know of it.
template <class Module>
class AlignedImage {
 public:
  AlignedImage(Module& module, IQvImage& image) : m_image(image) {
    if (HasAlignedSamples(image)) return;
    m_copy = std::make_unique<TemporaryBuffer<Module>>(module);
    (*m_copy)->SetSize(image.GetImageWidth(), image.GetImageHeight(), image.GetImagePixelFormat(),
                       0);
    CopyImagePixels(image, Get(), false);
  }

  IQvImage& Get() const { return m_copy ? *(*m_copy)->GetIQvImage() : m_image; }
  /// The buffer of the copy, or null if there is none.
  IQvImageBuffer* CopyBuffer() const { return m_copy ? m_copy->Get() : nullptr; }
  /// Takes what has been written to the copy over into the image.
  void Store() const {
    if (m_copy) CopyImagePixels(Get(), m_image, false);
  }

 private:
  IQvImage& m_image;
  std::unique_ptr<TemporaryBuffer<Module>> m_copy;
};

}  // namespace QvApi
