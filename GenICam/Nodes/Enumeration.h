// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IEnumeration.h>

#include <vector>

#include "GenICam/Nodes/FeatureNode.h"

namespace GenApi {

/// `EnumEntry`: one choice. Its value never changes, but it may be unavailable.
class CEnumEntry final : public CValueNode, public IEnumEntry {
 public:
  /// In the map the node is named "EnumEntry_<enumeration>_<symbolic>", since two enumerations may
  /// have entries of one name.
  CEnumEntry(CNodeMap& nodeMap, const std::string& enumeration, const std::string& symbolic);

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumEntry; }
  GenICam::gcstring GetDisplayName() const override;

  // IEnumEntry
  int64_t GetValue() override { return Value(); }
  GenICam::gcstring GetSymbolic() const override { return m_symbolic; }
  double GetNumericValue() override;
  bool IsSelfClearing() override { return m_isSelfClearing == Yes; }

  // IValue: the symbolic name, which cannot be set
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

  int64_t Value() const { return m_value.value_or(0); }
  const std::string& Symbolic() const { return m_symbolic; }

 protected:
  EAccessMode OwnAccessMode(bool) const override { return RO; }

 private:
  std::string m_symbolic;
  std::optional<int64_t> m_value;
  std::optional<double> m_numericValue;
  EYesNo m_isSelfClearing = No;
};

/// `Enumeration`. As a number for other nodes it is the value of the chosen entry.
class CEnumeration final : public TNumberNode<int64_t>, public IEnumeration {
 public:
  using TNumberNode::TNumberNode;

  static const ElementRow* FindElement(std::string_view name);
  void Finish() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumeration; }

  // IEnumeration
  void GetSymbolics(StringList_t& symbolics) override;
  void GetEntries(NodeList_t& entries) override;
  void SetIntValue(int64_t value, bool verify = true) override;
  int64_t GetIntValue(bool verify = false, bool ignoreCache = false) override;
  IEnumEntry* GetEntryByName(const GenICam::gcstring& symbolic) override;
  IEnumEntry* GetEntry(int64_t value) override;
  IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) override;

  // IValue
  GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) override;
  void FromString(const GenICam::gcstring& valueStr, bool verify = true) override;

  std::optional<int64_t> EntryValue(std::string_view symbolic) const override;

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override;
  int64_t ReadNumber(bool ignoreCache) const override;
  void WriteNumber(int64_t value) override;
  Range<int64_t> NumberRange() const override;

 private:
  static void AddEntry(CNode& node, const CElement& element);
  CEnumEntry* FindByName(std::string_view symbolic) const;
  CEnumEntry* FindByValue(int64_t value) const;
  void RequireAvailable(const CEnumEntry& entry) const;

  TFeatureValue<int64_t> m_value;
  std::vector<CEnumEntry*> m_entries;
};

}  // namespace GenApi
