// SPDX-License-Identifier: MIT
#include "QvSDKCommon/Path.h"

#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <string>

namespace {

/// Position of the last "/" with something before it, or npos.
std::size_t FindCut(const std::string& path) {
  const std::size_t cut = path.rfind('/');
  return cut == 0 ? std::string::npos : cut;
}

void MakeDirectory(const std::string& path) {
  if (mkdir(path.c_str(), 0775) == 0) return;
  const std::size_t cut = FindCut(path);
  if (cut == std::string::npos) return;
  MakeDirectory(path.substr(0, cut));
  mkdir(path.c_str(), 0775);
}

}  // namespace

void MakePath(const GenICam::gcstring& path, bool isFileName) {
  std::string directory = path.str();
  // No system call takes a longer path, and each of its parts is a level of recursion.
  if (directory.size() >= PATH_MAX) return;
  if (isFileName) {
    const std::size_t cut = FindCut(directory);
    if (cut == std::string::npos) return;
    directory.resize(cut);
  }
  MakeDirectory(directory);
}

std::FILE* openTempFile(const char* name) {
  const uid_t user = getuid();
  const bool isOwnUser = user == geteuid() && static_cast<int>(user) >= 0;
  const char* const directory = isOwnUser ? getenv("TMPDIR") : nullptr;
  std::array<char, 255> path;
  // A path that is cut has lost its pattern, which mkstemp refuses.
  std::snprintf(path.data(), path.size(), "%s/%s.XXXXXX", directory ? directory : "/tmp", name);
  const int file = mkstemp(path.data());
  if (file < 0) return nullptr;
  unlink(path.data());
  std::FILE* const stream = fdopen(file, "wb");
  if (!stream) close(file);
  return stream;
}
