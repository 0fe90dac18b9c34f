// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <GenApi/IBase.h>

namespace GenApi {

class INode;

/// A node with a value that can be told as text.
///
/// Common to the value interfaces: `verify` asks a write to test limits (a read ignores it);
/// `ignoreCache` makes a read go to the port. A node that cannot be read or written now throws
/// AccessException with its name. All operations take the lock of the node map.
class QVGENICAM_API IValue : virtual public IBase {
 public:
  virtual INode* GetNode() = 0;
  /// The value as text: numbers in decimal, booleans "0" or "1", enumerations by entry name.
  virtual GenICam::gcstring ToString(bool verify = false, bool ignoreCache = false) = 0;
  /// Sets the value from text: numbers in decimal or hexadecimal with 0x, booleans also "yes",
  /// "no", "true", "false", enumerations by entry name. Throws InvalidArgumentException if the
  /// text means nothing here, OutOfRangeException outside the limits.
  virtual void FromString(const GenICam::gcstring& valueStr, bool verify = true) = 0;
  /// Whether a read would be served without an access to a port.
  virtual bool IsValueCacheValid() const = 0;
};

}  // namespace GenApi
