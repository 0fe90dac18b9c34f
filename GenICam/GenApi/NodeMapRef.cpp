// SPDX-License-Identifier: MIT
#include <Base/GCException.h>
#include <GenApi/NodeMapRef.h>

namespace GenApi {

CNodeMapRef::CNodeMapRef(const GenICam::gcstring& deviceName) : m_deviceName(deviceName) {}

CNodeMapRef::CNodeMapRef(INodeMap* nodeMap, const GenICam::gcstring& deviceName)
    : m_deviceName(deviceName) {
  _Attach(nodeMap);
}

CNodeMapRef::CNodeMapRef(const CNodeMapRef& other) = default;
CNodeMapRef& CNodeMapRef::operator=(const CNodeMapRef& other) = default;
CNodeMapRef::~CNodeMapRef() = default;

void CNodeMapRef::_Attach(INodeMap* nodeMap) {
  m_owner.reset(nodeMap);
  _Ptr = nodeMap;
}

void CNodeMapRef::_Destroy() {
  _Ptr = nullptr;
  m_owner.reset();
}

bool CNodeMapRef::_Connect(IPort* port, const GenICam::gcstring& portName) const {
  return Checked().Connect(port, portName);
}

bool CNodeMapRef::_Connect(IPort* port) const { return Checked().Connect(port); }

void CNodeMapRef::_GetNodes(NodeList_t& nodes) const { Checked().GetNodes(nodes); }

INode* CNodeMapRef::_GetNode(const GenICam::gcstring& name) const {
  return Checked().GetNode(name);
}

void CNodeMapRef::_InvalidateNodes() const { Checked().InvalidateNodes(); }

void CNodeMapRef::_Poll(int64_t elapsedMilliseconds) { Checked().Poll(elapsedMilliseconds); }

INodeMap& CNodeMapRef::Checked() const {
  if (_Ptr == nullptr) throw ACCESS_EXCEPTION("Feature not present (reference not valid)");
  return *_Ptr;
}

}  // namespace GenApi
