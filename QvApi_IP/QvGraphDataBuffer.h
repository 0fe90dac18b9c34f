// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstdio>
#include <map>
#include <vector>

#include "QvApi_IP/IQvGraphDataBuffer.h"

namespace QvApi {

class IQvGraphDataBufferResizableReleasableInside : public IQvGraphDataBufferResizableReleasable {
 public:
  using IQvGraphDataBufferResizable::Resize;
  virtual void Resize(_EQvNumberDataType_t eDataType, std::size_t nCount,
                      _EQvGraphDataType_t eGraphDataType) = 0;
};

class IQvGraphDataInside : public IQvGraphData {};

/// Throws InvalidArgumentException unless arrays can have elements of this type.
void CheckNumberDataType(_EQvNumberDataType_t eDataType);

class CQvGraphDataBuffer final : public IQvGraphDataBufferResizableReleasableInside,
                                 public IQvSpecificTypeAllocator,
                                 public IQvGraphDataInside {
 public:
  using InfoUint32 = std::map<_EQvGraphDataInfoUint32_t, std::uint32_t>;
  using InfoFloat64 = std::map<_EQvGraphDataInfoFloat64_t, double>;

  /// @param allocator  must outlive the buffer; null for memory of the buffer's own
  explicit CQvGraphDataBuffer(IQvSpecificTypeAllocator* allocator);
  CQvGraphDataBuffer(const CQvGraphDataBuffer&) = delete;
  CQvGraphDataBuffer& operator=(const CQvGraphDataBuffer&) = delete;
  ~CQvGraphDataBuffer() override;

  IQvGraphData* GetIQvGraphData() override;
  const IQvGraphData* GetIQvGraphData() const override;
  std::size_t GetBufferSize() const override { return m_dataSize; }
  const void* GetBufferPtr() const override { return m_data; }
  void* GetBufferPtr() override { return m_data; }
  void CopyGraphData(const IQvGraphDataBuffer* pSource) override;

  void Resize(_EQvNumberDataType_t eDataType, std::size_t nCount) override {
    Resize(eDataType, nCount, QvGraphDataType_Undefined);
  }
  /// Of the same size and type as before, the array keeps its memory.
  void Resize(_EQvNumberDataType_t eDataType, std::size_t nCount,
              _EQvGraphDataType_t eGraphDataType) override;
  void SetGraphDataInfoUint32(_EQvGraphDataInfoUint32_t eGDIU, std::uint32_t nValue) override;
  void SetGraphDataInfoFloat64(_EQvGraphDataInfoFloat64_t eGDIF, double dValue) override;

  void Release() override { delete this; }

  // The buffer's own memory.
  void Allocate(void** ppBuffer, _EQvNumberDataType_t eDataType, std::size_t count,
                void** ppContext) override;
  void Deallocate(void* pBuffer, _EQvNumberDataType_t eDataType, std::size_t count,
                  void* pContext) override;
  void OnDeregister() override {}

  _EQvGraphDataType_t GetGraphDataType() const override { return m_graphDataType; }
  _EQvNumberDataType_t GetNumberDataType() const override { return m_numberDataType; }
  std::size_t GetDataCount() const override { return m_dataCount; }
  void* GetDataPtr() override { return m_data; }
  const void* GetDataPtr() const override { return m_data; }
  void* GetUserContext() const override { return m_context; }
  std::uint32_t GetGraphDataInfoUint32(_EQvGraphDataInfoUint32_t eGDIU) const override;
  double GetGraphDataInfoFloat64(_EQvGraphDataInfoFloat64_t eGDIF) const override;

  /// Null if there are none.
  std::uint32_t* Elements() {
    return m_dataCount != 0 ? static_cast<std::uint32_t*>(m_data) : nullptr;
  }
  const std::uint32_t* Elements() const {
    return const_cast<CQvGraphDataBuffer*>(this)->Elements();
  }
  /// The first largest element; null if there is none.
  const std::uint32_t* Peak() const;

  /// All elements become 0, and nothing is known about them.
  void Clear();
  /// Gives the memory back.
  void DestroyBuffer();

  // The part of a file that tells of this array, behind the records.
  const InfoUint32& Uint32Entries() const { return m_infoUint32; }
  const InfoFloat64& Float64Entries() const { return m_infoFloat64; }
  bool SaveQvRaw(std::FILE* file) const;
  bool LoadQvRaw(std::FILE* file, std::uint32_t uint32Entries, std::uint32_t float64Entries);

 private:
  IQvSpecificTypeAllocator* const m_allocator;
  std::size_t m_dataCount = 0;
  _EQvNumberDataType_t m_numberDataType = QvNumberDataType_uint32;
  std::size_t m_dataSize = 0;
  void* m_data = nullptr;
  void* m_context = nullptr;
  _EQvGraphDataType_t m_graphDataType = QvGraphDataType_Undefined;
  InfoUint32 m_infoUint32;
  InfoFloat64 m_infoFloat64;
  std::vector<unsigned char> m_ownMemory;
};

}  // namespace QvApi
