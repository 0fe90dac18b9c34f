// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "QvApi_IP/IQvFilter.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// A list that owns objects which end by Release(). Belongs to one thread.
///
/// @tparam T   the releasable interface
/// @tparam UT  the interface to use
template <class T, class UT>
class QVAPI_EXPORT CQvAutoPtrArray {
 public:
  CQvAutoPtrArray();
  CQvAutoPtrArray(const CQvAutoPtrArray&) = delete;
  CQvAutoPtrArray& operator=(const CQvAutoPtrArray&) = delete;
  /// Releases the elements left.
  virtual ~CQvAutoPtrArray();

  /// Appends an object, which the list owns from now on, and returns its index.
  /// @throws GenICam::BadAllocException  the object stays the caller's
  virtual std::size_t Register(T* item);
  /// Takes an element out and gives it back to the caller. Later elements move up.
  /// @throws GenICam::OutOfRangeException
  virtual T* Deregister(std::size_t index);
  virtual std::size_t GetSize() const;
  /// @throws GenICam::OutOfRangeException
  virtual UT* operator[](std::size_t index) const;

 private:
  void CheckIndex(std::size_t index) const;

  std::vector<T*> m_items;
};

extern template class CQvAutoPtrArray<IQvFilterReleasable, IQvFilter>;

/// Filters applied to an image one after the other.
class QVAPI_EXPORT CIQvFilterPtrArray : public CQvAutoPtrArray<IQvFilterReleasable, IQvFilter> {
 public:
  ~CIQvFilterPtrArray() override;

  /// Calls the filters in order, each with what the one before returned, and returns the last
  /// result; `image` itself if there are no filters.
  virtual IQvImage* Filter(IQvImage* image);
  /// Releases all filters and leaves the list empty.
  virtual void Release();
};

}  // namespace QvApi
