// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdlib>

#include "QvApi_IP/Kernels/EdgeEnhancement.h"

namespace QvApi::Kernels::Scalar {

/// What DifferFromMeans gives.
template <class T>
void DifferFromMeans(const LineWindow<T>& window, T* means, T* distances, size_t count) {
  for (size_t x = 0; x < count; ++x) {
    const auto three = [x](const T* line) { return line[x] + line[x + 1] + *(line + x - 1); };
    const int neighbours =
        three(window.above) + three(window.line) - window.line[x] + three(window.below);
    const int mean = (neighbours + 4) >> 3;
    means[x] = static_cast<T>(mean);
    distances[x] = static_cast<T>(std::abs(window.line[x] - mean));
  }
}

/// What LookUpDistances gives.
inline void LookUpDistances(const uint16_t* table, uint16_t* distances, size_t count) {
  for (size_t x = 0; x < count; ++x) distances[x] = table[distances[x]];
}

/// What CorrectPixels gives.
template <class T>
void CorrectPixels(const CorrectedSamples& samples, unsigned bits,
                   const Corrections<T>& corrections, T* pixels, size_t count) {
  const int fullScale = (1 << bits) - 1;
  for (size_t x = 0; x < count; ++x) {
    if (corrections.amounts[x] == 0) continue;
    const bool isBrighter = corrections.levels[x] > corrections.means[x];
    const int change = isBrighter ? corrections.amounts[x] : -corrections.amounts[x];
    for (size_t c = samples.first; c < samples.first + samples.count; ++c) {
      T& sample = pixels[x * samples.step + c];
      sample = static_cast<T>(std::clamp((sample & fullScale) + change, 0, fullScale));
    }
  }
}

}  // namespace QvApi::Kernels::Scalar
