// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// Bytes that may be read from the first one of an image on, padding included: to the end of a
/// buffer's last plane, for a view to the end of its parent, for any other image to its last
/// significant byte.
///
/// Files that hold lines as long as the pitch need it, since of a view the last line may end before
/// its pitch does.
/// @param image  an image with memory and a known format
QVAPI_EXPORT std::size_t GetReadableSize(const IQvImage& image);

}  // namespace QvApi
