// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace Bench {

/// A folder of its own, on memory-backed disk where there is one, that goes when the row is done.
class Folder {
 public:
  Folder() {
    const std::filesystem::path memory = "/dev/shm";
    std::string pattern =
        ((access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path()) /
         "qvapi-bench-XXXXXX")
            .string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("No folder for files could be made.");
    m_path = pattern;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  std::string File(const std::string& name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

}  // namespace Bench
