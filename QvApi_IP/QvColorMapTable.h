// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "QvApi_IP/ColorMap.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

/// The colours of grey levels, kept for the last request. Safe from any thread.
class CColorMapTableManager {
 public:
  /// By component (blue, green, red) and grey level.
  using Table = std::array<std::array<std::uint16_t, 256>, 3>;
  using TableReference = std::shared_ptr<const Table>;

  /// The map of these settings; null for the one that shows each grey level as it is.
  /// @throws GenICam::BadAllocException
  TableReference LockTable(EQvColorMapType_t type, bool inversion, int phase);

 private:
  struct Key {
    EQvColorMapType_t type;
    bool inversion;
    int phase;
    bool operator==(const Key&) const = default;
  };

  static Table Build(const Key& key);

  TableCache<Key, Table> m_cache;
};

}  // namespace QvApi
