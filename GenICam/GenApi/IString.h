// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

/// A text.
class QVGENICAM_API IString : virtual public IValue {
 public:
  /// Throws OutOfRangeException if the text is longer than GetMaxLength.
  virtual void SetValue(const GenICam::gcstring& value, bool verify = true) = 0;
  virtual GenICam::gcstring GetValue(bool verify = false, bool ignoreCache = false) = 0;
  /// In bytes.
  virtual int64_t GetMaxLength() = 0;

  IString& operator=(const GenICam::gcstring& value) {
    SetValue(value);
    return *this;
  }
  GenICam::gcstring operator()() { return GetValue(); }
  GenICam::gcstring operator*() { return GetValue(); }
};

}  // namespace GenApi
