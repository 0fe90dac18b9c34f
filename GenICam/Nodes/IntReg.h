// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "GenICam/Nodes/NumberNode.h"
#include "GenICam/Nodes/RegisterNode.h"

namespace GenApi {

/// Bits of a register that hold a number, counted from the lowest.
struct BitField {
  int lowest;
  int count;  ///< 1 to 64
};

/// `IntReg`, a register of 1 to 8 bytes that holds one integer.
class CIntReg : public TRegisterNode<CIntegerNode> {
 public:
  using TRegisterNode::TRegisterNode;

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;

 protected:
  int64_t ReadNumber(bool ignoreCache) const override;
  void WriteNumber(int64_t value) override;
  Range<int64_t> NumberRange() const override;
  /// The bits that hold the number in a register of that many bytes.
  virtual BitField Field(std::size_t length) const;
  EEndianess Endianess() const { return m_endianess; }

 private:
  std::size_t CheckedLength() const;
  uint64_t Decode(std::span<const uint8_t> bytes) const;

  ESign m_sign = Unsigned;
  EEndianess m_endianess = LittleEndian;
};

/// `MaskedIntReg`: some neighbouring bits of a register. As the standard has it, bit 0 is the
/// lowest of a little-endian register and the highest of a big-endian one.
class CMaskedIntReg final : public CIntReg {
 public:
  using CIntReg::CIntReg;

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;

 protected:
  BitField Field(std::size_t length) const override;

 private:
  std::optional<int64_t> m_bit;
  std::optional<int64_t> m_lsb;
  std::optional<int64_t> m_msb;
};

}  // namespace GenApi
