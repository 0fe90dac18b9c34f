// SPDX-License-Identifier: MIT
#pragma once

#include <Base/GCString.h>

#include <cstddef>

#include "QvSDKCommon/QvExport.h"
#include "QvSDKCommon/QvPixelComponentCode.h"
#include "QvSDKCommon/QvPixelFormat.h"

namespace QvApi {

/// What a pixel format means. Immutable, static and safe from any thread.
class QVAPI_EXPORT IQvPixelFormatInfo {
 public:
  virtual ~IQvPixelFormatInfo() = default;

  virtual EQvPixelFormatNamingConvention_t GetPixelFormat() const = 0;
  /// The format's name, such as "Mono8".
  virtual GenICam::gcstring GetName() const = 0;
  /// Bits that one pixel occupies in one plane, spare bits included: 16 for `Mono10`, 24 for
  /// `BGR8`.
  virtual std::size_t GetTotalBitCount() const = 0;
  /// Bits that one component occupies: 16 for `Mono10`, 10 for `Mono10p`.
  virtual std::size_t GetEachComponentTotalBitCount() const = 0;
  /// Significant bits of one component: 10 for `Mono10` and `Mono10p`.
  virtual std::size_t GetEachComponentEffectiveBitCount() const = 0;
  /// Components of one pixel over all planes, alpha included.
  virtual std::size_t GetComponentCount() const = 0;
  virtual std::size_t GetPlaneCount() const = 0;
  /// Width and x offset of a view are multiples of this number of pixels. Never 0.
  virtual std::size_t GetROIIncrementX() const = 0;
  /// Height and y offset of a view are multiples of this number of lines. Never 0.
  virtual std::size_t GetROIIncrementY() const = 0;
  /// The format carries colour, mosaics included.
  virtual bool IsColor() const = 0;
  virtual bool IsMono() const = 0;
  /// A Bayer mosaic; false for the mosaics of polarizer sensors.
  virtual bool IsBayer() const = 0;
  /// Phase of the mosaic seen from (x, y): 2 for R G / G B, 3 for G R / B G, 4 for G B / R G, 5 for
  /// B G / G R; 1 for monochrome formats and 0 for all others.
  virtual int GetPixelColorFilter(std::size_t x, std::size_t y) const = 0;
};

/// What the modules ask beyond that. Every object of GetIQvPixelFormatInfo() is also this.
class QVAPI_EXPORT IQvPixelFormatInfoInside : public IQvPixelFormatInfo {
 public:
  /// Bytes that lines are aligned to where nobody says otherwise.
  virtual std::size_t GetDefaultLineAlignment() const = 0;
  /// Bytes of a line of `width` pixels in one plane, rounded up to a multiple of `alignment` (any
  /// number; with 1 these are the significant bytes). SIZE_MAX if that does not fit.
  virtual std::size_t GetLinePitch(std::size_t width, std::size_t alignment) const = 0;
  /// Sum of the significant bits of a pixel: 8 for `Mono8`, 24 for `BGR8`.
  virtual std::size_t GetEffectivePixelBitCount() const = 0;
  /// The format that describes the same data seen from (x, y): an odd offset exchanges the phase of
  /// a Bayer mosaic; all other formats stay.
  virtual EQvPixelFormatNamingConvention_t GetPixelFormatAtOffset(std::size_t x,
                                                                  std::size_t y) const = 0;
  /// Blue comes first.
  virtual bool IsBGR() const = 0;
  /// The packing of GigE Vision 1.x, as against PFNC's "p".
  virtual bool IsGEVPacked() const = 0;
  /// A mosaic of polarizers.
  virtual bool IsPolarized() const = 0;
  /// Number of the arrangement of the tile of polarizers: 1 to 8 for plain, X, Y, XY, C, XC, YC,
  /// XYC; 0 for formats without polarizers.
  virtual std::size_t GetPolarizerPatternNumber() const = 0;
};

/// What one component is.
class QVAPI_EXPORT IQvPixelComponentInfo {
 public:
  virtual ~IQvPixelComponentInfo() = default;
  virtual EQvPixelComponent_t GetPixelComponent() const = 0;
  /// Such as "R8" or "Mono12_POL_045".
  virtual GenICam::gcstring GetName() const = 0;
  /// Significant bits; (1 << count) - 1 is full scale.
  virtual std::size_t GetBitCount() const = 0;
};

/// Information on a pixel format, or null for an unknown code. Static: never released. Implemented
/// by libQvApi_TL.
QVAPI_EXPORT const IQvPixelFormatInfo* GetIQvPixelFormatInfo(
    EQvPixelFormatNamingConvention_t format);

/// Information on a component, or null for an unknown code. Static: never released. Implemented by
/// libQvApi_TL.
QVAPI_EXPORT const IQvPixelComponentInfo* GetIQvPixelComponentInfo(EQvPixelComponent_t component);

}  // namespace QvApi
