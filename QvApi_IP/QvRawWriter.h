// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstdio>

#include "QvApi_IP/QvRawFileHeader.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"

namespace QvApi {

/// Writes the library's own lossless file: a header of 72 bytes, then all planes as they lie in
/// memory, line padding too. Of a view these are as many bytes as its parent has, from the view's
/// first one on; those behind the parent's end are written as 0.
/// @throws GenICam::RuntimeException  "Not supported pixelformat %s" for an unknown code, "There is
///                                    no available image.", "File %s is unwritable."
void WriteRaw(IQvImage* image, const GenICam::gcstring& fileName, std::FILE* file);

/// Reads a raw file in its size, format and line pitch. One whose header contradicts itself, its
/// length or the pitches that the format can have is refused, as that of a lower view always is.
/// What is refused leaves the buffer as it was, unless reading fails halfway: then the image is
/// black.
/// @throws GenICam::RuntimeException   "File %s is unreadable."
/// @throws GenICam::BadAllocException  no memory
void LoadRaw(IQvImageBuffer* buffer, const GenICam::gcstring& fileName, std::FILE* file);

}  // namespace QvApi
