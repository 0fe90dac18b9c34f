// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/TextNode.h"

#include <limits>

#include "GenICam/Nodes/NodeMap.h"

namespace GenApi {

void CTextNode::SetValue(const GenICam::gcstring& value, bool) {
  AutoLock lock(Lock());
  RequireWritable();
  if (const int64_t max = DoMaxLength(); static_cast<int64_t>(value.size()) > max)
    throw OUT_OF_RANGE_EXCEPTION(
        "Length = %zu must be equal or smaller than Max = %lld (Node '%s')", value.size(),
        static_cast<long long>(max), NameText());
  DoWriteText(value.str());
}

GenICam::gcstring CTextNode::GetValue(bool, bool ignoreCache) {
  AutoLock lock(Lock());
  RequireReadable();
  return DoReadText(ignoreCache);
}

int64_t CTextNode::GetMaxLength() {
  AutoLock lock(Lock());
  return DoMaxLength();
}

GenICam::gcstring CTextNode::ToString(bool verify, bool ignoreCache) {
  return GetValue(verify, ignoreCache);
}

void CTextNode::FromString(const GenICam::gcstring& valueStr, bool verify) {
  SetValue(valueStr, verify);
}

const ElementRow* CString::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Value", &ReadOwnValue},
      ElementRow{"pValue", &ReadValueNode},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CTextNode::FindElement(name);
}

void CString::ReadOwnValue(CNode& node, const CElement& element) {
  static_cast<CString&>(node).m_value = element.Text();
}

void CString::ReadValueNode(CNode& node, const CElement& element) {
  auto* source = dynamic_cast<CTextNode*>(&element.Target());
  if (source == nullptr) element.Fail("names a node that has no text");
  static_cast<CString&>(node).m_source = source;
  node.AddLink(ELink::Value, *source);
}

void CString::Finish() {
  RequireElement(*this, m_value.has_value() != (m_source != nullptr),
                 "Value (or pValue, not both)");
}

EAccessMode CString::OwnAccessMode(bool honourLock) const {
  return m_source != nullptr ? m_source->AccessMode(honourLock) : RW;
}

std::string CString::DoReadText(bool ignoreCache) const {
  const CWalkGuard guard(*this);
  return m_source != nullptr ? m_source->DoReadText(ignoreCache) : *m_value;
}

void CString::DoWriteText(const std::string& value) {
  const CWalkGuard guard(*this);
  if (m_source != nullptr) return m_source->DoWriteText(value);
  m_value = value;
  InvalidateDependents();
}

int64_t CString::DoMaxLength() const {
  const CWalkGuard guard(*this);
  return m_source != nullptr ? m_source->DoMaxLength() : std::numeric_limits<int64_t>::max();
}

std::string CStringReg::DoReadText(bool ignoreCache) const {
  const auto bytes = m_access.Read(ignoreCache);
  return std::string(bytes.begin(), std::ranges::find(bytes, uint8_t{0}));
}

void CStringReg::DoWriteText(const std::string& value) {
  std::vector<uint8_t> bytes(static_cast<std::size_t>(m_access.Length()), 0);
  std::copy_n(value.begin(), std::min(value.size(), bytes.size()), bytes.begin());
  m_access.Write(bytes);
}

int64_t CStringReg::DoMaxLength() const { return m_access.Length(); }

}  // namespace GenApi
