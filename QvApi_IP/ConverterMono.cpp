// SPDX-License-Identifier: MIT
// Handlers from and to single components: depth, packing, grey to colour and back.
#include <array>
#include <type_traits>

#include "QvApi_IP/ConverterSamples.h"
#include "QvApi_IP/Kernels/Lookup.h"
#include "QvApi_IP/Kernels/Planes.h"

namespace QvApi {
namespace {

using Kernels::DepthChange;

template <class S, class D>
void RawToRaw(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  PieceRoom<D> room;
  ForEachPiece(from, [&](const LinePiece& piece) {
    to.Write(piece, ReadChanged<S>(from, piece, change, to.Target<D>(piece, room)));
  });
}

template <class S, class D>
void MonoToColor(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  PieceRoom<D> changed;
  ForEachPiece(from, [&](const LinePiece& piece) {
    const D* grey = ReadChanged<S, D>(from, piece, change, changed);
    Kernels::MergePixels({grey, grey, grey}, to.Samples<D>(piece), to.Step(), piece.width);
  });
}

void MonoToMappedColor(const SampleLines& from, const SampleLines& to,
                       const CColorMapTableManager::Table& colors) {
  using Lookup = Kernels::PreparedLookup<std::uint8_t>;
  const bool isBGR = to.Format().IsBGR();
  const std::array<Lookup, 3> lookups{Lookup(Kernels::LookupPattern{colors[isBGR ? 0 : 2].data()}),
                                      Lookup(Kernels::LookupPattern{colors[1].data()}),
                                      Lookup(Kernels::LookupPattern{colors[isBGR ? 2 : 0].data()})};
  std::array<PieceRoom<std::uint8_t>, 3> mapped;
  ForEachPiece(from, [&](const LinePiece& piece) {
    const auto* grey = from.Samples<const std::uint8_t>(piece);
    for (std::size_t c = 0; c < 3; ++c)
      Kernels::LookupLine(lookups[c], grey, mapped[c], piece.width);
    Kernels::MergePixels({mapped[0], mapped[1], mapped[2]}, to.Samples<std::uint8_t>(piece),
                         to.Step(), piece.width);
  });
}

template <class S, class D>
void MonoToPlanar(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  PieceRoom<D> changed;
  ForEachPiece(from, [&](const LinePiece& piece) {
    const D* grey = ReadChanged<S, D>(from, piece, change, changed);
    for (std::size_t plane = 0; plane < 3; ++plane) to.Write(piece, grey, plane);
  });
}

template <class S, class D>
void ColorToMono(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  const Kernels::ColorPixels layout{
      .step = from.Step(), .isBGR = from.Format().IsBGR(), .depth = from.Row().depth};
  PieceRoom<S> read, grey;
  ForEachPiece(from, [&](const LinePiece& piece) {
    const S* pixels = from.Read<S>(piece, read);
    D* target = to.Samples<D>(piece);
    if constexpr (std::is_same_v<S, D>) {
      if (change.isIdentity) return Kernels::PixelsToGrey(layout, pixels, target, piece.width);
    }
    Kernels::PixelsToGrey(layout, pixels, grey, piece.width);
    Kernels::ChangeDepth(change, grey, target, piece.width);
  });
}

}  // namespace

void CQvPixelFormatConverter::ConverterRawToRaw(IQvImage* source, IQvImageBuffer* destination,
                                                bool reverseY) {
  ConvertSamples(source, destination, reverseY,
                 []<class S, class D>(S, D, const auto&... image) { RawToRaw<S, D>(image...); });
}

void CQvPixelFormatConverter::ConverterMonoToColor(IQvImage* source, IQvImageBuffer* destination,
                                                   bool reverseY) {
  const SampleLines from(*source), to(*destination->GetIQvImage(), reverseY);
  if (!from.IsWide() && !to.IsWide()) {
    const auto colors =
        m_colorMapTable.LockTable(m_colorMapType, m_colorMapInversion, m_colorMapPhase);
    if (colors) return MonoToMappedColor(from, to, *colors);
  }
  ConvertSamples(source, destination, reverseY,
                 []<class S, class D>(S, D, const auto&... image) { MonoToColor<S, D>(image...); });
}

void CQvPixelFormatConverter::ConverterMonoToPlanar(IQvImage* source, IQvImageBuffer* destination,
                                                    bool reverseY) {
  ConvertSamples(source, destination, reverseY, []<class S, class D>(S, D, const auto&... image) {
    MonoToPlanar<S, D>(image...);
  });
}

void CQvPixelFormatConverter::ConverterColorToMono(IQvImage* source, IQvImageBuffer* destination,
                                                   bool reverseY) {
  ConvertSamples(source, destination, reverseY,
                 []<class S, class D>(S, D, const auto&... image) { ColorToMono<S, D>(image...); });
}

}  // namespace QvApi
