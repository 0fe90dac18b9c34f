// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>

#include "QvApi_IP/AVIWriter/BufferQueue.h"
#include "QvApi_IP/AVIWriter/FrameData.h"
#include "QvApi_IP/AVIWriter/IAVIFileStatusListener.h"
#include "QvApi_IP/ColorMap.h"
#include "QvSDKCommon/Worker.h"

namespace QvApi {

/// The worker of a recording: takes frames from one queue, writes them into files, and puts them
/// back into another. What a filer needs of it; settings are made before Start().
class CVideoFile : public CWorker {
 public:
  /// What SetBitmapInfo() answers while the worker runs.
  static constexpr int kIsRunning = 10012;

  /// Queues and listener must outlive the object.
  CVideoFile(CBufferQueue<CFrameData>* requestQueue, CBufferQueue<CFrameData>* writeQueue,
             IAVIFileStatusListener* listener)
      : CWorker("QvApi_IP_Video"),
        m_writeQueue(writeQueue),
        m_requestQueue(requestQueue),
        m_listener(listener) {}

  /// Quality of compressed frames; above 100 counts as 100.
  void SetQuality(unsigned int quality) { m_quality = std::min(quality, 100U); }
  /// Frame numbers, also of frames that are missing, that one file holds; from 1 to 2^32 - 1.
  void SetMaximumFrameCount(std::uint64_t count) {
    m_maximumFrameCount = std::clamp<std::uint64_t>(count, 1, UINT32_MAX);
  }
  virtual void SetFPS(double fps) = 0;

  /// Frames must come with the last line first.
  virtual bool IsNeedsUpSideDown() { return false; }

  /// What all frames have in common. Frames of 8 bits get the colours of the map where the file
  /// stores them uncompressed.
  /// @param rgbOrder  frames of 24 bits have red first
  /// @return 0, or kIsRunning, and then nothing changes
  virtual int SetBitmapInfo(long width, long height, long linePitch, unsigned short bitCount,
                            bool rgbOrder, EQvColorMapType_t type, bool inversion, int phase) = 0;

  /// Prepares what all files of the recording share, before Start(). 0 if that worked.
  virtual int AVIStart() { return 0; }

  /// Signalled while no worker is on its way: set by its end, reset by who starts it.
  CEventObject& FinishedEvent() { return m_finishedEvent; }

 protected:
  /// Bytes that no file exceeds.
  virtual std::uint64_t MaximumFileSize() { return m_maximumFileSize; }

  /// Sets the maximum to what the file system of `path` and its free space allow.
  void CheckFileSystem(const char* path);

  CBufferQueue<CFrameData>* const m_writeQueue;
  CBufferQueue<CFrameData>* const m_requestQueue;
  IAVIFileStatusListener* const m_listener;
  unsigned int m_quality = 75;
  std::uint64_t m_maximumFileSize = 0x80000000;
  std::uint64_t m_maximumFrameCount = 600;
  CEventObject m_finishedEvent{nullptr, true, true, nullptr};
};

}  // namespace QvApi
