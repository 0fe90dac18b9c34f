// SPDX-License-Identifier: MIT
#include "Disturbance.h"

namespace Demo {

using namespace QvApi;

Buffer Blurred(IQvImage& picture) {
  const std::size_t pitch = picture.GetImageLinePitch();
  const std::size_t right = picture.GetImageWidth() - 1, bottom = picture.GetImageHeight() - 1;
  const auto* pixels = static_cast<const std::uint8_t*>(picture.GetImageBuffer());
  return Disturb(picture, [&](std::size_t x, std::size_t y, std::size_t component, double) {
    const auto row = [&](std::size_t line) {
      const std::uint8_t* samples = pixels + line * pitch + component;
      return samples[3 * (x - std::min<std::size_t>(x, 1))] + 2 * samples[3 * x] +
             samples[3 * std::min(x + 1, right)];
    };
    return (row(y - std::min<std::size_t>(y, 1)) + 2 * row(y) + row(std::min(y + 1, bottom))) /
           16.0;
  });
}

}  // namespace Demo
