// SPDX-License-Identifier: MIT
#include "Images.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Demo {

using namespace QvApi;

namespace {

constexpr int kTimedRuns = 9;

const std::uint8_t* LineOf(IQvImage& image, std::size_t y) {
  return static_cast<const std::uint8_t*>(image.GetImageBuffer()) + y * image.GetImageLinePitch();
}

std::size_t LineBytes(IQvImage& image) {
  const std::size_t bits = GetIQvPixelFormatInfo(image.GetImagePixelFormat())->GetTotalBitCount();
  return (image.GetImageWidth() * bits + 7) / 8;
}

}  // namespace

Buffer MakeBuffer() { return Buffer(CreateIQvImageBuffer(nullptr)); }

Converter MakeConverter(PixelFormat destination) {
  Converter converter(CreateIQvConverter(QvConverterType_PixelFormat));
  converter->SetDestinationPixelFormat(destination);
  return converter;
}

StillImageFiler MakeFiler() { return StillImageFiler(CreateIQvFiler(QvFilerType_StillImage)); }

Buffer ConvertTo(PixelFormat destination, IQvImage& image) {
  Buffer result = MakeBuffer();
  MakeConverter(destination)->Convert(&image, result.Get());
  return result;
}

Buffer CopyOf(IQvImage& image) {
  Buffer result = MakeBuffer();
  result->CopyImage(&image);
  return result;
}

std::string FormatName(PixelFormat format) {
  return GetIQvPixelFormatInfo(format)->GetName().c_str();
}

std::string Describe(IQvImage& image) {
  return std::to_string(image.GetImageWidth()) + " x " + std::to_string(image.GetImageHeight()) +
         " " + FormatName(image.GetImagePixelFormat());
}

bool SamePixels(IQvImage& a, IQvImage& b) {
  if (a.GetImageWidth() != b.GetImageWidth() || a.GetImageHeight() != b.GetImageHeight() ||
      a.GetImagePixelFormat() != b.GetImagePixelFormat())
    return false;
  for (std::size_t y = 0; y < a.GetImageHeight(); ++y)
    if (std::memcmp(LineOf(a, y), LineOf(b, y), LineBytes(a)) != 0) return false;
  return true;
}

double Psnr(IQvImage& image, IQvImage& original) {
  const std::size_t samples = LineBytes(original);
  double sum = 0;
  for (std::size_t y = 0; y < original.GetImageHeight(); ++y) {
    const std::uint8_t *a = LineOf(image, y), *b = LineOf(original, y);
    for (std::size_t x = 0; x < samples; ++x) sum += (a[x] - b[x]) * (a[x] - b[x]);
  }
  if (sum == 0) return std::numeric_limits<double>::infinity();
  const double count = static_cast<double>(samples * original.GetImageHeight());
  return 10 * std::log10(255.0 * 255.0 * count / sum);
}

unsigned SampleAt(IQvImage& image, std::size_t x, std::size_t y) {
  const IQvPixelFormatInfo& info = *GetIQvPixelFormatInfo(image.GetImagePixelFormat());
  const std::uint8_t* line = LineOf(image, y);
  if (info.GetTotalBitCount() == 8) return line[x];
  std::uint16_t sample;
  std::memcpy(&sample, line + 2 * x, sizeof sample);
  return sample;
}

double MedianMilliseconds(const std::function<void()>& run, const std::function<void()>& prepare) {
  using Clock = std::chrono::steady_clock;
  std::array<double, kTimedRuns> times{};
  prepare();
  run();
  for (double& time : times) {
    prepare();
    const Clock::time_point start = Clock::now();
    run();
    time = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  }
  std::sort(times.begin(), times.end());
  return times[kTimedRuns / 2];
}

}  // namespace Demo
