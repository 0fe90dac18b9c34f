// SPDX-License-Identifier: MIT
// Files for the tests of filers: a directory of the test's own, bytes in and out, and another
// program's eyes.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "QvApi_IP/TestImages.h"

namespace QvApi::Testing {

using FileBytes = std::vector<std::uint8_t>;

/// A directory that is gone at the end of the scope.
class TempDirectory {
 public:
  TempDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "qv-test-XXXXXX").string();
    if (!::mkdtemp(name.data())) throw std::runtime_error("mkdtemp");
    m_path = name;
  }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;
  ~TempDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }

  const std::filesystem::path& Path() const { return m_path; }
  std::string operator/(const std::string& name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

/// The names in a directory, hidden ones too.
inline std::vector<std::string> NamesIn(const std::filesystem::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory))
    names.push_back(entry.path().filename().string());
  return names;
}

inline FileBytes ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(const std::string& name, const FileBytes& bytes) {
  std::ofstream file(name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

using Stream = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

inline Stream OpenStream(const std::string& name, const char* mode) {
  Stream stream(std::fopen(name.c_str(), mode), &std::fclose);
  EXPECT_TRUE(stream) << name;
  return stream;
}

/// The bytes as an open file. `bytes` must outlive it and not be empty.
inline Stream OpenBytes(const FileBytes& bytes) {
  return {::fmemopen(const_cast<std::uint8_t*>(bytes.data()), bytes.size(), "rb"), &std::fclose};
}

/// A file of which only the first `readable` bytes can be read, though it says that it has more.
struct BrokenFile {
  const FileBytes& bytes;
  std::size_t readable;
  std::size_t position = 0;

  static ssize_t Read(void* cookie, char* to, std::size_t size) {
    auto& self = *static_cast<BrokenFile*>(cookie);
    if (self.position >= self.readable) return -1;
    size = std::min(size, self.readable - self.position);
    std::memcpy(to, self.bytes.data() + self.position, size);
    self.position += size;
    return static_cast<ssize_t>(size);
  }
  static int Seek(void* cookie, off64_t* offset, int whence) {
    auto& self = *static_cast<BrokenFile*>(cookie);
    const std::size_t base = whence == SEEK_SET   ? 0
                             : whence == SEEK_CUR ? self.position
                                                  : self.bytes.size();
    self.position = base + static_cast<std::size_t>(*offset);
    *offset = static_cast<off64_t>(self.position);
    return 0;
  }
  Stream Open() {
    return {
        ::fopencookie(this, "rb", {.read = Read, .write = nullptr, .seek = Seek, .close = nullptr}),
        &std::fclose};
  }
};

template <class T>
void Append(FileBytes& bytes, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i)
    bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

/// Output of a command, which must succeed.
inline std::string OutputOf(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::popen(command.c_str(), "r"),
                                                             [](std::FILE*) { return 0; });
  std::string output;
  std::array<char, 4096> part;
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe.get()))
    output.append(part.data(), size);
  EXPECT_EQ(::pclose(pipe.get()), 0) << command;
  return output;
}

/// What ImageMagick makes of a file: red, green, blue and alpha of each pixel, of 8 or 16 bits.
struct SeenPicture {
  std::size_t width = 0;
  std::size_t height = 0;
  std::vector<unsigned> samples;
};

inline SeenPicture SeenByImageMagick(const std::string& name, unsigned depth) {
  const std::string output =
      OutputOf("convert-im6.q16 '" + name + "' -depth " + std::to_string(depth) +
               " -endian LSB -print '%w %h\\n' rgba:-");
  SeenPicture picture;
  std::istringstream(output) >> picture.width >> picture.height;
  const std::size_t size = depth / 8;
  for (std::size_t i = output.find('\n') + 1; i + size <= output.size(); i += size) {
    const auto low = static_cast<std::uint8_t>(output[i]);
    const auto high = static_cast<std::uint8_t>(output[i + size - 1]);
    picture.samples.push_back(size == 1 ? low : low + 256U * high);
  }
  EXPECT_EQ(picture.samples.size(), 4 * picture.width * picture.height) << name;
  return picture;
}

/// Where red, green and blue stand in a pixel, alpha being at 3 if there is one.
inline std::array<std::size_t, 3> ColorPlaces(const IQvImage& image) {
  const IQvPixelFormatInfoInside& info = Info(image.GetImagePixelFormat());
  if (info.GetComponentCount() == 1) return {0, 0, 0};
  return info.IsBGR() ? std::array<std::size_t, 3>{2, 1, 0} : std::array<std::size_t, 3>{0, 1, 2};
}

}  // namespace QvApi::Testing
