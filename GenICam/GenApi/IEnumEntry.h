// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

/// One choice of an enumeration.
class QVGENICAM_API IEnumEntry : virtual public IValue {
 public:
  virtual int64_t GetValue() = 0;
  virtual GenICam::gcstring GetSymbolic() const = 0;
  /// NumericValue of the document, or else the integer value.
  virtual double GetNumericValue() = 0;
  /// Whether the device leaves this choice by itself, so that the value is never taken from a
  /// cache while it stands.
  virtual bool IsSelfClearing() = 0;
};

}  // namespace GenApi
