// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/IPort.h>

#include <vector>

#include "GenICam/Nodes/Node.h"

namespace GenApi {

class CRegisterAccess;

/// `Port`: the place where a device is connected.
class CPort final : public CNode, public IPort {
 public:
  using CNode::CNode;

  EInterfaceType GetPrincipalInterfaceType() const override { return intfIPort; }

  // IPort, for users; caches of the map are bypassed.
  void Read(void* buffer, int64_t address, int64_t length) override;
  void Write(const void* buffer, int64_t address, int64_t length) override;

  void Connect(IPort* device) { m_device = device; }
  /// The connected device. AccessException with the name if there is none.
  IPort& Device() const;

  void AddRegister(CRegisterAccess& access) { m_registers.push_back(&access); }
  const std::vector<CRegisterAccess*>& Registers() const { return m_registers; }

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override;

 private:
  IPort* m_device = nullptr;
  std::vector<CRegisterAccess*> m_registers;
};

}  // namespace GenApi
