// SPDX-License-Identifier: MIT
// Conversions of polarizer sensors against the rules, pixel by pixel, and against physics.
#include <cmath>

#include "QvApi_IP/Conversions.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

constexpr const char* kSensors[]{"Pol1Mono", "Pol1BayerRG"};
constexpr const char* kArrangements[]{"", "X", "Y", "XY", "C", "XC", "YC", "XYC"};

// --- The rules, pixel by pixel
// ----------------------------------------------------------------------

/// Angle indices by pattern, 45 degrees apart.
constexpr int kAngleRows[8][4] = {{2, 1, 3, 0}, {1, 2, 0, 3}, {3, 0, 2, 1}, {0, 3, 1, 2},
                                  {3, 2, 0, 1}, {0, 1, 3, 2}, {2, 3, 1, 0}, {1, 0, 2, 3}};

/// A mosaic of polarizers, and what to make of it.
struct Scene {
  bool hasColors;
  unsigned pattern, depth;

  int Maximum() const { return (1 << depth) - 1; }
  PixelFormat Format() const {
    return FormatOf(std::string(kSensors[hasColors]) + kArrangements[pattern] +
                    std::to_string(depth));
  }
};

using Angles = std::array<int, 4>;

/// The four samples of the tile whose upper left pixel is (x, y). The order of angles is that of
/// row y; sides of 1 serve for both.
Angles TileAt(const Raster& p, unsigned pattern, std::size_t x, std::size_t y) {
  const unsigned exchanged = pattern ^ (pattern < 4 ? 2u : 1u);
  const int* angles = kAngleRows[y % 2 == 0 ? pattern : exchanged];
  Angles tile{};
  for (std::size_t dy = 0; dy < 2; ++dy)
    for (std::size_t dx = 0; dx < 2; ++dx)
      tile[static_cast<std::size_t>(angles[2 * dy + (x + dx) % 2])] =
          p.At(std::min(x + dx, p.width - 1), std::min(y + dy, p.height - 1));
  return tile;
}

int Degree(const Angles& i, int m) {
  const int n = i[0] + i[1] + i[2] + i[3];
  const double s1 = i[0] - i[2], s2 = i[1] - i[3];
  return n == 0 ? 0
                : std::min(
                      m, static_cast<int>(std::fma(2 * m, std::sqrt(s1 * s1 + s2 * s2), 0.5)) / n);
}

int Angle(const Angles& i, int m) {
  const double s1 = i[0] - i[2], s2 = i[1] - i[3], turn = std::atan2(s2, s1);
  return static_cast<int>(m / 6.283185307179586 * (turn < 0 ? turn + 6.283185307179586 : turn) +
                          0.5);
}

int Seen(const Angles& i, const Scene& scene, const Settings& s) {
  const int m = scene.Maximum();
  if (s.isCosine) {
    const double turn = 2 * (s.angle * 3.141592653589793 / 180);
    const double value =
        std::fma(std::sin(turn), (i[1] - i[3]) * 0.5,
                 std::fma(std::cos(turn), (i[0] - i[2]) * 0.5, 0.25 * (i[0] + i[1] + i[2] + i[3])));
    return static_cast<int>(std::clamp<double>(value, 0, m));
  }
  static CQvLookUpTableForVirtualPolarizerManager tables;
  const auto table = tables.LockTable(scene.depth, s.angle);
  int sum = 0;
  for (int a = 0; a < 4; ++a)
    sum += table->Entries()[static_cast<std::size_t>((a << scene.depth) +
                                                     i[static_cast<std::size_t>(a)])];
  return std::clamp(sum, 0, m << 14) >> 14;
}

/// Red, green, blue.
std::array<int, 3> HueOf(const Angles& i, int m, const Settings& s) {
  const int angle = Angle(i, m), degree = Degree(i, m);
  int h = (s.isInverted ? m - angle : angle) + m * s.phase / 255;
  if (h > m) h -= m;
  const int s1 = m / 6, s2 = m / 3, s3 = m >> 1, s4 = m * 4 / 6, s5 = m * 5 / 6;
  const int high = s.isDark ? degree : m, low = s.isDark ? 0 : m - degree, e = high - low;
  if (h < s1) return {low, low + h * e / s1, high};
  if (h < s2) return {low, high, low + (s2 - h) * e / (s2 - s1)};
  if (h < s3) return {low + (h - s2) * e / (s3 - s2), high, low};
  if (h < s4) return {high, low + (s4 - h) * e / (s4 - s3), low};
  if (h < s5) return {high, low, low + (h - s4) * e / (s5 - s4)};
  return {low + (m - h) * e / (m - s5), low, high};
}

/// What a method makes of a tile: a level or a colour.
std::vector<int> Made(const Angles& i, const Scene& scene, const Settings& s) {
  const auto [least, most] = std::ranges::minmax(i);
  switch (s.method) {
    case 2:
      return {Seen(i, scene, s)};
    case 3:
      return {(i[0] + i[1] + i[2] + i[3] + 2) >> 2};
    case 4:
      return {Degree(i, scene.Maximum())};
    case 5:
      return {Angle(i, scene.Maximum())};
    case 6: {
      const auto hue = HueOf(i, scene.Maximum(), s);
      return {hue.begin(), hue.end()};
    }
    case 7:
      return {most};
    case 8:
      return {least};
    default:
      return {most - least};
  }
}

/// A pixel of the result for each one, from the window around it.
Raster Windows(const Raster& p, const Scene& scene, const Settings& s) {
  Raster result(p.width, p.height, s.method == 6 ? 3 : 1);
  for (std::size_t y = 0; y < p.height; ++y)
    for (std::size_t x = 0; x < p.width; ++x) {
      const std::size_t row = p.height < 2 ? 0 : std::min(y, p.height - 2);
      std::size_t column = p.width < 2 ? 0 : std::min(x, p.width - 2);  // the last repeats
      if (column > 0) --column;
      std::ranges::copy(Made(TileAt(p, scene.pattern, column, row), scene, s), result.Pixel(x, y));
    }
  return result;
}

/// A pixel of the result for each tile.
Raster Cells(const Raster& p, const Scene& scene, const Settings& s) {
  Raster result(p.width / 2, p.height / 2);
  for (std::size_t y = 0; y < result.height; ++y)
    for (std::size_t x = 0; x < result.width; ++x)
      result.At(x, y) = Made(TileAt(p, scene.pattern, 2 * x, 2 * y), scene, s)[0];
  return result;
}

/// Odd sides keep their last column and line.
Raster AngleSplit(const Raster& p) {
  Raster result(p.width, p.height);
  const auto place = [](std::size_t i, std::size_t size) {
    return i / 2 * 2 + 1 < size || i % 2 == 1 ? (i >> 1) + (i & 1) * (size >> 1) : i;
  };
  for (std::size_t y = 0; y < p.height; ++y)
    for (std::size_t x = 0; x < p.width; ++x)
      result.At(place(x, p.width), place(y, p.height)) = p.At(x, y);
  return result;
}

/// What is left over beside tiles of 4 x 4 is 0.
Raster ColorSplit(const Raster& p) {
  Raster result(p.width, p.height);
  for (std::size_t y = 0; y < p.height / 4 * 4; ++y)
    for (std::size_t x = 0; x < p.width / 4 * 4; ++x)
      result.At(x / 4 * 2 + x % 2 + (x % 4 / 2) * (p.width / 2),
                y / 4 * 2 + y % 2 + (y % 4 / 2) * (p.height / 2)) = p.At(x, y);
  return result;
}

/// Each quarter that is not empty as `make` has it.
template <class Make>
Raster ByQuarters(const Raster& p, std::size_t channels, Make make) {
  Raster result(p.width, p.height, channels);
  for (int i = 0; i < 4; ++i) {
    const std::size_t x = i % 2 ? p.width / 2 : 0, y = i / 2 ? p.height / 2 : 0;
    const Size size{i % 2 ? p.width - x : p.width / 2, i / 2 ? p.height - y : p.height / 2};
    if (size.width != 0 && size.height != 0) result.Put(make(p.Part(x, y, size)), x, y);
  }
  return result;
}

/// A Bayer mosaic demosaiced by the converter, which other tests hold against the rules.
Raster Demosaiced(const Raster& mosaic, const Scene& scene, const Settings& s) {
  constexpr const char* kPhases[2][8]{{"RG", "GR", "GB", "BG", "GR", "RG", "BG", "GB"},
                                      {"GB", "BG", "RG", "GR", "BG", "GB", "GR", "RG"}};
  const std::string depth = std::to_string(scene.depth);
  TestImage image(mosaic.width, mosaic.height,
                  FormatOf("Bayer" + std::string(kPhases[s.reverse][scene.pattern]) + depth));
  Draw(image, mosaic);
  return RasterOf(
      Conversion(image, {.destination = FormatOf("BGR" + depth), .bayerMethod = s.bayerMethod})
          .Image());
}

/// What the method makes of the mosaic, in its own depth.
Raster Made(const Raster& raw, const Scene& scene, const Settings& s) {
  const auto flipped = [&](const Raster& p) { return s.reverse ? p.Flipped() : p; };
  if (s.method == 0) return flipped(raw);
  Raster p = raw;
  for (int& value : p.values) value &= scene.Maximum();
  if (!scene.hasColors) return flipped(s.method == 1 ? AngleSplit(raw) : Windows(p, scene, s));
  if (s.method >= 4 && s.method <= 6)
    return ByQuarters(ColorSplit(p), s.method == 6 ? 3 : 1,
                      [&](const Raster& part) { return flipped(Windows(part, scene, s)); });
  if (s.method == 1)
    return ByQuarters(flipped(AngleSplit(raw)), 3,
                      [&](const Raster& part) { return Demosaiced(part, scene, s); });
  return Demosaiced(flipped(Cells(p, scene, s)), scene, s);
}

bool IsWide(PixelFormat format) { return Info(format).GetEachComponentTotalBitCount() > 8; }

/// The result as the destination has it.
Raster Expected(const Raster& raw, const Scene& scene, const Settings& s) {
  Raster made = Made(raw, scene, s);
  const IQvPixelFormatInfoInside& info = Info(s.destination);
  if (info.GetComponentCount() > 1) return made;
  const std::size_t depth = info.GetEachComponentEffectiveBitCount();
  // Raw samples are copied where their words are of equal size.
  if (depth == scene.depth || (s.method == 0 && IsWide(scene.Format()) == IsWide(s.destination)))
    if (made.channels == 1) return made;
  Raster grey(made.width, made.height);
  const auto table = CQvLookUpTableManager().LockTable(scene.depth, depth, s.gamma,
                                                       static_cast<_EQvBitExpansionMode_t>(s.mode));
  const int m = scene.Maximum();
  for (std::size_t i = 0; i < grey.values.size(); ++i) {
    const int* v = &made.values[i * made.channels];
    const int level =
        made.channels == 1 ? v[0] : (2 * (v[0] & m) + 5 * (v[1] & m) + (v[2] & m)) / 8;
    grey.values[i] = depth == scene.depth ? level : (*table)[static_cast<std::size_t>(level & m)];
  }
  return grey;
}

std::vector<PixelFormat> Destinations(unsigned depth) {
  if (depth == 8) return {Mono8, Mono16, BGR8, BGRa8, RGB8, RGBa8};
  const std::string name = std::to_string(depth);
  return {FormatOf("Mono" + name), Mono16, Mono8, FormatOf("BGR" + name), FormatOf("BGRa" + name)};
}

/// Settings of every kind, spread over the cases.
Settings SettingsOf(PixelFormat destination, unsigned method, std::size_t i) {
  constexpr double kAngles[]{0, 22.5, 37.3, 45, 60, 90, 101.01, 135, 170, 180};
  return {.destination = destination,
          .reverse = i % 2 != 0,
          .bayerMethod = static_cast<unsigned>(i % 3),
          .alignment = i % 3 == 1   ? std::size_t{8}
                       : i % 7 == 5 ? std::size_t{7}
                                    : 0,
          .gamma = i % 4 == 3 ? 0.45 : 1.0,
          .mode = static_cast<unsigned>(i / 3 % 4),
          .method = method,
          .angle = kAngles[i % std::size(kAngles)],
          .isCosine = i / 2 % 2 != 0,
          .isDark = i % 3 == 0,
          .isInverted = i % 5 < 2,
          .phase = static_cast<int>(i * 37 % 256)};
}

/// On samples at random, some of them above their depth and some nearly alike.
void CheckScene(const Scene& scene, const Size& size, std::size_t turn) {
  TestImage image(size.width, size.height, scene.Format(), std::array{0, 6, 5}[turn % 3]);
  image.Randomize(static_cast<unsigned>(turn), turn % 4 != 2);
  Raster raw = RasterOf(image);
  if (turn % 4 == 1)
    for (int& value : raw.values) value = (1 << (scene.depth - 1)) + value % 5;
  Draw(image, raw);
  const auto before = image.All();
  std::size_t i = turn;
  for (PixelFormat destination : Destinations(scene.depth))
    for (unsigned method = 0; method < 10; ++method) {
      const Settings s = SettingsOf(destination, method, i++);
      SCOPED_TRACE(Describe(image, s));
      const bool isResolved = scene.hasColors && method != 0 && (method < 4 || method > 6);
      if (isResolved && (size.width < 4 || size.height < 4)) continue;
      static CQvPixelFormatConverter converter;  // with old bytes in its temporary buffers
      Set(converter, s);
      const Conversion result(converter, image);
      const bool isPaddingOld = method != 0 && result.Image().GetImageLinePitch() % 2 == 0;
      ExpectImage(result.Image(), Expected(raw, scene, s), isPaddingOld);
      ASSERT_EQ(result.Format(), destination);
      if (testing::Test::HasFatalFailure()) return;
    }
  ASSERT_EQ(image.All(), before) << "the source was written";
}

TEST(Polarization, FollowsTheRules) {
  constexpr Size kSizes[]{{1, 1}, {2, 2}, {1, 4},  {5, 1},  {3, 3},  {4, 4},   {2, 7},  {7, 2},
                          {6, 6}, {8, 4}, {13, 9}, {40, 6}, {75, 5}, {12, 11}, {143, 4}};
  std::size_t turn = 0;
  for (bool hasColors : {false, true})
    for (unsigned depth : {8u, 10u, 12u})
      for (unsigned pattern = 0; pattern < 8; ++pattern)
        for (const Size& size : kSizes) {
          CheckScene({hasColors, pattern, depth}, size, turn++);
          if (HasFatalFailure()) return;
        }
}

TEST(Polarization, RefusesWhatIsTooSmallToResolve) {
  const auto message = [](std::size_t width, std::size_t height, unsigned method) {
    TestImage small(width, height, Pol1BayerRG8);
    return MessageOf<GenICam::RuntimeException>([&] { Conversion(small, {.method = method}); });
  };
  EXPECT_EQ(message(2, 8, 3), "Not supported image size 1 x 4");
  EXPECT_EQ(message(8, 3, 7), "Not supported image size 4 x 1");
  EXPECT_EQ(message(2, 8, 1), "Not supported image size 1 x 4");
  TestImage pixel(1, 1, Pol1BayerRG8);
  for (unsigned method : {1u, 2u, 3u, 7u, 8u, 9u})
    EXPECT_THROW(Conversion(pixel, {.method = method}), GenICam::GenericException) << method;
}

TEST(Polarization, RefusesMethodsThatARegisterMayHold) {
  for (PixelFormat format : {Pol1Mono8, Pol1BayerRGX8})
    for (PixelFormat destination : {Mono8, Mono16, BGR8}) {
      TestImage image(8, 8, format);
      CQvPixelFormatConverter converter;
      converter.SetDestinationPixelFormat(destination);
      const std::int32_t method = 10;
      converter.Write(&method, 0x50, 4);
      EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { Conversion(converter, image); }),
                "Converting a pixelformat from  " + NameOf(format) + " to " + NameOf(destination) +
                    " is not supported.");
    }
}

TEST(Polarization, TakesAnyAngleThatARegisterMayHold) {
  TestImage image(8, 8, Pol1Mono8);
  image.Randomize(1);
  const auto convert = [&](double angle, bool isCosine) {
    CQvPixelFormatConverter converter;
    Set(converter, {.destination = Mono8, .method = 2, .isCosine = isCosine});
    converter.Write(&angle, 0x58, 8);
    return Conversion(converter, image).All();
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
TestImage MakeScene(const Scene& scene, double level, double degree, double angle) {
  TestImage image(16, 12, scene.Format());
  for (std::size_t y = 0; y < 12; ++y)
    for (std::size_t x = 0; x < 16; ++x) {
      const auto component = image.GetIQvPixelComponentValue(x, y).GetPixelComponent(0);
      const unsigned place = static_cast<unsigned>(component) & 0xFF;
      EXPECT_TRUE(place >= 1 && place <= 4);
      const double difference = (45.0 * (place - 1) - angle) * 3.141592653589793 / 180;
      const double light = level * (1 + degree * std::cos(2 * difference)) / 2;
      SetSample(image, x, y, static_cast<unsigned>(light * scene.Maximum() + 0.5));
    }
  return image;
}

/// All components of all pixels that the settings make of such light are near to `expected`.
void ExpectNear(const Scene& scene, TestImage image, const Settings& s,
                const std::vector<double>& expected, double error) {
  const Raster made = RasterOf(Conversion(image, s).Image());
  for (std::size_t i = 0; i < made.values.size(); ++i)
    ASSERT_NEAR(made.values[i], expected[i % expected.size()] * scene.Maximum(), error)
        << Describe(image, s) << " angle " << s.angle;
}

/// Calls `check(scene)` for all mosaics.
template <class Check>
void ForEachScene(Check check) {
  for (bool hasColors : {false, true})
    for (unsigned pattern = 0; pattern < 8; ++pattern)
      for (unsigned depth : {8u, 10u, 12u}) check(Scene{hasColors, pattern, depth});
}

TEST(PolarizationPhysics, DegreeAndAngleComeBack) {
  ForEachScene([](const Scene& scene) {
    const PixelFormat mono = Destinations(scene.depth)[0];
    for (double angle = 5; angle < 180; angle += 17.5)
      for (double degree : {0.3, 0.6, 1.0}) {
        // Half a unit of each of four samples: at most sqrt(2) / 2 across a vector of
        // 0.95 * degree * maximum, and as much along it.
        ExpectNear(scene, MakeScene(scene, 0.95, degree, angle), {.destination = mono, .method = 4},
                   {degree}, 2 / 0.95 + 1.01);
        ExpectNear(scene, MakeScene(scene, 0.95, degree, angle), {.destination = mono, .method = 5},
                   {angle / 180}, 0.71 / (0.95 * degree) / 6.283 * 1.1 + 0.51);
      }
  });
}

TEST(PolarizationPhysics, AVirtualPolarizerSeesWhatARealOneWould) {
  for (unsigned pattern = 0; pattern < 8; ++pattern)
    for (double polarizer = 0; polarizer <= 180; polarizer += 7.5)
      for (bool isCosine : {false, true}) {
        const Scene scene{false, pattern, 12};
        const double turn = 2 * (polarizer - 64) * 3.141592653589793 / 180;
        // The polynomial is no cosine; in the middle between its nodes it misses by a tenth.
        ExpectNear(scene, MakeScene(scene, 0.9, 0.7, 64),
                   {.destination = Mono12, .method = 2, .angle = polarizer, .isCosine = isCosine},
                   {0.45 * (1 + 0.7 * std::cos(turn))}, isCosine ? 2.5 : 0.12 * 0.45 * 0.7 * 4095);
      }
}

/// Angles from blue over green to red, as far from white or black as the light is polarized.
TEST(PolarizationPhysics, HuesFollowTheAngle) {
  const std::vector<double> kHues[]{{0, 0, 1}, {0, 1, 1}, {0, 1, 0},
                                    {1, 1, 0}, {1, 0, 0}, {1, 0, 1}};
  ForEachScene([&](const Scene& scene) {
    if (scene.depth != 8) return;
    for (std::size_t i = 0; i < 6; ++i)
      for (bool isDark : {false, true}) {
        const double angle = 30.0 * static_cast<double>(i);
        const Settings s{.destination = RGB8, .method = 6, .isDark = isDark};
        ExpectNear(scene, MakeScene(scene, 0.95, 1, angle), s, kHues[i], 8);
        ExpectNear(scene, MakeScene(scene, 0.95, 0, angle), s, {isDark ? 0.0 : 1.0}, 0);
      }
  });
}

}  // namespace
}  // namespace QvApi
