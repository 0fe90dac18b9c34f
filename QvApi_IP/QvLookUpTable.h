// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

/// The table that takes samples from one depth to another, kept for the last request. Safe from any
/// thread.
class CQvLookUpTableManager {
 public:
  /// 2^sourceBits entries.
  using Table = std::vector<std::uint16_t>;
  using TableReference = std::shared_ptr<const Table>;

  /// The table from `sourceBits` to `destinationBits`, both 1 to 16. With gamma 1 low bits are cut
  /// off; otherwise, and for more bits in mode `Gamma`, entries follow the power law from full
  /// scale to full scale, rounded. The other modes act for more bits only.
  /// @throws GenICam::BadAllocException
  TableReference LockTable(std::size_t sourceBits, std::size_t destinationBits, double gamma,
                           _EQvBitExpansionMode_t mode);

 private:
  struct Key {
    std::size_t sourceBits;
    std::size_t destinationBits;
    double gamma;
    _EQvBitExpansionMode_t mode;
    bool operator==(const Key&) const = default;
  };

  static Table Build(const Key& key);

  TableCache<Key, Table> m_cache;
};

}  // namespace QvApi
