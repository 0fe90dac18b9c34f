// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvTemporaryBuffers.h"

#include <Base/GCException.h>

#include <new>

#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {

CQvTemporaryBuffers::~CQvTemporaryBuffers() {
  GenApi::AutoLock lock(m_lock);
  for (IQvImageBufferReleasable* buffer : m_all) buffer->Release();
}

IQvImageBufferReleasable* CQvTemporaryBuffers::Get() {
  GenApi::AutoLock lock(m_lock);
  if (!m_free.empty()) {
    IQvImageBufferReleasable* buffer = m_free.front();
    m_free.erase(m_free.begin());
    return buffer;
  }
  try {
    CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> pBuffer(CreateIQvImageBuffer(nullptr));
    QV_ASSERT(pBuffer);
    m_free.reserve(m_all.size() + 1);
    m_all.push_back(pBuffer.Releasable());
    return pBuffer.Detach();
  } catch (const std::bad_alloc& error) {
    throw BAD_ALLOC_EXCEPTION("%s", error.what());
  }
}

void CQvTemporaryBuffers::Release(IQvImageBufferReleasable* buffer) {
  GenApi::AutoLock lock(m_lock);
  m_free.push_back(buffer);
}

}  // namespace QvApi
