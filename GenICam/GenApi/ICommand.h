// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IValue.h>

namespace GenApi {

/// A button: executing it writes the command value.
class QVGENICAM_API ICommand : virtual public IValue {
 public:
  virtual void Execute(bool verify = true) = 0;
  /// True when the register no longer holds the command value; always true if it cannot be read.
  virtual bool IsDone(bool verify = true) = 0;

  void operator()() { Execute(); }
};

}  // namespace GenApi
