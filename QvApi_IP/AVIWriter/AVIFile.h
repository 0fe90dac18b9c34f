// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "QvApi_IP/AVIWriter/AVIFileHandles.h"
#include "QvApi_IP/AVIWriter/AVILayout.h"
#include "QvApi_IP/AVIWriter/VideoFile.h"
#include "QvApi_IP/QvJpegCompressor.h"

namespace QvApi {

/// The worker's loop, and what all AVI files share; a container says how a file is opened, gets its
/// frames, and is closed.
///
/// Frames of a file count from 0, missing ones too. A file takes frames until their number reaches
/// the maximum, it has no room for another frame, or writing fails; then comes the next name.
class CAVIFile : public CVideoFile {
 public:
  /// 10000 / `fps` as an integer is the time of a frame; above 10000 Hz the integer rate holds.
  void SetFPS(double fps) override;
  bool IsNeedsUpSideDown() override { return !m_codec.isJpeg; }
  int SetBitmapInfo(long width, long height, long linePitch, unsigned short bitCount, bool rgbOrder,
                    EQvColorMapType_t type, bool inversion, int phase) override;
  int AVIStart() override;

  /// Estimates the size of a file of so many frames.
  virtual std::uint64_t GetAVIFileSize(unsigned int frameBytes, unsigned int frameCount) const;

 protected:
  static constexpr int kCannotOpen = static_cast<int>(0xE0000009);

  CAVIFile(CBufferQueue<CFrameData>* requestQueue, CBufferQueue<CFrameData>* writeQueue,
           IAVIFileStatusListener* listener, const AVI::Codec& codec)
      : CVideoFile(requestQueue, writeQueue, listener), m_codec(codec) {}

  /// 0 or kCannotOpen.
  virtual int AVIFileOpen(const char* name, _UAVI_FILE_HANDLES* handles) = 0;
  /// Index 0 is the first frame of the file; numbers that are left out are missing frames. 0 or a
  /// value of errno.
  virtual int AddFrame(_UAVI_FILE_HANDLES* handles, IQvImage* image, unsigned int index) = 0;
  /// Completes the file; it is closed also if that fails. 0 or a value of errno.
  virtual int AVIFileClose(_UAVI_FILE_HANDLES* handles) = 0;
  virtual void AVIEnd() { m_compressor.reset(); }
  /// The file has no room for another frame.
  virtual bool IsFinished();

  /// Fills the head with what is known before the first frame.
  void MakeHead(const AVI::Container& container);
  /// Bytes of the head in use.
  std::size_t HeadSize() const { return AVI::kFixedHeadSize + m_tailSize; }
  /// Fields that are known when a file closes. `overhead` counts the bytes of a chunk that players
  /// shall make room for beside the largest frame.
  void UpdateHead(std::uint32_t overhead);

  /// Writes at the position, which moves on.
  int Append(_UAVI_FILE_HANDLES& handles, const void* bytes, std::size_t size);
  /// Writes `idx1`, which is `size` bytes from the middle of the first entry on: that one is not
  /// part of the index and holds the header of its chunk.
  int AppendIndex(_UAVI_FILE_HANDLES& handles, std::span<AVI::OldIndexEntry> index,
                  std::size_t size);

  /// The data of a frame's chunk, with kRoomBefore and kRoomBehind bytes around it. Empty if it
  /// could not be compressed.
  std::span<std::uint8_t> Encode(const IQvImage& image);

  const AVI::Codec& m_codec;
  BitmapInfoHeader m_bitmapInfo{};
  std::size_t m_frameBytes = 0;
  std::uint64_t m_writePosition = 0;
  std::uint64_t m_projectedFileSize = 0;
  AVI::Head m_head{};
  std::uint32_t m_frameCount = 0;    ///< Of the open file or else the last, with missing ones.
  std::uint32_t m_largestChunk = 0;  ///< Bytes of the largest frame.

 private:
  int mWork() override;
  bool WaitFor(void* event);
  template <class Step>
  void Guard(Step step) noexcept;
  bool RecordFile(const GenICam::gcstring& name);
  bool RecordFrames(_UAVI_FILE_HANDLES& handles);
  int RecordFrame(_UAVI_FILE_HANDLES& handles, CFrameData& frame, std::uint32_t index);
  void SwapRedAndBlue(std::uint8_t* pixels) const;

  std::uint32_t m_rate = 0;
  std::uint32_t m_scale = 1;
  BitmapPalette m_palette{};
  long m_linePitch = 0;
  bool m_rgbOrder = false;
  std::size_t m_tailSize = 0;
  int m_lastResult = 0;
  std::unique_ptr<CQvJpegCompressor> m_compressor;
  std::array<std::uint8_t, kRoomBefore + kRoomBehind> m_emptyFrame{};
};

/// Chunks of AVI 2.0 fill blocks of this size.
inline constexpr std::uint32_t kBlock = 2048;

/// The frame and its chunk header as one piece of memory: writes the header in front of `data` and,
/// if the size is odd, a pad byte behind it, which is a "0".
std::span<std::uint8_t> MakeChunk(AVI::FourCC code, std::span<std::uint8_t> data);

/// Puts a chunk `JUNK` of zeros behind `bytes`, so that the whole fills blocks. There must be
/// room for it.
std::span<std::uint8_t> PadWithJunk(std::span<std::uint8_t> bytes);

/// A container for frames of one kind.
template <class Container, const AVI::Codec& codec>
class CodedAVIFile final : public Container {
 public:
  CodedAVIFile(CBufferQueue<CFrameData>* requestQueue, CBufferQueue<CFrameData>* writeQueue,
               IAVIFileStatusListener* listener)
      : Container(requestQueue, writeQueue, listener, codec) {}
  ~CodedAVIFile() override { this->Stop(); }
};

}  // namespace QvApi
