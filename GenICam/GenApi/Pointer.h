// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>
#include <GenApi/IBoolean.h>
#include <GenApi/ICategory.h>
#include <GenApi/ICommand.h>
#include <GenApi/IEnumEntry.h>
#include <GenApi/IEnumeration.h>
#include <GenApi/IFloat.h>
#include <GenApi/IInteger.h>
#include <GenApi/INode.h>
#include <GenApi/IPort.h>
#include <GenApi/IRegister.h>
#include <GenApi/ISelector.h>
#include <GenApi/IString.h>
#include <GenApi/IValue.h>

namespace GenApi {

/// Refers to a node by one of its interfaces, or to nothing if the node lacks it. It owns nothing:
/// it must not be used once the node map is gone.
template <class T, class B = IBase>
class CPointer {
 public:
  CPointer() noexcept = default;
  CPointer(B* base) : m_pointer(dynamic_cast<T*>(base)) {}

  CPointer& operator=(B* base) {
    m_pointer = dynamic_cast<T*>(base);
    return *this;
  }

  bool IsValid() const noexcept { return m_pointer != nullptr; }
  operator T*() const noexcept { return m_pointer; }
  /// Both throw AccessException if the reference is empty.
  T* operator->() const { return &Checked(); }
  T& operator*() const { return Checked(); }

 private:
  T& Checked() const {
    if (m_pointer == nullptr) throw ACCESS_EXCEPTION("Feature not present (reference not valid)");
    return *m_pointer;
  }

  T* m_pointer = nullptr;
};

using CBasePtr = CPointer<IBase>;
using CNodePtr = CPointer<INode>;
using CValuePtr = CPointer<IValue>;
using CIntegerPtr = CPointer<IInteger>;
using CFloatPtr = CPointer<IFloat>;
using CBooleanPtr = CPointer<IBoolean>;
using CCommandPtr = CPointer<ICommand>;
using CStringPtr = CPointer<IString>;
using CEnumerationPtr = CPointer<IEnumeration>;
using CEnumEntryPtr = CPointer<IEnumEntry>;
using CCategoryPtr = CPointer<ICategory>;
using CSelectorPtr = CPointer<ISelector>;
using CRegisterPtr = CPointer<IRegister>;
using CPortPtr = CPointer<IPort>;

}  // namespace GenApi
