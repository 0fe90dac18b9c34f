// SPDX-License-Identifier: MIT
// Handlers from and to Bayer mosaics.
#include "QvApi_IP/ColorInterpolation/ColorInterpolation.h"
#include "QvApi_IP/Kernels/BayerToMono.h"
#include "QvApi_IP/Kernels/ColorToBayer.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvPixelFormatConverter.h"

namespace QvApi {
namespace {

/// Phase of a mosaic seen from row `y`.
int PhaseOfRow(int phase, std::size_t y) {
  return y % 2 == 0 ? phase : Kernels::PhaseOfNextRow(phase);
}

/// Each line looks at the one below it; the last one at the one above, if there is any.
template <class T>
void BayerToMono(const IQvImage& source, const IQvImage& destination, bool reverseY) {
  const ImageLines from(source);
  const ImageLines to(destination, reverseY);
  const int phase = from.Format().GetPixelColorFilter(0, 0);
  const std::size_t height = from.Height();
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t next = y + 1 < height ? y + 1 : height >= 2 ? height - 2 : 0;
    Kernels::BayerRowToMono(from.Line<const T>(y), from.Line<const T>(next), to.Line<T>(y),
                            from.Width(), PhaseOfRow(phase, y));
  }
}

/// Each pixel of the mosaic takes the component of its site. The destination keeps its phase when
/// flipped, so that the site's colour follows the destination's row.
template <class T>
void ColorToBayer(const IQvImage& source, const IQvImage& destination, bool reverseY) {
  const ImageLines from(source);
  const ImageLines to(destination, reverseY);
  const int phase = to.Format().GetPixelColorFilter(0, 0);
  const Kernels::ColorLayout layout{.components = static_cast<unsigned>(from.Components()),
                                    .isBGR = from.Format().IsBGR()};
  const std::size_t height = from.Height();
  for (std::size_t y = 0; y < height; ++y) {
    const std::size_t row = reverseY ? height - 1 - y : y;
    Kernels::ColorRowToBayer(from.Line<const T>(y), to.Line<T>(y), from.Width(), layout,
                             PhaseOfRow(phase, row));
  }
}

}  // namespace

void CQvPixelFormatConverter::ConverterColorInterporation(IQvImage* source,
                                                          IQvImageBuffer* destination,
                                                          bool reverseY) {
  ColorInterporation(*source, *destination->GetIQvImage(), reverseY, m_method);
}

void CQvPixelFormatConverter::ConverterBayerBToMonoB(IQvImage* source, IQvImageBuffer* destination,
                                                     bool reverseY) {
  BayerToMono<std::uint8_t>(*source, *destination->GetIQvImage(), reverseY);
}

void CQvPixelFormatConverter::ConverterBayerWToMonoW(IQvImage* source, IQvImageBuffer* destination,
                                                     bool reverseY) {
  BayerToMono<std::uint16_t>(*source, *destination->GetIQvImage(), reverseY);
}

void CQvPixelFormatConverter::ConverterBGR8ToBayer8(IQvImage* source, IQvImageBuffer* destination,
                                                    bool reverseY) {
  ColorToBayer<std::uint8_t>(*source, *destination->GetIQvImage(), reverseY);
}

void CQvPixelFormatConverter::ConverterBGR16ToBayer16(IQvImage* source, IQvImageBuffer* destination,
                                                      bool reverseY) {
  ColorToBayer<std::uint16_t>(*source, *destination->GetIQvImage(), reverseY);
}

}  // namespace QvApi
