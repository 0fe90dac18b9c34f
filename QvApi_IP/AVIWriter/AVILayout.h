// SPDX-License-Identifier: MIT
// The layout of AVI files, as Microsoft's AVI RIFF reference and the OpenDML extensions name its
// parts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "QvApi_IP/BitmapInfoHeader.h"

namespace QvApi::AVI {

/// Four characters, the first in the lowest byte.
using FourCC = std::uint32_t;
consteval FourCC Code(const char (&text)[5]) {
  FourCC code = 0;
  for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}

template <class T>
inline constexpr std::uint32_t kSizeOf = sizeof(T);

inline constexpr FourCC kAnyFrame = Code("00dc");  ///< Chunk of a compressed frame, or of none.
inline constexpr FourCC kDibFrame = Code("00db");  ///< Chunk of an uncompressed frame.
inline constexpr FourCC kJunk = Code("JUNK");
inline constexpr FourCC kList = Code("LIST");
inline constexpr FourCC kMovie = Code("movi");
inline constexpr FourCC kRiff = Code("RIFF");

inline constexpr std::uint32_t kHasIndex = 0x10;          ///< AVIF_HASINDEX
inline constexpr std::uint32_t kTrustChunkTypes = 0x800;  ///< AVIF_TRUSTCKTYPE

#pragma pack(push, 1)

struct ChunkHeader {
  FourCC code;
  std::uint32_t size;  ///< Of what follows, without the pad byte.
};

/// Of a RIFF or a LIST; the type counts as part of what follows.
struct ListHeader {
  FourCC code;
  std::uint32_t size;
  FourCC type;
};

struct MainHeader {  // AVIMAINHEADER
  std::uint32_t microSecondsPerFrame;
  std::uint32_t maxBytesPerSecond;
  std::uint32_t paddingGranularity;
  std::uint32_t flags;
  std::uint32_t totalFrames;
  std::uint32_t initialFrames;
  std::uint32_t streams;
  std::uint32_t suggestedBufferSize;
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t reserved[4];
};

struct StreamHeader {  // AVISTREAMHEADER
  FourCC type;
  FourCC handler;
  std::uint32_t flags;
  std::uint16_t priority;
  std::uint16_t language;
  std::uint32_t initialFrames;
  std::uint32_t scale;
  std::uint32_t rate;
  std::uint32_t start;
  std::uint32_t length;
  std::uint32_t suggestedBufferSize;
  std::uint32_t quality;
  std::uint32_t sampleSize;
  std::uint16_t left;
  std::uint16_t top;
  std::uint16_t right;
  std::uint16_t bottom;
};

/// A chunk `strn` that names the stream.
struct StreamName {
  ChunkHeader header;
  char text[64];
};

/// The head of a file, up to what differs between the kinds of files.
struct Head {
  ListHeader riff;
  ListHeader headerList;
  ChunkHeader mainChunk;
  MainHeader main;
  ListHeader streamList;
  ChunkHeader streamChunk;
  StreamHeader stream;
  ChunkHeader formatChunk;
  BitmapInfoHeader format;
  /// The palette, the name, or nothing; then the header of a chunk.
  std::array<std::uint8_t, sizeof(BitmapPalette) + sizeof(ChunkHeader)> tail;
};
inline constexpr std::size_t kFixedHeadSize = offsetof(Head, tail);

/// An entry of `idx1`.
struct OldIndexEntry {
  FourCC code;
  std::uint32_t flags;
  std::uint32_t offset;
  std::uint32_t size;
};

/// Of `indx`, the super index, and of `ix00`, the standard index of a segment.
struct IndexHeader {
  ChunkHeader chunk;
  std::uint16_t longsPerEntry;
  std::uint8_t subType;
  std::uint8_t type;
  std::uint32_t entriesInUse;
  FourCC chunkCode;
  std::uint64_t baseOffset;
  std::uint32_t reserved;
};

struct SuperIndexEntry {
  std::uint64_t offset;    ///< Of the standard index.
  std::uint32_t size;      ///< Of the standard index.
  std::uint32_t duration;  ///< Its entries.
};

struct StandardIndexEntry {
  std::uint32_t offset;  ///< From the base to the data of the chunk.
  std::uint32_t size;    ///< Bit 31 is set for a frame that needs another one.
};

/// The list that holds the number of frames of all segments, and the chunk behind it.
struct ExtendedHeader {
  ListHeader list;
  ChunkHeader chunk;
  std::uint32_t totalFrames;
  std::uint32_t reserved[61];
  ChunkHeader junk;
};

/// The list of frames, with the empty chunk that opens it.
struct MovieList {
  ListHeader list;
  ChunkHeader empty;
};

/// What a segment behind the first begins with.
struct SegmentHead {
  ListHeader riff;
  MovieList movie;
  ChunkHeader junk;
};

#pragma pack(pop)

static_assert(offsetof(Head, headerList) == 12 && offsetof(Head, mainChunk) == 24 &&
              offsetof(Head, main) == 32 && offsetof(Head, streamList) == 88 &&
              offsetof(Head, streamChunk) == 100 && offsetof(Head, stream) == 108 &&
              offsetof(Head, formatChunk) == 164 && offsetof(Head, format) == 172 &&
              kFixedHeadSize == 212 && sizeof(Head) == 1244);
static_assert(offsetof(MainHeader, totalFrames) == 16 && offsetof(MainHeader, width) == 32 &&
              sizeof(MainHeader) == 56);
static_assert(offsetof(StreamHeader, scale) == 20 && offsetof(StreamHeader, length) == 32 &&
              offsetof(StreamHeader, right) == 52 && sizeof(StreamHeader) == 56);
static_assert(sizeof(StreamName) == 72 && sizeof(OldIndexEntry) == 16);
static_assert(offsetof(IndexHeader, baseOffset) == 20 && sizeof(IndexHeader) == 32 &&
              sizeof(SuperIndexEntry) == 16 && sizeof(StandardIndexEntry) == 8);
static_assert(offsetof(ExtendedHeader, junk) == 268 && sizeof(MovieList) == 20 &&
              offsetof(SegmentHead, junk) == 32);

/// What frames of one kind have in common, in every container.
struct Codec {
  FourCC frameCode;
  FourCC handler;
  std::uint32_t headFlags;
  bool isJpeg;
  std::uint32_t firstData;  ///< Where the frames begin in AVI 1.0.
};
inline constexpr Codec kNotCompressed{kDibFrame, Code("DIB "), kHasIndex | kTrustChunkTypes, false,
                                      4096};
inline constexpr Codec kMotionJpeg{kAnyFrame, Code("MJPG"), kHasIndex, true, 2048};

/// What the heads of the containers differ in.
struct Container {
  std::uint32_t granularity;
  std::uint32_t superIndexSize;       ///< A chunk within the list of the stream.
  std::uint32_t extendedHeaderSize;   ///< A list within the list of headers.
  std::uint32_t uncompressedQuality;  ///< As the stream's header tells it.
};

}  // namespace QvApi::AVI
