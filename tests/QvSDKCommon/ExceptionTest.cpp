// SPDX-License-Identifier: MIT
#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "QvSDKCommon/QvApi_Exception.h"

namespace QvApi {
namespace {

TEST(LinuxErrorException, CarriesCodeNameAndText) {
  try {
    errno = EACCES;
    // The text is that of errno, whatever code is passed.
    throw QVLINUX_ERROR_EXCEPTION(0x16, "sysconf(_SC_PAGESIZE)", "Return %ld <=0", -1L);
  } catch (const GenICam::GenericException& e) {
    EXPECT_STREQ(e.GetDescription(), "Return -1 <=0 ErrorCode=0x00000016 \" \"Permission denied");
    EXPECT_STREQ(e.GetSourceFileName(), "tests/QvSDKCommon/ExceptionTest");
    EXPECT_NE(std::string(e.what()).find("QvLinuxErrorException"), std::string::npos);
    const auto& error = dynamic_cast<const CQvLinuxErrorException&>(e);
    EXPECT_EQ(error.GetError(), 0x16);
    EXPECT_EQ(error.GetFunctionName(), "sysconf(_SC_PAGESIZE)");
  }
}

TEST(LinuxErrorException, LongTextsAreCut) {
  const std::string longText(2000, 'x');
  errno = ENOENT;
  const CQvLinuxErrorExceptionReporter reporter("file", 7, "QvLinuxErrorException");
  EXPECT_EQ(std::string(reporter.Report(1, "f", "%s", longText.c_str()).GetDescription()),
            longText.substr(0, 1023));
  const auto almost = reporter.Report(1, "f", "%s", longText.substr(0, 1010).c_str());
  EXPECT_EQ(std::string(almost.GetDescription()), longText.substr(0, 1010) + " ErrorCode=0x");
  EXPECT_EQ(almost.GetSourceLine(), 7u);
}

/// A producer whose last error is told by these values.
struct LastError {
  GenTL::GC_ERROR code;
  const char* text;
  int failingCall;  ///< 1 or 2; 0 for none.
  int calls;
};

LastError g_lastError;

GenTL::GC_ERROR GetLastError(GenTL::GC_ERROR* error, char* text, std::size_t* size) {
  if (++g_lastError.calls == g_lastError.failingCall) return GenTL::GC_ERR_ERROR;
  *error = g_lastError.code;
  if (text) strcpy(text, g_lastError.text);
  *size = strlen(g_lastError.text) + 1;
  return GenTL::GC_ERR_SUCCESS;
}

TEST(GenTLErrorException, AddsTheProducersText) {
  const CQvGenTLLib library{.GCGetLastError = &GetLastError};
  const CQvGenTLLib without;
  struct Case {
    const CQvGenTLLib* library;
    LastError lastError;
    const char* expected;
  };
  const Case cases[]{
      {&library, {GenTL::GC_ERR_IO, "cable 100% gone", 0, 0}, "read 4 cable 100% gone"},
      {&library, {GenTL::GC_ERR_BUSY, "other", 0, 0}, "read 4"},
      {&library, {GenTL::GC_ERR_IO, "x", 1, 0}, "read 4"},
      {&library, {GenTL::GC_ERR_IO, "x", 2, 0}, "read 4"},
      {&library, {GenTL::GC_ERR_IO, "", 0, 0}, "read 4 "},
      {&without, {GenTL::GC_ERR_IO, "x", 0, 0}, "read 4"},
      {nullptr, {GenTL::GC_ERR_IO, "x", 0, 0}, "read 4"}};
  for (const auto& [lib, lastError, expected] : cases) {
    g_lastError = lastError;
    try {
      throw QVGENTL_ERROR_EXCEPTION(lib, GenTL::GC_ERR_IO, "GCReadPort", "read %d", 4);
    } catch (const CQvGenTLErrorException& e) {
      EXPECT_STREQ(e.GetDescription(), expected);
      EXPECT_EQ(e.GetError(), GenTL::GC_ERR_IO);
      EXPECT_EQ(e.GetFunctionName(), "GCReadPort");
      EXPECT_NE(std::string(e.what()).find("QvGenTLErrorException"), std::string::npos);
    }
  }
}

TEST(GenTLErrorException, LongTextsAreCut) {
  const std::string longText(5000, 'y');
  g_lastError = {GenTL::GC_ERR_IO, longText.c_str(), 0, 0};
  const CQvGenTLLib library{.GCGetLastError = &GetLastError};
  const auto e = QVGENTL_ERROR_EXCEPTION(&library, GenTL::GC_ERR_IO, "f", "read");
  EXPECT_EQ(e.GetDescription(), "read " + std::string(1018, 'y'));
}

}  // namespace
}  // namespace QvApi
