// SPDX-License-Identifier: MIT
#pragma once

#include <turbojpeg.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>

namespace QvApi {

/// How an image becomes a JPEG, in TurboJPEG's terms.
struct JpegSettings {
  TJSAMP subsampling;
  unsigned quality;  ///< 0 to 100; more counts as 100.
  int flags = TJFLAG_FASTDCT;
};

/// Compresses images to JPEG, one after another, in memory that it keeps: images of one size
/// allocate at the first one only. To be used by one thread at a time.
///
/// What is compressed is a whole JPEG file, valid until the next call. It is empty if TurboJPEG
/// failed or refused the image, such as one of more than 65500 lines, or if there is no memory.
class CQvJpegCompressor {
 public:
  /// `before` and `after` are bytes that stay free around each JPEG, for what its container wants
  /// to write together with it.
  explicit CQvJpegCompressor(std::size_t before = 0, std::size_t after = 0);

  /// False for sides that a JPEG cannot have.
  static bool CanHold(std::size_t width, std::size_t height);

  /// Compresses pixels of one plane, with `pitch` bytes from line to line.
  std::span<std::uint8_t> Compress(const std::uint8_t* pixels, std::size_t width,
                                   std::size_t height, std::size_t pitch, TJPF format,
                                   const JpegSettings& settings);

  /// Compresses planes of Y, Cb and Cr as they are. Each has the size that tjPlaneWidth() and
  /// tjPlaneHeight() say for the subsampling, which may be more than the image's.
  std::span<std::uint8_t> CompressPlanes(const std::array<const std::uint8_t*, 3>& planes,
                                         const std::array<std::size_t, 3>& pitches,
                                         std::size_t width, std::size_t height,
                                         const JpegSettings& settings);

 private:
  template <class Function>
  std::span<std::uint8_t> Run(std::size_t width, std::size_t height, const JpegSettings& settings,
                              Function function);
  bool Reserve(std::size_t size);

  using Handle = std::unique_ptr<std::remove_pointer_t<tjhandle>, decltype(&tjDestroy)>;

  const std::size_t m_before;
  const std::size_t m_after;
  const Handle m_handle;
  std::unique_ptr<std::uint8_t[]> m_buffer;
  std::size_t m_size = 0;
};

}  // namespace QvApi
