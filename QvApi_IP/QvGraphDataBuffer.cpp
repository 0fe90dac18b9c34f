// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvGraphDataBuffer.h"

#include <Base/GCException.h>

#include <algorithm>
#include <cstdint>
#include <new>

#include "QvApi_IP/QvInputFile.h"
#include "QvApi_IP/QvMemoryReport.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvApi_IP/QvSetting.h"

namespace QvApi {
namespace {

/// Bits of so many elements.
std::size_t BitsOf(_EQvNumberDataType_t eDataType, std::size_t count) {
  const std::size_t bits = eDataType & 0xFFFFU;
  if (bits != 0 && count > SIZE_MAX / bits) throw std::bad_alloc();
  return bits * count;
}

void CheckKey(_EQvGraphDataInfoUint32_t eGDIU) {
  CheckRange("eGDIU", eGDIU, 0, QvGraphDataInfoUint32_SampleCount, RangeWords::Selector);
}
void CheckKey(_EQvGraphDataInfoFloat64_t eGDIF) {
  CheckRange("eGDIF", eGDIF, 0, -1, RangeWords::Selector);
}

void CheckHasData(bool hasData) {
  if (!hasData) throw RUNTIME_EXCEPTION("There is no available graph data.");
}

}  // namespace

void CheckNumberDataType(_EQvNumberDataType_t eDataType) {
  if (eDataType != QvNumberDataType_uint32)
    throw INVALID_ARGUMENT_EXCEPTION("eDataType isn't  QvNumberDataType_uint32.");
}

CQvGraphDataBuffer::CQvGraphDataBuffer(IQvSpecificTypeAllocator* allocator)
    : m_allocator(allocator ? allocator : this) {}

CQvGraphDataBuffer::~CQvGraphDataBuffer() { DestroyBuffer(); }

IQvGraphData* CQvGraphDataBuffer::GetIQvGraphData() {
  CheckHasData(m_dataCount != 0);
  return this;
}

const IQvGraphData* CQvGraphDataBuffer::GetIQvGraphData() const {
  CheckHasData(m_dataCount != 0);
  return this;
}

void CQvGraphDataBuffer::CopyGraphData(const IQvGraphDataBuffer* pSource) {
  const auto* source = dynamic_cast<const CQvGraphDataBuffer*>(pSource);
  if (!source) throw INVALID_ARGUMENT_EXCEPTION("pSource is no graph data buffer.");
  CheckHasData(source->m_dataCount != 0);
  if (source == this) return;
  Resize(source->m_numberDataType, source->m_dataCount, source->m_graphDataType);
  WithMemoryReport([&] {
    m_infoUint32 = source->m_infoUint32;
    m_infoFloat64 = source->m_infoFloat64;
  });
  std::copy_n(source->Elements(), m_dataCount, Elements());
}

void CQvGraphDataBuffer::Resize(_EQvNumberDataType_t eDataType, std::size_t nCount,
                                _EQvGraphDataType_t eGraphDataType) {
  CheckNumberDataType(eDataType);
  if (eGraphDataType != m_graphDataType || nCount != m_dataCount) {
    DestroyBuffer();
    WithMemoryReport([&] {
      const std::size_t bits = BitsOf(eDataType, nCount);
      m_allocator->Allocate(&m_data, eDataType, nCount, &m_context);
      if (!m_data && nCount != 0) throw std::bad_alloc();
      m_dataSize = bits / 8;
    });
    m_dataCount = nCount;
    m_graphDataType = eGraphDataType;
  }
  Clear();
}

void CQvGraphDataBuffer::Clear() {
  std::fill_n(Elements(), m_dataCount, 0U);
  m_infoUint32.clear();
  m_infoFloat64.clear();
}

void CQvGraphDataBuffer::DestroyBuffer() {
  if (m_data) m_allocator->Deallocate(m_data, m_numberDataType, m_dataCount, m_context);
  m_data = m_context = nullptr;
  m_dataCount = m_dataSize = 0;
  m_graphDataType = QvGraphDataType_Undefined;
  m_infoUint32.clear();
  m_infoFloat64.clear();
}

void CQvGraphDataBuffer::Allocate(void** ppBuffer, _EQvNumberDataType_t eDataType,
                                  std::size_t count, void**) {
  const std::size_t size = BitsOf(eDataType, count) / 8;
  if (size != 0) m_ownMemory.resize(size);
  *ppBuffer = size != 0 ? m_ownMemory.data() : nullptr;
}

void CQvGraphDataBuffer::Deallocate(void* pBuffer, _EQvNumberDataType_t, std::size_t, void*) {
  if (pBuffer == m_ownMemory.data()) m_ownMemory.clear();
}

const std::uint32_t* CQvGraphDataBuffer::Peak() const {
  return m_dataCount == 0 ? nullptr : std::max_element(Elements(), Elements() + m_dataCount);
}

std::uint32_t CQvGraphDataBuffer::GetGraphDataInfoUint32(_EQvGraphDataInfoUint32_t eGDIU) const {
  CheckKey(eGDIU);
  if (const auto found = m_infoUint32.find(eGDIU); found != m_infoUint32.end())
    return found->second;
  if (m_graphDataType == QvGraphDataType_Undefined) {
    const std::uint32_t* peak = Peak();
    if (eGDIU == QvGraphDataInfoUint32_PeakPosition)
      return peak ? static_cast<std::uint32_t>(peak - Elements()) : 0;
    if (eGDIU == QvGraphDataInfoUint32_PeakValue) return peak ? *peak : 0;
  }
  throw RUNTIME_EXCEPTION("Not supported information for this data type.");
}

double CQvGraphDataBuffer::GetGraphDataInfoFloat64(_EQvGraphDataInfoFloat64_t eGDIF) const {
  CheckKey(eGDIF);
  return 0;
}

void CQvGraphDataBuffer::SetGraphDataInfoUint32(_EQvGraphDataInfoUint32_t eGDIU,
                                                std::uint32_t nValue) {
  CheckKey(eGDIU);
  WithMemoryReport([&] { m_infoUint32[eGDIU] = nValue; });
}

void CQvGraphDataBuffer::SetGraphDataInfoFloat64(_EQvGraphDataInfoFloat64_t eGDIF, double) {
  CheckKey(eGDIF);
}

namespace {

template <class Entries>
bool SaveEntries(std::FILE* file, const Entries& entries) {
  return std::ranges::all_of(entries, [file](const auto& entry) {
    return WriteBytes(file, &entry.first, sizeof(entry.first)) &&
           WriteBytes(file, &entry.second, sizeof(entry.second));
  });
}

/// Where a key stands twice, the first one holds.
template <class Entries>
bool LoadEntries(std::FILE* file, std::uint32_t count, Entries& entries) {
  entries.clear();
  for (; count != 0; --count) {
    typename Entries::key_type key{};
    typename Entries::mapped_type value{};
    if (!ReadRecord(file, key) || !ReadRecord(file, value)) return false;
    entries.emplace(key, value);
  }
  return true;
}

}  // namespace

bool CQvGraphDataBuffer::SaveQvRaw(std::FILE* file) const {
  return WriteBytes(file, m_data, m_dataSize) && SaveEntries(file, m_infoUint32) &&
         SaveEntries(file, m_infoFloat64);
}

bool CQvGraphDataBuffer::LoadQvRaw(std::FILE* file, std::uint32_t uint32Entries,
                                   std::uint32_t float64Entries) {
  return ReadBytes(file, m_data, m_dataSize) && LoadEntries(file, uint32Entries, m_infoUint32) &&
         LoadEntries(file, float64Entries, m_infoFloat64);
}

}  // namespace QvApi
