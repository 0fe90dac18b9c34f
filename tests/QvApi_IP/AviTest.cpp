// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <numeric>

#include "QvApi_IP/AVIWriter/AVIFile10.h"
#include "QvApi_IP/AVIWriter/AVIFile20.h"
#include "QvApi_IP/AviTestSupport.h"

namespace {

/// What happens to the writes of this program.
struct {
  std::atomic<int> count{0};
  std::atomic<int> goodOnes{-2};  ///< From 0 on: then one stores half, and the next one fails.
  bool areSparse = false;         ///< Of large ones only both ends are stored.
} g_writes;

}  // namespace

extern "C" ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t position) {
  const auto store = [&](std::size_t from, std::size_t count) {
    return ::syscall(SYS_pwrite64, file, static_cast<const char*>(bytes) + from, count,
                     position + static_cast<off_t>(from));
  };
  ++g_writes.count;
  const int left = g_writes.goodOnes < -1 ? -2 : g_writes.goodOnes--;
  if (left == 0) return store(0, size / 2);
  if (left == -1) {
    errno = ENOSPC;
    return -1;
  }
  constexpr std::size_t kEnd = 1 << 16;
  if (!g_writes.areSparse || size < 2 * kEnd) return store(0, size);
  store(0, kEnd);
  store(size - kEnd, kEnd);
  return static_cast<ssize_t>(size);
}

namespace QvApi {
namespace {

using namespace Testing;
using ::testing::ElementsAre;
using enum EQvPixelFormatNamingConvention_t;

using Words = std::vector<std::uint32_t>;

Indexes UpTo(std::size_t count) {
  Indexes indexes(count);
  std::iota(indexes.begin(), indexes.end(), 0);
  return indexes;
}

struct Recipe {
  Lines names;
  Indexes indexes;
  std::size_t width = 64, height = 48;
  PixelFormat format = BGR8;
  std::uint64_t maximum = 100000;
  double fps = 25;
};

/// Noise, whose JPEG is larger than itself where the image is small; none in the padding of lines.
void Paint(IQvImage& image, std::uint64_t index) {
  auto state = static_cast<std::uint32_t>(index);
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t i = 0; i < LineBytes(image.GetImagePixelFormat(), image.GetImageWidth()); ++i)
      Bytes(&image)[y * image.GetImageLinePitch() + i] =
          static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
}

template <class File>
Lines Record(const Recipe& recipe) {
  Recording<File> recording;
  recording.Prepare(recipe.width, recipe.height, recipe.format, recipe.maximum, recipe.fps);
  if (!g_writes.areSparse) recording.paint = Paint;
  return recording.Record(recipe.names, recipe.indexes);
}

std::uint32_t Code(const std::string& text) {
  std::uint32_t code;
  std::memcpy(&code, text.data(), 4);
  return code;
}

struct Kind {
  const char* name;
  bool isAvi2, isJpeg;
  std::uint32_t frame;
  Lines (*record)(const Recipe&);
};
const Kind kKinds[] = {
    {"AVI 1.0 uncompressed", false, false, Code("00db"), Record<CAVIFileNotCompressed>},
    {"AVI 1.0 JPEG", false, true, Code("00dc"), Record<CAVIFileMJPEG>},
    {"AVI 2.0 uncompressed", true, false, Code("00db"), Record<CAVIFile20NotCompressed>},
    {"AVI 2.0 JPEG", true, true, Code("00dc"), Record<CAVIFile20MJPEG>}};

/// A chunk or a list; of the latter the code is its type.
struct Chunk {
  std::uint32_t code, parent;
  std::uint64_t header;
  std::uint32_t size;
  std::uint64_t Data() const { return header + 8; }
};

/// Walks a file from chunk to chunk, each of which must fill its list.
class AviReader {
 public:
  explicit AviReader(const std::string& name) : m_stream(OpenStream(name, "rb")) {
    Walk(0, 0, std::filesystem::file_size(name));
  }
  template <class T = std::uint8_t>
  std::vector<T> Get(std::uint64_t offset, std::size_t count) const {
    std::vector<T> items(count);
    const std::size_t size = count * sizeof(T);
    EXPECT_EQ(::pread(::fileno(m_stream.get()), items.data(), size, static_cast<off_t>(offset)),
              static_cast<ssize_t>(size));
    return items;
  }
  std::vector<Chunk> All(std::uint32_t code, const std::string& parent) const {
    std::vector<Chunk> found;
    for (const Chunk& chunk : m_chunks)
      if (chunk.code == code && chunk.parent == Code(parent)) found.push_back(chunk);
    return found;
  }
  Chunk First(const std::string& code, const std::string& parent) const {
    return All(Code(code), parent).at(0);
  }

 private:
  void Walk(std::uint32_t parent, std::uint64_t begin, std::uint64_t end) {
    while (begin + 8 <= end) {
      const Words words = Get<std::uint32_t>(begin, 2);
      const bool isList = words[0] == Code("RIFF") || words[0] == Code("LIST");
      const std::uint32_t code = isList ? Get<std::uint32_t>(begin + 8, 1)[0] : words[0];
      const Chunk& chunk = m_chunks.emplace_back(Chunk{code, parent, begin, words[1]});
      begin = chunk.Data() + chunk.size + chunk.size % 2;
      ASSERT_LE(begin, end);
      if (isList) Walk(code, chunk.header + 12, begin);
      const bool isJunk = code == Code("JUNK");
      ASSERT_TRUE(!isJunk || Get(chunk.Data(), chunk.size) == FileBytes(chunk.size));
    }
    EXPECT_EQ(begin, end);
  }

  const Stream m_stream;
  std::deque<Chunk> m_chunks;
};

/// Where the data of a frame stand; of a missing one the size is 0.
struct Frame {
  std::uint64_t offset;
  std::uint32_t size;
};

/// The frames of AVI 1.0, after `idx1` has been compared with the chunks.
std::vector<Frame> FramesOfAvi1(const AviReader& file, const Kind& kind) {
  const std::uint64_t movie = file.First("movi", "AVI ").Data();
  Words entries;
  if (!kind.isJpeg) entries = {kind.frame, 0x10, 4, 0};
  std::vector<Frame> frames;
  for (const Chunk& chunk : file.All(kind.frame, "movi")) {
    const auto offset = static_cast<std::uint32_t>(chunk.header - movie);
    for (const std::uint32_t word : {kind.frame, 0x10U, offset, chunk.size})
      entries.push_back(word);
    frames.push_back({chunk.Data(), chunk.size});
  }
  const Chunk index = file.First("idx1", "AVI ");
  EXPECT_EQ(file.Get<std::uint32_t>(index.Data(), index.size / 4), entries);
  return frames;
}

/// Compares `idx1` of AVI 2.0 with the frames of the first segment.
void CheckOldIndex(const AviReader& file, const Kind& kind, const std::vector<Frame>& frames) {
  const std::size_t size = (frames.size() * 16 + 24) / 2048 * 2048 + 2048;
  const std::uint32_t anyFrame = Code("00dc"), noFrame = Code("7Fxx");
  Words words{noFrame, 0, 0x8000, 0, anyFrame, 0, 0x101000 - 8, 0};
  auto last = static_cast<std::uint32_t>(frames.at(0).offset);
  for (std::size_t i = 1; i < frames.size(); ++i) {
    if (frames[i].size != 0) last = static_cast<std::uint32_t>(frames[i].offset);
    const Words entry = frames[i].size == 0 ? Words{anyFrame, 0, last, 0}
                                            : Words{kind.frame, 0x10, last - 8, frames[i].size};
    words.insert(words.end(), entry.begin(), entry.end());
  }
  while (words.size() * 4 < size - 16) words.push_back(words.size() % 4 == 0 ? noFrame : 0);
  words.insert(words.end(), 2, 0);
  EXPECT_EQ(file.Get<std::uint32_t>(file.First("idx1", "AVI ").Data(), size / 4 - 2), words);
}

/// The frames of AVI 2.0, after all indexes have been compared with the chunks.
std::vector<Frame> FramesOfAvi2(const AviReader& file, const Kind& kind) {
  std::map<std::uint64_t, std::uint32_t> chunks;
  for (const Chunk& chunk : file.All(kind.frame, "movi"))
    if (chunk.header % 2048 == 0) chunks[chunk.Data()] = chunk.size;
  std::vector<Frame> frames;
  Words super{4, 0, kind.frame, 0, 0, 0};
  for (const Chunk& index : file.All(Code("ix00"), "movi")) {
    const std::uint32_t count = (index.size - 24) / 8;
    const Words words = file.Get<std::uint32_t>(index.Data(), 6 + 2 * count);
    EXPECT_EQ(Words(words.begin(), words.begin() + 3), (Words{0x01000002, count, kind.frame}));
    const std::uint64_t base = words[3] + (std::uint64_t{words[4]} << 32);
    for (std::size_t i = 6; i < words.size(); i += 2) {
      const bool isMissing = words[i] == 0;
      frames.push_back({base + words[i], isMissing ? 0 : words[i + 1]});
      EXPECT_EQ(words[i + 1], isMissing ? 0x80000000 : chunks.extract(base + words[i]).mapped());
    }
    if (super.size() == 6) CheckOldIndex(file, kind, frames);
    for (const std::uint64_t word : {index.header & 0xFFFFFFFF, index.header >> 32,
                                     std::uint64_t{index.size} + 8, std::uint64_t{count}})
      super.push_back(static_cast<std::uint32_t>(word));
    ++super[1];
  }
  EXPECT_TRUE(chunks.empty());
  super.resize(0x100018 / 4);
  EXPECT_EQ(file.Get<std::uint32_t>(file.First("indx", "strl").Data(), super.size()), super);
  return frames;
}

std::vector<Frame> FramesOf(const std::string& name, const Kind& kind) {
  const AviReader file(name);
  return kind.isAvi2 ? FramesOfAvi2(file, kind) : FramesOfAvi1(file, kind);
}

/// Numbers of the frames that a player finds, from the first one on.
Indexes SeenByFFprobe(const std::string& name) {
  std::istringstream lines(
      OutputOf("ffprobe -v quiet -show_entries packet=pts -of csv=p=0 '" + name + "' || true"));
  Indexes seen;
  for (std::uint64_t index = 0; lines >> index; lines.ignore(9, '\n')) seen.push_back(index);
  for (std::size_t i = seen.size(); i-- > 0;) seen[i] -= seen[0];
  return seen;
}

/// What a chunk shall hold: the pixels, or what TurboJPEG makes of them; and a pad byte.
FileBytes PayloadOf(const Kind& kind, const IQvImage& image) {
  std::span<std::uint8_t> payload(Bytes(&image), image.GetImagePlanePitch());
  const bool isGrey = image.GetImagePixelFormat() == Mono8;
  CQvJpegCompressor compressor;
  if (kind.isJpeg)
    payload = compressor.Compress(payload.data(), image.GetImageWidth(), image.GetImageHeight(),
                                  image.GetImageLinePitch(), isGrey ? TJPF_GRAY : TJPF_BGR,
                                  {isGrey ? TJSAMP_GRAY : TJSAMP_422, 75, isGrey ? 0 : 2048});
  FileBytes bytes(payload.begin(), payload.end());
  if (bytes.size() % 2 != 0) bytes.push_back('0');
  return bytes;
}

struct Avi : ::testing::Test {
  const TempDirectory directory;
  const std::string a = directory / "a.avi", b = directory / "b.avi", c = directory / "c.avi";
};

TEST_F(Avi, HoldsFramesAtTheirNumbers) {
  const Initialized initialized;
  const Indexes kIndexes{10, 11, 14, 20};
  for (const Kind& kind : kKinds)
    for (PixelFormat format : {Mono8, BGR8})
      for (std::size_t width : {3, 64}) {
        SCOPED_TRACE(std::string(kind.name) + ' ' + NameOf(format));
        EXPECT_THAT(kind.record({{a}, kIndexes, width, 5, format}),
                    ElementsAre("open " + a, "close " + a));
        const AviReader file(a);
        std::vector<Frame> frames = FramesOf(a, kind);
        ASSERT_EQ(frames.size(), 11U);
        for (const std::uint64_t index : kIndexes) {
          Buffer buffer = MakeBuffer();
          buffer->SetSize(width, 5, format, 4);
          IQvImage& image = *buffer->GetIQvImage();
          Paint(image, index);
          Frame& frame = frames[index - 10];
          EXPECT_EQ(file.Get(frame.offset, frame.size + frame.size % 2), PayloadOf(kind, image));
          frame.size = 0;
        }
        for (const Frame& frame : frames) EXPECT_EQ(frame.size, 0U);
        if (width == 64) {
          EXPECT_EQ(SeenByFFprobe(a), (Indexes{0, 1, 4, 10}));
        }
      }
}

// By 32 bits; with a | where the kinds differ, in their order, and a * where anything may stand. L
// is the largest chunk.
constexpr char kHead[] =
    "RIFF * AVI_ LIST 192|264|1049068|1049140 hdrl avih 56 40000 239616 0|0|2048|2048 "
    "2064|16|2064|16 4294967295|6|6|6 0 1 L|L|L+8|L+8 64 48 0 0 0 0 "
    "LIST 116|188|1048724|1048796 strl strh 56 vids DIB_|MJPG|DIB_|MJPG 0 0 0 400 10000 0 6 "
    "L|L|L+8|L+8 4294967295|7500|0|7500 0 0 3145792 "
    "strf 40 40 64 48 1572865 0|MJPG|0|MJPG 9216|9216|L|L 0 0 0 0 JUNK|strn|indx|strn "
    "3864|64|1048600|64 0|MJPG|4|MJPG";

TEST_F(Avi, HasTheHeadOfItsKind) {
  for (std::size_t k = 0; k < std::size(kKinds); ++k) {
    kKinds[k].record({{a}, {0, 1, 5}, 64, 48, BGR8, 600});
    const AviReader file(a);
    std::uint32_t largest = 0;
    for (const Frame& frame : FramesOf(a, kKinds[k])) largest = std::max(largest, frame.size);
    std::istringstream fields(kHead);
    std::uint64_t offset = 0;
    for (std::string field; fields >> field; offset += 4) {
      std::istringstream values(field);
      for (std::size_t i = 0; i <= k && std::getline(values, field, '|'); ++i) {
      }
      std::ranges::replace(field, '_', ' ');
      const std::uint32_t value =
          std::isdigit(field[0])               ? static_cast<std::uint32_t>(std::stoul(field))
          : field[0] == 'L' && field != "LIST" ? largest + (field == "L" ? 0 : 8)
                                               : Code(field + "   ");
      EXPECT_TRUE(field == "*" || file.Get<std::uint32_t>(offset, 1)[0] == value)
          << kKinds[k].name << ' ' << offset;
    }
    for (const Chunk& extended : file.All(Code("dmlh"), "odml"))
      EXPECT_EQ(file.Get(extended.Data(), 1)[0], 6);

    // A palette, where grey is not compressed.
    kKinds[k].record({{a}, {0}, 64, 48, Mono8});
    const Words format = AviReader(a).Get<std::uint32_t>(164, 268);
    EXPECT_EQ(format[1], kKinds[k].isJpeg ? 40U : 1064U);
    EXPECT_EQ(format[5] >> 16, kKinds[k].isJpeg ? 24U : 8U);
    EXPECT_EQ(format[267] == 0xFFFFFF, !kKinds[k].isJpeg);
  }
}

TEST_F(Avi, TellsTheRate) {
  const std::pair<double, std::array<std::uint32_t, 3>> kRates[] = {
      {30, {333, 10000, 33300}},
      {1.0 / 60, {600000, 10000, 60000000}},
      {65535, {1, 65535, 15}},
      {1e-300, {0xFFFFFFFF, 10000, 4294967295U * 100U}}};
  for (const auto& [fps, fields] : kRates) {
    kKinds[1].record({{a}, {0}, 8, 8, Mono8, 600, fps});
    const Words words = AviReader(a).Get<std::uint32_t>(0, 34);
    EXPECT_THAT(fields, ElementsAre(words[32], words[33], words[8]));
  }
}

TEST_F(Avi, FillsSegmentsByTheirEntries) {
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    Indexes indexes = UpTo(4028);
    kind.record({{a}, indexes, 2, 2, Mono8});
    EXPECT_EQ(AviReader(a).All(Code("movi"), "AVIX").size(), 0U);
    EXPECT_EQ(FramesOf(a, kind).size(), 4028U);
    // Then a few frames more, and two long gaps.
    for (std::uint64_t index : {4028, 4029, 9000, 21000, 21001}) indexes.push_back(index);
    kind.record({{a}, indexes, 2, 2, Mono8});
    EXPECT_EQ(AviReader(a).All(Code("movi"), "AVIX").size(), kind.isAvi2 ? 5U : 0U);
    Indexes present;
    const std::vector<Frame> frames = FramesOf(a, kind);
    for (std::size_t i = 0; i < frames.size(); ++i)
      if (frames[i].size != 0) present.push_back(i);
    EXPECT_EQ(present, indexes);
    EXPECT_EQ(SeenByFFprobe(a), indexes);
  }
}

/// AVI 2.0, whatever the file system of the test allows.
struct LargeFile : CAVIFile20 {
  using CAVIFile20::CAVIFile20;
  std::uint64_t MaximumFileSize() override { return 0x10000000000; }
};

TEST_F(Avi, FillsSegmentsAndFilesByTheirSize) {
  Recipe recipe{{a, b}, UpTo(40), 1 << 13, 1 << 13, Mono8};  // frames of 64 MiB
  g_writes.areSparse = true;
  Record<CAVIFileNotCompressed>(recipe);
  EXPECT_EQ(FramesOf(a, kKinds[0]).size(), 31U);  // less than 2 GiB
  EXPECT_EQ(FramesOf(b, kKinds[0]).size(), 9U);
  recipe.indexes = UpTo(70);
  Record<CodedAVIFile<LargeFile, AVI::kNotCompressed>>(recipe);
  g_writes.areSparse = false;
  EXPECT_EQ(FramesOf(a, kKinds[2]).size(), 70U);                 // more than 4 GiB
  EXPECT_EQ(AviReader(a).All(Code("movi"), "AVIX").size(), 4U);  // after 15 frames each
}

TEST_F(Avi, WritesLaterFilesOfARecordingWithoutTheOldIndex) {
  for (const Kind& kind : kKinds) {
    kind.record({{a, b, c}, {0, 1, 2, 3, 4, 5, 6}, 64, 48, BGR8, 4});
    EXPECT_FALSE(std::filesystem::exists(c));
    EXPECT_EQ(SeenByFFprobe(b), (Indexes{0, 1, 2}));
    const FileBytes bytes = ReadFile(b);
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_EQ(text.find("idx1") == std::string::npos, kind.isAvi2);
    EXPECT_EQ(text.find("movi") == 0x101000 - 24, kind.isAvi2);
  }
}

TEST_F(Avi, WithoutFramesHasAnEmptyList) {
  const std::size_t kSizes[] = {4096, 2056, 0x101000, 0x101000};
  for (std::size_t k = 0; k < std::size(kKinds); ++k) {
    kKinds[k].record({{a}, {}});
    const FileBytes bytes = ReadFile(a);
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_EQ(text.size(), kSizes[k]);
    const std::size_t list = kSizes[k] - (kKinds[k].isAvi2 || k == 1 ? 12 : 4);
    EXPECT_EQ(text.find("movi"), list);
    EXPECT_EQ(text[list - 4], kKinds[k].isAvi2 ? 12 : 4);
    EXPECT_EQ(text.find("idx1"), k == 1 ? 2048 : std::string::npos);
    EXPECT_EQ(text.substr(4, 4), kKinds[k].isAvi2 ? std::string(4, '\0') : "\xF8\xFF\xFF\xFF");
  }
}

TEST_F(Avi, KeepsWhatWasWrittenWhenAWriteFails) {
  // Writes of the head, and those before the first frame.
  const int kHeadWrites[] = {2, 2, 4, 4}, kFirstFrame[] = {3, 2, 4, 4};
  const Recipe recipe{{a, b}, {0, 1, 2}};
  for (std::size_t k : {0, 3}) {
    g_writes.count = 0;
    kKinds[k].record(recipe);
    const int writes = g_writes.count;
    for (int good = 0; good < writes; ++good) {
      SCOPED_TRACE(std::string(kKinds[k].name) + ' ' + std::to_string(good));
      g_writes.goodOnes = good;
      const Lines log = kKinds[k].record(recipe);
      ASSERT_EQ(g_writes.goodOnes, -2);
      if (good < kHeadWrites[k] || good >= kFirstFrame[k] + 3) {
        EXPECT_THAT(log, ElementsAre("open " + a, "close " + a));
        EXPECT_EQ(SeenByFFprobe(a).size(), 3U);
        continue;
      }
      // The failing frame is lost, the others follow in the next file.
      EXPECT_THAT(log, ElementsAre("open " + a, "close " + a, "open " + b, "close " + b));
      const auto before = static_cast<std::size_t>(std::max(good - kFirstFrame[k], 0));
      EXPECT_EQ(before == 0 ? 0 : FramesOf(a, kKinds[k]).size(), before);
      EXPECT_EQ(SeenByFFprobe(b).size(), 2 - before);
    }
  }
  // The index of a segment is tried again when the file closes.
  g_writes.goodOnes = 4 + 4028;
  kKinds[2].record({{a, b}, UpTo(4030), 2, 2, Mono8});
  EXPECT_EQ(FramesOf(a, kKinds[2]).size(), 4028U);
  EXPECT_EQ(SeenByFFprobe(b).size(), 2U);
}

TEST_F(Avi, GoesOnWhenFilesAndDirectoriesVanish) {
  const std::string deep = directory / "x/y/";
  const std::string longName = directory / (std::string(200, 'l') + '/' + std::string(200, 'n'));
  for (const Kind& kind : kKinds) {
    EXPECT_THAT(kind.record({{"/proc/a.avi", deep, longName}, {0, 1}}),
                ElementsAre("File /proc/a.avi could not be opened.",
                            "File " + deep + " could not be opened.", "open " + longName,
                            "close " + longName));
    EXPECT_EQ(FramesOf(longName, kind).size(), 2U);
  }
  Recording<CAVIFile20MJPEG> recording;
  recording.Prepare(64, 48, BGR8, 2);
  recording.listener.onEvent = [&] {
    if (recording.listener.log.size() == 1) std::filesystem::remove_all(deep);
  };
  EXPECT_EQ(recording.Record({deep + "a", deep + "b"}, {0, 1, 2, 3}).size(), 4U);
  EXPECT_FALSE(std::filesystem::exists(deep + "a"));
  EXPECT_EQ(SeenByFFprobe(deep + "b").size(), 2U);
}

TEST_F(Avi, EstimatesSizes) {
  const Recording<CAVIFile20NotCompressed> recording;
  kKinds[2].record({{a}, {0, 1, 2}});
  EXPECT_EQ(recording.file.GetAVIFileSize(64 * 48 * 3, 3), std::filesystem::file_size(a));
  EXPECT_EQ(recording.file.GetAVIFileSize(1, 0), 0x100FF4U);
  // Frames in a segment each: head, idx1, frames with their indexes, heads of two segments.
  EXPECT_EQ(recording.file.GetAVIFileSize(0x60000000, 3),
            0x101000 + 2048 + 3 * (0x60000000ULL + 2048 + 2048) + 2 * 2048);
}

}  // namespace
}  // namespace QvApi
