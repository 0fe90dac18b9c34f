// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/GenApi.h>

#include <atomic>
#include <mutex>

namespace QvApi {

/// The node map of one module, made from a document of the library at first use.
class CQvModuleNodeMap {
 public:
  explicit CQvModuleNodeMap(int resourceId) : m_resourceId(resourceId) {}

  /// The node map, whose registers are served by `port`. Later calls give the same map. Safe from
  /// any thread.
  GenApi::INodeMap* Get(GenApi::IPort& port);

  /// Connects a further port of the document, after Get().
  void Connect(GenApi::IPort& port, const char* portName);

  /// Makes the map forget the cached value of a register and of all that depends on it. Does
  /// nothing while there is no map, or if it has no node of that name.
  void Invalidate(const char* node);

 private:
  void Create(GenApi::IPort& port);

  const int m_resourceId;
  std::mutex m_creation;
  std::atomic<bool> m_created = false;
  GenApi::CNodeMapRef m_nodeMap{"Device"};
};

}  // namespace QvApi
