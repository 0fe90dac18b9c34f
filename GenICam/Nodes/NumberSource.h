// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace GenApi {

class CNode;

/// A number in a document: a constant (`Min`) or the value of another node (`pMin`).
template <typename T>
class CNumberSource {
 public:
  using NumberType = T;

  CNumberSource() = default;
  explicit CNumberSource(T constant) : m_constant(constant) {}
  explicit CNumberSource(CNode& node) : m_node(&node) {}

  bool IsSet() const { return m_node != nullptr || m_constant.has_value(); }
  /// Null for a constant.
  CNode* Node() const { return m_node; }
  /// The source must be set. The node's access is tested.
  T Read() const;
  /// The constant of a source that is no node.
  T Constant() const { return m_constant.value_or(T{}); }

 private:
  std::optional<T> m_constant;
  CNode* m_node = nullptr;
};

extern template class CNumberSource<std::int64_t>;
extern template class CNumberSource<double>;

}  // namespace GenApi
