// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include "QvSDKCommon/IQvImage.h"

namespace QvApi {

/// Writes every sample of an image as text, for a spreadsheet: three lines that tell width, height
/// and pixel format, then a line for each line of the image, plane behind plane, with a comma
/// behind each decimal value. In the GigE Vision `Packed` formats the upper nibble of the byte that
/// two samples share counts as the first one's, where PFNC has the lower one. Makes the file
/// itself.
/// @throws GenICam::RuntimeException  "Not supported pixelformat %s", "File %s is unwritable."
void WriteCSV(IQvImage* image, const GenICam::gcstring& fileName);

}  // namespace QvApi
