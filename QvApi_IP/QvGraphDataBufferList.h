// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <vector>

#include "QvApi_IP/IQvGraphDataBufferList.h"
#include "QvApi_IP/QvGraphDataBuffer.h"

namespace QvApi {

class IQvGraphDataBufferListResizableReleasableInside
    : public IQvGraphDataBufferListResizableReleasable {};

class CQvGraphDataBufferList final : public IQvGraphDataBufferListResizableReleasableInside,
                                     public IQvSpecificTypeAllocator {
 public:
  using Writer = void (CQvGraphDataBufferList::*)(const GenICam::gcstring& path,
                                                  std::FILE* file) const;
  static const std::map<_EQvGraphDataFileFormat_t, Writer> m_mapWriters;

  /// @param allocator  of all arrays; must outlive the list; null for the heap
  explicit CQvGraphDataBufferList(IQvSpecificTypeAllocator* allocator)
      : m_allocator(allocator ? allocator : this) {}
  CQvGraphDataBufferList(const CQvGraphDataBufferList&) = delete;
  CQvGraphDataBufferList& operator=(const CQvGraphDataBufferList&) = delete;

  std::size_t GetGraphDataBufferCount() const override { return m_buffers.size(); }
  const CQvGraphDataBuffer* GetIQvGraphDataBuffer(std::size_t nIndex) const override;
  bool IsSaveSupported(_EQvGraphDataFileFormat_t eSGDF) const override;
  void Save(_EQvGraphDataFileFormat_t eSGDF, const GenICam::gcstring& strPath) const override;
  bool IsLoadSupported(_EQvGraphDataFileFormat_t eSGDF) const override;
  void Load(const GenICam::gcstring& strPath) override;

  void CreateBufferList(std::size_t nCount) override;
  void CopyGraphDataBufferList(const IQvGraphDataBufferList* pSource) override;
  CQvGraphDataBuffer* GetIQvGraphDataBuffer(std::size_t nIndex) override;

  void Release() override { delete this; }

  // The list's own memory.
  void Allocate(void** ppBuffer, _EQvNumberDataType_t eDataType, std::size_t count,
                void** ppContext) override;
  void Deallocate(void* pBuffer, _EQvNumberDataType_t eDataType, std::size_t count,
                  void* pContext) override;
  void OnDeregister() override {}

 private:
  void CheckIndex(std::size_t nIndex) const;
  void SaveQvRaw(const GenICam::gcstring& path, std::FILE* file) const;
  void SaveCsv(const GenICam::gcstring& path, std::FILE* file) const;
  void LoadQvRaw(const GenICam::gcstring& path, std::FILE* file);

  IQvSpecificTypeAllocator* const m_allocator;
  std::vector<std::unique_ptr<CQvGraphDataBuffer>> m_buffers;
};

}  // namespace QvApi
