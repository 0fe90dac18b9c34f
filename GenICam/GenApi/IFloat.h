// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

/// A floating-point number with limits.
class QVGENICAM_API IFloat : virtual public IValue {
 public:
  /// Throws OutOfRangeException if `verify` is set and the value lies outside [GetMin, GetMax]; a
  /// NaN counts as below the minimum.
  virtual void SetValue(double value, bool verify = true) = 0;
  virtual double GetValue(bool verify = false, bool ignoreCache = false) = 0;
  virtual double GetMin() = 0;
  virtual double GetMax() = 0;
  virtual bool HasInc() = 0;
  /// Throws RuntimeException if the node has no increment. Increments of floats are a hint for
  /// user interfaces; a write does not test them.
  virtual double GetInc() = 0;
  virtual ERepresentation GetRepresentation() = 0;
  virtual GenICam::gcstring GetUnit() const = 0;
  virtual EDisplayNotation GetDisplayNotation() const = 0;
  /// Number of digits of ToString, 6 unless the document says otherwise. Where it gives neither
  /// notation nor precision, ToString gives as many as reading the text back exactly takes.
  virtual int64_t GetDisplayPrecision() const = 0;

  IFloat& operator=(double value) {
    SetValue(value);
    return *this;
  }
  double operator()() { return GetValue(); }
  double operator*() { return GetValue(); }
};

}  // namespace GenApi
