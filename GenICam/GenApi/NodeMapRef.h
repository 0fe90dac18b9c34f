// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/INode.h>
#include <GenApi/INodeMap.h>

#include <memory>

namespace GenApi {

/// A shared hold on a node map: copies refer to the same map, and the last one deletes it. Copies
/// in different threads are independent; one object belongs to one thread at a time.
class QVGENICAM_API CNodeMapRef {
 public:
  /// Empty.
  explicit CNodeMapRef(const GenICam::gcstring& deviceName = "Device");
  /// Takes the ownership of a map.
  explicit CNodeMapRef(INodeMap* nodeMap, const GenICam::gcstring& deviceName = "Device");
  CNodeMapRef(const CNodeMapRef& other);
  CNodeMapRef& operator=(const CNodeMapRef& other);
  ~CNodeMapRef();

  /// Takes the ownership of a map with a new count of references; a map held before is let go.
  void _Attach(INodeMap* nodeMap);
  /// Lets the map go.
  void _Destroy();

  /// See INodeMap. All of them throw AccessException "Feature not present (reference not valid)"
  /// while the reference is empty.
  bool _Connect(IPort* port, const GenICam::gcstring& portName) const;
  bool _Connect(IPort* port) const;
  void _GetNodes(NodeList_t& nodes) const;
  INode* _GetNode(const GenICam::gcstring& name) const;
  void _InvalidateNodes() const;
  void _Poll(int64_t elapsedMilliseconds);

  void GetNodes(NodeList_t& nodes) const { _GetNodes(nodes); }
  INode* GetNode(const GenICam::gcstring& name) const { return _GetNode(name); }
  void InvalidateNodes() const { _InvalidateNodes(); }
  void Poll(int64_t elapsedMilliseconds) { _Poll(elapsedMilliseconds); }

  /// The name given at construction.
  GenICam::gcstring _GetDeviceName() const { return m_deviceName; }
  bool IsValid() const noexcept { return _Ptr != nullptr; }
  INodeMap* operator->() const { return &Checked(); }

  /// The map, or null; owned by the reference. Not to be assigned.
  INodeMap* _Ptr = nullptr;

 private:
  INodeMap& Checked() const;

  GenICam::gcstring m_deviceName;
  std::shared_ptr<INodeMap> m_owner;
};

}  // namespace GenApi
