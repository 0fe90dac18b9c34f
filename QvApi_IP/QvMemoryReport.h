// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>

#include <new>
#include <stdexcept>

namespace QvApi {

/// Runs `work()` and reports a lack of memory, or a size that no memory can have, in the words of
/// the system.
/// @throws GenICam::BadAllocException
template <class Work>
auto WithMemoryReport(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  } catch (const std::length_error& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
}

}  // namespace QvApi
