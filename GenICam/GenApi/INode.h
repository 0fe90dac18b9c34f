// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <GenApi/Container.h>
#include <GenApi/IBase.h>

namespace GenApi {

class INodeMap;

/// What all nodes of a map have in common, whatever their kind. Nodes belong to their map and live
/// as long as it.
class QVGENICAM_API INode : virtual public IBase {
 public:
  /// With `fullQualified` "Std::Name" or "Cust::Name" by name space.
  virtual GenICam::gcstring GetName(bool fullQualified = false) const = 0;
  virtual ENameSpace GetNameSpace() const = 0;
  virtual EVisibility GetVisibility() const = 0;
  /// Forgets the cached value of this node and of all nodes that depend on it: those that read it
  /// for value, limits, address, length, lock or availability, that it selects or invalidates, and
  /// so on through any number of steps.
  virtual void InvalidateNode() = 0;
  virtual bool IsCachable() const = 0;
  virtual ECachingMode GetCachingMode() const = 0;
  /// In milliseconds, or -1 if the value needs no polling.
  virtual int64_t GetPollingTime() const = 0;
  virtual GenICam::gcstring GetToolTip() const = 0;
  virtual GenICam::gcstring GetDescription() const = 0;
  /// The name, if the document gives no other.
  virtual GenICam::gcstring GetDisplayName() const = 0;
  virtual GenICam::gcstring GetDeviceName() const = 0;
  virtual bool IsStreamable() const = 0;
  /// Whether a category holds the node.
  virtual bool IsFeature() const = 0;
  virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
  /// The nodes that this one reads or names, each once.
  virtual void GetChildren(NodeList_t& children) const = 0;
  /// The nodes that read or name this one, each once.
  virtual void GetParents(NodeList_t& parents) const = 0;
  virtual INodeMap* GetNodeMap() const = 0;
};

}  // namespace GenApi
