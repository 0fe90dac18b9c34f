// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Adds each sample to its sum. Samples count with their whole value, also above their depth; sums
/// wrap. Nothing may overlap.
void AddToSums(const uint8_t* samples, uint32_t* sums, size_t count);
void AddToSums(const uint16_t* samples, uint32_t* sums, size_t count);

/// Brings sums to the scale of an image: writes sum / (fullSum / maximum) + 0.5, truncated, with
/// each operation rounded as a double by itself. Sums above `fullSum` give `maximum`. Neither may
/// be 0; nothing may overlap.
void ScaleSums(const uint32_t* sums, uint32_t fullSum, uint8_t maximum, uint8_t* means,
               size_t count);
void ScaleSums(const uint32_t* sums, uint32_t fullSum, uint16_t maximum, uint16_t* means,
               size_t count);
void ScaleSums(const uint32_t* sums, uint32_t fullSum, uint32_t maximum, uint32_t* means,
               size_t count);

}  // namespace QvApi::Kernels
