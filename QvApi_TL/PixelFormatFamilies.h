// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>

#include "QvApi_TL/PixelFormatTable.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// A list of formats without repeats, usable at compile time.
class FormatList {
 public:
  constexpr FormatList() = default;
  constexpr FormatList(PixelFormat format) { Add(format); }  // NOLINT: a format is a list of one
  constexpr FormatList(std::initializer_list<PixelFormat> formats) {
    for (PixelFormat format : formats) Add(format);
  }

  constexpr void Add(PixelFormat format) {
    if (!Contains(format)) m_formats[m_size++] = format;
  }
  constexpr bool Contains(PixelFormat format) const {
    for (PixelFormat each : *this)
      if (each == format) return true;
    return false;
  }
  constexpr std::size_t size() const { return m_size; }
  constexpr const PixelFormat* begin() const { return m_formats.data(); }
  constexpr const PixelFormat* end() const { return m_formats.data() + m_size; }

  friend constexpr FormatList operator+(FormatList a, const FormatList& b) {
    for (PixelFormat each : b) a.Add(each);
    return a;
  }
  friend constexpr FormatList operator-(const FormatList& a, const FormatList& b) {
    FormatList rest;
    for (PixelFormat each : a)
      if (!b.Contains(each)) rest.Add(each);
    return rest;
  }

 private:
  std::array<PixelFormat, kPixelFormats.size()> m_formats{};
  std::size_t m_size = 0;
};

/// All formats whose row in the table satisfies `predicate`.
template <class Predicate>
constexpr FormatList Select(Predicate predicate) {
  FormatList list;
  for (const PixelFormatRow& row : kPixelFormats)
    if (predicate(row)) list.Add(row.format);
  return list;
}

/// Families of formats. "8" is one byte a sample, "W" a 16-bit word, "x8" and "xW" interleaved
/// colour with or without alpha.
namespace Families {

using enum EQvPixelFormatNamingConvention_t;

constexpr bool IsRaw(const PixelFormatRow& row, PixelKind kind, Storage storage) {
  return row.kind == kind && row.storage == storage;
}

inline constexpr FormatList kMonoW{Mono10, Mono12, Mono14, Mono16};
inline constexpr FormatList kMonoLsb =
    Select([](const auto& row) { return IsRaw(row, PixelKind::Mono, Storage::LsbPacked); });
inline constexpr FormatList kMonoGev =
    Select([](const auto& row) { return IsRaw(row, PixelKind::Mono, Storage::GevPacked); });
inline constexpr FormatList kMonoPacked = kMonoLsb + kMonoGev;

inline constexpr FormatList kBayer = Select([](const auto& row) { return row.IsBayer(); });
inline constexpr FormatList kBayer8{BayerGR8, BayerRG8, BayerGB8, BayerBG8};
inline constexpr FormatList kBayerW = Select([](const auto& row) {
  return IsRaw(row, PixelKind::Bayer, Storage::Unpacked) && row.depth > 8;
});
inline constexpr FormatList kBayer4p{BayerGR4p, BayerRG4p, BayerGB4p, BayerBG4p};
inline constexpr FormatList kBayerLsb =
    Select([](const auto& row) { return IsRaw(row, PixelKind::Bayer, Storage::LsbPacked); });
inline constexpr FormatList kBayerGev =
    Select([](const auto& row) { return IsRaw(row, PixelKind::Bayer, Storage::GevPacked); });

inline constexpr FormatList kBGRx8{BGR8, BGRa8, RGB8, RGBa8};
inline constexpr FormatList kBGRxW{BGR10,  BGR12,  BGR14,  BGR16, BGRa10,
                                   BGRa12, BGRa14, BGRa16, RGB16};
inline constexpr FormatList kBGRW = kBGRxW - RGB16;
inline constexpr FormatList kBGRx16{BGR16, BGRa16, RGB16};
inline constexpr FormatList kPlanarW{RGB10_Planar, RGB12_Planar, RGB16_Planar};
inline constexpr FormatList kPlanar = FormatList{RGB8_Planar} + kPlanarW;
inline constexpr FormatList kP32{CBGR10p32, RGB10p32};
inline constexpr FormatList kBGRp{BGR10p, RGB10p, BGR12p, RGB12p};

inline constexpr FormatList k420{CYCbCr420_8_YY_Cb_Cr_Planar};
/// The interleaved luminance and chrominance formats.
inline constexpr FormatList kYUV =
    Select([](const auto& row) { return row.kind == PixelKind::YCbCr; }) - k420;

inline constexpr FormatList kPolarized = Select([](const auto& row) { return row.IsPolarized(); });
inline constexpr FormatList kPolarized8 =
    Select([](const auto& row) { return row.IsPolarized() && row.depth == 8; });
inline constexpr FormatList kPolarizedW = Select([](const auto& row) {
  return row.IsPolarized() && row.storage == Storage::Unpacked && row.depth > 8;
});
inline constexpr FormatList kPolarizedLsb =
    Select([](const auto& row) { return row.IsPolarized() && row.storage == Storage::LsbPacked; });
inline constexpr FormatList kPolarizedMono =
    Select([](const auto& row) { return row.kind == PixelKind::PolarizedMono; });
inline constexpr FormatList kPolarizedBayer =
    Select([](const auto& row) { return row.kind == PixelKind::PolarizedBayer; });

static_assert(kBayer.size() == 44 && kYUV.size() == 18 && kPolarized.size() == 80);

}  // namespace Families

}  // namespace QvApi
