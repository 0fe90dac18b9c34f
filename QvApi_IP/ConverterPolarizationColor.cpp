// SPDX-License-Identifier: MIT
// Handlers from mosaics of polarizers under colours: cells of 2 x 2 polarizers with one colour
// each, of which four make a Bayer tile.
#include <array>

#include "QvApi_IP/ColorInterpolation/ColorInterpolation.h"
#include "QvApi_IP/ConverterPolarization.h"
#include "QvApi_IP/Kernels/SplitColumns.h"
#include "QvApi_IP/PixelFormatFinder.h"
#include "QvApi_IP/QvImagePart.h"

namespace QvApi {
namespace {

using Kernels::DepthChange;
using Kernels::Neighbourhood;

/// The Bayer mosaic that an arrangement becomes when its angles are resolved, upright and flipped.
/// Row n is pattern number n + 1.
struct ResolvedPhases {
  BayerPhase upright, flipped;
};
constexpr std::array<ResolvedPhases, 8> kResolvedPhases{{
    {BayerPhase::RG, BayerPhase::GB},  // plain
    {BayerPhase::GR, BayerPhase::BG},  // X
    {BayerPhase::GB, BayerPhase::RG},  // Y
    {BayerPhase::BG, BayerPhase::GR},  // XY
    {BayerPhase::GR, BayerPhase::BG},  // C
    {BayerPhase::RG, BayerPhase::GB},  // XC
    {BayerPhase::BG, BayerPhase::GR},  // YC
    {BayerPhase::GB, BayerPhase::RG},  // XYC
}};

PixelFormat ResolvedFormat(const IQvImage& source, bool reverseY) {
  const IQvPixelFormatInfoInside& info = FormatInfo(source.GetImagePixelFormat());
  const ResolvedPhases& phases = kResolvedPhases.at(info.GetPolarizerPatternNumber() - 1);
  return FindRawFormat(reverseY ? phases.flipped : phases.upright,
                       info.GetEachComponentEffectiveBitCount(), Storage::Unpacked);
}

/// Calls `function(source, destination)` with the same quarter of two images of the same size, for
/// all four from left to right and from top to bottom. Those of a side of 1 may be empty, and are
/// left out.
template <class Function>
void ForEachQuarter(const IQvImage& source, const IQvImage& destination, Function function) {
  const std::size_t width = source.GetImageWidth();
  const std::size_t height = source.GetImageHeight();
  for (std::size_t lower = 0; lower < 2; ++lower)
    for (std::size_t right = 0; right < 2; ++right) {
      const ImagePart::Rectangle part{.x = right * (width / 2),
                                      .y = lower * (height / 2),
                                      .width = right ? width - width / 2 : width / 2,
                                      .height = lower ? height - height / 2 : height / 2};
      if (part.width != 0 && part.height != 0)
        function(ImagePart(source, part), ImagePart(destination, part));
    }
}

/// Brings the cells of each colour of the Bayer tile into a quarter, where they make a mosaic of
/// polarizers without colours. What is left over beside whole tiles of 4 x 4 stays 0.
void SplitColors(const IQvImage& source, IQvImageBuffer& destination) {
  const std::size_t width = source.GetImageWidth();
  const std::size_t height = source.GetImageHeight();
  const PixelFormatRow& row = *FindPixelFormat(source.GetImagePixelFormat());
  const PixelFormat format = FindPolarizedFormat(PixelKind::PolarizedMono, row.depth,
                                                 Storage::Unpacked, row.polarizerPattern);
  if (width % 4 == 0 && height % 4 == 0)
    destination.SetSize(width, height, format, 0);
  else
    destination.CreateBuffer(width, height, format, QvMemoryInitialization_Zero);

  const SampleLines from(source), to(*destination.GetIQvImage());
  const std::size_t cellBytes = from.IsWide() ? 4 : 2;
  const std::size_t rightHalf = width / 2 * cellBytes / 2;
  for (std::size_t y = 0; y < height / 4 * 4; ++y) {
    auto* line = to.Line<std::uint8_t>(y / 4 * 2 + y % 2 + y / 2 % 2 * (height / 2));
    Kernels::SplitColumns(from.Line<std::uint8_t>(y), cellBytes, line, line + rightHalf, width / 4);
  }
}

}  // namespace

void CQvPixelFormatConverter::ConverterPolarizationColorImageToMono(IQvImage* source,
                                                                    IQvImageBuffer* destination,
                                                                    bool reverseY) {
  const auto method = GetPolarizationMethod(*source, *destination->GetIQvImage());
  if (method == QvPolarizationImageTransformationMethod_OFF)
    return ConverterPolarizationOff(source, destination, reverseY);
  if (method != QvPolarizationImageTransformationMethod_DegreeOfLinearPolarization &&
      method != QvPolarizationImageTransformationMethod_AngleOfLinearPolarization)
    return ConverterViaSameBitBGR(source, destination, reverseY);
  WithAlignedImages(*this, *source, *destination, [&](IQvImage& from, IQvImageBuffer& to) {
    ColorsToMono(from, *to.GetIQvImage(), method, reverseY);
  });
}

void CQvPixelFormatConverter::ConverterPolarizationColorImageToBGR(IQvImage* source,
                                                                   IQvImageBuffer* destination,
                                                                   bool reverseY) {
  const auto method = GetPolarizationMethod(*source, *destination->GetIQvImage());
  const std::size_t depth =
      FormatInfo(source->GetImagePixelFormat()).GetEachComponentEffectiveBitCount();
  switch (method) {
    case QvPolarizationImageTransformationMethod_OFF:
    case QvPolarizationImageTransformationMethod_DegreeOfLinearPolarization:
    case QvPolarizationImageTransformationMethod_AngleOfLinearPolarization:
      return ConvertViaTmp(source, destination,
                           FindRawFormat(BayerPhase::Mono, depth, Storage::Unpacked), reverseY);
    case QvPolarizationImageTransformationMethod_EachAngle:
      return WithAlignedImages(*this, *source, *destination,
                               [&](IQvImage& from, IQvImageBuffer& to) {
                                 AnglesToBGR(from, *to.GetIQvImage(), reverseY);
                               });
    case QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization:
      return WithAlignedImages(*this, *source, *destination,
                               [&](IQvImage& from, IQvImageBuffer& to) {
                                 ColorsToBGR(from, *to.GetIQvImage(), reverseY);
                               });
    default:
      return CellsToBGR(AlignedImage(*this, *source).Get(), *destination,
                        GetPolarizationOperation(method, depth), reverseY);
  }
}

/// Degree or angle of each colour in a quarter of the destination.
void CQvPixelFormatConverter::ColorsToMono(const IQvImage& source, const IQvImage& destination,
                                           EQvPolarizationImageTransformationMethod_t method,
                                           bool reverseY) {
  const SampleLines whole(source), target(destination);
  const LockedDepthChange depth =
      LockDepthChange(m_depthTables, whole.Depth(), target.Depth(), m_gamma, m_bitExpansionMode);
  const PolarizationOperation operation = GetPolarizationOperation(method, whole.Depth());
  const TemporaryBuffer colors(*this);
  SplitColors(source, *colors.Get());
  ForEachQuarter(*colors->GetIQvImage(), destination, [&](const auto& mosaic, const auto& part) {
    Polarize(SampleLines(mosaic), SampleLines(part, reverseY), Neighbourhood::Window, operation,
             depth.change);
  });
}

/// Degree and angle of each colour as a colour in a quarter of the destination.
void CQvPixelFormatConverter::ColorsToBGR(const IQvImage& source, const IQvImage& destination,
                                          bool reverseY) {
  const Kernels::HueStyle style = GetPolarizationHueStyle();
  const TemporaryBuffer colors(*this);
  SplitColors(source, *colors.Get());
  ForEachQuarter(*colors->GetIQvImage(), destination, [&](const auto& mosaic, const auto& part) {
    PolarizeToColor(SampleLines(mosaic), SampleLines(part, reverseY), style);
  });
}

/// The image of each angle in a quarter of the destination.
void CQvPixelFormatConverter::AnglesToBGR(const IQvImage& source, const IQvImage& destination,
                                          bool reverseY) {
  const TemporaryBuffer angles(*this);
  angles->SetSize(source.GetImageWidth(), source.GetImageHeight(), ResolvedFormat(source, reverseY),
                  0);
  const IQvImage& mosaics = *angles->GetIQvImage();
  const SampleLines from(source), to(mosaics, reverseY);
  SplitAngles(from, to, DepthChange::Keep(from.Row().depth));
  ForEachQuarter(mosaics, destination, [&](const auto& mosaic, const auto& part) {
    ColorInterporation(mosaic, part, false, m_method);
  });
}

/// One pixel of each cell: an image of half the sides.
void CQvPixelFormatConverter::CellsToBGR(const IQvImage& source, IQvImageBuffer& destination,
                                         const PolarizationOperation& operation, bool reverseY) {
  const PixelFormat format = destination.GetIQvImage()->GetImagePixelFormat();
  const TemporaryBuffer cells(*this);
  cells->SetSize(source.GetImageWidth() / 2, source.GetImageHeight() / 2,
                 ResolvedFormat(source, reverseY), 0);
  const IQvImage& mosaic = *cells->GetIQvImage();
  const SampleLines from(source), to(mosaic, reverseY);
  Polarize(from, to, Neighbourhood::Cell, operation, DepthChange::Keep(from.Row().depth));
  destination.SetSize(mosaic.GetImageWidth(), mosaic.GetImageHeight(), format, 0);
  ColorInterporation(mosaic, *destination.GetIQvImage(), false, m_method);
}

}  // namespace QvApi
