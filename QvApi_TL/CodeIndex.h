// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace QvApi {

/// Finds the row of a constant table by a 32-bit code in logarithmic time. Made at compile time.
template <std::size_t Count>
class CodeIndex {
 public:
  /// @param table   the rows, in any order
  /// @param codeOf  gives the code of a row
  template <class Row, class CodeOf>
  constexpr CodeIndex(const std::array<Row, Count>& table, CodeOf codeOf) {
    for (std::size_t i = 0; i < Count; ++i)
      m_entries[i] = {static_cast<std::uint32_t>(codeOf(table[i])), i};
    std::sort(m_entries.begin(), m_entries.end());
  }

  /// Index of the row with this code, or Count if there is none.
  constexpr std::size_t Find(std::uint32_t code) const {
    const auto found = std::lower_bound(m_entries.begin(), m_entries.end(),
                                        std::pair<std::uint32_t, std::size_t>{code, 0});
    return found != m_entries.end() && found->first == code ? found->second : Count;
  }

  /// No code stands twice.
  constexpr bool IsUnique() const {
    return std::adjacent_find(m_entries.begin(), m_entries.end(), [](auto& a, auto& b) {
             return a.first == b.first;
           }) == m_entries.end();
  }

 private:
  std::array<std::pair<std::uint32_t, std::size_t>, Count> m_entries{};
};

}  // namespace QvApi
