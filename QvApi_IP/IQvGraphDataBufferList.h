// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstddef>

#include "QvApi_IP/IQvGraphDataBuffer.h"

namespace QvApi {

/// The kinds of graph data files.
enum _EQvGraphDataFileFormat_t : unsigned {
  QvGraphDataFileFormat_QvRaw = 0,  ///< Binary; keeps everything and can be loaded.
  QvGraphDataFileFormat_Csv = 1,    ///< Text, a column for each array.
};

/// Arrays in order, owned by the list. Used by one thread at a time.
class QVAPI_EXPORT IQvGraphDataBufferList {
 public:
  virtual ~IQvGraphDataBufferList() = default;
  virtual std::size_t GetGraphDataBufferCount() const = 0;
  /// @throws GenICam::OutOfRangeException  there is no such array
  virtual const IQvGraphDataBuffer* GetIQvGraphDataBuffer(std::size_t nIndex) const = 0;
  /// @throws GenICam::OutOfRangeException  there is no such file format
  virtual bool IsSaveSupported(_EQvGraphDataFileFormat_t eSGDF) const = 0;
  /// Writes all arrays to a file, making the directories that lead to it. The file takes its name
  /// when it is complete.
  ///
  /// In a text file a line has the elements of all arrays that reach so far, one behind the other:
  /// where arrays differ in length, later columns move left.
  /// @throws GenICam::OutOfRangeException  there is no such file format
  /// @throws GenICam::RuntimeException     "File %s is unwritable."
  virtual void Save(_EQvGraphDataFileFormat_t eSGDF, const GenICam::gcstring& strPath) const = 0;
  /// @throws GenICam::OutOfRangeException  there is no such file format
  virtual bool IsLoadSupported(_EQvGraphDataFileFormat_t eSGDF) const = 0;
  /// Replaces the arrays by those of a binary file. A file whose header or records contradict its
  /// length is refused before the list changes.
  /// @throws GenICam::RuntimeException          "File %s is unreadable.", or "File %s is
  ///                                            unwritable." if it cannot be opened
  /// @throws GenICam::InvalidArgumentException  its numbers are of an unknown type
  /// @throws GenICam::BadAllocException         no memory; the list is as far as it got
  virtual void Load(const GenICam::gcstring& strPath) = 0;
};

class QVAPI_EXPORT IQvGraphDataBufferListResizable : public IQvGraphDataBufferList {
 public:
  /// Makes the list `nCount` arrays long. Those that stay keep their data, new ones are empty.
  /// @throws GenICam::BadAllocException  no memory; what has been appended stays
  virtual void CreateBufferList(std::size_t nCount) = 0;
  /// Takes over all arrays of `pSource` that have elements; those without are dropped.
  /// @throws GenICam::InvalidArgumentException  `pSource` is null
  /// @throws GenICam::BadAllocException         no memory
  virtual void CopyGraphDataBufferList(const IQvGraphDataBufferList* pSource) = 0;
  using IQvGraphDataBufferList::GetIQvGraphDataBuffer;
  /// @throws GenICam::OutOfRangeException  there is no such array
  virtual IQvGraphDataBufferResizable* GetIQvGraphDataBuffer(std::size_t nIndex) = 0;
};

class QVAPI_EXPORT IQvGraphDataBufferListResizableReleasable
    : public IQvGraphDataBufferListResizable,
      public IQvReleasable {};

}  // namespace QvApi
