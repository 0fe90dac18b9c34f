// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include "QvApi_IP/ColorMap.h"
#include "QvApi_IP/IQvFiler.h"
#include "QvSDKCommon/IQvImage.h"
#include "QvSDKCommon/IQvImageBuffer.h"
#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// The kinds of file for one image. All are written; raw, BMP and PNG files are loaded too.
enum EQvStillImageFileFormat_t : unsigned {
  QvStillImageFileFormat_Raw = 0,   ///< The library's own: any pixel format, byte for byte.
  QvStillImageFileFormat_BMP = 1,   ///< Windows bitmap.
  QvStillImageFileFormat_JPEG = 2,  ///< Lossy.
  QvStillImageFileFormat_TIFF = 3,
  QvStillImageFileFormat_PNG = 4,
  QvStillImageFileFormat_CSV = 5,  ///< Numbers as text.
};

/// Saves an image to a file and loads one.
///
/// Save() and Load() keep no state, so two threads may use one filer at once if neither changes its
/// settings meanwhile.
class QVAPI_EXPORT IQvStillImageFiler : public virtual IQvFiler {
 public:
  /// Images of `format` can be saved in files of `fileFormat`, perhaps after a conversion.
  virtual bool IsSaveSupported(EQvPixelFormatNamingConvention_t format,
                               EQvStillImageFileFormat_t fileFormat) const = 0;
  /// Files of `fileFormat` give back images of `format` as they were saved. Raw files alone do, and
  /// those of every format; Load() takes other files too.
  virtual bool IsLoadSupported(EQvPixelFormatNamingConvention_t format,
                               EQvStillImageFileFormat_t fileFormat) const = 0;

  /// Saves an image, which must be an IQvImageInside, as the library's own are. Directories are
  /// made as needed. A file of that name is replaced when the new one is complete, so that after a
  /// failure the old one is still there.
  /// @throws GenICam::RuntimeException   "Not supported pixelformat %s", "File %s is unwritable."
  /// @throws GenICam::BadAllocException  no memory
  virtual void Save(IQvImage* pImage, EQvStillImageFileFormat_t fileFormat,
                    const GenICam::gcstring& fileName) const = 0;

  /// Loads a file of a kind that its first bytes tell: raw (every format), BMP (`Mono8` with a grey
  /// palette, `Mono10` to `Mono16`, `BGR8`, `BGRa8`, `CBGR10p32`) or PNG (`Mono8`, `RGB8`, `RGBa8`;
  /// 16 bits become 8). The buffer is resized, and must be an IQvImageBufferInside, as the
  /// library's own are. A file that is refused leaves it as it was.
  /// @throws GenICam::InvalidArgumentException  a null pointer
  /// @throws GenICam::RuntimeException  "File %s could not be opened.", "File %s is unreadable."
  /// @throws GenICam::BadAllocException  no memory
  virtual void Load(IQvImageBuffer* buffer, const GenICam::gcstring& fileName) const = 0;

  /// Quality of JPEG files, 0 to 100; 75 at the start.
  /// @throws GenICam::OutOfRangeException
  virtual unsigned int GetQuality() const = 0;
  virtual void SetQuality(unsigned int value) = 0;

  /// The colour map that `Mono8` images are saved with; see SetColorMap(). `Normal` at the start. A
  /// BMP file of another one cannot be loaded again.
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

}  // namespace QvApi
