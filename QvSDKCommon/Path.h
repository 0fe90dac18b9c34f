// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstdio>

#include "QvSDKCommon/QvExport.h"

/// Makes a directory and those above it, with the permissions 0775 less the umask. What cannot be
/// made is not reported: opening the file in it will fail.
///
/// @param isFileName  the path names a file: makes the directories that lead to it. A name without
///                    directory makes nothing.
QVAPI_EXPORT void MakePath(const GenICam::gcstring& path, bool isFileName);

/// Opens a file for writing that has no name any more, so that closing it is its end. It lies in
/// TMPDIR, but in /tmp if that is not set or the program runs with another user's rights.
///
/// @param name  first part of the name that the file has for a moment
/// @return null if it cannot be had
QVAPI_EXPORT std::FILE* openTempFile(const char* name);
