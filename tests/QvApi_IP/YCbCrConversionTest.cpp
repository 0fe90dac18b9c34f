// SPDX-License-Identifier: MIT
// Luminance and chrominance in both directions, against the tables as their rules state them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using ByteVector = std::vector<std::uint8_t>;

constexpr std::uint8_t kOld = 0xA5;

/// Gives memory full of kOld.
class OldMemory : public IQvAllocator {
 public:
  void Allocate(void** buffer, std::size_t size, void** context) override {
    *buffer = ::operator new(size);
    *context = nullptr;
    std::memset(*buffer, kOld, size);
  }
  void Deallocate(void* buffer, std::size_t, void*) override { ::operator delete(buffer); }
  void OnDeregister() override {}
};

struct Settings {
  PixelFormat destination;
  bool reverse = false;
  std::size_t alignment = 0;
};

/// All bytes of a conversion into memory full of kOld.
struct Result {
  Result(IQvImage& source, const Settings& settings) {
    converter.SetDestinationPixelFormat(settings.destination);
    converter.SetReverseY(settings.reverse);
    converter.SetLinePitchAlignment(settings.alignment);
    converter.Convert(&source, buffer.Get());
    const std::size_t planes = Info(settings.destination).GetPlaneCount();
    pitch = Image().GetImageLinePitch();
    bytes = AllBytes(&Image(), planes);
  }
  IQvImage& Image() const { return *buffer->GetIQvImage(); }

  OldMemory memory;
  CQvPixelFormatConverter converter;
  const Buffer buffer = MakeBuffer(&memory);
  std::size_t pitch;
  ByteVector bytes;
};

// --- The reference
// --------------------------------------------------------------------------------

/// Order of a group's bytes: Y, b (Cb), r (Cr). Matrix 0 is full range.
struct Coding {
  PixelFormat format;
  std::string order;
  std::size_t matrix;

  std::size_t Pixels() const {
    return static_cast<std::size_t>(std::count(order.begin(), order.end(), 'Y'));
  }
  std::size_t LineBytes(std::size_t width) const {
    return (width * order.size() + Pixels() - 1) / Pixels();
  }
};

const std::vector<Coding> kCodings{
    {YCbCr8, "Ybr", 0},
    {YCbCr8_CbYCr, "bYr", 0},
    {YUV8_UYV, "bYr", 0},
    {YCbCr601_8_CbYCr, "bYr", 1},
    {YCbCr709_8_CbYCr, "bYr", 2},
    {YCbCr422_8, "YbYr", 0},
    {YUV422_8, "YbYr", 0},
    {YCbCr422_8_CbYCrY, "bYrY", 0},
    {YUV422_8_UYVY, "bYrY", 0},
    {YCbCr601_422_8, "YbYr", 1},
    {YCbCr601_422_8_CbYCrY, "bYrY", 1},
    {YCbCr709_422_8, "YbYr", 2},
    {YCbCr709_422_8_CbYCrY, "bYrY", 2},
    {YCbCr411_8, "YYbYYr", 0},
    {YCbCr411_8_CbYYCrYY, "bYYrYY", 0},
    {YUV411_8_UYYVYY, "bYYrYY", 0},
    {YCbCr601_411_8_CbYYCrYY, "bYYrYY", 1},
    {YCbCr709_411_8_CbYYCrYY, "bYYrYY", 2},
};

using Color = std::array<unsigned, 3>;  // red, green, blue

double Entry(double factor, double x) { return std::round(factor * x * 4194304.0); }

std::uint8_t Whole(double sum, double least, double most) {
  return static_cast<std::uint8_t>(std::clamp(std::floor(sum / 4194304.0), least, most));
}

/// Component 0 (Y), 1 (Cb), 2 (Cr).
std::uint8_t Component(std::size_t matrix, std::size_t component, const Color& color) {
  static constexpr double kFactors[3][9] = {
      {0.299, 0.587, 0.114, -0.16874, -0.33126, 0.5, 0.5, -0.41869, -0.08131},
      {0.25679, 0.50413, 0.09791, -0.14822, -0.29099, 0.43922, 0.43922, -0.36779, -0.07143},
      {0.18259, 0.61423, 0.06201, -0.10064, -0.33857, 0.43922, 0.43922, -0.39894, -0.04027}};
  const bool isFull = matrix == 0;
  double sum = 4194304.0 * (component > 0 ? 128 : isFull ? 0 : 16);
  for (std::size_t c = 0; c < 3; ++c) sum += Entry(kFactors[matrix][3 * component + c], color[c]);
  if (!isFull && component == 2 && color[2] > 0) sum -= 1;
  return Whole(sum, isFull ? 0 : 16, isFull ? 255 : component == 0 ? 235 : 240);
}

Color FromYCbCr(std::size_t matrix, unsigned luma, unsigned blue, unsigned red) {
  static constexpr double kFactors[3][5] = {{1.0, 1.402, -0.34414, -0.71414, 1.772},
                                            {1.16438, 1.59603, -0.39176, -0.81297, 2.01723},
                                            {1.16438, 1.79274, -0.21325, -0.53291, 2.11240}};
  const double* f = kFactors[matrix];
  const bool isFull = matrix == 0;
  const double y = isFull ? luma : std::clamp(luma, 16U, 235U) - 16.0;
  const double cb = (isFull ? blue : std::clamp(blue, 16U, 240U)) - 128.0;
  const double cr = (isFull ? red : std::clamp(red, 16U, 240U)) - 128.0;
  const double base = Entry(f[0], y);
  return {Whole(base + Entry(f[1], cr), 0, 255),
          Whole(base + Entry(f[2], cb) + Entry(f[3], cr), 0, 255),
          Whole(base + Entry(f[4], cb), 0, 255)};
}

std::size_t RedPlace(PixelFormat format) { return Info(format).IsBGR() ? 2 : 0; }

Color ColorAt(IQvImage& image, std::size_t x, std::size_t y) {
  const PixelFormat format = image.GetImagePixelFormat();
  const std::size_t step = Info(format).GetComponentCount(), red = RedPlace(format);
  return {SampleAt(image, x * step + red, y), SampleAt(image, x * step + 1, y),
          SampleAt(image, x * step + 2 - red, y)};
}

/// Mean of pixels x to x + count, as far as they are there.
Color MeanAt(IQvImage& image, std::size_t x, std::size_t y, std::size_t count) {
  Color sum{};
  const std::size_t end = std::min(x + count, image.GetImageWidth());
  for (std::size_t i = x; i < end; ++i) {
    const Color color = ColorAt(image, i, y);
    for (std::size_t c = 0; c < 3; ++c) sum[c] += color[c];
  }
  for (unsigned& each : sum) each /= static_cast<unsigned>(end - x);
  return sum;
}

struct Size {
  std::size_t width, height;
};
constexpr Size kSizes[] = {{1, 1},  {2, 2},   {3, 1},    {5, 3},    {6, 2},    {7, 4},   {9, 5},
                           {64, 3}, {131, 2}, {1024, 1}, {1025, 2}, {1026, 1}, {2051, 2}};
constexpr PixelFormat kColors[] = {BGR8, BGRa8, RGB8, RGBa8};

std::string Describe(PixelFormat from, PixelFormat to, const Size& size) {
  return NameOf(from) + " to " + NameOf(to) + " " + std::to_string(size.width) + " x " +
         std::to_string(size.height);
}

// --- Interleaved
// ----------------------------------------------------------------------------------

ByteVector ExpectedInterleaved(IQvImage& source, const Coding& coding, bool reverse,
                               std::size_t pitch) {
  const std::size_t width = source.GetImageWidth(), height = source.GetImageHeight();
  const std::size_t pixels = coding.Pixels(), lineBytes = coding.LineBytes(width);
  ByteVector expected(pitch * height, kOld);
  for (std::size_t y = 0; y < height; ++y) {
    std::uint8_t* line = &expected[(reverse ? height - 1 - y : y) * pitch];
    for (std::size_t x = 0; x < width; x += pixels) {
      std::size_t pixel = x;
      for (std::size_t k = 0; k < coding.order.size(); ++k) {
        const std::size_t place = x / pixels * coding.order.size() + k;
        const char what = coding.order[k];
        if (what == 'Y' && pixel < width)
          line[place] = Component(coding.matrix, 0, ColorAt(source, pixel, y));
        if (what == 'Y') ++pixel;
        if (what != 'Y' && place < lineBytes)
          line[place] = Component(coding.matrix, what == 'b' ? 1 : 2, MeanAt(source, x, y, pixels));
      }
    }
  }
  return expected;
}

TEST(YCbCrConversion, ColorToEveryInterleavedLayout) {
  unsigned turn = 0;
  for (const Coding& coding : kCodings)
    for (const Size& size : kSizes)
      for (PixelFormat from : kColors) {
        ++turn;
        TestImage source(size.width, size.height, from, turn % 4);
        const ByteVector before = source.Randomize(turn).All();
        const Settings settings{coding.format, turn % 2 == 0, turn % 5};
        const Result result(source, settings);
        ASSERT_EQ(result.bytes, ExpectedInterleaved(source, coding, settings.reverse, result.pitch))
            << Describe(from, coding.format, size);
        ASSERT_EQ(source.All(), before);
      }
}

/// Bytes of a line as luminance and chrominance of each pixel.
Color ComponentsAt(TestImage& image, const Coding& coding, std::size_t x, std::size_t y) {
  const std::uint8_t* line = image.Line(y);
  const std::size_t lineBytes = coding.LineBytes(image.GetImageWidth());
  Color result{0, 128, 128};
  std::size_t luma = 0;
  for (std::size_t k = 0; k < coding.order.size(); ++k) {
    const std::size_t place = x / coding.Pixels() * coding.order.size() + k;
    if (coding.order[k] == 'Y') {
      if (luma++ == x % coding.Pixels()) result[0] = line[place];
      continue;
    }
    unsigned& chroma = result[coding.order[k] == 'b' ? 1 : 2];
    if (place < lineBytes)
      chroma = line[place];
    else if (place >= coding.order.size())
      chroma = line[place - coding.order.size()];
  }
  return result;
}

template <class Pixel>
ByteVector ExpectedColor(PixelFormat format, const Size& size, bool reverse, std::size_t pitch,
                         Pixel pixelAt) {
  const std::size_t step = Info(format).GetComponentCount(), red = RedPlace(format);
  ByteVector expected(pitch * size.height, kOld);
  for (std::size_t y = 0; y < size.height; ++y)
    for (std::size_t x = 0; x < size.width; ++x) {
      const Color color = pixelAt(x, y);
      std::uint8_t* pixel = &expected[(reverse ? size.height - 1 - y : y) * pitch + x * step];
      pixel[red] = static_cast<std::uint8_t>(color[0]);
      pixel[1] = static_cast<std::uint8_t>(color[1]);
      pixel[2 - red] = static_cast<std::uint8_t>(color[2]);
    }
  return expected;
}

TEST(YCbCrConversion, EveryInterleavedLayoutToColor) {
  unsigned turn = 0;
  for (const Coding& coding : kCodings)
    for (const Size& size : kSizes)
      for (PixelFormat to : kColors) {
        ++turn;
        TestImage source(size.width, size.height, coding.format, turn % 4);
        source.Randomize(turn);
        const Settings settings{to, turn % 2 == 0, turn % 5};
        const Result result(source, settings);
        ASSERT_EQ(result.bytes, ExpectedColor(to, size, settings.reverse, result.pitch,
                                              [&](std::size_t x, std::size_t y) {
                                                const Color c = ComponentsAt(source, coding, x, y);
                                                return FromYCbCr(coding.matrix, c[0], c[1], c[2]);
                                              }))
            << Describe(coding.format, to, size);
      }
}

TEST(YCbCrConversion, EveryInterleavedLayoutToGrey) {
  unsigned turn = 0;
  for (const Coding& coding : kCodings)
    for (const Size& size : kSizes) {
      ++turn;
      TestImage source(size.width, size.height, coding.format, turn % 4);
      source.Randomize(turn);
      const Settings settings{Mono8, turn % 2 == 0, turn % 5};
      const Result result(source, settings);
      ByteVector expected(result.pitch * size.height, kOld);
      for (std::size_t y = 0; y < size.height; ++y)
        for (std::size_t x = 0; x < size.width; ++x) {
          const unsigned luma = ComponentsAt(source, coding, x, y)[0];
          expected[(settings.reverse ? size.height - 1 - y : y) * result.pitch + x] =
              coding.matrix == 0
                  ? static_cast<std::uint8_t>(luma)
                  : Whole(Entry(1.16438, std::clamp(luma, 16U, 235U) - 16.0), 0, 255);
        }
      ASSERT_EQ(result.bytes, expected) << Describe(coding.format, Mono8, size);
    }
}

// --- Planar 4:2:0
// ---------------------------------------------------------------------------------

struct Planes {
  explicit Planes(const Size& size)
      : width(size.width),
        cb(size.width * size.height),
        cr(cb + cb / 4),
        chromaWidth(size.width / 2),
        chromaHeight(size.height / 2) {}
  std::size_t Luma(std::size_t x, std::size_t y) const { return y * width + x; }
  std::size_t Chroma(std::size_t x, std::size_t y) const { return y * chromaWidth + x; }

  std::size_t width, cb, cr, chromaWidth, chromaHeight;
};

/// `components(x, y, component)` for each pixel; chrominance is asked for on even rows, at the
/// first of two pixels.
template <class Components>
ByteVector Expected420(const Size& size, bool reverse, std::size_t bytes, Components components) {
  const Planes planes(size);
  ByteVector expected(bytes, kOld);
  for (std::size_t y = 0; y < size.height; ++y)
    for (std::size_t x = 0; x < size.width; ++x) {
      expected[planes.Luma(x, reverse ? size.height - 1 - y : y)] = components(x, y, 0);
      if (x % 2 != 0 || y % 2 != 0) continue;
      if (x / 2 >= planes.chromaWidth || y / 2 >= planes.chromaHeight) continue;
      const std::size_t row = reverse ? planes.chromaHeight - 1 - y / 2 : y / 2;
      expected[planes.cb + planes.Chroma(x / 2, row)] = components(x, y, 1);
      expected[planes.cr + planes.Chroma(x / 2, row)] = components(x, y, 2);
    }
  return expected;
}

TEST(YCbCrConversion, ColorToPlanar) {
  unsigned turn = 0;
  for (const Size& size : kSizes)
    for (PixelFormat from : kColors)
      for (bool reverse : {false, true}) {
        TestImage source(size.width, size.height, from, ++turn % 4);
        source.Randomize(turn);
        const Result result(source, {CYCbCr420_8_YY_Cb_Cr_Planar, reverse, turn % 5});
        ASSERT_EQ(result.bytes,
                  Expected420(size, reverse, result.bytes.size(),
                              [&](std::size_t x, std::size_t y, std::size_t c) {
                                return Component(
                                    0, c, c == 0 ? ColorAt(source, x, y) : MeanAt(source, x, y, 2));
                              }))
            << Describe(from, CYCbCr420_8_YY_Cb_Cr_Planar, size);
      }
}

TEST(YCbCrConversion, GreyToPlanarAndBack) {
  const struct {
    PixelFormat format;
    unsigned shift;
  } kGreys[] = {{Mono8, 0}, {Mono10, 2}, {Mono12, 4}, {Mono14, 6}, {Mono16, 8}};
  unsigned turn = 0;
  for (const auto& grey : kGreys)
    for (const Size& size : kSizes)
      for (bool reverse : {false, true}) {
        TestImage source(size.width, size.height, grey.format, ++turn % 2 * 2);
        source.Randomize(turn);
        const Result result(source, {CYCbCr420_8_YY_Cb_Cr_Planar, reverse});
        ByteVector expected(result.bytes.size(), kOld);
        for (std::size_t y = 0; y < size.height; ++y)
          for (std::size_t x = 0; x < size.width; ++x)
            expected[(reverse ? size.height - 1 - y : y) * size.width + x] =
                static_cast<std::uint8_t>(SampleAt(source, x, y) >> grey.shift);
        const std::size_t area = size.width * size.height;
        std::fill_n(expected.begin() + static_cast<std::ptrdiff_t>(area), area / 2, 128);
        ASSERT_EQ(result.bytes, expected) << NameOf(grey.format) << " " << size.width;

        const Result back(result.Image(), {Mono8, reverse});
        for (std::size_t y = 0; y < size.height; ++y)
          for (std::size_t x = 0; x < size.width; ++x)
            ASSERT_EQ(back.bytes[y * back.pitch + x], SampleAt(source, x, y) >> grey.shift);
      }
}

/// A source of planes that end with the last byte of chrominance.
ForeignImage MakePlanarSource(ByteVector& bytes, const Size& size, unsigned seed) {
  const std::size_t area = size.width * size.height;
  bytes.resize(std::max(area, area + 2 * (area / 4)));
  std::mt19937 random(seed);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return {bytes.data(), size.width, size.height, size.width, CYCbCr420_8_YY_Cb_Cr_Planar};
}

TEST(YCbCrConversion, PlanarToColorIsOfStudioRange) {
  unsigned turn = 0;
  for (const Size& size : kSizes)
    for (PixelFormat to : kColors)
      for (bool reverse : {false, true}) {
        ByteVector bytes;
        ForeignImage source = MakePlanarSource(bytes, size, ++turn);
        const Result result(source, {to, reverse, turn % 5});
        const Planes planes(size);
        const auto pixelAt = [&](std::size_t x, std::size_t y) {
          unsigned cb = 128, cr = 128;
          if (planes.chromaWidth > 0 && planes.chromaHeight > 0) {
            const std::size_t place = planes.Chroma(std::min(x / 2, planes.chromaWidth - 1),
                                                    std::min(y / 2, planes.chromaHeight - 1));
            cb = bytes[planes.cb + place];
            cr = bytes[planes.cr + place];
          }
          return FromYCbCr(1, bytes[planes.Luma(x, y)], cb, cr);
        };
        ASSERT_EQ(result.bytes, ExpectedColor(to, size, reverse, result.pitch, pixelAt))
            << Describe(CYCbCr420_8_YY_Cb_Cr_Planar, to, size);
      }
}

// --- Mosaics
// --------------------------------------------------------------------------------------

/// A mosaic as it is taken apart: red, blue, green of even and of odd columns of the tile at k for
/// row y, with the row below, or for the last one the row above.
struct TileReader {
  IQvImage& image;
  unsigned phase = Info(image.GetImagePixelFormat()).GetPixelColorFilter(0, 0) - 2U;

  unsigned Sample(std::size_t x, std::size_t y) const {
    return SampleAt(image, std::min(x, image.GetImageWidth() - 1), y);
  }
  /// The row of the two that has red, or that has not.
  unsigned Row(std::size_t y, bool red, std::size_t x) const {
    const std::size_t height = image.GetImageHeight();
    const std::size_t other = y + 1 < height ? y + 1 : height > 1 ? y - 1 : y;
    const bool isRedRow = (phase < 2) == (y % 2 == 0);
    return Sample(x, isRedRow == red ? y : other);
  }
  bool RedIsEven() const { return phase == 0 || phase == 2; }
  unsigned Red(std::size_t k, std::size_t y) const {
    return Row(y, true, 2 * k + (RedIsEven() ? 0 : 1));
  }
  unsigned Blue(std::size_t k, std::size_t y) const {
    return Row(y, false, 2 * k + (RedIsEven() ? 1 : 0));
  }
  unsigned GreenEven(std::size_t k, std::size_t y) const { return Row(y, !RedIsEven(), 2 * k); }
  unsigned GreenOdd(std::size_t k, std::size_t y) const { return Row(y, RedIsEven(), 2 * k + 1); }
};

/// A component of the pixel in column x. An odd last column is like the one before it.
std::uint8_t MosaicComponent(const TileReader& tiles, std::size_t x, std::size_t y,
                             std::size_t component) {
  const std::size_t width = tiles.image.GetImageWidth();
  const bool isOddEnd = width % 2 == 1 && x + 1 == width && width > 1;
  if (isOddEnd) --x;
  const std::size_t k = x / 2;
  const std::size_t next = 2 * (k + 1) + 1 < width ? k + 1 : k;
  const unsigned first = (tiles.GreenOdd(k, y) + tiles.GreenEven(k, y)) >> 1;
  const unsigned second = (tiles.GreenOdd(k, y) + tiles.GreenOdd(next, y)) >> 1;
  const unsigned green = component > 0 ? (first + second) >> 1 : x % 2 == 0 ? first : second;
  return Component(0, component, {tiles.Red(k, y), green, tiles.Blue(k, y)});
}

TEST(YCbCrConversion, MosaicsTo422AndPlanar) {
  unsigned turn = 0;
  for (PixelFormat from : {BayerRG8, BayerGR8, BayerGB8, BayerBG8})
    for (const Size& size : kSizes)
      for (bool reverse : {false, true}) {
        TestImage source(size.width, size.height, from, ++turn % 4);
        source.Randomize(turn);
        const TileReader tiles{source};
        const Result planar(source, {CYCbCr420_8_YY_Cb_Cr_Planar, reverse});
        ASSERT_EQ(planar.bytes, Expected420(size, reverse, planar.bytes.size(),
                                            [&](std::size_t x, std::size_t y, std::size_t c) {
                                              return MosaicComponent(tiles, x, y, c);
                                            }))
            << Describe(from, CYCbCr420_8_YY_Cb_Cr_Planar, size);

        const Result result(source, {YCbCr422_8, reverse, turn % 5});
        ByteVector expected(result.pitch * size.height, kOld);
        for (std::size_t y = 0; y < size.height; ++y)
          for (std::size_t x = 0; x < size.width; ++x) {
            std::uint8_t* pixel =
                &expected[(reverse ? size.height - 1 - y : y) * result.pitch + 2 * x];
            pixel[0] = MosaicComponent(tiles, x, y, 0);
            pixel[1] = MosaicComponent(tiles, x, y, x % 2 == 0 ? 1 : 2);
          }
        ASSERT_EQ(result.bytes, expected) << Describe(from, YCbCr422_8, size);
      }
}

// --- Values and refusals
// --------------------------------------------------------------------------

TEST(YCbCrConversion, KnownColors) {
  const struct {
    PixelFormat format;
    std::uint8_t red, green, blue;
    ByteVector bytes;
  } kKnown[] = {
      {YCbCr8, 255, 255, 255, {254, 128, 128}},  // the entries add up to a unit less than 255
      {YCbCr8, 0, 0, 0, {0, 128, 128}},
      {YCbCr8, 255, 0, 0, {76, 84, 255}},
      {YCbCr601_8_CbYCr, 255, 255, 255, {128, 235, 128}},
      {YCbCr601_8_CbYCr, 0, 0, 0, {128, 16, 128}},
      {YCbCr601_8_CbYCr, 0, 0, 255, {240, 40, 109}},
      {YCbCr709_8_CbYCr, 255, 255, 255, {128, 235, 128}},
  };
  for (const auto& known : kKnown) {
    TestImage source(1, 1, RGB8);
    std::copy_n(&known.red, 1, source.Line(0));
    source.Line(0)[1] = known.green;
    source.Line(0)[2] = known.blue;
    const Result result(source, {known.format, false, 1});
    EXPECT_EQ(result.bytes, known.bytes) << NameOf(known.format);
  }
}

TEST(YCbCrConversion, GreyThroughPlanarComesBackStretched) {
  TestImage source(2, 2, Mono8);
  const std::uint8_t levels[] = {16, 128, 235, 255};
  std::copy_n(levels, 4, source.Line(0));
  const Result planar(source, {CYCbCr420_8_YY_Cb_Cr_Planar});
  const Result color(planar.Image(), {BGR8, false, 1});
  EXPECT_EQ(color.bytes, (ByteVector{0, 0, 0, 130, 130, 130, 254, 254, 254, 254, 254, 254}));
}

TEST(YCbCrConversion, MosaicsHaveNoOtherRoute) {
  TestImage source(4, 4, BayerRG8);
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { Result(source, {YCbCr8}); }),
            "Converting a pixelformat from  BayerRG8 to YCbCr8 is not supported.");
}

TEST(YCbCrConversion, HopsAreTheirStepsOneByOne) {
  const struct {
    PixelFormat from, between, to;
  } kHops[] = {{YCbCr709_422_8, BGRa8, CYCbCr420_8_YY_Cb_Cr_Planar},
               {BayerGB12, BayerGB8, YCbCr422_8},
               {YCbCr411_8, BGRa8, RGB10p32},
               {CYCbCr420_8_YY_Cb_Cr_Planar, BGRa8, BGR16},
               {Mono12p, Mono12, CYCbCr420_8_YY_Cb_Cr_Planar},
               {BGR12, BGRa8, CYCbCr420_8_YY_Cb_Cr_Planar}};
  for (const auto& hop : kHops)
    for (bool reverse : {false, true}) {
      TestImage source(10, 6, hop.from);
      source.Randomize(5);
      const Result first(source, {hop.between, reverse});
      Result second(first.Image(), {hop.to}), direct(source, {hop.to, reverse});
      const std::size_t used = hop.to == CYCbCr420_8_YY_Cb_Cr_Planar ? 90 : direct.bytes.size();
      second.bytes.resize(used);
      direct.bytes.resize(used);
      EXPECT_EQ(direct.bytes, second.bytes) << NameOf(hop.from) << " to " << NameOf(hop.to);
    }
}

}  // namespace
}  // namespace QvApi
