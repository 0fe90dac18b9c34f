// SPDX-License-Identifier: MIT
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "QvApi_TL/PixelLayout.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/Planar420.h"
#include "QvSDKCommon/QvPixelComponent.h"

namespace QvApi {
namespace {

using Sample = std::optional<std::uint32_t>;

/// One line of one plane: its first byte and its significant bytes.
struct Line {
  const std::uint8_t* bytes;
  std::size_t size;

  /// Little-endian number of `count` bytes; nothing where the line ends before.
  Sample Read(std::size_t offset, std::size_t count) const {
    if (offset > size || count > size - offset) return {};
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value |= std::uint32_t{bytes[offset + i]} << 8 * i;
    return value;
  }
};

/// Sample `index` of a little-endian bit stream of samples of `bits` bits.
Sample ReadLsbPacked(const Line& line, std::size_t index, std::size_t bits) {
  const std::size_t bit = index * bits;
  const std::size_t shift = bit % 8;
  const Sample bytes = line.Read(bit / 8, (shift + bits + 7) / 8);
  if (!bytes) return {};
  return *bytes >> shift & ((1u << bits) - 1);
}

/// Sample `index` of the packing of GigE Vision: three bytes hold the upper bits of the first
/// sample, the lower bits of both, and the upper bits of the second.
Sample ReadGevPacked(const Line& line, std::size_t index, std::size_t depth) {
  const std::size_t group = index / 2 * 3;
  const bool second = index % 2 != 0;
  const Sample upper = line.Read(group + (second ? 2 : 0), 1);
  const Sample lower = line.Read(group + 1, 1);
  if (!upper || !lower) return {};
  const std::uint32_t mask = (1u << (depth - 8)) - 1;
  return *upper << (depth - 8) | (*lower >> (second ? 4 : 0) & mask);
}

/// The image as the read-out needs it.
struct Pixels {
  const PixelFormatRow& row;
  const std::uint8_t* bytes;
  std::size_t width;
  std::size_t height;
  std::size_t linePitch;
  std::size_t planePitch;

  Line GetLine(std::size_t y, std::size_t plane = 0) const {
    return {bytes + plane * planePitch + y * linePitch, row.LineBytes(width)};
  }
};

Sample ReadPlanar420(const Pixels& pixels, std::size_t x, std::size_t y, std::size_t component) {
  const Planar420 layout(pixels.width, pixels.height, pixels.linePitch);
  const Planar420::Plane& plane = layout.planes[component];
  const std::size_t column = component == 0 ? x : x / 2;
  const std::size_t line = component == 0 ? y : y / 2;
  if (column >= plane.width || line >= plane.height) return {};
  return pixels.bytes[plane.offset + line * plane.pitch + column];
}

Sample ReadYCbCr(const Pixels& pixels, std::size_t x, std::size_t y, std::size_t component) {
  const YCbCrGroup& group = YCbCrGroupOf(pixels.row);
  const std::uint8_t luma = group.luma[x % group.pixels];
  const std::array<std::uint8_t, 3> offsets = group.IsLumaFirst()
                                                  ? std::array{luma, group.cb, group.cr}
                                                  : std::array{group.cb, luma, group.cr};
  return pixels.GetLine(y).Read(x / group.pixels * group.bytes + offsets[component], 1);
}

/// A component of a pixel inside the image; nothing where a line ends within a group of pixels that
/// share it.
Sample ReadComponent(const Pixels& pixels, std::size_t x, std::size_t y, std::size_t component) {
  const PixelFormatRow& row = pixels.row;
  const bool planar = row.storage == Storage::Planar;
  if (row.kind == PixelKind::YCbCr)
    return planar ? ReadPlanar420(pixels, x, y, component) : ReadYCbCr(pixels, x, y, component);

  const std::size_t index = planar ? x : x * row.componentCount + component;
  const Line line = pixels.GetLine(y, planar ? component : 0);
  const std::size_t bytes = row.componentBits / 8u;
  switch (row.storage) {
    case Storage::Unpacked:
    case Storage::Planar:
      return line.Read(index * bytes, bytes);
    case Storage::LsbPacked:
      return ReadLsbPacked(line, index, row.componentBits);
    case Storage::GevPacked:
      return ReadGevPacked(line, index, row.depth);
    case Storage::Word32:
      if (const Sample word = line.Read(4 * x, 4)) return *word >> 10 * component & 0x3FF;
  }
  return {};
}

constexpr std::uint32_t DepthMask(std::size_t depth) {
  return static_cast<std::uint32_t>((std::uint64_t{1} << depth) - 1);
}

}  // namespace

static_assert(PixelComponents::kMax == CQvPixelComponent::kMaxComponents);

CQvPixelComponent::CQvPixelComponent() : m_components{}, m_values{} {}

CQvPixelComponent::~CQvPixelComponent() = default;

void CQvPixelComponent::SetPixelComponent(IQvImage* image, std::size_t x, std::size_t y) {
  m_count = 0;
  if (!image || x >= image->GetImageWidth() || y >= image->GetImageHeight()) return;
  const PixelFormatRow* row = FindPixelFormat(image->GetImagePixelFormat());
  if (!row) return;
  const Pixels pixels{.row = *row,
                      .bytes = static_cast<const std::uint8_t*>(image->GetImageBuffer()),
                      .width = image->GetImageWidth(),
                      .height = image->GetImageHeight(),
                      .linePitch = image->GetImageLinePitch(),
                      .planePitch = image->GetImagePlanePitch()};
  if (!pixels.bytes) return;

  const PixelComponents components = ComponentsAt(*row, x, y);
  for (std::size_t i = 0; i < components.size(); ++i) {
    const Sample sample = ReadComponent(pixels, x, y, i);
    if (!sample) continue;
    m_components[m_count] = components[i];
    m_values[m_count] = *sample & DepthMask(row->depth);
    ++m_count;
  }
}

EQvPixelComponent_t CQvPixelComponent::GetPixelComponent(std::size_t index) const {
  return index < m_count ? m_components[index] : EQvPixelComponent_t::Unknown;
}

std::uint32_t CQvPixelComponent::GetValue(std::size_t index) const {
  return index < m_count ? m_values[index] : 0;
}

}  // namespace QvApi
