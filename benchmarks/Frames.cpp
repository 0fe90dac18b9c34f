// SPDX-License-Identifier: MIT
#include "Frames.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

namespace Bench {

using namespace QvApi;

namespace {

// Light that falls on a site, 0 to 1; `component` shifts it, so that colours differ.
double Light(std::size_t x, std::size_t y, std::size_t component) {
  const double u = static_cast<double>(x), v = static_cast<double>(y);
  const double shift = static_cast<double>(component);
  const double slow = 0.45 + 0.25 * std::sin(u / 700 + shift) + 0.15 * std::cos(v / 500 - shift);
  const double structure = 0.08 * std::sin(u * 0.11 + 4 * std::sin(v / 90)) * std::cos(v * 0.07);
  const double edge = std::fmod(u / 160 + v / 350, 2.0) < 1 ? 0.05 : -0.05;
  return slow + structure + edge;
}

// Normal noise of unit variance, from a table, since millions of samples need it.
class Noise {
 public:
  Noise() {
    std::mt19937 random(20240501);
    std::normal_distribution<double> normal;
    for (double& value : m_values) value = normal(random);
  }
  double operator()() { return m_values[m_next++ % std::size(m_values)]; }

 private:
  double m_values[65521];
  std::size_t m_next = 0;
};

template <class Sample>
void Fill(IQvImage& image, std::size_t components, bool mosaic, double max) {
  Noise noise;
  auto* line = static_cast<std::uint8_t*>(image.GetImageBuffer());
  for (std::size_t y = 0; y < image.GetImageHeight(); ++y, line += image.GetImageLinePitch()) {
    auto* samples = reinterpret_cast<Sample*>(line);
    for (std::size_t i = 0; i < image.GetImageWidth() * components; ++i) {
      const std::size_t x = i / components;
      const double light = Light(x, y, mosaic ? x % 2 + y % 2 : i % components);
      const double level = light + 0.012 * std::sqrt(std::max(light, 0.0)) * noise();
      samples[i] = static_cast<Sample>(std::clamp(level * max + 0.5, 0.0, max));
    }
  }
}

// Where samples do not lie in words of their own, line by line, any bytes are as good as others.
void FillBytes(IQvImage& image, std::size_t planes) {
  std::minstd_rand random;
  auto* bytes = static_cast<std::uint8_t*>(image.GetImageBuffer());
  const std::size_t count = image.GetImageLinePitch() * image.GetImageHeight() * planes;
  std::generate_n(bytes, count, [&] { return static_cast<std::uint8_t>(random() >> 8); });
}

}  // namespace

Buffer MakeFrame(PixelFormat format) {
  Buffer buffer(CreateIQvImageBuffer(nullptr));
  buffer->SetSize(kWidth, kHeight, format, 1);
  const IQvPixelFormatInfo& info = *GetIQvPixelFormatInfo(format);
  const std::size_t bits = info.GetEachComponentTotalBitCount();
  if ((bits != 8 && bits != 16) || info.GetPlaneCount() != 1) {
    FillBytes(*buffer->GetIQvImage(), info.GetPlaneCount());
    return buffer;
  }
  const double max =
      std::ldexp(1.0, static_cast<int>(info.GetEachComponentEffectiveBitCount())) - 1;
  const auto fill = bits > 8 ? Fill<std::uint16_t> : Fill<std::uint8_t>;
  fill(*buffer->GetIQvImage(), info.GetComponentCount(), info.IsBayer(), max);
  return buffer;
}

std::size_t BytesOf(IQvImage& image) {
  // Sized as three whole planes, of which the two of chrominance are a quarter full.
  if (image.GetImagePixelFormat() == PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar)
    return image.GetImageWidth() * image.GetImageHeight() * 3 / 2;
  const IQvPixelFormatInfo& info = *GetIQvPixelFormatInfo(image.GetImagePixelFormat());
  return (image.GetImageWidth() * info.GetTotalBitCount() + 7) / 8 * image.GetImageHeight() *
         info.GetPlaneCount();
}

}  // namespace Bench
