// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvApi_IP/ColorMap.h"
#include "QvApi_IP/IQvConverter.h"

namespace QvApi {

/// How a Bayer mosaic becomes a colour image. All means truncate.
enum EQvBayerInterpolationMethod_t : unsigned {
  QvBayerInterpolationMethod_OFF = 0,               ///< Samples at their sites, 0 elsewhere.
  QvBayerInterpolationMethod_NearestNeighbor = 1,   ///< One colour a 2 x 2 tile.
  QvBayerInterpolationMethod_NearestNeighbor2 = 2,  ///< The 2 x 2 window at each pixel.
  QvBayerInterpolationMethod_Bilinear = 3,          ///< Means along the row, then along the column.
  QvBayerInterpolationMethod_Bilinear2 = 4,         ///< 16ths of a 4 x 4 window; less false colour.
  QvBayerInterpolationMethod_Bicubic = 5,           ///< Cubic along the row, then along the column.
  QvBayerInterpolationMethod_Mono = 6,              ///< Each sample as a grey pixel.
  QvBayerInterpolationMethod_Bilinear3 = 7,         ///< Edge-directed green, colour differences.
};

/// How samples get more bits.
enum _EQvBitExpansionMode_t : unsigned {
  QvBitExpansionMode_Gamma = 0,         ///< Full scale to full scale, through the gamma curve.
  QvBitExpansionMode_Fixed = 1,         ///< The value stays.
  QvBitExpansionMode_LeftShiftBy0 = 2,  ///< Shifted up, zeros below.
  QvBitExpansionMode_LeftShiftBy1 = 3,  ///< Shifted up, ones below.
};

/// What is made of an image of a polarizer sensor.
enum EQvPolarizationImageTransformationMethod_t : unsigned {
  QvPolarizationImageTransformationMethod_OFF = 0,
  QvPolarizationImageTransformationMethod_EachAngle = 1,
  QvPolarizationImageTransformationMethod_SpecifiedAngle = 2,
  QvPolarizationImageTransformationMethod_Average = 3,
  QvPolarizationImageTransformationMethod_DegreeOfLinearPolarization = 4,
  QvPolarizationImageTransformationMethod_AngleOfLinearPolarization = 5,
  QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization = 6,
  QvPolarizationImageTransformationMethod_MaximumPixelValue = 7,
  QvPolarizationImageTransformationMethod_MinimumPixelValue = 8,
  QvPolarizationImageTransformationMethod_DifferenceOfPixelValues = 9,
};

/// How the intensity behind a polarizer of a given angle follows from those measured.
enum _EQvInterpolationMethodForSpecifiedAngle_t : unsigned {
  QvInterpolationMethodForSpecifiedAngle_Linear = 0,
  QvInterpolationMethodForSpecifiedAngle_Cosine = 1,
};

/// Converts between pixel formats.
///
/// A pair of formats is converted directly or through intermediate ones; a pair that cannot be
/// converted is refused with "Converting a pixelformat from  %s to %s is not supported.". Two
/// threads may use one converter at once. Setters may be called meanwhile: a change takes effect at
/// the next image. A conversion from a buffer's own image into that buffer works.
class QVAPI_EXPORT IQvPixelFormatConverter : public virtual IQvConverter {
 public:
  /// Bytes that lines of the destination are aligned to; 0 (at the start) takes the format's
  /// default.
  virtual std::size_t GetLinePitchAlignment() const = 0;
  virtual void SetLinePitchAlignment(std::size_t alignment) = 0;

  /// `BGR8` at the start. Any code is taken; one that cannot be reached fails in Convert().
  virtual EQvPixelFormatNamingConvention_t GetDestinationPixelFormat() const = 0;
  virtual void SetDestinationPixelFormat(EQvPixelFormatNamingConvention_t format) = 0;

  /// Flips the image upside down; off at the start. A flipped mosaic of an even height begins with
  /// its other row, so the destination's format is another phase than the one asked for.
  virtual bool GetReverseY() const = 0;
  virtual void SetReverseY(bool reverse) = 0;

  /// `NearestNeighbor2` at the start.
  /// @throws GenICam::OutOfRangeException
  virtual EQvBayerInterpolationMethod_t GetBayerInterpolationMethod() const = 0;
  virtual void SetBayerInterpolationMethod(EQvBayerInterpolationMethod_t method) = 0;

  /// Exponent of the curve of depth changes, 0 to 4; 1 at the start. It acts whenever samples get
  /// fewer bits, and in the bit expansion mode `Gamma` when they get more.
  /// @throws GenICam::OutOfRangeException
  virtual double GetGammaValue() const = 0;
  virtual void SetGammaValue(double gamma) = 0;

  /// Locks the feature DestinationPixelFormat of the node map; the typed setter works all the same.
  virtual bool GetDestinationPixelFormatNodeLock() const = 0;
  virtual void SetDestinationPixelFormatNodeLock(bool lock) = 0;

  /// `Gamma` at the start.
  /// @throws GenICam::OutOfRangeException
  virtual _EQvBitExpansionMode_t GetBitExpansionMode() const = 0;
  virtual void SetBitExpansionMode(_EQvBitExpansionMode_t mode) = 0;

  /// `EachAngle` at the start.
  /// @throws GenICam::OutOfRangeException
  virtual EQvPolarizationImageTransformationMethod_t GetPolarizationImageTransformationMethod()
      const = 0;
  virtual void SetPolarizationImageTransformationMethod(
      EQvPolarizationImageTransformationMethod_t method) = 0;

  /// In degrees, 0 to 180; 0 at the start.
  /// @throws GenICam::OutOfRangeException
  virtual double GetPolarizationSpecifiedAngle() const = 0;
  virtual void SetPolarizationSpecifiedAngle(double angle) = 0;

  /// The map by which `Mono8` becomes colour of 8 bits; see SetColorMap(). `Normal` at the start.
  /// @throws GenICam::OutOfRangeException
  virtual EQvColorMapType_t GetColorMapType() const = 0;
  virtual void SetColorMapType(EQvColorMapType_t type) = 0;
  virtual bool GetColorMapInversion() const = 0;
  virtual void SetColorMapInversion(bool inversion) = 0;
  /// 0 to 255.
  /// @throws GenICam::OutOfRangeException
  virtual int GetColorMapPhase() const = 0;
  virtual void SetColorMapPhase(int phase) = 0;

  /// `Linear` at the start.
  /// @throws GenICam::OutOfRangeException
  virtual _EQvInterpolationMethodForSpecifiedAngle_t GetInterpolationMethodForSpecifiedAngle()
      const = 0;
  virtual void SetInterpolationMethodForSpecifiedAngle(
      _EQvInterpolationMethodForSpecifiedAngle_t method) = 0;

  /// False colour of angle and degree of linear polarization (ADOLP): dark where the degree is low,
  /// instead of white.
  virtual bool GetADOLPDarkMode() const = 0;
  virtual void SetADOLPDarkMode(bool dark) = 0;
  virtual bool GetADOLPColorInversion() const = 0;
  virtual void SetADOLPColorInversion(bool inversion) = 0;
  /// 0 to 255.
  /// @throws GenICam::OutOfRangeException
  virtual int GetADOLPColorPhase() const = 0;
  virtual void SetADOLPColorPhase(int phase) = 0;
};

}  // namespace QvApi
