// SPDX-License-Identifier: MIT
#include "QvApi_IP/AVIWriter/AVIFile10.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace QvApi {

using namespace AVI;

namespace {

constexpr Container kContainer{.granularity = 0,
                               .superIndexSize = 0,
                               .extendedHeaderSize = 0,
                               .uncompressedQuality = 0xFFFFFFFF};

constexpr std::uint64_t kEmptyFrame = sizeof(ChunkHeader) + sizeof(OldIndexEntry);
constexpr std::size_t kMostReserved = 100001;  ///< Chunks; beyond them memory grows meanwhile.

}  // namespace

int CAVIFile10::AVIStart() {
  MakeHead(kContainer);
  m_sizes.reserve(std::min<std::size_t>(m_maximumFrameCount + 1, kMostReserved));
  return CAVIFile::AVIStart();
}

int CAVIFile10::AVIFileOpen(const char* name, _UAVI_FILE_HANDLES* handles) {
  if (handles->Open(name) != 0) return kCannotOpen;
  m_sizes.clear();
  // With a head from the start, players find the frames even of a file that never gets closed.
  // Without room for it there is none for a frame, which then tells.
  WriteHead(*handles, 0);
  return 0;
}

int CAVIFile10::AddFrame(_UAVI_FILE_HANDLES* handles, IQvImage* image, unsigned int index) {
  const std::span<std::uint8_t> data = Encode(*image);
  const auto size = static_cast<std::uint32_t>(data.size());
  if (index == 0) {
    m_writePosition = m_codec.firstData;
    m_frameCount = m_largestChunk = 0;
    constexpr ChunkHeader kEmpty{kAnyFrame, 0};
    if (!m_codec.isJpeg)
      if (const int error = AddChunks(*handles, &kEmpty, 1, 0)) return error;
  }
  // Sizes and offsets are 32 bits long, which only a very long gap or a huge frame exceeds.
  const std::uint64_t missing = index > m_frameCount ? index - m_frameCount : 0;
  if (m_projectedFileSize + (missing + 2) * kEmptyFrame + data.size() > UINT32_MAX) return EFBIG;
  if (const int error = AddMissing(*handles, index)) return error;
  if (const int error = AddChunks(*handles, MakeChunk(m_codec.frameCode, data).data(), 1, size))
    return error;
  m_largestChunk = std::max(m_largestChunk, size);
  m_frameCount = index + 1;
  return 0;
}

/// Writes chunks that have `size` bytes of data each.
int CAVIFile10::AddChunks(_UAVI_FILE_HANDLES& handles, const void* bytes, std::size_t count,
                          std::uint32_t size) {
  m_sizes.insert(m_sizes.end(), count, size);
  const std::size_t bytesEach = sizeof(ChunkHeader) + std::size_t{size} + size % 2;
  if (const int error = Append(handles, bytes, count * bytesEach)) {
    m_sizes.resize(m_sizes.size() - count);
    return error;
  }
  m_projectedFileSize =
      m_writePosition + sizeof(ChunkHeader) + m_sizes.size() * sizeof(OldIndexEntry);
  return 0;
}

/// Empty chunks up to `index`, so that the frames behind them keep their time.
int CAVIFile10::AddMissing(_UAVI_FILE_HANDLES& handles, std::uint32_t index) {
  if (m_frameCount >= index) return 0;
  std::array<ChunkHeader, 512> chunks;
  chunks.fill({m_codec.frameCode, 0});
  while (m_frameCount < index) {
    const auto count = std::min<std::uint32_t>(index - m_frameCount, chunks.size());
    if (const int error = AddChunks(handles, chunks.data(), count, 0)) return error;
    m_frameCount += count;
  }
  return 0;
}

int CAVIFile10::AVIFileClose(_UAVI_FILE_HANDLES* handles) {
  std::uint32_t movieSize = 0;
  int result = WriteIndex(*handles, movieSize);
  if (result == 0) {
    UpdateHead(0);
    m_head.riff.size = static_cast<std::uint32_t>(m_projectedFileSize - sizeof(ChunkHeader));
    // The number of uncompressed frames stands in the stream's header only.
    m_head.main.totalFrames = m_codec.isJpeg ? m_frameCount : 0xFFFFFFFF;
    result = WriteHead(*handles, movieSize);
  }
  const int closed = handles->Close();
  return result != 0 ? result : closed;
}

/// Writes `idx1` behind the frames, and finds the size of their list.
int CAVIFile10::WriteIndex(_UAVI_FILE_HANDLES& handles, std::uint32_t& movieSize) {
  std::vector<OldIndexEntry> index(1);
  index.reserve(m_sizes.size() + 1);
  movieSize = sizeof(kMovie);  // from where offsets count
  for (const std::uint32_t size : m_sizes) {
    index.push_back({m_codec.frameCode, kHasIndex, movieSize, size});
    movieSize += kSizeOf<ChunkHeader> + size + size % 2;
  }
  // Of a file without frames: compressed, it has an empty index, and else the head takes its place.
  if (m_codec.isJpeg) m_writePosition = std::max<std::uint64_t>(m_writePosition, m_codec.firstData);
  return AppendIndex(handles, index, sizeof(ChunkHeader) + m_sizes.size() * sizeof(OldIndexEntry));
}

int CAVIFile10::WriteHead(_UAVI_FILE_HANDLES& handles, std::uint32_t movieSize) {
  const std::uint64_t movie = m_codec.firstData - sizeof(ListHeader);
  const ChunkHeader junk{kJunk, static_cast<std::uint32_t>(movie - HeadSize() - sizeof(junk))};
  std::memcpy(m_head.tail.data() + HeadSize() - kFixedHeadSize, &junk, sizeof(junk));
  if (const int error = handles.Write(0, &m_head, HeadSize() + sizeof(junk))) return error;
  const ListHeader list{kList, movieSize, kMovie};
  return handles.Write(movie, &list, sizeof(list));
}

}  // namespace QvApi
