// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// The name of a format for messages: its own, or for an unknown code "0x" and eight digits.
std::string FormatName(PixelFormat format);

}  // namespace QvApi
