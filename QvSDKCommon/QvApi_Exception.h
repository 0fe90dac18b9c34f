// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>
#include <Base/GCString.h>

#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvGenTLLib.h"

namespace QvApi {

/// A call into the transport layer returned an error.
class QVAPI_EXPORT CQvGenTLErrorException : public GenICam::GenericException {
 public:
  CQvGenTLErrorException(GenTL::GC_ERROR_LIST error, const char* functionName,
                         const char* description, const char* sourceFileName,
                         unsigned int sourceLine, const char* exceptionType);
  ~CQvGenTLErrorException() override;

  /// The call that failed.
  virtual GenICam::gcstring GetFunctionName() const;
  virtual GenTL::GC_ERROR_LIST GetError() const;

 private:
  GenTL::GC_ERROR_LIST m_error;
  GenICam::gcstring m_functionName;
};

/// A call of the operating system failed.
class QVAPI_EXPORT CQvLinuxErrorException : public GenICam::GenericException {
 public:
  CQvLinuxErrorException(int error, const char* functionName, const char* description,
                         const char* sourceFileName, unsigned int sourceLine,
                         const char* exceptionType);
  ~CQvLinuxErrorException() override;

  /// The call that failed.
  virtual GenICam::gcstring GetFunctionName() const;
  /// Its error, a value of errno.
  virtual int GetError() const;

 private:
  int m_error;
  GenICam::gcstring m_functionName;
};

/// Makes the exception of one failing place: `throw QVLINUX_ERROR_EXCEPTION(error, "sysconf",
/// ...)`. The text is formatted by the rules of printf, behind it come code and text of the error,
/// and all is cut behind 1023 bytes.
class QVAPI_EXPORT CQvLinuxErrorExceptionReporter {
 public:
  /// The texts must outlive the reporter.
  CQvLinuxErrorExceptionReporter(const char* sourceFileName, unsigned int sourceLine,
                                 const char* exceptionType);

  /// The text of the error is that of the present errno, its code is `error`.
  [[gnu::format(printf, 4, 5)]] CQvLinuxErrorException Report(int error, const char* functionName,
                                                              const char* format, ...) const;

 private:
  const char* m_sourceFileName;
  unsigned int m_sourceLine;
  const char* m_exceptionType;
};

/// The same for the transport layer, whose own text of the error is added where it has one.
class QVAPI_EXPORT CQvGenTLErrorExceptionReporter {
 public:
  /// The texts must outlive the reporter.
  CQvGenTLErrorExceptionReporter(const char* sourceFileName, unsigned int sourceLine,
                                 const char* exceptionType);

  /// @param library  may be null; asked for its text only if its last error is `error`
  [[gnu::format(printf, 5, 6)]] CQvGenTLErrorException Report(const CQvGenTLLib* library,
                                                              GenTL::GC_ERROR_LIST error,
                                                              const char* functionName,
                                                              const char* format, ...) const;

 private:
  const char* m_sourceFileName;
  unsigned int m_sourceLine;
  const char* m_exceptionType;
};

}  // namespace QvApi

#define QVLINUX_ERROR_EXCEPTION(...)                                                     \
  ::QvApi::CQvLinuxErrorExceptionReporter(                                               \
      GENICAM_SOURCE_FILE, static_cast<unsigned int>(__LINE__), "QvLinuxErrorException") \
      .Report(__VA_ARGS__)
#define QVGENTL_ERROR_EXCEPTION(...)                                                     \
  ::QvApi::CQvGenTLErrorExceptionReporter(                                               \
      GENICAM_SOURCE_FILE, static_cast<unsigned int>(__LINE__), "QvGenTLErrorException") \
      .Report(__VA_ARGS__)
