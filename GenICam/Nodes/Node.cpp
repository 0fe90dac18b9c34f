// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/Node.h"

#include <Base/GCException.h>

#include <algorithm>
#include <array>

#include "GenICam/Nodes/Element.h"
#include "GenICam/Nodes/NodeMap.h"
#include "GenICam/Nodes/RegisterAccess.h"

namespace GenApi {

template <typename T>
T CNumberSource<T>::Read() const {
  return m_node != nullptr ? m_node->ReadChecked<T>() : Constant();
}

template class CNumberSource<int64_t>;
template class CNumberSource<double>;

CNode::CNode(CNodeMap& nodeMap, std::string name) : m_nodeMap(nodeMap), m_name(std::move(name)) {}

CNode::~CNode() = default;

const ElementRow* CNode::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"ToolTip", &TakeText<&CNode::m_toolTip>},
      ElementRow{"Description", &TakeText<&CNode::m_description>},
      ElementRow{"DisplayName", &TakeText<&CNode::m_displayName>},
      ElementRow{"Visibility", &TakeChoice<&CNode::m_visibility, kVisibilities>},
      ElementRow{"ImposedVisibility", &TakeChoice<&CNode::m_visibility, kVisibilities>},
      ElementRow{"NameSpace", &TakeChoice<&CNode::m_nameSpace, kNameSpaces>},
      ElementRow{"ImposedAccessMode", &TakeChoice<&CNode::m_imposedAccessMode, kAccessModes>},
      ElementRow{"Streamable", &TakeChoice<&CNode::m_isStreamable, kYesNo>},
      ElementRow{"PollingTime", &TakeNumber<&CNode::m_pollingTime>},
      ElementRow{"pIsImplemented", &TakeNode<&CNode::m_isImplemented, ELink::Access>},
      ElementRow{"pIsAvailable", &TakeNode<&CNode::m_isAvailable, ELink::Access>},
      ElementRow{"pIsLocked", &TakeNode<&CNode::m_isLocked, ELink::Access>},
      ElementRow{"pSelected", &TakeLink<ELink::Selected>, EOccurs::Often},
      ElementRow{"pInvalidator", &TakeLink<ELink::Invalidator>, EOccurs::Often},
      // Said for users and tools, without effect on values.
      ElementRow{"Extension", &Ignore, EOccurs::Often},
      ElementRow{"DocuURL", &Ignore},
      ElementRow{"IsDeprecated", &Ignore},
      ElementRow{"EventID", &Ignore},
      ElementRow{"pError", &Ignore, EOccurs::Often},
      ElementRow{"pAlias", &Ignore},
      ElementRow{"pCastAlias", &Ignore},
      ElementRow{"pBlockPolling", &Ignore},
  };
  return FindRow(kElements, name);
}

void CNode::AddLink(ELink link, CNode& target) {
  m_links.push_back({link, &target});
  target.m_parents.push_back(this);
  if (link == ELink::Selected)
    m_dependents.push_back({&target, true});
  else if (link != ELink::Member)
    target.m_dependents.push_back({this, false});
}

CLock& CNode::Lock() const { return m_nodeMap.GetLock(); }

EAccessMode CNode::GetAccessMode() const {
  AutoLock lock(Lock());
  return AccessMode();
}

bool CNode::IsTrue(const CNumberSource<int64_t>& condition, bool ifUnreadable) const {
  const CNode& node = *condition.Node();
  if (!IsReadable(node.AccessMode(false))) return ifUnreadable;
  return node.Read<int64_t>() != 0;
}

EAccessMode CNode::AccessMode(bool honourLock) const {
  const CWalkGuard guard(*this);
  if (m_isImplemented.IsSet() && !IsTrue(m_isImplemented, false)) return NI;
  if (m_isAvailable.IsSet() && !IsTrue(m_isAvailable, false)) return NA;
  const EAccessMode mode = Combine(OwnAccessMode(honourLock), m_imposedAccessMode);
  if (!honourLock || !IsWritable(mode) || !m_isLocked.IsSet() || !IsTrue(m_isLocked, true))
    return mode;
  return mode == RW ? RO : NA;
}

namespace {

const char* AccessModeText(EAccessMode mode) {
  for (const auto& [text, value] : kAccessModes)
    if (value == mode) return text.data();
  return "undefined";
}

}  // namespace

void CNode::RequireReadable() const {
  const EAccessMode mode = AccessMode(false);
  if (!IsReadable(mode))
    throw ACCESS_EXCEPTION("Node '%s' is not readable: its access mode is %s", NameText(),
                           AccessModeText(mode));
}

void CNode::RequireWritable() const {
  const EAccessMode mode = AccessMode();
  if (!IsWritable(mode))
    throw ACCESS_EXCEPTION("Node '%s' is not writable: its access mode is %s", NameText(),
                           AccessModeText(mode));
}

template <>
int64_t CNode::Read(bool ignoreCache) const {
  const CWalkGuard guard(*this);
  return ReadInteger(ignoreCache);
}
template <>
double CNode::Read(bool ignoreCache) const {
  const CWalkGuard guard(*this);
  return ReadFloat(ignoreCache);
}
template <>
void CNode::Write(int64_t value) {
  const CWalkGuard guard(*this);
  WriteInteger(value);
}
template <>
void CNode::Write(double value) {
  const CWalkGuard guard(*this);
  WriteFloat(value);
}
template <>
Range<int64_t> CNode::GetRange() const {
  const CWalkGuard guard(*this);
  return IntegerRange();
}
template <>
Range<double> CNode::GetRange() const {
  const CWalkGuard guard(*this);
  return FloatRange();
}
template <typename T>
T CNode::ReadChecked(bool ignoreCache) const {
  RequireReadable();
  return Read<T>(ignoreCache);
}
template int64_t CNode::ReadChecked(bool) const;
template double CNode::ReadChecked(bool) const;

void CNode::FailAsNoNumber() const {
  throw LOGICAL_ERROR_EXCEPTION("Node '%s' is no number", NameText());
}
int64_t CNode::ReadInteger(bool) const { FailAsNoNumber(); }
double CNode::ReadFloat(bool) const { FailAsNoNumber(); }
void CNode::WriteInteger(int64_t) { FailAsNoNumber(); }
void CNode::WriteFloat(double) { FailAsNoNumber(); }
Range<int64_t> CNode::IntegerRange() const { FailAsNoNumber(); }
Range<double> CNode::FloatRange() const { FailAsNoNumber(); }

bool CNode::IsCacheValid() const {
  const CWalkGuard guard(*this);
  if (const CRegisterAccess* access = Register()) return access->IsCacheValid();
  return std::ranges::all_of(m_links, [](const Link& link) {
    return (link.kind != ELink::Value && link.kind != ELink::Input) || link.target->IsCacheValid();
  });
}

void CNode::DropCache() {
  if (CRegisterAccess* access = Register()) access->DropCache();
}

void CNode::InvalidateNode() {
  AutoLock lock(Lock());
  InvalidateFrom(true);
}

void CNode::InvalidateDependents() { InvalidateFrom(false); }

void CNode::InvalidateFrom(bool withSelf) {
  // Breadth first, each node at most twice: once as a dependent, once as selected. What is selected
  // loses the registers below it too, since the device shows other contents there.
  struct Step {
    CNode* node;
    bool isSelected;
  };
  std::vector<Step> steps;
  const std::uint64_t visit = m_nodeMap.NextVisit();
  const auto visitNode = [&](CNode* node, bool isSelected) {
    const bool isKnown = node->m_visit == visit;
    if (isKnown && (!isSelected || node->m_visitedAsSelected)) return;
    node->m_visit = visit;
    node->m_visitedAsSelected = isSelected;
    if (withSelf || node != this) node->DropCache();
    steps.push_back({node, isSelected});
  };
  visitNode(this, false);
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const Step step = steps[i];
    for (const Dependent& dependent : step.node->m_dependents)
      visitNode(dependent.node, dependent.isSelected);
    if (!step.isSelected) continue;
    for (const Link& link : step.node->m_links)
      if (link.kind == ELink::Value) visitNode(link.target, true);
  }
}

ECachingMode CNode::GetCachingMode() const {
  const CRegisterAccess* access = Register();
  return access != nullptr ? access->CachingMode() : WriteThrough;
}

GenICam::gcstring CNode::GetName(bool fullQualified) const {
  if (!fullQualified) return m_name;
  return (m_nameSpace == Standard ? "Std::" : "Cust::") + m_name;
}

GenICam::gcstring CNode::GetDisplayName() const {
  return m_displayName.empty() ? m_name : m_displayName;
}

GenICam::gcstring CNode::GetDeviceName() const { return m_nodeMap.GetDeviceName(); }
INodeMap* CNode::GetNodeMap() const { return &m_nodeMap; }

void CNode::GetChildren(NodeList_t& children) const {
  children.clear();
  for (const Link& link : m_links)
    if (std::ranges::find(children, link.target) == children.end()) children.push_back(link.target);
}

void CNode::GetParents(NodeList_t& parents) const {
  parents.clear();
  for (CNode* parent : m_parents)
    if (std::ranges::find(parents, parent) == parents.end()) parents.push_back(parent);
}

bool CNode::IsSelector() const {
  return std::ranges::any_of(m_links,
                             [](const Link& link) { return link.kind == ELink::Selected; });
}

void CNode::GetSelectedFeatures(FeatureList_t& list) const {
  list.clear();
  for (const Link& link : m_links)
    if (auto* value = dynamic_cast<IValue*>(link.target); value && link.kind == ELink::Selected)
      list.push_back(value);
}

void CNode::GetSelectingFeatures(FeatureList_t& list) const {
  list.clear();
  for (CNode* parent : m_parents) {
    auto* value = dynamic_cast<IValue*>(parent);
    const auto selectsThis = [this](const Link& link) {
      return link.kind == ELink::Selected && link.target == this;
    };
    if (value != nullptr && std::ranges::any_of(parent->m_links, selectsThis) &&
        std::ranges::find(list, value) == list.end())
      list.push_back(value);
  }
}

bool CValueNode::IsValueCacheValid() const {
  AutoLock lock(Lock());
  return IsCacheValid();
}

}  // namespace GenApi
