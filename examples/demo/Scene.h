// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Images.h"

namespace Demo {

/// What the demo works on: a picture, and the frame that a sensor behind a Bayer mosaic would
/// deliver of it.
struct Scene {
  std::string name;             ///< For headings, such as "Test chart" or "house.png".
  std::string origin;           ///< One sentence on where the picture comes from.
  Buffer original;              ///< `BGR8`
  Buffer mosaic;                ///< `BayerRG8`
  std::vector<Region> regions;  ///< Worth a closer look.
};

/// The demo's own test chart.
Scene DrawScene();

/// The picture in a PNG or BMP file.
/// @throws GenICam::GenericException  the file cannot be read
/// @throws std::runtime_error         the picture is too small
Scene LoadScene(const std::string& fileName);

/// The frame as a picture of `BGR8`, by method 7, or as `Mono8`.
Buffer Demosaic(const Scene& scene, QvApi::PixelFormat format);

}  // namespace Demo
