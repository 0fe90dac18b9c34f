// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "QvApi_IP/Kernels/Polarization.h"
#include "QvApi_IP/QvTableCache.h"

namespace QvApi {

/// The weights with which the images behind polarizers at 0, 45, 90 and 135 degrees add up to the
/// image behind a polarizer at any angle.
class VirtualPolarizerTable {
 public:
  /// @param angle  in degrees, from 0 to below 180
  VirtualPolarizerTable(std::size_t bits, double angle);

  /// 4 * 2^bits entries: entry i of block k is sample i times the weight of the image at 45 k
  /// degrees, times 2^14.
  const std::vector<std::int32_t>& Entries() const { return m_entries; }
  /// The table as kernels use it. Lives as long as the table.
  Kernels::VirtualPolarizer Polarizer() const;

 private:
  std::vector<std::int32_t> m_entries;
  Kernels::VirtualPolarizer m_polarizer;
};

/// Keeps the table of the last request. Safe from any thread.
class CQvLookUpTableForVirtualPolarizerManager {
 public:
  using TableReference = std::shared_ptr<const VirtualPolarizerTable>;

  /// @param bits   depth of the samples, 1 to 14
  /// @param angle  in degrees. Any number is brought to the range from 0 to below 180, of which the
  ///               light's response is periodic; infinity and NaN count as 0.
  /// @throws GenICam::BadAllocException
  TableReference LockTable(std::size_t bits, double angle);

 private:
  struct Key {
    std::size_t bits;
    double angle;
    bool operator==(const Key&) const = default;
  };

  TableCache<Key, VirtualPolarizerTable> m_cache;
};

/// Magnitude and angle of polarization for all differences of Stokes at one depth. 32 * 4^bits
/// bytes: 2 MiB for 8 bits, 512 MiB for 12.
///
/// The kernels calculate the same entries faster than they could be read from such a table; this is
/// for whoever needs them all.
class StokesVectorTable {
 public:
  explicit StokesVectorTable(std::size_t bits);

  /// Two entries for each pair from -N to N - 1, N being 2^bits: that of (s1, s2) at
  /// 2 * (((s2 + N) << (bits + 1)) + s1 + N) is the magnitude, the next one the angle.
  std::span<const std::uint32_t> Entries() const { return {m_entries.get(), m_size}; }

 private:
  std::size_t m_size;
  // Not a vector, which would write all entries once more.
  std::unique_ptr<std::uint32_t[]> m_entries;
};

/// Keeps the table of the last request. Safe from any thread.
class CQvLookUpTableForStokesVectorManager {
 public:
  using TableReference = std::shared_ptr<const StokesVectorTable>;

  /// @param bits  depth of the samples, 1 to 14
  /// @throws GenICam::BadAllocException
  TableReference LockTable(std::size_t bits);

 private:
  TableCache<std::size_t, StokesVectorTable> m_cache;
};

}  // namespace QvApi
