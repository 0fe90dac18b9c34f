// SPDX-License-Identifier: MIT
#include "Chart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

#include "Print.h"

namespace Demo {

using namespace QvApi;

namespace {

constexpr std::size_t kWidth = 1920, kHeight = 1200;
constexpr double kPi = std::numbers::pi;
// Each pixel is the mean of this many points in each direction, as a lens and a sensor would blur.
constexpr int kSubsamples = 3;

struct Color {
  double red, green, blue;
};

constexpr Color kWhite{245, 245, 245}, kBlack{12, 12, 12}, kGrey{118, 118, 118};
constexpr Color kRed{205, 40, 45}, kGreen{30, 150, 70}, kBlue{40, 60, 170}, kYellow{230, 200, 30};
constexpr Color kCyan{20, 160, 190}, kMagenta{180, 50, 140}, kSilver{165, 165, 165};

Color Grey(double level) { return {level, level, level}; }

// A position inside an element of the chart, in pixels from its top left, and the element's size.
struct Point {
  double x, y, width, height;
};

// Rings whose frequency grows with the radius up to half a cycle a pixel at the edge.
Color ZonePlate(Point p) {
  const double radius = p.width / 2, x = p.x - radius, y = p.y - p.height / 2;
  return Grey(128 + 112 * std::cos(kPi * (x * x + y * y) / (2 * radius)));
}

// Spokes of changing colour that get thinner towards the middle.
Color Star(Point p) {
  constexpr std::array<Color, 6> kSpokes = {kRed, kWhite, kBlue, kYellow, kGreen, kBlack};
  const double angle = std::atan2(p.y - p.height / 2, p.x - p.width / 2) / (2 * kPi) + 0.5;
  return kSpokes[static_cast<std::size_t>(angle * 72) % kSpokes.size()];
}

// Hue to the right, saturation downward.
Color Hues(Point p) {
  const auto channel = [&](double shift) {
    const double hue = 0.5 + 0.5 * std::cos(2 * kPi * (p.x / p.width - shift));
    const double saturation = p.y / p.height;
    return 30 + 200 * (1 - saturation + saturation * hue);
  };
  return {channel(0), channel(1.0 / 3), channel(2.0 / 3)};
}

// Squares turned by 5 degrees, the usual target for measuring sharpness, in several contrasts.
Color SlantedEdges(Point p) {
  constexpr std::array<std::array<Color, 2>, 4> kPairs = {
      {{kBlack, kWhite}, {kRed, kGreen}, {kBlue, kYellow}, {kGrey, kSilver}}};
  const double column = p.width / kPairs.size();
  const std::size_t index = std::min(static_cast<std::size_t>(p.x / column), kPairs.size() - 1);
  const double x = p.x - (static_cast<double>(index) + 0.5) * column, y = p.y - p.height / 2;
  const double sine = std::sin(kPi / 36), cosine = std::cos(kPi / 36);
  const double half = column * 0.32;
  const bool inside =
      std::abs(x * cosine + y * sine) < half && std::abs(y * cosine - x * sine) < half;
  return kPairs[index][inside ? 0 : 1];
}

// Stripes of 1, 2, 3, 4 pixels: upright above, lying below, in grey and in colours.
Color LinePairs(Point p) {
  constexpr std::array<std::array<Color, 2>, 3> kPairs = {
      {{kBlack, kWhite}, {kRed, kSilver}, {kBlue, kYellow}}};
  const double column = p.width / 12, block = p.height / 2;
  const std::size_t index = std::min(static_cast<std::size_t>(p.x / column), std::size_t{11});
  const bool upright = p.y < block;
  const double along =
      std::floor(upright ? p.x - static_cast<double>(index) * column : p.y - block);
  const double width = static_cast<double>(index % 4) + 1;
  return kPairs[index / 4][static_cast<std::size_t>(along / width) % 2];
}

// A page of print; the smallest has strokes of one pixel.
Color Print(Point p) {
  struct Line {
    double top;
    int scale;
    Color ink;
    const char* text;
  };
  constexpr std::array<Line, 9> kLines = {
      {{12, 5, kBlack, "QVAPI 1920 X 1200"},
       {62, 3, kBlue, "DEMOSAIC 0123456789 DEMOSAIC"},
       {98, 2, kBlack, "MOSAIC SAMPLED AS RED GREEN BLUE"},
       {124, 2, kRed, "MOSAIC SAMPLED AS RED GREEN BLUE"},
       {150, 1, kBlack, "THE FINEST PRINT HAS STROKES OF ONE PIXEL 0123456789"},
       {164, 1, kRed, "THE FINEST PRINT HAS STROKES OF ONE PIXEL 0123456789"},
       {178, 1, kBlue, "THE FINEST PRINT HAS STROKES OF ONE PIXEL 0123456789"},
       {192, 1, kGreen, "THE FINEST PRINT HAS STROKES OF ONE PIXEL 0123456789"},
       {212, 4, kMagenta, "EDGES COLOR"}}};
  for (const Line& line : kLines)
    if (IsInk(line.text, (p.x - 16) / line.scale, (p.y - line.top) / line.scale)) return line.ink;
  return kWhite;
}

// Hairs fanning out from the left, in three colours.
Color Hairs(Point p) {
  constexpr std::array<Color, 3> kHairs = {kBlack, kRed, kCyan};
  for (std::size_t i = 0; i < 18; ++i) {
    const double slope = (static_cast<double>(i) - 8.5) * p.height / (18 * p.width);
    if (std::abs(p.y - p.height / 2 - slope * (p.x + 60)) < 0.7) return kHairs[i % kHairs.size()];
  }
  return kSilver;
}

// Leaves: fine structure whose colour changes little.
Color Foliage(Point p) {
  const double wave = std::sin(p.x * 0.61 + 3 * std::sin(p.y * 0.23)) *
                      std::sin(p.y * 0.83 + 4 * std::sin(p.x * 0.17));
  const double light = 90 + 80 * wave, shade = 20 * std::sin((p.x + p.y) * 0.031);
  return {light * 0.55 + shade, light, light * 0.3};
}

Color Ramp(Point p) { return Grey(255 * p.x / p.width); }

Color Wedge(Point p) { return Grey(25.5 * std::floor(11 * p.x / p.width)); }

struct Element {
  std::size_t x, y, width, height;
  Color (*paint)(Point);
};

// The upper left, to 900 x 580, belongs to the patches that the library draws.
constexpr Element kElements[] = {
    {920, 20, 560, 560, ZonePlate},  {1500, 20, 400, 270, Star},
    {1500, 310, 400, 270, Hues},     {20, 600, 560, 280, SlantedEdges},
    {600, 600, 600, 280, LinePairs}, {1220, 600, 680, 280, Print},
    {20, 900, 1880, 80, Ramp},       {20, 990, 1880, 50, Wedge},
    {20, 1060, 920, 120, Foliage},   {960, 1060, 940, 120, Hairs},
};

std::uint8_t ToByte(double value) {
  return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

std::uint8_t* PixelOf(IQvImage& image, std::size_t x, std::size_t y) {
  return static_cast<std::uint8_t*>(image.GetImageBuffer()) + y * image.GetImageLinePitch() + 3 * x;
}

void PaintPixel(const Element& element, std::size_t x, std::size_t y, std::uint8_t* pixel) {
  Color sum{0, 0, 0};
  for (int j = 0; j < kSubsamples; ++j)
    for (int i = 0; i < kSubsamples; ++i) {
      const Color color =
          element.paint({static_cast<double>(x) + (i + 0.5) / kSubsamples,
                         static_cast<double>(y) + (j + 0.5) / kSubsamples,
                         static_cast<double>(element.width), static_cast<double>(element.height)});
      sum = {sum.red + color.red, sum.green + color.green, sum.blue + color.blue};
    }
  constexpr double kShare = 1.0 / (kSubsamples * kSubsamples);
  pixel[0] = ToByte(sum.blue * kShare);
  pixel[1] = ToByte(sum.green * kShare);
  pixel[2] = ToByte(sum.red * kShare);
}

void DrawPatches(IQvImage& chart) {
  Buffer patches = MakeBuffer();
  patches->CreateBuffer(880, 560, PixelFormat::BGR8, QvMemoryInitialization_TestChart);
  IQvImage& image = *patches->GetIQvImage();
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y)
    std::memcpy(PixelOf(chart, 20, 20 + y), PixelOf(image, 0, y), 3 * image.GetImageWidth());
}

}  // namespace

Buffer DrawChart() {
  Buffer chart = MakeBuffer();
  chart->SetSize(kWidth, kHeight, PixelFormat::BGR8, 0);
  IQvImage& image = *chart->GetIQvImage();
  for (std::size_t y = 0; y < kHeight; ++y) std::memset(PixelOf(image, 0, y), 118, 3 * kWidth);
  DrawPatches(image);
  for (const Element& element : kElements)
    for (std::size_t y = 0; y < element.height; ++y)
      for (std::size_t x = 0; x < element.width; ++x)
        PaintPixel(element, x, y, PixelOf(image, element.x + x, element.y + y));
  return chart;
}

std::vector<Region> ChartRegions() {
  return {{"print", 1236, 748, 48, 48},       {"zone plate", 1276, 150, 48, 48},
          {"line pairs", 626, 716, 48, 48},   {"coloured lines", 826, 716, 48, 48},
          {"slanted edge", 168, 690, 48, 48}, {"star", 1676, 131, 48, 48}};
}

}  // namespace Demo
