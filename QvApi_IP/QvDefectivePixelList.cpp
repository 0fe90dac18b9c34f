// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvDefectivePixelList.h"

#include <utility>

namespace QvApi {

void CQvDefectivePixelList::EndImage() {
  if (m_status == QvDefectivePixelDetectionStatus_None)
    m_status = QvDefectivePixelDetectionStatus_Finished;
}

void CQvDefectivePixelList::Add(const Pixel& pixel, std::size_t maximum) {
  const bool isFull = m_pixels.size() >= maximum;
  const bool isLeast = m_byDeviation.empty() || pixel.deviation <= m_byDeviation.begin()->first;
  // Whether it is held or not: nothing changes. Spares the search where defects abound.
  if (isFull && isLeast && m_status == QvDefectivePixelDetectionStatus_Overflow) return;

  const Key key{pixel.y, pixel.x};
  if (const auto held = m_pixels.find(key); held != m_pixels.end()) {
    Pixel& present = held->second;
    if (pixel.deviation <= present.deviation) return;
    auto rank = m_byDeviation.extract({present.deviation, key});
    rank.value().first = pixel.deviation;
    m_byDeviation.insert(std::move(rank));
    present = pixel;
    return;
  }
  if (!isFull) return Insert(key, pixel);

  m_status = QvDefectivePixelDetectionStatus_Overflow;
  if (isLeast) return;
  // The first of the smallest, by row and column.
  auto rank = m_byDeviation.extract(m_byDeviation.begin());
  auto place = m_pixels.extract(rank.value().second);
  rank.value() = {pixel.deviation, key};
  place.key() = key;
  place.mapped() = pixel;
  m_byDeviation.insert(std::move(rank));
  m_pixels.insert(std::move(place));
}

void CQvDefectivePixelList::Insert(const Key& key, const Pixel& pixel) {
  const auto rank = m_byDeviation.emplace(pixel.deviation, key).first;
  try {
    m_pixels.emplace(key, pixel);
  } catch (...) {
    m_byDeviation.erase(rank);
    throw;
  }
}

void CQvDefectivePixelList::Clear() {
  m_pixels.clear();
  m_byDeviation.clear();
  m_status = QvDefectivePixelDetectionStatus_None;
}

void CQvDefectivePixelList::CopyTo(Pixel* pixels, std::size_t count) const {
  for (auto held = m_pixels.begin(); held != m_pixels.end() && count != 0; ++held, --count)
    *pixels++ = held->second;
}

}  // namespace QvApi
