// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvModuleNodeMap.h"

#include <Base/GCException.h>

#include "QvApi_IP/QvResource_QvApi_IP.h"

namespace QvApi {

GenApi::INodeMap* CQvModuleNodeMap::Get(GenApi::IPort& port) {
  if (!m_created.load(std::memory_order_acquire)) {
    std::lock_guard lock(m_creation);
    if (!m_created.load(std::memory_order_relaxed)) Create(port);
  }
  return m_nodeMap._Ptr;
}

void CQvModuleNodeMap::Create(GenApi::IPort& port) {
  if (m_nodeMap.IsValid()) throw RUNTIME_EXCEPTION("Node map already created");
  GenApi::CNodeMapFactory factory(GenApi::ContentType_Xml,
                                  CQvResource_QvApi_IP::getData(m_resourceId),
                                  CQvResource_QvApi_IP::getSize(m_resourceId));
  m_nodeMap._Attach(factory.CreateNodeMap("Device", true));
  m_nodeMap._Connect(&port, "IPPort");
  m_created.store(true, std::memory_order_release);
}

void CQvModuleNodeMap::Connect(GenApi::IPort& port, const char* portName) {
  m_nodeMap._Connect(&port, portName);
}

void CQvModuleNodeMap::Invalidate(const char* node) {
  if (!m_created.load(std::memory_order_acquire)) return;
  if (!m_nodeMap.IsValid()) throw LOGICAL_ERROR_EXCEPTION("NULL pointer dereferenced");
  if (GenApi::INode* found = m_nodeMap.GetNode(node)) found->InvalidateNode();
}

}  // namespace QvApi
