// SPDX-License-Identifier: MIT
#pragma once

#include "GenICam/Nodes/Node.h"
#include "GenICam/Nodes/RegisterNode.h"

namespace GenApi {

/// `Register`: bytes without a meaning. As text they are hexadecimal digits behind 0x.
class CRawRegister final : public TRegisterNode<CValueNode> {
 public:
  using TRegisterNode::TRegisterNode;

  EInterfaceType GetPrincipalInterfaceType() const override { return intfIRegister; }
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;
};

}  // namespace GenApi
