// SPDX-License-Identifier: MIT
#include <cstring>

#include "QvApi_IP/AVIWriter/AVIFile.h"

namespace QvApi {

using namespace AVI;

namespace {

template <class T>
void Store(std::uint8_t* destination, const T& record) {
  std::memcpy(destination, &record, sizeof(T));
}

constexpr std::uint32_t ChunkSize(std::uint32_t content) { return kSizeOf<ChunkHeader> + content; }

}  // namespace

void CAVIFile::MakeHead(const Container& container) {
  const auto width = static_cast<std::uint32_t>(m_bitmapInfo.width);
  const auto height = static_cast<std::uint32_t>(m_bitmapInfo.height);
  const auto frames = static_cast<std::uint32_t>(m_maximumFrameCount);
  BitmapInfoHeader format = m_bitmapInfo;
  if (m_codec.isJpeg) {
    format.bitCount = 24;  // also for grey frames
    format.compression = m_codec.handler;
    format.imageSize = width * height * 3;
    format.colorsUsed = format.colorsImportant = 0;
  }
  const std::uint32_t paletteSize = format.colorsUsed * kSizeOf<BitmapPalette::value_type>;
  const std::uint32_t nameSize = m_codec.isJpeg ? sizeof(StreamName) : 0;
  const std::uint32_t formatSize = kSizeOf<BitmapInfoHeader> + paletteSize;
  const std::uint32_t streamSize = kSizeOf<FourCC> + ChunkSize(kSizeOf<StreamHeader>) +
                                   ChunkSize(formatSize) + nameSize + container.superIndexSize;
  const std::uint32_t headersSize = kSizeOf<FourCC> + ChunkSize(kSizeOf<MainHeader>) +
                                    ChunkSize(streamSize) + container.extendedHeaderSize;

  const std::uint64_t microSeconds = m_rate == 0 ? 0 : std::uint64_t{m_scale} * 1000000 / m_rate;
  m_head = {.riff = {kRiff, 0, Code("AVI ")},
            .headerList = {kList, headersSize, Code("hdrl")},
            .mainChunk = {Code("avih"), sizeof(MainHeader)},
            .main = {.microSecondsPerFrame = static_cast<std::uint32_t>(microSeconds),
                     .maxBytesPerSecond = (m_rate / m_scale + 1) * format.imageSize,
                     .paddingGranularity = container.granularity,
                     .flags = m_codec.headFlags,
                     .totalFrames = frames,
                     .initialFrames = 0,
                     .streams = 1,
                     .suggestedBufferSize = 0,
                     .width = width,
                     .height = height,
                     .reserved = {}},
            .streamList = {kList, streamSize, Code("strl")},
            .streamChunk = {Code("strh"), sizeof(StreamHeader)},
            .stream = {.type = Code("vids"),
                       .handler = m_codec.handler,
                       .flags = 0,
                       .priority = 0,
                       .language = 0,
                       .initialFrames = 0,
                       .scale = m_scale,
                       .rate = m_rate,
                       .start = 0,
                       .length = frames,
                       .suggestedBufferSize = 0,
                       .quality = m_codec.isJpeg ? m_quality * 100 : container.uncompressedQuality,
                       .sampleSize = 0,
                       .left = 0,
                       .top = 0,
                       .right = static_cast<std::uint16_t>(width),
                       .bottom = static_cast<std::uint16_t>(height)},
            .formatChunk = {Code("strf"), formatSize},
            .format = format,
            .tail = {}};
  m_tailSize = paletteSize + nameSize;
  if (m_codec.isJpeg)
    Store(m_head.tail.data(), StreamName{{Code("strn"), sizeof(StreamName::text)}, "MJPG Out"});
  else if (paletteSize != 0)
    Store(m_head.tail.data(), m_palette);
}

void CAVIFile::UpdateHead(std::uint32_t overhead) {
  m_head.main.suggestedBufferSize = m_head.stream.suggestedBufferSize = m_largestChunk + overhead;
  m_head.stream.length = m_frameCount;
}

std::span<std::uint8_t> MakeChunk(FourCC code, std::span<std::uint8_t> data) {
  std::uint8_t* const chunk = data.data() - sizeof(ChunkHeader);
  Store(chunk, ChunkHeader{code, static_cast<std::uint32_t>(data.size())});
  if (data.size() % 2 != 0) data.data()[data.size()] = '0';
  return {chunk, sizeof(ChunkHeader) + data.size() + data.size() % 2};
}

std::span<std::uint8_t> PadWithJunk(std::span<std::uint8_t> bytes) {
  std::size_t gap = -bytes.size() % kBlock;
  if (gap == 0) return bytes;
  if (gap < sizeof(ChunkHeader)) gap += kBlock;
  std::uint8_t* const junk = bytes.data() + bytes.size();
  std::memset(junk, 0, gap);
  Store(junk, ChunkHeader{kJunk, static_cast<std::uint32_t>(gap - sizeof(ChunkHeader))});
  return {bytes.data(), bytes.size() + gap};
}

}  // namespace QvApi
