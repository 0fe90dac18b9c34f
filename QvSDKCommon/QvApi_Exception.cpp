// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvApi_Exception.h"

#include <errno.h>
#include <string.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

namespace QvApi {
namespace {

/// A text of at most 1023 bytes; what does not fit is cut.
class ReportText {
 public:
  [[gnu::format(printf, 2, 0)]] void FormatV(const char* format, va_list arguments) {
    const std::size_t used = strlen(m_text.data());
    std::vsnprintf(m_text.data() + used, m_text.size() - used, format, arguments);
  }
  [[gnu::format(printf, 2, 3)]] void Append(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
  }
  const char* c_str() const { return m_text.data(); }

 private:
  std::array<char, 1024> m_text{};
};

/// The producer's text of its last error if that is `error`, else null. A failure to get it is not
/// reported, since the first failure is what counts.
std::unique_ptr<char[]> GetLastErrorText(const CQvGenTLLib* library, GenTL::GC_ERROR_LIST error) {
  if (!library || !library->GCGetLastError) return nullptr;
  GenTL::GC_ERROR lastError = GenTL::GC_ERR_SUCCESS;
  std::size_t size = 0;
  if (library->GCGetLastError(&lastError, nullptr, &size) != GenTL::GC_ERR_SUCCESS ||
      lastError != error || size > PTRDIFF_MAX - 1)
    return nullptr;
  std::unique_ptr<char[]> text(new (std::nothrow) char[size + 1]{});
  if (!text || library->GCGetLastError(&lastError, text.get(), &size) != GenTL::GC_ERR_SUCCESS ||
      lastError != error)
    return nullptr;
  return text;
}

}  // namespace

CQvGenTLErrorException::CQvGenTLErrorException(GenTL::GC_ERROR_LIST error, const char* functionName,
                                               const char* description, const char* sourceFileName,
                                               unsigned int sourceLine, const char* exceptionType)
    : GenericException(description, sourceFileName, sourceLine, exceptionType),
      m_error(error),
      m_functionName(functionName) {}

CQvGenTLErrorException::~CQvGenTLErrorException() = default;

GenICam::gcstring CQvGenTLErrorException::GetFunctionName() const { return m_functionName; }

GenTL::GC_ERROR_LIST CQvGenTLErrorException::GetError() const { return m_error; }

CQvLinuxErrorException::CQvLinuxErrorException(int error, const char* functionName,
                                               const char* description, const char* sourceFileName,
                                               unsigned int sourceLine, const char* exceptionType)
    : GenericException(description, sourceFileName, sourceLine, exceptionType),
      m_error(error),
      m_functionName(functionName) {}

CQvLinuxErrorException::~CQvLinuxErrorException() = default;

GenICam::gcstring CQvLinuxErrorException::GetFunctionName() const { return m_functionName; }

int CQvLinuxErrorException::GetError() const { return m_error; }

CQvLinuxErrorExceptionReporter::CQvLinuxErrorExceptionReporter(const char* sourceFileName,
                                                               unsigned int sourceLine,
                                                               const char* exceptionType)
    : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine), m_exceptionType(exceptionType) {}

CQvLinuxErrorException CQvLinuxErrorExceptionReporter::Report(int error, const char* functionName,
                                                              const char* format, ...) const {
  const int presentError = errno;
  ReportText text;
  va_list arguments;
  va_start(arguments, format);
  text.FormatV(format, arguments);
  va_end(arguments);
  std::array<char, 128> buffer{};
  text.Append(" ErrorCode=0x%08x \" \"%s", static_cast<unsigned>(error),
              strerror_r(presentError, buffer.data(), buffer.size()));
  return {error, functionName, text.c_str(), m_sourceFileName, m_sourceLine, m_exceptionType};
}

CQvGenTLErrorExceptionReporter::CQvGenTLErrorExceptionReporter(const char* sourceFileName,
                                                               unsigned int sourceLine,
                                                               const char* exceptionType)
    : m_sourceFileName(sourceFileName), m_sourceLine(sourceLine), m_exceptionType(exceptionType) {}

CQvGenTLErrorException CQvGenTLErrorExceptionReporter::Report(const CQvGenTLLib* library,
                                                              GenTL::GC_ERROR_LIST error,
                                                              const char* functionName,
                                                              const char* format, ...) const {
  ReportText text;
  va_list arguments;
  va_start(arguments, format);
  text.FormatV(format, arguments);
  va_end(arguments);
  if (const auto detail = GetLastErrorText(library, error)) text.Append(" %s", detail.get());
  return {error, functionName, text.c_str(), m_sourceFileName, m_sourceLine, m_exceptionType};
}

}  // namespace QvApi
