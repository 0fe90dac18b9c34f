// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "GenICam/Nodes/Element.h"
#include "GenICam/Nodes/Formula.h"
#include "GenICam/Nodes/Node.h"

namespace GenApi {

/// What the formulas of one node may use: variables, which are values, limits or entries of other
/// nodes, constants, expressions, and the input of a converter.
class CFormulaInputs {
 public:
  static constexpr std::string_view kNoInput{};

  void AddVariable(const CElement& element);
  void AddConstant(const CElement& element);
  void AddExpression(const CElement& element);

  /// For when all nodes are complete. `input` is the name of a converter's input.
  template <typename T>
  CFormula<T> Compile(const CNode& owner, std::string_view text, std::string_view input);
  template <typename T>
  T Evaluate(const CFormula<T>& formula, T input, bool* overflowed = nullptr) const;
  /// RO if all variables can be read, or else NA.
  EAccessMode AccessMode() const;

 private:
  enum class EProperty : std::uint8_t { Input, Value, Min, Max, Inc, Entry };

  struct Variable {
    std::string name;
    const CNode* node;
    EProperty property;
    int64_t entryValue = 0;
  };

  template <typename T>
  class CValues;

  void RequireFreeName(const CElement& element) const;
  int FindVariable(std::string_view name);
  template <typename T>
  T ReadVariable(const Variable& variable, T input) const;

  /// The input first.
  std::vector<Variable> m_variables{{"", nullptr, EProperty::Input}};
  FormulaNames m_names;
};

}  // namespace GenApi
