// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>

#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace QvApi {

/// Keeps one table together with the key that it was built for.
///
/// A table is immutable and counted: the cache holds one reference while it keeps it, each user one
/// more, so that an image in progress is not disturbed by a table built anew meanwhile. Safe from
/// any thread; two threads that need the same table build it once.
///
/// @tparam Key    compared by ==; what the table depends on
/// @tparam Table  what a builder returns, such as a vector of entries
template <class Key, class Table>
class TableCache {
 public:
  using Reference = std::shared_ptr<const Table>;

  /// The table for `key`: the one kept, or else what `build()` makes.
  /// @throws GenICam::BadAllocException  no memory; the cache is empty then and the next call tries
  ///                                     again
  template <class Build>
  Reference Lock(const Key& key, Build&& build) {
    std::lock_guard lock(m_mutex);
    if (m_table && *m_key == key) return m_table;
    m_table.reset();
    try {
      m_table = std::make_shared<const Table>(std::forward<Build>(build)());
    } catch (const std::bad_alloc& error) {
      throw BAD_ALLOC_EXCEPTION("%s", error.what());
    }
    m_key = key;
    return m_table;
  }

  /// Drops the cache's reference.
  void Clear() {
    std::lock_guard lock(m_mutex);
    m_table.reset();
  }

 private:
  std::mutex m_mutex;
  std::optional<Key> m_key;
  Reference m_table;
};

}  // namespace QvApi
