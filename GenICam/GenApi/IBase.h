// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCExport.h>
#include <GenApi/Types.h>

namespace GenApi {

/// Root of all interfaces of a node. Interfaces inherit it virtually, so that one object can offer
/// several of them; a dynamic_cast leads from one to another.
class QVGENICAM_API IBase {
 public:
  /// The access that is possible now. For a node of a map it follows AccessMode,
  /// ImposedAccessMode, pIsImplemented, pIsAvailable, pIsLocked, the nodes it reads its value
  /// from, and the port.
  virtual EAccessMode GetAccessMode() const = 0;

 protected:
  IBase() = default;
  IBase(const IBase&) = default;
  IBase& operator=(const IBase&) = default;
  virtual ~IBase() = default;
};

inline bool IsImplemented(EAccessMode mode) { return mode != NI; }
inline bool IsAvailable(EAccessMode mode) { return mode == WO || mode == RO || mode == RW; }
inline bool IsReadable(EAccessMode mode) { return mode == RO || mode == RW; }
inline bool IsWritable(EAccessMode mode) { return mode == WO || mode == RW; }

/// The same for a node or a smart pointer; a null is not implemented.
inline bool IsImplemented(const IBase* base) {
  return base != nullptr && IsImplemented(base->GetAccessMode());
}
inline bool IsAvailable(const IBase* base) {
  return base != nullptr && IsAvailable(base->GetAccessMode());
}
inline bool IsReadable(const IBase* base) {
  return base != nullptr && IsReadable(base->GetAccessMode());
}
inline bool IsWritable(const IBase* base) {
  return base != nullptr && IsWritable(base->GetAccessMode());
}
inline bool IsImplemented(const IBase& base) { return IsImplemented(&base); }
inline bool IsAvailable(const IBase& base) { return IsAvailable(&base); }
inline bool IsReadable(const IBase& base) { return IsReadable(&base); }
inline bool IsWritable(const IBase& base) { return IsWritable(&base); }

/// The access that two modes in a row leave.
QVGENICAM_API EAccessMode Combine(EAccessMode first, EAccessMode second);

}  // namespace GenApi
