// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvJpegCompressor.h"

#include <algorithm>
#include <climits>
#include <new>

namespace QvApi {
namespace {

constexpr std::size_t kMaxSide = 65500;  // libjpeg's JPEG_MAX_DIMENSION

bool IsPitch(std::size_t pitch) { return pitch <= INT_MAX; }

}  // namespace

CQvJpegCompressor::CQvJpegCompressor(std::size_t before, std::size_t after)
    : m_before(before), m_after(after), m_handle(tjInitCompress(), &tjDestroy) {}

bool CQvJpegCompressor::CanHold(std::size_t width, std::size_t height) {
  return width > 0 && height > 0 && width <= kMaxSide && height <= kMaxSide;
}

std::span<std::uint8_t> CQvJpegCompressor::Compress(const std::uint8_t* pixels, std::size_t width,
                                                    std::size_t height, std::size_t pitch,
                                                    TJPF format, const JpegSettings& settings) {
  if (!IsPitch(pitch)) return {};
  return Run(width, height, settings,
             [&](int w, int h, std::uint8_t** jpeg, unsigned long* size, int quality, int flags) {
               return tjCompress2(m_handle.get(), pixels, w, static_cast<int>(pitch), h, format,
                                  jpeg, size, settings.subsampling, quality, flags);
             });
}

std::span<std::uint8_t> CQvJpegCompressor::CompressPlanes(
    const std::array<const std::uint8_t*, 3>& planes, const std::array<std::size_t, 3>& pitches,
    std::size_t width, std::size_t height, const JpegSettings& settings) {
  if (!std::ranges::all_of(pitches, IsPitch)) return {};
  // TurboJPEG takes pointers that it does not change through.
  std::array<const std::uint8_t*, 3> pointers = planes;
  std::array<int, 3> strides;
  std::ranges::transform(pitches, strides.begin(), [](auto p) { return static_cast<int>(p); });
  return Run(width, height, settings,
             [&](int w, int h, std::uint8_t** jpeg, unsigned long* size, int quality, int flags) {
               return tjCompressFromYUVPlanes(m_handle.get(), pointers.data(), w, strides.data(), h,
                                              settings.subsampling, jpeg, size, quality, flags);
             });
}

template <class Function>
std::span<std::uint8_t> CQvJpegCompressor::Run(std::size_t width, std::size_t height,
                                               const JpegSettings& settings, Function function) {
  if (!m_handle || !CanHold(width, height)) return {};
  const int w = static_cast<int>(width);
  const int h = static_cast<int>(height);
  unsigned long size = tjBufSize(w, h, settings.subsampling);
  if (!Reserve(size)) return {};
  // With room for any JPEG of this size, TurboJPEG need not bring memory of its own.
  std::uint8_t* jpeg = m_buffer.get() + m_before;
  const int quality = static_cast<int>(std::min(settings.quality, 100U));
  if (function(w, h, &jpeg, &size, quality, settings.flags | TJFLAG_NOREALLOC) != 0) return {};
  return {jpeg, size};
}

bool CQvJpegCompressor::Reserve(std::size_t size) {
  if (size <= m_size) return true;
  m_size = 0;
  m_buffer.reset(new (std::nothrow) std::uint8_t[m_before + size + m_after]);
  if (m_buffer) m_size = size;
  return m_size != 0;
}

}  // namespace QvApi
