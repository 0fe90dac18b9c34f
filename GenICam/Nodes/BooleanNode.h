// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IBoolean.h>

#include "GenICam/Nodes/FeatureNode.h"

namespace GenApi {

/// `Boolean`. As a number for other nodes it is 1 or 0, whatever OnValue and OffValue are.
class CBoolean final : public TNumberNode<int64_t>, public IBoolean {
 public:
  using TNumberNode::TNumberNode;

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIBoolean; }

  void SetValue(bool value, bool verify = true) override;
  bool GetValue(bool verify = false, bool ignoreCache = false) const override;
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override;
  int64_t ReadNumber(bool ignoreCache) const override;
  void WriteNumber(int64_t value) override;
  Range<int64_t> NumberRange() const override { return {0, 1, std::nullopt}; }

 private:
  static void ReadOwnValue(CNode& node, const CElement& element);

  TFeatureValue<int64_t> m_value;
  std::optional<int64_t> m_onValue;
  std::optional<int64_t> m_offValue;
  bool m_ownIsWord = false;
};

/// The meaning of "1", "0", "true", "false", "yes", "no" in any case, or InvalidArgumentException.
bool ParseBoolean(const CNode& node, const GenICam::gcstring& text);

}  // namespace GenApi
