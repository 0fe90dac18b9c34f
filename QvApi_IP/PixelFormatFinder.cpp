// SPDX-License-Identifier: MIT
#include "QvApi_IP/PixelFormatFinder.h"

#include "QvSDKCommon/QvAssert.h"

namespace QvApi {
namespace {

template <class Predicate>
PixelFormat FindFormat(Predicate predicate) {
  for (const PixelFormatRow& row : kPixelFormats)
    if (predicate(row)) return row.format;
  return PixelFormat::None;
}

const PixelFormatRow& RowOf(PixelFormat format) {
  const PixelFormatRow* row = FindPixelFormat(format);
  QV_ASSERT(row);
  return *row;
}

/// The phase of a Bayer mosaic whose rows are exchanged in pairs.
BayerPhase FlippedPhase(BayerPhase phase) {
  switch (phase) {
    case BayerPhase::RG:
      return BayerPhase::GB;
    case BayerPhase::GR:
      return BayerPhase::BG;
    case BayerPhase::GB:
      return BayerPhase::RG;
    case BayerPhase::BG:
      return BayerPhase::GR;
    default:
      return phase;
  }
}

PixelFormat FlippedBayer(BayerPhase sourcePhase, const PixelFormatRow& destination) {
  BayerPhase phase = FlippedPhase(sourcePhase);
  if (destination.depth <= 8) return FindRawFormat(phase, 8, Storage::Unpacked);
  // With 12 bits of GigE Vision packing these two stand in each other's place.
  if (destination.depth == 12 && destination.storage == Storage::GevPacked) {
    if (phase == BayerPhase::RG)
      phase = BayerPhase::GR;
    else if (phase == BayerPhase::GR)
      phase = BayerPhase::RG;
  }
  return FindRawFormat(phase, destination.depth, destination.storage);
}

/// Arrangements come in groups of four: plain, X, Y, XY. Upside down, plain and Y trade places, and
/// so do X and XY. The group is the destination's, the place in it the source's.
PixelFormat FlippedPolarized(const PixelFormatRow& source, const PixelFormatRow& destination) {
  const unsigned place = (source.polarizerPattern - 1U + 2U) & 3U;
  const unsigned group = (destination.polarizerPattern - 1U) & ~3U;
  return FindPolarizedFormat(destination.kind, destination.depth, destination.storage,
                             group + place + 1);
}

}  // namespace

PixelFormat FindRawFormat(BayerPhase phase, std::size_t depth, Storage storage) {
  const PixelKind kind = phase == BayerPhase::Mono ? PixelKind::Mono : PixelKind::Bayer;
  return FindFormat([&](const PixelFormatRow& row) {
    return row.kind == kind && row.phase == phase && row.depth == depth && row.storage == storage;
  });
}

PixelFormat FindPolarizedFormat(PixelKind kind, std::size_t depth, Storage storage,
                                unsigned pattern) {
  return FindFormat([&](const PixelFormatRow& row) {
    return row.kind == kind && row.depth == depth && row.storage == storage &&
           row.polarizerPattern == pattern;
  });
}

PixelFormat FindBGRa(std::size_t depth) {
  return FindFormat([&](const PixelFormatRow& row) {
    return row.kind == PixelKind::Color && row.IsBGR() && row.componentCount == 4 &&
           row.storage == Storage::Unpacked && row.depth == depth;
  });
}

PixelFormat UnpackedFormat(PixelFormat format) {
  const PixelFormatRow& row = RowOf(format);
  const std::size_t depth = row.depth < 8 ? 8 : row.depth;
  return row.IsPolarized()
             ? FindPolarizedFormat(row.kind, depth, Storage::Unpacked, row.polarizerPattern)
             : FindRawFormat(row.phase, depth, Storage::Unpacked);
}

PixelFormat FlippedFormat(PixelFormat source, PixelFormat destination, std::size_t height) {
  const PixelFormatRow& from = RowOf(source);
  const PixelFormatRow& to = RowOf(destination);
  if (from.IsPolarized() && to.IsPolarized()) return FlippedPolarized(from, to);
  if (height % 2 == 0 && from.IsBayer() && to.IsBayer()) return FlippedBayer(from.phase, to);
  return destination;
}

}  // namespace QvApi
