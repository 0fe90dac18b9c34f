// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/DocumentReader.h"

#include <Base/GCException.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <iterator>
#include <new>
#include <pugixml.hpp>
#include <unordered_map>
#include <vector>

#include "GenICam/Nodes/Element.h"
#include "GenICam/Nodes/Enumeration.h"
#include "GenICam/Nodes/NodeKinds.h"
#include "GenICam/Nodes/NodeMap.h"
#include "GenICam/Nodes/NumberText.h"

namespace GenApi {
namespace {

constexpr std::string_view kTextsForUsers[] = {"ToolTip", "Description"};

/// The elements inside another one, without comments.
std::vector<pugi::xml_node> ElementsOf(pugi::xml_node parent) {
  std::vector<pugi::xml_node> elements;
  for (const pugi::xml_node child : parent.children())
    if (child.type() == pugi::node_element) elements.push_back(child);
  return elements;
}

/// A comment or a CDATA section cuts a text into pieces.
std::string TextOf(pugi::xml_node element) {
  std::string text;
  for (const pugi::xml_node child : element.children())
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
      text += child.value();
  return std::string(Trimmed(text));
}

std::uint16_t VersionPart(pugi::xml_node root, const char* attribute) {
  const std::string_view text = root.attribute(attribute).value();
  std::uint16_t value = 0;
  const char* end = text.data() + text.size();
  if (!text.empty() && std::from_chars(text.data(), end, value).ptr != end)
    throw PROPERTY_EXCEPTION("Document: attribute '%s' is no version number", attribute);
  return value;
}

DeviceInfo ReadInfo(pugi::xml_node root) {
  return {
      .modelName = root.attribute("ModelName").value(),
      .vendorName = root.attribute("VendorName").value(),
      .toolTip = root.attribute("ToolTip").value(),
      .standardNameSpace = root.attribute("StandardNameSpace").value(),
      .productGuid = root.attribute("ProductGuid").value(),
      .versionGuid = root.attribute("VersionGuid").value(),
      .schemaVersion = {VersionPart(root, "SchemaMajorVersion"),
                        VersionPart(root, "SchemaMinorVersion"),
                        VersionPart(root, "SchemaSubMinorVersion")},
      .deviceVersion = {VersionPart(root, "MajorVersion"), VersionPart(root, "MinorVersion"),
                        VersionPart(root, "SubMinorVersion")},
  };
}

/// The elements of all nodes. Groups only sort a document for its reader; they may lie in each
/// other to any depth.
std::vector<pugi::xml_node> NodesOf(pugi::xml_node root) {
  std::vector<pugi::xml_node> nodes;
  std::vector<pugi::xml_node> waiting = ElementsOf(root);
  std::ranges::reverse(waiting);
  while (!waiting.empty()) {
    const pugi::xml_node element = waiting.back();
    waiting.pop_back();
    if (std::strcmp(element.name(), "Group") != 0) {
      nodes.push_back(element);
      continue;
    }
    auto members = ElementsOf(element);
    waiting.insert(waiting.end(), members.rbegin(), members.rend());
  }
  return nodes;
}

/// Calls `function` with the name of each node that an element refers to: the standard has a "p" in
/// front of the names of all such elements.
template <typename Function>
void ForEachReference(pugi::xml_node element, Function function) {
  std::vector<pugi::xml_node> waiting = ElementsOf(element);
  while (!waiting.empty()) {
    const pugi::xml_node child = waiting.back();
    waiting.pop_back();
    if (child.name()[0] == 'p') function(TextOf(child));
    auto inner = ElementsOf(child);
    waiting.insert(waiting.end(), inner.begin(), inner.end());
  }
}

/// Of the elements those of a node and of all that it needs, in the same order.
std::vector<pugi::xml_node> SubtreeOf(const std::vector<pugi::xml_node>& nodes,
                                      const std::string& rootName) {
  std::unordered_map<std::string, pugi::xml_node> unused;
  for (const pugi::xml_node node : nodes) unused.emplace(node.attribute("Name").value(), node);
  if (!unused.contains(rootName))
    throw PROPERTY_EXCEPTION("Document: there is no node '%s'", rootName.c_str());
  std::vector<pugi::xml_node> waiting;
  const auto use = [&](const std::string& name) {
    if (auto found = unused.extract(name)) waiting.push_back(found.mapped());
  };
  use(rootName);
  while (!waiting.empty()) {
    const pugi::xml_node node = waiting.back();
    waiting.pop_back();
    ForEachReference(node, use);
  }
  std::vector<pugi::xml_node> used;
  std::ranges::copy_if(nodes, std::back_inserter(used), [&](pugi::xml_node node) {
    return !unused.contains(node.attribute("Name").value());
  });
  return used;
}

/// One document on its way into a map.
class CBuilder {
 public:
  CBuilder(CNodeMap& nodeMap, bool suppressStrings)
      : m_nodeMap(nodeMap), m_suppressStrings(suppressStrings) {}

  void Build(const std::vector<pugi::xml_node>& nodes) {
    for (const pugi::xml_node element : nodes) MakeNode(element);
    for (const Made& made : m_made) ReadElements(made);
    m_nodeMap.Finish();
  }

 private:
  struct Made {
    CNode* node;
    pugi::xml_node element;
    const ElementRow* (*findElement)(std::string_view);
  };

  void MakeNode(pugi::xml_node element) {
    const std::string name = element.attribute("Name").value();
    const NodeKind* kind = FindNodeKind(element.name());
    if (kind == nullptr)
      throw PROPERTY_EXCEPTION("Node '%s': there is no kind of node '%.100s'", name.c_str(),
                               element.name());
    if (name.empty()) throw PROPERTY_EXCEPTION("Node '': a %s without a name", element.name());
    CNode& node = m_nodeMap.Add(kind->make(m_nodeMap, name));
    ReadNameSpace(node, element);
    m_made.push_back({&node, element, kind->findElement});
    MakeNested(node, element);
  }

  /// Entries of enumerations and the formulas of addresses are nodes of their own.
  void MakeNested(const CNode& owner, pugi::xml_node parent) {
    const bool isEnumeration = std::strcmp(parent.name(), "Enumeration") == 0;
    int formulaCount = 0;
    for (const pugi::xml_node element : ElementsOf(parent)) {
      const std::string name = element.attribute("Name").value();
      if (isEnumeration && std::strcmp(element.name(), "EnumEntry") == 0) {
        if (name.empty())
          throw PROPERTY_EXCEPTION("Node '%s': an entry without a name", owner.NameText());
        CNode& entry = m_nodeMap.Add(std::make_unique<CEnumEntry>(m_nodeMap, owner.Name(), name));
        ReadNameSpace(entry, element);
        AddNested(entry, element, &CEnumEntry::FindElement);
      } else if (std::strcmp(element.name(), "IntSwissKnife") == 0) {
        const NodeKind& kind = *FindNodeKind(element.name());
        const std::string ownName =
            name.empty() ? owner.Name() + "_Address" + std::to_string(formulaCount++) : name;
        AddNested(m_nodeMap.Add(kind.make(m_nodeMap, ownName)), element, kind.findElement);
      }
    }
  }

  void AddNested(CNode& node, pugi::xml_node element,
                 const ElementRow* (*findElement)(std::string_view)) {
    m_nested.emplace(element.internal_object(), &node);
    m_made.push_back({&node, element, findElement});
  }

  static void ReadNameSpace(CNode& node, pugi::xml_node element) {
    const pugi::xml_attribute attribute = element.attribute("NameSpace");
    if (!attribute) return;
    ReadElement(node, *CNode::FindElement("NameSpace"),
                CElement(node, "NameSpace", attribute.value(), "", nullptr));
  }

  static void ReadElement(CNode& node, const ElementRow& row, const CElement& element) {
    row.read(node, element);
  }

  void ReadElements(const Made& made) {
    std::vector<const ElementRow*> seen;
    for (const pugi::xml_node child : ElementsOf(made.element)) {
      const auto nested = m_nested.find(child.internal_object());
      const CElement element(*made.node, child.name(), TextOf(child),
                             child.attribute("Name").value(),
                             nested == m_nested.end() ? nullptr : nested->second);
      const ElementRow* row = made.findElement(child.name());
      if (row == nullptr) element.Fail("is not known for this kind of node");
      if (row->occurs == EOccurs::Once && std::ranges::find(seen, row) != seen.end())
        element.Fail("stands there twice");
      seen.push_back(row);
      if (m_suppressStrings &&
          std::ranges::find(kTextsForUsers, row->name) != std::end(kTextsForUsers))
        continue;
      ReadElement(*made.node, *row, element);
    }
  }

  CNodeMap& m_nodeMap;
  bool m_suppressStrings;
  std::vector<Made> m_made;
  /// By the element that a nested node was made from.
  std::unordered_map<const void*, CNode*> m_nested;
};

void ReadDocument(CNodeMap& nodeMap, bool suppressStrings, std::string_view document,
                  const std::string& rootName) {
  // A text that comes as a C string may bring its end along.
  while (document.ends_with('\0')) document.remove_suffix(1);
  pugi::xml_document xml;
  const auto result = xml.load_buffer(document.data(), document.size());
  if (!result)
    throw RUNTIME_EXCEPTION("The document is no XML: %s (at byte %lld)", result.description(),
                            static_cast<long long>(result.offset));
  const pugi::xml_node root = xml.document_element();
  if (std::strcmp(root.name(), "RegisterDescription") != 0)
    throw PROPERTY_EXCEPTION("The document is no RegisterDescription but '%.100s'", root.name());
  nodeMap.SetInfo(ReadInfo(root));
  const std::vector<pugi::xml_node> nodes = NodesOf(root);
  CBuilder(nodeMap, suppressStrings).Build(rootName.empty() ? nodes : SubtreeOf(nodes, rootName));
}

}  // namespace

void CDocumentReader::Read(const std::string& document, const std::string& rootName) {
  try {
    ReadDocument(m_nodeMap, m_suppressStrings, document, rootName);
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
}

}  // namespace GenApi
