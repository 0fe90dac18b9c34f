// SPDX-License-Identifier: MIT
#include "PolarizedScene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "Print.h"

namespace Demo {

using namespace QvApi;

namespace {

constexpr double kPi = std::numbers::pi;

struct Color {
  double red, green, blue;
};

// A position inside an element, in pixels from its top left, and the element's size.
struct Point {
  double x, y, width, height;
};

double Radians(double degrees) { return degrees * kPi / 180; }

Light Polarized(double mean, double degree, double angle) {
  return {static_cast<float>(mean),
          static_cast<float>(mean * degree * std::cos(2 * Radians(angle))),
          static_cast<float>(mean * degree * std::sin(2 * Radians(angle)))};
}

LightOfColors Polarized(Color color, double degree, double angle) {
  return {Polarized(color.red, degree, angle), Polarized(color.green, degree, angle),
          Polarized(color.blue, degree, angle)};
}

LightOfColors operator+(const LightOfColors& a, const LightOfColors& b) {
  LightOfColors sum;
  for (std::size_t i = 0; i < sum.size(); ++i)
    sum[i] = {a[i].mean + b[i].mean, a[i].cosine + b[i].cosine, a[i].sine + b[i].sine};
  return sum;
}

// As the eye weighs the colours.
Light Grey(const LightOfColors& light) {
  const auto weigh = [&](float Light::*part) {
    return 0.299f * light[0].*part + 0.587f * light[1].*part + 0.114f * light[2].*part;
  };
  return {weigh(&Light::mean), weigh(&Light::cosine), weigh(&Light::sine)};
}

LightOfColors Table(Point) { return Polarized(Color{0.12, 0.12, 0.12}, 0, 0); }

// The angle runs to the right, from 0 to 180 degrees, the degree downward, from none to all.
LightOfColors Ramp(Point p) {
  return Polarized(Color{0.49, 0.49, 0.49}, p.y / p.height, 180 * p.x / p.width);
}

// A wheel whose polarization points outward.
LightOfColors Wheel(Point p) {
  const double x = p.x - p.width / 2, y = p.height / 2 - p.y;
  const double radius = std::hypot(x, y) / (p.width / 2);
  if (radius > 1) return Table(p);
  return Polarized(Color{0.49, 0.49, 0.49}, radius, std::atan2(y, x) * 180 / kPi);
}

// A plastic disc under stress between circular polarizers: what leaves it depends on the stress
// and on the wavelength.
LightOfColors StressedDisc(Point p) {
  constexpr std::array<double, 3> kMicrometres = {0.62, 0.54, 0.46};
  const double x = p.x - p.width / 2, y = p.height / 2 - p.y;
  const double radius = std::hypot(x, y) / (p.width / 2);
  if (radius > 1) return Table(p);
  const double stress =
      1.6 * (1 - radius * radius) + 0.25 * std::cos(3 * std::atan2(y, x)) * radius;
  LightOfColors light;
  for (std::size_t i = 0; i < light.size(); ++i) {
    const double phase = kPi * stress / kMicrometres[i];
    const double turn = std::sin(phase) < 0 ? 90 : 0;
    light[i] = Polarized(0.49, std::abs(std::sin(phase)), std::atan2(y, x) * 180 / kPi + 45 + turn);
  }
  return light;
}

constexpr std::size_t kFoilCount = 8;
constexpr std::array<const char*, kFoilCount> kFoilNames = {"0",  "22",  "45",  "67",
                                                            "90", "112", "135", "157"};
constexpr double kPureFoil = 0.95, kWeakFoil = 0.3;

// Polarizing foils at eight angles before a lamp, pure above and weak below.
LightOfColors FoilRow(Point p) {
  const double column = p.width / kFoilCount;
  const std::size_t index = std::min(static_cast<std::size_t>(p.x / column), kFoilCount - 1);
  const double left = p.x - static_cast<double>(index) * column;
  if (left < 3 || left >= column - 3) return Table(p);
  if (IsInk(kFoilNames[index], (left - 12) / 2, (p.y - 4) / 2))
    return Polarized(Color{0.5, 0.5, 0.5}, 0, 0);
  if (p.y < 22) return Table(p);
  const double lamp = 0.42 + 0.08 * p.y / p.height;
  return Polarized(Color{lamp, lamp, lamp}, p.y < p.height / 2 ? kPureFoil : kWeakFoil,
                   22.5 * static_cast<double>(index));
}

constexpr double kHiddenScale = 11;

// Letters as bright as their ground, of another angle.
LightOfColors HiddenPrint(Point p) {
  const bool ink = IsInk("HIDDEN", (p.x - 35) / kHiddenScale, (p.y - 41) / kHiddenScale);
  return Polarized(Color{0.45, 0.45, 0.45}, 0.8, ink ? 110 : 20);
}

// A page under a window that reflects a lamp; what glass reflects is polarized along it.
LightOfColors PrintedPage(Point p) {
  struct Line {
    double top;
    int scale;
    Color ink;
    const char* text;
  };
  constexpr std::array<Line, 4> kLines = {
      {{14, 5, {0.02, 0.02, 0.03}, "SERIAL 0123456789"},
       {64, 3, {0.24, 0.03, 0.03}, "READ THROUGH THE REFLECTION"},
       {100, 3, {0.03, 0.05, 0.22}, "OF A LAMP IN THE COVER GLASS"},
       {136, 2, {0.03, 0.15, 0.05}, "MINIMUM OF THE FOUR ANGLES"}}};
  for (const Line& line : kLines)
    if (IsInk(line.text, (p.x - 24) / line.scale, (p.y - line.top) / line.scale))
      return Polarized(line.ink, 0, 0);
  return Polarized(Color{0.29, 0.28, 0.25}, 0, 0);
}

LightOfColors Reflection(Point p) {
  const double x = (p.x - p.width * 0.42) / (p.width * 0.3), y = (p.y - p.height / 2) / p.height;
  const double lamp = 0.3 * std::exp(-2 * (x * x + 3 * y * y));
  return Polarized(Color{lamp, lamp, lamp * 0.9}, 0.96, 0);
}

struct Element {
  std::size_t x, y, width, height;
  LightOfColors (*shine)(Point);
};

constexpr std::size_t kFoils = 3, kHidden = 4, kPage = 5;
constexpr std::array<Element, 6> kElements = {{{20, 20, 440, 220, Ramp},
                                               {480, 20, 220, 220, Wheel},
                                               {720, 20, 220, 220, StressedDisc},
                                               {20, 260, 440, 160, FoilRow},
                                               {480, 260, 460, 160, HiddenPrint},
                                               {20, 440, 920, 180, PrintedPage}}};

Point PointIn(const Element& element, std::size_t x, std::size_t y) {
  return {static_cast<double>(x - element.x) + 0.5, static_cast<double>(y - element.y) + 0.5,
          static_cast<double>(element.width), static_cast<double>(element.height)};
}

bool Covers(const Element& element, std::size_t x, std::size_t y) {
  return x >= element.x && x < element.x + element.width && y >= element.y &&
         y < element.y + element.height;
}

LightOfColors LightAt(std::size_t x, std::size_t y, bool reflecting) {
  for (const Element& element : kElements)
    if (Covers(element, x, y)) {
      const Point point = PointIn(element, x, y);
      const LightOfColors light = element.shine(point);
      return reflecting && &element == &kElements[kPage] ? light + Reflection(point) : light;
    }
  return Table({});
}

// Angles of the tile of polarizers, and colours of the mosaic: each covers one tile.
constexpr std::array<std::array<double, 2>, 2> kTile = {{{90, 45}, {135, 0}}};
constexpr std::array<std::array<std::size_t, 2>, 2> kMosaic = {{{0, 1}, {1, 2}}};

double Behind(const Light& light, double angle) {
  return light.mean + light.cosine * std::cos(2 * Radians(angle)) +
         light.sine * std::sin(2 * Radians(angle));
}

template <typename Sample>
void Store(IQvImage& image, std::size_t x, std::size_t y, double value) {
  auto* line = static_cast<std::uint8_t*>(image.GetImageBuffer()) + y * image.GetImageLinePitch();
  reinterpret_cast<Sample*>(line)[x] = static_cast<Sample>(value + 0.5);
}

}  // namespace

PolarizedScene::PolarizedScene() : m_lights(kWidth * kHeight) {
  for (std::size_t y = 0; y < kHeight; ++y)
    for (std::size_t x = 0; x < kWidth; ++x) m_lights[y * kWidth + x] = LightAt(x, y, true);
}

Buffer PolarizedScene::Sample(PixelFormat format) const {
  const IQvPixelFormatInfo& info = *GetIQvPixelFormatInfo(format);
  const std::size_t bits = info.GetEachComponentEffectiveBitCount();
  const double fullScale = static_cast<double>((1u << bits) - 1);
  Buffer frame = MakeBuffer();
  frame->SetSize(kWidth, kHeight, format, 0);
  IQvImage& image = *frame->GetIQvImage();
  for (std::size_t y = 0; y < kHeight; ++y)
    for (std::size_t x = 0; x < kWidth; ++x) {
      const Light light =
          info.IsColor() ? m_lights[y * kWidth + x][kMosaic[y / 2 % 2][x / 2 % 2]] : GreyAt(x, y);
      const double value = fullScale * std::clamp(Behind(light, kTile[y % 2][x % 2]), 0.0, 1.0);
      if (bits == 8)
        Store<std::uint8_t>(image, x, y, value);
      else
        Store<std::uint16_t>(image, x, y, value);
    }
  return frame;
}

Buffer PolarizedScene::WithoutReflection() const {
  Buffer frame = MakeBuffer();
  frame->SetSize(kWidth, kHeight, PixelFormat::Mono8, 0);
  for (std::size_t y = 0; y < kHeight; ++y)
    for (std::size_t x = 0; x < kWidth; ++x)
      Store<std::uint8_t>(*frame->GetIQvImage(), x, y, 255 * Grey(LightAt(x, y, false)).mean);
  return frame;
}

Light PolarizedScene::GreyAt(std::size_t x, std::size_t y) const {
  return Grey(m_lights[y * kWidth + x]);
}

std::vector<Region> PolarizedScene::Foils() {
  const Element& row = kElements[kFoils];
  const std::size_t column = row.width / kFoilCount;
  std::vector<Region> foils;
  for (std::size_t i = 0; i < kFoilCount; ++i) {
    const std::size_t x = row.x + i * column + 8;
    foils.push_back({kFoilNames[i], x, row.y + 28, column - 16, 44});
    foils.push_back({kFoilNames[i], x, row.y + 88, column - 16, 64});
  }
  return foils;
}

Region PolarizedScene::Page() {
  const Element& page = kElements[kPage];
  return {"page", page.x, page.y, page.width, page.height};
}

// The upright stroke of the H.
Region PolarizedScene::HiddenInk() {
  const Element& print = kElements[kHidden];
  return {"ink", print.x + 38, print.y + 50, 5, 60};
}

Region PolarizedScene::HiddenGround() {
  const Element& print = kElements[kHidden];
  return {"ground", print.x + 10, print.y + 50, 5, 60};
}

}  // namespace Demo
