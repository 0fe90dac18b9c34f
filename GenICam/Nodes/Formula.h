// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "GenICam/Nodes/FormulaParser.h"

namespace GenApi {

/// Where a formula gets its variables from, each by its index and only when it is needed, so that
/// the branch not taken of a ?: costs nothing and cannot fail.
template <typename T>
class IFormulaVariables {
 public:
  virtual T Value(std::size_t index) const = 0;

 protected:
  ~IFormulaVariables() = default;
};

/// A formula of the GenApi standard, parsed once into a program for a stack machine.
///
/// T is int64_t or double. Integers wrap on overflow, divide towards zero, and shift arithmetically
/// to the right. Doubles follow IEEE 754; operators on bits take the operands cut to integers.
/// What has no result (a division by zero, a shift by less than 0 or more than 63 bits, a function
/// outside its domain) throws RuntimeException; a text that is no formula throws PropertyException
/// at construction. Both name the owner.
///
/// From loose to tight: ?:, ||, &&, |, ^, &, = <>, < > <= >=, << >>, + -, * / %, unary + - ~, **
/// (from right to left, so that -2 ** 2 is -4). Comparisons, && and || give 1 or 0.
template <typename T>
class CFormula {
 public:
  CFormula(std::string owner, std::string_view text, const FormulaNames& names);

  /// If `overflowed` is given, it is set when integers have wrapped on the way. Reads no state but
  /// the variables; any thread may call it.
  T Evaluate(const IFormulaVariables<T>& variables, bool* overflowed = nullptr) const;

 private:
  void CheckCircles() const;

  std::string m_owner;
  /// The formula itself, and behind it the expressions.
  std::vector<FormulaProgram<T>> m_programs;
};

extern template class CFormula<std::int64_t>;
extern template class CFormula<double>;

}  // namespace GenApi
