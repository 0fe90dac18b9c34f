// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/FloatReg.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace GenApi {

const ElementRow* CFloatReg::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Endianess", &TakeChoice<&CFloatReg::m_endianess, kEndianesses>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return TRegisterNode::FindElement(name);
}

void CFloatReg::Finish() {
  TRegisterNode::Finish();
  if (const auto length = m_access.ConstantLength();
      length && *length != int64_t{sizeof(float)} && *length != int64_t{sizeof(double)})
    throw PROPERTY_EXCEPTION("Node '%s': Length %lld is not possible for a float", NameText(),
                             static_cast<long long>(*length));
}

std::size_t CFloatReg::CheckedLength() const {
  const auto length = static_cast<std::size_t>(m_access.Length());
  if (length != sizeof(float) && length != sizeof(double))
    throw RUNTIME_EXCEPTION("Node '%s': a length of %zu is not possible for a float", NameText(),
                            length);
  return length;
}

bool CFloatReg::IsSwapped() const {
  return (m_endianess == LittleEndian) != (std::endian::native == std::endian::little);
}

double CFloatReg::ReadNumber(bool ignoreCache) const {
  CheckedLength();
  auto bytes = m_access.Read(ignoreCache);
  if (IsSwapped()) std::ranges::reverse(bytes);
  float single = 0;
  double value = 0;
  if (bytes.size() == sizeof single) {
    std::memcpy(&single, bytes.data(), sizeof single);
    return single;
  }
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

void CFloatReg::WriteNumber(double value) {
  const std::size_t length = CheckedLength();
  std::array<uint8_t, sizeof(double)> bytes{};
  if (length == sizeof(float)) {
    // Beyond the largest float the conversion would not be defined.
    if (std::isfinite(value) && std::fabs(value) > std::numeric_limits<float>::max())
      throw OUT_OF_RANGE_EXCEPTION("Value = %f does not fit into the register of node '%s'", value,
                                   NameText());
    const auto single = static_cast<float>(value);
    std::memcpy(bytes.data(), &single, sizeof single);
  } else {
    std::memcpy(bytes.data(), &value, sizeof value);
  }
  const auto used = std::span(bytes).first(length);
  if (IsSwapped()) std::ranges::reverse(used);
  m_access.Write(used);
}

Range<double> CFloatReg::NumberRange() const {
  if (CheckedLength() == sizeof(double)) return FullRange<double>();
  constexpr double kMax = std::numeric_limits<float>::max();
  return {-kMax, kMax, std::nullopt};
}

}  // namespace GenApi
