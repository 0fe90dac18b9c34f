// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// What operators and functions of formulas compute, for int64_t and for double.
namespace GenApi {

/// A computation without a result. Holds a constant text such as "division by zero".
struct ArithmeticError {
  const char* problem;
};

/// `overflowed` is set, never cleared, when an integer has wrapped.
template <typename T>
using UnaryFunction = T (*)(T operand, bool& overflowed);
template <typename T>
using BinaryFunction = T (*)(T first, T second, bool& overflowed);

/// && and || leave out their second operand where the first decides.
enum class EJunction : std::uint8_t { None, And, Or };

template <typename T>
struct UnaryOperatorRow {
  std::string_view token;
  UnaryFunction<T> function;
};

template <typename T>
struct OperatorRow {
  std::string_view token;
  int precedence;  ///< higher binds tighter; the unary operators have kUnaryPrecedence
  BinaryFunction<T> function;
  EJunction junction = EJunction::None;
  bool isRightToLeft = false;
};

/// A function by its number of arguments: none (a constant), one, or two.
template <typename T>
struct FunctionRow {
  std::string_view name;
  UnaryFunction<T> unary = nullptr;
  BinaryFunction<T> binary = nullptr;
  bool isConstant = false;
  T constant{};
};

inline constexpr int kUnaryPrecedence = 12;

/// The tables. A token stands before every other one that is its beginning.
template <typename T>
std::span<const UnaryOperatorRow<T>> UnaryOperators();
template <typename T>
std::span<const OperatorRow<T>> BinaryOperators();
template <typename T>
std::span<const FunctionRow<T>> Functions();

/// A number in a formula. For integers a text with point or exponent must be a whole number.
template <typename T>
std::optional<T> ParseLiteral(std::string_view text);

}  // namespace GenApi
