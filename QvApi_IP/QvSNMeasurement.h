// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "QvApi_IP/QvImageLines.h"
#include "QvSDKCommon/QvPixelComponentCode.h"

namespace QvApi {

/// What is measured of one pixel component.
struct CSNMeasurementValue {
  EQvPixelComponent_t component = EQvPixelComponent_t::Unknown;
  std::size_t pixelCount = 0;
  double average = 0;
  double temporalStandardDeviation = 0;
  double frameStandardDeviation = 0;
  bool operator==(const CSNMeasurementValue&) const = default;
};

/// The part of an image that is measured, in pixels. Lies in the image.
struct SNRegion {
  std::size_t x, y, width, height;
};

/// Measures a series of frames, all of one format and size, with bytes or 16-bit words as samples.
/// The pixels' own mean m and variance E[v^2] - m^2 are taken over the frames, those of a frame
/// over its pixels, and both divide by the number of values, not by one less. The components of a
/// mosaic are told apart by the place in the image, but for a frame's own figures by the place in
/// the region: where that begins at an odd place they are those of another phase.
/// @throws GenICam::BadAllocException
std::vector<CSNMeasurementValue> MeasureSN(std::span<const ImageLines> frames,
                                           const SNRegion& region);

}  // namespace QvApi
