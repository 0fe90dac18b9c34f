// SPDX-License-Identifier: MIT
// The test charts against a slow drawing of their description, run by run.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "ImageTestSupport.h"
#include "QvApi_TL/PixelFormatTable.h"

namespace QvApi {
namespace {

using Testing::Buffer;
using Testing::Bytes;
using Testing::MakeBuffer;

using Line = std::vector<unsigned>;

void Append(Line& line, std::size_t count, unsigned value) {
  line.insert(line.end(), count, value);
}

/// The samples of a mono chart, line by line.
std::vector<Line> DrawMono(std::size_t width, std::size_t height, unsigned bits) {
  const unsigned shift = bits - 8;
  const unsigned background = 131u << shift;
  const std::vector<unsigned> levels{255, 234, 212, 190, 167, 143, 120, 94, 67, 37, 0};
  const std::size_t u = width / 12, m = width / 24, length = 11 * u;
  std::vector<Line> lines;
  for (std::size_t i = 0; i < height / 10; ++i) lines.push_back(Line(width, background));
  for (int band = 0; band < 4; ++band) {
    Line line;
    Append(line, m, background);
    if (band == 0)
      for (std::size_t k = 0; k < 11; ++k) Append(line, u, levels[k] << shift);
    if (band == 3)
      for (std::size_t k = 11; k-- > 0;) Append(line, u, levels[k] << shift);
    for (std::size_t i = 0; (band == 1 || band == 2) && i < length; ++i) {
      const std::size_t position = band == 1 ? i : length - 1 - i;
      line.push_back(static_cast<unsigned>(position * ((1u << bits) - 1) / (length - 1)));
    }
    Append(line, width - line.size(), background);
    lines.insert(lines.end(), height / 5, line);
  }
  while (lines.size() < height) lines.push_back(Line(width, background));
  return lines;
}

const unsigned kPatches[24][3] = {
    {115, 82, 68},   {194, 150, 130}, {98, 122, 157}, {87, 108, 67},   {133, 128, 177},
    {103, 189, 170}, {214, 126, 44},  {80, 91, 166},  {193, 90, 99},   {94, 60, 108},
    {157, 188, 64},  {224, 163, 46},  {56, 61, 150},  {70, 148, 73},   {175, 54, 60},
    {231, 199, 31},  {187, 86, 149},  {8, 133, 161},  {243, 243, 242}, {200, 200, 200},
    {160, 160, 160}, {122, 122, 121}, {85, 85, 85},   {52, 52, 52}};

constexpr unsigned kUntouched = 0x10000;

/// The samples of a colour chart, blue first, line by line; alpha is kUntouched.
std::vector<Line> DrawColor(std::size_t width, std::size_t height, unsigned bits,
                            std::size_t components) {
  const auto pixels = [components, bits](Line& line, std::size_t count, const unsigned* rgb) {
    static const unsigned black[3] = {0, 0, 0};
    const unsigned* color = rgb ? rgb : black;
    for (std::size_t i = 0; i < count; ++i) {
      for (int c : {2, 1, 0}) line.push_back(color[c] << (bits - 8));
      if (components == 4) line.push_back(kUntouched);
    }
  };
  const std::size_t uy = height / 45, ux = width / 77, pw = width / 7, ph = height / 5;
  Line black;
  pixels(black, width, nullptr);
  std::vector<Line> lines(3 * uy, black);
  for (std::size_t row = 0; row < 4; ++row) {
    Line line;
    pixels(line, 3 * ux, nullptr);
    for (std::size_t i = 0; i < 6; ++i) {
      pixels(line, pw, kPatches[6 * row + i]);
      pixels(line, ux, nullptr);
    }
    pixels(line, width - line.size() / components, nullptr);
    lines.insert(lines.end(), ph, line);
    lines.insert(lines.end(), uy, black);
  }
  while (lines.size() < height) lines.push_back(black);
  return lines;
}

/// Puts lines of samples of `sampleBytes` bytes over each other where they meet, and drops what
/// falls behind the end.
std::vector<std::uint8_t> Place(const std::vector<Line>& lines, std::size_t pitch,
                                std::size_t sampleBytes) {
  std::vector<std::uint8_t> bytes(lines.size() * pitch, 0xFF);
  for (std::size_t y = 0; y < lines.size(); ++y)
    for (std::size_t i = 0; i < lines[y].size(); ++i) {
      const std::size_t offset = y * pitch + i * sampleBytes;
      if (lines[y][i] == kUntouched || offset + sampleBytes > bytes.size()) continue;
      bytes[offset] = static_cast<std::uint8_t>(lines[y][i]);
      if (sampleBytes == 2) bytes[offset + 1] = static_cast<std::uint8_t>(lines[y][i] >> 8);
    }
  return bytes;
}

TEST(TestChart, MonoAndColorOfAllSizes) {
  struct Case {
    PixelFormat format;
    std::size_t sampleBytes;
  };
  const std::vector<Case> mono{{PixelFormat::Mono8, 1},
                               {PixelFormat::Mono10, 2},
                               {PixelFormat::Mono12, 2},
                               {PixelFormat::Mono14, 2},
                               {PixelFormat::Mono16, 2}};
  const std::vector<Case> color{
      {PixelFormat::BGR8, 1},   {PixelFormat::BGRa8, 1},  {PixelFormat::BGR10, 2},
      {PixelFormat::BGR12, 2},  {PixelFormat::BGR14, 2},  {PixelFormat::BGR16, 2},
      {PixelFormat::BGRa10, 2}, {PixelFormat::BGRa12, 2}, {PixelFormat::BGRa14, 2},
      {PixelFormat::BGRa16, 2}, {PixelFormat::RGB8, 2},   {PixelFormat::RGBa8, 2}};
  const std::vector<std::pair<std::size_t, std::size_t>> sizes{
      {1, 1}, {6, 4}, {11, 5}, {12, 10}, {23, 9}, {24, 19}, {77, 45}, {160, 100}, {157, 91}};
  for (const auto* cases : {&mono, &color})
    for (const auto& [format, sampleBytes] : *cases)
      for (const auto& [width, height] : sizes) {
        const auto& row = *FindPixelFormat(format);
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(width));
        const Buffer buffer = MakeBuffer();
        buffer->CreateBuffer(width, height, format, QvMemoryInitialization_One);
        buffer->CreateBuffer(width, height, format, QvMemoryInitialization_TestChart);
        const IQvImage* image = buffer->GetIQvImage();
        const auto lines = cases == &mono ? DrawMono(width, height, row.depth)
                                          : DrawColor(width, height, row.depth, row.componentCount);
        ASSERT_EQ(Testing::AllBytes(image), Place(lines, image->GetImageLinePitch(), sampleBytes));
      }
}

TEST(TestChart, ColorGapsOfOnePixel) {
  const Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(77, 45, PixelFormat::BGR8, QvMemoryInitialization_TestChart);
  const IQvImage* image = buffer->GetIQvImage();
  const auto blue = [image](std::size_t x, std::size_t y) {
    return Bytes(image)[y * image->GetImageLinePitch() + 3 * x];
  };
  EXPECT_EQ(blue(2, 3), 0);
  EXPECT_EQ(blue(3, 2), 0);
  EXPECT_EQ(blue(3, 3), 68);
  EXPECT_EQ(blue(13, 11), 68);
  EXPECT_EQ(blue(14, 11), 0);
  EXPECT_EQ(blue(15, 11), 130);
  EXPECT_EQ(blue(3, 12), 0);
  EXPECT_EQ(blue(3, 13), 44);
}

TEST(TestChart, FormatsWithoutChartAreZero) {
  for (const PixelFormat format :
       {PixelFormat::YCbCr8, PixelFormat::BayerRG8, PixelFormat::Mono10p, PixelFormat::RGB16,
        PixelFormat::Mono8s, PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar}) {
    const Buffer buffer = MakeBuffer();
    buffer->CreateBuffer(5, 3, format, QvMemoryInitialization_One);
    buffer->CreateBuffer(5, 3, format, QvMemoryInitialization_TestChart);
    for (const std::uint8_t byte : Testing::AllBytes(buffer->GetIQvImage())) EXPECT_EQ(byte, 0);
  }
}

}  // namespace
}  // namespace QvApi
