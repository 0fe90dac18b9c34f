// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>
#include <GenApi/IRegister.h>

#include <algorithm>
#include <span>

#include "GenICam/Nodes/Element.h"
#include "GenICam/Nodes/RegisterAccess.h"

namespace GenApi {

/// Adds IRegister and the register's elements to a base class of nodes.
template <typename Base>
class TRegisterNode : public Base, public IRegister {
 public:
  using Base::Base;

  static const ElementRow* FindElement(std::string_view name) {
    if (const ElementRow* row = CRegisterAccess::FindElement(name)) return row;
    return Base::FindElement(name);
  }

  CRegisterAccess* Register() override { return &m_access; }
  void Finish() override { m_access.Finish(); }

  // IRegister
  void Set(const uint8_t* buffer, int64_t length, bool) override {
    AutoLock lock(this->Lock());
    this->RequireWritable();
    RequireLength(length);
    m_access.Write(std::span(buffer, static_cast<std::size_t>(length)));
  }
  void Get(uint8_t* buffer, int64_t length, bool, bool ignoreCache) override {
    AutoLock lock(this->Lock());
    this->RequireReadable();
    RequireLength(length);
    const auto bytes = m_access.Read(ignoreCache);
    std::copy_n(bytes.begin(), std::min(static_cast<std::size_t>(length), bytes.size()), buffer);
  }
  int64_t GetLength() override {
    AutoLock lock(this->Lock());
    return m_access.Length();
  }
  int64_t GetAddress() override {
    AutoLock lock(this->Lock());
    return m_access.Address();
  }

 protected:
  EAccessMode OwnAccessMode(bool honourLock) const override {
    return m_access.AccessMode(honourLock);
  }

  CRegisterAccess m_access{*this};

 private:
  void RequireLength(int64_t length) const {
    if (const int64_t own = m_access.Length(); length != own)
      throw OUT_OF_RANGE_EXCEPTION("Node '%s': length = %lld must be that of the register, %lld",
                                   this->NameText(), static_cast<long long>(length),
                                   static_cast<long long>(own));
  }
};

}  // namespace GenApi
