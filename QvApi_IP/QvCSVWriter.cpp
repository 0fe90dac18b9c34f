// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvCSVWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "QvApi_IP/Kernels/BitPacking.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvOutputFile.h"
#include "QvApi_TL/PixelFormatFamilies.h"
#include "QvSDKCommon/Planar420.h"

namespace QvApi {

using namespace Families;

namespace {

/// Gives the samples of one line, each in a word. `depth` is their significant bits.
using LineReader = void (*)(const std::uint8_t* line, unsigned depth, std::uint16_t* samples,
                            std::size_t count);

void ReadUnpacked8(const std::uint8_t* line, unsigned, std::uint16_t* samples, std::size_t count) {
  std::copy_n(line, count, samples);
}

void ReadUnpacked16(const std::uint8_t* line, unsigned, std::uint16_t* samples, std::size_t count) {
  std::memcpy(samples, line, 2 * count);
}

void ReadPacked(const std::uint8_t* line, unsigned depth, std::uint16_t* samples,
                std::size_t count) {
  Kernels::UnpackSamples({.bits = depth}, line, samples, count);
}

// Kernels::UnpackSamples() has the two nibbles the other way round.
void ReadGEVPacked(const std::uint8_t* line, unsigned depth, std::uint16_t* samples,
                   std::size_t count) {
  const unsigned rest = depth - 8;
  const unsigned mask = (1U << rest) - 1;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* group = line + i / 2 * 3;
    samples[i] = static_cast<std::uint16_t>(i % 2 == 0 ? group[0] << rest | (group[1] >> 4 & mask)
                                                       : group[2] << rest | (group[1] & mask));
  }
}

void ReadPacked10p32(const std::uint8_t* line, unsigned, std::uint16_t* samples,
                     std::size_t count) {
  for (std::size_t i = 0; i < count; i += 3, line += 4) {
    std::uint32_t word;
    std::memcpy(&word, line, sizeof(word));
    for (std::size_t j = 0; j < 3; ++j)
      samples[i + j] = static_cast<std::uint16_t>(word >> 10 * j & 0x3FF);
  }
}

struct Family {
  FormatList formats;
  LineReader read;
};

constexpr Family kFamilies[] = {
    {Mono8 + kBayer8 + kBGRx8 + kYUV + RGB8_Planar + k420, ReadUnpacked8},
    {kMonoW + kBayerW + kBGRxW + kPlanarW, ReadUnpacked16},
    {kMonoLsb + kBayerLsb + kBGRp, ReadPacked},
    {kMonoGev + kBayerGev, ReadGEVPacked},
    {kP32, ReadPacked10p32},
};
static_assert([] {
  std::size_t count = 0;
  for (const Family& family : kFamilies) count += family.formats.size();
  return count;
}() == 99);

LineReader FindReader(PixelFormat format) {
  const auto* found = std::ranges::find_if(
      kFamilies, [format](const Family& family) { return family.formats.Contains(format); });
  return found == std::end(kFamilies) ? nullptr : found->read;
}

/// The lines of one plane.
struct Plane {
  const std::uint8_t* bytes;
  std::size_t samples;  ///< Of a line.
  std::size_t height;
  std::size_t pitch;
};

/// Components that stand in a line of one plane.
std::size_t SamplesOfLine(const ImageLines& lines, PixelFormat format) {
  const IQvPixelFormatInfoInside& info = lines.Format();
  // Pixels of 4:2:2 and 4:1:1 share components.
  if (kYUV.Contains(format)) return lines.Width() * info.GetTotalBitCount() / 8;
  return lines.Width() * info.GetComponentCount() / info.GetPlaneCount();
}

std::vector<Plane> PlanesOf(const IQvImage& image, const ImageLines& lines) {
  const PixelFormat format = image.GetImagePixelFormat();
  std::vector<Plane> planes;
  if (k420.Contains(format)) {
    for (const auto& plane :
         Planar420(lines.Width(), lines.Height(), image.GetImageLinePitch()).planes)
      planes.push_back({lines.Line<const std::uint8_t>(0) + plane.offset, plane.width, plane.height,
                        plane.pitch});
    return planes;
  }
  for (std::size_t i = 0; i < lines.Format().GetPlaneCount(); ++i)
    planes.push_back({lines.Line<const std::uint8_t>(0, i), SamplesOfLine(lines, format),
                      lines.Height(), image.GetImageLinePitch()});
  return planes;
}

/// A value with its comma, such as "255,".
struct Text {
  static constexpr std::size_t kMaxSize = 6;

  std::array<char, 7> characters;
  std::uint8_t size;
};

/// The texts of all values that a sample can have.
const std::vector<Text>& SampleTexts() {
  static const std::vector<Text> kTexts = [] {
    std::vector<Text> texts(std::size_t{1} << 16);
    for (unsigned value = 0; value < texts.size(); ++value) {
      Text& text = texts[value];
      char* const first = text.characters.data();
      char* const end = std::to_chars(first, first + text.characters.size(), value).ptr;
      *end = ',';
      text.size = static_cast<std::uint8_t>(end + 1 - first);
    }
    return texts;
  }();
  return kTexts;
}

/// Appends the values of a line; overwrites up to a Text behind the end that it returns.
char* AppendLine(char* end, const std::uint16_t* samples, std::size_t count) {
  const Text* const texts = SampleTexts().data();
  for (std::size_t i = 0; i < count; ++i) {
    const Text& text = texts[samples[i]];
    std::memcpy(end, &text, sizeof(text));  // of fixed size, since that is one instruction
    end += text.size;
  }
  *end++ = '\n';
  return end;
}

bool WriteHeader(std::FILE* file, const ImageLines& lines) {
  return std::fprintf(file, "Width=%zu\nHeight=%zu\nPixelFormat=%s\n", lines.Width(),
                      lines.Height(), lines.Format().GetName().c_str()) > 0;
}

/// Writes lines as text, many at once.
bool WritePlane(std::FILE* file, const Plane& plane, LineReader read, unsigned depth) {
  constexpr std::size_t kWorthWriting = std::size_t{1} << 18;
  std::vector<std::uint16_t> samples(plane.samples);
  std::vector<char> text(kWorthWriting + plane.samples * Text::kMaxSize + sizeof(Text) + 1);
  char* end = text.data();
  for (std::size_t y = 0; y < plane.height; ++y) {
    read(plane.bytes + y * plane.pitch, depth, samples.data(), plane.samples);
    end = AppendLine(end, samples.data(), plane.samples);
    const auto size = static_cast<std::size_t>(end - text.data());
    if (size < kWorthWriting && y + 1 < plane.height) continue;
    if (!WriteBytes(file, text.data(), size)) return false;
    end = text.data();
  }
  return true;
}

}  // namespace

void WriteCSV(IQvImage* image, const GenICam::gcstring& fileName) {
  const LineReader read = FindReader(image->GetImagePixelFormat());
  if (!read) ThrowNotSupported(image->GetImagePixelFormat());
  const ImageLines lines(*image);
  const auto depth = static_cast<unsigned>(lines.Depth());

  CQvOutputFile file(fileName);
  bool written = WriteHeader(file.File(), lines);
  for (const Plane& plane : PlanesOf(*image, lines))
    written = written && WritePlane(file.File(), plane, read, depth);
  if (!written) ThrowUnwritable(fileName);
  file.Commit();
}

}  // namespace QvApi
