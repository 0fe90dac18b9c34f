// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/Container.h>
#include <GenApi/IBase.h>

namespace GenApi {

/// The relation between a selector and the features whose values it switches. Every node offers
/// the interface; IsSelector tells whether it selects something.
class QVGENICAM_API ISelector : virtual public IBase {
 public:
  virtual bool IsSelector() const = 0;
  virtual void GetSelectedFeatures(FeatureList_t& list) const = 0;
  virtual void GetSelectingFeatures(FeatureList_t& list) const = 0;
};

}  // namespace GenApi
