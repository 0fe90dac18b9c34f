// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvGraphDataBufferList.h"

#include <Base/GCException.h>

#include <algorithm>
#include <cstdint>
#include <new>

#include "QvApi_IP/QvMemoryReport.h"
#include "QvApi_IP/QvSetting.h"

namespace QvApi {

void CQvGraphDataBufferList::CheckIndex(std::size_t nIndex) const {
  CheckRange("nIndex", static_cast<std::int64_t>(nIndex), 0,
             static_cast<std::int64_t>(m_buffers.size()) - 1, RangeWords::Selector);
}

const CQvGraphDataBuffer* CQvGraphDataBufferList::GetIQvGraphDataBuffer(std::size_t nIndex) const {
  CheckIndex(nIndex);
  return m_buffers[nIndex].get();
}

CQvGraphDataBuffer* CQvGraphDataBufferList::GetIQvGraphDataBuffer(std::size_t nIndex) {
  CheckIndex(nIndex);
  return m_buffers[nIndex].get();
}

void CQvGraphDataBufferList::CreateBufferList(std::size_t nCount) {
  while (m_buffers.size() > nCount) m_buffers.pop_back();
  WithMemoryReport([&] {
    m_buffers.reserve(nCount);
    while (m_buffers.size() < nCount)
      m_buffers.push_back(std::make_unique<CQvGraphDataBuffer>(m_allocator));
  });
}

void CQvGraphDataBufferList::CopyGraphDataBufferList(const IQvGraphDataBufferList* pSource) {
  if (!pSource) throw INVALID_ARGUMENT_EXCEPTION("pSource is NULL.");
  if (pSource == this) return;
  WithMemoryReport([&] {
    std::vector<const IQvGraphDataBuffer*> sources;
    for (std::size_t i = 0; i < pSource->GetGraphDataBufferCount(); ++i)
      if (const auto* source = pSource->GetIQvGraphDataBuffer(i); source->GetBufferSize() != 0)
        sources.push_back(source);
    CreateBufferList(sources.size());
    for (std::size_t i = 0; i < sources.size(); ++i) m_buffers[i]->CopyGraphData(sources[i]);
  });
}

void CQvGraphDataBufferList::Allocate(void** ppBuffer, _EQvNumberDataType_t eDataType,
                                      std::size_t count, void**) {
  const std::size_t bits = eDataType & 0xFFFFU;
  std::size_t size = 0;
  *ppBuffer = __builtin_mul_overflow(bits, count, &size) || size < 8
                  ? nullptr
                  : ::operator new(size / 8, std::nothrow);
}

void CQvGraphDataBufferList::Deallocate(void* pBuffer, _EQvNumberDataType_t, std::size_t, void*) {
  ::operator delete(pBuffer);
}

}  // namespace QvApi
