// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace GenApi {

class CNodeMap;

/// Fills an empty node map from the text of a document. First all nodes are made, so that an
/// element can name a node wherever in the document that stands, then their elements are read by
/// the tables of their classes, then the map is finished.
class CDocumentReader {
 public:
  CDocumentReader(CNodeMap& nodeMap, bool suppressStrings)
      : m_nodeMap(nodeMap), m_suppressStrings(suppressStrings) {}

  /// Takes all nodes, or if there is a name only that node and those that it needs.
  /// RuntimeException if the text is no XML, PropertyException with the name of the node if the
  /// document is wrong, BadAllocException. The map is of no use then.
  void Read(const std::string& document, const std::string& rootName = {});

 private:
  CNodeMap& m_nodeMap;
  bool m_suppressStrings;
};

}  // namespace GenApi
