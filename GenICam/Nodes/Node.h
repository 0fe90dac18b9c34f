// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/INode.h>
#include <GenApi/ISelector.h>
#include <GenApi/IValue.h>
#include <GenApi/Synch.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "GenICam/Nodes/NumberSource.h"

namespace GenApi {

class CNodeMap;
class CRegisterAccess;
struct ElementRow;

/// What one node wants from another.
enum class ELink : std::uint8_t {
  Value,        ///< reads, and where it can writes, its value there
  Input,        ///< reads it to get at its own value: variable, address, length, port
  Limit,        ///< minimum, maximum, increment
  Access,       ///< implemented, available, locked
  Invalidator,  ///< loses its own value with that of the other
  Selected,     ///< switches the other
  Member,       ///< holds it: features of a category, entries of an enumeration
};

/// Limits of a number.
template <typename T>
struct Range {
  T min;
  T max;
  std::optional<T> inc;
};

/// Base of all nodes: name and texts, links to other nodes, access mode, invalidation.
///
/// The public interfaces take the lock of the map and test access and limits, once, at the node
/// that the user calls. The operations below them do neither: they are what nodes use among
/// themselves. Those that go from node to node pass through CWalkGuard, which ends circles.
class CNode : public INode, public ISelector {
 public:
  CNode(CNodeMap& nodeMap, std::string name);
  CNode(const CNode&) = delete;
  CNode& operator=(const CNode&) = delete;
  ~CNode() override;

  // IBase, INode, ISelector
  EAccessMode GetAccessMode() const final;
  GenICam::gcstring GetName(bool fullQualified = false) const override;
  ENameSpace GetNameSpace() const override { return m_nameSpace; }
  EVisibility GetVisibility() const override { return m_visibility; }
  void InvalidateNode() override;
  bool IsCachable() const override { return GetCachingMode() != NoCache; }
  ECachingMode GetCachingMode() const override;
  int64_t GetPollingTime() const override { return m_pollingTime.value_or(-1); }
  GenICam::gcstring GetToolTip() const override { return m_toolTip; }
  GenICam::gcstring GetDescription() const override { return m_description; }
  GenICam::gcstring GetDisplayName() const override;
  GenICam::gcstring GetDeviceName() const override;
  bool IsStreamable() const override { return m_isStreamable == Yes; }
  bool IsFeature() const override { return m_isFeature; }
  void GetChildren(NodeList_t& children) const override;
  void GetParents(NodeList_t& parents) const override;
  INodeMap* GetNodeMap() const override;
  bool IsSelector() const override;
  void GetSelectedFeatures(FeatureList_t& list) const override;
  void GetSelectingFeatures(FeatureList_t& list) const override;

  const std::string& Name() const { return m_name; }
  const char* NameText() const { return m_name.c_str(); }
  CNodeMap& Map() const { return m_nodeMap; }
  CLock& Lock() const;

  // Built by the document reader
  static const ElementRow* FindElement(std::string_view name);
  void AddLink(ELink link, CNode& target);
  void MarkAsFeature() { m_isFeature = true; }
  /// Called when all elements of all nodes have been read. Throws PropertyException with the
  /// node's name if something is missing or contradicts itself.
  virtual void Finish() {}
  struct Link {
    ELink kind;
    CNode* target;
  };
  const std::vector<Link>& Links() const { return m_links; }

  // Access, without lock
  /// `honourLock` false leaves pIsLocked aside, which a read does not need: so a node's lock may
  /// depend on the node's own value.
  EAccessMode AccessMode(bool honourLock = true) const;
  /// Throw AccessException with the node's name.
  void RequireReadable() const;
  void RequireWritable() const;

  // Numbers, without lock and tests
  virtual bool IsNumber() const { return false; }
  template <typename T>
  T Read(bool ignoreCache = false) const;
  template <typename T>
  void Write(T value);
  template <typename T>
  Range<T> GetRange() const;
  /// RequireReadable, then Read.
  template <typename T>
  T ReadChecked(bool ignoreCache = false) const;
  /// The integer behind the name of an enumeration's entry.
  virtual std::optional<int64_t> EntryValue(std::string_view) const { return std::nullopt; }

  // Caches
  /// Whether reading the value needs no port.
  bool IsCacheValid() const;
  /// The register inside the node, if it has one.
  virtual CRegisterAccess* Register() { return nullptr; }
  const CRegisterAccess* Register() const { return const_cast<CNode*>(this)->Register(); }
  /// Drops the caches of all nodes that depend on this one, but not its own.
  void InvalidateDependents();

 protected:
  virtual EAccessMode OwnAccessMode(bool honourLock) const = 0;
  virtual int64_t ReadInteger(bool ignoreCache) const;
  virtual double ReadFloat(bool ignoreCache) const;
  virtual void WriteInteger(int64_t value);
  virtual void WriteFloat(double value);
  virtual Range<int64_t> IntegerRange() const;
  virtual Range<double> FloatRange() const;

 private:
  /// A condition that cannot be read counts against the access.
  bool IsTrue(const CNumberSource<int64_t>& condition, bool ifUnreadable) const;
  void DropCache();
  void InvalidateFrom(bool withSelf);
  [[noreturn]] void FailAsNoNumber() const;

  struct Dependent {
    CNode* node;
    bool isSelected;
  };

  CNodeMap& m_nodeMap;
  std::string m_name;
  std::vector<Link> m_links;
  std::vector<CNode*> m_parents;
  std::vector<Dependent> m_dependents;

  std::string m_toolTip;
  std::string m_description;
  std::string m_displayName;
  EVisibility m_visibility = Beginner;
  ENameSpace m_nameSpace = Custom;
  EAccessMode m_imposedAccessMode = RW;
  EYesNo m_isStreamable = No;
  bool m_isFeature = false;
  std::optional<int64_t> m_pollingTime;
  CNumberSource<int64_t> m_isImplemented;
  CNumberSource<int64_t> m_isAvailable;
  CNumberSource<int64_t> m_isLocked;

  friend class CNodeMap;
  int64_t m_sinceLastPoll = 0;
  std::uint64_t m_visit = 0;  ///< number of the invalidation that came by last, see InvalidateFrom
  bool m_visitedAsSelected = false;
};

template <>
int64_t CNode::Read(bool ignoreCache) const;
template <>
double CNode::Read(bool ignoreCache) const;
template <>
void CNode::Write(int64_t value);
template <>
void CNode::Write(double value);
template <>
Range<int64_t> CNode::GetRange() const;
template <>
Range<double> CNode::GetRange() const;

/// A node with a value: IValue as far as it is the same for all.
class CValueNode : public CNode, virtual public IValue {
 public:
  using CNode::CNode;
  INode* GetNode() override { return this; }
  bool IsValueCacheValid() const override;
};

}  // namespace GenApi
