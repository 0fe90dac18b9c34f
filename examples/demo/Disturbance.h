// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>

#include "Images.h"

/// Faults of lenses, sensors and lamps, put into images to be taken out again by filters.
namespace Demo {

/// Random numbers, the same in each run.
class Noise {
 public:
  /// Normally distributed.
  double Normal(double deviation) { return deviation * m_normal(m_engine); }
  /// Evenly distributed from 0 to 1.
  double Even() { return m_even(m_engine); }

 private:
  std::mt19937 m_engine{20240229};
  std::normal_distribution<double> m_normal;
  std::uniform_real_distribution<double> m_even;
};

/// A `BGR8` picture as through a lens that is a little out of focus: each pixel is the mean with
/// its neighbours, weighted by 1, 2, 1 in both directions.
Buffer Blurred(QvApi::IQvImage& picture);

/// Such an image of 8 bits with each sample changed: `change` gets column, row, component and value
/// and gives the value instead, which is rounded and limited.
template <typename Change>
Buffer Disturb(QvApi::IQvImage& image, Change change) {
  Buffer result = CopyOf(image);
  QvApi::IQvImage& copy = *result->GetIQvImage();
  const std::size_t components =
      QvApi::GetIQvPixelFormatInfo(copy.GetImagePixelFormat())->GetComponentCount();
  for (std::size_t y = 0; y < copy.GetImageHeight(); ++y) {
    auto* sample = static_cast<std::uint8_t*>(copy.GetImageBuffer()) + y * copy.GetImageLinePitch();
    for (std::size_t x = 0; x < copy.GetImageWidth(); ++x)
      for (std::size_t c = 0; c < components; ++c, ++sample)
        *sample = static_cast<std::uint8_t>(std::clamp(change(x, y, c, *sample) + 0.5, 0.0, 255.0));
  }
  return result;
}

}  // namespace Demo
