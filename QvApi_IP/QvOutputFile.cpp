// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvOutputFile.h"

#include <Base/GCException.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <span>

namespace QvApi {
namespace {

constexpr std::size_t kStreamBufferSize = std::size_t{1} << 16;

/// The path with all links followed, or an empty text if that leads nowhere.
std::string FollowLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                             &std::free);
  return resolved ? resolved.get() : "";
}

/// Makes a file of an unused name in the directory of `target`. Null with errno set if it cannot.
std::FILE* MakeBeside(const std::string& target, std::string& name) {
  static std::atomic<unsigned> s_count;
  const std::string directory = target.substr(0, target.rfind('/') + 1);
  for (;;) {
    name =
        directory + ".qv-" + std::to_string(::getpid()) + "-" + std::to_string(s_count++) + ".part";
    const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno == EEXIST) continue;
    std::FILE* const file = descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb");
    if (descriptor >= 0 && !file) {
      ::close(descriptor);
      ::unlink(name.c_str());
    }
    return file;
  }
}

/// Gives the file to whom the other belonged, as far as the system allows, and its permissions.
void KeepOwnerAndPermissions(std::FILE* file, const struct stat& former) {
  const int descriptor = ::fileno(file);
  [[maybe_unused]] const int ignored = ::fchown(descriptor, former.st_uid, former.st_gid);
  ::fchmod(descriptor, former.st_mode & 0777);
}

}  // namespace

/// While it lives, a pipe that nobody reads any more makes a write of this thread fail instead of
/// ending the process.
class CQvOutputFile::BrokenPipeGuard {
 public:
  BrokenPipeGuard() {
    sigset_t pending;
    ::sigpending(&pending);
    m_wasPending = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &BrokenPipe(), &m_former);
  }
  BrokenPipeGuard(const BrokenPipeGuard&) = delete;
  BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;
  ~BrokenPipeGuard() {
    const timespec noWait{};
    if (!m_wasPending) ::sigtimedwait(&BrokenPipe(), nullptr, &noWait);
    ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
  }

 private:
  static const sigset_t& BrokenPipe() {
    static const sigset_t s_set = [] {
      sigset_t set;
      ::sigemptyset(&set);
      ::sigaddset(&set, SIGPIPE);
      return set;
    }();
    return s_set;
  }

  sigset_t m_former;
  bool m_wasPending;
};

CQvOutputFile::CQvOutputFile(const GenICam::gcstring& fileName) : m_fileName(fileName.c_str()) {
  m_streamBuffer = std::make_unique_for_overwrite<char[]>(kStreamBufferSize);
  m_brokenPipeGuard = std::make_unique<BrokenPipeGuard>();
  Open();
  if (!m_file) ThrowUnwritable(fileName);
  std::setvbuf(m_file, m_streamBuffer.get(), _IOFBF, kStreamBufferSize);
}

CQvOutputFile::~CQvOutputFile() { Discard(); }

void CQvOutputFile::Open() {
  struct stat former;
  if (::stat(m_fileName.c_str(), &former) == 0) {
    if (!S_ISREG(former.st_mode)) return OpenNamed();
    if (::faccessat(AT_FDCWD, m_fileName.c_str(), W_OK, AT_EACCESS) != 0) return;
    OpenBeside(FollowLinks(m_fileName));
    if (m_file && !m_target.empty()) KeepOwnerAndPermissions(m_file, former);
    return;
  }
  if (errno == ENOENT && ::lstat(m_fileName.c_str(), &former) != 0) return OpenBeside(m_fileName);
  OpenNamed();
}

void CQvOutputFile::OpenBeside(const std::string& target) {
  m_file = MakeBeside(target, m_incomplete);
  if (m_file) {
    m_target = target;
    return;
  }
  m_incomplete.clear();
  // Without room for another file the old one stays; without the right to make one it is rewritten.
  if (errno == EACCES || errno == EPERM || errno == EROFS) OpenNamed();
}

void CQvOutputFile::OpenNamed() {
  m_file = std::fopen(m_fileName.c_str(), "wbe");
  struct stat status;
  if (m_file && ::fstat(::fileno(m_file), &status) == 0 && S_ISREG(status.st_mode))
    m_incomplete = FollowLinks(m_fileName);
}

void CQvOutputFile::Commit() {
  if (Close() && TakeName()) return;
  Discard();
  throw RUNTIME_EXCEPTION("File %s is unwritable.", m_fileName.c_str());
}

bool CQvOutputFile::Close() {
  std::FILE* const file = m_file;
  m_file = nullptr;
  const bool written = !std::ferror(file);
  return std::fclose(file) == 0 && written;
}

bool CQvOutputFile::TakeName() {
  if (!m_target.empty() && std::rename(m_incomplete.c_str(), m_target.c_str()) != 0) return false;
  m_incomplete.clear();
  return true;
}

void CQvOutputFile::Discard() {
  if (m_file) Close();
  if (m_incomplete.empty()) return;
  // An empty file at least is taken for no image.
  if (::unlink(m_incomplete.c_str()) != 0 && ::truncate(m_incomplete.c_str(), 0) != 0) return;
  m_incomplete.clear();
}

void ThrowUnwritable(const GenICam::gcstring& fileName) {
  throw RUNTIME_EXCEPTION("File %s is unwritable.", fileName.c_str());
}

bool WriteBytes(std::FILE* file, const void* bytes, std::size_t size) {
  return size == 0 || std::fwrite(bytes, 1, size, file) == size;
}

namespace {

/// writev() until all is written; the pieces are used up meanwhile.
bool WriteAll(int descriptor, std::span<iovec> pieces) {
  while (!pieces.empty()) {
    const ssize_t written = ::writev(descriptor, pieces.data(), static_cast<int>(pieces.size()));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    auto left = static_cast<std::size_t>(written);
    while (!pieces.empty() && left >= pieces.front().iov_len) {
      left -= pieces.front().iov_len;
      pieces = pieces.subspan(1);
    }
    if (pieces.empty()) break;
    pieces.front().iov_base = static_cast<char*>(pieces.front().iov_base) + left;
    pieces.front().iov_len -= left;
  }
  return true;
}

/// For streams that are no files of the system, such as one in memory.
bool WriteBuffered(std::FILE* file, std::span<const iovec> pieces) {
  return std::ranges::all_of(pieces, [file](const iovec& piece) {
    return WriteBytes(file, piece.iov_base, piece.iov_len);
  });
}

}  // namespace

void GatheredWriter::Add(const void* bytes, std::size_t size) {
  if (size == 0) return;
  if (m_count == m_pieces.size()) Flush();
  m_pieces[m_count++] = {.iov_base = const_cast<void*>(bytes), .iov_len = size};
}

void GatheredWriter::AddZeros(std::size_t size) {
  static constexpr std::array<char, 4096> kZeros{};
  for (; size > kZeros.size(); size -= kZeros.size()) Add(kZeros.data(), kZeros.size());
  Add(kZeros.data(), size);
}

bool GatheredWriter::Flush() {
  const std::span<iovec> pieces = std::span(m_pieces).first(m_count);
  const int descriptor = ::fileno(m_file);
  m_failed = m_failed || std::fflush(m_file) != 0 ||
             !(descriptor < 0 ? WriteBuffered(m_file, pieces) : WriteAll(descriptor, pieces));
  m_count = 0;
  return !m_failed;
}

}  // namespace QvApi
