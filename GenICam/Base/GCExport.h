// SPDX-License-Identifier: MIT
#pragma once

/// Marks a class or function as part of the library's interface. It goes on whole classes, so that
/// their type information is one across libraries and a catch or dynamic_cast in an application
/// works.
#define QVGENICAM_API __attribute__((visibility("default")))
