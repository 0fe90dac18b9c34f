// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "QvApi_TL/PixelComponentTable.h"
#include "QvApi_TL/PixelFormatTable.h"
#include "QvSDKCommon/QvPixelComponentCode.h"

/// Where the components of a pixel are: which ones a pixel has, by its place in the mosaic, and in
/// which bytes of its group those of the subsampled formats lie.
namespace QvApi {

/// Phase of a mosaic seen from (x, y), for a mosaic of `phase` at (0, 0): an odd column exchanges
/// RG with GR and GB with BG, an odd row RG with GB and GR with BG.
constexpr BayerPhase PhaseAt(BayerPhase phase, std::size_t x, std::size_t y) {
  if (phase < BayerPhase::RG) return phase;
  constexpr auto first = static_cast<std::size_t>(BayerPhase::RG);
  return static_cast<BayerPhase>(
      ((static_cast<std::size_t>(phase) - first) ^ (x % 2 + 2 * (y % 2))) + first);
}

/// Channel of a component: the upper byte of its code.
enum class Channel : std::uint8_t { Mono = 1, R, G, B, Gr, Gb, Y, Cb, Cr, U, V };

/// Angle of a polarizer in front of a pixel: the lower byte of a component's code.
enum class PolarizerAngle : std::uint8_t { None, Deg000, Deg045, Deg090, Deg135 };

/// The code of a component; Unknown if there is no such component.
constexpr EQvPixelComponent_t ComponentCode(Channel channel, std::size_t bits,
                                            PolarizerAngle angle = PolarizerAngle::None) {
  const auto code = static_cast<std::uint32_t>(channel) << 24 |
                    static_cast<std::uint32_t>(bits) << 16 | static_cast<std::uint32_t>(angle);
  return kPixelComponentIndex.Find(code) < kPixelComponents.size()
             ? static_cast<EQvPixelComponent_t>(code)
             : EQvPixelComponent_t::Unknown;
}

/// The channel of a component, which must not be Unknown.
constexpr Channel ChannelOf(EQvPixelComponent_t component) {
  return static_cast<Channel>(static_cast<std::uint32_t>(component) >> 24);
}

/// Colour of the site in the top left of a mosaic of this phase. Gr is the green of the lines that
/// hold red.
constexpr Channel SiteChannel(BayerPhase phase) {
  switch (phase) {
    case BayerPhase::RG:
      return Channel::R;
    case BayerPhase::GR:
      return Channel::Gr;
    case BayerPhase::GB:
      return Channel::Gb;
    case BayerPhase::BG:
      return Channel::B;
    default:
      return Channel::Mono;
  }
}

/// Arrangement of a polarizer sensor.
struct PolarizerTile {
  std::array<PolarizerAngle, 4> angles;  ///< At column + 2 * row of the 2 x 2 tile.
  BayerPhase phase;  ///< Colours of 2 x 2 cells of four pixels each; of colour sensors only.
};

namespace PixelLayoutTables {

constexpr auto kDeg000 = PolarizerAngle::Deg000;
constexpr auto kDeg045 = PolarizerAngle::Deg045;
constexpr auto kDeg090 = PolarizerAngle::Deg090;
constexpr auto kDeg135 = PolarizerAngle::Deg135;

inline constexpr std::array kPolarizerTiles{
    PolarizerTile{{kDeg090, kDeg045, kDeg135, kDeg000}, BayerPhase::RG},  // plain
    PolarizerTile{{kDeg045, kDeg090, kDeg000, kDeg135}, BayerPhase::GR},  // X
    PolarizerTile{{kDeg135, kDeg000, kDeg090, kDeg045}, BayerPhase::GB},  // Y
    PolarizerTile{{kDeg000, kDeg135, kDeg045, kDeg090}, BayerPhase::BG},  // XY
    PolarizerTile{{kDeg135, kDeg090, kDeg000, kDeg045}, BayerPhase::GR},  // C
    PolarizerTile{{kDeg000, kDeg045, kDeg135, kDeg090}, BayerPhase::BG},  // XC
    PolarizerTile{{kDeg090, kDeg135, kDeg045, kDeg000}, BayerPhase::RG},  // YC
    PolarizerTile{{kDeg045, kDeg000, kDeg090, kDeg135}, BayerPhase::GB},  // XYC
};

}  // namespace PixelLayoutTables

/// The arrangement with this number, 1 to 8 (IQvPixelFormatInfoInside::GetPolarizerPatternNumber).
constexpr const PolarizerTile& PolarizerTileOf(std::size_t pattern) {
  return PixelLayoutTables::kPolarizerTiles[pattern - 1];
}

/// Side of the square after which the components of a format repeat: 1, 2 or 4 pixels.
constexpr std::size_t TilePeriod(const PixelFormatRow& row) {
  switch (row.kind) {
    case PixelKind::Bayer:
    case PixelKind::PolarizedMono:
      return 2;
    case PixelKind::PolarizedBayer:
      return 4;
    default:
      return 1;
  }
}

/// Where the bytes of an interleaved YCbCr or YUV format lie. A group of pixels shares one pair of
/// chrominance values.
struct YCbCrGroup {
  std::uint8_t pixels;               ///< Pixels of a group: 1, 2 or 4.
  std::uint8_t bytes;                ///< Bytes of a group.
  std::array<std::uint8_t, 4> luma;  ///< Byte of each pixel's luminance.
  std::uint8_t cb;                   ///< Byte of Cb or U.
  std::uint8_t cr;                   ///< Byte of Cr or V.

  constexpr bool IsLumaFirst() const { return luma[0] < cb; }
};

namespace PixelLayoutTables {

// Component orders by PFNC: the plain names begin with luminance, the others say their order.
inline constexpr YCbCrGroup kYCbCr444{1, 3, {0}, 1, 2};
inline constexpr YCbCrGroup kCbYCr444{1, 3, {1}, 0, 2};
inline constexpr YCbCrGroup kYCbYCr422{2, 4, {0, 2}, 1, 3};
inline constexpr YCbCrGroup kCbYCrY422{2, 4, {1, 3}, 0, 2};
inline constexpr YCbCrGroup kYYCbYYCr411{4, 6, {0, 1, 3, 4}, 2, 5};
inline constexpr YCbCrGroup kCbYYCrYY411{4, 6, {1, 2, 4, 5}, 0, 3};

inline constexpr std::array kLumaFirst{
    PixelFormat::YCbCr8,         PixelFormat::YCbCr422_8, PixelFormat::YCbCr601_422_8,
    PixelFormat::YCbCr709_422_8, PixelFormat::YUV422_8,   PixelFormat::YCbCr411_8,
};

constexpr bool IsLumaFirst(PixelFormat format) {
  return std::find(kLumaFirst.begin(), kLumaFirst.end(), format) != kLumaFirst.end();
}

}  // namespace PixelLayoutTables

/// The groups of an interleaved YCbCr or YUV format.
constexpr const YCbCrGroup& YCbCrGroupOf(const PixelFormatRow& row) {
  using namespace PixelLayoutTables;
  const bool lumaFirst = IsLumaFirst(row.format);
  switch (row.bits) {
    case 24:
      return lumaFirst ? kYCbCr444 : kCbYCr444;
    case 16:
      return lumaFirst ? kYCbYCr422 : kCbYCrY422;
    default:
      return lumaFirst ? kYYCbYYCr411 : kCbYYCrYY411;
  }
}

/// The components of one pixel, in memory order.
class PixelComponents {
 public:
  static constexpr std::size_t kMax = 4;

  constexpr void Add(EQvPixelComponent_t component) { m_components[m_count++] = component; }
  constexpr std::size_t size() const { return m_count; }
  constexpr const EQvPixelComponent_t* begin() const { return m_components.data(); }
  constexpr const EQvPixelComponent_t* end() const { return m_components.data() + m_count; }
  constexpr EQvPixelComponent_t operator[](std::size_t i) const { return m_components[i]; }

 private:
  std::array<EQvPixelComponent_t, kMax> m_components{};
  std::size_t m_count = 0;
};

namespace PixelLayoutTables {

constexpr PixelComponents ColorComponents(const PixelFormatRow& row) {
  PixelComponents result;
  result.Add(ComponentCode(row.IsBGR() ? Channel::B : Channel::R, row.depth));
  result.Add(ComponentCode(Channel::G, row.depth));
  result.Add(ComponentCode(row.IsBGR() ? Channel::R : Channel::B, row.depth));
  // Alpha has no name among the components.
  if (row.componentCount == 4) result.Add(EQvPixelComponent_t::Unknown);
  return result;
}

constexpr PixelComponents YCbCrComponents(const PixelFormatRow& row) {
  const bool yuv = row.name.starts_with("YUV");
  const bool lumaFirst = row.storage == Storage::Planar || YCbCrGroupOf(row).IsLumaFirst();
  const auto y = ComponentCode(Channel::Y, row.depth);
  const auto cb = ComponentCode(yuv ? Channel::U : Channel::Cb, row.depth);
  PixelComponents result;
  result.Add(lumaFirst ? y : cb);
  result.Add(lumaFirst ? cb : y);
  result.Add(ComponentCode(yuv ? Channel::V : Channel::Cr, row.depth));
  return result;
}

/// The one component of a pixel of a raw format.
constexpr EQvPixelComponent_t RawComponent(const PixelFormatRow& row, std::size_t x,
                                           std::size_t y) {
  if (!row.IsPolarized()) return ComponentCode(SiteChannel(PhaseAt(row.phase, x, y)), row.depth);
  const PolarizerTile& tile = PolarizerTileOf(row.polarizerPattern);
  const Channel channel = row.kind == PixelKind::PolarizedMono
                              ? Channel::Mono
                              : SiteChannel(PhaseAt(tile.phase, x / 2, y / 2));
  return ComponentCode(channel, row.depth, tile.angles[x % 2 + 2 * (y % 2)]);
}

}  // namespace PixelLayoutTables

/// The components of the pixel in column x and row y of an image of this format, in memory order
/// (planar formats: in the order of the planes). Alpha, and the 32 bits of Mono32, have no name and
/// are Unknown. Chrominance that pixels share belongs to each of them.
constexpr PixelComponents ComponentsAt(const PixelFormatRow& row, std::size_t x, std::size_t y) {
  if (row.kind == PixelKind::Color) return PixelLayoutTables::ColorComponents(row);
  if (row.kind == PixelKind::YCbCr) return PixelLayoutTables::YCbCrComponents(row);
  PixelComponents result;
  result.Add(PixelLayoutTables::RawComponent(row, x, y));
  return result;
}

}  // namespace QvApi
