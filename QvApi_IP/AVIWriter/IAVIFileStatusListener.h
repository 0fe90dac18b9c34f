// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>
#include <Base/GCString.h>

namespace QvApi {

/// Gives a video file its names and hears how it fares. All calls come from the worker's thread,
/// which holds no lock meanwhile.
class IAVIFileStatusListener {
 public:
  virtual ~IAVIFileStatusListener() = default;
  /// Takes the next name off the list. False if there is none; then `name` stays as it is.
  virtual bool GetNextFileName(GenICam::gcstring& name) = 0;
  /// A CEventObject that is signalled while there are names.
  virtual void* GetNextFileExistEvent() = 0;
  virtual void OnFileOpened(const GenICam::gcstring& name) = 0;
  /// A file that was opened is closed, complete or not.
  virtual void OnFileClosed(const GenICam::gcstring& name) = 0;
  /// A file could not be opened, or a step of its recording threw.
  virtual void OnException(const GenICam::GenericException& exception) = 0;
};

}  // namespace QvApi
