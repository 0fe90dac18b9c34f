// SPDX-License-Identifier: MIT
// Luminance and chrominance in both directions, against the rules and against another program.
#include "Kernels/YCbCrReference.h"
#include "QvApi_IP/Conversions.h"
#include "QvApi_IP/FileTestSupport.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using ByteVector = std::vector<std::uint8_t>;
using Color = YCbCrReference::Color;

constexpr PixelFormat k420 = CYCbCr420_8_YY_Cb_Cr_Planar;
constexpr PixelFormat kColors[] = {BGR8, BGRa8, RGB8, RGBa8};
/// With odd sides, and around the pieces in which lines are done.
constexpr Size kSizes[] = {{1, 1},  {2, 2},   {3, 1},    {5, 3},    {6, 2},    {7, 4},   {9, 5},
                           {64, 3}, {131, 2}, {1024, 1}, {1025, 2}, {1026, 1}, {2051, 2}};

const YCbCrReference kReferences[]{YCbCrReference(0), YCbCrReference(1), YCbCrReference(2)};

/// Order of a group's bytes: Y, b (Cb), r (Cr). Matrix 0 is full range.
struct Coding {
  PixelFormat format;
  std::string order;
  std::size_t matrix;

  std::size_t Pixels() const {
    return static_cast<std::size_t>(std::count(order.begin(), order.end(), 'Y'));
  }
  const YCbCrReference& Reference() const { return kReferences[matrix]; }
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

Color ColorAt(const Raster& image, std::size_t x, std::size_t y) {
  const int* pixel = image.Pixel(x, y);
  return {static_cast<unsigned>(pixel[0]), static_cast<unsigned>(pixel[1]),
          static_cast<unsigned>(pixel[2])};
}

/// Mean of pixels x to x + count, as far as they are there.
Color MeanAt(const Raster& image, std::size_t x, std::size_t y, std::size_t count) {
  Color sum{};
  const std::size_t end = std::min(x + count, image.width);
  for (std::size_t i = x; i < end; ++i)
    for (std::size_t c = 0; c < 3; ++c) sum[c] += ColorAt(image, i, y)[c];
  for (unsigned& each : sum) each /= static_cast<unsigned>(end - x);
  return sum;
}

/// Calls `check(image, settings, turn)` with images of random bytes in all sizes, one to a turn.
template <class Check>
void ForEachImage(PixelFormat from, PixelFormat to, Check check) {
  static unsigned turn = 0;
  for (const Size& size : kSizes) {
    ++turn;
    TestImage source(size.width, size.height, from, from == k420 ? 0 : turn % 2 * 2);
    const ByteVector before = source.Randomize(turn).All();
    const Settings settings{.destination = to, .reverse = turn % 3 == 0, .alignment = turn % 5};
    SCOPED_TRACE(Describe(source, settings));
    check(source, settings);
    ASSERT_EQ(source.All(), before);
  }
}

// --- Interleaved
// ----------------------------------------------------------------------------------

/// Calls `visit(place, what, x, group)` for the bytes of a line: what it is of which pixel, and
/// the first pixel of its group.
template <class Visit>
void ForEachByte(const Coding& coding, std::size_t width, Visit visit) {
  const std::size_t pixels = coding.Pixels(), bytes = coding.order.size();
  const std::size_t lineBytes = (width * bytes + pixels - 1) / pixels;
  for (std::size_t group = 0; group * pixels < width; ++group) {
    std::size_t x = group * pixels;
    for (std::size_t k = 0; k < bytes; ++k) {
      const char what = coding.order[k];
      const bool isThere = what == 'Y' ? x < width : group * bytes + k < lineBytes;
      if (isThere)
        visit(group * bytes + k, what == 'Y' ? 0u : what == 'b' ? 1u : 2u, x, group * pixels);
      if (what == 'Y') ++x;
    }
  }
}

TEST(YCbCrConversion, ColorToEveryInterleavedLayout) {
  for (const Coding& coding : kCodings)
    for (PixelFormat from : kColors)
      ForEachImage(from, coding.format, [&](TestImage& source, const Settings& settings) {
        const Conversion result(source, settings);
        const std::size_t pitch = result.Image().GetImageLinePitch();
        Raster colors = RasterOf(source);
        if (settings.reverse) colors = colors.Flipped();
        ByteVector expected(pitch * colors.height, kOld);
        for (std::size_t y = 0; y < colors.height; ++y)
          ForEachByte(coding, colors.width,
                      [&](std::size_t place, unsigned what, std::size_t x, std::size_t group) {
                        expected[y * pitch + place] = coding.Reference().Component(
                            what, what == 0 ? ColorAt(colors, x, y)
                                            : MeanAt(colors, group, y, coding.Pixels()));
                      });
        ASSERT_EQ(result.All(), expected);
      });
}

/// Luminance and chrominance of the pixels of a line. What chrominance the line does not have is
/// that of the group before, or grey.
std::vector<Color> ComponentsOf(const Coding& coding, const std::uint8_t* line, std::size_t width) {
  std::vector<Color> components(width + coding.Pixels(), {0, 128, 128});
  ForEachByte(coding, width,
              [&](std::size_t place, unsigned what, std::size_t x, std::size_t group) {
                if (what == 0) components[x][0] = line[place];
                for (std::size_t i = group; what != 0 && i < components.size(); ++i)
                  components[i][what] = line[place];
              });
  return components;
}

TEST(YCbCrConversion, EveryInterleavedLayoutToColorAndGrey) {
  for (const Coding& coding : kCodings)
    for (PixelFormat to : {BGR8, BGRa8, RGB8, RGBa8, Mono8})
      ForEachImage(coding.format, to, [&](TestImage& source, const Settings& settings) {
        Raster expected(source.GetImageWidth(), source.GetImageHeight(), to == Mono8 ? 1 : 3);
        for (std::size_t y = 0; y < expected.height; ++y) {
          const auto line = ComponentsOf(coding, source.Line(y), expected.width);
          for (std::size_t x = 0; x < expected.width; ++x)
            if (to == Mono8)
              expected.At(x, y) = static_cast<int>(coding.Reference().GreyOf(line[x][0]));
            else
              std::ranges::copy(coding.Reference().ColorOf(line[x]), expected.Pixel(x, y));
        }
        ExpectImage(Conversion(source, settings).Image(),
                    settings.reverse ? expected.Flipped() : expected);
      });
}

// --- Planar 4:2:0
// ---------------------------------------------------------------------------------

/// Planes of the size and the half size that follow each other.
struct Planes {
  explicit Planes(const IQvImage& image)
      : width(image.GetImageWidth()),
        height(image.GetImageHeight()),
        area(width * height),
        chromaArea(area / 4),
        chromaWidth(width / 2),
        chromaHeight(height / 2) {}
  /// Place of a component's byte for pixel (x, y).
  std::size_t Place(std::size_t component, std::size_t x, std::size_t y) const {
    if (component == 0) return y * width + x;
    return area + (component - 1) * chromaArea + y / 2 * chromaWidth + x / 2;
  }

  std::size_t width, height, area, chromaArea, chromaWidth, chromaHeight;
};

/// `components(component, x, y)` is the byte of the pixel; chrominance is asked for in even rows,
/// at the first of two pixels.
template <class Components>
void Expect420(TestImage& source, const Settings& settings, Components components) {
  const Conversion result(source, settings);
  const Planes planes(source);
  ByteVector expected(result.All().size(), kOld);
  for (std::size_t y = 0; y < planes.height; ++y)
    for (std::size_t x = 0; x < planes.width; ++x) {
      const std::size_t row = settings.reverse ? planes.height - 1 - y : y;
      expected[planes.Place(0, x, row)] = components(0, x, y);
      if (x % 2 != 0 || y % 2 != 0) continue;
      if (x / 2 >= planes.chromaWidth || y / 2 >= planes.chromaHeight) continue;
      const std::size_t chromaRow = settings.reverse ? 2 * planes.chromaHeight - 2 - y : y;
      for (std::size_t c : {1, 2}) expected[planes.Place(c, x, chromaRow)] = components(c, x, y);
    }
  ASSERT_EQ(result.All(), expected);
}

TEST(YCbCrConversion, ColorToPlanar) {
  for (PixelFormat from : kColors)
    ForEachImage(from, k420, [](TestImage& source, const Settings& settings) {
      const Raster colors = RasterOf(source);
      Expect420(source, settings, [&](std::size_t c, std::size_t x, std::size_t y) {
        return kReferences[0].Component(c, MeanAt(colors, x, y, c == 0 ? 1 : 2));
      });
    });
}

TEST(YCbCrConversion, GreyToPlanarAndBack) {
  for (PixelFormat from : {Mono8, Mono10, Mono12, Mono14, Mono16})
    ForEachImage(from, k420, [](TestImage& source, const Settings& settings) {
      const auto depth = Info(source.GetImagePixelFormat()).GetEachComponentEffectiveBitCount();
      Raster grey = RasterOf(source);
      for (int& level : grey.values) level >>= depth - 8;
      const Conversion result(source, settings);
      const ByteVector all = result.All();
      const std::size_t area = grey.values.size();
      for (std::size_t i = area; i < all.size(); ++i)
        ASSERT_EQ(all[i], i < area + area / 2 ? 128 : kOld) << i;
      Settings back = settings;
      back.destination = Mono8;
      ExpectImage(Conversion(result.Image(), back).Image(), grey);
    });
}

TEST(YCbCrConversion, PlanarToColorIsOfStudioRange) {
  for (PixelFormat to : kColors)
    ForEachImage(k420, to, [](TestImage& source, const Settings& settings) {
      const Planes planes(source);
      Raster expected(planes.width, planes.height, 3);
      for (std::size_t y = 0; y < planes.height; ++y)
        for (std::size_t x = 0; x < planes.width; ++x) {
          Color components{source.Line(0)[planes.Place(0, x, y)], 128, 128};
          for (std::size_t c : {1, 2})
            if (planes.chromaWidth > 0 && planes.chromaHeight > 0)
              components[c] =
                  source.Line(0)[planes.Place(c, std::min(x, 2 * planes.chromaWidth - 1),
                                              std::min(y, 2 * planes.chromaHeight - 1))];
          std::ranges::copy(kReferences[1].ColorOf(components), expected.Pixel(x, y));
        }
      ExpectImage(Conversion(source, settings).Image(),
                  settings.reverse ? expected.Flipped() : expected);
    });
}

// --- Mosaics
// --------------------------------------------------------------------------------------

/// A mosaic as it is taken apart: red, blue, green of even and of odd columns of the tile at k for
/// row y, with the row below, or for the last one the row above.
struct TileReader {
  const Raster mosaic;
  const unsigned phase;  ///< RG, GR, GB, BG.
  const bool isRedEven = phase % 2 == 0;

  /// Of the row of the two that has red, or that has not.
  unsigned Sample(std::size_t x, std::size_t y, bool red) const {
    const std::size_t other = y + 1 < mosaic.height ? y + 1 : mosaic.height > 1 ? y - 1 : y;
    const bool isRedRow = (phase < 2) == (y % 2 == 0);
    return static_cast<unsigned>(
        mosaic.At(std::min(x, mosaic.width - 1), isRedRow == red ? y : other));
  }
  unsigned GreenOdd(std::size_t k, std::size_t y) const { return Sample(2 * k + 1, y, isRedEven); }

  /// A component of the pixel in column x. An odd last column is like the one before it.
  std::uint8_t Component(std::size_t component, std::size_t x, std::size_t y) const {
    if (mosaic.width % 2 == 1 && x + 1 == mosaic.width && mosaic.width > 1) --x;
    const std::size_t k = x / 2, next = 2 * (k + 1) + 1 < mosaic.width ? k + 1 : k;
    const unsigned first = (GreenOdd(k, y) + Sample(2 * k, y, !isRedEven)) >> 1;
    const unsigned second = (GreenOdd(k, y) + GreenOdd(next, y)) >> 1;
    const unsigned green = component > 0 ? (first + second) >> 1 : x % 2 == 0 ? first : second;
    return kReferences[0].Component(component, {Sample(2 * k + !isRedEven, y, true), green,
                                                Sample(2 * k + isRedEven, y, false)});
  }
};

TEST(YCbCrConversion, MosaicsTo422AndPlanar) {
  for (unsigned phase = 0; phase < 4; ++phase)
    for (PixelFormat to : {YCbCr422_8, k420})
      ForEachImage(
          std::array{BayerRG8, BayerGR8, BayerGB8, BayerBG8}[phase], to,
          [&](TestImage& source, const Settings& settings) {
            const TileReader tiles{RasterOf(source), phase};
            if (to == k420)
              return Expect420(source, settings, [&](std::size_t c, std::size_t x, std::size_t y) {
                return tiles.Component(c, x, y);
              });
            const Conversion result(source, settings);
            const std::size_t pitch = result.Image().GetImageLinePitch();
            const std::size_t height = tiles.mosaic.height;
            ByteVector expected(pitch * height, kOld);
            for (std::size_t y = 0; y < height; ++y)
              for (std::size_t x = 0; x < tiles.mosaic.width; ++x) {
                const std::size_t row = settings.reverse ? height - 1 - y : y;
                expected[row * pitch + 2 * x] = tiles.Component(0, x, y);
                expected[row * pitch + 2 * x + 1] = tiles.Component(x % 2 == 0 ? 1 : 2, x, y);
              }
            ASSERT_EQ(result.All(), expected);
          });
}

// --- Another program
// ------------------------------------------------------------------------------

/// What FFmpeg's swscale makes of raw pixels, by its most exact arithmetic, with the chrominance of
/// one pixel for two.
std::string ByFFmpeg(const ByteVector& pixels, const Size& size, const std::string& from,
                     const std::string& to, const std::string& scale) {
  const TempDirectory directory;
  WriteFile(directory / "pixels", pixels);
  return OutputOf("ffmpeg -v error -f rawvideo -pix_fmt " + from + " -s " +
                  std::to_string(size.width) + "x" + std::to_string(size.height) + " -i " +
                  directory / "pixels" + " -vf scale=" + scale +
                  ":flags=accurate_rnd+full_chroma_int+neighbor -f rawvideo -pix_fmt " + to + " -");
}

/// The rules cut sums off, swscale rounds; and the factors have five digits here, and there other
/// ones. So no byte is greater than swscale's, nor less by more than one.
void ExpectJustBelow(const ByteVector& made, const std::string& seen) {
  ASSERT_EQ(made.size(), seen.size());
  for (std::size_t i = 0; i < made.size(); ++i) {
    const int difference = static_cast<std::uint8_t>(seen[i]) - made[i];
    ASSERT_TRUE(difference == 0 || difference == 1) << difference << " at " << i;
  }
}

TEST(YCbCrConversion, AgreesWithFFmpeg) {
  const struct {
    PixelFormat format;
    const char *name, *matrix, *range;
  } kFormats[] = {{YCbCr601_422_8, "yuyv422", "bt601", "tv"},
                  {YCbCr601_422_8_CbYCrY, "uyvy422", "bt601", "tv"},
                  {YCbCr709_422_8, "yuyv422", "bt709", "tv"},
                  {YCbCr422_8, "yuyv422", "bt601", "pc"}};
  constexpr Size kSize{256, 128};
  TestImage colors(kSize.width, kSize.height, BGR8);
  colors.Randomize(1);
  // Pairs of equal pixels, so that it does not matter which one's chrominance is taken.
  for (std::size_t y = 0; y < kSize.height; ++y)
    for (std::size_t x = 0; x < kSize.width; x += 2)
      std::copy_n(colors.Line(y) + 3 * x, 3, colors.Line(y) + 3 * x + 3);
  for (const auto& f : kFormats) {
    SCOPED_TRACE(NameOf(f.format));
    const std::string coding = std::string("_color_matrix=") + f.matrix;
    const Conversion coded(colors, {.destination = f.format, .alignment = 1});
    ExpectJustBelow(coded.All(), ByFFmpeg(AllBytes(&colors), kSize, "bgr24", f.name,
                                          "out" + coding + ":out_range=" + f.range));
    const Conversion back(coded.Image(), {.destination = BGR8, .alignment = 1});
    ExpectJustBelow(back.All(), ByFFmpeg(coded.All(), kSize, f.name, "bgr24",
                                         "in" + coding + ":in_range=" + f.range));
  }
}

}  // namespace
}  // namespace QvApi
