// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/ICategory.h>

#include "GenICam/Nodes/Node.h"

namespace GenApi {

class CElement;

/// `Category`: a group of features. Its value as text is its name.
class CCategory final : public CValueNode, public ICategory {
 public:
  using CValueNode::CValueNode;

  static const ElementRow* FindElement(std::string_view name);
  EInterfaceType GetPrincipalInterfaceType() const override { return intfICategory; }
  void GetFeatures(FeatureList_t& features) const override;
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

 protected:
  EAccessMode OwnAccessMode(bool) const override { return RO; }

 private:
  static void ReadFeature(CNode& node, const CElement& element);
};

}  // namespace GenApi
