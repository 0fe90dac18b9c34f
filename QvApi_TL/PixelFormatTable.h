// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "QvApi_TL/CodeIndex.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// What the pixels of a format are.
enum class PixelKind : std::uint8_t { Mono, Bayer, Color, YCbCr, PolarizedMono, PolarizedBayer };

/// How the samples of a format lie in memory.
enum class Storage : std::uint8_t {
  Unpacked,   ///< Each sample in a byte or a little-endian 16-bit (Mono32: 32-bit) word.
  LsbPacked,  ///< PFNC "p": a little-endian bit stream, low bits first.
  GevPacked,  ///< GigE Vision 1.x "Packed": two samples in three bytes.
  Word32,     ///< Three 10-bit components in a little-endian 32-bit word.
  Planar,     ///< One plane a component.
};

/// What GetPixelColorFilter() answers: the colours of the top left 2 x 2 tile.
enum class BayerPhase : std::uint8_t { NoMosaic = 0, Mono = 1, RG = 2, GR = 3, GB = 4, BG = 5 };

/// Order of the first and the third colour component in memory.
enum class Order : std::uint8_t { RGB, BGR };

/// One row of the table of pixel formats. Bits and counts are of one pixel.
struct PixelFormatRow {
  PixelFormat format;
  std::string_view name;
  PixelKind kind;
  Storage storage;
  std::uint8_t depth;           ///< Significant bits of a component.
  std::uint8_t componentCount;  ///< Components over all planes.
  std::uint8_t planeCount = 1;
  std::uint8_t bits = 0;           ///< Occupied bits in one plane.
  std::uint8_t componentBits = 0;  ///< Occupied bits of a component.
  std::uint8_t lineAlignment = 4;  ///< Default alignment of lines, in bytes.
  std::uint8_t roiIncrementX = 1;
  std::uint8_t roiIncrementY = 1;
  Order order = Order::RGB;
  BayerPhase phase = BayerPhase::NoMosaic;
  std::uint8_t polarizerPattern = 0;  ///< 1 to 8 for polarizer sensors, else 0.

  constexpr bool IsPolarized() const { return polarizerPattern != 0; }
  constexpr bool IsMono() const {
    return kind == PixelKind::Mono || kind == PixelKind::PolarizedMono;
  }
  constexpr bool IsColor() const { return !IsMono(); }
  constexpr bool IsBayer() const { return kind == PixelKind::Bayer; }
  constexpr bool IsBGR() const { return order == Order::BGR; }

  /// Significant bytes of a line in one plane; SIZE_MAX if that does not fit.
  constexpr std::size_t LineBytes(std::size_t width) const {
    if (width > (SIZE_MAX - 7) / bits) return SIZE_MAX;
    return (width * bits + 7) / 8;
  }

  /// LineBytes() rounded up to a multiple of `alignment` (any number; 0 counts as 1); SIZE_MAX if
  /// that does not fit. Planar 4:2:0 has width bytes a line whatever the alignment, since its
  /// chroma lines are half as long.
  constexpr std::size_t LinePitch(std::size_t width, std::size_t alignment) const {
    const std::size_t bytes = LineBytes(width);
    if (alignment <= 1 || bytes == SIZE_MAX || format == PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar)
      return bytes;
    const std::size_t rest = bytes % alignment;
    if (rest == 0) return bytes;
    return bytes > SIZE_MAX - (alignment - rest) ? SIZE_MAX : bytes + (alignment - rest);
  }
};

namespace PixelFormatRows {

constexpr std::uint8_t OccupiedBits(PixelFormat format) {
  return static_cast<std::uint8_t>(static_cast<std::uint32_t>(format) >> 16 & 0xFF);
}

/// The smallest number of pixels that ends on a whole byte.
constexpr std::uint8_t WholeBytePixels(int bits) {
  int pixels = 1;
  while (pixels * bits % 8 != 0) pixels *= 2;
  return static_cast<std::uint8_t>(pixels);
}

/// A format of one component in one plane; `tile` is the side of its mosaic of polarizers.
constexpr PixelFormatRow Raw(PixelFormat format, std::string_view name, PixelKind kind, int depth,
                             Storage storage, BayerPhase phase, std::uint8_t tile = 1) {
  const std::uint8_t bits = OccupiedBits(format);
  const std::uint8_t whole = WholeBytePixels(bits);
  return {.format = format,
          .name = name,
          .kind = kind,
          .storage = storage,
          .depth = static_cast<std::uint8_t>(depth),
          .componentCount = 1,
          .bits = bits,
          .componentBits = bits,
          .roiIncrementX = whole > tile ? whole : tile,
          .roiIncrementY = tile,
          .phase = phase};
}

constexpr PixelFormatRow Mono(PixelFormat format, std::string_view name, int depth,
                              Storage storage) {
  return Raw(format, name, PixelKind::Mono, depth, storage, BayerPhase::Mono);
}

constexpr PixelFormatRow Bayer(PixelFormat format, std::string_view name, BayerPhase phase,
                               int depth, Storage storage) {
  return Raw(format, name, PixelKind::Bayer, depth, storage, phase);
}

constexpr PixelFormatRow Color(PixelFormat format, std::string_view name, Order order,
                               int components, int depth, Storage storage) {
  const bool planar = storage == Storage::Planar;
  const int bits = planar ? (depth > 8 ? 16 : 8) : OccupiedBits(format);
  return {.format = format,
          .name = name,
          .kind = PixelKind::Color,
          .storage = storage,
          .depth = static_cast<std::uint8_t>(depth),
          .componentCount = static_cast<std::uint8_t>(components),
          .planeCount = static_cast<std::uint8_t>(planar ? components : 1),
          .bits = static_cast<std::uint8_t>(bits),
          .componentBits = static_cast<std::uint8_t>(planar ? bits : bits / components),
          .roiIncrementX = WholeBytePixels(bits),
          .order = order};
}

/// Interleaved luminance and chrominance of 8 bits: 4:4:4, 4:2:2 or 4:1:1 by its occupied bits.
/// The components are such that their count times their bits is what a pixel occupies on average.
constexpr PixelFormatRow YCbCr(PixelFormat format, std::string_view name) {
  const std::uint8_t bits = OccupiedBits(format);
  const std::uint8_t components = bits == 16 ? 2 : 3;
  return {.format = format,
          .name = name,
          .kind = PixelKind::YCbCr,
          .storage = Storage::Unpacked,
          .depth = 8,
          .componentCount = components,
          .bits = bits,
          .componentBits = static_cast<std::uint8_t>(bits / components),
          .roiIncrementX = static_cast<std::uint8_t>(bits == 24   ? 1
                                                     : bits == 16 ? 2
                                                                  : 4)};
}

/// A luminance plane, then Cb and Cr of half the width and half the height. Sized as three planes.
constexpr PixelFormatRow PlanarYCbCr420(PixelFormat format, std::string_view name) {
  return {.format = format,
          .name = name,
          .kind = PixelKind::YCbCr,
          .storage = Storage::Planar,
          .depth = 8,
          .componentCount = 3,
          .planeCount = 3,
          .bits = 8,
          .componentBits = 8,
          .lineAlignment = 1};
}

/// A mosaic of polarizers; `pattern` numbers the arrangement of the tile.
constexpr PixelFormatRow Polarized(PixelFormatRow row, int pattern) {
  row.polarizerPattern = static_cast<std::uint8_t>(pattern);
  return row;
}

constexpr PixelFormatRow PolarizedMono(PixelFormat format, std::string_view name, int pattern,
                                       int depth, Storage storage) {
  return Polarized(Raw(format, name, PixelKind::PolarizedMono, depth, storage, BayerPhase::Mono, 2),
                   pattern);
}

constexpr PixelFormatRow PolarizedBayer(PixelFormat format, std::string_view name, int pattern,
                                        int depth, Storage storage) {
  return Polarized(
      Raw(format, name, PixelKind::PolarizedBayer, depth, storage, BayerPhase::NoMosaic, 4),
      pattern);
}

#define QV_FORMAT(name) PixelFormat::name, #name

// clang-format off
inline constexpr std::array kTable{
    // Monochrome.
    Mono(QV_FORMAT(Mono1p), 1, Storage::LsbPacked),
    Mono(QV_FORMAT(Mono2p), 2, Storage::LsbPacked),
    Mono(QV_FORMAT(Mono4p), 4, Storage::LsbPacked),
    Mono(QV_FORMAT(Mono8), 8, Storage::Unpacked),
    Mono(QV_FORMAT(Mono8s), 8, Storage::Unpacked),
    Mono(QV_FORMAT(Mono10), 10, Storage::Unpacked),
    Mono(QV_FORMAT(Mono10p), 10, Storage::LsbPacked),
    Mono(QV_FORMAT(Mono10Packed), 10, Storage::GevPacked),
    Mono(QV_FORMAT(Mono12), 12, Storage::Unpacked),
    Mono(QV_FORMAT(Mono12p), 12, Storage::LsbPacked),
    Mono(QV_FORMAT(Mono12Packed), 12, Storage::GevPacked),
    Mono(QV_FORMAT(Mono14), 14, Storage::Unpacked),
    Mono(QV_FORMAT(Mono14p), 14, Storage::LsbPacked),
    Mono(QV_FORMAT(Mono16), 16, Storage::Unpacked),
    Mono(QV_FORMAT(Mono32), 32, Storage::Unpacked),
    // Bayer mosaics, by layout; phases in PFNC's order.
    Bayer(QV_FORMAT(BayerGR4p), BayerPhase::GR, 4, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerRG4p), BayerPhase::RG, 4, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGB4p), BayerPhase::GB, 4, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerBG4p), BayerPhase::BG, 4, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGR8), BayerPhase::GR, 8, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerRG8), BayerPhase::RG, 8, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGB8), BayerPhase::GB, 8, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerBG8), BayerPhase::BG, 8, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGR10), BayerPhase::GR, 10, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerRG10), BayerPhase::RG, 10, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGB10), BayerPhase::GB, 10, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerBG10), BayerPhase::BG, 10, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGR10p), BayerPhase::GR, 10, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerRG10p), BayerPhase::RG, 10, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGB10p), BayerPhase::GB, 10, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerBG10p), BayerPhase::BG, 10, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGR10Packed), BayerPhase::GR, 10, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerRG10Packed), BayerPhase::RG, 10, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerGB10Packed), BayerPhase::GB, 10, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerBG10Packed), BayerPhase::BG, 10, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerGR12), BayerPhase::GR, 12, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerRG12), BayerPhase::RG, 12, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGB12), BayerPhase::GB, 12, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerBG12), BayerPhase::BG, 12, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGR12p), BayerPhase::GR, 12, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerRG12p), BayerPhase::RG, 12, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGB12p), BayerPhase::GB, 12, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerBG12p), BayerPhase::BG, 12, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGR12Packed), BayerPhase::GR, 12, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerRG12Packed), BayerPhase::RG, 12, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerGB12Packed), BayerPhase::GB, 12, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerBG12Packed), BayerPhase::BG, 12, Storage::GevPacked),
    Bayer(QV_FORMAT(BayerGR14), BayerPhase::GR, 14, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerRG14), BayerPhase::RG, 14, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGB14), BayerPhase::GB, 14, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerBG14), BayerPhase::BG, 14, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGR14p), BayerPhase::GR, 14, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerRG14p), BayerPhase::RG, 14, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGB14p), BayerPhase::GB, 14, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerBG14p), BayerPhase::BG, 14, Storage::LsbPacked),
    Bayer(QV_FORMAT(BayerGR16), BayerPhase::GR, 16, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerRG16), BayerPhase::RG, 16, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerGB16), BayerPhase::GB, 16, Storage::Unpacked),
    Bayer(QV_FORMAT(BayerBG16), BayerPhase::BG, 16, Storage::Unpacked),
    // Colour.
    Color(QV_FORMAT(BGR8), Order::BGR, 3, 8, Storage::Unpacked),
    Color(QV_FORMAT(RGB8), Order::RGB, 3, 8, Storage::Unpacked),
    Color(QV_FORMAT(BGRa8), Order::BGR, 4, 8, Storage::Unpacked),
    Color(QV_FORMAT(RGBa8), Order::RGB, 4, 8, Storage::Unpacked),
    Color(QV_FORMAT(RGB8_Planar), Order::RGB, 3, 8, Storage::Planar),
    Color(QV_FORMAT(BGR10), Order::BGR, 3, 10, Storage::Unpacked),
    Color(QV_FORMAT(BGRa10), Order::BGR, 4, 10, Storage::Unpacked),
    Color(QV_FORMAT(RGB10_Planar), Order::RGB, 3, 10, Storage::Planar),
    Color(QV_FORMAT(RGB10p32), Order::RGB, 3, 10, Storage::Word32),
    Color(QV_FORMAT(BGR10p), Order::BGR, 3, 10, Storage::LsbPacked),
    Color(QV_FORMAT(BGRa10p), Order::BGR, 4, 10, Storage::LsbPacked),
    Color(QV_FORMAT(RGB10p), Order::RGB, 3, 10, Storage::LsbPacked),
    Color(QV_FORMAT(BGR12), Order::BGR, 3, 12, Storage::Unpacked),
    Color(QV_FORMAT(BGRa12), Order::BGR, 4, 12, Storage::Unpacked),
    Color(QV_FORMAT(RGB12_Planar), Order::RGB, 3, 12, Storage::Planar),
    Color(QV_FORMAT(BGR12p), Order::BGR, 3, 12, Storage::LsbPacked),
    Color(QV_FORMAT(BGRa12p), Order::BGR, 4, 12, Storage::LsbPacked),
    Color(QV_FORMAT(RGB12p), Order::RGB, 3, 12, Storage::LsbPacked),
    Color(QV_FORMAT(BGR14), Order::BGR, 3, 14, Storage::Unpacked),
    Color(QV_FORMAT(BGRa14), Order::BGR, 4, 14, Storage::Unpacked),
    Color(QV_FORMAT(BGR16), Order::BGR, 3, 16, Storage::Unpacked),
    Color(QV_FORMAT(RGB16), Order::RGB, 3, 16, Storage::Unpacked),
    Color(QV_FORMAT(BGRa16), Order::BGR, 4, 16, Storage::Unpacked),
    Color(QV_FORMAT(RGB16_Planar), Order::RGB, 3, 16, Storage::Planar),
    // YCbCr and YUV.
    YCbCr(QV_FORMAT(YCbCr411_8)),
    YCbCr(QV_FORMAT(YCbCr411_8_CbYYCrYY)),
    YCbCr(QV_FORMAT(YCbCr422_8)),
    YCbCr(QV_FORMAT(YCbCr422_8_CbYCrY)),
    YCbCr(QV_FORMAT(YCbCr8)),
    YCbCr(QV_FORMAT(YCbCr8_CbYCr)),
    YCbCr(QV_FORMAT(YCbCr601_411_8_CbYYCrYY)),
    YCbCr(QV_FORMAT(YCbCr601_422_8)),
    YCbCr(QV_FORMAT(YCbCr601_422_8_CbYCrY)),
    YCbCr(QV_FORMAT(YCbCr601_8_CbYCr)),
    YCbCr(QV_FORMAT(YCbCr709_411_8_CbYYCrYY)),
    YCbCr(QV_FORMAT(YCbCr709_422_8)),
    YCbCr(QV_FORMAT(YCbCr709_422_8_CbYCrY)),
    YCbCr(QV_FORMAT(YCbCr709_8_CbYCr)),
    YCbCr(QV_FORMAT(YUV411_8_UYYVYY)),
    YCbCr(QV_FORMAT(YUV422_8)),
    YCbCr(QV_FORMAT(YUV422_8_UYVY)),
    YCbCr(QV_FORMAT(YUV8_UYV)),
    // Of our own: colour.
    Color(QV_FORMAT(CBGR10p32), Order::BGR, 3, 10, Storage::Word32),
    PlanarYCbCr420(QV_FORMAT(CYCbCr420_8_YY_Cb_Cr_Planar)),
    // Of our own: polarizer sensors. X, Y, XY mirror the tile of polarizers, C turns it; see GetPolarizerPatternNumber.
    PolarizedMono(QV_FORMAT(Pol1Mono8), 1, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoX8), 2, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoY8), 3, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXY8), 4, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1Mono10), 1, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoX10), 2, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoY10), 3, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXY10), 4, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1Mono12), 1, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoX12), 2, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoY12), 3, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXY12), 4, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRG8), 1, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGX8), 2, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGY8), 3, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXY8), 4, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRG10), 1, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGX10), 2, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGY10), 3, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXY10), 4, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRG12), 1, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGX12), 2, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGY12), 3, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXY12), 4, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1Mono10p), 1, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoX10p), 2, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoY10p), 3, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXY10p), 4, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1Mono12p), 1, 12, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoX12p), 2, 12, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoY12p), 3, 12, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXY12p), 4, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRG10p), 1, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGX10p), 2, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGY10p), 3, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXY10p), 4, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRG12p), 1, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGX12p), 2, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGY12p), 3, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXY12p), 4, 12, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoC8), 5, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXC8), 6, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoYC8), 7, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXYC8), 8, 8, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoC10), 5, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXC10), 6, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoYC10), 7, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXYC10), 8, 10, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoC12), 5, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXC12), 6, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoYC12), 7, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXYC12), 8, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGC8), 5, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXC8), 6, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGYC8), 7, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXYC8), 8, 8, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGC10), 5, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXC10), 6, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGYC10), 7, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXYC10), 8, 10, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGC12), 5, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXC12), 6, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGYC12), 7, 12, Storage::Unpacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXYC12), 8, 12, Storage::Unpacked),
    PolarizedMono(QV_FORMAT(Pol1MonoC10p), 5, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXC10p), 6, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoYC10p), 7, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXYC10p), 8, 10, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoC12p), 5, 12, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXC12p), 6, 12, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoYC12p), 7, 12, Storage::LsbPacked),
    PolarizedMono(QV_FORMAT(Pol1MonoXYC12p), 8, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGC10p), 5, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXC10p), 6, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGYC10p), 7, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXYC10p), 8, 10, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGC12p), 5, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXC12p), 6, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGYC12p), 7, 12, Storage::LsbPacked),
    PolarizedBayer(QV_FORMAT(Pol1BayerRGXYC12p), 8, 12, Storage::LsbPacked),
};
// clang-format on

#undef QV_FORMAT

}  // namespace PixelFormatRows

/// Every pixel format that the system knows; all answers about formats follow from it.
inline constexpr auto& kPixelFormats = PixelFormatRows::kTable;

inline constexpr CodeIndex kPixelFormatIndex(kPixelFormats,
                                             [](const PixelFormatRow& row) { return row.format; });

static_assert(kPixelFormats.size() == 183);
static_assert(kPixelFormatIndex.IsUnique());

/// The row of a format, or null for an unknown code.
constexpr const PixelFormatRow* FindPixelFormat(PixelFormat format) {
  const std::size_t row = kPixelFormatIndex.Find(static_cast<std::uint32_t>(format));
  return row < kPixelFormats.size() ? &kPixelFormats[row] : nullptr;
}

}  // namespace QvApi
