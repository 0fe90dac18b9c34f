// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCExport.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <memory>

namespace GenICam {

/// Root of all failures that the libraries report: a text, the place in the source, and the name of
/// the type. Objects are immutable; copying one never throws and never allocates.
class QVGENICAM_API GenericException : public std::exception {
 public:
  /// The texts are copied; a null counts as empty. Should there be no memory for them, the object
  /// is made all the same and says so in what().
  GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                   const char* exceptionType) noexcept;
  GenericException(const GenericException&) noexcept = default;
  GenericException& operator=(const GenericException&) noexcept = default;

  /// What went wrong, without the place. Valid as long as this object or a copy of it.
  virtual const char* GetDescription() const noexcept;
  /// Path in the tree without extension, such as "QvApi_IP/QvGammaCorrectionFilter".
  virtual const char* GetSourceFileName() const noexcept;
  virtual unsigned int GetSourceLine() const noexcept;
  /// Description, type name, file and line in one text.
  const char* what() const noexcept override;

  ~GenericException() override;

 private:
  struct Texts;
  std::shared_ptr<const Texts> m_texts;
  unsigned int m_sourceLine;
};

#define QVGENICAM_DECLARE_EXCEPTION(name)              \
  class QVGENICAM_API name : public GenericException { \
   public:                                             \
    using GenericException::GenericException;          \
    name(const name&) noexcept = default;              \
    name& operator=(const name&) noexcept = default;   \
    ~name() override;                                  \
  }

/// Memory could not be had.
QVGENICAM_DECLARE_EXCEPTION(BadAllocException);
/// An argument means nothing to the callee.
QVGENICAM_DECLARE_EXCEPTION(InvalidArgumentException);
/// An argument lies outside its limits.
QVGENICAM_DECLARE_EXCEPTION(OutOfRangeException);
/// A property of a node in a document is wrong or missing.
QVGENICAM_DECLARE_EXCEPTION(PropertyException);
/// A state or the data at hand does not allow the operation.
QVGENICAM_DECLARE_EXCEPTION(RuntimeException);
/// The program contradicts itself.
QVGENICAM_DECLARE_EXCEPTION(LogicalErrorException);
/// The access mode forbids it, or a reference is empty.
QVGENICAM_DECLARE_EXCEPTION(AccessException);
/// A wait ran out.
QVGENICAM_DECLARE_EXCEPTION(TimeoutException);
/// An interface that an object does not have was asked for.
QVGENICAM_DECLARE_EXCEPTION(DynamicCastException);

#undef QVGENICAM_DECLARE_EXCEPTION

/// Makes the exception of one failing place: `throw ExceptionReporter<T>(file, line, "T")
/// .Report(format, ...)`. T needs the constructor of GenericException.
template <class T>
class ExceptionReporter {
 public:
  /// The texts must outlive the reporter.
  ExceptionReporter(const char* sourceFileName, unsigned int sourceLine,
                    const char* exceptionType) noexcept
      : m_sourceFileName(sourceFileName),
        m_sourceLine(sourceLine),
        m_exceptionType(exceptionType) {}

  /// The text is formatted by the rules of printf and cut behind 1023 bytes. Text from elsewhere
  /// goes through "%s", never into the format.
  [[gnu::format(printf, 2, 3)]] T Report(const char* format, ...) const {
    std::array<char, kTextSize> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return T(text.data(), m_sourceFileName, m_sourceLine, m_exceptionType);
  }

  /// An exception with an empty text.
  T Report() const { return T("", m_sourceFileName, m_sourceLine, m_exceptionType); }

 private:
  static constexpr std::size_t kTextSize = 1024;

  const char* m_sourceFileName;
  unsigned int m_sourceLine;
  const char* m_exceptionType;
};

namespace Detail {

/// A text literal as a template argument.
template <std::size_t Size>
struct FixedText {
  consteval FixedText(const char (&literal)[Size]) { std::copy_n(literal, Size, text); }
  char text[Size]{};
};

template <std::size_t Size>
consteval FixedText<Size> WithoutExtension(FixedText<Size> path) {
  for (std::size_t i = Size; i-- > 0 && path.text[i] != '/';) {
    if (path.text[i] != '.') continue;
    std::fill(path.text + i, path.text + Size, '\0');
    break;
  }
  return path;
}

/// The path cut at compile time, so that a throw copies nothing. One object per source file.
template <FixedText Path>
inline constexpr auto kSourceName = WithoutExtension(Path);

}  // namespace Detail
}  // namespace GenICam

/// Path of this source file in the tree, without extension, as a constant text.
#define GENICAM_SOURCE_FILE (::GenICam::Detail::kSourceName<__FILE__>.text)

/// Reporter for a type of any namespace, with its name as text.
#define GENICAM_REPORTER(type, name) \
  ::GenICam::ExceptionReporter<type>(GENICAM_SOURCE_FILE, static_cast<unsigned int>(__LINE__), name)

// One short form per type, used as `throw RUNTIME_EXCEPTION("File %s is unreadable.", name)`.
#define BAD_ALLOC_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::BadAllocException, "BadAllocException").Report(__VA_ARGS__)
#define INVALID_ARGUMENT_EXCEPTION(...)                                             \
  GENICAM_REPORTER(::GenICam::InvalidArgumentException, "InvalidArgumentException") \
      .Report(__VA_ARGS__)
#define OUT_OF_RANGE_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::OutOfRangeException, "OutOfRangeException").Report(__VA_ARGS__)
#define PROPERTY_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::PropertyException, "PropertyException").Report(__VA_ARGS__)
#define RUNTIME_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::RuntimeException, "RuntimeException").Report(__VA_ARGS__)
#define LOGICAL_ERROR_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::LogicalErrorException, "LogicalErrorException").Report(__VA_ARGS__)
#define ACCESS_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::AccessException, "AccessException").Report(__VA_ARGS__)
#define TIMEOUT_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::TimeoutException, "TimeoutException").Report(__VA_ARGS__)
#define DYNAMIC_CAST_EXCEPTION(...) \
  GENICAM_REPORTER(::GenICam::DynamicCastException, "DynamicCastException").Report(__VA_ARGS__)
