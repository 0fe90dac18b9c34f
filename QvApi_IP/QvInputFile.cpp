// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvInputFile.h"

#include <Base/GCException.h>
#include <sys/types.h>

#include <limits>

namespace QvApi {

CQvInputFile::CQvInputFile(const GenICam::gcstring& fileName)
    : m_file(std::fopen(fileName.c_str(), "rbe")) {
  if (!m_file) throw RUNTIME_EXCEPTION("File %s could not be opened.", fileName.c_str());
}

CQvInputFile::~CQvInputFile() { std::fclose(m_file); }

void ThrowUnreadable(const GenICam::gcstring& fileName) {
  throw RUNTIME_EXCEPTION("File %s is unreadable.", fileName.c_str());
}

std::uint64_t GetFileSize(std::FILE* file) {
  const off_t position = ftello(file);
  if (position < 0 || fseeko(file, 0, SEEK_END) != 0) return 0;
  const off_t size = ftello(file);
  if (fseeko(file, position, SEEK_SET) != 0 || size < 0) return 0;
  return static_cast<std::uint64_t>(size);
}

bool SeekTo(std::FILE* file, std::uint64_t position) {
  return position <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) &&
         fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0;
}

bool ReadBytes(std::FILE* file, void* bytes, std::size_t size) {
  return size == 0 || std::fread(bytes, 1, size, file) == size;
}

}  // namespace QvApi
