// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/Container.h>
#include <GenApi/IEnumEntry.h>

namespace GenApi {

/// A choice out of named integers.
class QVGENICAM_API IEnumeration : virtual public IValue {
 public:
  /// Names of all implemented entries, in the order of the document.
  virtual void GetSymbolics(StringList_t& symbolics) = 0;
  /// All entries, each an IEnumEntry, in the order of the document.
  virtual void GetEntries(NodeList_t& entries) = 0;
  /// Throws InvalidArgumentException if no entry has the value, AccessException if the entry is
  /// not available.
  virtual void SetIntValue(int64_t value, bool verify = true) = 0;
  virtual int64_t GetIntValue(bool verify = false, bool ignoreCache = false) = 0;
  /// The entry of a name, or null.
  virtual IEnumEntry* GetEntryByName(const GenICam::gcstring& symbolic) = 0;
  /// The first entry of a value, or null.
  virtual IEnumEntry* GetEntry(int64_t value) = 0;
  /// The chosen entry, or null if none has the present value.
  virtual IEnumEntry* GetCurrentEntry(bool verify = false, bool ignoreCache = false) = 0;

  IEnumeration& operator=(const GenICam::gcstring& symbolic) {
    FromString(symbolic);
    return *this;
  }
  GenICam::gcstring operator*() { return ToString(); }
};

}  // namespace GenApi
