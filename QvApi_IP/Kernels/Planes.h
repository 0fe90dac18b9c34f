// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Lines of the three planes of a picture, in the order in which a pixel holds its components.
template <class T>
using PlaneLines = std::array<T*, 3>;

/// Brings component c of each pixel into line c. Pixels are `step` (3 or 4) samples apart; a fourth
/// sample is not used. Samples are copied whole, whatever their depth. Nothing may overlap.
void SplitPixels(const uint8_t* pixels, size_t step, const PlaneLines<uint8_t>& planes,
                 size_t count);
void SplitPixels(const uint16_t* pixels, size_t step, const PlaneLines<uint16_t>& planes,
                 size_t count);

/// The way back. The three lines may be one and the same, which makes grey pixels. A fourth sample
/// of a pixel keeps what it held. Lines and pixels must not overlap.
void MergePixels(const PlaneLines<const uint8_t>& planes, uint8_t* pixels, size_t step,
                 size_t count);
void MergePixels(const PlaneLines<const uint16_t>& planes, uint16_t* pixels, size_t step,
                 size_t count);

/// Pixels of which a grey level is taken.
struct ColorPixels {
  size_t step = 3;  ///< Samples from pixel to pixel, 3 or 4.
  bool isBGR = false;
  unsigned depth = 8;  ///< Samples above it are masked to it.
};

/// (2 R + 5 G + B) / 8, cut off, of each pixel. Nothing may overlap.
void PixelsToGrey(const ColorPixels& layout, const uint8_t* pixels, uint8_t* grey, size_t count);
void PixelsToGrey(const ColorPixels& layout, const uint16_t* pixels, uint16_t* grey, size_t count);

/// Pixels of three 10-bit components in little-endian words of 32 bits, the first component lowest
/// and the upper two bits 0. Words need no alignment. Packing takes pixels `step` (3 or 4) samples
/// apart, masks their components to 10 bits, and with `exchange` the first and the third one change
/// places. Unpacking gives pixels of three samples and ignores the upper two bits of a word.
/// Nothing may overlap.
void PackPixelWords(const uint16_t* pixels, size_t step, bool exchange, uint8_t* words,
                    size_t count);
void UnpackPixelWords(const uint8_t* words, uint16_t* pixels, size_t count);

}  // namespace QvApi::Kernels
