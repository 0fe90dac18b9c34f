// SPDX-License-Identifier: MIT
#pragma once

#include <GenApi/GenApi.h>

#include <vector>

#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// Image buffers that a module uses again and again. They keep their memory between uses, so that
/// a module working on images of one size stops allocating after the first. Safe from any thread.
class CQvTemporaryBuffers {
 public:
  CQvTemporaryBuffers() = default;
  CQvTemporaryBuffers(const CQvTemporaryBuffers&) = delete;
  CQvTemporaryBuffers& operator=(const CQvTemporaryBuffers&) = delete;
  /// Releases all buffers, in use or not.
  ~CQvTemporaryBuffers();

  /// The buffer that has been free longest, or a new one.
  /// @throws GenICam::BadAllocException
  IQvImageBufferReleasable* Get();
  /// Takes back what Get() gave.
  void Release(IQvImageBufferReleasable* buffer);

 private:
  GenApi::CLock m_lock;
  std::vector<IQvImageBufferReleasable*> m_all;
  std::vector<IQvImageBufferReleasable*>
      m_free;  ///< Has room for all, so that Release() cannot fail.
};

/// Holds one temporary buffer of a module for a scope.
template <class Module>
class TemporaryBuffer {
 public:
  explicit TemporaryBuffer(Module& module)
      : m_module(module), m_buffer(module.GetTempolaryBuffer()) {}
  TemporaryBuffer(const TemporaryBuffer&) = delete;
  TemporaryBuffer& operator=(const TemporaryBuffer&) = delete;
  ~TemporaryBuffer() { m_module.ReleaseTempolaryBuffer(m_buffer); }

  IQvImageBufferReleasable* operator->() const { return m_buffer; }
  IQvImageBufferReleasable* Get() const { return m_buffer; }

 private:
  Module& m_module;
  IQvImageBufferReleasable* const m_buffer;
};

}  // namespace QvApi
