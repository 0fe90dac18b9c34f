// SPDX-License-Identifier: MIT
#include <Base/GCString.h>

#include <istream>
#include <ostream>
#include <utility>

namespace GenICam {
namespace {

const char* OrEmpty(const char* text) noexcept { return text == nullptr ? "" : text; }

}  // namespace

gcstring::gcstring(const char* text) : m_text(OrEmpty(text)) {}
gcstring::gcstring(const char* text, std::size_t length)
    : m_text(OrEmpty(text), text == nullptr ? 0 : length) {}
gcstring::gcstring(std::size_t count, char character) : m_text(count, character) {}
gcstring::gcstring(const std::string& text) : m_text(text) {}
gcstring::gcstring(std::string&& text) noexcept : m_text(std::move(text)) {}
gcstring::~gcstring() = default;

gcstring& gcstring::operator=(const char* text) { return assign(text); }
gcstring& gcstring::operator=(const std::string& text) {
  m_text = text;
  return *this;
}

gcstring& gcstring::assign(const gcstring& text) { return *this = text; }
gcstring& gcstring::assign(const char* text) {
  m_text.assign(OrEmpty(text));
  return *this;
}
gcstring& gcstring::assign(const char* text, std::size_t length) {
  m_text.assign(OrEmpty(text), text == nullptr ? 0 : length);
  return *this;
}
gcstring& gcstring::assign(std::size_t count, char character) {
  m_text.assign(count, character);
  return *this;
}

gcstring& gcstring::append(const gcstring& text) {
  m_text.append(text.m_text);
  return *this;
}
gcstring& gcstring::append(const char* text) {
  m_text.append(OrEmpty(text));
  return *this;
}
gcstring& gcstring::append(std::size_t count, char character) {
  m_text.append(count, character);
  return *this;
}
gcstring& gcstring::operator+=(const gcstring& text) { return append(text); }
gcstring& gcstring::operator+=(const char* text) { return append(text); }
gcstring& gcstring::operator+=(char character) { return append(1, character); }
void gcstring::push_back(char character) { m_text.push_back(character); }

const char* gcstring::c_str() const noexcept { return m_text.c_str(); }
const char* gcstring::data() const noexcept { return m_text.data(); }
gcstring::operator const char*() const noexcept { return m_text.c_str(); }
const std::string& gcstring::str() const noexcept { return m_text; }

std::size_t gcstring::length() const noexcept { return m_text.length(); }
std::size_t gcstring::size() const noexcept { return m_text.size(); }
std::size_t gcstring::max_size() const noexcept { return m_text.max_size(); }
std::size_t gcstring::capacity() const noexcept { return m_text.capacity(); }
bool gcstring::empty() const noexcept { return m_text.empty(); }
void gcstring::clear() noexcept { m_text.clear(); }
void gcstring::resize(std::size_t count, char filler) { m_text.resize(count, filler); }
void gcstring::reserve(std::size_t count) { m_text.reserve(count); }
void gcstring::swap(gcstring& other) noexcept { m_text.swap(other.m_text); }

int gcstring::compare(const gcstring& other) const noexcept { return m_text.compare(other.m_text); }
std::size_t gcstring::find(const gcstring& text, std::size_t offset) const noexcept {
  return m_text.find(text.m_text, offset);
}
std::size_t gcstring::find(const char* text, std::size_t offset) const noexcept {
  return m_text.find(OrEmpty(text), offset);
}
std::size_t gcstring::find(char character, std::size_t offset) const noexcept {
  return m_text.find(character, offset);
}
std::size_t gcstring::rfind(const gcstring& text, std::size_t offset) const noexcept {
  return m_text.rfind(text.m_text, offset);
}
std::size_t gcstring::rfind(char character, std::size_t offset) const noexcept {
  return m_text.rfind(character, offset);
}
std::size_t gcstring::find_first_of(const gcstring& set, std::size_t offset) const noexcept {
  return m_text.find_first_of(set.m_text, offset);
}
std::size_t gcstring::find_first_not_of(const gcstring& set, std::size_t offset) const noexcept {
  return m_text.find_first_not_of(set.m_text, offset);
}
std::size_t gcstring::find_last_of(const gcstring& set, std::size_t offset) const noexcept {
  return m_text.find_last_of(set.m_text, offset);
}
gcstring gcstring::substr(std::size_t offset, std::size_t count) const {
  return m_text.substr(offset, count);
}
gcstring& gcstring::erase(std::size_t offset, std::size_t count) {
  m_text.erase(offset, count);
  return *this;
}

gcstring operator+(const gcstring& a, const gcstring& b) { return gcstring(a) += b; }
gcstring operator+(const gcstring& a, const char* b) { return gcstring(a) += b; }
gcstring operator+(const char* a, const gcstring& b) { return gcstring(a) += b; }

std::ostream& operator<<(std::ostream& stream, const gcstring& text) {
  return stream << text.str();
}

std::istream& operator>>(std::istream& stream, gcstring& text) {
  std::string word;
  stream >> word;
  text = word;
  return stream;
}

}  // namespace GenICam
