// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IDeviceInfo.h>
#include <GenApi/INodeMap.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "GenICam/Nodes/Node.h"

namespace GenApi {

/// What the root element of a document says.
struct DeviceInfo {
  std::string modelName;
  std::string vendorName;
  std::string toolTip;
  std::string standardNameSpace;
  std::string productGuid;
  std::string versionGuid;
  Version_t schemaVersion{};
  Version_t deviceVersion{};
};

/// Owns the nodes of a document, finds them by name, and holds what they share: the lock, and the
/// counters of walks from node to node.
class CNodeMap final : public INodeMap, public IDeviceInfo {
 public:
  explicit CNodeMap(std::string deviceName);
  ~CNodeMap() override;

  // INodeMap
  void GetNodes(NodeList_t& nodes) const override;
  INode* GetNode(const GenICam::gcstring& name) const override;
  void InvalidateNodes() const override;
  bool Connect(IPort* port, const GenICam::gcstring& portName) const override;
  bool Connect(IPort* port) const override;
  GenICam::gcstring GetDeviceName() const override { return m_deviceName; }
  void Poll(int64_t elapsedMilliseconds) override;
  CLock& GetLock() const override { return m_lock; }
  uint64_t GetNumNodes() const override { return m_nodes.size(); }

  // IDeviceInfo
  GenICam::gcstring GetModelName() override { return m_info.modelName; }
  GenICam::gcstring GetVendorName() override { return m_info.vendorName; }
  GenICam::gcstring GetToolTip() override { return m_info.toolTip; }
  GenICam::gcstring GetStandardNameSpace() override { return m_info.standardNameSpace; }
  void GetSchemaVersion(Version_t& version) override { version = m_info.schemaVersion; }
  void GetDeviceVersion(Version_t& version) override { version = m_info.deviceVersion; }
  GenICam::gcstring GetProductGuid() override { return m_info.productGuid; }
  GenICam::gcstring GetVersionGuid() override { return m_info.versionGuid; }

  // Built by the document reader
  void SetInfo(DeviceInfo info) { m_info = std::move(info); }
  /// Throws PropertyException if the name is taken or empty.
  CNode& Add(std::unique_ptr<CNode> node);
  CNode* FindNode(std::string_view name) const;
  /// Finishes every node and refuses values that are read in a circle.
  void Finish();

  /// A number that no invalidation had before.
  std::uint64_t NextVisit() { return ++m_lastVisit; }

 private:
  friend class CWalkGuard;

  void CheckCircles() const;

  std::string m_deviceName;
  DeviceInfo m_info;
  std::vector<std::unique_ptr<CNode>> m_nodes;
  std::unordered_map<std::string_view, CNode*> m_byName;
  std::uint64_t m_lastVisit = 0;
  mutable CLock m_lock;
  int m_walkDepth = 0;
  int m_walkSteps = 0;
};

/// Counts the way from node to node within one operation. A circle that only limits or access
/// conditions close cannot be seen in the document alone, so it ends here: RuntimeException with
/// the node's name behind 100 nodes in a row, or 100,000 steps in all.
class CWalkGuard {
 public:
  explicit CWalkGuard(const CNode& node);
  CWalkGuard(const CWalkGuard&) = delete;
  CWalkGuard& operator=(const CWalkGuard&) = delete;
  ~CWalkGuard() { --m_nodeMap.m_walkDepth; }

 private:
  CNodeMap& m_nodeMap;
};

}  // namespace GenApi
