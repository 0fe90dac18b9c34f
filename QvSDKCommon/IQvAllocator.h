// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// Gives image buffers their memory: implement it to have images in memory of your own.
///
/// An allocator must outlive every buffer that uses it, up to OnDeregister(). A buffer calls it
/// from the thread that uses the buffer.
class QVAPI_EXPORT IQvAllocator {
 public:
  virtual ~IQvAllocator() = default;
  /// Stores `size` bytes of memory in `*buffer` (null if there is none) and any value in
  /// `*context`, which IQvImage::GetUserContext() answers.
  virtual void Allocate(void** buffer, std::size_t size, void** context) = 0;
  /// Takes back exactly what Allocate() gave, with the same size and context.
  virtual void Deallocate(void* buffer, std::size_t size, void* context) = 0;
  /// The buffer that used this allocator is being destroyed: its last call.
  virtual void OnDeregister() = 0;
};

}  // namespace QvApi
