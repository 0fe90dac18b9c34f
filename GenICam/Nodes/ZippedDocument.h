// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace GenApi {

/// No document may be larger, whatever an archive says: a few bytes could else claim all memory.
inline constexpr std::size_t kMaxUnzippedSize = std::size_t{64} << 20;

/// The first file of a ZIP archive whose name ends in ".xml". RuntimeException if the archive is
/// damaged or encrypted or has no such file, or if that is larger than kMaxUnzippedSize;
/// BadAllocException.
std::string UnzipDocument(std::string_view archive);

}  // namespace GenApi
