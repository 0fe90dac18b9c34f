// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

/// Types that the whole layer shares. The standard's reference API takes its fixed-width integers
/// from this header.
