// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IString.h>

#include <string>

#include "GenICam/Nodes/Node.h"
#include "GenICam/Nodes/RegisterNode.h"

namespace GenApi {

/// A node with the interface IString. Others use the operations without lock and tests.
class CTextNode : public CValueNode, public IString {
 public:
  using CValueNode::CValueNode;

  EInterfaceType GetPrincipalInterfaceType() const override { return intfIString; }

  // IString
  void SetValue(const GenICam::gcstring& value, bool verify = true) override;
  GenICam::gcstring GetValue(bool verify = false, bool ignoreCache = false) override;
  int64_t GetMaxLength() override;

  // IValue
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

  virtual std::string DoReadText(bool ignoreCache) const = 0;
  virtual void DoWriteText(const std::string& value) = 0;
  virtual int64_t DoMaxLength() const = 0;
};

/// `String`: a text of its own, or that of another node.
class CString final : public CTextNode {
 public:
  using CTextNode::CTextNode;

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;

  std::string DoReadText(bool ignoreCache) const override;
  void DoWriteText(const std::string& value) override;
  int64_t DoMaxLength() const override;

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override;

 private:
  static void ReadOwnValue(CNode& node, const CElement& element);
  static void ReadValueNode(CNode& node, const CElement& element);

  std::optional<std::string> m_value;
  CTextNode* m_source = nullptr;
};

/// `StringReg`: a text in a register, closed by a zero where it is shorter.
class CStringReg final : public TRegisterNode<CTextNode> {
 public:
  using TRegisterNode::TRegisterNode;

  std::string DoReadText(bool ignoreCache) const override;
  void DoWriteText(const std::string& value) override;
  int64_t DoMaxLength() const override;
};

}  // namespace GenApi
