// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvSDKCommon/IQvReleasable.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// What the elements of an array are. The low 16 bits are the width of one in bits.
enum _EQvNumberDataType_t : unsigned {
  QvNumberDataType_uint32 = 32,
};

/// What an array tells of an image.
enum _EQvGraphDataType_t : unsigned {
  QvGraphDataType_Undefined = 0,              ///< A plain array.
  QvGraphDataType_Histogram = 1,              ///< How many pixels have each value.
  QvGraphDataType_VerticalIntegration = 2,    ///< The sum of each column.
  QvGraphDataType_HorizontalIntegration = 3,  ///< The sum of each row.
};

/// The numbers that an array may have beside it.
enum _EQvGraphDataInfoUint32_t : unsigned {
  QvGraphDataInfoUint32_PixelComponent = 0,  ///< An EQvPixelComponent_t; 0 if unknown.
  QvGraphDataInfoUint32_FullScale = 1,       ///< Largest value that an element can reach in theory.
  QvGraphDataInfoUint32_PeakPosition = 2,    ///< Index of the first largest element.
  QvGraphDataInfoUint32_PeakValue = 3,       ///< Value of the largest element.
  QvGraphDataInfoUint32_SampleCount = 4,     ///< Pixels added into one element of an integration.
};

/// There is no number of this kind yet.
enum _EQvGraphDataInfoFloat64_t : unsigned {};

/// Gives graph data buffers their memory: implement it to have the arrays in memory of your own. It
/// must outlive every buffer that uses it, and is called from the thread that uses the buffer.
class QVAPI_EXPORT IQvSpecificTypeAllocator {
 public:
  virtual ~IQvSpecificTypeAllocator() = default;
  /// Stores memory for `count` elements in `*ppBuffer` (null if there is none, or for a count of 0)
  /// and any value in `*ppContext`, which IQvGraphData::GetUserContext() answers.
  virtual void Allocate(void** ppBuffer, _EQvNumberDataType_t eDataType, std::size_t count,
                        void** ppContext) = 0;
  /// Takes back exactly what Allocate() gave, with the same count and context.
  virtual void Deallocate(void* pBuffer, _EQvNumberDataType_t eDataType, std::size_t count,
                          void* pContext) = 0;
  /// Reserved; not called.
  virtual void OnDeregister() = 0;
};

/// An array of numbers with what is known about it. Not synchronised.
class QVAPI_EXPORT IQvGraphData {
 public:
  virtual ~IQvGraphData() = default;
  virtual _EQvGraphDataType_t GetGraphDataType() const = 0;
  virtual _EQvNumberDataType_t GetNumberDataType() const = 0;
  virtual std::size_t GetDataCount() const = 0;
  /// The elements: std::uint32_t, as many as GetDataCount().
  virtual void* GetDataPtr() = 0;
  virtual const void* GetDataPtr() const = 0;
  /// What the allocator stored as context.
  virtual void* GetUserContext() const = 0;
  /// A plain array has its peak found at the call; all other numbers must have been set.
  /// @throws GenICam::OutOfRangeException  there is no such key
  /// @throws GenICam::RuntimeException     "Not supported information for this data type."
  virtual std::uint32_t GetGraphDataInfoUint32(_EQvGraphDataInfoUint32_t eGDIU) const = 0;
  /// @throws GenICam::OutOfRangeException  always: there is no key
  virtual double GetGraphDataInfoFloat64(_EQvGraphDataInfoFloat64_t eGDIF) const = 0;
};

/// Owner of the memory of one array.
class QVAPI_EXPORT IQvGraphDataBuffer {
 public:
  virtual ~IQvGraphDataBuffer() = default;
  /// The array, owned by the buffer.
  /// @throws GenICam::RuntimeException  "There is no available graph data."
  virtual IQvGraphData* GetIQvGraphData() = 0;
  virtual const IQvGraphData* GetIQvGraphData() const = 0;
  /// Bytes of the elements.
  virtual std::size_t GetBufferSize() const = 0;
  virtual const void* GetBufferPtr() const = 0;
  virtual void* GetBufferPtr() = 0;
  /// Takes over the array of `pSource`, a buffer of this library, and all that is known about it.
  /// @throws GenICam::RuntimeException          "There is no available graph data."
  /// @throws GenICam::InvalidArgumentException  `pSource` is null or another kind of object
  /// @throws GenICam::BadAllocException         no memory; the buffer is empty then
  virtual void CopyGraphData(const IQvGraphDataBuffer* pSource) = 0;
};

class QVAPI_EXPORT IQvGraphDataBufferResizable : public IQvGraphDataBuffer {
 public:
  /// Makes a plain array of `nCount` zeros, with nothing known about it. Of 0 elements there is no
  /// graph data.
  /// @throws GenICam::InvalidArgumentException  unknown type of elements
  /// @throws GenICam::BadAllocException         no memory; the buffer is empty then
  virtual void Resize(_EQvNumberDataType_t eDataType, std::size_t nCount) = 0;
  /// @throws GenICam::OutOfRangeException  there is no such key
  virtual void SetGraphDataInfoUint32(_EQvGraphDataInfoUint32_t eGDIU, std::uint32_t nValue) = 0;
  /// @throws GenICam::OutOfRangeException  always: there is no key
  virtual void SetGraphDataInfoFloat64(_EQvGraphDataInfoFloat64_t eGDIF, double dValue) = 0;
};

class QVAPI_EXPORT IQvGraphDataBufferResizableReleasable : public IQvGraphDataBufferResizable,
                                                           public IQvReleasable {};

}  // namespace QvApi
