// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

/// A 64-bit signed integer with limits and an increment.
class QVGENICAM_API IInteger : virtual public IValue {
 public:
  /// Throws OutOfRangeException if `verify` is set and the value lies outside [GetMin, GetMax] or
  /// off the increment counted from GetMin; a register refuses what does not fit in any case.
  virtual void SetValue(int64_t value, bool verify = true) = 0;
  virtual int64_t GetValue(bool verify = false, bool ignoreCache = false) = 0;
  virtual int64_t GetMin() = 0;
  virtual int64_t GetMax() = 0;
  /// At least 1.
  virtual int64_t GetInc() = 0;
  virtual ERepresentation GetRepresentation() = 0;
  virtual GenICam::gcstring GetUnit() = 0;

  IInteger& operator=(int64_t value) {
    SetValue(value);
    return *this;
  }
  int64_t operator()() { return GetValue(); }
  int64_t operator*() { return GetValue(); }
};

}  // namespace GenApi
