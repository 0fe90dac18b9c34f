// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/RawRegister.h"

#include <charconv>

#include "GenICam/Nodes/NumberText.h"

namespace GenApi {

GenICam::gcstring CRawRegister::ToString(bool, bool ignoreCache) {
  AutoLock lock(Lock());
  RequireReadable();
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "0x";
  for (const uint8_t byte : m_access.Read(ignoreCache)) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

void CRawRegister::FromString(const GenICam::gcstring& valueStr, bool verify) {
  std::string_view digits = Trimmed(valueStr.str());
  if (digits.starts_with("0x") || digits.starts_with("0X")) digits.remove_prefix(2);
  std::vector<uint8_t> bytes((digits.size() + 1) / 2);
  bool isSound = digits.size() % 2 == 0;
  for (std::size_t i = 0; isSound && i < bytes.size(); ++i) {
    const char* first = digits.data() + 2 * i;
    isSound = std::from_chars(first, first + 2, bytes[i], 16).ptr == first + 2;
  }
  if (!isSound)
    throw INVALID_ARGUMENT_EXCEPTION("Node '%s': '%.200s' is no row of hexadecimal bytes",
                                     NameText(), valueStr.c_str());
  Set(bytes.data(), std::ssize(bytes), verify);
}

}  // namespace GenApi
