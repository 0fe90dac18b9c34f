// SPDX-License-Identifier: MIT
#pragma once

#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// Starts the system for this process. Counted: each call is undone by one QvApiTerminate(). The
/// factories work only between the first and the last of these. Safe from any thread.
QVAPI_EXPORT void QvApiInitialize();

/// Undoes one QvApiInitialize(). Objects made before stay usable. Safe from any thread.
/// @throws GenICam::RuntimeException  there was no QvApiInitialize() to undo
QVAPI_EXPORT void QvApiTerminate();

/// @throws GenICam::RuntimeException  the system is not initialised
QVAPI_EXPORT void CheckQvApiInitialized();

}  // namespace QvApi
