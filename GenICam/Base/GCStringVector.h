// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <vector>

namespace GenICam {

/// A list of texts.
using gcstring_vector = std::vector<gcstring>;

}  // namespace GenICam
