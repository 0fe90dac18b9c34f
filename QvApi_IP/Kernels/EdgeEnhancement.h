// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

// Three steps over one line: how far each sample is from its neighbours, what that adds (a look-up,
// see Lookup.h), and adding it. They share no memory but their lines, which stay in the first-level
// cache between them.

/// The line at hand and those above and below it, at the first pixel that has all its neighbours.
template <class T>
struct LineWindow {
  const T* above;
  const T* line;
  const T* below;
  /// What is wanted next, `step` samples for each of these; it is brought into the cache meanwhile,
  /// since the three steps leave memory idle. May be null.
  const T* upcoming = nullptr;
  size_t step = 1;
};

/// For each of `count` samples the rounded mean of its eight neighbours, (sum + 4) >> 3, and how
/// far the sample is from it. Reads the samples -1 to `count` of the three lines. All 16-bit values
/// are allowed; `bits` says how many of them are in use, which saves time up to 13. The lines that
/// are written must not overlap any other.
void DifferFromMeans(const LineWindow<uint8_t>& window, unsigned bits, uint8_t* means,
                     uint8_t* distances, size_t count);
void DifferFromMeans(const LineWindow<uint16_t>& window, unsigned bits, uint16_t* means,
                     uint16_t* distances, size_t count);

/// Replaces each of `count` distances by its entry in `table`, as LookupLine() does, but for small
/// ones, which noise and soft edges give, without memory where the processor can. All distances
/// must have an entry, and there must be 256 at least.
void LookUpDistances(const uint16_t* table, uint16_t* distances, size_t count);

/// Samples of a pixel that are corrected: `count` of `step`, from `first` on.
struct CorrectedSamples {
  size_t step = 1;
  size_t first = 0;
  size_t count = 1;
};

/// What is to be done to the pixels of a line.
template <class T>
struct Corrections {
  const T* levels;   ///< A pixel with a level above its mean gets brighter, others get darker,
  const T* means;    ///< so that they move away from the mean
  const T* amounts;  ///< by this much.
};

/// Moves samples up or down within 0 and 2^bits - 1. Samples above that are masked to their depth
/// before, and kept as they are if the amount is 0. The three lines of corrections must not overlap
/// the pixels. `step` is 1 to 4; other layouts do nothing.
void CorrectPixels(const CorrectedSamples& samples, unsigned bits,
                   const Corrections<uint8_t>& corrections, uint8_t* pixels, size_t count);
void CorrectPixels(const CorrectedSamples& samples, unsigned bits,
                   const Corrections<uint16_t>& corrections, uint16_t* pixels, size_t count);

}  // namespace QvApi::Kernels
