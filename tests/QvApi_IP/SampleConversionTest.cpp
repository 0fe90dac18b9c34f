// SPDX-License-Identifier: MIT
// All conversions that change images sample by sample, against a reference that reads and writes
// bit by bit: depth, packing, planes, order of colours, grey to colour and back.
#include <cmath>
#include <functional>

#include "QvApi_IP/Conversions.h"
#include "QvApi_IP/PixelFormatFinder.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

/// The bits of an image, one sample at a time.
class BitImage {
 public:
  BitImage(const PixelFormatRow& row, const Size& size, std::size_t pitch, std::uint8_t* bytes)
      : m_row(row), m_size(size), m_pitch(pitch), m_bytes(bytes) {}

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
    for (std::size_t y = 0; y < m_size.height; ++y) {
      for (std::size_t x = 0; x < m_size.width; ++x) {
        if (m_row.storage == Storage::Word32) Line(y, 0)[4 * x + 3] &= 0x3F;
        if (m_row.storage == Storage::GevPacked && m_row.depth == 10)
          Line(y, 0)[x / 2 * 3 + 1] &= static_cast<std::uint8_t>(x % 2 == 0 ? 0xF3 : 0x3F);
      }
      if (m_row.storage != Storage::LsbPacked) continue;
      const std::size_t bits = m_size.width * m_row.bits;
      const std::size_t wordBits = m_row.componentCount == 3 ? 16 : 8;
      const std::size_t end = (bits + wordBits - 1) / wordBits * wordBits;
      for (std::size_t at = bits; at < std::min(end, 8 * m_pitch); ++at)
        Line(y, 0)[at / 8] &= static_cast<std::uint8_t>(~(1u << at % 8));
    }
  }

 private:
  std::size_t WordBits() const {
    const bool isInWords = m_row.storage == Storage::Unpacked || m_row.storage == Storage::Planar;
    return isInWords ? (m_row.depth > 8 ? 16u : 8u) : m_row.depth;
  }

  std::uint8_t* Line(std::size_t y, std::size_t component) const {
    const std::size_t plane = m_row.storage == Storage::Planar ? component : 0;
    return m_bytes + (plane * m_size.height + y) * m_pitch;
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
  const Size m_size;
  const std::size_t m_pitch;
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

/// A pixel as red, green and blue, or as one level.
using Pixel = std::array<unsigned, 3>;

bool IsSingle(const PixelFormatRow& row) { return row.componentCount == 1; }

Pixel Converted(Pixel pixel, const PixelFormatRow& from, const PixelFormatRow& to,
                const Settings& settings) {
  if (!IsSingle(from) && IsSingle(to)) {
    const unsigned mask = (1u << from.depth) - 1;
    pixel[0] = (2 * (pixel[0] & mask) + 5 * (pixel[1] & mask) + (pixel[2] & mask)) / 8;
  }
  if (IsSingle(from) || IsSingle(to)) pixel[1] = pixel[2] = pixel[0];
  for (unsigned& component : pixel) component = Changed(component, from.depth, to.depth, settings);
  return pixel;
}

/// Writes the expected pixels of `from` to `to`.
void Convert(const BitImage& read, const PixelFormatRow& from, const BitImage& write,
             const PixelFormatRow& to, const Size& size, const Settings& settings) {
  for (std::size_t y = 0; y < size.height; ++y)
    for (std::size_t x = 0; x < size.width; ++x) {
      Pixel pixel{};
      for (std::size_t c = 0; c < (IsSingle(from) ? 1 : 3); ++c)
        pixel[from.IsBGR() ? 2 - c : c] = read.Read(x, y, c);
      pixel = Converted(pixel, from, to, settings);
      for (std::size_t c = 0; c < (IsSingle(to) ? 1 : 3); ++c)
        write.Write(x, settings.reverse ? size.height - 1 - y : y, c,
                    pixel[to.IsBGR() ? 2 - c : c]);
    }
  write.WriteSpareBits();
}

void Check(PixelFormat sourceFormat, const Size& size, const Settings& settings) {
  const PixelFormatRow& from = *FindPixelFormat(sourceFormat);
  // A source that ends with its last significant byte, on the heap, where a sanitizer sees more.
  // Samples in words have random bits above their depth.
  const std::size_t sourcePitch = from.LineBytes(size.width) + settings.alignment;
  std::vector<std::uint8_t> pixels(sourcePitch * (size.height * from.planeCount - 1) +
                                   from.LineBytes(size.width));
  std::mt19937 random(static_cast<unsigned>(size.width + 7 * size.height));
  std::ranges::generate(pixels, std::ref(random));
  ForeignImage source(pixels.data(), size.width, size.height, sourcePitch, sourceFormat);
  SCOPED_TRACE(Describe(source, settings));

  const PixelFormat flipped = settings.reverse
                                  ? FlippedFormat(sourceFormat, settings.destination, size.height)
                                  : settings.destination;
  const PixelFormatRow& to = *FindPixelFormat(flipped);
  const Conversion result(source, settings);
  ASSERT_EQ(result.Format(), flipped);
  const std::size_t pitch = result.Image().GetImageLinePitch();
  const std::vector<std::uint8_t> made = result.All();
  std::vector<std::uint8_t> expected(made.size(), kOld);
  Convert(BitImage(from, size, sourcePitch, pixels.data()), from,
          BitImage(to, size, pitch, expected.data()), to, size, settings);
  const auto [wanted, other] = std::ranges::mismatch(expected, made);
  ASSERT_TRUE(wanted == expected.end()) << "byte " << wanted - expected.begin() << " of lines of "
                                        << pitch << " is " << +*other << ", not " << +*wanted;
}

TEST(SampleConversion, AllPairs) {
  // A single pixel, odd widths with all kinds of rests, and more than a piece of a line; then
  // upside down, with lines at any address, and in all modes and by gamma.
  std::vector<std::pair<Size, Settings>> cases{
      {{1, 1}, {}},
      {{2, 3}, {}},
      {{5, 2}, {}},
      {{63, 1}, {}},
      {{1037, 2}, {}},
      {{13, 4}, {.reverse = true}},
      {{13, 3}, {.reverse = true}},
  };
  for (std::size_t alignment : {1, 3, 7, 64})
    for (std::size_t width : {11, 37}) cases.push_back({{width, 3}, {.alignment = alignment}});
  for (unsigned mode = 0; mode < 4; ++mode)
    for (double gamma : {1.0, 0.45}) cases.push_back({{71, 2}, {.gamma = gamma, .mode = mode}});

  std::size_t pairs = 0;
  for (const PixelFormatRow& from : kPixelFormats)
    for (const PixelFormatRow& to : kPixelFormats) {
      const Route route = FindRoute(from.format, to.format);
      if (route < Route::ConverterRawMono8ToRawMono16 ||
          route > Route::ConverterPlanarToPlanar_16_16)
        continue;
      ++pairs;
      for (auto& [size, settings] : cases) {
        settings.destination = to.format;
        Check(from.format, size, settings);
        if (HasFatalFailure()) return;
      }
    }
  EXPECT_GT(pairs, 700u);
}

/// The map's colours are those of SetColorMap(); it counts for interleaved bytes alone.
TEST(SampleConversion, GreyIsShownInTheColorsOfTheMap) {
  struct {
    EQvColorMapType_t type;
    bool inversion;
    int phase;
  } const maps[] = {{QvColorMapType_Normal, true, 0},
                    {QvColorMapType_Normal, false, 10},
                    {QvColorMapType_PseudoColor_BGR, false, 0},
                    {QvColorMapType_PseudoColor_BGRB, true, 77}};
  for (const auto& map : maps)
    for (PixelFormat from : {Mono8, Mono10}) {
      TestImage image(256, 1, from);
      unsigned colors[256];
      SetColorMap(colors, map.type, map.inversion, map.phase);
      Raster expected(256, 1, 3);
      for (unsigned level = 0; level < 256; ++level) {
        SetSample(image, level, 0, from == Mono8 ? level : 4 * level);
        for (std::size_t c = 0; c < 3; ++c)
          expected.Pixel(level, 0)[c] = static_cast<int>(colors[level] >> (16 - 8 * c) & 0xFF);
      }
      for (PixelFormat to : {BGR8, RGB8, BGRa8, RGBa8, BGR10, RGB8_Planar}) {
        SCOPED_TRACE(NameOf(from) + " to " + NameOf(to));
        CQvPixelFormatConverter converter;
        Set(converter, {to});
        converter.SetColorMapType(map.type);
        converter.SetColorMapInversion(map.inversion);
        converter.SetColorMapPhase(map.phase);
        const Conversion result(converter, image);
        if (to == BGR10 || to == RGB8_Planar)
          EXPECT_EQ(result.All(), Conversion(image, {to}).All());
        else
          ExpectImage(result.Image(), expected);
      }
    }
}

}  // namespace
}  // namespace QvApi
