// SPDX-License-Identifier: MIT
#pragma once

#include <type_traits>

namespace QvApi {

/// Owns one object that ends by Release(), and gives access to it as a `UT`.
///
/// @tparam T   the releasable interface, such as IQvImageBufferReleasable
/// @tparam UT  the interface to use, such as IQvImageBuffer
template <class T, class UT>
class CQvAutoPtr {
 public:
  CQvAutoPtr() = default;
  explicit CQvAutoPtr(T* object) : m_object(object) {}
  CQvAutoPtr(const CQvAutoPtr&) = delete;
  CQvAutoPtr& operator=(const CQvAutoPtr&) = delete;
  CQvAutoPtr(CQvAutoPtr&& other) noexcept : m_object(other.Detach()) {}
  CQvAutoPtr& operator=(CQvAutoPtr&& other) noexcept {
    if (this != &other) Reset(other.Detach());
    return *this;
  }
  virtual ~CQvAutoPtr() { Reset(); }

  /// Releases the object held and takes `object` instead. What Release() throws is swallowed, since
  /// nobody is left to hear of it.
  void Reset(T* object = nullptr) noexcept {
    T* old = m_object;
    m_object = object;
    try {
      if (old) old->Release();
    } catch (...) {
    }
  }

  /// Gives the object to the caller.
  T* Detach() noexcept {
    T* object = m_object;
    m_object = nullptr;
    return object;
  }

  UT* Get() const {
    if constexpr (std::is_convertible_v<T*, UT*>)
      return m_object;
    else
      return dynamic_cast<UT*>(m_object);
  }
  T* Releasable() const { return m_object; }
  UT* operator->() const { return Get(); }
  explicit operator bool() const { return m_object != nullptr; }

 private:
  T* m_object = nullptr;
};

}  // namespace QvApi
