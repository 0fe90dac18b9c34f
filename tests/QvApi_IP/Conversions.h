// SPDX-License-Identifier: MIT
// What the tests of the pixel format converter share: its settings in one piece, conversions into
// old memory, and images as plain numbers.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi::Testing {

struct Size {
  std::size_t width, height;
};

struct Settings {
  PixelFormat destination = PixelFormat::BGR8;
  bool reverse = false;
  unsigned bayerMethod = QvBayerInterpolationMethod_NearestNeighbor2;
  std::size_t alignment = 0;
  double gamma = 1;
  unsigned mode = QvBitExpansionMode_Gamma;
  unsigned method = QvPolarizationImageTransformationMethod_EachAngle;
  double angle = 0;
  bool isCosine = false;
  bool isDark = false, isInverted = false;
  int phase = 0;
};

inline void Set(CQvPixelFormatConverter& converter, const Settings& s) {
  converter.SetDestinationPixelFormat(s.destination);
  converter.SetReverseY(s.reverse);
  converter.SetBayerInterpolationMethod(static_cast<EQvBayerInterpolationMethod_t>(s.bayerMethod));
  converter.SetLinePitchAlignment(s.alignment);
  converter.SetGammaValue(s.gamma);
  converter.SetBitExpansionMode(static_cast<_EQvBitExpansionMode_t>(s.mode));
  converter.SetPolarizationImageTransformationMethod(
      static_cast<EQvPolarizationImageTransformationMethod_t>(s.method));
  converter.SetPolarizationSpecifiedAngle(s.angle);
  converter.SetInterpolationMethodForSpecifiedAngle(
      static_cast<_EQvInterpolationMethodForSpecifiedAngle_t>(s.isCosine));
  converter.SetADOLPDarkMode(s.isDark);
  converter.SetADOLPColorInversion(s.isInverted);
  converter.SetADOLPColorPhase(s.phase);
}

/// A conversion into old memory.
class Conversion {
 public:
  Conversion(CQvPixelFormatConverter& converter, IQvImage& source) { Run(converter, source); }
  Conversion(IQvImage& source, const Settings& settings) {
    CQvPixelFormatConverter converter;
    Set(converter, settings);
    Run(converter, source);
  }

  IQvImage& Image() const { return *m_buffer->GetIQvImage(); }
  PixelFormat Format() const { return Image().GetImagePixelFormat(); }
  std::vector<std::uint8_t> All() const {
    return AllBytes(&Image(), Info(Format()).GetPlaneCount());
  }

 private:
  void Run(CQvPixelFormatConverter& converter, IQvImage& source) {
    converter.Convert(&source, m_buffer.Get());
    EXPECT_TRUE(m_memory.IsIntact());
  }

  OldMemory m_memory;
  const Buffer m_buffer = MakeBuffer(&m_memory);
};

/// The pixels of an image as numbers: levels, or red, green and blue.
struct Raster {
  std::size_t width, height, channels;
  std::vector<int> values;

  Raster(std::size_t w, std::size_t h, std::size_t c = 1)
      : width(w), height(h), channels(c), values(w * h * c) {}

  int* Pixel(std::size_t x, std::size_t y) { return &values[(y * width + x) * channels]; }
  const int* Pixel(std::size_t x, std::size_t y) const {
    return &values[(y * width + x) * channels];
  }
  int& At(std::size_t x, std::size_t y) { return *Pixel(x, y); }
  int At(std::size_t x, std::size_t y) const { return *Pixel(x, y); }

  Raster Flipped() const {
    Raster flipped(width, height, channels);
    for (std::size_t y = 0; y < height; ++y)
      std::copy_n(Pixel(0, y), width * channels, flipped.Pixel(0, height - 1 - y));
    return flipped;
  }
  Raster Part(std::size_t x, std::size_t y, const Size& size) const {
    Raster part(size.width, size.height, channels);
    for (std::size_t i = 0; i < size.height; ++i)
      std::copy_n(Pixel(x, y + i), size.width * channels, part.Pixel(0, i));
    return part;
  }
  void Put(const Raster& part, std::size_t x, std::size_t y) {
    for (std::size_t i = 0; i < part.height; ++i)
      std::copy_n(part.Pixel(0, i), part.width * channels, Pixel(x, y + i));
  }
};

/// Where red, green and blue stand in a pixel.
inline std::array<std::size_t, 3> PlacesIn(PixelFormat format) {
  return Info(format).IsBGR() ? std::array<std::size_t, 3>{2, 1, 0}
                              : std::array<std::size_t, 3>{0, 1, 2};
}

inline Raster RasterOf(const IQvImage& image) {
  const PixelFormat format = image.GetImagePixelFormat();
  const std::size_t step = Info(format).GetComponentCount();
  const auto places = PlacesIn(format);
  Raster raster(image.GetImageWidth(), image.GetImageHeight(), std::min<std::size_t>(step, 3));
  for (std::size_t y = 0; y < raster.height; ++y)
    for (std::size_t x = 0; x < raster.width; ++x)
      for (std::size_t c = 0; c < raster.channels; ++c)
        raster.Pixel(x, y)[c] =
            static_cast<int>(SampleAt(image, x * step + (step == 1 ? 0 : places[c]), y));
  return raster;
}

/// Writes the pixels, but for alpha.
inline void Draw(const IQvImage& image, const Raster& raster) {
  const PixelFormat format = image.GetImagePixelFormat();
  const std::size_t step = Info(format).GetComponentCount();
  const auto places = PlacesIn(format);
  for (std::size_t y = 0; y < raster.height; ++y)
    for (std::size_t x = 0; x < raster.width; ++x)
      for (std::size_t c = 0; c < std::min<std::size_t>(step, 3); ++c)
        SetSample(image, x * step + (step == 1 ? 0 : places[c]), y,
                  static_cast<unsigned>(raster.Pixel(x, y)[raster.channels == 1 ? 0 : c]));
}

/// The image has these pixels, and alpha and what stands behind its lines is old. Padding need not
/// be, if a handler copied whole lines.
inline void ExpectImage(const IQvImage& image, const Raster& expected, bool isPaddingOld = true) {
  ASSERT_EQ(image.GetImageWidth(), expected.width);
  ASSERT_EQ(image.GetImageHeight(), expected.height);
  const std::size_t pitch = image.GetImageLinePitch();
  std::vector<std::uint8_t> bytes(pitch * expected.height, kOld);
  Draw(ForeignImage(bytes.data(), expected.width, expected.height, pitch,
                    image.GetImagePixelFormat()),
       expected);
  const std::size_t compared =
      isPaddingOld ? pitch : LineBytes(image.GetImagePixelFormat(), expected.width);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    ASSERT_TRUE(i % pitch >= compared || bytes[i] == Bytes(&image)[i])
        << "byte " << i % pitch << " of line " << i / pitch << " is " << +Bytes(&image)[i]
        << ", not " << +bytes[i];
}

/// For messages.
inline std::string Describe(const IQvImage& source, const Settings& s) {
  return NameOf(source.GetImagePixelFormat()) + " to " + NameOf(s.destination) + " " +
         std::to_string(source.GetImageWidth()) + " x " + std::to_string(source.GetImageHeight()) +
         (s.reverse ? " reverse" : "") + ", Bayer " + std::to_string(s.bayerMethod) +
         ", alignment " + std::to_string(s.alignment) + ", gamma " + std::to_string(s.gamma) +
         ", mode " + std::to_string(s.mode) + ", polarization " + std::to_string(s.method);
}

}  // namespace QvApi::Testing
