// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>

#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// A copy of an image that a filter calibrates itself by. Its lines have the format's default
/// pitch. Immutable.
class CalibrationImage {
 public:
  /// @throws GenICam::RuntimeException  "There is no available image."
  explicit CalibrationImage(IQvImage& image) : m_buffer(CreateIQvImageBuffer(nullptr)) {
    m_buffer->CopyImage(&image);
    m_image = m_buffer->GetIQvImage();
  }

  const IQvImage& Image() const { return *m_image; }

  /// The image has the same size, format and line pitch, and so pixel lies upon pixel. A view, or
  /// an image with padding of its own, does not.
  bool Agrees(const IQvImage& image) const {
    return image.GetImageWidth() == m_image->GetImageWidth() &&
           image.GetImageLinePitch() == m_image->GetImageLinePitch() &&
           image.GetImageHeight() == m_image->GetImageHeight() &&
           image.GetImagePixelFormat() == m_image->GetImagePixelFormat();
  }

 private:
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> m_buffer;
  IQvImage* m_image;
};

/// Holds the calibration of a filter, counted as in TableCache: the holder has one reference and
/// each user one more, so that an image in progress is not disturbed by a new calibration. Safe
/// from any thread.
///
/// @tparam Calibration  a CalibrationImage, or what derives from it
template <class Calibration>
class CalibrationHolder {
 public:
  using Reference = std::shared_ptr<const Calibration>;

  /// The calibration, or null.
  Reference Lock() const {
    std::lock_guard lock(m_mutex);
    return m_calibration;
  }

  /// Drops the calibration and holds what `make()` gives instead; nothing if it throws.
  /// @throws GenICam::BadAllocException
  template <class Make>
  void Renew(Make&& make) {
    std::lock_guard lock(m_mutex);
    m_calibration.reset();
    try {
      m_calibration = std::forward<Make>(make)();
    } catch (const std::bad_alloc& error) {
      throw BAD_ALLOC_EXCEPTION("%s", error.what());
    }
  }

  /// Drops the calibration if `change()` is true, which it returns. No calibration is made
  /// meanwhile.
  template <class Change>
  bool DropIf(Change&& change) {
    std::lock_guard lock(m_mutex);
    if (!std::forward<Change>(change)()) return false;
    m_calibration.reset();
    return true;
  }

 private:
  mutable std::mutex m_mutex;
  Reference m_calibration;
};

}  // namespace QvApi
