// SPDX-License-Identifier: MIT
#include "QvApi_IP/AVIWriter/AVIFile20.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace QvApi {

using namespace AVI;

namespace {

constexpr std::uint64_t kFirstData = 0x101000;
constexpr std::uint32_t kLargeSegment = 0x40000000;
constexpr std::uint64_t kSegmentHead = offsetof(SegmentHead, junk);

/// Bytes of the super index, which has room for all segments from the start.
constexpr std::uint32_t kSuperIndexSize = 0x100020;
constexpr Container kContainer{.granularity = kBlock,
                               .superIndexSize = kSuperIndexSize,
                               .extendedHeaderSize = offsetof(ExtendedHeader, junk),
                               .uncompressedQuality = 0};

/// A frame that is missing counts as one that needs another.
constexpr StandardIndexEntry kMissing{0, 0x80000000};
constexpr FourCC kNoFrame = Code("7Fxx");

constexpr std::uint64_t RoundDown(std::uint64_t bytes) { return bytes / kBlock * kBlock; }
constexpr std::uint64_t RoundUp(std::uint64_t bytes) { return RoundDown(bytes + kBlock - 1); }

/// Bytes of `idx1` where the first segment ends with that frame.
constexpr std::uint64_t OldIndexSize(std::uint32_t lastFrame) {
  return RoundDown(std::uint64_t{lastFrame} * sizeof(OldIndexEntry) + 40) + kBlock;
}

/// About the bytes of `ix00` with what fills it up.
constexpr std::uint64_t EstimatedIndexSize(std::uint64_t entries) {
  return RoundUp((entries + 3) * sizeof(StandardIndexEntry));
}

}  // namespace

CAVIFile20::CAVIFile20(CBufferQueue<CFrameData>* requestQueue, CBufferQueue<CFrameData>* writeQueue,
                       IAVIFileStatusListener* listener, const Codec& codec)
    : CAVIFile(requestQueue, writeQueue, listener, codec) {
  static_assert(sizeof(StandardIndex) == 34312);
  static_assert(sizeof(IndexHeader) + kMostSegments * sizeof(SuperIndexEntry) == kSuperIndexSize);
  m_maximumFileSize = 0x10000000000;
  m_index.header = {.chunk = {Code("ix00"), 0},
                    .longsPerEntry = sizeof(StandardIndexEntry) / 4,
                    .subType = 0,
                    .type = 1,
                    .entriesInUse = 0,
                    .chunkCode = codec.frameCode,
                    .baseOffset = 0,
                    .reserved = 0};
}

int CAVIFile20::AVIStart() {
  MakeHead(kContainer);
  m_isOldIndexDue = true;
  return CAVIFile::AVIStart();
}

std::uint64_t CAVIFile20::GetAVIFileSize(unsigned int frameBytes, unsigned int frameCount) const {
  if (frameCount == 0) return kFirstData - sizeof(ListHeader);
  const std::uint64_t chunk = RoundUp(std::uint64_t{frameBytes} + sizeof(ChunkHeader));
  const std::uint64_t full = std::clamp<std::uint64_t>(kLargeSegment / chunk, 1, frameCount);
  const std::uint64_t rest = frameCount % full;
  const std::uint64_t laterSegments = (frameCount - 1) / full;
  return kFirstData + RoundUp((full + 1) * sizeof(OldIndexEntry)) + frameCount * chunk +
         frameCount / full * EstimatedIndexSize(full) + (rest ? EstimatedIndexSize(rest) : 0) +
         laterSegments * kBlock;
}

bool CAVIFile20::IsFinished() {
  return m_superIndex.size() >= kMostSegments || CAVIFile::IsFinished();
}

int CAVIFile20::AVIFileOpen(const char* name, _UAVI_FILE_HANDLES* handles) {
  if (handles->Open(name) != 0) return kCannotOpen;
  CheckFileSystem(name);
  m_superIndex.clear();
  m_lists.clear();
  m_isSegmentOpen = false;
  m_index.header.entriesInUse = 0;
  m_firstList = kFirstData - (m_isOldIndexDue ? sizeof(MovieList) : kSegmentHead);
  // With a head from the start, players find the frames even of a file that never gets closed.
  // Without room for it there is none for a frame, which then tells.
  UpdateAVIFileHeader(*handles, 0);
  return 0;
}

int CAVIFile20::AddFrame(_UAVI_FILE_HANDLES* handles, IQvImage* image, unsigned int index) {
  return WriteFrameData(*handles, Encode(*image), index);
}

int CAVIFile20::WriteFrameData(_UAVI_FILE_HANDLES& handles, std::span<std::uint8_t> data,
                               std::uint32_t index) {
  if (data.size() > INT32_MAX) return EFBIG;
  const auto size = static_cast<std::uint32_t>(data.size());
  m_largestChunk = std::max(m_largestChunk, size);
  if (index == 0) {
    m_frameCount = 0;
    m_writePosition = kFirstData;
    BeginSegment(kFirstData);
  }
  if (const int error = AddMissing(handles, index)) return error;
  if (const int error = OpenSegment(handles)) return error;

  const std::span<std::uint8_t> chunk = PadWithJunk(MakeChunk(m_codec.frameCode, data));
  if (const int error = Append(handles, chunk.data(), chunk.size())) return error;
  AddEntry({m_segmentBytes + kSizeOf<ChunkHeader>, size});
  m_segmentBytes += static_cast<std::uint32_t>(chunk.size());
  m_projectedFileSize = m_writePosition + (m_isOldIndexDue ? OldIndexSize(index) : 0) +
                        EstimatedIndexSize(m_index.header.entriesInUse);
  if (m_index.header.entriesInUse == kMostEntries || chunk.size() + m_segmentBytes > kLargeSegment)
    return mWriteFieldIndex(handles);
  return 0;
}

/// Entries for the frames up to `index`, in as many segments as they need.
int CAVIFile20::AddMissing(_UAVI_FILE_HANDLES& handles, std::uint32_t index) {
  while (m_frameCount < index) {
    if (const int error = OpenSegment(handles)) return error;
    AddEntry(kMissing);
    if (m_index.header.entriesInUse == kMostEntries)
      if (const int error = mWriteFieldIndex(handles)) return error;
  }
  return 0;
}

void CAVIFile20::AddEntry(StandardIndexEntry entry) {
  m_index.entries[m_index.header.entriesInUse++] = entry;
  ++m_frameCount;
}

/// Begins another segment unless one is open.
int CAVIFile20::OpenSegment(_UAVI_FILE_HANDLES& handles) {
  if (m_isSegmentOpen) return 0;
  if (m_superIndex.size() == kMostSegments) return EFBIG;
  // Of no size yet, it already leads readers of a file that never gets closed.
  if (const int error = WriteListHead(handles, {m_writePosition, 0})) return error;
  const std::uint64_t base = m_writePosition + kSegmentHead;
  m_writePosition += kBlock;
  BeginSegment(base);
  return 0;
}

void CAVIFile20::BeginSegment(std::uint64_t base) {
  m_isSegmentOpen = true;
  m_index.header.baseOffset = base;
  m_segmentBytes = static_cast<std::uint32_t>(m_writePosition - base);
}

/// Finishes the open segment: its index, in the first one `idx1`, and the entry of the super index.
/// If that fails the segment stays open, to be tried again when the file closes.
int CAVIFile20::mWriteFieldIndex(_UAVI_FILE_HANDLES& handles) {
  IndexHeader& header = m_index.header;
  const std::uint64_t list = m_lists.empty() ? m_firstList : header.baseOffset - kSegmentHead;
  if (header.entriesInUse == 0) {
    // Its first frame could not be written.
    if (m_isSegmentOpen) handles.Truncate(std::max(list, kFirstData));
  } else {
    const std::uint64_t position = m_writePosition;
    const auto size = static_cast<std::uint32_t>(sizeof(IndexHeader) +
                                                 header.entriesInUse * sizeof(StandardIndexEntry));
    header.chunk.size = size - kSizeOf<ChunkHeader>;
    const auto padded = PadWithJunk({reinterpret_cast<std::uint8_t*>(&m_index), size});
    int error = Append(handles, padded.data(), padded.size());
    if (error == 0 && m_isOldIndexDue) error = mWriteAVIIndex(handles);
    if (error != 0) {
      m_writePosition = position;
      return error;
    }
    m_superIndex.push_back({position, size, header.entriesInUse});
    m_lists.push_back(
        {list, static_cast<std::uint32_t>(m_segmentBytes + padded.size() + kOpening)});
    header.entriesInUse = 0;
  }
  m_isSegmentOpen = m_isOldIndexDue = false;
  return 0;
}

/// Writes the index of old readers, which know the first segment only.
int CAVIFile20::mWriteAVIIndex(_UAVI_FILE_HANDLES& handles) {
  const std::uint64_t size = OldIndexSize(m_frameCount - 1);
  std::vector<OldIndexEntry> index(size / sizeof(OldIndexEntry) + 1, {kNoFrame, 0, 0, 0});
  index[1].offset = 0x8000;
  index.back() = {};
  // Offsets are those of chunks in the file. The empty chunk ahead takes the place of the first
  // frame.
  const auto base = static_cast<std::uint32_t>(m_index.header.baseOffset);
  constexpr std::uint32_t kHeader = kSizeOf<ChunkHeader>;
  index[2] = {kAnyFrame, 0, base - kHeader, 0};
  std::uint32_t lastOffset = m_index.entries[0].offset;
  for (std::size_t i = 1; i < m_index.header.entriesInUse; ++i) {
    const StandardIndexEntry& entry = m_index.entries[i];
    if (entry.offset == kMissing.offset) {
      index[i + 2] = {kAnyFrame, 0, base + lastOffset, 0};
      continue;
    }
    lastOffset = entry.offset;
    index[i + 2] = {m_codec.frameCode, kHasIndex, base + lastOffset - kHeader, entry.size};
  }
  if (const int error = AppendIndex(handles, index, size)) return error;
  m_head.riff.size = static_cast<std::uint32_t>(m_writePosition - kHeader);
  m_head.main.totalFrames = m_frameCount;
  return 0;
}

int CAVIFile20::AVIFileClose(_UAVI_FILE_HANDLES* handles) {
  int result = mWriteFieldIndex(*handles);
  if (result == 0) {
    UpdateHead(sizeof(ChunkHeader));
    m_head.format.imageSize = m_largestChunk;
    result = UpdateAVIFileHeader(*handles, kOpening);
  }
  const int closed = handles->Close();
  return result != 0 ? result : closed;
}

/// Writes the head, the super index and the heads of all lists. A file without frames has one list,
/// of that size.
int CAVIFile20::UpdateAVIFileHeader(_UAVI_FILE_HANDLES& handles, std::uint32_t emptyListSize) {
  const IndexHeader superIndex{.chunk = {Code("indx"), kSuperIndexSize - kSizeOf<ChunkHeader>},
                               .longsPerEntry = sizeof(SuperIndexEntry) / 4,
                               .subType = 0,
                               .type = 0,
                               .entriesInUse = static_cast<std::uint32_t>(m_superIndex.size()),
                               .chunkCode = m_codec.frameCode,
                               .baseOffset = 0,
                               .reserved = 0};
  const std::uint64_t extended = HeadSize() + kSuperIndexSize;
  const auto gap = static_cast<std::uint32_t>(m_firstList - extended - sizeof(ExtendedHeader));
  constexpr std::uint32_t kListSize = kContainer.extendedHeaderSize - sizeof(ChunkHeader);
  const ExtendedHeader extendedHeader{.list = {kList, kListSize, Code("odml")},
                                      .chunk = {Code("dmlh"), kListSize - kSizeOf<ListHeader>},
                                      .totalFrames = m_frameCount,
                                      .reserved = {},
                                      .junk = {kJunk, gap}};

  if (const int error = handles.Write(0, &m_head, HeadSize())) return error;
  if (const int error = handles.Write(HeadSize(), &superIndex, sizeof(superIndex))) return error;
  if (const int error = handles.Write(HeadSize() + sizeof(superIndex), m_superIndex.data(),
                                      m_superIndex.size() * sizeof(SuperIndexEntry)))
    return error;
  if (const int error = handles.Write(extended, &extendedHeader, sizeof(extendedHeader)))
    return error;
  if (m_lists.empty()) return WriteListHead(handles, {m_firstList, emptyListSize});
  for (const LIST_MOVIE_INFO& list : m_lists)
    if (const int error = WriteListHead(handles, list)) return error;
  return 0;
}

int CAVIFile20::WriteListHead(_UAVI_FILE_HANDLES& handles, const LIST_MOVIE_INFO& list) {
  constexpr std::uint32_t kJunkSize = kBlock - sizeof(SegmentHead);
  const SegmentHead head{.riff = {kRiff, list.size + kSizeOf<ListHeader>, Code("AVIX")},
                         .movie = {{kList, list.size, kMovie}, {kAnyFrame, 0}},
                         .junk = {kJunk, kJunkSize}};
  // In front of the first list stands the head of the file.
  return list.offset < kFirstData ? handles.Write(list.offset, &head.movie, sizeof(head.movie))
                                  : handles.Write(list.offset, &head, sizeof(head));
}

}  // namespace QvApi
