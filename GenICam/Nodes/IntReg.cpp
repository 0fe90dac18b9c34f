// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/IntReg.h"

#include <limits>

namespace GenApi {
namespace {

constexpr std::size_t kMaxBytes = 8;

uint64_t MaskOf(int count) { return count == 64 ? ~uint64_t{0} : (uint64_t{1} << count) - 1; }

int64_t SignExtended(uint64_t value, int count) {
  const uint64_t sign = uint64_t{1} << (count - 1);
  return static_cast<int64_t>((value ^ sign) - sign);
}

}  // namespace

const ElementRow* CIntReg::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Sign", &TakeChoice<&CIntReg::m_sign, kSigns>},
      ElementRow{"Endianess", &TakeChoice<&CIntReg::m_endianess, kEndianesses>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return TRegisterNode::FindElement(name);
}

void CIntReg::Finish() {
  TRegisterNode::Finish();
  if (const auto length = m_access.ConstantLength(); length && *length > int64_t{kMaxBytes})
    throw PROPERTY_EXCEPTION("Node '%s': Length %lld is not possible for an integer", NameText(),
                             static_cast<long long>(*length));
}

std::size_t CIntReg::CheckedLength() const {
  const auto length = static_cast<std::size_t>(m_access.Length());
  if (length > kMaxBytes)
    throw RUNTIME_EXCEPTION("Node '%s': a length of %zu is not possible for an integer", NameText(),
                            length);
  return length;
}

BitField CIntReg::Field(std::size_t length) const { return {0, static_cast<int>(length) * 8}; }

uint64_t CIntReg::Decode(std::span<const uint8_t> bytes) const {
  uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::size_t place = m_endianess == LittleEndian ? i : bytes.size() - 1 - i;
    value |= uint64_t{bytes[i]} << (8 * place);
  }
  return value;
}

int64_t CIntReg::ReadNumber(bool ignoreCache) const {
  CheckedLength();
  const auto bytes = m_access.Read(ignoreCache);
  const auto [lowest, count] = Field(bytes.size());
  const uint64_t value = (Decode(bytes) >> lowest) & MaskOf(count);
  return m_sign == Signed ? SignExtended(value, count) : static_cast<int64_t>(value);
}

void CIntReg::WriteNumber(int64_t value) {
  const std::size_t length = CheckedLength();
  const auto [lowest, count] = Field(length);
  // The bits that a full-width unsigned register takes may have the highest set.
  if (const auto range = NumberRange(); count < 64 && (value < range.min || value > range.max))
    throw OUT_OF_RANGE_EXCEPTION("Value = %lld does not fit into the register of node '%s'",
                                 static_cast<long long>(value), NameText());
  uint64_t bits = (static_cast<uint64_t>(value) & MaskOf(count)) << lowest;
  // Other bits may belong to other nodes, so what stands there is fetched and kept.
  if (count < static_cast<int>(length) * 8 && IsReadable(m_access.AccessMode(false)))
    bits |= Decode(m_access.Read(true)) & ~(MaskOf(count) << lowest);
  std::array<uint8_t, kMaxBytes> bytes{};
  for (std::size_t i = 0; i < length; ++i) {
    const std::size_t place = m_endianess == LittleEndian ? i : length - 1 - i;
    bytes[i] = static_cast<uint8_t>(bits >> (8 * place));
  }
  m_access.Write(std::span(bytes).first(length));
}

Range<int64_t> CIntReg::NumberRange() const {
  const int count = Field(CheckedLength()).count;
  if (m_sign == Signed) {
    const auto max = static_cast<int64_t>(MaskOf(count) >> 1);
    return {-max - 1, max, std::nullopt};
  }
  const int64_t max =
      count == 64 ? std::numeric_limits<int64_t>::max() : static_cast<int64_t>(MaskOf(count));
  return {0, max, std::nullopt};
}

const ElementRow* CMaskedIntReg::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Bit", &TakeNumber<&CMaskedIntReg::m_bit>},
      ElementRow{"LSB", &TakeNumber<&CMaskedIntReg::m_lsb>},
      ElementRow{"MSB", &TakeNumber<&CMaskedIntReg::m_msb>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CIntReg::FindElement(name);
}

void CMaskedIntReg::Finish() {
  CIntReg::Finish();
  if (m_bit && (m_lsb || m_msb))
    throw PROPERTY_EXCEPTION("Node '%s': element 'Bit' stands beside LSB or MSB", NameText());
  if (m_bit) m_lsb = m_msb = m_bit;
  RequireElement(*this, m_lsb.has_value(), "LSB");
  RequireElement(*this, m_msb.has_value(), "MSB");
  if (const auto length = m_access.ConstantLength()) Field(static_cast<std::size_t>(*length));
}

BitField CMaskedIntReg::Field(std::size_t length) const {
  const auto size = static_cast<int64_t>(length) * 8;
  const auto isInside = [size](int64_t bit) { return bit >= 0 && bit < size; };
  if (!isInside(*m_lsb) || !isInside(*m_msb))
    throw PROPERTY_EXCEPTION("Node '%s': its bits lie outside the register", NameText());
  const bool isLittle = Endianess() == LittleEndian;
  const int64_t lowest = isLittle ? *m_lsb : size - 1 - *m_lsb;
  const int64_t highest = isLittle ? *m_msb : size - 1 - *m_msb;
  if (lowest > highest)
    throw PROPERTY_EXCEPTION("Node '%s': its LSB lies above its MSB", NameText());
  return {static_cast<int>(lowest), static_cast<int>(highest - lowest + 1)};
}

}  // namespace GenApi
