// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include "QvSDKCommon/QvExport.h"

/// Makes a directory and those above it, with the permissions 0775 less the umask. What cannot be
/// made is not reported: opening the file in it will fail.
///
/// @param isFileName  the path names a file: makes the directories that lead to it. A name without
///                    directory makes nothing.
QVAPI_EXPORT void MakePath(const GenICam::gcstring& path, bool isFileName);
