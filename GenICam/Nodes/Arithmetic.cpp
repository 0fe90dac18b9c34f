// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/Arithmetic.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include "GenICam/Nodes/NumberText.h"

namespace GenApi {
namespace {

using Int = std::int64_t;

constexpr ArithmeticError kDivisionByZero{"division by zero"};
constexpr ArithmeticError kBadShift{"shift by less than 0 or more than 63 bits"};
constexpr ArithmeticError kOutOfDomain{"function outside its domain"};
constexpr ArithmeticError kTooLarge{"number too large for an integer"};

Int ToInteger(double value) {
  const auto integer = TruncateToInteger(value);
  if (!integer) throw kTooLarge;
  return *integer;
}

/// The result of a function that may leave the numbers.
double Defined(double result, double argument) {
  if (std::isnan(result) || (std::isinf(result) && std::isfinite(argument))) throw kOutOfDomain;
  return result;
}

// Integers. The builtins give the wrapped result.
Int Add(Int a, Int b, bool& overflowed) {
  Int result = 0;
  overflowed |= __builtin_add_overflow(a, b, &result);
  return result;
}
Int Subtract(Int a, Int b, bool& overflowed) {
  Int result = 0;
  overflowed |= __builtin_sub_overflow(a, b, &result);
  return result;
}
Int Multiply(Int a, Int b, bool& overflowed) {
  Int result = 0;
  overflowed |= __builtin_mul_overflow(a, b, &result);
  return result;
}
Int Negate(Int a, bool& overflowed) { return Subtract(0, a, overflowed); }
Int Divide(Int a, Int b, bool& overflowed) {
  if (b == 0) throw kDivisionByZero;
  return b == -1 ? Negate(a, overflowed) : a / b;
}
Int Remainder(Int a, Int b, bool&) {
  if (b == 0) throw kDivisionByZero;
  return b == -1 ? 0 : a % b;
}
Int ShiftLeft(Int a, Int b, bool&) {
  if (b < 0 || b > 63) throw kBadShift;
  return static_cast<Int>(static_cast<std::uint64_t>(a) << b);
}
Int ShiftRight(Int a, Int b, bool&) {
  if (b < 0 || b > 63) throw kBadShift;
  return a >> b;
}
Int NegativePower(Int base, Int exponent) {
  if (base == 0) throw kDivisionByZero;
  if (base == 1 || (base == -1 && exponent % 2 == 0)) return 1;
  return base == -1 ? -1 : 0;
}
Int Power(Int base, Int exponent, bool& overflowed) {
  if (exponent < 0) return NegativePower(base, exponent);
  Int result = 1;
  while (exponent != 0) {
    if (exponent % 2 != 0) result = Multiply(result, base, overflowed);
    exponent /= 2;
    if (exponent != 0) base = Multiply(base, base, overflowed);
  }
  return result;
}
/// To a power of ten for a negative number of decimals; halves away from zero.
Int RoundTo(Int a, Int decimals, bool& overflowed) {
  if (decimals >= 0) return a;
  if (decimals < -18) return 0;
  const Int unit = Power(10, -decimals, overflowed);
  const Int rest = a % unit;
  const Int away = rest >= unit - unit / 2 ? 1 : rest <= unit / 2 - unit ? -1 : 0;
  return Multiply(a / unit + away, unit, overflowed);
}

// Floating point.
double Add(double a, double b, bool&) { return a + b; }
double Subtract(double a, double b, bool&) { return a - b; }
double Multiply(double a, double b, bool&) { return a * b; }
double Negate(double a, bool&) { return -a; }
double Divide(double a, double b, bool&) {
  if (b == 0) throw kDivisionByZero;
  return a / b;
}
double Remainder(double a, double b, bool&) {
  if (b == 0) throw kDivisionByZero;
  return Defined(std::fmod(a, b), a);
}
double ShiftLeft(double a, double b, bool& overflowed) {
  return static_cast<double>(ShiftLeft(ToInteger(a), ToInteger(b), overflowed));
}
double ShiftRight(double a, double b, bool& overflowed) {
  return static_cast<double>(ShiftRight(ToInteger(a), ToInteger(b), overflowed));
}
double Power(double a, double b, bool&) {
  if (a == 0 && b < 0) throw kDivisionByZero;
  const double result = std::pow(a, b);
  if (std::isnan(result)) throw kOutOfDomain;
  return result;
}
double RoundTo(double a, double decimals, bool&) {
  constexpr double kMaxExponent = 300;
  if (!(std::fabs(decimals) <= kMaxExponent)) return decimals > 0 ? a : 0.0;
  const double unit = std::pow(10.0, std::fabs(std::trunc(decimals)));
  if (decimals < 0) return std::round(a / unit) * unit;
  const double scaled = a * unit;
  return std::isfinite(scaled) ? std::round(scaled) / unit : a;
}

// Both, by way of one of the two.
template <Int (*Operation)(Int, Int)>
Int OnBits(Int a, Int b, bool&) {
  return Operation(a, b);
}
template <Int (*Operation)(Int, Int)>
double OnBits(double a, double b, bool&) {
  return static_cast<double>(Operation(ToInteger(a), ToInteger(b)));
}
constexpr Int And(Int a, Int b) { return a & b; }
constexpr Int Or(Int a, Int b) { return a | b; }
constexpr Int Xor(Int a, Int b) { return a ^ b; }

Int Complement(Int a, bool&) { return ~a; }
double Complement(double a, bool&) { return static_cast<double>(~ToInteger(a)); }

template <typename T>
T Same(T a, bool&) {
  return a;
}
template <typename T>
T Absolute(T a, bool& overflowed) {
  return a < 0 ? Negate(a, overflowed) : a;
}
template <typename T>
T Sign(T a, bool&) {
  return static_cast<T>((a > 0) - (a < 0));
}
template <typename T, double (*Function)(double)>
T Real(T a, bool&) {
  const auto argument = static_cast<double>(a);
  const double result = Defined(Function(argument), argument);
  if constexpr (std::is_same_v<T, Int>)
    return ToInteger(result);
  else
    return result;
}
/// Functions that leave an integer as it is.
template <typename T, double (*Function)(double)>
T Whole(T a, bool&) {
  if constexpr (std::is_same_v<T, Int>)
    return a;
  else
    return Function(a);
}

template <typename T>
T Equal(T a, T b, bool&) {
  return static_cast<T>(a == b);
}
template <typename T>
T Unequal(T a, T b, bool&) {
  return static_cast<T>(a != b);
}
template <typename T>
T Less(T a, T b, bool&) {
  return static_cast<T>(a < b);
}
template <typename T>
T LessOrEqual(T a, T b, bool&) {
  return static_cast<T>(a <= b);
}
template <typename T>
T Greater(T a, T b, bool&) {
  return static_cast<T>(a > b);
}
template <typename T>
T GreaterOrEqual(T a, T b, bool&) {
  return static_cast<T>(a >= b);
}

template <typename T>
constexpr std::array kUnaryOperators = {
    UnaryOperatorRow<T>{"-", Negate},
    UnaryOperatorRow<T>{"+", Same<T>},
    UnaryOperatorRow<T>{"~", Complement},
};

template <typename T>
constexpr std::array kBinaryOperators = {
    OperatorRow<T>{"||", 1, nullptr, EJunction::Or},
    OperatorRow<T>{"&&", 2, nullptr, EJunction::And},
    OperatorRow<T>{"|", 3, OnBits<Or>},
    OperatorRow<T>{"^", 4, OnBits<Xor>},
    OperatorRow<T>{"&", 5, OnBits<And>},
    OperatorRow<T>{"=", 6, Equal<T>},
    OperatorRow<T>{"<>", 6, Unequal<T>},
    OperatorRow<T>{"<<", 8, ShiftLeft},
    OperatorRow<T>{">>", 8, ShiftRight},
    OperatorRow<T>{"<=", 7, LessOrEqual<T>},
    OperatorRow<T>{">=", 7, GreaterOrEqual<T>},
    OperatorRow<T>{"<", 7, Less<T>},
    OperatorRow<T>{">", 7, Greater<T>},
    OperatorRow<T>{"+", 9, Add},
    OperatorRow<T>{"-", 9, Subtract},
    OperatorRow<T>{"**", 13, Power, EJunction::None, true},
    OperatorRow<T>{"*", 10, Multiply},
    OperatorRow<T>{"/", 10, Divide},
    OperatorRow<T>{"%", 10, Remainder},
};

constexpr bool HasNoTokenBehindItsBeginning() {
  for (std::size_t i = 0; i < kBinaryOperators<Int>.size(); ++i)
    for (std::size_t j = i + 1; j < kBinaryOperators<Int>.size(); ++j)
      if (kBinaryOperators<Int>[j].token.starts_with(kBinaryOperators<Int>[i].token)) return false;
  return true;
}
static_assert(HasNoTokenBehindItsBeginning());

template <typename T>
constexpr std::array kFunctions = {
    FunctionRow<T>{"SGN", Sign<T>},
    FunctionRow<T>{"NEG", Negate},
    FunctionRow<T>{"ABS", Absolute<T>},
    FunctionRow<T>{"SQRT", Real<T, std::sqrt>},
    FunctionRow<T>{"TRUNC", Whole<T, std::trunc>},
    FunctionRow<T>{"FLOOR", Whole<T, std::floor>},
    FunctionRow<T>{"CEIL", Whole<T, std::ceil>},
    FunctionRow<T>{"ROUND", Whole<T, std::round>, RoundTo},
    FunctionRow<T>{"ASIN", Real<T, std::asin>},
    FunctionRow<T>{"ACOS", Real<T, std::acos>},
    FunctionRow<T>{"ATAN", Real<T, std::atan>},
    FunctionRow<T>{"SIN", Real<T, std::sin>},
    FunctionRow<T>{"COS", Real<T, std::cos>},
    FunctionRow<T>{"TAN", Real<T, std::tan>},
    FunctionRow<T>{"EXP", Real<T, std::exp>},
    FunctionRow<T>{"LN", Real<T, std::log>},
    FunctionRow<T>{"LG", Real<T, std::log10>},
    FunctionRow<T>{"PI", nullptr, nullptr, true, static_cast<T>(std::numbers::pi)},
    FunctionRow<T>{"E", nullptr, nullptr, true, static_cast<T>(std::numbers::e)},
};

}  // namespace

template <>
std::span<const UnaryOperatorRow<Int>> UnaryOperators() {
  return kUnaryOperators<Int>;
}
template <>
std::span<const UnaryOperatorRow<double>> UnaryOperators() {
  return kUnaryOperators<double>;
}
template <>
std::span<const OperatorRow<Int>> BinaryOperators() {
  return kBinaryOperators<Int>;
}
template <>
std::span<const OperatorRow<double>> BinaryOperators() {
  return kBinaryOperators<double>;
}
template <>
std::span<const FunctionRow<Int>> Functions() {
  return kFunctions<Int>;
}
template <>
std::span<const FunctionRow<double>> Functions() {
  return kFunctions<double>;
}

template <>
std::optional<double> ParseLiteral(std::string_view text) {
  return ParseFloat(text);
}

template <>
std::optional<Int> ParseLiteral(std::string_view text) {
  if (const auto integer = ParseInteger(text)) return integer;
  // From 2^53 on a double may stand for a whole number that the text did not mean.
  constexpr double kExactLimit = 9007199254740992.0;
  const auto value = ParseFloat(text);
  if (!value || std::trunc(*value) != *value || std::fabs(*value) >= kExactLimit)
    return std::nullopt;
  return TruncateToInteger(*value);
}

}  // namespace GenApi
