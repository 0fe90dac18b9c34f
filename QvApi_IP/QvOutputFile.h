// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>
#include <sys/uio.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace QvApi {

/// A file that takes its name only when it is complete.
///
/// What is written goes into a file beside the wanted one, which Commit() renames; until then a
/// file that had the name before stays as it is, and without Commit() nothing is left behind. Links
/// are followed and permissions kept, as fopen(name, "wb") does. Where a rename is no way, the
/// named file itself is written, and removed again if it stays incomplete: links to nothing, and
/// files in a directory where none can be made. Devices and pipes are just written.
///
/// To be used by one thread: it keeps the signal of a broken pipe from ending the process.
class CQvOutputFile {
 public:
  /// @throws GenICam::RuntimeException  "File %s is unwritable."
  explicit CQvOutputFile(const GenICam::gcstring& fileName);
  CQvOutputFile(const CQvOutputFile&) = delete;
  CQvOutputFile& operator=(const CQvOutputFile&) = delete;
  /// Discards what was written and not committed.
  ~CQvOutputFile();

  /// The open stream, with a buffer that makes short writes cheap.
  std::FILE* File() const { return m_file; }

  /// Ends a complete file: checks that all of it could be written, closes it and gives it its name.
  /// @throws GenICam::RuntimeException  "File %s is unwritable."; nothing is left behind
  void Commit();

 private:
  class BrokenPipeGuard;

  void Open();
  void OpenBeside(const std::string& target);
  void OpenNamed();
  bool Close();
  bool TakeName();
  void Discard();

  const std::string m_fileName;
  std::string m_target;      ///< Name to take, with all links followed; empty if written straight.
  std::string m_incomplete;  ///< The file written, while it must not stay; empty for a device.
  std::unique_ptr<BrokenPipeGuard> m_brokenPipeGuard;
  std::unique_ptr<char[]> m_streamBuffer;
  std::FILE* m_file = nullptr;
};

/// Throws RuntimeException "File %s is unwritable.".
[[noreturn]] void ThrowUnwritable(const GenICam::gcstring& fileName);

/// Writes `size` bytes; false if not all could be written. What the stream still holds is checked
/// by CQvOutputFile::Commit().
bool WriteBytes(std::FILE* file, const void* bytes, std::size_t size);

/// Writes many pieces of memory, such as the lines of an image, behind each other without copying
/// them together first.
class GatheredWriter {
 public:
  explicit GatheredWriter(std::FILE* file) : m_file(file) {}

  /// The memory must stay until Flush().
  void Add(const void* bytes, std::size_t size);
  void AddZeros(std::size_t size);
  /// Writes what is left. False if any of the pieces could not be written.
  bool Flush();

 private:
  std::FILE* const m_file;
  std::array<iovec, 512> m_pieces;
  std::size_t m_count = 0;
  bool m_failed = false;
};

}  // namespace QvApi
