// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvApi_IP/IQvFilter.h"

namespace QvApi {

/// What has become of the search for defective pixels.
enum _EQvDefectivePixelDetectionStatus_t : unsigned {
  QvDefectivePixelDetectionStatus_None = 0,      ///< No image has been searched.
  QvDefectivePixelDetectionStatus_Finished = 1,  ///< The list holds all pixels that were found.
  QvDefectivePixelDetectionStatus_Overflow = 2,  ///< There were more than the list may hold.
};

/// Which pixels a threshold is for. Those of a mosaic go by their colour, Gr being the green of the
/// lines that hold red.
enum _EQvDefectivePixelDetectionThresholdTarget_t : unsigned {
  QvDefectivePixelDetectionThresholdTarget_Mono = 0,
  QvDefectivePixelDetectionThresholdTarget_BayerR = 1,
  QvDefectivePixelDetectionThresholdTarget_BayerGr = 2,
  QvDefectivePixelDetectionThresholdTarget_BayerGb = 3,
  QvDefectivePixelDetectionThresholdTarget_BayerB = 4,
};

/// Which pixels make the mean that a pixel is compared with.
enum _EQvDefectivePixelDetectionAveragingArea_t : unsigned {
  QvDefectivePixelDetectionAveragingArea_AroundTheTargetPixel = 0,  ///< Those around, without it.
  QvDefectivePixelDetectionAveragingArea_WholeImage = 1,            ///< All, it among them.
};

/// A pixel that stands out.
struct _SQvDefectivePixelInformation_t {
  std::size_t x;     ///< Column.
  std::size_t y;     ///< Row.
  double value;      ///< Of the pixel.
  double mean;       ///< That it was compared with.
  double deviation;  ///< |value - mean| / full scale.
};
static_assert(sizeof(_SQvDefectivePixelInformation_t) == 40);

/// Finds pixels that stand out from those around, or from the whole image, to calibrate a camera.
/// Images given to Filter() stay unchanged. Mono, Bayer and polarizer formats from 8 bits on are
/// supported, packed ones too. In a mosaic each phase (of 2 x 2 pixels, or 4 x 4 for polarizer
/// sensors with colour) is a picture of its own.
///
/// A pixel is found if it differs from its mean by more than full scale times its threshold. What
/// is found in several images adds up, ordered by row and column. A pixel that is found again is
/// there once, with its greatest deviation. When the list is full, greater deviations replace the
/// smallest.
///
/// Settings take effect at the next image. Filter() and the access to results wait for each other.
class QVAPI_EXPORT IQvDefectivePixelDetectionFilter : public virtual IQvFilter {
 public:
  /// @param pStatus   gets the status; may be null
  /// @param pnCount   holds the room in `pResults`, gets the number of pixels found
  /// @param pResults  gets as many as there is room for; null to ask for their number only
  /// @throws GenICam::InvalidArgumentException  `pnCount` is null
  virtual void GetDetectionResult(_EQvDefectivePixelDetectionStatus_t* pStatus,
                                  std::size_t* pnCount,
                                  _SQvDefectivePixelInformation_t* pResults) = 0;
  /// Empties the list.
  virtual void ClearDetectionResult() = 0;

  /// As a part of full scale; 0.15 for each target at the start.
  /// @throws GenICam::OutOfRangeException  there is no such target
  virtual double GetThreshold(_EQvDefectivePixelDetectionThresholdTarget_t eTarget) const = 0;
  /// @param dValue  any value: with one below 0 each pixel is found
  virtual void SetThreshold(_EQvDefectivePixelDetectionThresholdTarget_t eTarget,
                            double dValue) = 0;

  /// `AroundTheTargetPixel` at the start.
  virtual _EQvDefectivePixelDetectionAveragingArea_t GetDefectivePixelDetectionAveragingArea()
      const = 0;
  /// @throws GenICam::OutOfRangeException
  virtual void SetDefectivePixelDetectionAveragingArea(
      _EQvDefectivePixelDetectionAveragingArea_t eValue) = 0;

  /// How far the area around a pixel reaches, in pixels of its phase; 2 at the start, which makes 5
  /// x 5. At the edges it ends with the image.
  virtual std::size_t GetPeripheralAreaSize() const = 0;
  /// @param nSize  1 to 255; the node map takes 256 too
  /// @throws GenICam::OutOfRangeException
  virtual void SetPeripheralAreaSize(std::size_t nSize) = 0;

  /// Pixels that the list may hold; 4095 at the start. Those beyond a new maximum stay.
  virtual std::size_t GetMaximumPixelCount() const = 0;
  /// @param nCount  1 to 8191
  /// @throws GenICam::OutOfRangeException
  virtual void SetMaximumPixelCount(std::size_t nCount) = 0;
};

}  // namespace QvApi
