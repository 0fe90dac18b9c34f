// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvSampleLines.h"

#include <cstdlib>

#include "QvApi_IP/Kernels/Planes.h"

namespace QvApi {

const std::uint16_t* SampleLines::Unpack(const LinePiece& piece, std::uint16_t* room) const {
  if (IsPacked())
    Kernels::UnpackSamples(m_packed, PackedBytes(piece), room, piece.width * Step());
  else
    Kernels::UnpackPixelWords(Line<std::uint8_t>(piece.y) + 4 * piece.x, room, piece.width);
  return room;
}

void SampleLines::Pack(const LinePiece& piece, const std::uint16_t* samples) const {
  std::uint8_t* line = Line<std::uint8_t>(piece.y);
  if (!IsPacked())
    return Kernels::PackPixelWords(samples, 3, false, line + 4 * piece.x, piece.width);
  Kernels::PackSamples(m_packed, samples, PackedBytes(piece), piece.width * Step());
  // Colours are stored in whole 16-bit words, where the line has room.
  const std::size_t end = piece.x + piece.width;
  const std::size_t bytes = m_packed.Bytes(end * Step());
  const auto pitch = static_cast<std::size_t>(std::abs(Pitch()));
  if (Step() == 3 && end == Width() && bytes % 2 == 1 && bytes < pitch) line[bytes] = 0;
}

void SampleLines::WriteReordered(const LinePiece& piece, const std::uint8_t* pixels,
                                 const Kernels::ChannelOrder& order) const {
  Kernels::ReorderChannels(pixels, Samples<std::uint8_t>(piece), piece.width, order);
}

void SampleLines::WriteReordered(const LinePiece& piece, const std::uint16_t* pixels,
                                 const Kernels::ChannelOrder& order) const {
  if (m_row.storage == Storage::Word32)
    return Kernels::PackPixelWords(pixels, order.sourceComponents, order.exchange,
                                   Line<std::uint8_t>(piece.y) + 4 * piece.x, piece.width);
  PieceRoom<std::uint16_t> room;
  std::uint16_t* target = Target<std::uint16_t>(piece, room);
  Kernels::ReorderChannels(pixels, target, piece.width, order);
  if (!IsUnpacked()) Pack(piece, target);
}

}  // namespace QvApi
