// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "QvSDKCommon/CQvAutoPtr.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// Bytes around the pixels of a frame that its container fills, so that a whole chunk leaves in one
/// write: the header of the chunk in front, and behind it a pad byte and a chunk `JUNK` that
/// reaches the next multiple of 2048.
inline constexpr std::size_t kRoomBefore = 8;
inline constexpr std::size_t kRoomBehind = 2056;

/// One frame on its way to a file. Used by one thread at a time.
class CFrameData final : public IQvAllocator {
 public:
  CFrameData() : m_buffer(CreateIQvImageBuffer(this)) {}
  CFrameData(const CFrameData&) = delete;
  CFrameData& operator=(const CFrameData&) = delete;

  IQvImageBuffer* GetBuffer() const { return m_buffer.Get(); }

  /// Number of the frame in the recording, without wraps.
  std::uint64_t GetFrameIndex() const { return m_frameIndex; }
  void SetFrameIndex(std::uint64_t index) { m_frameIndex = index; }

  // IQvAllocator: memory of the buffer. It is zeroed, so that padding of lines, which nobody
  // writes, carries no old memory into a file.
  void Allocate(void** buffer, std::size_t size, void** /*context*/) override {
    m_block.reset(size > SIZE_MAX - kRoom
                      ? nullptr
                      : static_cast<std::uint8_t*>(std::calloc(size + kRoom, 1)));
    *buffer = m_block ? m_block.get() + kRoomBefore : nullptr;
  }
  void Deallocate(void* /*buffer*/, std::size_t /*size*/, void* /*context*/) override {
    m_block.reset();
  }
  void OnDeregister() override {}

 private:
  static constexpr std::size_t kRoom = kRoomBefore + kRoomBehind;

  std::unique_ptr<std::uint8_t[], decltype(&std::free)> m_block{nullptr, &std::free};
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> m_buffer;  ///< Ends before its memory.
  std::uint64_t m_frameIndex = 0;
};

}  // namespace QvApi
