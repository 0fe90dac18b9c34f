// SPDX-License-Identifier: MIT
#include "GenICam/Nodes/Port.h"

#include <Base/GCException.h>

namespace GenApi {

EAccessMode CPort::OwnAccessMode(bool) const {
  return m_device == nullptr ? NA : m_device->GetAccessMode();
}

IPort& CPort::Device() const {
  if (m_device == nullptr)
    throw ACCESS_EXCEPTION("Node '%s': no device is connected to this port", NameText());
  return *m_device;
}

void CPort::Read(void* buffer, int64_t address, int64_t length) {
  AutoLock lock(Lock());
  RequireReadable();
  Device().Read(buffer, address, length);
}

void CPort::Write(const void* buffer, int64_t address, int64_t length) {
  AutoLock lock(Lock());
  RequireWritable();
  Device().Write(buffer, address, length);
  InvalidateNode();
}

}  // namespace GenApi
