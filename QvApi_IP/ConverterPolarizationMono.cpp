// SPDX-License-Identifier: MIT
// Handlers from mosaics of polarizers without colours, and what those with colours share with them.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "QvApi_IP/ConverterPolarization.h"
#include "QvApi_IP/Kernels/Planes.h"
#include "QvApi_IP/Kernels/SplitColumns.h"
#include "QvApi_IP/PixelFormatFinder.h"

namespace QvApi {
namespace {

using Kernels::DepthChange;
using Kernels::Neighbourhood;

/// Angles of the pixels of a tile, line by line. Row n is pattern number n + 1.
constexpr std::array<std::array<int, 4>, 8> kTiles{{
    {90, 45, 135, 0},  // plain
    {45, 90, 0, 135},  // X
    {135, 0, 90, 45},  // Y
    {0, 135, 45, 90},  // XY
    {135, 90, 0, 45},  // C
    {0, 45, 135, 90},  // XC
    {90, 135, 45, 0},  // YC
    {45, 0, 90, 135},  // XYC
}};

constexpr std::size_t PlaceOf(int angle, const std::array<int, 4>& tile) {
  return static_cast<std::size_t>(std::find(tile.begin(), tile.end(), angle) - tile.begin());
}

static_assert(std::ranges::all_of(kTiles, [](const auto& tile) {
  return PlaceOf(0, tile) == 3 - PlaceOf(90, tile) && PlaceOf(45, tile) == 3 - PlaceOf(135, tile);
}));

template <class S, class D>
void PolarizeSamples(const SampleLines& from, const SampleLines& to, Neighbourhood neighbourhood,
                     const PolarizationOperation& operation, const DepthChange& depth) {
  const PolarizerMosaic mosaic(from, neighbourhood);
  PieceRoom<S> room;
  ForEachPiece(to, [&](const LinePiece& piece) {
    const auto lines = mosaic.LinesFor<S>(piece.y);
    const Kernels::ResultColumns columns{piece.x, piece.width};
    D* target = to.Line<D>(piece.y) + piece.x;
    if constexpr (std::is_same_v<S, D>) {
      if (depth.isIdentity) return operation(lines, columns, target);
    }
    operation(lines, columns, static_cast<S*>(room));
    Kernels::ChangeDepth(depth, static_cast<const S*>(room), target, piece.width);
  });
}

template <class T>
void PolarizeToPixels(const SampleLines& from, const SampleLines& to,
                      const Kernels::HueStyle& style) {
  const PolarizerMosaic mosaic(from, Neighbourhood::Window);
  const bool isBGR = to.Format().IsBGR();
  PieceRoom<T> red, green, blue;
  ForEachPiece(to, [&](const LinePiece& piece) {
    Kernels::ColorOfPolarization<T>(style, mosaic.LinesFor<T>(piece.y), {piece.x, piece.width},
                                    {red, green, blue});
    Kernels::MergePixels({isBGR ? blue : red, green, isBGR ? red : blue},
                         to.Line<T>(piece.y) + piece.x * to.Step(), to.Step(), piece.width);
  });
}

/// Moves the columns of one line; an odd last one stays.
template <class S, class D>
void SplitLine(const S* from, D* to, std::size_t width, const DepthChange& depth) {
  const std::size_t pairs = width / 2;
  const auto split = [&](std::size_t first, std::size_t count, S* even, S* odd) {
    Kernels::SplitColumns(reinterpret_cast<const std::uint8_t*>(from + 2 * first), sizeof(S),
                          reinterpret_cast<std::uint8_t*>(even),
                          reinterpret_cast<std::uint8_t*>(odd), count);
  };
  if constexpr (std::is_same_v<S, D>) {
    if (depth.isIdentity) {
      split(0, pairs, to, to + pairs);
      if (width % 2 != 0) to[width - 1] = from[width - 1];
      return;
    }
  }
  PieceRoom<S> even, odd;
  for (std::size_t i = 0; i < pairs; i += kPiecePixels) {
    const std::size_t count = std::min(kPiecePixels, pairs - i);
    split(i, count, even, odd);
    Kernels::ChangeDepth(depth, static_cast<const S*>(even), to + i, count);
    Kernels::ChangeDepth(depth, static_cast<const S*>(odd), to + pairs + i, count);
  }
  if (width % 2 != 0) Kernels::ChangeDepth(depth, from + width - 1, to + width - 1, 1);
}

}  // namespace

PolarizerMosaic::PolarizerMosaic(const ImageLines& lines, Neighbourhood neighbourhood)
    : m_lines(lines), m_neighbourhood(neighbourhood) {
  const auto& tile = kTiles.at(lines.Format().GetPolarizerPatternNumber() - 1);
  const std::size_t zero = PlaceOf(0, tile);
  m_isZeroInOddLines = zero / 2 == 1;
  m_isZeroInOddColumns = zero % 2 == 1;
  m_is45In90 = PlaceOf(45, tile) / 2 != zero / 2;
}

void Polarize(const SampleLines& from, const SampleLines& to, Neighbourhood neighbourhood,
              const PolarizationOperation& operation, const DepthChange& depth) {
  WithSampleTypes(from, to, [&]<class S, class D>(S, D) {
    PolarizeSamples<S, D>(from, to, neighbourhood, operation, depth);
  });
}

void PolarizeToColor(const SampleLines& from, const SampleLines& to,
                     const Kernels::HueStyle& style) {
  from.IsWide() ? PolarizeToPixels<std::uint16_t>(from, to, style)
                : PolarizeToPixels<std::uint8_t>(from, to, style);
}

void SplitAngles(const SampleLines& from, const SampleLines& to, const DepthChange& depth) {
  const std::size_t half = from.Height() / 2;
  WithSampleTypes(from, to, [&]<class S, class D>(S, D) {
    for (std::size_t y = 0; y < from.Height(); ++y) {
      const std::size_t row = y < 2 * half ? y / 2 + y % 2 * half : y;
      SplitLine(from.Line<const S>(y), to.Line<D>(row), from.Width(), depth);
    }
  });
}

EQvPolarizationImageTransformationMethod_t CQvPixelFormatConverter::GetPolarizationMethod(
    const IQvImage& source, const IQvImage& destination) const {
  const EQvPolarizationImageTransformationMethod_t method = m_polarizationMethod;
  if (method > QvPolarizationImageTransformationMethod_DifferenceOfPixelValues)
    ThrowNotConvertible(source.GetImagePixelFormat(), destination.GetImagePixelFormat());
  return method;
}

PolarizationOperation CQvPixelFormatConverter::GetPolarizationOperation(
    EQvPolarizationImageTransformationMethod_t method, std::size_t depth) {
  using Kernels::AngleReduction;
  switch (method) {
    case QvPolarizationImageTransformationMethod_Average:
      return PolarizationOperation(AngleReduction::Mean);
    case QvPolarizationImageTransformationMethod_MaximumPixelValue:
      return PolarizationOperation(AngleReduction::Maximum);
    case QvPolarizationImageTransformationMethod_MinimumPixelValue:
      return PolarizationOperation(AngleReduction::Minimum);
    case QvPolarizationImageTransformationMethod_DifferenceOfPixelValues:
      return PolarizationOperation(AngleReduction::Difference);
    case QvPolarizationImageTransformationMethod_DegreeOfLinearPolarization:
      return PolarizationOperation(PolarizationOperation::Degree{});
    case QvPolarizationImageTransformationMethod_AngleOfLinearPolarization:
      return PolarizationOperation(PolarizationOperation::Angle{});
    default:
      break;
  }
  const double angle = m_specifiedAngle;
  if (m_specifiedAngleMethod == QvInterpolationMethodForSpecifiedAngle_Cosine) {
    const double turn = 2 * (angle * Kernels::kHalfTurn / 180);
    // A register takes any bits for an angle.
    if (!std::isfinite(turn)) return PolarizationOperation(Kernels::CosinePolarizer{0, 1});
    return PolarizationOperation(Kernels::CosinePolarizer{std::sin(turn), std::cos(turn)});
  }
  auto table = m_virtualPolarizerTable.LockTable(depth, angle);
  return PolarizationOperation(table->Polarizer(), table);
}

Kernels::HueStyle CQvPixelFormatConverter::GetPolarizationHueStyle() const {
  return {.isDark = m_adolpDarkMode,
          .isInverted = m_adolpInversion,
          .phase = static_cast<unsigned>(m_adolpPhase)};
}

void CQvPixelFormatConverter::ConverterPolarizationOff(IQvImage* source,
                                                       IQvImageBuffer* destination, bool reverseY) {
  const auto isWide = [](const IQvImage& image) {
    return FormatInfo(image.GetImagePixelFormat()).GetEachComponentTotalBitCount() > 8;
  };
  if (isWide(*source) == isWide(*destination->GetIQvImage()))
    return ConverterCopy(source, destination, reverseY);
  WithAlignedImages(*this, *source, *destination, [&](IQvImage& from, IQvImageBuffer& to) {
    ConverterRawToRaw(&from, &to, reverseY);
  });
}

void CQvPixelFormatConverter::ConverterPolarizationImageToMono(IQvImage* source,
                                                               IQvImageBuffer* destination,
                                                               bool reverseY) {
  const auto method = GetPolarizationMethod(*source, *destination->GetIQvImage());
  if (method == QvPolarizationImageTransformationMethod_OFF)
    return ConverterPolarizationOff(source, destination, reverseY);
  if (method == QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization)
    return ConverterViaSameBitBGR(source, destination, reverseY);
  WithAlignedImages(*this, *source, *destination, [&](IQvImage& image, IQvImageBuffer& buffer) {
    const SampleLines from(image), to(*buffer.GetIQvImage(), reverseY);
    const LockedDepthChange depth =
        LockDepthChange(m_depthTables, from.Depth(), to.Depth(), m_gamma, m_bitExpansionMode);
    if (method == QvPolarizationImageTransformationMethod_EachAngle)
      return SplitAngles(from, to, depth.change);
    Polarize(from, to, Neighbourhood::Window, GetPolarizationOperation(method, from.Depth()),
             depth.change);
  });
}

void CQvPixelFormatConverter::ConverterPolarizationImageToBGR(IQvImage* source,
                                                              IQvImageBuffer* destination,
                                                              bool reverseY) {
  const auto method = GetPolarizationMethod(*source, *destination->GetIQvImage());
  if (method != QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization) {
    const std::size_t depth =
        FormatInfo(source->GetImagePixelFormat()).GetEachComponentEffectiveBitCount();
    return ConvertViaTmp(source, destination,
                         FindRawFormat(BayerPhase::Mono, depth, Storage::Unpacked), reverseY);
  }
  WithAlignedImages(*this, *source, *destination, [&](IQvImage& from, IQvImageBuffer& to) {
    PolarizeToColor(SampleLines(from), SampleLines(*to.GetIQvImage(), reverseY),
                    GetPolarizationHueStyle());
  });
}

}  // namespace QvApi
