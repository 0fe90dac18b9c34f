// SPDX-License-Identifier: MIT
// The test charts: grey steps and ramps for mono formats, 24 colour patches for BGR formats.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "QvSDKCommon/PixelFormatAccess.h"
#include "QvSDKCommon/QvImageBuffer.h"

namespace QvApi {
namespace {

// Levels are those of 8 bits; deeper formats shift them up.
constexpr std::array<std::uint8_t, 11> kGreyLevels{255, 234, 212, 190, 167, 143,
                                                   120, 94,  67,  37,  0};
constexpr std::uint8_t kGreyBackground = 131;

struct Rgb {
  std::uint8_t r, g, b;
};

constexpr std::size_t kPatchesPerRow = 6;

// clang-format off
constexpr std::array<Rgb, 24> kPatches{{
    {115, 82, 68},   {194, 150, 130}, {98, 122, 157},  {87, 108, 67},  {133, 128, 177}, {103, 189, 170},
    {214, 126, 44},  {80, 91, 166},   {193, 90, 99},   {94, 60, 108},  {157, 188, 64},  {224, 163, 46},
    {56, 61, 150},   {70, 148, 73},   {175, 54, 60},   {231, 199, 31}, {187, 86, 149},  {8, 133, 161},
    {243, 243, 242}, {200, 200, 200}, {160, 160, 160}, {122, 122, 121}, {85, 85, 85},   {52, 52, 52},
}};
// clang-format on

/// The samples of an image to draw on. Samples that would fall behind its end are dropped: the
/// 16-bit colour chart of an 8-bit format draws lines of twice the length.
template <class T>
class Canvas {
 public:
  explicit Canvas(const IQvImage& image)
      : m_bytes(static_cast<std::uint8_t*>(image.GetImageBuffer())),
        m_size(image.GetImagePlanePitch()),
        m_linePitch(image.GetImageLinePitch()) {}

  void Put(std::size_t line, std::size_t sample, std::size_t value) {
    const std::size_t offset = line * m_linePitch + sample * sizeof(T);
    if (offset > m_size || m_size - offset < sizeof(T)) return;
    const T stored = static_cast<T>(value);
    std::memcpy(m_bytes + offset, &stored, sizeof(T));
  }

 private:
  std::uint8_t* m_bytes;
  std::size_t m_size;
  std::size_t m_linePitch;
};

const IQvPixelFormatInfoInside& InfoOf(const IQvImage& image) {
  return RequirePixelFormatInfo(image.GetImagePixelFormat());
}

/// Four bands with a bar each: steps down, ramp up, ramp down, steps up.
class MonoChart {
 public:
  MonoChart(std::size_t width, std::size_t height, std::size_t bits)
      : m_step(width / 12),
        m_left(width / 24),
        m_length(kGreyLevels.size() * m_step),
        m_bandHeight(height / 5),
        m_top(height / 10),
        m_shift(bits - 8),
        m_max((std::size_t{1} << bits) - 1) {}

  std::size_t ValueAt(std::size_t x, std::size_t y) const {
    const std::size_t background = std::size_t{kGreyBackground} << m_shift;
    if (x < m_left || x - m_left >= m_length) return background;
    if (y < m_top || y - m_top >= 4 * m_bandHeight) return background;
    return BarValue((y - m_top) / m_bandHeight, x - m_left);
  }

 private:
  std::size_t BarValue(std::size_t band, std::size_t i) const {
    switch (band) {
      case 0:
        return Step(i / m_step);
      case 1:
        return i * m_max / (m_length - 1);
      case 2:
        return (m_length - 1 - i) * m_max / (m_length - 1);
      default:
        return Step(kGreyLevels.size() - 1 - i / m_step);
    }
  }
  std::size_t Step(std::size_t index) const { return std::size_t{kGreyLevels[index]} << m_shift; }

  std::size_t m_step;
  std::size_t m_left;
  std::size_t m_length;
  std::size_t m_bandHeight;
  std::size_t m_top;
  std::size_t m_shift;
  std::size_t m_max;
};

/// Four rows of six patches on black.
class ColorChart {
 public:
  ColorChart(std::size_t width, std::size_t height)
      : m_gapX(width / 77),
        m_gapY(height / 45),
        m_patchWidth(width / 7),
        m_patchHeight(height / 5) {}

  /// The patch at this place, or null for black.
  const Rgb* PatchAt(std::size_t x, std::size_t y) const {
    const std::size_t row = Index(y, m_gapY, m_patchHeight, kPatches.size() / kPatchesPerRow);
    const std::size_t column = Index(x, m_gapX, m_patchWidth, kPatchesPerRow);
    if (row == kNone || column == kNone) return nullptr;
    return &kPatches[row * kPatchesPerRow + column];
  }

 private:
  static constexpr std::size_t kNone = SIZE_MAX;

  /// Which of `count` patches lies at `position`: they begin behind three gaps, with one gap after
  /// each.
  static std::size_t Index(std::size_t position, std::size_t gap, std::size_t size,
                           std::size_t count) {
    if (size == 0 || position < 3 * gap) return kNone;
    const std::size_t inside = position - 3 * gap;
    const std::size_t index = inside / (size + gap);
    return index < count && inside % (size + gap) < size ? index : kNone;
  }

  std::size_t m_gapX;
  std::size_t m_gapY;
  std::size_t m_patchWidth;
  std::size_t m_patchHeight;
};

template <class T>
bool MakeChartMono(const IQvImage& image) {
  const std::size_t width = image.GetImageWidth();
  const std::size_t height = image.GetImageHeight();
  const MonoChart chart(width, height, InfoOf(image).GetEachComponentEffectiveBitCount());
  Canvas<T> canvas(image);
  for (std::size_t y = 0; y < height; ++y)
    for (std::size_t x = 0; x < width; ++x) canvas.Put(y, x, chart.ValueAt(x, y));
  return true;
}

template <class T>
bool MakeChartBGR(const IQvImage& image, _EQvMemoryInitialization_t init, bool redFirst) {
  if (init != QvMemoryInitialization_TestChart) return false;
  const std::size_t width = image.GetImageWidth();
  const std::size_t height = image.GetImageHeight();
  const std::size_t components = InfoOf(image).GetComponentCount();
  const std::size_t shift = InfoOf(image).GetEachComponentEffectiveBitCount() - 8;
  const ColorChart chart(width, height);
  constexpr Rgb kBlack{};
  Canvas<T> canvas(image);
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const Rgb* patch = chart.PatchAt(x, y);
      const Rgb& color = patch ? *patch : kBlack;
      const std::size_t sample = x * components;
      canvas.Put(y, sample, std::size_t{redFirst ? color.r : color.b} << shift);
      canvas.Put(y, sample + 1, std::size_t{color.g} << shift);
      canvas.Put(y, sample + 2, std::size_t{redFirst ? color.b : color.r} << shift);
    }
  }
  return true;
}

}  // namespace

CQvImageBuffer::ChartMaker CQvImageBuffer::GetFunction(PixelFormat format) {
  switch (format) {
    case PixelFormat::Mono8:
      return &CQvImageBuffer::MakeChartMono8;
    case PixelFormat::Mono10:
    case PixelFormat::Mono12:
    case PixelFormat::Mono14:
    case PixelFormat::Mono16:
      return &CQvImageBuffer::MakeChartMono16;
    case PixelFormat::BGR8:
    case PixelFormat::BGRa8:
      return &CQvImageBuffer::MakeChartBGR8;
    // The formats with red first take the maker for 16 bits too, and get its picture as it falls.
    case PixelFormat::RGB8:
    case PixelFormat::RGBa8:
    case PixelFormat::BGR10:
    case PixelFormat::BGR12:
    case PixelFormat::BGR14:
    case PixelFormat::BGR16:
    case PixelFormat::BGRa10:
    case PixelFormat::BGRa12:
    case PixelFormat::BGRa14:
    case PixelFormat::BGRa16:
      return &CQvImageBuffer::MakeChartBGR16;
    default:
      return nullptr;
  }
}

bool CQvImageBuffer::MakeChartMono8(IQvImage* image, _EQvMemoryInitialization_t init) {
  return init == QvMemoryInitialization_TestChart && MakeChartMono<std::uint8_t>(*image);
}

bool CQvImageBuffer::MakeChartMono16(IQvImage* image, _EQvMemoryInitialization_t init) {
  return init == QvMemoryInitialization_TestChart && MakeChartMono<std::uint16_t>(*image);
}

bool CQvImageBuffer::MakeChartBGR8(IQvImage* image, _EQvMemoryInitialization_t init) {
  const PixelFormat format = image->GetImagePixelFormat();
  const bool redFirst = format == PixelFormat::RGB8 || format == PixelFormat::RGBa8;
  return MakeChartBGR<std::uint8_t>(*image, init, redFirst);
}

bool CQvImageBuffer::MakeChartBGR16(IQvImage* image, _EQvMemoryInitialization_t init) {
  return MakeChartBGR<std::uint16_t>(*image, init, false);
}

}  // namespace QvApi
