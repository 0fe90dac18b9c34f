// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/Enumeration.h"

#include <Base/GCException.h>

#include <algorithm>

#include "GenICam/Nodes/NumberText.h"

namespace GenApi {

CEnumEntry::CEnumEntry(CNodeMap& nodeMap, const std::string& enumeration,
                       const std::string& symbolic)
    : CValueNode(nodeMap, "EnumEntry_" + enumeration + "_" + symbolic), m_symbolic(symbolic) {}

const ElementRow* CEnumEntry::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Value", &TakeNumber<&CEnumEntry::m_value>},
      ElementRow{"NumericValue", &TakeNumber<&CEnumEntry::m_numericValue>},
      ElementRow{"Symbolic", &TakeText<&CEnumEntry::m_symbolic>},
      ElementRow{"IsSelfClearing", &TakeChoice<&CEnumEntry::m_isSelfClearing, kYesNo>},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CNode::FindElement(name);
}

void CEnumEntry::Finish() { RequireElement(*this, m_value.has_value(), "Value"); }

GenICam::gcstring CEnumEntry::GetDisplayName() const {
  const auto name = CNode::GetDisplayName();
  return name == GetName() ? GenICam::gcstring(m_symbolic) : name;
}

double CEnumEntry::GetNumericValue() {
  return m_numericValue.value_or(static_cast<double>(Value()));
}

GenICam::gcstring CEnumEntry::ToString(bool, bool) { return m_symbolic; }

void CEnumEntry::FromString(const GenICam::gcstring&, bool) {
  throw ACCESS_EXCEPTION("Node '%s' is not writable: it is an entry of an enumeration", NameText());
}

const ElementRow* CEnumeration::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Value", &TakeNumber<&CEnumeration::m_value>},
      ElementRow{"pValue", &TakeNode<&CEnumeration::m_value, ELink::Value>},
      ElementRow{"EnumEntry", &AddEntry, EOccurs::Often},
  };
  if (const ElementRow* row = FindRow(kElements, name)) return row;
  return CNode::FindElement(name);
}

void CEnumeration::AddEntry(CNode& node, const CElement& element) {
  auto* entry = static_cast<CEnumEntry*>(element.Child());
  static_cast<CEnumeration&>(node).m_entries.push_back(entry);
  node.AddLink(ELink::Member, *entry);
}

void CEnumeration::Finish() {
  RequireElement(*this, m_value.IsSet(), "Value");
  RequireElement(*this, !m_entries.empty(), "EnumEntry");
}

CEnumEntry* CEnumeration::FindByName(std::string_view symbolic) const {
  const auto it = std::ranges::find_if(
      m_entries, [&](const CEnumEntry* entry) { return entry->Symbolic() == symbolic; });
  return it == m_entries.end() ? nullptr : *it;
}

CEnumEntry* CEnumeration::FindByValue(int64_t value) const {
  const auto it = std::ranges::find_if(
      m_entries, [&](const CEnumEntry* entry) { return entry->Value() == value; });
  return it == m_entries.end() ? nullptr : *it;
}

std::optional<int64_t> CEnumeration::EntryValue(std::string_view symbolic) const {
  const CEnumEntry* entry = FindByName(symbolic);
  return entry == nullptr ? std::nullopt : std::optional(entry->Value());
}

void CEnumeration::RequireAvailable(const CEnumEntry& entry) const {
  if (!IsAvailable(entry.AccessMode()))
    throw ACCESS_EXCEPTION("Node '%s': its entry '%s' is not available", NameText(),
                           entry.Symbolic().c_str());
}

EAccessMode CEnumeration::OwnAccessMode(bool honourLock) const {
  return m_value.AccessMode(honourLock);
}

int64_t CEnumeration::ReadNumber(bool ignoreCache) const {
  const int64_t value = m_value.ReadValue(ignoreCache);
  if (ignoreCache) return value;
  CEnumEntry* entry = FindByValue(value);
  // The device may have moved on.
  return entry != nullptr && entry->IsSelfClearing() ? m_value.ReadValue(true) : value;
}

void CEnumeration::WriteNumber(int64_t value) {
  const CEnumEntry* entry = FindByValue(value);
  if (entry == nullptr)
    throw INVALID_ARGUMENT_EXCEPTION("Node '%s' has no entry with the value %lld", NameText(),
                                     static_cast<long long>(value));
  RequireAvailable(*entry);
  m_value.WriteValue(*this, value);
}

Range<int64_t> CEnumeration::NumberRange() const {
  const auto [least, greatest] = std::ranges::minmax_element(m_entries, {}, &CEnumEntry::Value);
  return {(*least)->Value(), (*greatest)->Value(), std::nullopt};
}

void CEnumeration::GetSymbolics(StringList_t& symbolics) {
  AutoLock lock(Lock());
  symbolics.clear();
  for (const CEnumEntry* entry : m_entries)
    if (IsImplemented(entry->AccessMode())) symbolics.push_back(entry->Symbolic());
}

void CEnumeration::GetEntries(NodeList_t& entries) {
  entries.assign(m_entries.begin(), m_entries.end());
}

void CEnumeration::SetIntValue(int64_t value, bool) {
  AutoLock lock(Lock());
  RequireWritable();
  Write(value);
}

int64_t CEnumeration::GetIntValue(bool, bool ignoreCache) {
  AutoLock lock(Lock());
  return ReadChecked<int64_t>(ignoreCache);
}

IEnumEntry* CEnumeration::GetEntryByName(const GenICam::gcstring& symbolic) {
  return FindByName(symbolic.str());
}

IEnumEntry* CEnumeration::GetEntry(int64_t value) { return FindByValue(value); }

IEnumEntry* CEnumeration::GetCurrentEntry(bool verify, bool ignoreCache) {
  return FindByValue(GetIntValue(verify, ignoreCache));
}

GenICam::gcstring CEnumeration::ToString(bool verify, bool ignoreCache) {
  const int64_t value = GetIntValue(verify, ignoreCache);
  const CEnumEntry* entry = FindByValue(value);
  if (entry == nullptr)
    throw RUNTIME_EXCEPTION("Node '%s': its value %lld is that of no entry", NameText(),
                            static_cast<long long>(value));
  return entry->Symbolic();
}

void CEnumeration::FromString(const GenICam::gcstring& valueStr, bool) {
  AutoLock lock(Lock());
  RequireWritable();
  const CEnumEntry* entry = FindByName(Trimmed(valueStr.str()));
  if (entry == nullptr)
    throw INVALID_ARGUMENT_EXCEPTION("Node '%s' has no entry '%.200s'", NameText(),
                                     valueStr.c_str());
  RequireAvailable(*entry);
  Write(entry->Value());
}

}  // namespace GenApi
