// SPDX-License-Identifier: MIT
#pragma once

/// Marks what applications see of a library. Everything else is hidden. Interfaces and exceptions
/// carry it too, so that `catch` and `dynamic_cast` work across the libraries.
#define QVAPI_EXPORT __attribute__((visibility("default")))
