// SPDX-License-Identifier: MIT
// Handlers between layouts of colour: order, alpha, depth, packing and planes.
#include <array>
#include <utility>

#include "QvApi_IP/ConverterSamples.h"
#include "QvApi_IP/Kernels/ChannelOrder.h"
#include "QvApi_IP/Kernels/Planes.h"

namespace QvApi {
namespace {

using Kernels::DepthChange;

/// Alpha of a source is not used, alpha of a destination keeps what it held.
template <class S, class D>
void ColorToColor(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  const Kernels::ChannelOrder order{.sourceComponents = static_cast<unsigned>(from.Step()),
                                    .destinationComponents = static_cast<unsigned>(to.Step()),
                                    .exchange = from.Format().IsBGR() != to.Format().IsBGR()};
  const bool keepsOrder = from.Step() == 3 && to.Step() == 3 && !order.exchange;
  PieceRoom<D> changed;
  ForEachPiece(from, [&](const LinePiece& piece) {
    D* room = keepsOrder ? to.Target<D>(piece, changed) : changed;
    const D* pixels = ReadChanged<S, D>(from, piece, change, room);
    keepsOrder ? to.Write(piece, pixels) : to.WriteReordered(piece, pixels, order);
  });
}

/// Planes come red first.
template <class T>
Kernels::PlaneLines<T> InOrderOf(const SampleLines& pixels, Kernels::PlaneLines<T> planes) {
  if (pixels.Format().IsBGR()) std::swap(planes[0], planes[2]);
  return planes;
}

template <class S, class D>
void ColorToPlanar(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  PieceRoom<D> changed;
  ForEachPiece(from, [&](const LinePiece& piece) {
    const D* pixels = ReadChanged<S, D>(from, piece, change, changed);
    const Kernels::PlaneLines<D> planes{to.Samples<D>(piece, 0), to.Samples<D>(piece, 1),
                                        to.Samples<D>(piece, 2)};
    Kernels::SplitPixels(pixels, from.Step(), InOrderOf(from, planes), piece.width);
  });
}

template <class S, class D>
void PlanarToColor(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  std::array<PieceRoom<D>, 3> changed;
  ForEachPiece(from, [&](const LinePiece& piece) {
    Kernels::PlaneLines<const D> planes;
    for (std::size_t p = 0; p < 3; ++p)
      planes[p] = ReadChanged<S, D>(from, piece, change, changed[p], p);
    Kernels::MergePixels(InOrderOf(to, planes), to.Samples<D>(piece), to.Step(), piece.width);
  });
}

template <class S, class D>
void PlanarToPlanar(const SampleLines& from, const SampleLines& to, const DepthChange& change) {
  for (std::size_t plane = 0; plane < 3; ++plane) {
    ForEachPiece(from, [&](const LinePiece& piece) {
      D* target = to.Samples<D>(piece, plane);
      to.Write(piece, ReadChanged<S, D>(from, piece, change, target, plane), plane);
    });
  }
}

}  // namespace

void CQvPixelFormatConverter::ConverterColorToColor(IQvImage* source, IQvImageBuffer* destination,
                                                    bool reverseY) {
  ConvertSamples(source, destination, reverseY, []<class S, class D>(S, D, const auto&... image) {
    ColorToColor<S, D>(image...);
  });
}

void CQvPixelFormatConverter::ConverterColorToPlanar(IQvImage* source, IQvImageBuffer* destination,
                                                     bool reverseY) {
  ConvertSamples(source, destination, reverseY, []<class S, class D>(S, D, const auto&... image) {
    ColorToPlanar<S, D>(image...);
  });
}

void CQvPixelFormatConverter::ConverterPlanarToColor(IQvImage* source, IQvImageBuffer* destination,
                                                     bool reverseY) {
  ConvertSamples(source, destination, reverseY, []<class S, class D>(S, D, const auto&... image) {
    PlanarToColor<S, D>(image...);
  });
}

void CQvPixelFormatConverter::ConverterPlanarToPlanar(IQvImage* source, IQvImageBuffer* destination,
                                                      bool reverseY) {
  ConvertSamples(source, destination, reverseY, []<class S, class D>(S, D, const auto&... image) {
    PlanarToPlanar<S, D>(image...);
  });
}

}  // namespace QvApi
