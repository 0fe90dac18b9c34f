// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvFilterPtrList.h"

#include <Base/GCException.h>

#include <new>

#include "QvApi_IP/QvSetting.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

template <class T, class UT>
CQvAutoPtrArray<T, UT>::CQvAutoPtrArray() = default;

template <class T, class UT>
CQvAutoPtrArray<T, UT>::~CQvAutoPtrArray() {
  for (T* item : m_items)
    if (item) item->Release();
}

template <class T, class UT>
std::size_t CQvAutoPtrArray<T, UT>::Register(T* item) {
  try {
    m_items.push_back(item);
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
  return m_items.size() - 1;
}

template <class T, class UT>
T* CQvAutoPtrArray<T, UT>::Deregister(std::size_t index) {
  CheckIndex(index);
  T* item = m_items[index];
  m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(index));
  return item;
}

template <class T, class UT>
std::size_t CQvAutoPtrArray<T, UT>::GetSize() const {
  return m_items.size();
}

template <class T, class UT>
UT* CQvAutoPtrArray<T, UT>::operator[](std::size_t index) const {
  CheckIndex(index);
  UT* pUT = m_items[index];
  QV_ASSERT((pUT) != NULL);
  return pUT;
}

template <class T, class UT>
void CQvAutoPtrArray<T, UT>::CheckIndex(std::size_t index) const {
  CheckRange("nIndex", static_cast<std::int64_t>(index), 0,
             static_cast<std::int64_t>(m_items.size()) - 1, RangeWords::Selector);
}

template class CQvAutoPtrArray<IQvFilterReleasable, IQvFilter>;

CIQvFilterPtrArray::~CIQvFilterPtrArray() { CIQvFilterPtrArray::Release(); }

IQvImage* CIQvFilterPtrArray::Filter(IQvImage* image) {
  for (std::size_t i = 0; i < GetSize(); ++i) image = (*this)[i]->Filter(image);
  return image;
}

void CIQvFilterPtrArray::Release() {
  while (GetSize() != 0)
    if (IQvFilterReleasable* filter = Deregister(0)) filter->Release();
}

}  // namespace QvApi
