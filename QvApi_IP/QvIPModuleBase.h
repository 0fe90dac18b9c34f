// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/GenApi.h>

#include <cstdint>
#include <span>

#include "QvApi_IP/QvModuleNodeMap.h"
#include "QvApi_IP/QvRegister.h"
#include "QvApi_IP/QvSetting.h"
#include "QvApi_IP/QvTemporaryBuffers.h"
#include "QvSDKCommon/QvCallbackManager.h"

namespace QvApi {

/// What every module is beside its own interface: a GenApi device, which serves the registers of
/// its node map from its settings; a source of callbacks; an owner of temporary image buffers.
///
/// @tparam TISpecificIPModule  the module's ...Inside interface
template <class TISpecificIPModule>
class CQvIPModuleBase : public TISpecificIPModule, public GenApi::IPort {
 public:
  explicit CQvIPModuleBase(int resourceId) : m_nodeMap(resourceId) {}
  CQvIPModuleBase(const CQvIPModuleBase&) = delete;
  CQvIPModuleBase& operator=(const CQvIPModuleBase&) = delete;

  void* RegisterCallback(IQvCallback* callback) override {
    return m_callbackManager.RegisterCallback(callback);
  }
  void DeregisterCallback(void* handle) override { m_callbackManager.DeregisterCallback(handle); }

  GenApi::INodeMap* GetINodeMap() override { return m_nodeMap.Get(*this); }

  void Release() override { delete this; }

  // GenApi::IPort. An access is cut into registers; where there is none it skips to the next
  // address that 4 divides and leaves the bytes between as they are, so it never fails by itself.
  void Read(void* buffer, std::int64_t address, std::int64_t length) override {
    Transfer(static_cast<unsigned char*>(buffer), address, length,
             [this](auto... access) { return mRead(access...); });
  }
  void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
    Transfer(static_cast<const unsigned char*>(buffer), address, length,
             [this](auto... access) { return mWrite(access...); });
  }
  GenApi::EAccessMode GetAccessMode() const override { return m_accessMode; }

  /// One access to a register. On entry `*length` is the number of bytes still wanted, on return
  /// the number taken. False if no register is served at `address`.
  virtual bool mRead(unsigned char* buffer, std::int64_t address, std::int64_t* length) {
    static constexpr Register<CQvIPModuleBase> kSizeTSize[]{
        {.address = 0,
         .size = 1,
         .read = [](const CQvIPModuleBase&, unsigned char* bytes) { *bytes = sizeof(std::size_t); },
         .rules = kFullLength}};
    return Registers::Read<CQvIPModuleBase>(kSizeTSize, *this, buffer, address, length);
  }
  virtual bool mWrite(const unsigned char*, std::int64_t, std::int64_t*) { return false; }

  /// An image buffer for use inside the module; give it back by ReleaseTempolaryBuffer().
  IQvImageBufferReleasable* GetTempolaryBuffer() { return m_temporaryBuffers.Get(); }
  void ReleaseTempolaryBuffer(IQvImageBufferReleasable* buffer) {
    m_temporaryBuffers.Release(buffer);
  }

 protected:
  /// The whole of a typed setter: check the range, store, and if that changed the value make the
  /// node map forget the old one.
  template <class T>
  void Set(Setting<T>& setting, T value) {
    if (setting.StoreChecked(value)) m_nodeMap.Invalidate(setting.Node());
  }

  /// The same for values that the module finds itself, in range or not.
  template <class T>
  void SetFound(Setting<T>& setting, T value) {
    if (setting.Store(value)) m_nodeMap.Invalidate(setting.Node());
  }
  /// The same for a setting that ends by itself: changes it if it still is `expected`.
  template <class T>
  void End(Setting<T>& setting, T expected, T value) {
    if (setting.Replace(expected, value)) m_nodeMap.Invalidate(setting.Node());
  }

  CQvModuleNodeMap& NodeMap() { return m_nodeMap; }
  CQvCallbackManager& CallbackManager() { return m_callbackManager; }

  /// Guards what handlers prepare and keep between images. Taken before any other lock.
  GenApi::CLock m_parameterLock;

 private:
  template <class Byte, class Access>
  static void Transfer(Byte* buffer, std::int64_t address, std::int64_t length, Access access) {
    while (length > 0) {
      std::int64_t taken = length;
      if (!access(buffer, address, &taken) || taken <= 0) taken = 4 - (address & 3);
      // Behind the last address there is no register either.
      if (taken >= length || __builtin_add_overflow(address, taken, &address)) return;
      buffer += taken;
      length -= taken;
    }
  }

  const GenApi::EAccessMode m_accessMode = GenApi::RW;
  CQvCallbackManager m_callbackManager;
  CQvModuleNodeMap m_nodeMap;
  CQvTemporaryBuffers m_temporaryBuffers;
};

/// A module whose registers stand in its table `m_cRegisters`.
///
/// @tparam Module  the module's class; has `static const Register<Module> m_cRegisters[]`, of any
///                 number of rows, given by `RegisterTable()`
template <class Module, class TISpecificIPModule>
class CQvIPModule : public CQvIPModuleBase<TISpecificIPModule> {
  using Base = CQvIPModuleBase<TISpecificIPModule>;

 public:
  using Base::Base;

  bool mRead(unsigned char* buffer, std::int64_t address, std::int64_t* length) override {
    return Registers::Read<Module>(Module::RegisterTable(), static_cast<const Module&>(*this),
                                   buffer, address, length) ||
           Base::mRead(buffer, address, length);
  }
  bool mWrite(const unsigned char* buffer, std::int64_t address, std::int64_t* length) override {
    return Registers::Write<Module>(Module::RegisterTable(), static_cast<Module&>(*this), buffer,
                                    address, length) ||
           Base::mWrite(buffer, address, length);
  }
};

}  // namespace QvApi
