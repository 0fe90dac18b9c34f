// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvFormatName.h"

#include <array>
#include <cstdio>

#include "QvSDKCommon/IQvPixelFormatInfo.h"

namespace QvApi {

std::string FormatName(PixelFormat format) {
  if (const IQvPixelFormatInfo* info = GetIQvPixelFormatInfo(format))
    return info->GetName().c_str();
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(format));
  return text.data();
}

}  // namespace QvApi
