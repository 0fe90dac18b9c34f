// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace GenApi {

class CNode;
class CNodeMap;
struct ElementRow;

/// One kind of node that documents may hold.
struct NodeKind {
  std::string_view element;
  std::unique_ptr<CNode> (*make)(CNodeMap& nodeMap, std::string name);
  const ElementRow* (*findElement)(std::string_view name);
};

/// The kind of an element's name, or null.
const NodeKind* FindNodeKind(std::string_view element);

}  // namespace GenApi
