// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/ICommand.h>

#include "GenICam/Nodes/FeatureNode.h"

namespace GenApi {

/// `Command`. As text it is "1" when done; "1" or "yes" executes it, "0" or "no" does nothing.
class CCommand final : public TNumberNode<int64_t>, public ICommand {
 public:
  using TNumberNode::TNumberNode;

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfICommand; }

  void Execute(bool verify = true) override;
  bool IsDone(bool verify = true) override;
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override;
  int64_t ReadNumber(bool ignoreCache) const override;
  void WriteNumber(int64_t value) override;

 private:
  TFeatureValue<int64_t> m_value;
  CNumberSource<int64_t> m_commandValue;
};

}  // namespace GenApi
