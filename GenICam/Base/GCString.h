// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCExport.h>

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <string>

namespace GenICam {

/// The string that crosses the interfaces of the layer: bytes, by convention UTF-8, which may hold
/// zeros. A value class without locking; each object belongs to one thread at a time.
///
/// It converts by itself from `const char*` and `std::string` and to `const char*`, so
/// `std::string(text)` works too. Members that allocate throw std::bad_alloc; a null
/// `const char*` counts as an empty text.
class QVGENICAM_API gcstring {
 public:
  /// "Not found", and "to the end" as a count.
  static constexpr std::size_t npos = std::string::npos;

  gcstring() = default;
  gcstring(const char* text);
  gcstring(const char* text, std::size_t length);
  gcstring(std::size_t count, char character);
  gcstring(const std::string& text);
  gcstring(std::string&& text) noexcept;
  gcstring(const gcstring&) = default;
  gcstring(gcstring&&) noexcept = default;
  ~gcstring();

  gcstring& operator=(const gcstring&) = default;
  gcstring& operator=(gcstring&&) noexcept = default;
  gcstring& operator=(const char* text);
  gcstring& operator=(const std::string& text);

  gcstring& assign(const gcstring& text);
  gcstring& assign(const char* text);
  gcstring& assign(const char* text, std::size_t length);
  gcstring& assign(std::size_t count, char character);
  gcstring& append(const gcstring& text);
  gcstring& append(const char* text);
  gcstring& append(std::size_t count, char character);
  gcstring& operator+=(const gcstring& text);
  gcstring& operator+=(const char* text);
  gcstring& operator+=(char character);
  void push_back(char character);

  /// Zero-terminated; valid until the string changes.
  const char* c_str() const noexcept;
  const char* data() const noexcept;
  operator const char*() const noexcept;
  const std::string& str() const noexcept;

  std::size_t length() const noexcept;
  std::size_t size() const noexcept;
  std::size_t max_size() const noexcept;
  std::size_t capacity() const noexcept;
  bool empty() const noexcept;
  void clear() noexcept;
  void resize(std::size_t count, char filler = '\0');
  void reserve(std::size_t count);
  void swap(gcstring& other) noexcept;

  /// Negative, 0 or positive as this text sorts before, with or behind the other, byte by byte.
  int compare(const gcstring& other) const noexcept;
  /// Position of the first occurrence at or behind `offset`, or npos.
  std::size_t find(const gcstring& text, std::size_t offset = 0) const noexcept;
  std::size_t find(const char* text, std::size_t offset = 0) const noexcept;
  std::size_t find(char character, std::size_t offset = 0) const noexcept;
  std::size_t rfind(const gcstring& text, std::size_t offset = npos) const noexcept;
  std::size_t rfind(char character, std::size_t offset = npos) const noexcept;
  std::size_t find_first_of(const gcstring& set, std::size_t offset = 0) const noexcept;
  std::size_t find_first_not_of(const gcstring& set, std::size_t offset = 0) const noexcept;
  std::size_t find_last_of(const gcstring& set, std::size_t offset = npos) const noexcept;
  /// At most `count` bytes from `offset`. Throws std::out_of_range if `offset` lies behind the end.
  gcstring substr(std::size_t offset = 0, std::size_t count = npos) const;
  gcstring& erase(std::size_t offset = 0, std::size_t count = npos);

 private:
  std::string m_text;
};

// Overloads for const char* stand beside those for gcstring, since the conversion to const char*
// would otherwise offer a comparison of pointers as an equally good match.
inline bool operator==(const gcstring& a, const gcstring& b) noexcept { return a.str() == b.str(); }
inline bool operator==(const gcstring& a, const char* b) { return a.str() == b; }
inline std::strong_ordering operator<=>(const gcstring& a, const gcstring& b) noexcept {
  return a.str() <=> b.str();
}
inline std::strong_ordering operator<=>(const gcstring& a, const char* b) { return a.str() <=> b; }

QVGENICAM_API gcstring operator+(const gcstring& a, const gcstring& b);
QVGENICAM_API gcstring operator+(const gcstring& a, const char* b);
QVGENICAM_API gcstring operator+(const char* a, const gcstring& b);
QVGENICAM_API std::ostream& operator<<(std::ostream& stream, const gcstring& text);
QVGENICAM_API std::istream& operator>>(std::istream& stream, gcstring& text);

}  // namespace GenICam
