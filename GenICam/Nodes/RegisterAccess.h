// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/Types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "GenICam/Nodes/NumberSource.h"

namespace GenApi {

class CElement;
class CNode;
class CPort;
struct ElementRow;

/// The way from a node to its bytes on a port: address, length, access and cache. A part of every
/// register node. Not locked, see CNode.
class CRegisterAccess {
 public:
  explicit CRegisterAccess(CNode& owner) : m_owner(owner) {}
  CRegisterAccess(const CRegisterAccess&) = delete;
  CRegisterAccess& operator=(const CRegisterAccess&) = delete;

  static const ElementRow* FindElement(std::string_view name);
  /// Throws PropertyException if the port, the address or the length is missing.
  void Finish();
  /// The length if the document gives it as a constant.
  std::optional<int64_t> ConstantLength() const;

  EAccessMode AccessMode(bool honourLock) const;
  ECachingMode CachingMode() const { return m_cachingMode; }
  /// The sum of all addresses. RuntimeException if it leaves 63 bits.
  int64_t Address() const;
  /// RuntimeException if the length is not between 1 and 16 MiB, far above every real register.
  int64_t Length() const;

  /// All bytes, from the cache if it holds them.
  std::vector<std::uint8_t> Read(bool ignoreCache) const;
  /// The bytes must be as many as Length. Drops what depends on them, registers that overlap too.
  void Write(std::span<const std::uint8_t> bytes);

  bool IsCacheValid() const { return m_isCached; }
  void DropCache();

 private:
  static CRegisterAccess& Of(CNode& node);
  static void ReadPort(CNode& node, const CElement& element);
  static void AddAddressNode(CNode& node, const CElement& element);
  static void AddAddressFormula(CNode& node, const CElement& element);
  static void AddAddress(CNode& node, const CElement& element);
  static void ReadLength(CNode& node, const CElement& element);
  static void ReadLengthNode(CNode& node, const CElement& element);
  static void ReadAccessMode(CNode& node, const CElement& element);
  static void ReadCachingMode(CNode& node, const CElement& element);

  bool Overlaps(int64_t address, int64_t length) const;
  void Keep(int64_t address, std::span<const std::uint8_t> bytes) const;

  CNode& m_owner;
  CPort* m_port = nullptr;
  std::vector<CNumberSource<int64_t>> m_addresses;
  CNumberSource<int64_t> m_length;
  EAccessMode m_accessMode = RO;
  ECachingMode m_cachingMode = WriteThrough;

  mutable bool m_isCached = false;
  mutable int64_t m_cachedAddress = 0;
  mutable std::vector<std::uint8_t> m_cache;
  /// Counts the drops, so that one that comes from inside a port access is not undone behind it.
  std::uint64_t m_dropCount = 0;
};

}  // namespace GenApi
