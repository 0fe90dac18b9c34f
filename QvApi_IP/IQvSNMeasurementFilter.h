// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvApi_IP/IQvFilter.h"
#include "QvApi_IP/IQvROIMode.h"
#include "QvSDKCommon/QvPixelComponentCode.h"

namespace QvApi {

/// What happens when a wait runs out.
enum EQvTimeoutHandling_t : unsigned {
  QvTimeoutHandling_ReturnNull = 0,
  QvTimeoutHandling_ThrowException = 1,
};

/// What has been measured, one value set for each pixel component of the format: each colour, each
/// phase of a mosaic. Belongs to the filter. Safe from any thread; both operations wait until a
/// measurement that is under way has ended.
class QVAPI_EXPORT IQvSNMeasurementResult {
 public:
  virtual std::size_t GetComponentCount() const = 0;
  /// Any of the outputs may be null. Levels are in steps of the pixel value.
  ///
  /// @param nIndex      0 to GetComponentCount() - 1
  /// @param pComponent  which component it is
  /// @param pPixelCount     how many pixels of a frame were measured
  /// @param pAverage        mean level over pixels and frames
  /// @param pTemporalSD     how much a pixel varies from frame to frame: the mean of the pixels'
  ///                        standard deviations
  /// @param pFrameSD        how much pixels vary within a frame: the mean of the frames' standard
  ///                        deviations
  /// @throws GenICam::OutOfRangeException  there is no such component
  virtual void GetSNMeasurementValue(std::size_t nIndex, EQvPixelComponent_t* pComponent,
                                     std::size_t* pPixelCount, double* pAverage,
                                     double* pTemporalSD, double* pFrameSD) = 0;

 protected:
  ~IQvSNMeasurementResult() = default;
};

/// Measures the noise of a camera from a series of frames of one scene.
///
/// Filter() copies each image and passes it unchanged. Once there are `FrameCount` of them, a
/// thread of the filter measures, and further images are ignored until ClearGrabbedImage(). A
/// change of the region measures again on the frames that are held; a new frame count begins a new
/// series, and so does an image of another format or size before the series is complete. Packed
/// formats are measured unpacked.
///
/// The node map has the results too, behind a port of their own. Whoever reads them there waits for
/// RetrieveIQvSNMeasurementResult() first.
class QVAPI_EXPORT IQvSNMeasurementFilter : public virtual IQvFilter {
 public:
  /// Forgets frames and results and begins a new series.
  virtual void ClearGrabbedImage() = 0;

  /// Frames of a series, 1 to 1024; 50 at the start. All are kept in memory: a Filter() that finds
  /// none throws GenICam::BadAllocException and leaves the series as it was. A change begins a new
  /// series.
  /// @throws GenICam::OutOfRangeException
  virtual std::size_t GetFrameCount() const = 0;
  virtual void SetFrameCount(std::size_t value) = 0;

  /// The region that is measured, in pixels; at the start the 100 x 100 in the middle. A size
  /// larger than the image is cut, an offset too large is moved back.
  /// @throws GenICam::OutOfRangeException  no such mode
  virtual EQvROIMode_t GetROIMode() const = 0;
  virtual void SetROIMode(EQvROIMode_t eRM) = 0;
  virtual std::size_t GetOffsetX() const = 0;
  virtual void SetOffsetX(std::size_t value) = 0;
  virtual std::size_t GetOffsetY() const = 0;
  virtual void SetOffsetY(std::size_t value) = 0;
  virtual std::size_t GetWidth() const = 0;
  virtual void SetWidth(std::size_t value) = 0;
  virtual std::size_t GetHeight() const = 0;
  virtual void SetHeight(std::size_t value) = 0;

  /// Waits until the results are those of the present region and series.
  ///
  /// @param nTimeout   milliseconds; 0xFFFFFFFF waits without end
  /// @param eHandling  what happens when there are none by then
  /// @return the results, or null
  /// @throws GenICam::TimeoutException
  virtual IQvSNMeasurementResult* RetrieveIQvSNMeasurementResult(
      unsigned int nTimeout, EQvTimeoutHandling_t eHandling) = 0;
};

}  // namespace QvApi
