// SPDX-License-Identifier: MIT
// All conversions that change images sample by sample, against a reference that reads and writes
// bit by bit: depth, packing, planes, order of colours, grey to colour and back.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <tuple>

#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/TestImages.h"
#include "QvSDKCommon/IQvAllocator.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

struct Settings {
  double gamma = 1.0;
  _EQvBitExpansionMode_t mode = QvBitExpansionMode_Gamma;
  bool reverse = false;
  std::size_t alignment = 0;
};

struct Size {
  std::size_t width, height;
};

/// Gives memory that ends with bytes that nobody may write.
class CanaryAllocator : public IQvAllocator {
 public:
  void Allocate(void** buffer, std::size_t size, void** context) override {
    m_bytes.assign(size + kCanary, kValue);
    m_size = size;
    *buffer = m_bytes.data();
    *context = nullptr;
  }
  void Deallocate(void*, std::size_t, void*) override {}
  void OnDeregister() override {}

  bool IsIntact() const {
    return std::all_of(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_size), m_bytes.end(),
                       [](std::uint8_t byte) { return byte == kValue; });
  }

 private:
  static constexpr std::size_t kCanary = 128;
  static constexpr std::uint8_t kValue = 0xC5;
  std::vector<std::uint8_t> m_bytes;
  std::size_t m_size = 0;
};

/// The bits of an image, one sample at a time.
class BitImage {
 public:
  BitImage(const PixelFormatRow& row, std::size_t width, std::size_t height, std::size_t pitch,
           std::uint8_t* bytes)
      : m_row(row), m_width(width), m_height(height), m_pitch(pitch), m_bytes(bytes) {}

  /// All bits of the word that holds a component, those above the depth too.
  unsigned Read(std::size_t x, std::size_t y, std::size_t component) const {
    unsigned value = 0;
    for (std::size_t bit = 0; bit < WordBits(); ++bit) {
      const std::size_t at = BitAt(x, component, bit);
      value |= unsigned{Line(y, component)[at / 8]} >> at % 8 << 31 >> 31 << bit;
    }
    return value;
  }

  void Write(std::size_t x, std::size_t y, std::size_t component, unsigned value) const {
    for (std::size_t bit = 0; bit < WordBits(); ++bit) {
      const std::size_t at = BitAt(x, component, bit);
      std::uint8_t& byte = Line(y, component)[at / 8];
      const auto mask = static_cast<std::uint8_t>(1u << at % 8);
      byte = static_cast<std::uint8_t>(value >> bit & 1 ? byte | mask : byte & ~mask);
    }
  }

  /// What stands in a line beside samples: spare bits of the last byte, and for colours of the last
  /// 16-bit word as far as the line goes; the spare bits of the words of 10p32; and those of the
  /// shared byte of two samples of 10 bits.
  void WriteSpareBits() const {
    for (std::size_t y = 0; y < m_height; ++y) {
      if (m_row.storage == Storage::Word32)
        for (std::size_t x = 0; x < m_width; ++x) Line(y, 0)[4 * x + 3] &= 0x3F;
      if (m_row.storage == Storage::GevPacked && m_row.depth == 10)
        for (std::size_t x = 0; x < m_width; ++x)
          Line(y, 0)[x / 2 * 3 + 1] &= static_cast<std::uint8_t>(x % 2 == 0 ? 0xF3 : 0x3F);
      if (m_row.storage != Storage::LsbPacked) continue;
      const std::size_t bits = m_width * m_row.bits;
      const std::size_t wordBits = m_row.componentCount == 3 ? 16 : 8;
      const std::size_t end = (bits + wordBits - 1) / wordBits * wordBits;
      for (std::size_t at = bits; at < std::min(end, 8 * m_pitch); ++at)
        Line(y, 0)[at / 8] &= static_cast<std::uint8_t>(~(1u << at % 8));
    }
  }

 private:
  bool IsInWords() const {
    return m_row.storage == Storage::Unpacked || m_row.storage == Storage::Planar;
  }
  std::size_t WordBits() const { return IsInWords() ? (m_row.depth > 8 ? 16u : 8u) : m_row.depth; }

  std::uint8_t* Line(std::size_t y, std::size_t component) const {
    const std::size_t plane = m_row.storage == Storage::Planar ? component : 0;
    return m_bytes + (plane * m_height + y) * m_pitch;
  }

  /// Where in a line bit `bit` of a component lies.
  std::size_t BitAt(std::size_t x, std::size_t component, std::size_t bit) const {
    const std::size_t rest = m_row.depth - 8u;
    switch (m_row.storage) {
      case Storage::Planar:
        return x * WordBits() + bit;
      case Storage::Word32:
        return 32 * x + 10 * component + bit;
      case Storage::GevPacked:
        if (bit >= rest) return x / 2 * 24 + (x % 2 == 0 ? 0 : 16) + bit - rest;
        return x / 2 * 24 + 8 + (x % 2 == 0 ? 0 : 4) + bit;
      default:
        return (x * m_row.componentCount + component) * WordBits() + bit;
    }
  }

  const PixelFormatRow& m_row;
  const std::size_t m_width, m_height, m_pitch;
  std::uint8_t* m_bytes;
};

/// The rule of depth change, sample by sample.
unsigned Changed(unsigned x, unsigned from, unsigned to, const Settings& settings) {
  if (from == to) return x;
  x &= (1u << from) - 1;
  if (settings.gamma == 1.0 && from >= to) return x >> (from - to);
  if (from < to && settings.mode == QvBitExpansionMode_Fixed) return x;
  if (from < to && settings.mode == QvBitExpansionMode_LeftShiftBy0) return x << (to - from);
  if (from < to && settings.mode == QvBitExpansionMode_LeftShiftBy1)
    return x << (to - from) | ((1u << (to - from)) - 1);
  const double maximum = (1u << to) - 1;
  const double curve = std::pow(x / static_cast<double>((1u << from) - 1), settings.gamma);
  return static_cast<unsigned>(std::min(maximum, std::floor(std::fma(curve, maximum, 0.5))));
}

/// Remembers what Changed() gave: it is asked millions of times for few values.
class DepthRule {
 public:
  DepthRule(unsigned from, unsigned to, const Settings& settings)
      : m_from(from), m_to(to), m_settings(settings), m_known(65536, kUnknown) {}
  unsigned operator()(unsigned x) {
    if (m_known[x] == kUnknown) m_known[x] = Changed(x, m_from, m_to, m_settings);
    return m_known[x];
  }

 private:
  static constexpr unsigned kUnknown = ~0u;
  const unsigned m_from, m_to;
  const Settings m_settings;
  std::vector<unsigned> m_known;
};

/// A pixel as red, green and blue, or as one level.
using Pixel = std::array<unsigned, 3>;

bool IsSingle(const PixelFormatRow& row) { return row.componentCount == 1; }

Pixel ReadPixel(const BitImage& image, const PixelFormatRow& row, std::size_t x, std::size_t y) {
  if (IsSingle(row)) return {image.Read(x, y, 0)};
  Pixel pixel{image.Read(x, y, 0), image.Read(x, y, 1), image.Read(x, y, 2)};
  if (row.IsBGR()) std::swap(pixel[0], pixel[2]);
  return pixel;
}

void WritePixel(const BitImage& image, const PixelFormatRow& row, std::size_t x, std::size_t y,
                Pixel pixel) {
  if (row.IsBGR()) std::swap(pixel[0], pixel[2]);
  for (std::size_t c = 0; c < (IsSingle(row) ? 1 : 3); ++c) image.Write(x, y, c, pixel[c]);
}

Pixel Converted(Pixel pixel, const PixelFormatRow& from, const PixelFormatRow& to,
                DepthRule& rule) {
  if (!IsSingle(from) && IsSingle(to)) {
    const unsigned mask = (1u << from.depth) - 1;
    pixel = {(2 * (pixel[0] & mask) + 5 * (pixel[1] & mask) + (pixel[2] & mask)) / 8};
  }
  if (IsSingle(from) && !IsSingle(to)) pixel = {pixel[0], pixel[0], pixel[0]};
  for (unsigned& component : pixel) component = rule(component);
  return pixel;
}

/// A source that ends with its last significant byte, on the heap, where a sanitizer sees more.
struct Source {
  Source(const PixelFormatRow& row, const Size& size, std::size_t padding, unsigned seed)
      : pitch(row.LineBytes(size.width) + padding),
        bytes(pitch * (size.height * row.planeCount - 1) + row.LineBytes(size.width)) {
    std::mt19937 random(seed);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  }
  std::size_t pitch;
  std::vector<std::uint8_t> bytes;
};

void Check(PixelFormat sourceFormat, PixelFormat destinationFormat, const Size& size,
           const Settings& settings) {
  SCOPED_TRACE(NameOf(sourceFormat) + " to " + NameOf(destinationFormat) + ", " +
               std::to_string(size.width) + " x " + std::to_string(size.height) + ", gamma " +
               std::to_string(settings.gamma) + ", mode " + std::to_string(settings.mode) +
               (settings.reverse ? ", reverse" : "") + ", alignment " +
               std::to_string(settings.alignment));
  const PixelFormatRow& from = *FindPixelFormat(sourceFormat);
  const PixelFormat flipped = settings.reverse
                                  ? FlippedFormat(sourceFormat, destinationFormat, size.height)
                                  : destinationFormat;
  const PixelFormatRow& to = *FindPixelFormat(flipped);

  // Samples in words have random bits above their depth.
  const std::size_t padding = settings.alignment;
  Source source(from, size, padding, static_cast<unsigned>(size.width + 7 * size.height));
  ForeignImage image(source.bytes.data(), size.width, size.height, source.pitch, sourceFormat);

  CanaryAllocator allocator;
  Buffer buffer(CreateIQvImageBuffer(&allocator));
  dynamic_cast<IQvImageBufferInside&>(*buffer.Get())
      .SetSize(size.width, size.height, flipped, settings.alignment);
  IQvImage* destination = buffer->GetIQvImage();
  std::uint8_t* bytes = Bytes(destination);
  const std::size_t pitch = destination->GetImageLinePitch();
  const std::size_t count = pitch * size.height * to.planeCount;
  std::mt19937 random(5);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(random());
  std::vector<std::uint8_t> expected(bytes, bytes + count);

  const BitImage read(from, size.width, size.height, source.pitch, source.bytes.data());
  const BitImage write(to, size.width, size.height, pitch, expected.data());
  DepthRule rule(from.depth, to.depth, settings);
  for (std::size_t y = 0; y < size.height; ++y)
    for (std::size_t x = 0; x < size.width; ++x)
      WritePixel(write, to, x, settings.reverse ? size.height - 1 - y : y,
                 Converted(ReadPixel(read, from, x, y), from, to, rule));
  write.WriteSpareBits();

  CQvPixelFormatConverter converter;
  converter.SetDestinationPixelFormat(destinationFormat);
  converter.SetGammaValue(settings.gamma);
  converter.SetBitExpansionMode(settings.mode);
  converter.SetReverseY(settings.reverse);
  converter.SetLinePitchAlignment(settings.alignment);
  converter.Convert(&image, buffer.Get());

  ASSERT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), flipped);
  ASSERT_EQ(Bytes(buffer->GetIQvImage()), bytes);
  const auto difference = std::mismatch(expected.begin(), expected.end(), bytes);
  ASSERT_EQ(difference.first, expected.end())
      << "byte " << difference.first - expected.begin() << " of lines of " << pitch << " is "
      << unsigned{*difference.second} << ", not " << unsigned{*difference.first};
  ASSERT_TRUE(allocator.IsIntact());
}

bool IsBySamples(Route route) {
  return route >= Route::ConverterRawMono8ToRawMono16 &&
         route <= Route::ConverterPlanarToPlanar_16_16;
}

/// Calls `check` for all pairs that are converted sample by sample.
template <class CheckPair>
void ForEachPair(CheckPair check) {
  std::size_t pairs = 0;
  for (const PixelFormatRow& from : kPixelFormats)
    for (const PixelFormatRow& to : kPixelFormats) {
      if (!IsBySamples(FindRoute(from.format, to.format))) continue;
      check(from.format, to.format);
      if (::testing::Test::HasFatalFailure()) return;
      ++pairs;
    }
  EXPECT_GT(pairs, 700u);
}

class SampleConversion : public ::testing::Test {
 protected:
  Initialized m_initialized;
};

// The widths: a single pixel, odd ones with all kinds of rests, and more than a piece of a line.
TEST_F(SampleConversion, AllPairsInManySizes) {
  ForEachPair([](PixelFormat from, PixelFormat to) {
    for (const Size& size : {Size{1, 1}, {2, 3}, {5, 2}, {63, 1}, {1037, 2}})
      Check(from, to, size, {});
  });
}

TEST_F(SampleConversion, AllPairsUpsideDown) {
  ForEachPair([](PixelFormat from, PixelFormat to) {
    for (const Size& size : {Size{1, 1}, {13, 4}, {13, 3}})
      Check(from, to, size, {.reverse = true});
  });
}

TEST_F(SampleConversion, AllPairsWithUnalignedLines) {
  ForEachPair([](PixelFormat from, PixelFormat to) {
    for (std::size_t alignment : {1, 3, 7, 64})
      for (const Size& size : {Size{11, 3}, {37, 2}})
        Check(from, to, size, {.alignment = alignment});
  });
}

TEST_F(SampleConversion, AllPairsInAllModesAndByGamma) {
  ForEachPair([](PixelFormat from, PixelFormat to) {
    for (const auto mode : {QvBitExpansionMode_Gamma, QvBitExpansionMode_Fixed,
                            QvBitExpansionMode_LeftShiftBy0, QvBitExpansionMode_LeftShiftBy1})
      for (double gamma : {1.0, 0.45}) Check(from, to, {71, 2}, {.gamma = gamma, .mode = mode});
  });
}

/// The first sample of a one-pixel image of `format` that a pixel with all samples `value` gives.
unsigned ConvertedSample(PixelFormat source, unsigned value, PixelFormat format,
                         const Settings& settings) {
  TestImage image(1, 1, source);
  SetSample(image, 0, 0, value);
  CQvPixelFormatConverter converter;
  converter.SetDestinationPixelFormat(format);
  converter.SetGammaValue(settings.gamma);
  converter.SetBitExpansionMode(settings.mode);
  const Buffer buffer = MakeBuffer();
  converter.Convert(&image, buffer.Get());
  return SampleAt(*buffer->GetIQvImage(), 0, 0);
}

TEST_F(SampleConversion, DepthsWorkedByHand) {
  const struct {
    PixelFormat source, destination;
    unsigned sample;
    Settings settings;
    unsigned expected;
  } cases[] = {
      {Mono8, Mono16, 0, {}, 0},
      {Mono8, Mono16, 1, {}, 257},
      {Mono8, Mono16, 255, {}, 65535},
      {Mono8, Mono16, 255, {.mode = QvBitExpansionMode_Fixed}, 255},
      {Mono8, Mono16, 255, {.mode = QvBitExpansionMode_LeftShiftBy0}, 65280},
      {Mono8, Mono16, 255, {.mode = QvBitExpansionMode_LeftShiftBy1}, 65535},
      {Mono8, Mono16, 0, {.mode = QvBitExpansionMode_LeftShiftBy1}, 255},
      {Mono16, Mono8, 0x12FF, {}, 0x12},
      {Mono12, Mono8, 4095, {.gamma = 2.0}, 255},
      {Mono12, Mono8, 2048, {.gamma = 2.0}, 64},  // 0.50012^2 * 255 = 63.78
      {Mono12, Mono8, 0x1FFF, {}, 255},           // above its depth
  };
  for (const auto& c : cases)
    EXPECT_EQ(ConvertedSample(c.source, c.sample, c.destination, c.settings), c.expected)
        << NameOf(c.source) << " " << c.sample << " to " << NameOf(c.destination);
}

/// What a converter with these colour map settings makes of a line of all levels of grey.
std::vector<std::uint8_t> MappedLevels(PixelFormat source, PixelFormat destination,
                                       EQvColorMapType_t type, bool inversion, int phase) {
  TestImage image(256, 1, source);
  const unsigned scale = LineBytes(source, 1) == 2 ? 4 : 1;  // of 10 bits
  for (unsigned level = 0; level < 256; ++level) SetSample(image, level, 0, level * scale);
  CQvPixelFormatConverter converter;
  converter.SetDestinationPixelFormat(destination);
  converter.SetColorMapType(type);
  converter.SetColorMapInversion(inversion);
  converter.SetColorMapPhase(phase);
  const Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(256, 1, destination, QvMemoryInitialization_Zero);
  converter.Convert(&image, buffer.Get());
  return AllBytes(buffer->GetIQvImage(), Info(destination).GetPlaneCount());
}

TEST_F(SampleConversion, GreyIsShownInTheColoursOfTheMap) {
  struct {
    EQvColorMapType_t type;
    bool inversion;
    int phase;
  } const maps[] = {{QvColorMapType_Normal, true, 0},
                    {QvColorMapType_Normal, false, 10},
                    {QvColorMapType_PseudoColor_BGR, false, 0},
                    {QvColorMapType_PseudoColor_BGRB, true, 77}};
  for (const auto& map : maps)
    for (PixelFormat source : {Mono8, Mono10})
      for (PixelFormat destination : {BGR8, RGB8, BGRa8, RGBa8}) {
        unsigned colors[256];
        SetColorMap(colors, map.type, map.inversion, map.phase);
        const auto bytes = MappedLevels(source, destination, map.type, map.inversion, map.phase);
        const PixelFormatRow& row = *FindPixelFormat(destination);
        for (std::size_t level = 0; level < 256; ++level) {
          const std::uint8_t* pixel = &bytes[level * row.componentCount];
          const unsigned first = pixel[0], third = pixel[2];
          const unsigned blue = row.IsBGR() ? first : third, red = row.IsBGR() ? third : first;
          ASSERT_EQ(blue | unsigned{pixel[1]} << 8 | red << 16, colors[level])
              << NameOf(source) << " to " << NameOf(destination) << ", level " << level;
        }
      }
}

TEST_F(SampleConversion, ColorMapWorkedByHand) {
  const auto bytes = MappedLevels(Mono8, BGR8, QvColorMapType_PseudoColor_BGR, false, 0);
  EXPECT_EQ((std::vector(bytes.begin(), bytes.begin() + 6)),
            (std::vector<std::uint8_t>{255, 0, 0, 255, 4, 0}));
  EXPECT_EQ((std::vector(bytes.end() - 3, bytes.end())), (std::vector<std::uint8_t>{0, 3, 255}));
}

TEST_F(SampleConversion, ColorMapCountsForInterleavedBytesAlone) {
  const auto planes = MappedLevels(Mono8, RGB8_Planar, QvColorMapType_Normal, true, 0);
  const auto words = MappedLevels(Mono8, BGR10, QvColorMapType_Normal, true, 0);
  EXPECT_EQ(planes[10], 10);
  EXPECT_EQ(words[6 * 255] | words[6 * 255 + 1] << 8, 1023);
}

}  // namespace
}  // namespace QvApi
