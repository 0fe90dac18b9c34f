// SPDX-License-Identifier: MIT
#include "QvApi_IP/ColorInterpolation/ColorInterpolation_YCbCr.h"

#include <cstring>
#include <optional>

#include "QvApi_IP/ColorInterpolation/YCbCrImages.h"
#include "QvApi_IP/Kernels/Lookup.h"
#include "QvApi_IP/Kernels/YCbCr.h"

namespace QvApi {
namespace {

using Kernels::YCbCrMatrix;
using Kernels::YCbCrPlanes;

/// Interleaved lines taken apart, piece by piece.
class InterleavedSource {
 public:
  InterleavedSource(const ImageLines& lines, const PixelFormatRow& row)
      : m_lines(lines), m_matrix(MatrixOf(row)), m_layout(LayoutOf(row)) {}

  YCbCrMatrix Matrix() const { return m_matrix; }
  std::size_t Width() const { return m_lines.Width(); }
  std::size_t Height() const { return m_lines.Height(); }

  YCbCrPlanes Planes(std::size_t x, std::size_t y, std::size_t width) {
    const std::uint8_t* line = m_lines.Line<std::uint8_t>(y);
    Kernels::UnweaveYCbCr(m_layout, line + x / m_layout.pixels * m_layout.bytes, x != 0,
                          {m_room.luma.data(), m_room.cb.data(), m_room.cr.data()}, width);
    return {m_room.luma.data(), m_room.cb.data(), m_room.cr.data(), m_layout.ChromaGroup()};
  }

 private:
  const ImageLines& m_lines;
  const YCbCrMatrix m_matrix;
  const Kernels::YCbCrLayout m_layout;
  YCbCrRoom m_room;
};

void InterleavedToColor(InterleavedSource& from, const ImageLines& to) {
  const std::size_t step = to.Components();
  const bool isBGR = to.Format().IsBGR();
  for (std::size_t y = 0; y < from.Height(); ++y) {
    ForEachYCbCrPiece(from.Width(), [&](std::size_t x, std::size_t width) {
      Kernels::PlanesToColor(from.Matrix(), from.Planes(x, y, width),
                             to.Line<std::uint8_t>(y) + x * step, step, isBGR, width);
    });
  }
}

/// Where the chrominance of a line begins, and that of an odd last column.
struct PlanarChroma {
  const std::uint8_t *cb, *cr, *lastCb, *lastCr;
};

PlanarChroma ChromaOfLine(const Planar420Lines& planes, std::size_t y) {
  static constexpr std::uint8_t kGrey = 128;
  if (planes.ChromaHeight() == 0 || planes.ChromaWidth() == 0)
    return {nullptr, nullptr, &kGrey, &kGrey};
  const std::size_t line = std::min(y / 2, planes.ChromaHeight() - 1);
  const std::uint8_t *cb = planes.Cb(line), *cr = planes.Cr(line);
  const std::size_t last = planes.ChromaWidth() - 1;
  return {cb, cr, cb + last, cr + last};
}

void PlanarToColor(const ImageLines& from, const ImageLines& to) {
  const Planar420Lines planes(from);
  const std::size_t step = to.Components();
  const bool isBGR = to.Format().IsBGR();
  for (std::size_t y = 0; y < from.Height(); ++y) {
    const PlanarChroma chroma = ChromaOfLine(planes, y);
    std::uint8_t* pixels = to.Line<std::uint8_t>(y);
    const std::uint8_t* luma = planes.Luma(y);
    const std::size_t paired = chroma.cb ? 2 * planes.ChromaWidth() : 0;
    Kernels::PlanesToColor(YCbCrMatrix::Bt601, {luma, chroma.cb, chroma.cr, 2}, pixels, step, isBGR,
                           paired);
    for (std::size_t x = paired; x < from.Width(); ++x)
      Kernels::PlanesToColor(YCbCrMatrix::Bt601, {luma + x, chroma.lastCb, chroma.lastCr, 1},
                             pixels + x * step, step, isBGR, 1);
  }
}

/// Stretches luminance of studio range.
Kernels::PreparedLookup<std::uint8_t> MakeStretch(YCbCrMatrix matrix) {
  std::array<std::uint16_t, 256> entries;
  for (std::size_t i = 0; i < entries.size(); ++i)
    entries[i] = static_cast<std::uint16_t>(YCrCbTableOf(matrix)[0][i] >> Kernels::kYCbCrFraction);
  return Kernels::PreparedLookup<std::uint8_t>(Kernels::LookupPattern(entries.data()));
}

void InterleavedToMono(InterleavedSource& from, const ImageLines& to) {
  std::optional<Kernels::PreparedLookup<std::uint8_t>> stretch;
  if (from.Matrix() != YCbCrMatrix::Full) stretch = MakeStretch(from.Matrix());
  for (std::size_t y = 0; y < from.Height(); ++y) {
    ForEachYCbCrPiece(from.Width(), [&](std::size_t x, std::size_t width) {
      const std::uint8_t* luma = from.Planes(x, y, width).luma;
      std::uint8_t* grey = to.Line<std::uint8_t>(y) + x;
      if (stretch)
        Kernels::LookupLine(*stretch, luma, grey, width);
      else
        std::memcpy(grey, luma, width);
    });
  }
}

}  // namespace

void mvTransform_YCrCb2BGR(IQvImage* source, IQvImage* destination, bool reverse) {
  const PixelFormatRow& row = *FindPixelFormat(source->GetImagePixelFormat());
  if (row.kind != PixelKind::YCbCr) return;
  const ImageLines from(*source), to(*destination, reverse);
  if (IsPlanar420(*source)) return PlanarToColor(from, to);
  InterleavedSource lines(from, row);
  InterleavedToColor(lines, to);
}

void mvTransform_YCrCb2Mono(IQvImage* source, IQvImage* destination, bool reverse) {
  const PixelFormatRow& row = *FindPixelFormat(source->GetImagePixelFormat());
  if (row.kind != PixelKind::YCbCr) return;
  const ImageLines from(*source), to(*destination, reverse);
  if (IsPlanar420(*source)) {
    const Planar420Lines planes(from);
    for (std::size_t y = 0; y < from.Height(); ++y)
      std::memcpy(to.Line<std::uint8_t>(y), planes.Luma(y), from.Width());
    return;
  }
  InterleavedSource lines(from, row);
  InterleavedToMono(lines, to);
}

}  // namespace QvApi
