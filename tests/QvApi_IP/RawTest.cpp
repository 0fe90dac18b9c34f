// SPDX-License-Identifier: MIT
#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/QvRawWriter.h"
#include "QvSDKCommon/ReadableMemory.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using GenICam::RuntimeException;

FileBytes Written(IQvImage& image) {
  char* bytes = nullptr;
  std::size_t size = 0;
  Stream file(::open_memstream(&bytes, &size), &std::fclose);
  const std::unique_ptr<char*, void (*)(char**)> owner(&bytes,
                                                       [](char** owned) { std::free(*owned); });
  WriteRaw(&image, "x.raw", file.get());
  file.reset();
  return {bytes, bytes + size};
}

void Load(Buffer& buffer, const FileBytes& bytes) {
  LoadRaw(buffer.Get(), "x.raw", OpenBytes(bytes).get());
}

/// A file put together field by field.
FileBytes FileOf(std::uint64_t width, std::uint64_t height, std::uint64_t pitch,
                 std::uint64_t format, const FileBytes& pixels) {
  FileBytes bytes{'Q', 'V', 'R', 'W'};
  for (std::uint32_t field : {1U, 1U, 2U, 0x10000U, 0U}) Append(bytes, field);
  for (std::uint64_t field : {std::uint64_t{72}, pixels.size(), width, height, pitch, format})
    Append(bytes, field);
  bytes.insert(bytes.end(), pixels.begin(), pixels.end());
  return bytes;
}

TEST(RawFile, GivesBackEveryFormatAndPitch) {
  for (const PixelFormatRow& row : kPixelFormats)
    for (std::size_t width : {1, 7, 64})
      for (std::size_t padding : {0, 1, 200}) {
        const std::size_t pitch = LineBytes(row.format, width) + padding;
        FileBytes memory(3 * pitch * row.planeCount);
        FillPattern(memory.data(), memory.size());
        ForeignImage image(memory.data(), width, 3, pitch, row.format);
        std::fill(memory.begin() + static_cast<long>(GetReadableSize(image)), memory.end(),
                  std::uint8_t{0});
        const FileBytes written = Written(image);
        const std::uint64_t code = static_cast<std::uint64_t>(row.format);
        ASSERT_EQ(written, FileOf(width, 3, pitch, code >> 31 ? code | ~0ULL << 32 : code, memory))
            << row.name << ' ' << width << ' ' << padding;

        Buffer buffer = MakeBuffer();
        if (row.format == CYCbCr420_8_YY_Cb_Cr_Planar && padding != 0) continue;  // has none
        Load(buffer, written);
        EXPECT_EQ(Written(*buffer->GetIQvImage()), written) << row.name;
      }
}

TEST(RawFile, HoldsOfAViewAsMuchAsOfItsParent) {
  Buffer parent = MakeBuffer(), loaded = MakeBuffer();
  parent->CreateBuffer(10, 6, RGB8_Planar, QvMemoryInitialization_One);
  for (std::size_t y : {0, 3}) {
    const FileBytes written = Written(*parent->GetIQvImage()->GetROIImage(2, y, 4, 6 - y));
    FileBytes pixels(12 * 6 * 3 - (y * 12 + 2), 0xFF);
    pixels.resize(12 * 6 * 3);
    EXPECT_EQ(FileBytes(written.begin() + 72, written.end()), pixels);
    if (y == 0) Load(loaded, written);
    EXPECT_EQ(AllBytes(loaded->GetIQvImage(), 3) == pixels, y == 0);
  }
}

/// 5 x 4 pixels of Mono8, with three bytes behind each line.
FileBytes GoodFile() {
  FileBytes pixels(32);
  FillPattern(pixels.data(), pixels.size());
  return FileOf(5, 4, 8, 0x01080001, pixels);
}

/// Expects that a file is refused and that the buffer stays as it was.
void ExpectRefused(const FileBytes& bytes, std::size_t number) {
  Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(3, 1, Mono8, QvMemoryInitialization_One);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { Load(buffer, bytes); }), "File x.raw is unreadable.")
      << number;
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), FileBytes(4, 0xFF)) << number;
}

TEST(RawFile, IsRefusedIfItContradictsItself) {
  constexpr std::uint64_t kMax = UINT64_MAX, kHalf = std::uint64_t{1} << 63;
  constexpr std::size_t kSize = 32, kWidth = 40, kHeight = 48, kPitch = 56, kFormat = 64;
  const std::vector<std::pair<std::size_t, std::uint64_t>> kCases[] = {
      {{kPitch, 4}, {kSize, 16}},
      {{kPitch, 0}, {kSize, 0}},
      {{kHeight, 0}, {kSize, 0}},
      {{kHeight, 5}, {kSize, 40}},
      {{kHeight, kHalf / 4 + 4}},
      {{kFormat, 0x02180021}, {kHeight, kHalf / 8}, {kSize, kHalf}},
      {{kWidth, kMax}, {kHeight, 1}, {kPitch, kMax}, {kSize, kMax}},
      {{kWidth, kHalf}, {kHeight, 1}, {kPitch, kHalf}, {kSize, kHalf}},
      {{kFormat, kMax}},
  };
  for (const auto& fields : kCases) {
    FileBytes bytes = GoodFile();
    for (const auto& [at, value] : fields) std::memcpy(&bytes[at], &value, sizeof(value));
    ExpectRefused(bytes, static_cast<std::size_t>(&fields - kCases));
  }
}

TEST(RawFile, IsRefusedIfCutOrDamagedAnywhere) {
  const FileBytes good = GoodFile();
  for (std::size_t size = 1; size < good.size(); ++size)
    ExpectRefused({good.begin(), good.begin() + static_cast<long>(size)}, size);
  for (std::size_t bit = 0; bit < 72 * 8; ++bit) {
    FileBytes bytes = good;
    bytes[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
    // Four words and the upper half of the format mean nothing; a line may have 1 to 8 pixels, and
    // one bit lies between Mono8 and BayerRG8.
    if ((bit >= 32 && bit < 160) || bit >= 544 || (bit >= 320 && bit < 323) || bit == 515) {
      Buffer buffer = MakeBuffer();
      Load(buffer, bytes);
      EXPECT_EQ(AllBytes(buffer->GetIQvImage()), FileBytes(good.begin() + 72, good.end()));
    } else {
      ExpectRefused(bytes, bit);
    }
  }
}

TEST(RawFile, BecomesABlackImageIfReadingFailsHalfway) {
  const FileBytes good = GoodFile();
  BrokenFile broken{good, good.size() - 12};
  const Stream stream = broken.Open();
  Buffer buffer = MakeBuffer();
  EXPECT_THROW(LoadRaw(buffer.Get(), "x.raw", stream.get()), RuntimeException);
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), FileBytes(32, 0));
}

}  // namespace
}  // namespace QvApi
