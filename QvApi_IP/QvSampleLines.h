// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "QvApi_IP/Kernels/BitPacking.h"
#include "QvApi_IP/Kernels/ChannelOrder.h"
#include "QvApi_IP/Kernels/DepthChange.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_TL/PixelFormatTable.h"

namespace QvApi {

/// Pixels of a piece of a line at most. What a piece is made into on its way stays in the
/// first-level cache, on the stack. Pieces of packed lines start on a whole byte.
inline constexpr std::size_t kPiecePixels = 1024;

/// Some pixels of one line of an image.
struct LinePiece {
  std::size_t y;
  std::size_t x;
  std::size_t width;
};

/// Room for the samples of a piece, four a pixel at most.
template <class T>
struct PieceRoom {
  operator T*() { return samples.data(); }
  alignas(64) std::array<T, 4 * kPiecePixels> samples;
};

/// Lines of an image as samples in bytes or 16-bit words, however they lie in memory: those of
/// packed formats are brought into a room and from there.
class SampleLines : public ImageLines {
 public:
  explicit SampleLines(const IQvImage& image, bool upward = false)
      : ImageLines(image, upward),
        m_row(*FindPixelFormat(Format().GetPixelFormat())),
        m_packed{.kind = m_row.storage == Storage::GevPacked ? Kernels::PackedLayout::Kind::Gev
                                                             : Kernels::PackedLayout::Kind::Lsb,
                 .bits = m_row.depth} {}

  const PixelFormatRow& Row() const { return m_row; }
  bool IsPacked() const {
    return m_row.storage == Storage::LsbPacked || m_row.storage == Storage::GevPacked;
  }
  /// Samples lie in words of their own.
  bool IsUnpacked() const { return !IsPacked() && m_row.storage != Storage::Word32; }
  /// Samples are 16-bit words, unpacked ones at least.
  bool IsWide() const { return m_row.depth > 8 || IsPacked(); }
  /// Samples from pixel to pixel, unpacked.
  std::size_t Step() const { return m_row.storage == Storage::Planar ? 1 : Components(); }

  /// Where the samples of a piece lie; unpacked formats only.
  template <class T>
  T* Samples(const LinePiece& piece, std::size_t plane = 0) const {
    return Line<T>(piece.y, plane) + piece.x * Step();
  }

  /// The samples of a piece: where they lie, or else in `room`.
  template <class T>
  const T* Read(const LinePiece& piece, T* room, std::size_t plane = 0) const {
    if constexpr (sizeof(T) == 2) {
      if (!IsUnpacked()) return Unpack(piece, room);
    }
    return Samples<T>(piece, plane);
  }

  /// The upper bytes of the samples of a piece; packed formats of 8 bits and more only.
  void ReadHighBytes(const LinePiece& piece, std::uint8_t* samples) const {
    Kernels::UnpackHighBytes(m_packed, PackedBytes(piece), samples, piece.width * Step());
  }

  /// Where to put the samples of a piece: where they belong, or else `room`.
  template <class T>
  T* Target(const LinePiece& piece, T* room) const {
    return IsUnpacked() ? Samples<T>(piece) : room;
  }

  /// Stores `samples` as those of a piece, unless they lie there already. Not for pixels with
  /// alpha.
  template <class T>
  void Write(const LinePiece& piece, const T* samples, std::size_t plane = 0) const {
    if constexpr (sizeof(T) == 2) {
      if (!IsUnpacked()) return Pack(piece, samples);
    }
    T* target = Samples<T>(piece, plane);
    if (samples != target) std::memcpy(target, samples, piece.width * Step() * sizeof(T));
  }

  /// Stores `pixels` as those of a piece of a colour image, in another order. Alpha is not used,
  /// and that of the image keeps what it held.
  void WriteReordered(const LinePiece& piece, const std::uint8_t* pixels,
                      const Kernels::ChannelOrder& order) const;
  void WriteReordered(const LinePiece& piece, const std::uint16_t* pixels,
                      const Kernels::ChannelOrder& order) const;

 private:
  std::uint8_t* PackedBytes(const LinePiece& piece) const {
    return Line<std::uint8_t>(piece.y) + m_packed.Bytes(piece.x * Step());
  }

  const std::uint16_t* Unpack(const LinePiece& piece, std::uint16_t* room) const;
  void Pack(const LinePiece& piece, const std::uint16_t* samples) const;

  const PixelFormatRow& m_row;
  const Kernels::PackedLayout m_packed;
};

/// Calls `function(piece)` for all pieces of all lines.
template <class Function>
void ForEachPiece(const ImageLines& lines, Function function) {
  const std::size_t width = lines.Width();
  for (std::size_t y = 0; y < lines.Height(); ++y)
    for (std::size_t x = 0; x < width; x += kPiecePixels)
      function(LinePiece{.y = y, .x = x, .width = std::min(kPiecePixels, width - x)});
}

/// The samples of a piece with their depth changed: where they lie if nothing is to be done, or
/// else in `room`.
template <class S, class D>
const D* ReadChanged(const SampleLines& lines, const LinePiece& piece,
                     const Kernels::DepthChange& change, D* room, std::size_t plane = 0) {
  if constexpr (std::is_same_v<S, D>) {
    if (change.isIdentity) return lines.Read(piece, room, plane);
  }
  if constexpr (sizeof(D) == 1) {
    if (change.isHighByte && lines.IsPacked()) {
      lines.ReadHighBytes(piece, room);
      return room;
    }
  }
  PieceRoom<S> unpacked;
  const S* samples = lines.Read<S>(piece, unpacked, plane);
  Kernels::ChangeDepth(change, samples, room, piece.width * lines.Step());
  return room;
}

/// Calls `function(s, d)` with values of the types of the samples in source and destination.
template <class Function>
void WithSampleTypes(const SampleLines& from, const SampleLines& to, Function function) {
  const auto withDestination = [&](auto s) {
    to.IsWide() ? function(s, std::uint16_t{}) : function(s, std::uint8_t{});
  };
  from.IsWide() ? withDestination(std::uint16_t{}) : withDestination(std::uint8_t{});
}

}  // namespace QvApi
