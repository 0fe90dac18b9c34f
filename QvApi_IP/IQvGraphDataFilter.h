// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvApi_IP/IQvFilter.h"
#include "QvApi_IP/IQvGraphDataBufferList.h"
#include "QvApi_IP/IQvROIMode.h"

namespace QvApi {

/// Measures a part of each image and passes the image unchanged: the histogram of its values, or
/// the sum of each column or row.
///
/// There is an array for each component: one for mono, three for colour (in memory order, without
/// alpha), and one for each pixel of a mosaic's tile (four for Bayer and mono polarizer sensors,
/// sixteen for colour polarizer sensors; row by row, counted from the image's first pixel wherever
/// the region begins). In the sums of a mosaic an array has just the columns or rows of its phase.
/// Packed and planar formats are measured unpacked. Samples above their depth are masked to it for
/// a histogram; sums wrap at 2^32. All arrays have the numbers of _EQvGraphDataInfoUint32_t, a
/// histogram all but SampleCount.
///
/// One thread may call Filter() while another one fetches results.
class QVAPI_EXPORT IQvGraphDataFilter : public virtual IQvFilter {
 public:
  /// The region that is measured: the whole image at the start. Of one that reaches beyond the
  /// image the part inside is measured; Filter() throws GenICam::InvalidArgumentException "ROI is
  /// empty." if there is none.
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

  /// What is measured: a histogram at the start. Sums of a Bayer image need a region of more than
  /// one row and column; Filter() throws GenICam::RuntimeException "There is no available graph
  /// data." otherwise.
  /// @throws GenICam::OutOfRangeException  no such type, or Undefined
  virtual _EQvGraphDataType_t GetGraphDataType() const = 0;
  virtual void SetGraphDataType(_EQvGraphDataType_t eValue) = 0;

  /// The arrays of the image that was measured last, owned by the filter; an empty list before the
  /// first. They stay as they are until the next call of this function, also while further images
  /// are measured.
  virtual IQvGraphDataBufferList* GetIQvGraphDataBufferList() const = 0;
};

}  // namespace QvApi
