// SPDX-License-Identifier: MIT
// Conversions of polarizer sensors against the rules, pixel by pixel, and against physics.
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

constexpr std::uint8_t kOld = 0xA5;
constexpr const char* kArrangements[]{"", "X", "Y", "XY", "C", "XC", "YC", "XYC"};

/// Memory full of kOld.
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

/// Whole numbers in a rectangle, any number of them a pixel.
struct Plane {
  std::size_t width = 0, height = 0, channels = 1;
  std::vector<int> values;

  Plane(std::size_t w, std::size_t h, std::size_t c = 1)
      : width(w), height(h), channels(c), values(w * h * c) {}
  int& At(std::size_t x, std::size_t y, std::size_t c = 0) {
    return values[(y * width + x) * channels + c];
  }
  int At(std::size_t x, std::size_t y, std::size_t c = 0) const {
    return values[(y * width + x) * channels + c];
  }
  Plane Flipped() const {
    Plane flipped(width, height, channels);
    const std::size_t line = width * channels;
    for (std::size_t y = 0; y < height; ++y)
      std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(y * line), line,
                  flipped.values.begin() + static_cast<std::ptrdiff_t>((height - 1 - y) * line));
    return flipped;
  }
  Plane Part(std::size_t x0, std::size_t y0, std::size_t w, std::size_t h) const {
    Plane part(w, h, channels);
    for (std::size_t y = 0; y < h; ++y)
      for (std::size_t i = 0; i < w * channels; ++i)
        part.values[y * w * channels + i] = values[((y0 + y) * width + x0) * channels + i];
    return part;
  }
  void Put(const Plane& part, std::size_t x0, std::size_t y0) {
    for (std::size_t y = 0; y < part.height; ++y)
      for (std::size_t i = 0; i < part.width * channels; ++i)
        values[((y0 + y) * width + x0) * channels + i] = part.values[y * part.width * channels + i];
  }
};

std::size_t SamplesOfPixel(PixelFormat format) { return Info(format).GetComponentCount(); }

Plane PlaneOf(const IQvImage& image) {
  Plane plane(image.GetImageWidth(), image.GetImageHeight(),
              SamplesOfPixel(image.GetImagePixelFormat()));
  for (std::size_t y = 0; y < plane.height; ++y)
    for (std::size_t i = 0; i < plane.width * plane.channels; ++i)
      plane.values[y * plane.width * plane.channels + i] = static_cast<int>(SampleAt(image, i, y));
  return plane;
}

struct Settings {
  unsigned method = 1;
  bool reverse = false;
  double angle = 0;
  bool isCosine = false;
  bool isDark = false, isInverted = false;
  int phase = 0;
  double gamma = 1;
  unsigned mode = 0;
  unsigned bayerMethod = 2;
  std::size_t alignment = 0;
};

void Set(CQvPixelFormatConverter& converter, PixelFormat destination, const Settings& s) {
  converter.SetDestinationPixelFormat(destination);
  converter.SetPolarizationImageTransformationMethod(
      static_cast<EQvPolarizationImageTransformationMethod_t>(s.method));
  converter.SetReverseY(s.reverse);
  converter.SetPolarizationSpecifiedAngle(s.angle);
  converter.SetInterpolationMethodForSpecifiedAngle(
      static_cast<_EQvInterpolationMethodForSpecifiedAngle_t>(s.isCosine));
  converter.SetADOLPDarkMode(s.isDark);
  converter.SetADOLPColorInversion(s.isInverted);
  converter.SetADOLPColorPhase(s.phase);
  converter.SetGammaValue(s.gamma);
  converter.SetBitExpansionMode(static_cast<_EQvBitExpansionMode_t>(s.mode));
  converter.SetBayerInterpolationMethod(static_cast<EQvBayerInterpolationMethod_t>(s.bayerMethod));
  converter.SetLinePitchAlignment(s.alignment);
}

/// A conversion into memory full of kOld.
class Conversion {
 public:
  Conversion(IQvImage& source, PixelFormat destination, const Settings& settings) {
    Set(converter, destination, settings);
    converter.Convert(&source, buffer.Get());
  }
  const IQvImage& Image() const { return *buffer->GetIQvImage(); }
  Plane Result() const { return PlaneOf(Image()); }

  /// Bytes behind the significant ones of each line are those of before.
  bool IsPaddingOld() const {
    const IQvImage& image = Image();
    const std::size_t bytes = LineBytes(image.GetImagePixelFormat(), image.GetImageWidth());
    for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
      for (std::size_t i = bytes; i < image.GetImageLinePitch(); ++i)
        if (Bytes(&image)[y * image.GetImageLinePitch() + i] != kOld) return false;
    return true;
  }

  CQvPixelFormatConverter converter;
  OldMemory memory;
  const Buffer buffer = MakeBuffer(&memory);
};

// --- The rules, pixel by pixel
// ----------------------------------------------------------------------

/// Angle indices by pattern, 45 degrees apart.
constexpr int kAngleRows[8][4] = {{2, 1, 3, 0}, {1, 2, 0, 3}, {3, 0, 2, 1}, {0, 3, 1, 2},
                                  {3, 2, 0, 1}, {0, 1, 3, 2}, {2, 3, 1, 0}, {1, 0, 2, 3}};

using Angles = std::array<int, 4>;

/// The four samples of the tile whose upper left pixel is (x, y). The order of angles is that of
/// row y; sides of 1 serve for both.
Angles TileAt(const Plane& p, unsigned pattern, std::size_t x, std::size_t y) {
  const unsigned exchanged = pattern ^ (pattern < 4 ? 2u : 1u);
  const int* angles = kAngleRows[y % 2 == 0 ? pattern : exchanged];
  Angles tile{};
  for (std::size_t dy = 0; dy < 2; ++dy)
    for (std::size_t dx = 0; dx < 2; ++dx)
      tile[static_cast<std::size_t>(angles[2 * dy + (x + dx) % 2])] =
          p.At(std::min(x + dx, p.width - 1), std::min(y + dy, p.height - 1));
  return tile;
}

int Value(const Angles& i, unsigned depth, const Settings& s) {
  const int m = (1 << depth) - 1;
  const int n = i[0] + i[1] + i[2] + i[3];
  const double s1 = i[0] - i[2], s2 = i[1] - i[3];
  switch (s.method) {
    case 2: {
      if (s.isCosine) {
        const double t = 2 * (s.angle * 3.141592653589793 / 180);
        const double v = std::fma(std::sin(t), s2 * 0.5, std::fma(std::cos(t), s1 * 0.5, 0.25 * n));
        return v >= m ? m : v < 0 ? 0 : static_cast<int>(v);
      }
      static CQvLookUpTableForVirtualPolarizerManager tables;
      const auto table = tables.LockTable(depth, s.angle);
      int sum = 0;
      for (int a = 0; a < 4; ++a)
        sum += table->Entries()[static_cast<std::size_t>((a << depth) +
                                                         i[static_cast<std::size_t>(a)])];
      return sum < 0 ? 0 : sum > m << 14 ? m : sum >> 14;
    }
    case 3:
      return (n + 2) >> 2;
    case 4:
      return n == 0
                 ? 0
                 : std::min(
                       m, static_cast<int>(std::fma(2 * m, std::sqrt(s1 * s1 + s2 * s2), 0.5)) / n);
    case 5: {
      if (s1 == 0 && s2 == 0) return 0;
      double a = std::atan2(s2, s1);
      if (a < 0) a += 6.283185307179586;
      return static_cast<int>((m / 6.283185307179586) * a + 0.5);
    }
    case 7:
      return *std::max_element(i.begin(), i.end());
    case 8:
      return *std::min_element(i.begin(), i.end());
    default:
      return *std::max_element(i.begin(), i.end()) - *std::min_element(i.begin(), i.end());
  }
}

/// Red, green, blue.
std::array<int, 3> HueOf(const Angles& i, unsigned depth, const Settings& s) {
  const int m = (1 << depth) - 1;
  Settings other = s;
  other.method = 5;
  const int a = Value(i, depth, other);
  other.method = 4;
  const int p = Value(i, depth, other);
  int h = (s.isInverted ? m - a : a) + m * s.phase / 255;
  if (h > m) h -= m;
  const int s1 = m / 6, s2 = m / 3, s3 = m >> 1, s4 = m * 4 / 6, s5 = m * 5 / 6;
  const int high = s.isDark ? p : m, low = s.isDark ? 0 : m - p, e = high - low;
  if (h < s3 && h < s1) return {low, low + h * e / s1, high};
  if (h < s3 && h >= s2) return {low + (h - s2) * e / (s3 - s2), high, low};
  if (h < s3) return {low, high, low + (s2 - h) * e / (s2 - s1)};
  if (h < s4) return {high, low + (s4 - h) * e / (s4 - s3), low};
  if (h < s5) return {high, low, low + (h - s4) * e / (s5 - s4)};
  if (h >= m) return {low, low, high};
  return {low + (m - h) * e / (m - s5), low, high};
}

/// Calls `function(x, y, tile)` for each pixel of the result of windows.
template <class Function>
void ForEachWindow(const Plane& p, unsigned pattern, Function function) {
  for (std::size_t y = 0; y < p.height; ++y)
    for (std::size_t x = 0; x < p.width; ++x) {
      const std::size_t row = p.height < 2 ? 0 : std::min(y, p.height - 2);
      std::size_t column = p.width < 2 ? 0 : std::min(x, p.width - 2);  // the last repeats
      if (column > 0) --column;
      function(x, y, TileAt(p, pattern, column, row));
    }
}

Plane Windows(const Plane& p, unsigned pattern, unsigned depth, const Settings& s) {
  Plane result(p.width, p.height);
  ForEachWindow(p, pattern, [&](std::size_t x, std::size_t y, const Angles& tile) {
    result.At(x, y) = Value(tile, depth, s);
  });
  return result;
}

Plane HueWindows(const Plane& p, unsigned pattern, unsigned depth, const Settings& s) {
  Plane result(p.width, p.height, 3);
  ForEachWindow(p, pattern, [&](std::size_t x, std::size_t y, const Angles& tile) {
    const auto color = HueOf(tile, depth, s);
    for (std::size_t c = 0; c < 3; ++c) result.At(x, y, c) = color[c];
  });
  return result;
}

/// Odd sides keep their last column and line.
Plane AngleSplit(const Plane& p) {
  Plane result(p.width, p.height);
  const auto place = [](std::size_t i, std::size_t size) {
    return i / 2 * 2 + 1 < size || i % 2 == 1 ? (i >> 1) + (i & 1) * (size >> 1) : i;
  };
  for (std::size_t y = 0; y < p.height; ++y)
    for (std::size_t x = 0; x < p.width; ++x)
      result.At(place(x, p.width), place(y, p.height)) = p.At(x, y);
  return result;
}

/// What is left over beside tiles of 4 x 4 is 0.
Plane ColorSplit(const Plane& p) {
  Plane result(p.width, p.height);
  for (std::size_t y = 0; y < p.height / 4 * 4; ++y)
    for (std::size_t x = 0; x < p.width / 4 * 4; ++x)
      result.At(x / 4 * 2 + x % 2 + (x % 4 / 2) * (p.width / 2),
                y / 4 * 2 + y % 2 + (y % 4 / 2) * (p.height / 2)) = p.At(x, y);
  return result;
}

Plane Cells(const Plane& p, unsigned pattern, unsigned depth, const Settings& s) {
  Plane result(p.width / 2, p.height / 2);
  for (std::size_t y = 0; y < result.height; ++y)
    for (std::size_t x = 0; x < result.width; ++x)
      result.At(x, y) = Value(TileAt(p, pattern, 2 * x, 2 * y), depth, s);
  return result;
}

/// Calls `function(x, y, width, height)` for the four quarters that are not empty.
template <class Function>
void ForEachQuarter(std::size_t width, std::size_t height, Function function) {
  for (int i = 0; i < 4; ++i) {
    const std::size_t x = i % 2 ? width / 2 : 0, y = i / 2 ? height / 2 : 0;
    const std::size_t w = i % 2 ? width - x : width / 2, h = i / 2 ? height - y : height / 2;
    if (w != 0 && h != 0) function(x, y, w, h);
  }
}

Plane DepthChanged(Plane p, unsigned from, unsigned to, const Settings& s) {
  if (from == to) return p;
  const auto table = CQvLookUpTableManager().LockTable(from, to, s.gamma,
                                                       static_cast<_EQvBitExpansionMode_t>(s.mode));
  for (int& value : p.values) value = (*table)[static_cast<std::size_t>(value)];
  return p;
}

/// Gray or coloured pixels as the destination holds them.
Plane AsPixels(const Plane& p, PixelFormat format) {
  const IQvPixelFormatInfoInside& info = Info(format);
  Plane pixels(p.width, p.height, info.GetComponentCount());
  const int oldAlpha = info.GetEachComponentTotalBitCount() == 8 ? kOld : kOld * 257;
  for (std::size_t y = 0; y < p.height; ++y)
    for (std::size_t x = 0; x < p.width; ++x)
      for (std::size_t c = 0; c < pixels.channels; ++c) {
        const std::size_t from = p.channels == 1 ? 0 : info.IsBGR() ? 2 - c : c;
        pixels.At(x, y, c) = c == 3 ? oldAlpha : p.At(x, y, from);
      }
  return pixels;
}

void ExpectPlane(const Plane& result, const Plane& expected, const std::string& what) {
  ASSERT_EQ(result.width, expected.width) << what;
  ASSERT_EQ(result.height, expected.height) << what;
  ASSERT_EQ(result.channels, expected.channels) << what;
  for (std::size_t y = 0; y < expected.height; ++y)
    for (std::size_t x = 0; x < expected.width; ++x)
      for (std::size_t c = 0; c < expected.channels; ++c)
        ASSERT_EQ(result.At(x, y, c), expected.At(x, y, c))
            << what << ", x " << x << " y " << y << " c " << c;
}

std::string Describe(PixelFormat source, PixelFormat destination, std::size_t width,
                     std::size_t height, const Settings& s) {
  return NameOf(source) + " to " + NameOf(destination) + " " + std::to_string(width) + " x " +
         std::to_string(height) + " method " + std::to_string(s.method) +
         (s.reverse ? " reverse" : "") + (s.isCosine ? " cosine " : " angle ") +
         std::to_string(s.angle);
}

PixelFormat PolarizedFormat(const char* stem, unsigned pattern, unsigned depth) {
  return FormatOf(std::string(stem) + kArrangements[pattern] + std::to_string(depth));
}

struct Size {
  std::size_t width, height;
};

constexpr Size kSizes[]{{1, 1}, {2, 2}, {1, 4},  {5, 1},  {3, 3},  {4, 4},   {2, 7},  {7, 2},
                        {6, 6}, {8, 4}, {13, 9}, {40, 6}, {75, 5}, {12, 11}, {143, 4}};

/// Settings of every kind, spread over the cases.
Settings SettingsOf(unsigned method, std::size_t i) {
  constexpr double kAngles[]{0, 22.5, 37.3, 45, 60, 90, 101.01, 135, 170, 180};
  return {.method = method,
          .reverse = i % 2 != 0,
          .angle = kAngles[i % std::size(kAngles)],
          .isCosine = i / 2 % 2 != 0,
          .isDark = i % 3 == 0,
          .isInverted = i % 5 < 2,
          .phase = static_cast<int>(i * 37 % 256),
          .gamma = i % 4 == 3 ? 0.45 : 1.0,
          .mode = static_cast<unsigned>(i / 3 % 4),
          .bayerMethod = 2,
          .alignment = i % 3 == 1   ? std::size_t{8}
                       : i % 7 == 5 ? std::size_t{7}
                                    : 0};
}

std::vector<PixelFormat> MonoDestinations(unsigned depth) {
  if (depth == 8) return {Mono8, Mono16};
  return {FormatOf("Mono" + std::to_string(depth)), Mono16, Mono8};
}

std::vector<PixelFormat> ColorDestinations(unsigned depth) {
  if (depth == 8) return {BGR8, BGRa8, RGB8, RGBa8};
  return {FormatOf("BGR" + std::to_string(depth)), FormatOf("BGRa" + std::to_string(depth))};
}

bool IsWide(PixelFormat format) { return Info(format).GetEachComponentTotalBitCount() > 8; }

/// The raw samples, copied where their words are of equal size.
Plane Raw(const Plane& p, PixelFormat source, unsigned depth, PixelFormat destination,
          const Settings& s) {
  if (IsWide(source) == IsWide(destination)) return p;
  return DepthChanged(
      p, depth, static_cast<unsigned>(Info(destination).GetEachComponentEffectiveBitCount()), s);
}

/// Runs `check(pattern, depth, format, image, i)` over arrangements, depths and sizes, on samples
/// at random and on some below it that are nearly alike.
template <class Check>
void ForEachScene(const char* stem, Check check) {
  std::size_t i = 0;
  for (unsigned depth : {8u, 10u, 12u})
    for (unsigned pattern = 0; pattern < 8; ++pattern)
      for (const Size& size : kSizes) {
        const PixelFormat format = PolarizedFormat(stem, pattern, depth);
        const std::size_t padding = i % 3 == 0 ? 0 : i % 3 == 1 ? 6 : 5;
        TestImage image(size.width, size.height, format, padding);
        image.Randomize(static_cast<unsigned>(i));
        if (i % 4 == 1)
          for (std::size_t y = 0; y < size.height; ++y)
            for (std::size_t x = 0; x < size.width; ++x)
              SetSample(image, x, y, (1u << (depth - 1)) + SampleAt(image, x, y) % 5);
        const auto before = image.All();
        check(pattern, depth, format, image, i++);
        if (testing::Test::HasFatalFailure()) return;
        ASSERT_EQ(image.All(), before) << "the source was written";
      }
}

TEST(PolarizationMono, GivesMonoByTheRules) {
  ForEachScene("Pol1Mono", [](unsigned pattern, unsigned depth, PixelFormat format,
                              TestImage& image, std::size_t i) {
    const Plane source = PlaneOf(image);
    for (PixelFormat destination : MonoDestinations(depth))
      for (unsigned method : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u}) {
        const Settings s = SettingsOf(method, i++);
        const auto to =
            static_cast<unsigned>(Info(destination).GetEachComponentEffectiveBitCount());
        Plane expected = method == 0 ? Raw(source, format, depth, destination, s)
                         : method == 1
                             ? DepthChanged(AngleSplit(source), depth, to, s)
                             : DepthChanged(Windows(source, pattern, depth, s), depth, to, s);
        // The split is of the source, its lines flipped as a whole.
        if (s.reverse) expected = expected.Flipped();
        const Conversion result(image, destination, s);
        const auto what = Describe(format, destination, source.width, source.height, s);
        ExpectPlane(result.Result(), expected, what);
        if (testing::Test::HasFatalFailure()) return;
        if (method != 0 && result.Image().GetImageLinePitch() % 2 == 0) {
          ASSERT_TRUE(result.IsPaddingOld()) << what;
        }
      }
  });
}

TEST(PolarizationMono, GivesColorByTheRules) {
  ForEachScene("Pol1Mono", [](unsigned pattern, unsigned depth, PixelFormat format,
                              TestImage& image, std::size_t i) {
    const Plane source = PlaneOf(image);
    for (PixelFormat destination : ColorDestinations(depth))
      for (unsigned method = 0; method < 10; ++method) {
        const Settings s = SettingsOf(method, i++);
        Plane expected = method == 0   ? source
                         : method == 1 ? AngleSplit(source)
                         : method == 6 ? HueWindows(source, pattern, depth, s)
                                       : Windows(source, pattern, depth, s);
        if (s.reverse) expected = expected.Flipped();
        const Conversion result(image, destination, s);
        ExpectPlane(result.Result(), AsPixels(expected, destination),
                    Describe(format, destination, source.width, source.height, s));
        if (testing::Test::HasFatalFailure()) return;
      }
  });
}

/// Of colours, what is made of each colour by itself.
TEST(PolarizationColor, TreatsEachColorInItsQuarter) {
  ForEachScene("Pol1BayerRG", [](unsigned pattern, unsigned depth, PixelFormat format,
                                 TestImage& image, std::size_t i) {
    const Plane source = PlaneOf(image);
    const Plane colors = ColorSplit(source);
    const auto quarters = [&](const Settings& s, std::size_t channels, auto windows) {
      Plane whole(source.width, source.height, channels);
      ForEachQuarter(source.width, source.height, [&](auto x, auto y, auto w, auto h) {
        const Plane part = windows(colors.Part(x, y, w, h), pattern, depth, s);
        whole.Put(s.reverse ? part.Flipped() : part, x, y);
      });
      return whole;
    };
    for (PixelFormat destination : MonoDestinations(depth))
      for (unsigned method : {0u, 4u, 5u}) {
        const Settings s = SettingsOf(method, i++);
        const auto to =
            static_cast<unsigned>(Info(destination).GetEachComponentEffectiveBitCount());
        Plane expected = method != 0 ? DepthChanged(quarters(s, 1, Windows), depth, to, s)
                                     : Raw(source, format, depth, destination, s);
        if (method == 0 && s.reverse) expected = expected.Flipped();
        const Conversion result(image, destination, s);
        ExpectPlane(result.Result(), expected,
                    Describe(format, destination, source.width, source.height, s));
        if (testing::Test::HasFatalFailure()) return;
      }
    for (PixelFormat destination : ColorDestinations(depth))
      for (unsigned method : {0u, 4u, 5u, 6u}) {
        const Settings s = SettingsOf(method, i++);
        Plane expected = method == 0   ? (s.reverse ? source.Flipped() : source)
                         : method == 6 ? quarters(s, 3, HueWindows)
                                       : quarters(s, 1, Windows);
        const Conversion result(image, destination, s);
        ExpectPlane(result.Result(), AsPixels(expected, destination),
                    Describe(format, destination, source.width, source.height, s));
        if (testing::Test::HasFatalFailure()) return;
      }
  });
}

/// A Bayer mosaic demosaiced by the converter, which other tests hold against the rules.
Plane Demosaiced(const Plane& mosaic, const std::string& phase, unsigned depth,
                 PixelFormat destination, const Settings& s) {
  TestImage image(mosaic.width, mosaic.height, FormatOf("Bayer" + phase + std::to_string(depth)));
  for (std::size_t y = 0; y < mosaic.height; ++y)
    for (std::size_t x = 0; x < mosaic.width; ++x)
      SetSample(image, x, y, static_cast<unsigned>(mosaic.At(x, y)));
  Settings upright = s;
  upright.reverse = false;
  return Conversion(image, destination, upright).Result();
}

TEST(PolarizationColor, RestoresColorsOfResolvedMosaics) {
  constexpr const char* kUpright[]{"RG", "GR", "GB", "BG", "GR", "RG", "BG", "GB"};
  constexpr const char* kFlipped[]{"GB", "BG", "RG", "GR", "BG", "GB", "GR", "RG"};
  ForEachScene("Pol1BayerRG", [&](unsigned pattern, unsigned depth, PixelFormat format,
                                  TestImage& image, std::size_t i) {
    const Plane source = PlaneOf(image);
    if (source.width < 4 || source.height < 4) return;
    for (PixelFormat destination : ColorDestinations(depth))
      for (unsigned method : {1u, 2u, 3u, 7u, 8u, 9u}) {
        Settings s = SettingsOf(method, i++);
        s.bayerMethod = static_cast<unsigned>(i % 3);
        const std::string phase = (s.reverse ? kFlipped : kUpright)[pattern];
        const Conversion result(image, destination, s);
        const auto what = Describe(format, destination, source.width, source.height, s);
        Plane mosaic = method == 1 ? AngleSplit(source) : Cells(source, pattern, depth, s);
        if (s.reverse) mosaic = mosaic.Flipped();
        if (method != 1) {
          ExpectPlane(result.Result(), Demosaiced(mosaic, phase, depth, destination, s), what);
          EXPECT_EQ(result.Image().GetImagePixelFormat(), destination);
        } else {
          ForEachQuarter(source.width, source.height, [&](auto x, auto y, auto w, auto h) {
            ExpectPlane(result.Result().Part(x, y, w, h),
                        Demosaiced(mosaic.Part(x, y, w, h), phase, depth, destination, s), what);
          });
        }
        if (testing::Test::HasFatalFailure()) return;
      }
  });
}

/// Routes that lead on from the colour image of the source's depth.
TEST(Polarization, GoesOnFromTheColorImageOfItsDepth) {
  for (const char* stem : {"Pol1Mono", "Pol1BayerRG"})
    for (unsigned depth : {8u, 12u})
      for (unsigned method = 0; method < 10; ++method)
        for (PixelFormat destination : {BGR16, RGB8_Planar, Mono8, BGR8}) {
          const bool isDirect =
              (destination == Mono8 &&
               (method != 6 && (stem[4] == 'M' || method == 0 || method == 4 || method == 5))) ||
              (destination == BGR8 && depth == 8);
          if (isDirect) continue;
          TestImage image(16, 12, PolarizedFormat(stem, 3, depth), 5);
          image.Randomize(depth + method);
          for (bool reverse : {false, true})
            for (std::size_t alignment : {0, 7}) {
              Settings s = SettingsOf(method, 6);
              s.reverse = reverse;
              s.alignment = alignment;
              const Conversion result(image, destination, s);
              Conversion color(image, depth == 8 ? BGRa8 : BGRa12, s);
              Settings upright = s;
              upright.reverse = false;
              Conversion expected(*color.buffer->GetIQvImage(), destination, upright);
              ASSERT_EQ(result.Image().GetImageWidth(), expected.Image().GetImageWidth());
              ASSERT_EQ(AllBytes(&result.Image(), Info(destination).GetPlaneCount()),
                        AllBytes(&expected.Image(), Info(destination).GetPlaneCount()))
                  << Describe(image.GetImagePixelFormat(), destination, 16, 12, s);
            }
        }
}

TEST(Polarization, PackedSourcesAreUnpackedFirst) {
  for (const char* name : {"Pol1MonoXY12p", "Pol1BayerRGC10p"})
    for (unsigned method : {0u, 1u, 3u, 4u, 6u}) {
      const std::string unpackedName = std::string(name).substr(0, std::strlen(name) - 1);
      TestImage packed(16, 8, FormatOf(name));
      packed.Randomize(3);
      Conversion unpacked(packed, FormatOf(unpackedName), {});
      const Settings s = SettingsOf(method, 4);
      const Conversion result(packed, BGR8, s);
      const Conversion expected(*unpacked.buffer->GetIQvImage(), BGR8, s);
      EXPECT_EQ(AllBytes(&result.Image()), AllBytes(&expected.Image())) << name << method;
    }
}

TEST(Polarization, SamplesAboveTheirDepthAreMasked) {
  for (const char* stem : {"Pol1Mono", "Pol1BayerRG"})
    for (unsigned depth : {10u, 12u})
      for (unsigned method = 2; method < 10; ++method) {
        const PixelFormat format = PolarizedFormat(stem, method % 8, depth);
        TestImage wild(75, 12, format), tame(75, 12, format);
        wild.Randomize(method, false);
        for (std::size_t y = 0; y < 12; ++y)
          for (std::size_t x = 0; x < 75; ++x)
            SetSample(tame, x, y, SampleAt(wild, x, y) & ((1u << depth) - 1));
        const Settings s = SettingsOf(method, method);
        for (PixelFormat destination : {ColorDestinations(depth)[0], MonoDestinations(depth)[0]})
          EXPECT_EQ(AllBytes(&Conversion(wild, destination, s).Image()),
                    AllBytes(&Conversion(tame, destination, s).Image()))
              << Describe(format, destination, 75, 12, s);
      }
}

TEST(Polarization, HalfSizesAreMadeAnewAndTooSmallOnesRefused) {
  TestImage image(640, 480, Pol1BayerRG8);
  for (std::size_t y = 0; y < 480; ++y) std::memset(image.Line(y), 77, 640);
  const Conversion half(image, BGR8, {.method = 3});
  EXPECT_EQ(half.Image().GetImageWidth(), 320u);
  EXPECT_EQ(half.Image().GetImageHeight(), 240u);
  EXPECT_TRUE(std::ranges::all_of(half.Result().values, [](int v) { return v == 77; }));
  const Conversion quarters(image, BGR8, {.method = 1});
  EXPECT_EQ(quarters.Image().GetImageWidth(), 640u);
  EXPECT_TRUE(std::ranges::all_of(quarters.Result().values, [](int v) { return v == 77; }));

  const auto message = [](std::size_t width, std::size_t height, unsigned method) {
    TestImage small(width, height, Pol1BayerRG8);
    return MessageOf<GenICam::RuntimeException>(
        [&] { Conversion(small, BGR8, {.method = method}); });
  };
  EXPECT_EQ(message(2, 8, 3), "Not supported image size 1 x 4");
  EXPECT_EQ(message(8, 3, 7), "Not supported image size 4 x 1");
  EXPECT_EQ(message(2, 8, 1), "Not supported image size 1 x 4");
  TestImage pixel(1, 1, Pol1BayerRG8);
  for (unsigned method = 0; method < 10; ++method)
    if (method == 0 || (method >= 4 && method <= 6))
      EXPECT_NO_THROW(Conversion(pixel, BGR8, {.method = method}));
    else
      EXPECT_THROW(Conversion(pixel, BGR8, {.method = method}), GenICam::GenericException);
}

TEST(Polarization, RefusesMethodsThatARegisterMayHold) {
  for (PixelFormat format : {Pol1Mono8, Pol1BayerRGX8})
    for (PixelFormat destination : {Mono8, Mono16, BGR8}) {
      TestImage image(8, 8, format);
      CQvPixelFormatConverter converter;
      converter.SetDestinationPixelFormat(destination);
      const std::int32_t method = 10;
      converter.Write(&method, 0x50, 4);
      const Buffer buffer = MakeBuffer();
      EXPECT_EQ(
          MessageOf<GenICam::RuntimeException>([&] { converter.Convert(&image, buffer.Get()); }),
          "Converting a pixelformat from  " + NameOf(format) + " to " + NameOf(destination) +
              " is not supported.");
    }
}

TEST(Polarization, TakesAnyAngleThatARegisterMayHold) {
  TestImage image(8, 8, Pol1Mono8);
  image.Randomize(1);
  const auto convert = [&](double angle, bool isCosine) {
    CQvPixelFormatConverter converter;
    Set(converter, Mono8, {.method = 2, .isCosine = isCosine});
    converter.Write(&angle, 0x58, 8);
    const Buffer buffer = MakeBuffer();
    converter.Convert(&image, buffer.Get());
    return AllBytes(buffer->GetIQvImage());
  };
  for (bool isCosine : {false, true}) {
    for (double angle : {std::nan(""), HUGE_VAL, -HUGE_VAL})
      EXPECT_EQ(convert(angle, isCosine), convert(0, isCosine)) << angle;
    EXPECT_NO_THROW(convert(1.7e308, isCosine));
    EXPECT_NO_THROW(convert(-1e300, isCosine));
  }
  EXPECT_EQ(convert(-30, false), convert(150, false));
}

// --- Physics
// ----------------------------------------------------------------------------------------

/// Light of a degree and an angle of polarization, by the law of Malus, behind the polarizers that
/// the format names at each pixel.
void FillScene(TestImage& image, unsigned depth, double level, double degree, double angle) {
  const double maximum = (1 << depth) - 1;
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    for (std::size_t x = 0; x < image.GetImageWidth(); ++x) {
      const auto component = image.GetIQvPixelComponentValue(x, y).GetPixelComponent(0);
      const unsigned place = static_cast<unsigned>(component) & 0xFF;
      ASSERT_TRUE(place >= 1 && place <= 4);
      const double difference = (45.0 * (place - 1) - angle) * 3.141592653589793 / 180;
      const double light = level * (1 + degree * std::cos(2 * difference)) / 2;
      SetSample(image, x, y, static_cast<unsigned>(light * maximum + 0.5));
    }
}

TEST(PolarizationPhysics, DegreeAndAngleOfASceneComeBack) {
  for (const char* stem : {"Pol1Mono", "Pol1BayerRG"})
    for (unsigned pattern = 0; pattern < 8; ++pattern)
      for (unsigned depth : {8u, 10u, 12u})
        for (double angle = 5; angle < 180; angle += 17.5)
          for (double degree : {0.3, 0.6, 1.0}) {
            const PixelFormat format = PolarizedFormat(stem, pattern, depth);
            TestImage image(16, 12, format);
            FillScene(image, depth, 0.95, degree, angle);
            const double maximum = (1 << depth) - 1;
            const PixelFormat mono = MonoDestinations(depth)[0];
            // Half a unit of each of four samples: at most sqrt(2) / 2 across a vector of
            // 0.95 * degree * maximum, and as much along it.
            const double degreeError = 2 / 0.95 + 1.01;
            const double angleError = 0.71 / (0.95 * degree) / 6.283 * 1.1 + 0.51;
            for (int value : Conversion(image, mono, {.method = 4}).Result().values)
              ASSERT_NEAR(value, degree * maximum, degreeError) << NameOf(format) << " " << angle;
            for (int value : Conversion(image, mono, {.method = 5}).Result().values)
              ASSERT_NEAR(value, angle / 180 * maximum, angleError)
                  << NameOf(format) << " " << angle;
          }
}

TEST(PolarizationPhysics, AVirtualPolarizerSeesWhatARealOneWould) {
  for (unsigned pattern = 0; pattern < 8; ++pattern)
    for (double polarizer = 0; polarizer <= 180; polarizer += 7.5)
      for (bool isCosine : {false, true}) {
        TestImage image(12, 8, PolarizedFormat("Pol1Mono", pattern, 12));
        const double degree = 0.7, angle = 64;
        FillScene(image, 12, 0.9, degree, angle);
        const double seen =
            0.45 * 4095 *
            (1 + degree * std::cos(2 * (polarizer - angle) * 3.141592653589793 / 180));
        // The polynomial is no cosine; in the middle between its nodes it misses by a tenth.
        const double error = isCosine ? 2.5 : 0.12 * 0.45 * degree * 4095;
        for (int value :
             Conversion(image, Mono12, {.method = 2, .angle = polarizer, .isCosine = isCosine})
                 .Result()
                 .values)
          ASSERT_NEAR(value, seen, error) << pattern << " " << polarizer << isCosine;
      }
}

/// Angles from blue over green to red, as far from white or black as the light is polarized.
TEST(PolarizationPhysics, HuesFollowTheAngle) {
  const struct {
    double angle;
    bool r, g, b;
  } kHues[] = {{0, false, false, true}, {30, false, true, true},   {60, false, true, false},
               {90, true, true, false}, {120, true, false, false}, {150, true, false, true}};
  for (unsigned pattern = 0; pattern < 8; ++pattern)
    for (const auto& hue : kHues)
      for (bool isDark : {false, true})
        for (const char* stem : {"Pol1Mono", "Pol1BayerRG"}) {
          TestImage image(16, 8, PolarizedFormat(stem, pattern, 8));
          FillScene(image, 8, 0.95, 1.0, hue.angle);
          const Plane colors = Conversion(image, RGB8, {.method = 6, .isDark = isDark}).Result();
          for (std::size_t x = 0; x < 16; ++x) {
            EXPECT_NEAR(colors.At(x, 3, 0), hue.r * 255, 8) << hue.angle;
            EXPECT_NEAR(colors.At(x, 3, 1), hue.g * 255, 8) << hue.angle;
            EXPECT_NEAR(colors.At(x, 3, 2), hue.b * 255, 8) << hue.angle;
          }
          FillScene(image, 8, 0.95, 0.0, hue.angle);
          const Plane grey = Conversion(image, RGB8, {.method = 6, .isDark = isDark}).Result();
          EXPECT_TRUE(
              std::ranges::all_of(grey.values, [&](int v) { return v == (isDark ? 0 : 255); }));
        }
}

}  // namespace
}  // namespace QvApi
