// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <zlib.h>

#include <algorithm>
#include <optional>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/QvPngWriter.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using GenICam::RuntimeException;

constexpr char kUnreadable[] = "File x.png is unreadable.";

FileBytes Written(IQvImage& image, EQvColorMapType_t type = QvColorMapType_Normal,
                  bool inversion = false, int phase = 0) {
  const TempDirectory directory;
  const std::string name = directory / "image.png";
  WritePng(&image, name.c_str(), OpenStream(name, "wb").get(), type, inversion, phase);
  return ReadFile(name);
}

void Load(Buffer& buffer, const FileBytes& bytes) {
  LoadPng(buffer.Get(), "x.png", OpenBytes(bytes).get());
}

constexpr unsigned kGrey = 0, kColor = 2, kPalette = 3, kGreyAlpha = 4, kColorAlpha = 6;

const struct {
  PixelFormat format;
  unsigned colorType;
  unsigned depth;
} kKinds[] = {
    {Mono8, kGrey, 8},         {Mono10, kGrey, 16},       {Mono12, kGrey, 16},
    {Mono14, kGrey, 16},       {Mono16, kGrey, 16},       {RGB8, kColor, 8},
    {BGR8, kColor, 8},         {RGB16, kColor, 16},       {BGR10, kColor, 16},
    {BGR12, kColor, 16},       {BGR14, kColor, 16},       {BGR16, kColor, 16},
    {RGBa8, kColorAlpha, 8},   {BGRa8, kColorAlpha, 8},   {BGRa10, kColorAlpha, 16},
    {BGRa12, kColorAlpha, 16}, {BGRa14, kColorAlpha, 16}, {BGRa16, kColorAlpha, 16},
};

/// A sample spread over the depth of the file: its upper bits come again below.
unsigned Spread(unsigned sample, std::size_t bits) {
  if (bits == 8 || bits == 16) return sample;
  return (sample << (16 - bits) | sample >> (2 * bits - 16)) & 0xFFFF;
}

TEST(WritePng, ShowsTheSamePictureToOthers) {
  const TempDirectory directory;
  const std::string name = directory / "image.png";
  for (const auto& kind : kKinds)
    for (bool noise : {true, false}) {
      constexpr std::size_t kWidth = 23, kHeight = 9;
      TestImage image(kWidth, kHeight, kind.format, 5);
      // Both of the ways in which lines are compressed.
      if (noise) image.Randomize(3);
      SetSample(image, 0, 0, (1U << Info(kind.format).GetEachComponentEffectiveBitCount()) - 1);
      const FileBytes bytes = Written(image);
      ASSERT_GT(bytes.size(), 26U);
      EXPECT_EQ(bytes[24], kind.depth) << NameOf(kind.format);
      EXPECT_EQ(bytes[25], kind.colorType) << NameOf(kind.format);
      EXPECT_EQ(bytes[28], 0) << "interlaced";
      WriteFile(name, bytes);

      const SeenPicture seen = SeenByImageMagick(name, kind.depth);
      ASSERT_EQ(seen.width, kWidth);
      ASSERT_EQ(seen.height, kHeight);
      const std::size_t components = Info(kind.format).GetComponentCount();
      const std::size_t bits = Info(kind.format).GetEachComponentEffectiveBitCount();
      const std::array<std::size_t, 3> places = ColorPlaces(image);
      for (std::size_t i = 0; i < kWidth * kHeight * 4; ++i) {
        const std::size_t x = i / 4 % kWidth, y = i / 4 / kWidth, c = i % 4;
        const unsigned expected =
            c == 3 && components < 4
                ? (1U << kind.depth) - 1
                : Spread(SampleAt(image, components * x + (c < 3 ? places[c] : 3), y), bits);
        ASSERT_EQ(seen.samples[i], expected) << NameOf(kind.format) << ' ' << x << ' ' << y;
      }
    }
}

TEST(WritePng, MakesOneFileOfTheSameColors) {
  TestImage bgr(31, 7, BGR8), rgb(31, 7, RGB8);
  bgr.Randomize(1);
  for (std::size_t y = 0; y < 7; ++y)
    for (std::size_t i = 0; i < 31 * 3; ++i)
      SetSample(rgb, i, y, SampleAt(bgr, i / 3 * 3 + 2 - i % 3, y));
  EXPECT_EQ(Written(bgr), Written(rgb));
}

TEST(WritePng, TakesAnySampleAboveItsDepth) {
  Buffer buffer = MakeBuffer();
  for (PixelFormat format : {Mono10, Mono12, Mono14, BGR10, BGRa12}) {
    TestImage image(16, 4, format);
    image.Randomize(1, false);
    Load(buffer, Written(image));
    EXPECT_EQ(buffer->GetIQvImage()->GetImageWidth(), 16U);
  }
}

TEST(WritePng, PutsTheColorMapIntoAPalette) {
  const TempDirectory directory;
  const std::string name = directory / "image.png";
  TestImage image(256, 2, Mono8);
  for (unsigned x = 0; x < 256; ++x) SetSample(image, x, 1, x);
  const struct {
    EQvColorMapType_t type;
    bool inversion;
    int phase;
  } kMaps[] = {{QvColorMapType_PseudoColor_BGR, false, 0},
               {QvColorMapType_PseudoColor_BGRB, true, 77},
               {QvColorMapType_Normal, true, 0},
               {QvColorMapType_Normal, false, 1}};
  for (const auto& map : kMaps) {
    const FileBytes bytes = Written(image, map.type, map.inversion, map.phase);
    EXPECT_EQ(bytes[25], kPalette);
    WriteFile(name, bytes);
    const SeenPicture seen = SeenByImageMagick(name, 8);
    std::vector<unsigned> table(256);
    SetColorMap(table.data(), map.type, map.inversion, map.phase);
    for (std::size_t x = 0; x < 256; ++x)
      EXPECT_EQ(seen.samples[4 * (256 + x)] << 16 | seen.samples[4 * (256 + x) + 1] << 8 |
                    seen.samples[4 * (256 + x) + 2],
                table[x]);
    // It comes back as its indices.
    Buffer buffer = MakeBuffer();
    Load(buffer, bytes);
    EXPECT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), Mono8);
    EXPECT_EQ(SampleAt(*buffer->GetIQvImage(), 200, 1), 200U);
  }
  TestImage deep(4, 4, Mono12);
  EXPECT_EQ(Written(deep, QvColorMapType_PseudoColor_BGR), Written(deep)) << "for Mono8 alone";
}

TEST(WritePng, RefusesWhatItHasNoKindFor) {
  for (PixelFormat format : {BayerRG8, Mono10p, YCbCr422_8, RGB8_Planar, CBGR10p32, Mono8s}) {
    TestImage image(4, 4, format);
    EXPECT_EQ(MessageOf<RuntimeException>([&] { Written(image); }),
              "Not supported pixelformat " + NameOf(format));
  }
  ForeignImage tooWide(&tooWide, std::size_t{1} << 32, 1, std::size_t{1} << 32, Mono8);
  EXPECT_THAT(MessageOf<RuntimeException>([&] { Written(tooWide); }),
              testing::EndsWith("is unwritable."));
}

TEST(LoadPng, GivesBackWhatWasSavedIn8Bits) {
  Buffer buffer = MakeBuffer();
  for (const auto& kind : kKinds)
    for (std::size_t width : {1, 2, 7, 64}) {
      TestImage image(width, 5, kind.format, 3);
      image.Randomize(static_cast<unsigned>(width));
      Load(buffer, Written(image));
      const IQvImage& loaded = *buffer->GetIQvImage();
      const PixelFormat format = kind.colorType == kGrey    ? Mono8
                                 : kind.colorType == kColor ? RGB8
                                                            : RGBa8;
      ASSERT_EQ(loaded.GetImagePixelFormat(), format) << NameOf(kind.format);
      ASSERT_EQ(loaded.GetImageWidth(), width);
      const std::size_t components = Info(kind.format).GetComponentCount();
      const std::size_t bits = Info(kind.format).GetEachComponentEffectiveBitCount();
      const std::array<std::size_t, 3> places = ColorPlaces(image);
      for (std::size_t y = 0; y < 5; ++y)
        for (std::size_t i = 0; i < width * components; ++i) {
          const std::size_t c = i % components;
          const unsigned sample =
              SampleAt(image, i - c + (c < 3 && components > 1 ? places[c] : c), y);
          ASSERT_EQ(SampleAt(loaded, i, y), bits == 8 ? sample : Spread(sample, bits) >> 8)
              << NameOf(kind.format);
        }
    }
}

TEST(LoadPng, TakesTheVariantsThatOthersWrite) {
  const TempDirectory directory;
  const std::string name = directory / "other.png";
  // What ImageMagick is told to make of a picture that is built in.
  const struct {
    const char* options;
    PixelFormat format;
    unsigned divisor;  ///< Of what is seen, since samples below 8 bits keep their value.
  } kCases[] = {
      {"rose: -define png:color-type=2", RGB8, 1},
      {"rose: -interlace PNG -define png:color-type=2", RGB8, 1},
      {"rose: -colorspace Gray -interlace PNG -define png:color-type=0", Mono8, 1},
      {"rose: -define png:color-type=2 -define png:bit-depth=16", RGB8, 1},
      {"rose: -alpha set -channel A -evaluate set 40% +channel -define png:color-type=6", RGBa8, 1},
      {"rose: -alpha set -interlace PNG -define png:color-type=6 -define png:bit-depth=16", RGBa8,
       1},
      {"rose: -set comment filler -define png:color-type=2 -density 300", RGB8, 1},
      {"rose: -colorspace Gray -threshold 50% -define png:color-type=0 -define png:bit-depth=1",
       Mono8, 255},
      {"rose: -colorspace Gray -posterize 4 -define png:color-type=0 -define png:bit-depth=2",
       Mono8, 85},
      {"rose: -colorspace Gray -posterize 16 -interlace PNG -define png:color-type=0 "
       "-define png:bit-depth=4",
       Mono8, 17},
  };
  for (const auto& row : kCases) {
    OutputOf(std::string("convert-im6.q16 ") + row.options + " png:" + name);
    Buffer buffer = MakeBuffer();
    LoadPng(buffer.Get(), name.c_str(), OpenStream(name, "rb").get());
    const IQvImage& image = *buffer->GetIQvImage();
    ASSERT_EQ(image.GetImagePixelFormat(), row.format) << row.options;
    const FileBytes file = ReadFile(name);
    // What libpng strips are the lower bytes, so 16 bits are compared as such.
    const unsigned depth = file[24] == 16 ? 16 : 8;
    const SeenPicture seen = SeenByImageMagick(name, depth);
    ASSERT_EQ(image.GetImageWidth(), seen.width);
    ASSERT_EQ(image.GetImageHeight(), seen.height);
    const std::size_t components = Info(row.format).GetComponentCount();
    for (std::size_t i = 0; i < seen.width * seen.height * components; ++i) {
      const std::size_t pixel = i / components;
      const unsigned shown = seen.samples[4 * pixel + i % components];
      ASSERT_EQ(SampleAt(image, i % (seen.width * components), pixel / seen.width),
                (depth == 16 ? shown >> 8 : shown) / row.divisor)
          << row.options << ' ' << i;
    }
  }
}

// --- Files put together by hand -----------------------------------------------------------------

void AppendBig32(FileBytes& bytes, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

void AppendChunk(FileBytes& file, const std::string& type, const FileBytes& data) {
  AppendBig32(file, static_cast<std::uint32_t>(data.size()));
  const std::size_t start = file.size();
  file.insert(file.end(), type.begin(), type.end());
  file.insert(file.end(), data.begin(), data.end());
  AppendBig32(file, static_cast<std::uint32_t>(
                        ::crc32(0, file.data() + start, static_cast<uInt>(file.size() - start))));
}

FileBytes Deflated(const FileBytes& raw) {
  uLongf size = ::compressBound(raw.size());
  FileBytes packed(size);
  ::compress(packed.data(), &size, raw.data(), raw.size());
  packed.resize(size);
  return packed;
}

struct HandMade {
  std::uint32_t width = 3;
  std::uint32_t height = 2;
  unsigned depth = 8;
  unsigned colorType = kGrey;
  unsigned interlace = 0;
  std::vector<std::pair<std::string, FileBytes>> beforeData = {};
  FileBytes lines = {0, 1, 2, 3, 0, 4, 5, 6};
};

FileBytes Make(const HandMade& parts) {
  FileBytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  FileBytes header;
  AppendBig32(header, parts.width);
  AppendBig32(header, parts.height);
  for (unsigned field : {parts.depth, parts.colorType, 0U, 0U, parts.interlace})
    header.push_back(static_cast<std::uint8_t>(field));
  AppendChunk(file, "IHDR", header);
  for (const auto& [type, data] : parts.beforeData) AppendChunk(file, type, data);
  AppendChunk(file, "IDAT", Deflated(parts.lines));
  AppendChunk(file, "IEND", {});
  return file;
}

void ExpectRefused(const FileBytes& bytes, const std::string& what) {
  Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(3, 1, Mono8, QvMemoryInitialization_One);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { Load(buffer, bytes); }), kUnreadable) << what;
  EXPECT_EQ(buffer->GetIQvImage()->GetImageWidth(), 3U) << what;
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), FileBytes(4, 0xFF)) << what;
}

TEST(LoadPng, RefusesWhatDoesNotFit) {
  const FileBytes grey{0, 1, 2, 3, 4, 5, 6, 0, 1, 2, 3, 4, 5, 6};
  const struct {
    const char* what;
    HandMade parts;
  } kCases[] = {
      {"width 0", {.width = 0}},
      {"height 0", {.height = 0}},
      {"width above 31 bits", {.width = 0x80000000}},
      {"largest sides", {.width = 0x7FFFFFFF, .height = 0x7FFFFFFF}},
      {"largest width", {.width = 0x7FFFFFFF}},
      {"largest height", {.height = 0x7FFFFFFF}},
      {"largest sides, 16 bits, alpha",
       {.width = 0x7FFFFFFF, .height = 0x7FFFFFFF, .depth = 16, .colorType = kColorAlpha}},
      {"largest sides, interlaced",
       {.width = 0x7FFFFFFF, .height = 0x7FFFFFFF, .depth = 1, .interlace = 1}},
      {"more lines than data", {.height = 3}},
      {"3 bits", {.depth = 3}},
      {"unknown colour type", {.colorType = 1}},
      {"unknown interlace", {.interlace = 2}},
      {"palette missing", {.colorType = kPalette}},
      {"grey with alpha", {.colorType = kGreyAlpha, .lines = grey}},
      {"unknown filter", {.lines = {5, 1, 2, 3, 0, 4, 5, 6}}},
      {"unknown critical chunk", {.beforeData = {{"ABCD", {1, 2, 3}}}}},
      {"second header", {.beforeData = {{"IHDR", FileBytes(13)}}}},
  };
  for (const auto& row : kCases) ExpectRefused(Make(row.parts), row.what);

  Buffer buffer = MakeBuffer();
  Load(buffer, Make({}));  // all of the above from a good file
  EXPECT_EQ(AllBytes(buffer->GetIQvImage())[6], 6);
}

TEST(LoadPng, PassesOverWhatIsNoPixel) {
  Buffer buffer = MakeBuffer();
  // Texts and profiles that unpack to a thousand times their size, and many of them.
  FileBytes text{'k', 0, 0};
  const FileBytes bomb = Deflated(FileBytes(4'000'000));
  text.insert(text.end(), bomb.begin(), bomb.end());
  HandMade parts;
  for (const char* type : {"zTXt", "iCCP"}) parts.beforeData.emplace_back(type, text);
  for (int i = 0; i < 3000; ++i) parts.beforeData.emplace_back("tEXt", FileBytes{'a', 0, 'b'});
  parts.beforeData.emplace_back("abCd", FileBytes(100'000));
  Load(buffer, Make(parts));
  EXPECT_EQ(AllBytes(buffer->GetIQvImage())[0], 1);

  // A damaged one of them.
  FileBytes file = Make({.beforeData = {{"tEXt", {'a', 0, 'b'}}}});
  file[33 + 8] ^= 1;
  Load(buffer, file);
  EXPECT_EQ(AllBytes(buffer->GetIQvImage())[0], 1);
}

/// Small files of each way to store pixels.
std::vector<FileBytes> SmallFiles() {
  TestImage color(5, 4, RGB8), deep(5, 4, Mono12), alpha(5, 4, RGBa8), grey(5, 4, Mono8);
  for (TestImage* image : {&color, &deep, &alpha}) image->Randomize(9);
  std::vector<FileBytes> files{Written(color), Written(deep), Written(alpha),
                               Written(grey, QvColorMapType_PseudoColor_BGR)};
  // 8 x 8 pixels of 2 bits: seven passes of 1, 1, 1, 2, 2, 4 and 4 lines, the last ones of 2 bytes,
  // all others of 1, each with its filter in front.
  files.push_back(Make({.width = 8,
                        .height = 8,
                        .depth = 2,
                        .interlace = 1,
                        .lines = FileBytes((1 + 1 + 1 + 2 + 2 + 4) * 2 + 4 * 3)}));
  return files;
}

TEST(LoadPng, RefusesAFileCutAtAnyLength) {
  for (const FileBytes& good : SmallFiles()) {
    Buffer buffer = MakeBuffer();
    Load(buffer, good);
    for (std::size_t size = 1; size < good.size(); ++size)
      ExpectRefused({good.begin(), good.begin() + static_cast<long>(size)}, std::to_string(size));
  }
}

TEST(LoadPng, EndsOrdinarilyWhateverByteIsDamaged) {
  for (const FileBytes& good : SmallFiles())
    for (std::size_t at = 0; at < good.size(); ++at)
      for (unsigned change : {0x01, 0x10, 0x80, 0xFF}) {
        FileBytes bytes = good;
        bytes[at] ^= static_cast<std::uint8_t>(change);
        Buffer buffer = MakeBuffer();
        try {
          Load(buffer, bytes);
          EXPECT_LE(buffer->GetIQvImage()->GetImagePlanePitch(), 128U);
        } catch (const RuntimeException& e) {
          EXPECT_STREQ(e.GetDescription(), kUnreadable);
          EXPECT_FALSE(buffer->HasImageBuffer());
        }
      }
}

TEST(LoadPng, SaysNothingOnTheConsole) {
  testing::internal::CaptureStderr();
  FileBytes bytes = SmallFiles()[0];
  bytes[bytes.size() - 20] ^= 0xFF;
  ExpectRefused(bytes, "damaged data");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace QvApi
