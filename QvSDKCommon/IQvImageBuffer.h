// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvSDKCommon/IQvAllocator.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvReleasable.h"
#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// What CreateBuffer() does with the memory.
enum _EQvMemoryInitialization_t {
  QvMemoryInitialization_None = 0,       ///< Leaves it as it is.
  QvMemoryInitialization_Zero = 1,       ///< Fills it with 0x00.
  QvMemoryInitialization_One = 2,        ///< Fills it with 0xFF.
  QvMemoryInitialization_TestChart = 3,  ///< Draws a test chart, or fills with 0x00 where the
                                         ///< format has none.
};

/// Owner of the memory of one image. Used by one thread at a time.
class QVAPI_EXPORT IQvImageBuffer {
 public:
  virtual ~IQvImageBuffer() = default;

  /// SetSize() with the format's default alignment, then initialises the memory.
  virtual void CreateBuffer(std::size_t width, std::size_t height,
                            EQvPixelFormatNamingConvention_t format,
                            _EQvMemoryInitialization_t init) = 0;
  /// The image of this buffer, owned by the buffer.
  /// @throws GenICam::RuntimeException  "There is no available image."
  virtual IQvImage* GetIQvImage() = 0;
  /// Takes over size, format and pixels of `source`, which must be an IQvImageInside.
  virtual void CopyImage(IQvImage* source) = 0;
  /// Resizes without initialising. Lines begin at multiples of `lineAlignment` bytes (any number;
  /// 0 takes the format's default). Memory grows only: a smaller image keeps the larger block and
  /// its address. Views of the image end when the memory is replaced.
  /// @throws GenICam::OutOfRangeException  width or height is 0
  /// @throws GenICam::BadAllocException    the memory could not be had; the buffer is empty then
  virtual void SetSize(std::size_t width, std::size_t height,
                       EQvPixelFormatNamingConvention_t format, std::size_t lineAlignment) = 0;
  /// Memory is present.
  virtual bool HasImageBuffer() const = 0;
};

/// A buffer that its receiver ends by Release().
class QVAPI_EXPORT IQvImageBufferReleasable : public IQvImageBuffer, public IQvReleasable {};

/// A buffer that the modules can trust as a destination; they accept no other.
class QVAPI_EXPORT IQvImageBufferInside : public IQvImageBufferReleasable {};

/// Makes an empty image buffer. It takes its memory from `allocator`, which must outlive it, or
/// from the heap if that is null. Implemented by libQvApi_TL.
/// @throws GenICam::BadAllocException  no memory for the object
QVAPI_EXPORT IQvImageBufferReleasable* CreateIQvImageBuffer(IQvAllocator* allocator);

}  // namespace QvApi
