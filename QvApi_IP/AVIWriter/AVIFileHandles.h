// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi {

/// The file that is being recorded. All operations give 0 or a value of errno.
class _UAVI_FILE_HANDLES {
 public:
  _UAVI_FILE_HANDLES() = default;
  _UAVI_FILE_HANDLES(const _UAVI_FILE_HANDLES&) = delete;
  _UAVI_FILE_HANDLES& operator=(const _UAVI_FILE_HANDLES&) = delete;
  ~_UAVI_FILE_HANDLES() { Close(); }

  /// Makes the file, or empties the one of this name.
  int Open(const char* name);
  /// Writes all bytes, in one call of the system if that takes them.
  int Write(std::uint64_t position, const void* bytes, std::size_t size);
  /// The same at the end of the file. Of bytes that do not fit nothing stays, so that there may be
  /// room for an index.
  int Append(std::uint64_t end, const void* bytes, std::size_t size);
  /// Ends the file there, if the system allows.
  void Truncate(std::uint64_t end);
  /// Closes the file, also if that fails; does nothing if none is open.
  int Close();

 private:
  int m_descriptor = -1;
};

}  // namespace QvApi
