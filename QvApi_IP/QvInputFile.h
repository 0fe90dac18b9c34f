// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace QvApi {

/// A file open for reading.
class CQvInputFile {
 public:
  /// @throws GenICam::RuntimeException  "File %s could not be opened."
  explicit CQvInputFile(const GenICam::gcstring& fileName);
  CQvInputFile(const CQvInputFile&) = delete;
  CQvInputFile& operator=(const CQvInputFile&) = delete;
  ~CQvInputFile();

  std::FILE* File() const { return m_file; }

 private:
  std::FILE* const m_file;
};

/// Throws RuntimeException "File %s is unreadable.".
[[noreturn]] void ThrowUnreadable(const GenICam::gcstring& fileName);

/// Bytes of a file, whatever the position, which stays; 0 for what has no size, such as a pipe.
std::uint64_t GetFileSize(std::FILE* file);

/// Sets the position; false if that cannot be.
bool SeekTo(std::FILE* file, std::uint64_t position);

/// Reads `size` bytes; false if there are fewer.
bool ReadBytes(std::FILE* file, void* bytes, std::size_t size);

/// Reads one record of a file; false if there are too few bytes.
template <class Record>
bool ReadRecord(std::FILE* file, Record& record) {
  return ReadBytes(file, &record, sizeof(record));
}

}  // namespace QvApi
