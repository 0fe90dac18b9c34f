// SPDX-License-Identifier: MIT
// Names of components, and the read-out of pixels from bytes made by hand.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "../QvSDKCommon/ImageTestSupport.h"
#include "QvApi_TL/PixelLayout.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"

namespace QvApi {
namespace {

using Testing::ForeignImage;

/// All names that exist, rebuilt: channel, bits, and for polarizer sensors the angle.
std::map<std::string, std::uint32_t> AllComponents() {
  std::map<std::string, std::uint32_t> all{{"Unknown", 0}};
  const auto add = [&all](const std::string& channel, std::uint32_t code,
                          std::vector<std::uint32_t> depths) {
    for (std::uint32_t bits : depths) all[channel + std::to_string(bits)] = code << 24 | bits << 16;
  };
  add("Mono", 1, {1, 2, 4, 8, 10, 12, 14, 16});
  const std::map<std::string, std::uint32_t> colors{
      {"R", 2}, {"G", 3}, {"B", 4}, {"Gr", 5}, {"Gb", 6}};
  for (const auto& [channel, code] : colors) add(channel, code, {4, 8, 10, 12, 14, 16});
  std::uint32_t code = 7;
  for (const char* channel : {"Y", "Cb", "Cr", "U", "V"}) add(channel, code++, {8});
  const std::vector<std::string> angles{"000", "045", "090", "135"};
  for (const char* channel : {"Mono", "R", "B", "Gr", "Gb"})
    for (const char* bits : {"8", "10", "12"})
      for (std::uint32_t angle = 0; angle < 4; ++angle)
        all[std::string(channel) + bits + "_POL_" + angles[angle]] =
            all.at(std::string(channel) + bits) | (angle + 1);
  return all;
}

TEST(PixelComponentInfo, KnowsTheNamesThatExist) {
  const auto all = AllComponents();
  ASSERT_EQ(all.size(), 104u);
  for (const auto& [name, code] : all) {
    const auto* info = GetIQvPixelComponentInfo(static_cast<EQvPixelComponent_t>(code));
    ASSERT_NE(info, nullptr) << name;
    EXPECT_EQ(info->GetName(), name.c_str());
    EXPECT_EQ(static_cast<std::uint32_t>(info->GetPixelComponent()), code);
    EXPECT_EQ(info->GetBitCount(), code >> 16 & 0xFF);
  }
  for (std::uint32_t code : {1u, 0x030A0001u, 0x010E0001u, 0x02080005u, 0x0C080000u, 0xFFFFFFFFu})
    EXPECT_EQ(GetIQvPixelComponentInfo(static_cast<EQvPixelComponent_t>(code)), nullptr) << code;
}

std::string NameOf(EQvPixelComponent_t component) {
  return GetIQvPixelComponentInfo(component)->GetName().c_str();
}

/// Names of the components of a square of pixels at (0, 0), line by line.
std::string Tile(PixelFormat format, std::size_t side) {
  std::string names;
  for (std::size_t y = 0; y < side; ++y)
    for (std::size_t x = 0; x < side; ++x) {
      for (const auto component : ComponentsAt(*FindPixelFormat(format), x, y))
        names += NameOf(component) + " ";
    }
  return names;
}

/// The tile of a colour polarizer sensor in short form: "R090 Gr045 ...".
std::string PolarizedTile(PixelFormat format) {
  std::string names;
  for (std::size_t i = 0; i < 16; ++i) {
    std::string name = NameOf(ComponentsAt(*FindPixelFormat(format), i % 4, i / 4)[0]);
    name.erase(name.find("8_POL_"), 6);
    names += name + (i == 15 ? "" : " ");
  }
  return names;
}

TEST(PixelLayout, TilesOfMosaics) {
  EXPECT_EQ(Tile(PixelFormat::BayerRG4p, 2), "R4 Gr4 Gb4 B4 ");
  EXPECT_EQ(Tile(PixelFormat::BayerGR10Packed, 2), "Gr10 R10 B10 Gb10 ");
  EXPECT_EQ(Tile(PixelFormat::BayerGB14, 2), "Gb14 B14 R14 Gr14 ");
  EXPECT_EQ(Tile(PixelFormat::BayerBG16, 2), "B16 Gb16 Gr16 R16 ");
  EXPECT_EQ(Tile(PixelFormat::Pol1Mono8, 2),
            "Mono8_POL_090 Mono8_POL_045 Mono8_POL_135 Mono8_POL_000 ");
  EXPECT_EQ(Tile(PixelFormat::Pol1MonoXY10p, 2),
            "Mono10_POL_000 Mono10_POL_135 Mono10_POL_045 Mono10_POL_090 ");
  EXPECT_EQ(Tile(PixelFormat::Pol1MonoXC12, 2),
            "Mono12_POL_000 Mono12_POL_045 Mono12_POL_135 Mono12_POL_090 ");
}

TEST(PixelLayout, TilesOfColorPolarizerSensors) {
  const std::vector<std::pair<PixelFormat, std::string>> tiles{
      {PixelFormat::Pol1BayerRG8,
       "R090 R045 Gr090 Gr045 R135 R000 Gr135 Gr000 Gb090 Gb045 B090 B045 Gb135 Gb000 B135 B000"},
      {PixelFormat::Pol1BayerRGX8,
       "Gr045 Gr090 R045 R090 Gr000 Gr135 R000 R135 B045 B090 Gb045 Gb090 B000 B135 Gb000 Gb135"},
      {PixelFormat::Pol1BayerRGY8,
       "Gb135 Gb000 B135 B000 Gb090 Gb045 B090 B045 R135 R000 Gr135 Gr000 R090 R045 Gr090 Gr045"},
      {PixelFormat::Pol1BayerRGXY8,
       "B000 B135 Gb000 Gb135 B045 B090 Gb045 Gb090 Gr000 Gr135 R000 R135 Gr045 Gr090 R045 R090"},
      {PixelFormat::Pol1BayerRGC8,
       "Gr135 Gr090 R135 R090 Gr000 Gr045 R000 R045 B135 B090 Gb135 Gb090 B000 B045 Gb000 Gb045"},
      {PixelFormat::Pol1BayerRGXC8,
       "B000 B045 Gb000 Gb045 B135 B090 Gb135 Gb090 Gr000 Gr045 R000 R045 Gr135 Gr090 R135 R090"},
      {PixelFormat::Pol1BayerRGYC8,
       "R090 R135 Gr090 Gr135 R045 R000 Gr045 Gr000 Gb090 Gb135 B090 B135 Gb045 Gb000 B045 B000"},
      {PixelFormat::Pol1BayerRGXYC8,
       "Gb045 Gb000 B045 B000 Gb090 Gb135 B090 B135 R045 R000 Gr045 Gr000 R090 R135 Gr090 Gr135"}};
  for (const auto& [format, tile] : tiles) EXPECT_EQ(PolarizedTile(format), tile);
}

TEST(PixelLayout, EveryFormatHasNamedComponentsAndAPeriod) {
  for (const auto& row : kPixelFormats) {
    const std::size_t period = TilePeriod(row);
    for (std::size_t i = 0; i < 64; ++i) {
      const auto here = ComponentsAt(row, i % 8, i / 8);
      const auto inTile = ComponentsAt(row, i % 8 % period, i / 8 % period);
      ASSERT_EQ(here.size(), inTile.size()) << row.name;
      for (std::size_t k = 0; k < here.size(); ++k) {
        EXPECT_EQ(here[k], inTile[k]) << row.name;
        const bool unnamed = k == 3 || row.format == PixelFormat::Mono32;
        EXPECT_EQ(here[k] == EQvPixelComponent_t::Unknown, unnamed) << row.name;
        if (!unnamed) {
          EXPECT_EQ(GetIQvPixelComponentInfo(here[k])->GetBitCount(), row.depth);
        }
      }
    }
  }
}

/// Bytes of one line and what its pixels read as: components by name and value, pixels apart by
/// "|".
struct ReadOut {
  PixelFormat format;
  std::size_t width;
  std::vector<std::uint8_t> bytes;
  std::string expected;
};

std::string Read(IQvImage& image, std::size_t y = 0) {
  std::string text;
  for (std::size_t x = 0; x < image.GetImageWidth(); ++x) {
    const CQvPixelComponent& pixel = image.GetIQvPixelComponentValue(x, y);
    if (x != 0) text += "|";
    for (std::size_t i = 0; i < pixel.GetComponentCount(); ++i) {
      if (i != 0) text += " ";
      text += NameOf(pixel.GetPixelComponent(i));
      text += "=";
      text += std::to_string(pixel.GetValue(i));
    }
  }
  return text;
}

const std::vector<ReadOut> kReadOuts{
    {PixelFormat::Mono1p,
     9,
     {0b10000101, 0b11111111},
     "Mono1=1|Mono1=0|Mono1=1|Mono1=0|Mono1=0|Mono1=0|Mono1=0|Mono1=1|Mono1=1"},
    {PixelFormat::Mono2p, 5, {0b11100100, 0b11111110}, "Mono2=0|Mono2=1|Mono2=2|Mono2=3|Mono2=2"},
    {PixelFormat::Mono4p, 3, {0x21, 0xF3}, "Mono4=1|Mono4=2|Mono4=3"},
    {PixelFormat::Mono8, 2, {7, 255}, "Mono8=7|Mono8=255"},
    {PixelFormat::Mono8s, 2, {0x80, 0x01}, "Mono8=128|Mono8=1"},
    {PixelFormat::Mono10, 2, {0x34, 0x02, 0x01, 0xFC}, "Mono10=564|Mono10=1"},
    {PixelFormat::Mono16, 1, {0x34, 0x12}, "Mono16=4660"},
    {PixelFormat::Mono32, 1, {0x78, 0x56, 0x34, 0xF2}, "Unknown=4063516280"},
    // 1, 2, 1023, 512, 1 in 10 bits each.
    {PixelFormat::Mono10p,
     5,
     {0x01, 0x08, 0xF0, 0x3F, 0x80, 0x01, 0xFC},
     "Mono10=1|Mono10=2|Mono10=1023|Mono10=512|Mono10=1"},
    {PixelFormat::Mono12p, 3, {0xBC, 0x3A, 0x12, 0x56, 0xF4}, "Mono12=2748|Mono12=291|Mono12=1110"},
    {PixelFormat::Mono14p, 2, {0xFF, 0x7F, 0x00, 0xF8}, "Mono14=16383|Mono14=8193"},
    {PixelFormat::Mono10Packed,
     3,
     {0xFF, 0x21, 0x80, 0x01, 0xF3},
     "Mono10=1021|Mono10=514|Mono10=7"},
    {PixelFormat::Mono12Packed,
     3,
     {0xAB, 0x3C, 0x12, 0x45, 0xF6},
     "Mono12=2748|Mono12=291|Mono12=1110"},
    {PixelFormat::BayerGR4p, 3, {0x21, 0x03}, "Gr4=1|R4=2|Gr4=3"},
    {PixelFormat::Pol1MonoX12p, 2, {0xBC, 0x3A, 0x12}, "Mono12_POL_045=2748|Mono12_POL_090=291"},
    {PixelFormat::RGB8, 2, {1, 2, 3, 4, 5, 6}, "R8=1 G8=2 B8=3|R8=4 G8=5 B8=6"},
    {PixelFormat::BGRa8, 1, {1, 2, 3, 4}, "B8=1 G8=2 R8=3 Unknown=4"},
    {PixelFormat::BGR12, 1, {1, 8, 2, 0, 3, 1}, "B12=2049 G12=2 R12=259"},
    // 1, 2, 3 in 10 bits each, then 1023, 0, 1023.
    {PixelFormat::RGB10p,
     2,
     {0x01, 0x08, 0x30, 0xC0, 0xFF, 0x00, 0xFC, 0x0F},
     "R10=1 G10=2 B10=3|R10=1023 G10=0 B10=1023"},
    {PixelFormat::BGRa10p, 1, {0x01, 0x08, 0x30, 0x00, 0x01}, "B10=1 G10=2 R10=3 Unknown=4"},
    {PixelFormat::RGB10p32, 1, {0x01, 0x08, 0x30, 0xC0}, "R10=1 G10=2 B10=3"},
    {PixelFormat::CBGR10p32, 1, {0xFF, 0x0B, 0x30, 0x00}, "B10=1023 G10=2 R10=3"},
    {PixelFormat::YCbCr8, 1, {1, 2, 3}, "Y8=1 Cb8=2 Cr8=3"},
    {PixelFormat::YCbCr709_8_CbYCr, 1, {1, 2, 3}, "Cb8=1 Y8=2 Cr8=3"},
    {PixelFormat::YUV8_UYV, 1, {1, 2, 3}, "U8=1 Y8=2 V8=3"},
    {PixelFormat::YCbCr422_8, 2, {1, 2, 3, 4}, "Y8=1 Cb8=2 Cr8=4|Y8=3 Cb8=2 Cr8=4"},
    {PixelFormat::YUV422_8, 2, {1, 2, 3, 4}, "Y8=1 U8=2 V8=4|Y8=3 U8=2 V8=4"},
    {PixelFormat::YUV422_8_UYVY, 2, {1, 2, 3, 4}, "U8=1 Y8=2 V8=3|U8=1 Y8=4 V8=3"},
    {PixelFormat::YCbCr601_422_8_CbYCrY,
     3,
     {1, 2, 3, 4, 5, 6},
     "Cb8=1 Y8=2 Cr8=3|Cb8=1 Y8=4 Cr8=3|Cb8=5 Y8=6"},
    {PixelFormat::YCbCr411_8,
     4,
     {1, 2, 3, 4, 5, 6},
     "Y8=1 Cb8=3 Cr8=6|Y8=2 Cb8=3 Cr8=6|Y8=4 Cb8=3 Cr8=6|Y8=5 Cb8=3 Cr8=6"},
    {PixelFormat::YCbCr411_8_CbYYCrYY,
     4,
     {1, 2, 3, 4, 5, 6},
     "Cb8=1 Y8=2 Cr8=4|Cb8=1 Y8=3 Cr8=4|Cb8=1 Y8=5 Cr8=4|Cb8=1 Y8=6 Cr8=4"},
    {PixelFormat::YUV411_8_UYYVYY,
     3,
     {1, 2, 3, 4, 5},
     "U8=1 Y8=2 V8=4|U8=1 Y8=3 V8=4|U8=1 Y8=5 V8=4"},
    {PixelFormat::YCbCr411_8, 2, {1, 2, 3}, "Y8=1 Cb8=3|Y8=2 Cb8=3"},
};

TEST(PixelComponent, ReadsWhatTheBytesSay) {
  for (ReadOut test : kReadOuts) {
    SCOPED_TRACE(FindPixelFormat(test.format)->name);
    const std::size_t lineBytes = FindPixelFormat(test.format)->LineBytes(test.width);
    ASSERT_EQ(test.bytes.size(), lineBytes);
    // The line stands twice, for the second with another pitch, and ends with the memory.
    std::vector<std::uint8_t> memory(lineBytes + 4, 0xEE);
    memory.insert(memory.end(), test.bytes.begin(), test.bytes.end());
    std::copy(test.bytes.begin(), test.bytes.end(), memory.begin());
    ForeignImage image(memory.data(), test.width, 2, lineBytes + 4, test.format);
    EXPECT_EQ(Read(image), test.expected);
  }
}

TEST(PixelComponent, ReadsPlanes) {
  std::vector<std::uint8_t> bytes{1, 2, 9, 3, 4, 9, 5, 6, 9, 7, 8, 9, 10, 11, 9, 12, 13, 9};
  ForeignImage planar(bytes.data(), 2, 2, 3, PixelFormat::RGB8_Planar);
  EXPECT_EQ(Read(planar, 0), "R8=1 G8=5 B8=10|R8=2 G8=6 B8=11");
  EXPECT_EQ(Read(planar, 1), "R8=3 G8=7 B8=12|R8=4 G8=8 B8=13");

  std::vector<std::uint8_t> words{0x01, 0x08, 0x02, 0x00, 0x03, 0x00};
  ForeignImage deep(words.data(), 1, 1, 2, PixelFormat::RGB12_Planar);
  EXPECT_EQ(Read(deep), "R12=2049 G12=2 B12=3");
}

TEST(PixelComponent, ReadsPlanar420) {
  std::vector<std::uint8_t> even{1, 2, 3, 4, 5, 6, 7, 8, 20, 21, 30, 31};
  ForeignImage image(even.data(), 4, 2, 4, PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar);
  EXPECT_EQ(Read(image, 1),
            "Y8=5 Cb8=20 Cr8=30|Y8=6 Cb8=20 Cr8=30|Y8=7 Cb8=21 Cr8=31|Y8=8 Cb8=21 Cr8=31");
  // An odd last column has no chrominance of its own.
  std::vector<std::uint8_t> odd{1, 2, 3, 4, 5, 6, 20, 30};
  ForeignImage narrow(odd.data(), 3, 2, 3, PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar);
  EXPECT_EQ(Read(narrow, 1), "Y8=4 Cb8=20 Cr8=30|Y8=5 Cb8=20 Cr8=30|Y8=6");
}

TEST(PixelComponent, MosaicsAnswerByPlace) {
  std::vector<std::uint8_t> bytes{1, 2, 3, 4};
  ForeignImage image(bytes.data(), 2, 2, 2, PixelFormat::BayerGB8);
  EXPECT_EQ(Read(image, 0), "Gb8=1|B8=2");
  EXPECT_EQ(Read(image, 1), "R8=3|Gr8=4");
}

TEST(PixelComponent, NothingToRead) {
  std::uint8_t byte = 1;
  ForeignImage image(&byte, 1, 1, 1, PixelFormat::Mono8);
  ForeignImage unknown(&byte, 1, 1, 1, PixelFormat::None);
  ForeignImage empty(nullptr, 1, 1, 1, PixelFormat::Mono8);
  CQvPixelComponent pixel;
  EXPECT_EQ(pixel.GetComponentCount(), 0u);
  struct Case {
    IQvImage* image;
    std::size_t x, y;
  };
  for (const auto& [source, x, y] :
       {Case{nullptr, 0, 0}, Case{&image, 1, 0}, Case{&image, 0, 1},
        Case{&image, SIZE_MAX, SIZE_MAX}, Case{&unknown, 0, 0}, Case{&empty, 0, 0}}) {
    pixel.SetPixelComponent(&image, 0, 0);
    ASSERT_EQ(pixel.GetComponentCount(), 1u);
    pixel.SetPixelComponent(source, x, y);
    EXPECT_EQ(pixel.GetComponentCount(), 0u);
    EXPECT_EQ(pixel.GetPixelComponent(0), EQvPixelComponent_t::Unknown);
    EXPECT_EQ(pixel.GetValue(0), 0u);
  }
}

/// Whatever the format and width, the read-out stays in memory (the sanitizers watch) and every
/// pixel has its first component.
TEST(PixelComponent, EveryFormatAtEveryWidth) {
  for (const auto& row : kPixelFormats)
    for (std::size_t width = 1; width <= 9; ++width) {
      const std::size_t lineBytes = row.LineBytes(width);
      std::vector<std::uint8_t> bytes(lineBytes * 2 * row.planeCount, 0xFF);
      ForeignImage image(bytes.data(), width, 2, lineBytes, row.format);
      for (std::size_t i = 0; i < 2 * width; ++i) {
        const auto& pixel = image.GetIQvPixelComponentValue(i % width, i / width);
        ASSERT_GE(pixel.GetComponentCount(), 1u) << row.name << " " << width;
        for (std::size_t k = 0; k < pixel.GetComponentCount(); ++k)
          ASSERT_EQ(pixel.GetValue(k), (std::uint64_t{1} << row.depth) - 1) << row.name;
      }
    }
}

}  // namespace
}  // namespace QvApi
