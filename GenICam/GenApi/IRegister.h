// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

/// Raw bytes on a port, in the port's order.
class QVGENICAM_API IRegister : virtual public IValue {
 public:
  /// Writes the whole register. Throws OutOfRangeException if `length` is not GetLength.
  virtual void Set(const uint8_t* buffer, int64_t length, bool verify = true) = 0;
  /// Reads the whole register. Throws OutOfRangeException if `length` is not GetLength.
  virtual void Get(uint8_t* buffer, int64_t length, bool verify = false,
                   bool ignoreCache = false) = 0;
  /// In bytes.
  virtual int64_t GetLength() = 0;
  virtual int64_t GetAddress() = 0;
};

}  // namespace GenApi
