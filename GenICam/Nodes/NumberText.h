// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace GenApi {

/// The text without blanks, tabs and line ends at both ends.
std::string_view Trimmed(std::string_view text);

/// A whole text as a number: decimal with an optional sign, or hexadecimal with 0x of at most 64
/// bits, of which the highest is the sign. Nothing for anything else.
std::optional<std::int64_t> ParseInteger(std::string_view text);

/// A whole text as a finite or infinite number, hexadecimal integers included. Nothing for
/// anything else, not a number among it.
std::optional<double> ParseFloat(std::string_view text);

/// The shortest text that reads back as the same number, or `precision` significant digits.
std::string FloatText(double value);
std::string FloatText(double value, int precision, char notation);

/// The nearest integer, halves away from zero. Nothing if it has no 64 bits or is not a number.
std::optional<std::int64_t> RoundToInteger(double value);
/// The same, cut towards zero.
std::optional<std::int64_t> TruncateToInteger(double value);

}  // namespace GenApi
