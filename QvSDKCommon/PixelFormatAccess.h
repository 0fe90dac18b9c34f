// SPDX-License-Identifier: MIT
#pragma once

#include "QvSDKCommon/IQvPixelFormatInfo.h"
#include "QvSDKCommon/QvAssert.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// All information on a format that must be known; an unknown code ends the process.
inline const IQvPixelFormatInfoInside& RequirePixelFormatInfo(PixelFormat format) {
  const auto* pIQvPixelFormatInfoDest =
      dynamic_cast<const IQvPixelFormatInfoInside*>(GetIQvPixelFormatInfo(format));
  QV_ASSERT((pIQvPixelFormatInfoDest) != NULL);
  return *pIQvPixelFormatInfoDest;
}

}  // namespace QvApi
