// SPDX-License-Identifier: MIT
#include <random>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/QvCSVWriter.h"
#include "QvApi_TL/PixelFormatFamilies.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

std::string Written(IQvImage& image) {
  static const TempDirectory s_directory;
  const std::string name = s_directory / "image.csv";
  WriteCSV(&image, name.c_str());
  const FileBytes bytes = ReadFile(name);
  return {bytes.begin(), bytes.end()};
}

/// Puts sample `i` into a line of zeros, bit by bit as the layout has it.
void Put(const PixelFormatRow& row, std::uint8_t* line, std::size_t i, unsigned value) {
  const auto put = [line](std::size_t bit, unsigned bits, unsigned from) {
    for (unsigned k = 0; k < bits; ++k, ++bit)
      if (from >> k & 1) line[bit / 8] |= static_cast<std::uint8_t>(1U << bit % 8);
  };
  const std::size_t pair = i / 2 * 24;
  const unsigned rest = row.depth - 8U;
  switch (row.storage) {
    case Storage::LsbPacked:
      return put(i * row.depth, row.depth, value);
    case Storage::Word32:
      return put(i / 3 * 32 + i % 3 * 10, 10, value);
    case Storage::GevPacked:  // in the middle byte, the first sample has the upper half
      put(pair + (i % 2 == 0 ? 0 : 16), 8, value >> rest);
      return put(pair + (i % 2 == 0 ? 12 : 8), rest, value & ((1U << rest) - 1));
    default:
      return put(i * (row.depth > 8 ? 16 : 8), row.depth, value);
  }
}

std::size_t SamplesOfLine(const PixelFormatRow& row, std::size_t width) {
  if (row.name.find("411") != row.name.npos) return width + width / 2;
  if (row.name.find("422") != row.name.npos) return width * 2;
  return width * (row.storage == Storage::Planar ? 1 : row.componentCount);
}

/// Fills the pixels of an image with random samples and gives their text.
std::string Fill(const PixelFormatRow& row, std::uint8_t* bytes, std::size_t width,
                 std::size_t height, std::size_t pitch) {
  static std::mt19937 random;
  std::string text;
  for (std::size_t p = 0; p < row.planeCount; ++p) {
    const std::size_t half = row.format == CYCbCr420_8_YY_Cb_Cr_Planar && p > 0 ? 2 : 1;
    for (std::size_t y = 0; y < height / half; ++y, text += '\n')
      for (std::size_t i = 0; i < SamplesOfLine(row, width / half); ++i) {
        const unsigned value = static_cast<unsigned>(random()) & ((1U << row.depth) - 1);
        Put(row, bytes + y * (pitch / half), i, value);
        text += std::to_string(value) + ',';
      }
    bytes += pitch * height / (half * half);
  }
  return text;
}

TEST(CsvFile, HoldsEverySampleOfEveryFormat) {
  std::size_t supported = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    const std::string name(row.name);
    if (row.IsPolarized() || FormatList{Mono8s, Mono32, BGRa10p, BGRa12p}.Contains(row.format)) {
      TestImage image(4, 4, row.format);
      EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { Written(image); }),
                "Not supported pixelformat " + name);
      continue;
    }
    ++supported;
    for (std::size_t width : {1, 2, 3, 4, 5, 8, row.format == RGB16 ? 3001 : 33})
      for (std::size_t padding : {0, 3}) {
        // No byte more than the samples need, to see that none is read.
        const std::size_t pitch = LineBytes(row.format, width) + padding;
        std::vector<std::uint8_t> bytes(pitch * 5 * row.planeCount);
        const std::string text = Fill(row, bytes.data(), width, 5, pitch);
        ForeignImage image(bytes.data(), width, 5, pitch, row.format);
        ASSERT_EQ(Written(image), "Width=" + std::to_string(width) +
                                      "\nHeight=5\nPixelFormat=" + name + "\n" + text)
            << padding;
      }
  }
  EXPECT_EQ(supported, 99U);
  std::uint8_t byHand[] = {0x12, 0x34, 0x56, 0x78, 0x9A};
  ForeignImage image(byHand, 3, 1, 5, BayerRG12Packed);
  EXPECT_EQ(Written(image), "Width=3\nHeight=1\nPixelFormat=BayerRG12Packed\n291,1380,1929,\n");
}

TEST(CsvFile, HoldsOfAViewWhatACopyOfItHas) {
  for (PixelFormat format : {RGB10_Planar, Mono12p, BayerRG8, CYCbCr420_8_YY_Cb_Cr_Planar}) {
    Buffer parent = MakeBuffer(), copy = MakeBuffer();
    parent->SetSize(16, 8, format, 0);
    IQvImage& image = *parent->GetIQvImage();
    Fill(*FindPixelFormat(format), Bytes(&image), 16, 8, image.GetImageLinePitch());
    IQvImage& view = *image.GetROIImage(4, 2, 6, 4);
    copy->CopyImage(&view);
    EXPECT_EQ(Written(view), Written(*copy->GetIQvImage()));
  }
}

}  // namespace
}  // namespace QvApi
