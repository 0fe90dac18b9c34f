// SPDX-License-Identifier: MIT
#include <Base/GCException.h>

#include <new>

#include "QvSDKCommon/QvImageBuffer.h"

namespace QvApi {

IQvImageBufferReleasable* CreateIQvImageBuffer(IQvAllocator* allocator) {
  try {
    return new CQvImageBuffer(allocator);
  } catch (const std::bad_alloc& e) {
    throw BAD_ALLOC_EXCEPTION("%s", e.what());
  }
}

}  // namespace QvApi
