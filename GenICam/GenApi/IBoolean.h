// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

/// A switch. Behind it stands an integer with one value for on and one for off.
class QVGENICAM_API IBoolean : virtual public IValue {
 public:
  virtual void SetValue(bool value, bool verify = true) = 0;
  /// Throws RuntimeException if the integer is neither the value for on nor that for off.
  virtual bool GetValue(bool verify = false, bool ignoreCache = false) const = 0;

  IBoolean& operator=(bool value) {
    SetValue(value);
    return *this;
  }
  bool operator()() const { return GetValue(); }
  bool operator*() const { return GetValue(); }
};

}  // namespace GenApi
