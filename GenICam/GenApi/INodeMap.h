// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <GenApi/Container.h>
#include <GenApi/IPort.h>
#include <GenApi/Synch.h>

namespace GenApi {

/// All nodes of one document. The set of nodes and their texts never change. Every operation that
/// touches a value, an access mode or a cache, here and at the nodes, takes the lock of the map.
class QVGENICAM_API INodeMap {
 public:
  /// Every node, entries of enumerations among them, in the order of the document.
  virtual void GetNodes(NodeList_t& nodes) const = 0;
  /// The node of a name, or null. Entries are named "EnumEntry_<enumeration>_<entry>".
  virtual INode* GetNode(const GenICam::gcstring& name) const = 0;
  /// Forgets all cached values.
  virtual void InvalidateNodes() const = 0;
  /// Gives the `Port` node of that name its registers; false if there is none. The port stays the
  /// caller's and must outlive its use. A null disconnects. All cached values are forgotten.
  virtual bool Connect(IPort* port, const GenICam::gcstring& portName) const = 0;
  /// The same for the port named "Device", or else for the only one.
  virtual bool Connect(IPort* port) const = 0;
  virtual GenICam::gcstring GetDeviceName() const = 0;
  /// Tells the map that time has passed: values whose PollingTime has run out are forgotten.
  virtual void Poll(int64_t elapsedMilliseconds) = 0;
  virtual CLock& GetLock() const = 0;
  virtual uint64_t GetNumNodes() const = 0;

  virtual ~INodeMap() = default;

 protected:
  INodeMap() = default;
  INodeMap(const INodeMap&) = delete;
  INodeMap& operator=(const INodeMap&) = delete;
};

}  // namespace GenApi
