// SPDX-License-Identifier: MIT
#pragma once

#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// An object that a factory made and that ends by Release().
class QVAPI_EXPORT IQvReleasable {
 public:
  virtual ~IQvReleasable() = default;
  /// Destroys the object. No pointer to it may be used afterwards.
  virtual void Release() = 0;
};

}  // namespace QvApi
