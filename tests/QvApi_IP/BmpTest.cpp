// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <numeric>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/QvBMPWriter.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using GenICam::RuntimeException;

struct Kind {
  PixelFormat format;
  std::uint16_t bitCount;
  std::uint32_t compression;
  std::uint32_t dataOffset;
  std::vector<std::uint32_t> masks;
};
const Kind kKinds[] = {
    {Mono8, 8, 0, 1078, {}},
    {Mono10, 16, 3, 66, {1023, 1023, 1023}},
    {Mono12, 16, 3, 66, {4095, 4095, 4095}},
    {Mono14, 16, 3, 66, {16383, 16383, 16383}},
    {Mono16, 16, 3, 66, {65535, 65535, 65535}},
    {BGR8, 24, 0, 54, {}},
    {BGRa8, 32, 0, 54, {}},
    {CBGR10p32, 32, 3, 66, {0x3FF00000, 0x000FFC00, 0x000003FF}},
};

constexpr struct {
  EQvColorMapType_t type = QvColorMapType_Normal;
  bool inversion = false;
  int phase = 0;
} kNoMap;

/// The bytes that WriteBMP makes.
FileBytes Written(IQvImage& image, EQvColorMapType_t type = kNoMap.type,
                  bool inversion = kNoMap.inversion, int phase = kNoMap.phase) {
  const TempDirectory directory;
  const std::string name = directory / "image.bmp";
  WriteBMP(&image, name.c_str(), OpenStream(name, "wb").get(), type, inversion, phase);
  return ReadFile(name);
}

void Load(Buffer& buffer, const FileBytes& bytes) {
  LoadBMP(buffer.Get(), "x.bmp", OpenBytes(bytes).get());
}

/// Everything in front of the pixels, put together field by field.
FileBytes HeadersByHand(const Kind& kind, std::uint32_t width, std::uint32_t height,
                        std::uint32_t stride) {
  FileBytes bytes{'B', 'M'};
  const std::uint32_t colors = kind.format == Mono8 ? 256 : 0;
  Append<std::uint32_t>(bytes, kind.dataOffset + height * stride);
  Append<std::uint32_t>(bytes, 0);
  Append<std::uint32_t>(bytes, kind.dataOffset);
  for (std::uint32_t field : {40U, width, height}) Append(bytes, field);
  Append<std::uint16_t>(bytes, 1);
  Append<std::uint16_t>(bytes, kind.bitCount);
  for (std::uint32_t field : {kind.compression, height * stride, 0U, 0U, colors, colors})
    Append(bytes, field);
  for (std::uint32_t mask : kind.masks) Append(bytes, mask);
  for (std::uint32_t i = 0; i < colors; ++i) Append<std::uint32_t>(bytes, i * 0x010101);
  return bytes;
}

TEST(WriteBMP, LaysTheFileOutAsTold) {
  for (const Kind& kind : kKinds)
    for (std::size_t padding : {0, 1, 2, 3, 4, 9}) {
      constexpr std::size_t kWidth = 5, kHeight = 3;
      TestImage image(kWidth, kHeight, kind.format, padding);
      image.Randomize(1);
      const std::size_t pitch = image.GetImageLinePitch();
      const std::size_t stride = (pitch + 3) / 4 * 4;
      FileBytes expected = HeadersByHand(kind, kWidth, kHeight, static_cast<std::uint32_t>(stride));
      for (std::size_t y = kHeight; y-- > 0;) {
        // Of the last line's padding nobody knows whether it exists.
        const std::size_t size =
            y + 1 == kHeight ? LineBytes(kind.format, kWidth) : image.GetImageLinePitch();
        expected.insert(expected.end(), image.Line(y), image.Line(y) + size);
        expected.resize(expected.size() + stride - size);
      }
      EXPECT_EQ(Written(image), expected) << NameOf(kind.format) << ' ' << padding;
    }
}

TEST(WriteBMP, PutsTheColorMapIntoThePalette) {
  TestImage image(4, 2, Mono8);
  const FileBytes plain = Written(image);
  const FileBytes colored = Written(image, QvColorMapType_PseudoColor_BGR, false, 0);
  const auto entry = [&](std::size_t i) {
    return std::vector<unsigned>(colored.begin() + 54 + static_cast<long>(4 * i),
                                 colored.begin() + 58 + static_cast<long>(4 * i));
  };
  EXPECT_EQ(entry(0), (std::vector<unsigned>{255, 0, 0, 0}));        // blue
  EXPECT_EQ(entry(128), (std::vector<unsigned>{0, 255, 0, 0}));      // green
  EXPECT_EQ(entry(255), (std::vector<unsigned>{0x00, 3, 0xFF, 0}));  // nearly red
  EXPECT_TRUE(std::equal(plain.begin() + 1078, plain.end(), colored.begin() + 1078));

  Buffer buffer = MakeBuffer();
  EXPECT_EQ(MessageOf<RuntimeException>([&] { Load(buffer, colored); }),
            "File x.bmp is unreadable.");
  const FileBytes negative = Written(image, QvColorMapType_Normal, true, 0);
  EXPECT_EQ(negative[54], 255);
  EXPECT_EQ(Written(image, QvColorMapType_Normal, false, 10)[54], 10);
}

TEST(WriteBMP, TakesOfAViewWhatIsThere) {
  Buffer buffer = MakeBuffer();
  buffer->SetSize(10, 6, BGR8, 0);
  IQvImage& parent = *buffer->GetIQvImage();
  const std::size_t pitch = parent.GetImageLinePitch();
  std::uint8_t* bytes = Bytes(&parent);
  FillPattern(bytes, pitch * 6);

  // In the middle all lines are as long as the pitch; at the bottom the last one ends before.
  for (std::size_t y0 : {1, 3}) {
    IQvImage& view = *parent.GetROIImage(2, y0, 4, 3);
    FileBytes expected = HeadersByHand(kKinds[5], 4, 3, static_cast<std::uint32_t>(pitch));
    for (std::size_t y = 3; y-- > 0;)
      for (std::size_t i = 0; i < pitch; ++i) {
        const std::size_t at = (y0 + y) * pitch + 6 + i;
        expected.push_back(at < 6 * pitch ? bytes[at] : 0);
      }
    EXPECT_EQ(Written(view), expected) << y0;

    IQvImage& viewOfView = *view.GetROIImage(1, 1, 3, 2);
    const FileBytes written = Written(viewOfView);
    EXPECT_EQ(written.size(), 54 + 2 * pitch);
    for (std::size_t i = 0; i < pitch; ++i) {
      const std::size_t at = (y0 + 2) * pitch + 9 + i;
      EXPECT_EQ(written[54 + i], at < 6 * pitch ? bytes[at] : 0) << i;
    }
  }
}

TEST(WriteBMP, RefusesWhatItHasNoKindFor) {
  for (PixelFormat format : {RGB8, RGBa8, BGR10, BayerRG8, Mono10p, YCbCr422_8, Mono8s}) {
    TestImage image(4, 4, format);
    EXPECT_EQ(MessageOf<RuntimeException>([&] { Written(image); }),
              "Not supported pixelformat " + NameOf(format));
  }
  ForeignImage tooLarge(&tooLarge, std::size_t{1} << 32, 1, std::size_t{1} << 32, Mono8);
  EXPECT_THAT(MessageOf<RuntimeException>([&] { Written(tooLarge); }),
              testing::EndsWith("is unwritable."));
  ForeignImage manyBytes(&manyBytes, 65536, 65536, 65536, Mono8);
  EXPECT_THAT(MessageOf<RuntimeException>([&] { Written(manyBytes); }),
              testing::EndsWith("is unwritable."));
}

TEST(WriteBMP, ShowsTheSamePictureToOthers) {
  const TempDirectory directory;
  for (const Kind& kind : kKinds)
    for (std::size_t width : {4, 6, 7}) {
      TestImage image(width, 5, kind.format, (4 - LineBytes(kind.format, width) % 4) % 4);
      image.Randomize(static_cast<unsigned>(width));
      const std::string name = directory / "image.bmp";
      WriteFile(name, Written(image));
      const unsigned bits =
          kind.format == CBGR10p32
              ? 10
              : static_cast<unsigned>(Info(kind.format).GetEachComponentEffectiveBitCount());
      const SeenPicture seen = SeenByImageMagick(name, bits > 8 ? 16 : 8);
      ASSERT_EQ(seen.width, width);
      ASSERT_EQ(seen.height, 5U);
      const std::array<std::size_t, 3> places = ColorPlaces(image);
      const std::size_t components = Info(kind.format).GetComponentCount();
      for (std::size_t i = 0; i < 3 * width * 5; ++i) {
        const std::size_t x = i / 3 % width, y = i / 3 / width, c = i % 3;
        unsigned sample;
        if (kind.format == CBGR10p32) {
          std::uint32_t word;
          std::memcpy(&word, image.Line(y) + 4 * x, 4);
          sample = word >> (20 - 10 * c) & 1023;
        } else {
          sample = SampleAt(image, components * x + places[c], y);
        }
        // It scales fields of up to 16 bits by shifting them up.
        const unsigned shown = seen.samples[4 * (y * width + x) + c];
        ASSERT_EQ(bits > 8 ? shown >> (16 - bits) : shown, sample)
            << NameOf(kind.format) << ' ' << x << ' ' << y << ' ' << c;
      }
    }
}

TEST(LoadBMP, GivesBackWhatWasSaved) {
  Buffer buffer = MakeBuffer();
  for (const Kind& kind : kKinds)
    for (std::size_t width = 1; width <= 9; ++width)
      for (std::size_t height : {1, 2, 5}) {
        Buffer source = MakeBuffer();
        source->SetSize(width, height, kind.format, 0);
        IQvImage& image = *source->GetIQvImage();
        FillPattern(Bytes(&image), image.GetImagePlanePitch());
        Load(buffer, Written(image));
        const IQvImage& loaded = *buffer->GetIQvImage();
        EXPECT_EQ(loaded.GetImagePixelFormat(), kind.format);
        EXPECT_EQ(loaded.GetImageWidth(), width);
        EXPECT_EQ(loaded.GetImageHeight(), height);
        EXPECT_EQ(AllBytes(&loaded), AllBytes(&image)) << NameOf(kind.format) << ' ' << width;
      }
}

/// A good file of 3 x 2 pixels, whose samples count up.
FileBytes GoodFile(const Kind& kind) {
  const std::size_t stride = (LineBytes(kind.format, 3) + 3) / 4 * 4;
  FileBytes bytes = HeadersByHand(kind, 3, 2, static_cast<std::uint32_t>(stride));
  for (std::size_t i = 0; i < 2 * stride; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
  return bytes;
}

void Set32(FileBytes& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

TEST(LoadBMP, TakesTheVariantsThatOthersWrite) {
  Buffer buffer = MakeBuffer();
  FileBytes bytes = GoodFile(kKinds[5]);
  Set32(bytes, 22, static_cast<std::uint32_t>(-2));
  Load(buffer, bytes);
  EXPECT_EQ(Bytes(buffer->GetIQvImage())[0], 0) << "top down";
  Set32(bytes, 22, 2);
  Load(buffer, bytes);
  EXPECT_EQ(Bytes(buffer->GetIQvImage())[0], 12) << "bottom up";

  // A longer header, or anything else in front of the pixels.
  bytes.insert(bytes.begin() + 54, 70, 0xEE);
  Set32(bytes, 2, static_cast<std::uint32_t>(bytes.size()));
  Set32(bytes, 10, 54 + 70);
  Set32(bytes, 14, 108);
  Load(buffer, bytes);
  EXPECT_EQ(Bytes(buffer->GetIQvImage())[0], 12);

  // The number of colours need not be said; the fourth byte of an entry means nothing.
  bytes = GoodFile(kKinds[0]);
  Set32(bytes, 46, 0);
  Set32(bytes, 50, 0);
  bytes[57] = 0xFF;
  Load(buffer, bytes);
  EXPECT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), Mono8);

  const TempDirectory directory;
  const std::string name = directory / "rose.bmp";
  OutputOf("convert-im6.q16 rose: " + name);
  LoadBMP(buffer.Get(), name.c_str(), OpenStream(name, "rb").get());
  const IQvImage& rose = *buffer->GetIQvImage();
  const SeenPicture seen = SeenByImageMagick(name, 8);
  ASSERT_EQ(rose.GetImagePixelFormat(), BGR8);
  ASSERT_EQ(rose.GetImageWidth(), seen.width);
  for (std::size_t i = 0; i < 3 * seen.width * seen.height; ++i)
    ASSERT_EQ(SampleAt(rose, i / 3 % seen.width * 3 + 2 - i % 3, i / 3 / seen.width),
              seen.samples[i / 3 * 4 + i % 3]);
}

/// Expects that a file is refused and that the buffer stays as it was.
void ExpectRefused(const FileBytes& bytes, const std::string& what) {
  Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(3, 1, Mono8, QvMemoryInitialization_One);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { Load(buffer, bytes); }), "File x.bmp is unreadable.")
      << what;
  EXPECT_EQ(buffer->GetIQvImage()->GetImageWidth(), 3U) << what;
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), FileBytes(4, 0xFF)) << what;
}

TEST(LoadBMP, RefusesWhatDoesNotFit) {
  constexpr std::uint32_t kMin = 0x80000000;
  const struct {
    const char* what;
    std::size_t kind;
    std::size_t at;
    std::uint32_t value;
  } kCases[] = {
      {"no BM", 5, 0, 0x4D43},
      {"file size field below the end", 5, 2, 54 + 23},
      {"file size field 0", 5, 2, 0},
      {"data inside the headers", 5, 10, 53},
      {"data inside the palette", 0, 10, 1077},
      {"data inside the masks", 2, 10, 65},
      {"data behind the file", 5, 10, 55},
      {"data far behind the file", 5, 10, 0xFFFFFFFF},
      {"header of OS/2", 5, 14, 12},
      {"width 0", 5, 18, 0},
      {"width -3", 5, 18, static_cast<std::uint32_t>(-3)},
      {"least width", 5, 18, kMin},
      {"largest width", 5, 18, INT_MAX},
      {"width without bytes", 5, 18, 5},
      {"height 0", 5, 22, 0},
      {"height without bytes", 5, 22, 3},
      {"least height", 5, 22, kMin},
      {"largest height", 5, 22, INT_MAX},
      {"height -3 without bytes", 5, 22, static_cast<std::uint32_t>(-3)},
      {"1 bit", 5, 28, 1},
      {"16 bits without masks", 5, 28, 16},
      {"run lengths", 0, 30, 1},
      {"24 bits with masks", 5, 30, 3},
      {"8 bits with masks", 0, 30, 3},
      {"embedded PNG", 5, 30, 5},
      {"16 colours", 0, 46, 16},
      {"0 of 256 colours", 0, 46, 0},
      {"16 important colours", 0, 50, 16},
      {"first entry not black", 0, 54, 1},
      {"last entry not white", 0, 54 + 4 * 255, 0xFFFFFE},
      {"other red mask", 2, 54, 2047},
      {"other blue mask", 2, 62, 1023},
      {"masks of 8 bits", 7, 54, 0xFF0000},
  };
  for (const auto& row : kCases) {
    FileBytes bytes = GoodFile(kKinds[row.kind]);
    // Field sizes differ; what stands behind a short one is kept.
    const bool isShort = row.at == 0 || row.at == 28;
    const std::uint32_t behind = isShort ? bytes[row.at + 2] + 256U * bytes[row.at + 3] : 0;
    Set32(bytes, row.at, row.value | behind << 16);
    ExpectRefused(bytes, row.what);
  }
  // Both sides at their largest overflow 64 bits.
  FileBytes bytes = GoodFile(kKinds[6]);
  Set32(bytes, 18, INT_MAX);
  Set32(bytes, 22, kMin);
  Set32(bytes, 2, 0xFFFFFFFF);
  ExpectRefused(bytes, "everything at its largest");
}

TEST(LoadBMP, RefusesAFileCutAtAnyLength) {
  for (const Kind& kind : kKinds) {
    const FileBytes good = GoodFile(kind);
    for (std::size_t size = 1; size < good.size(); ++size)
      ExpectRefused({good.begin(), good.begin() + static_cast<long>(size)}, std::to_string(size));
  }
}

TEST(LoadBMP, EndsOrdinarilyWhateverByteIsDamaged) {
  for (const Kind& kind : kKinds) {
    const FileBytes good = GoodFile(kind);
    for (std::size_t at = 0; at < 66; ++at)
      for (unsigned value = 0; value < 256; value += at < 34 ? 15 : 51) {
        FileBytes bytes = good;
        bytes[at] = static_cast<std::uint8_t>(value);
        Buffer buffer = MakeBuffer();
        try {
          Load(buffer, bytes);
          EXPECT_LE(buffer->GetIQvImage()->GetImagePlanePitch(), good.size());
        } catch (const RuntimeException&) {
        }
      }
  }
}

TEST(LoadBMP, LeavesABlackImageIfReadingFailsHalfway) {
  const FileBytes good = GoodFile(kKinds[5]);
  BrokenFile broken{good, good.size() - 12};
  const Stream stream = broken.Open();
  Buffer buffer = MakeBuffer();
  EXPECT_EQ(MessageOf<RuntimeException>([&] { LoadBMP(buffer.Get(), "x.bmp", stream.get()); }),
            "File x.bmp is unreadable.");
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), FileBytes(24, 0));
}

}  // namespace
}  // namespace QvApi
