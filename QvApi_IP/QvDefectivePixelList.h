// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <utility>

#include "QvApi_IP/IQvDefectivePixelDetectionFilter.h"

namespace QvApi {

/// The pixels that have been found in several images, with the greatest deviations if there are
/// more than may be held.
class CQvDefectivePixelList {
 public:
  using Pixel = _SQvDefectivePixelInformation_t;
  using Status = _EQvDefectivePixelDetectionStatus_t;

  /// Images begin and end by these; in between the status is none, or overflow.
  void BeginImage() { m_status = QvDefectivePixelDetectionStatus_None; }
  void EndImage();

  /// Takes in a pixel. A list that holds more than `maximum` keeps them.
  /// @throws std::bad_alloc  the list is as it was
  void Add(const Pixel& pixel, std::size_t maximum);
  void Clear();

  Status GetStatus() const { return m_status; }
  std::size_t Count() const { return m_pixels.size(); }
  /// The first `count` pixels, or all if there are fewer, by row and column.
  void CopyTo(Pixel* pixels, std::size_t count) const;

 private:
  using Key = std::pair<std::size_t, std::size_t>;  ///< Row, column.

  void Insert(const Key& key, const Pixel& pixel);

  std::map<Key, Pixel> m_pixels;
  std::set<std::pair<double, Key>> m_byDeviation;
  Status m_status = QvDefectivePixelDetectionStatus_None;
};

}  // namespace QvApi
