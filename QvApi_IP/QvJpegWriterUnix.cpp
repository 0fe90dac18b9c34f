// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvJpegWriterUnix.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "QvApi_IP/ColorInterpolation/YCbCrImages.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvApi_IP/QvJpegCompressor.h"
#include "QvApi_IP/QvOutputFile.h"

namespace QvApi {
namespace {

/// How a pixel format is compressed.
struct Row {
  PixelFormat format;
  TJPF pixels;  ///< TJPF_UNKNOWN: in planes of Y, Cb and Cr.
  TJSAMP subsampling;
};

constexpr Row kRows[] = {
    {PixelFormat::Mono8, TJPF_GRAY, TJSAMP_GRAY},
    {PixelFormat::Mono10, TJPF_GRAY, TJSAMP_GRAY},
    {PixelFormat::RGB8, TJPF_RGB, TJSAMP_422},
    {PixelFormat::BGR8, TJPF_BGR, TJSAMP_422},
    {PixelFormat::YCbCr8, TJPF_UNKNOWN, TJSAMP_444},
    {PixelFormat::YCbCr422_8, TJPF_UNKNOWN, TJSAMP_422},
    {PixelFormat::YCbCr411_8, TJPF_UNKNOWN, TJSAMP_411},
};

const Row* FindRow(PixelFormat format) {
  const auto* found = std::ranges::find(kRows, format, &Row::format);
  return found == std::end(kRows) ? nullptr : found;
}

/// The components of an interleaved YCbCr image, each in a plane with lines of whole groups of
/// pixels, as TurboJPEG wants them. Luminance that a last group lacks repeats the last pixel.
class YCbCrPlanes {
 public:
  explicit YCbCrPlanes(const ImageLines& lines)
      : m_layout(LayoutOf(*FindPixelFormat(lines.Format().GetPixelFormat()))),
        m_pitch((lines.Width() + 3) / 4 * 4),
        m_size(m_pitch * lines.Height()),
        m_bytes(std::make_unique_for_overwrite<std::uint8_t[]>(3 * m_size)) {
    for (std::size_t y = 0; y < lines.Height(); ++y)
      SplitLine(lines.Line<const std::uint8_t>(y), lines.Width(), y * m_pitch);
  }

  std::array<const std::uint8_t*, 3> Planes() const { return {Plane(0), Plane(1), Plane(2)}; }
  std::array<std::size_t, 3> Pitches() const { return {m_pitch, m_pitch, m_pitch}; }

 private:
  std::uint8_t* Plane(std::size_t index) const { return m_bytes.get() + index * m_size; }

  void SplitLine(const std::uint8_t* line, std::size_t width, std::size_t at) {
    std::uint8_t* const luma = Plane(0) + at;
    std::uint8_t* const cb = Plane(1) + at;
    std::uint8_t* const cr = Plane(2) + at;
    Kernels::UnweaveYCbCr(m_layout, line, false, {luma, cb, cr}, width);
    std::fill(luma + width, luma + m_pitch, luma[width - 1]);
    if (m_layout.pixels == m_layout.ChromaGroup()) return;
    // Here chrominance comes twice.
    for (std::size_t i = 0; i < m_pitch / m_layout.pixels; ++i) {
      cb[i] = cb[2 * i];
      cr[i] = cr[2 * i];
    }
  }

  const Kernels::YCbCrLayout m_layout;
  const std::size_t m_pitch;
  const std::size_t m_size;
  const std::unique_ptr<std::uint8_t[]> m_bytes;
};

std::span<std::uint8_t> Compress(CQvJpegCompressor& compressor, const Row& row,
                                 const ImageLines& lines, unsigned quality) {
  if (!CQvJpegCompressor::CanHold(lines.Width(), lines.Height())) return {};
  const JpegSettings settings{.subsampling = row.subsampling, .quality = quality};
  if (row.pixels != TJPF_UNKNOWN)
    return compressor.Compress(lines.Line<const std::uint8_t>(0), lines.Width(), lines.Height(),
                               static_cast<std::size_t>(lines.Pitch()), row.pixels, settings);
  const YCbCrPlanes planes(lines);
  return compressor.CompressPlanes(planes.Planes(), planes.Pitches(), lines.Width(), lines.Height(),
                                   settings);
}

}  // namespace

void WriteJPG(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file,
              unsigned quality) {
  const Row* row = FindRow(image->GetImagePixelFormat());
  if (!row) ThrowNotSupported(image->GetImagePixelFormat());
  const ImageLines lines(*image);
  CQvJpegCompressor compressor;
  const std::span<std::uint8_t> jpeg = Compress(compressor, *row, lines, quality);
  if (jpeg.empty() || !WriteBytes(file, jpeg.data(), jpeg.size())) ThrowUnwritable(fileName);
}

}  // namespace QvApi
