// SPDX-License-Identifier: MIT
#include "QvApi_IP/ColorInterpolation/ToYCbCr.h"

#include <cstring>

#include "QvApi_IP/ColorInterpolation/YCbCrImages.h"
#include "QvApi_IP/Kernels/BayerPhase.h"
#include "QvApi_IP/Kernels/DepthChange.h"
#include "QvApi_IP/Kernels/YCbCr.h"

namespace QvApi {
namespace {

using Kernels::YCbCrComponents;
using Kernels::YCbCrMatrix;

/// Takes components of interleaved lines.
class InterleavedTarget {
 public:
  InterleavedTarget(const ImageLines& lines, const PixelFormatRow& row)
      : m_lines(lines), m_matrix(MatrixOf(row)), m_layout(LayoutOf(row)) {}

  YCbCrMatrix Matrix() const { return m_matrix; }
  std::size_t Group() const { return m_layout.pixels; }
  /// Pixels of a line that have chrominance.
  std::size_t ChromaPixels() const { return m_lines.Width(); }

  YCbCrComponents Components(std::size_t, std::size_t) {
    return {m_room.luma.data(), m_room.cb.data(), m_room.cr.data()};
  }
  void Finish(std::size_t x, std::size_t y, std::size_t width) const {
    Kernels::WeaveYCbCr(m_layout, {m_room.luma.data(), m_room.cb.data(), m_room.cr.data()},
                        m_lines.Line<std::uint8_t>(y) + x / m_layout.pixels * m_layout.bytes,
                        width);
  }

 private:
  const ImageLines& m_lines;
  const YCbCrMatrix m_matrix;
  const Kernels::YCbCrLayout m_layout;
  YCbCrRoom m_room;
};

/// Takes components of planar 4:2:0, where they belong at once.
class PlanarTarget {
 public:
  PlanarTarget(const ImageLines& lines, bool reverse) : m_lines(lines, reverse) {}

  YCbCrMatrix Matrix() const { return YCbCrMatrix::Full; }
  std::size_t Group() const { return 2; }
  std::size_t ChromaPixels() const { return 2 * m_lines.ChromaWidth(); }

  /// Odd lines have luminance only, and so has a last line that the chrominance planes do not have.
  YCbCrComponents Components(std::size_t x, std::size_t y) const {
    std::uint8_t* luma = m_lines.Luma(y) + x;
    if (y % 2 != 0 || y / 2 >= m_lines.ChromaHeight()) return {luma, nullptr, nullptr};
    return {luma, m_lines.Cb(y / 2) + x / 2, m_lines.Cr(y / 2) + x / 2};
  }
  void Finish(std::size_t, std::size_t, std::size_t) const {}

 private:
  const Planar420Lines m_lines;
};

template <class Target>
void ColorToYCbCr(const ImageLines& from, Target& to) {
  const Kernels::YCbCrSource source{.step = from.Components(), .isBGR = from.Format().IsBGR()};
  for (std::size_t y = 0; y < from.Height(); ++y) {
    ForEachYCbCrPiece(from.Width(), [&](std::size_t x, std::size_t width) {
      const std::uint8_t* pixels = from.Line<std::uint8_t>(y) + x * source.step;
      const YCbCrComponents components = to.Components(x, y);
      const std::size_t group = components.cb ? to.Group() : 0;
      const std::size_t whole = std::min(width, to.ChromaPixels() - x);
      Kernels::PixelsToYCbCr(to.Matrix(), source, pixels, group, components, whole);
      if (whole < width)
        Kernels::PixelsToYCbCr(to.Matrix(), source, pixels + whole * source.step, 0,
                               {components.luma + whole, nullptr, nullptr}, width - whole);
      to.Finish(x, y, width);
    });
  }
}

/// The two rows of a mosaic that colours of a row come from: this one and the next, or for the last
/// one that before.
std::size_t OtherRow(std::size_t y, std::size_t height) {
  return y + 1 < height ? y + 1 : height >= 2 ? height - 2 : 0;
}

/// Tiles of a piece of two rows of a mosaic. An odd last column takes the values of the one before.
template <class Target>
void BayerPieceToYCbCr(const std::uint8_t* row, const std::uint8_t* otherRow, int phase,
                       const Target& to, const YCbCrComponents& components, std::size_t x,
                       std::size_t width, bool isLineEnd) {
  Kernels::BayerTilesToYCbCr(row, otherRow, phase, components, width / 2, isLineEnd ? 0 : 1);
  if (width % 2 == 0) return;
  const std::size_t last = width - 1;
  components.luma[last] = components.luma[last - 1];
  if (components.cb && x + last < to.ChromaPixels()) {
    components.cb[last / 2] = components.cb[last / 2 - 1];
    components.cr[last / 2] = components.cr[last / 2 - 1];
  }
}

template <class Target>
void BayerToYCbCr(const ImageLines& from, Target& to) {
  const int phase = from.Format().GetPixelColorFilter(0, 0);
  const std::size_t lineWidth = from.Width();
  for (std::size_t y = 0; y < from.Height(); ++y) {
    const std::uint8_t* row = from.Line<std::uint8_t>(y);
    const std::uint8_t* other = from.Line<std::uint8_t>(OtherRow(y, from.Height()));
    const int rowPhase = y % 2 == 0 ? phase : Kernels::PhaseOfNextRow(phase);
    ForEachYCbCrPiece(lineWidth, [&](std::size_t x, std::size_t width) {
      const YCbCrComponents components = to.Components(x, y);
      if (width == 1) {
        // The only column serves for both of a tile.
        const std::array<std::uint8_t, 2> pair{row[0], row[0]}, otherPair{other[0], other[0]};
        YCbCrRoom room;
        Kernels::BayerTilesToYCbCr(pair.data(), otherPair.data(), rowPhase,
                                   {room.luma.data(), room.cb.data(), room.cr.data()}, 1, 0);
        components.luma[0] = room.luma[0];
        if (components.cb && to.ChromaPixels() != 0) {
          components.cb[0] = room.cb[0];
          components.cr[0] = room.cr[0];
        }
      } else {
        BayerPieceToYCbCr(row + x, other + x, rowPhase, to, components, x, width,
                          x + width == lineWidth);
      }
      to.Finish(x, y, width);
    });
  }
}

/// Grey is luminance as it is; its upper 8 bits if it has more.
void MonoToPlanar(const ImageLines& from, const ImageLines& to, bool reverse) {
  const Planar420Lines planes(to, reverse);
  const std::size_t width = from.Width(), height = from.Height();
  const auto depth = static_cast<unsigned>(from.Depth());
  const auto change = Kernels::DepthChange::CutOff(depth, 8);
  for (std::size_t y = 0; y < height; ++y) {
    if (depth > 8)
      Kernels::ChangeDepth(change, from.Line<const std::uint16_t>(y), planes.Luma(y), width);
    else
      std::memcpy(planes.Luma(y), from.Line<const std::uint8_t>(y), width);
  }
  std::memset(to.Line<std::uint8_t>(0) + width * height, 128, width * height / 2);
}

}  // namespace

void ConverterBayerToYCrCb(IQvImage* source, IQvImageBuffer* destination, bool reverse) {
  const IQvImage& target = *destination->GetIQvImage();
  const PixelFormatRow& sourceRow = *FindPixelFormat(source->GetImagePixelFormat());
  const PixelFormatRow& targetRow = *FindPixelFormat(target.GetImagePixelFormat());
  const ImageLines from(*source);

  if (IsPlanar420(target)) {
    const ImageLines to(target);
    PlanarTarget planar(to, reverse);
    if (sourceRow.IsBayer() && sourceRow.depth == 8) return BayerToYCbCr(from, planar);
    if (sourceRow.kind == PixelKind::Mono) return MonoToPlanar(from, to, reverse);
    if (sourceRow.kind == PixelKind::Color) return ColorToYCbCr(from, planar);
    return;
  }
  if (targetRow.kind != PixelKind::YCbCr) return;
  const ImageLines to(target, reverse);
  InterleavedTarget interleaved(to, targetRow);
  if (sourceRow.kind == PixelKind::Color) return ColorToYCbCr(from, interleaved);
  if (sourceRow.IsBayer() && sourceRow.depth == 8 && targetRow.format == PixelFormat::YCbCr422_8)
    BayerToYCbCr(from, interleaved);
}

}  // namespace QvApi
