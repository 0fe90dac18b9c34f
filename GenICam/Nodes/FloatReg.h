// SPDX-License-Identifier: MIT
#pragma once

#include "GenICam/Nodes/NumberNode.h"
#include "GenICam/Nodes/RegisterNode.h"

namespace GenApi {

/// `FloatReg`, an IEEE 754 number in a register of 4 or 8 bytes.
class CFloatReg final : public TRegisterNode<CFloatNode> {
 public:
  using TRegisterNode::TRegisterNode;

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;

 protected:
  double ReadNumber(bool ignoreCache) const override;
  void WriteNumber(double value) override;
  Range<double> NumberRange() const override;

 private:
  std::size_t CheckedLength() const;
  bool IsSwapped() const;

  EEndianess m_endianess = LittleEndian;
};

}  // namespace GenApi
