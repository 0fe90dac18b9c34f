// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <system_error>

namespace GenApi {
namespace {

/// std::from_chars over the whole text.
template <typename T, typename... Format>
std::optional<T> ParseWhole(std::string_view text, Format... format) {
  T value{};
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value, format...);
  if (error != std::errc() || rest != end) return std::nullopt;
  return value;
}

bool IsHexadecimal(std::string_view text) {
  return text.starts_with("0x") || text.starts_with("0X");
}

/// from_chars knows no leading plus, and would take a minus behind it.
std::string_view WithoutPlus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
  return text;
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
  if (!IsHexadecimal(text)) return ParseWhole<std::int64_t>(WithoutPlus(text));
  const auto bits = ParseWhole<std::uint64_t>(text.substr(2), 16);
  if (!bits) return std::nullopt;
  return static_cast<std::int64_t>(*bits);
}

std::optional<double> ParseFloat(std::string_view text) {
  if (IsHexadecimal(text)) {
    const auto bits = ParseWhole<std::uint64_t>(text.substr(2), 16);
    if (!bits) return std::nullopt;
    return static_cast<double>(*bits);
  }
  const auto value = ParseWhole<double>(WithoutPlus(text));
  if (!value || std::isnan(*value)) return std::nullopt;
  return value;
}

std::string FloatText(double value) {
  std::array<char, 64> text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
  return std::string(text.data(), result.ptr);
}

std::string FloatText(double value, int precision, char notation) {
  const char* format = notation == 'f' ? "%.*f" : notation == 'e' ? "%.*e" : "%.*g";
  std::array<char, 512> text{};
  std::snprintf(text.data(), text.size(), format, precision, value);
  return text.data();
}

std::optional<std::int64_t> TruncateToInteger(double value) {
  // 2^63 itself is the first double that does not fit; both comparisons fail for a NaN.
  constexpr double kLimit = 9223372036854775808.0;
  if (!(value >= -kLimit && value < kLimit)) return std::nullopt;
  return static_cast<std::int64_t>(value);
}

std::optional<std::int64_t> RoundToInteger(double value) {
  return TruncateToInteger(std::round(value));
}

}  // namespace GenApi
