// SPDX-License-Identifier: MIT
#include "QvApi_IP/AVIWriter/VideoFile.h"

#include <sys/statfs.h>
#include <unistd.h>

namespace QvApi {

void CVideoFile::CheckFileSystem(const char* path) {
  struct statfs status;
  if (::statfs(path, &status) != 0) return;
  const long bits = ::pathconf(path, _PC_FILESIZEBITS);
  if (bits >= 2) m_maximumFileSize = std::uint64_t{1} << std::min(bits, 63L);
  std::uint64_t free = 0;
  if (!__builtin_mul_overflow(status.f_bavail, status.f_bsize, &free))
    m_maximumFileSize = std::min(m_maximumFileSize, free);
}

}  // namespace QvApi
