// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/BooleanNode.h"

#include <Base/GCException.h>

#include <algorithm>

#include "GenICam/Nodes/NumberText.h"

namespace GenApi {

const ElementRow* CBoolean::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Value", &ReadOwnValue},
      ElementRow{"pValue", &TakeNode<&CBoolean::m_value, ELink::Value>},
      ElementRow{"OnValue", &TakeNumber<&CBoolean::m_onValue>},
      // A switch looks the same whatever is said here.
      ElementRow{"Representation", &Ignore},
      ElementRow{"OffValue", &TakeNumber<&CBoolean::m_offValue>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CNode::FindElement(name);
}

void CBoolean::ReadOwnValue(CNode& node, const CElement& element) {
  auto& value = static_cast<CBoolean&>(node).m_value;
  if (value.IsSet()) element.Fail("stands beside another one for the same purpose");
  const bool isWord = element.Text() == "true" || element.Text() == "false";
  value = TFeatureValue<int64_t>(isWord ? int64_t{element.Text() == "true"}
                                        : element.Number<int64_t>());
  static_cast<CBoolean&>(node).m_ownIsWord = isWord;
}

void CBoolean::Finish() {
  RequireElement(*this, m_value.IsSet(), "Value");
  // The words stand for the two values, wherever in the document those come.
  if (m_ownIsWord)
    m_value = TFeatureValue<int64_t>(m_value.Constant() != 0 ? m_onValue.value_or(1)
                                                             : m_offValue.value_or(0));
}

EAccessMode CBoolean::OwnAccessMode(bool honourLock) const {
  return m_value.AccessMode(honourLock);
}

int64_t CBoolean::ReadNumber(bool ignoreCache) const {
  const int64_t value = m_value.ReadValue(ignoreCache);
  if (value == m_onValue.value_or(1)) return 1;
  if (value == m_offValue.value_or(0)) return 0;
  throw RUNTIME_EXCEPTION("Node '%s': %lld is neither its value for on nor that for off",
                          NameText(), static_cast<long long>(value));
}

void CBoolean::WriteNumber(int64_t value) {
  m_value.WriteValue(*this, value != 0 ? m_onValue.value_or(1) : m_offValue.value_or(0));
}

void CBoolean::SetValue(bool value, bool) {
  AutoLock lock(Lock());
  RequireWritable();
  Write<int64_t>(value ? 1 : 0);
}

bool CBoolean::GetValue(bool, bool ignoreCache) const {
  AutoLock lock(Lock());
  return ReadChecked<int64_t>(ignoreCache) != 0;
}

GenICam::gcstring CBoolean::ToString(bool verify, bool ignoreCache) {
  return GetValue(verify, ignoreCache) ? "1" : "0";
}

void CBoolean::FromString(const GenICam::gcstring& valueStr, bool verify) {
  SetValue(ParseBoolean(*this, valueStr), verify);
}

bool ParseBoolean(const CNode& node, const GenICam::gcstring& text) {
  static constexpr ChoiceTable<bool, 6> kWords = {
      {{"1", true}, {"0", false}, {"true", true}, {"false", false}, {"yes", true}, {"no", false}}};
  std::string word(Trimmed(text.str()));
  std::ranges::transform(word, word.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  for (const auto& [known, value] : kWords)
    if (known == word) return value;
  throw INVALID_ARGUMENT_EXCEPTION("Node '%s': '%.200s' is neither yes nor no", node.NameText(),
                                   text.c_str());
}

}  // namespace GenApi
