// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/Container.h>
#include <GenApi/IValue.h>

namespace GenApi {

/// A group of features for users to browse.
class QVGENICAM_API ICategory : virtual public IValue {
 public:
  /// The features of the group in the order of the document, further categories among them.
  virtual void GetFeatures(FeatureList_t& features) const = 0;
};

}  // namespace GenApi
