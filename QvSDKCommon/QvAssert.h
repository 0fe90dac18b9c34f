// SPDX-License-Identifier: MIT
#pragma once

#include <assert.h>

// <assert.h> declares this only where NDEBUG is not set.
extern "C" void __assert_fail(const char* expression, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((__noreturn__));

/// Checks what the caller of the code must guarantee. Stays live in every build, whatever NDEBUG
/// says: a broken contract ends the process with the expression, the file and the line. Pixel data
/// is never checked this way.
#define QV_ASSERT(expression)    \
  (static_cast<bool>(expression) \
       ? static_cast<void>(0)    \
       : __assert_fail(#expression, __FILE__, __LINE__, __extension__ __PRETTY_FUNCTION__))
