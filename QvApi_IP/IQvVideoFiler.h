// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCException.h>
#include <Base/GCString.h>

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/ColorMap.h"
#include "QvApi_IP/IQvFiler.h"
#include "QvSDKCommon/IQvCallback.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// The kinds of video file.
enum EQvVideoFileFormat_t : unsigned {
  QvVideoFileFormat_AVI1 = 0,  ///< Classic AVI, up to 2 GiB a file.
  QvVideoFileFormat_AVI2 = 1,  ///< OpenDML AVI 2.0, up to 1 TiB a file.
};

/// How frames are stored.
enum EQvVideoFileCompression_t : unsigned {
  QvVideoFileCompression_Uncompressed = 0,
  QvVideoFileCompression_MotionJPEG = 1,
};

/// Turns a stream of images into video files, without making its caller wait for the disk.
///
/// The caller registers names of files and hands over images with their numbers. Each image is
/// converted on the caller's thread (colour formats to `BGR8`, others to `Mono8`, or to `BGR8` if a
/// colour map is to act on `Mono8`) into one of ten frames; a worker thread writes them. A file
/// ends when it has no room for the next frame number, and the next name takes over. Without a name
/// left the filer is stopped, and images are dropped; so an application that wants a series of
/// files keeps names registered ahead, for example from its listener for
/// QvCallbackType_VideoFilerClose.
///
/// Listeners are called on the worker's thread. There they may register names and read settings,
/// but must not call what ends a recording, nor RegisterIQvImage(). What ends a recording: Reset(),
/// Release(), a change of format, compression, ReverseY, FPS or MaximumFrameCountPerFile, by setter
/// or node, and an image of another size or destination format. All of these wait until the frames
/// at hand are written and the file is closed; the next image begins a new recording, with the
/// names that are left.
///
/// RegisterIQvImage() and what ends a recording are for one thread at a time; the rest is safe from
/// any thread.
class QVAPI_EXPORT IQvVideoFiler : public virtual IQvFiler {
 public:
  /// `AVI2` at the start.
  /// @throws GenICam::OutOfRangeException
  virtual EQvVideoFileFormat_t GetVideoFileFormat() const = 0;
  virtual void SetVideoFileFormat(EQvVideoFileFormat_t format) = 0;
  /// `MotionJPEG` at the start.
  /// @throws GenICam::OutOfRangeException
  virtual EQvVideoFileCompression_t GetVideoFileCompression() const = 0;
  virtual void SetVideoFileCompression(EQvVideoFileCompression_t compression) = 0;
  /// Quality of Motion JPEG, 0 to 100; 75 at the start. Taken by the next recording.
  /// @throws GenICam::OutOfRangeException
  virtual unsigned int GetQuality() const = 0;
  virtual void SetQuality(unsigned int value) = 0;
  /// Stores images upside down; off at the start.
  virtual bool GetReverseY() const = 0;
  virtual void SetReverseY(bool reverse) = 0;
  /// Frames per second of playback, 0.001 to 65535; one a minute at the start.
  /// @throws GenICam::OutOfRangeException
  virtual double GetFPS() const = 0;
  virtual void SetFPS(double fps) = 0;

  /// Adds the name of a file to write, and starts a filer that was stopped. Directories are made as
  /// needed.
  /// @throws GenICam::BadAllocException
  virtual void RegisterFileName(const GenICam::gcstring& name) = 0;

  /// Hands over one image, which the caller may reuse on return. Waits for a free frame; an image
  /// is dropped, without a word, only while the filer is stopped.
  ///
  /// @param frameNumber  counted by the camera, modulo 2^32. Missing numbers stay as gaps in the
  ///                     file, so that it keeps time. One that is not above the last counts as a
  ///                     wrap; a repeated one is thus 2^32 ahead, and ends the file.
  /// @throws GenICam::InvalidArgumentException  a null image; "Invalid codec."
  /// @throws GenICam::OutOfRangeException       an image without pixels, or too large for a file
  /// @throws GenICam::RuntimeException          the format cannot be converted
  /// @throws GenICam::BadAllocException         no memory
  /// @throws CQvLinuxErrorException             the system gives no thread or no information
  virtual void RegisterIQvImage(IQvImage* image, unsigned int frameNumber) = 0;

  /// No file is open, and no name is left.
  virtual bool IsStopped() = 0;

  /// Frame numbers, present or missing, that one file holds, 1 to 100000; 600 at the start.
  /// @throws GenICam::OutOfRangeException
  virtual std::size_t GetMaximumFrameCountPerFile() const = 0;
  virtual void SetMaximumFrameCountPerFile(std::size_t value) = 0;

  /// Writes the frames at hand, closes the file, and forgets the names that are left.
  virtual void Reset() = 0;

  /// The colour map that monochrome images are stored with; see SetColorMap(). `Normal` at the
  /// start. It acts on images of `Mono8`, and in uncompressed files, from the next recording on, on
  /// monochrome ones of more bits.
  /// @throws GenICam::OutOfRangeException
  virtual EQvColorMapType_t GetColorMapType() const = 0;
  virtual void SetColorMapType(EQvColorMapType_t type) = 0;
  virtual bool GetColorMapInversion() const = 0;
  virtual void SetColorMapInversion(bool inversion) = 0;
  /// 0 to 255.
  /// @throws GenICam::OutOfRangeException
  virtual int GetColorMapPhase() const = 0;
  virtual void SetColorMapPhase(int phase) = 0;
};

/// IQvCallbackParamBase::GetCallbackType() of what a video filer reports.
enum EQvVideoFilerCallbackType_t : std::uint32_t {
  QvCallbackType_VideoFilerOpen = 6,   ///< IQvCallbackParamQvApiIPVideoFilerOpen
  QvCallbackType_VideoFilerClose = 7,  ///< IQvCallbackParamQvApiIPVideoFilerClose
  QvCallbackType_VideoFilerError = 8,  ///< IQvCallbackParamQvApiIPVideoFilerError
};

/// A file was opened. References are valid until the call returns.
class QVAPI_EXPORT IQvCallbackParamQvApiIPVideoFilerOpen : public IQvCallbackParamBase {
 public:
  virtual IQvVideoFiler* GetIQvVideoFiler() const = 0;
  virtual const GenICam::gcstring& GetFileName() const = 0;
};

/// A file was closed. If no name is left, the filer is stopped by now, until one is registered.
class QVAPI_EXPORT IQvCallbackParamQvApiIPVideoFilerClose : public IQvCallbackParamBase {
 public:
  virtual IQvVideoFiler* GetIQvVideoFiler() const = 0;
  virtual const GenICam::gcstring& GetFileName() const = 0;
};

/// The worker met a failure, such as a file that could not be opened. It goes on with the next
/// name.
class QVAPI_EXPORT IQvCallbackParamQvApiIPVideoFilerError : public IQvCallbackParamBase {
 public:
  virtual IQvVideoFiler* GetIQvVideoFiler() const = 0;
  virtual const GenICam::GenericException& GetException() const = 0;
};

}  // namespace QvApi
