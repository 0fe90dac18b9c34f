// SPDX-License-Identifier: MIT
#include "QvApi_IP/AVIWriter/AVIFileHandles.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace QvApi {

int _UAVI_FILE_HANDLES::Open(const char* name) {
  m_descriptor = ::open(name, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  return m_descriptor < 0 ? errno : 0;
}

int _UAVI_FILE_HANDLES::Write(std::uint64_t position, const void* bytes, std::size_t size) {
  const auto* from = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t written = ::pwrite(m_descriptor, from, size, static_cast<off_t>(position));
    if (written < 0 && errno == EINTR) continue;
    // Less than all without an error is passed over.
    if (written <= 0) return written < 0 ? errno : 0;
    from += written;
    position += static_cast<std::uint64_t>(written);
    size -= static_cast<std::size_t>(written);
  }
  return 0;
}

int _UAVI_FILE_HANDLES::Append(std::uint64_t end, const void* bytes, std::size_t size) {
  const int error = Write(end, bytes, size);
  if (error != 0) Truncate(end);
  return error;
}

void _UAVI_FILE_HANDLES::Truncate(std::uint64_t end) {
  [[maybe_unused]] const int ignored = ::ftruncate(m_descriptor, static_cast<off_t>(end));
}

int _UAVI_FILE_HANDLES::Close() {
  const int descriptor = std::exchange(m_descriptor, -1);
  return descriptor >= 0 && ::close(descriptor) != 0 ? errno : 0;
}

}  // namespace QvApi
