// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/RegisterAccess.h"

#include <Base/GCException.h>

#include <array>

#include "GenICam/Nodes/Element.h"
#include "GenICam/Nodes/Port.h"

namespace GenApi {
namespace {

constexpr int64_t kMaxLength = 16 << 20;

}  // namespace

const ElementRow* CRegisterAccess::FindElement(std::string_view name) {
  static constexpr std::array kElements = {
      ElementRow{"Address", &AddAddress, EOccurs::Often},
      ElementRow{"pAddress", &AddAddressNode, EOccurs::Often},
      ElementRow{"IntSwissKnife", &AddAddressFormula, EOccurs::Often},
      ElementRow{"Length", &ReadLength},
      ElementRow{"pLength", &ReadLengthNode},
      ElementRow{"AccessMode", &ReadAccessMode},
      ElementRow{"Cachable", &ReadCachingMode},
      ElementRow{"pPort", &ReadPort},
  };
  return FindRow(kElements, name);
}

CRegisterAccess& CRegisterAccess::Of(CNode& node) { return *node.Register(); }

void CRegisterAccess::ReadPort(CNode& node, const CElement& element) {
  auto* port = dynamic_cast<CPort*>(&element.Target());
  if (port == nullptr) element.Fail("names a node that is no port");
  Of(node).m_port = port;
  node.AddLink(ELink::Input, *port);
  port->AddRegister(Of(node));
}

void CRegisterAccess::AddAddress(CNode& node, const CElement& element) {
  Of(node).m_addresses.emplace_back(element.Number<int64_t>());
}

void CRegisterAccess::AddAddressNode(CNode& node, const CElement& element) {
  CNode& target = element.NumericTarget();
  Of(node).m_addresses.emplace_back(target);
  node.AddLink(ELink::Input, target);
}

void CRegisterAccess::AddAddressFormula(CNode& node, const CElement& element) {
  Of(node).m_addresses.emplace_back(*element.Child());
  node.AddLink(ELink::Input, *element.Child());
}

void CRegisterAccess::ReadLength(CNode& node, const CElement& element) {
  if (Of(node).m_length.IsSet()) element.Fail("stands beside another one for the same purpose");
  Of(node).m_length = CNumberSource<int64_t>(element.Number<int64_t>());
}

void CRegisterAccess::ReadLengthNode(CNode& node, const CElement& element) {
  if (Of(node).m_length.IsSet()) element.Fail("stands beside another one for the same purpose");
  CNode& target = element.NumericTarget();
  Of(node).m_length = CNumberSource<int64_t>(target);
  node.AddLink(ELink::Input, target);
}

void CRegisterAccess::ReadAccessMode(CNode& node, const CElement& element) {
  Of(node).m_accessMode = element.Choice(kAccessModes);
}

void CRegisterAccess::ReadCachingMode(CNode& node, const CElement& element) {
  Of(node).m_cachingMode = element.Choice(kCachingModes);
}

void CRegisterAccess::Finish() {
  RequireElement(m_owner, m_port != nullptr, "pPort");
  RequireElement(m_owner, !m_addresses.empty(), "Address");
  RequireElement(m_owner, m_length.IsSet(), "Length");
  if (const auto length = ConstantLength(); length && (*length < 1 || *length > kMaxLength))
    throw PROPERTY_EXCEPTION("Node '%s': Length %lld is not possible", m_owner.NameText(),
                             static_cast<long long>(*length));
}

std::optional<int64_t> CRegisterAccess::ConstantLength() const {
  if (m_length.Node() != nullptr) return std::nullopt;
  return m_length.Constant();
}

EAccessMode CRegisterAccess::AccessMode(bool honourLock) const {
  return Combine(m_accessMode, m_port->AccessMode(honourLock));
}

int64_t CRegisterAccess::Address() const {
  int64_t sum = 0;
  for (const auto& address : m_addresses)
    if (__builtin_add_overflow(sum, address.Read(), &sum))
      throw RUNTIME_EXCEPTION("Node '%s': the sum of its addresses is too large",
                              m_owner.NameText());
  return sum;
}

int64_t CRegisterAccess::Length() const {
  const int64_t length = m_length.Read();
  if (length < 1 || length > kMaxLength)
    throw RUNTIME_EXCEPTION("Node '%s': a register length of %lld is not possible",
                            m_owner.NameText(), static_cast<long long>(length));
  return length;
}

std::vector<std::uint8_t> CRegisterAccess::Read(bool ignoreCache) const {
  if (m_isCached && !ignoreCache) return m_cache;
  const std::uint64_t dropCount = m_dropCount;
  const int64_t address = Address();
  // Zeroed, since a port may leave bytes as they are where it has no register.
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(Length()), 0);
  m_port->Device().Read(bytes.data(), address, std::ssize(bytes));
  if (m_cachingMode != NoCache && dropCount == m_dropCount) Keep(address, bytes);
  return bytes;
}

void CRegisterAccess::Write(std::span<const std::uint8_t> bytes) {
  const int64_t address = Address();
  DropCache();
  const std::uint64_t dropCount = m_dropCount;
  m_port->Device().Write(bytes.data(), address, std::ssize(bytes));
  if (m_cachingMode == WriteThrough && dropCount == m_dropCount) Keep(address, bytes);
  m_owner.InvalidateDependents();
  for (CRegisterAccess* other : m_port->Registers()) {
    if (other == this || !other->Overlaps(address, std::ssize(bytes))) continue;
    other->DropCache();
    other->m_owner.InvalidateDependents();
  }
}

bool CRegisterAccess::Overlaps(int64_t address, int64_t length) const {
  if (!m_isCached) return false;
  // Differences of unsigned numbers cannot overflow.
  const auto from = static_cast<std::uint64_t>(address);
  const auto own = static_cast<std::uint64_t>(m_cachedAddress);
  return from - own < m_cache.size() || own - from < static_cast<std::uint64_t>(length);
}

void CRegisterAccess::Keep(int64_t address, std::span<const std::uint8_t> bytes) const {
  m_cache.assign(bytes.begin(), bytes.end());
  m_cachedAddress = address;
  m_isCached = true;
}

void CRegisterAccess::DropCache() {
  m_isCached = false;
  ++m_dropCount;
}

}  // namespace GenApi
