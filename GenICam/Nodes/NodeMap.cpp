// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/NodeMap.h"

#include <Base/GCException.h>

#include "GenICam/Nodes/Port.h"
#include "GenICam/Nodes/RegisterAccess.h"

namespace GenApi {

CNodeMap::CNodeMap(std::string deviceName) : m_deviceName(std::move(deviceName)) {}

CNodeMap::~CNodeMap() = default;

void CNodeMap::GetNodes(NodeList_t& nodes) const {
  nodes.clear();
  for (const auto& node : m_nodes) nodes.push_back(node.get());
}

INode* CNodeMap::GetNode(const GenICam::gcstring& name) const { return FindNode(name.str()); }

CNode* CNodeMap::FindNode(std::string_view name) const {
  const auto it = m_byName.find(name);
  return it == m_byName.end() ? nullptr : it->second;
}

CNode& CNodeMap::Add(std::unique_ptr<CNode> node) {
  CNode& added = *node;
  if (added.Name().empty())
    throw PROPERTY_EXCEPTION("A node without a name (behind node '%s')",
                             m_nodes.empty() ? "" : m_nodes.back()->NameText());
  if (!m_byName.emplace(added.Name(), &added).second)
    throw PROPERTY_EXCEPTION("Node '%s' stands twice in the document", added.NameText());
  m_nodes.push_back(std::move(node));
  return added;
}

void CNodeMap::Finish() {
  for (const auto& node : m_nodes) node->Finish();
  CheckCircles();
}

void CNodeMap::CheckCircles() const {
  // Depth first with a stack of our own: a chain may be as long as the document.
  enum class EState : std::uint8_t { New, Open, Done };
  struct Step {
    const CNode* node;
    std::size_t nextLink;
  };
  std::unordered_map<const CNode*, EState> states;
  std::vector<Step> path;
  for (const auto& root : m_nodes) {
    if (states[root.get()] != EState::New) continue;
    states[root.get()] = EState::Open;
    path.push_back({root.get(), 0});
    while (!path.empty()) {
      Step& step = path.back();
      if (step.nextLink == step.node->Links().size()) {
        states[step.node] = EState::Done;
        path.pop_back();
        continue;
      }
      const CNode::Link& link = step.node->Links()[step.nextLink++];
      if (link.kind != ELink::Value && link.kind != ELink::Input) continue;
      EState& state = states[link.target];
      if (state == EState::Open)
        throw PROPERTY_EXCEPTION("Node '%s' reads its own value in a circle, by way of node '%s'",
                                 link.target->NameText(), step.node->NameText());
      if (state == EState::Done) continue;
      state = EState::Open;
      path.push_back({link.target, 0});
    }
  }
}

void CNodeMap::InvalidateNodes() const {
  AutoLock lock(m_lock);
  for (const auto& node : m_nodes) node->DropCache();
}

bool CNodeMap::Connect(IPort* port, const GenICam::gcstring& portName) const {
  AutoLock lock(m_lock);
  auto* node = dynamic_cast<CPort*>(FindNode(portName.str()));
  if (node == nullptr) return false;
  node->Connect(port);
  InvalidateNodes();
  return true;
}

bool CNodeMap::Connect(IPort* port) const {
  AutoLock lock(m_lock);
  if (Connect(port, "Device")) return true;
  const CNode* only = nullptr;
  for (const auto& node : m_nodes) {
    if (dynamic_cast<const CPort*>(node.get()) == nullptr) continue;
    if (only != nullptr) return false;
    only = node.get();
  }
  return only != nullptr && Connect(port, only->Name());
}

void CNodeMap::Poll(int64_t elapsedMilliseconds) {
  AutoLock lock(m_lock);
  if (elapsedMilliseconds <= 0) return;
  for (const auto& node : m_nodes) {
    if (!node->m_pollingTime) continue;
    // Compared by difference: a sum of times could overflow.
    if (elapsedMilliseconds < *node->m_pollingTime - node->m_sinceLastPoll) {
      node->m_sinceLastPoll += elapsedMilliseconds;
      continue;
    }
    node->m_sinceLastPoll = 0;
    node->InvalidateNode();
  }
}

namespace {

constexpr int kMaxWalkDepth = 100;
constexpr int kMaxWalkSteps = 100'000;

}  // namespace

CWalkGuard::CWalkGuard(const CNode& node) : m_nodeMap(node.Map()) {
  if (m_nodeMap.m_walkDepth == 0) m_nodeMap.m_walkSteps = 0;
  if (m_nodeMap.m_walkDepth == kMaxWalkDepth || m_nodeMap.m_walkSteps == kMaxWalkSteps)
    throw RUNTIME_EXCEPTION("Node '%s' is read in a circle, or by too long a way", node.NameText());
  ++m_nodeMap.m_walkDepth;
  ++m_nodeMap.m_walkSteps;
}

}  // namespace GenApi
