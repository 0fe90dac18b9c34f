// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <vector>

#include "QvApi_IP/AVIWriter/AVIFile.h"

namespace QvApi {

/// AVI 2.0 (OpenDML): segments of up to about 1 GiB, each with an index of its own, a super index
/// of these in the head, and for old readers an `idx1` in the first file of a recording. Chunks of
/// frames begin at multiples of 2048 bytes. A missing frame is just an entry of an index.
class CAVIFile20 : public CAVIFile {
 public:
  CAVIFile20(CBufferQueue<CFrameData>* requestQueue, CBufferQueue<CFrameData>* writeQueue,
             IAVIFileStatusListener* listener, const AVI::Codec& codec);

  int AVIStart() override;
  std::uint64_t GetAVIFileSize(unsigned int frameBytes, unsigned int frameCount) const override;

 protected:
  int AVIFileOpen(const char* name, _UAVI_FILE_HANDLES* handles) override;
  int AddFrame(_UAVI_FILE_HANDLES* handles, IQvImage* image, unsigned int index) override;
  int AVIFileClose(_UAVI_FILE_HANDLES* handles) override;
  bool IsFinished() override;

 private:
  static constexpr std::size_t kMostEntries = 4028;    ///< Frames of a segment.
  static constexpr std::size_t kMostSegments = 65536;  ///< Of a file.
  /// Bytes of a list without frames: its type and an empty chunk.
  static constexpr std::uint32_t kOpening = sizeof(AVI::FourCC) + sizeof(AVI::ChunkHeader);

  /// A chunk `ix00`, with room for what fills it up to whole blocks.
  struct StandardIndex {
    AVI::IndexHeader header;
    std::array<AVI::StandardIndexEntry, kMostEntries> entries;
    std::array<std::uint8_t, kRoomBehind> room;
  };

  /// A list of frames and where it stands.
  struct LIST_MOVIE_INFO {
    std::uint64_t offset;
    std::uint32_t size;
  };

  int WriteFrameData(_UAVI_FILE_HANDLES& handles, std::span<std::uint8_t> data,
                     std::uint32_t index);
  int AddMissing(_UAVI_FILE_HANDLES& handles, std::uint32_t index);
  int OpenSegment(_UAVI_FILE_HANDLES& handles);
  int mWriteFieldIndex(_UAVI_FILE_HANDLES& handles);
  int mWriteAVIIndex(_UAVI_FILE_HANDLES& handles);
  int UpdateAVIFileHeader(_UAVI_FILE_HANDLES& handles, std::uint32_t emptyListSize);
  int WriteListHead(_UAVI_FILE_HANDLES& handles, const LIST_MOVIE_INFO& list);

  void BeginSegment(std::uint64_t base);
  void AddEntry(AVI::StandardIndexEntry entry);

  bool m_isOldIndexDue = true;
  bool m_isSegmentOpen = false;
  std::uint32_t m_segmentBytes = 0;  ///< From the base on.
  std::uint64_t m_firstList = 0;     ///< Where the first list of frames begins.
  StandardIndex m_index{};           ///< Of the open segment.
  std::vector<AVI::SuperIndexEntry> m_superIndex;
  std::vector<LIST_MOVIE_INFO> m_lists;  ///< Of the finished segments.
};

using CAVIFile20NotCompressed = CodedAVIFile<CAVIFile20, AVI::kNotCompressed>;
using CAVIFile20MJPEG = CodedAVIFile<CAVIFile20, AVI::kMotionJpeg>;

}  // namespace QvApi
