// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/IQvConverter.h"
#include "QvApi_IP/IQvFiler.h"
#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// What names a module: its type number, its name, and the number of its node-map document.
template <class Type>
struct ModuleInfo {
  Type type;
  const char* name;
  int resourceId;
};

/// The descriptors, which answer from the module's class.
template <class Module>
class CFilterInfo final : public IQvFilterInfo {
 public:
  EQvFilterType_t GetFilterType() const override { return Module::m_cInfo.type; }
  GenICam::gcstring GetFilterName() const override { return Module::m_cInfo.name; }
  bool IsSupported(PixelFormat format) const override { return Module::IsSupported(format); }
};

/// Belongs to one converter, since what that accepts depends on its settings.
template <class Module>
class CConverterInfo final : public IQvConverterInfo {
 public:
  explicit CConverterInfo(const Module& owner) : m_owner(owner) {}
  EQvConverterType_t GetConverterType() const override { return Module::m_cInfo.type; }
  GenICam::gcstring GetConverterName() const override { return Module::m_cInfo.name; }
  bool IsSupported(PixelFormat format) const override { return m_owner.IsSupported(format); }

 private:
  const Module& m_owner;
};

template <class Module>
class CFilerInfo final : public IQvFilerInfo {
 public:
  EQvFilerType_t GetFilerType() const override { return Module::m_cInfo.type; }
  GenICam::gcstring GetFilerName() const override { return Module::m_cInfo.name; }
};

}  // namespace QvApi
