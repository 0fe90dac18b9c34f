// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IBase.h>

namespace GenApi {

/// A space of registers. Devices implement it; a node map reads and writes through it, always
/// under the lock of the map.
class QVGENICAM_API IPort : virtual public IBase {
 public:
  /// Reads `length` bytes from `address` into the buffer. Failures are exceptions.
  virtual void Read(void* buffer, int64_t address, int64_t length) = 0;
  /// Writes `length` bytes from the buffer to `address`. Failures are exceptions.
  virtual void Write(const void* buffer, int64_t address, int64_t length) = 0;
};

}  // namespace GenApi
