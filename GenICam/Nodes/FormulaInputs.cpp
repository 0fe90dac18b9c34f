// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/FormulaInputs.h"

#include <Base/GCException.h>

#include <algorithm>
#include <array>
#include <utility>

namespace GenApi {
namespace {

constexpr std::string_view kEntryPrefix = "Entry.";

}  // namespace

template <typename T>
class CFormulaInputs::CValues final : public IFormulaVariables<T> {
 public:
  CValues(const CFormulaInputs& inputs, T input) : m_inputs(inputs), m_input(input) {}
  T Value(std::size_t index) const override {
    return m_inputs.ReadVariable(m_inputs.m_variables[index], m_input);
  }

 private:
  const CFormulaInputs& m_inputs;
  T m_input;
};

void CFormulaInputs::RequireFreeName(const CElement& element) const {
  const std::string& name = element.NameAttribute();
  if (name.empty()) element.Fail("has no Name");
  const auto isTaken = [&](const auto& known) { return known.name == name; };
  if (std::ranges::any_of(m_variables, isTaken) ||
      std::ranges::any_of(m_names.constants, isTaken) ||
      std::ranges::any_of(m_names.expressions, isTaken))
    element.Fail("has a Name that is taken");
}

void CFormulaInputs::AddVariable(const CElement& element) {
  RequireFreeName(element);
  const std::string& name = element.NameAttribute();
  // Only a value can be read in a circle; limits may well depend on each other's values.
  const bool isValue = name.find('.') == std::string::npos || name.ends_with(".Value");
  CNode& target = element.NumericTarget();
  element.Owner().AddLink(isValue ? ELink::Input : ELink::Limit, target);
  m_variables.push_back({name, &target, EProperty::Value});
}

void CFormulaInputs::AddConstant(const CElement& element) {
  RequireFreeName(element);
  element.Number<double>();
  m_names.constants.push_back({element.NameAttribute(), element.Text()});
}

void CFormulaInputs::AddExpression(const CElement& element) {
  RequireFreeName(element);
  m_names.expressions.push_back({element.NameAttribute(), element.Text()});
}

/// A name with a suffix may be declared so, or used so while the name alone is declared.
int CFormulaInputs::FindVariable(std::string_view name) {
  static constexpr std::array<std::pair<std::string_view, EProperty>, 4> kSuffixes = {
      {{"Value", EProperty::Value},
       {"Min", EProperty::Min},
       {"Max", EProperty::Max},
       {"Inc", EProperty::Inc}}};
  const std::size_t dot = name.find('.');
  const std::string_view base = name.substr(0, dot);
  const auto isNamed = [](std::string_view wanted) {
    return [wanted](const Variable& variable) { return variable.name == wanted; };
  };
  auto it = std::ranges::find_if(m_variables, isNamed(name));
  if (it == m_variables.end()) it = std::ranges::find_if(m_variables, isNamed(base));
  if (it == m_variables.end()) return -1;
  if (dot == std::string_view::npos) return static_cast<int>(it - m_variables.begin());

  const CNode* node = it->node;
  const std::string_view suffix = name.substr(dot + 1);
  Variable variable{"", node, EProperty::Value};
  if (suffix.starts_with(kEntryPrefix) && node != nullptr) {
    const auto value = node->EntryValue(suffix.substr(kEntryPrefix.size()));
    if (!value) return -1;
    variable.property = EProperty::Entry;
    variable.entryValue = *value;
  } else {
    const auto known =
        std::ranges::find(kSuffixes, suffix, &std::pair<std::string_view, EProperty>::first);
    if (known == kSuffixes.end() || node == nullptr) return -1;
    variable.property = known->second;
  }
  m_variables.push_back(std::move(variable));
  return static_cast<int>(m_variables.size()) - 1;
}

template <typename T>
T CFormulaInputs::ReadVariable(const Variable& variable, T input) const {
  switch (variable.property) {
    case EProperty::Input:
      return input;
    case EProperty::Min:
      return variable.node->GetRange<T>().min;
    case EProperty::Max:
      return variable.node->GetRange<T>().max;
    case EProperty::Inc:
      return variable.node->GetRange<T>().inc.value_or(T{1});
    case EProperty::Entry:
      return static_cast<T>(variable.entryValue);
    default:
      return variable.node->Read<T>();
  }
}

template <typename T>
CFormula<T> CFormulaInputs::Compile(const CNode& owner, std::string_view text,
                                    std::string_view input) {
  m_variables.front().name = input;
  m_names.findVariable = [&](std::string_view name) { return FindVariable(name); };
  CFormula<T> formula(owner.Name(), text, m_names);
  m_names.findVariable = nullptr;
  return formula;
}

template <typename T>
T CFormulaInputs::Evaluate(const CFormula<T>& formula, T input, bool* overflowed) const {
  return formula.Evaluate(CValues<T>(*this, input), overflowed);
}

EAccessMode CFormulaInputs::AccessMode() const {
  const bool isReadable = std::ranges::all_of(m_variables, [](const Variable& variable) {
    return variable.property != EProperty::Value || IsReadable(variable.node->AccessMode(false));
  });
  return isReadable ? RO : NA;
}

template CFormula<int64_t> CFormulaInputs::Compile(const CNode&, std::string_view,
                                                   std::string_view);
template CFormula<double> CFormulaInputs::Compile(const CNode&, std::string_view, std::string_view);
template int64_t CFormulaInputs::Evaluate(const CFormula<int64_t>&, int64_t, bool*) const;
template double CFormulaInputs::Evaluate(const CFormula<double>&, double, bool*) const;

}  // namespace GenApi
