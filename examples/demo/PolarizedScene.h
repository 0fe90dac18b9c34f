// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "Images.h"

namespace Demo {

/// Light of one colour by its Stokes parameters, as parts of the sensor's full scale: behind a
/// polarizer at the angle a there is mean + cosine x cos 2a + sine x sin 2a (Malus's law). The
/// parameters of lights that come together add.
struct Light {
  float mean = 0, cosine = 0, sine = 0;
};

/// Light of three colours.
using LightOfColors = std::array<Light, 3>;  // red, green, blue

/// Things that show how light is polarized, drawn by the demo, and what sensors would see of them.
class PolarizedScene {
 public:
  static constexpr std::size_t kWidth = 960, kHeight = 640;

  PolarizedScene();

  /// The frame of a sensor with polarizers: `Pol1Mono8`, `Pol1Mono10`, `Pol1Mono12` or
  /// `Pol1BayerRG8`.
  Buffer Sample(QvApi::PixelFormat format) const;
  /// What a sensor without polarizers would see if the window did not reflect, at half the light
  /// that there is, as behind polarizers: `Mono8`.
  Buffer WithoutReflection() const;

  /// The light at a pixel, of all colours together.
  Light GreyAt(std::size_t x, std::size_t y) const;

  /// The insides of the foils, where angle and degree are the same all over.
  static std::vector<Region> Foils();
  /// The printed page behind the window.
  static Region Page();
  /// A place on the letters of the hidden print, and one beside them.
  static Region HiddenInk();
  static Region HiddenGround();

 private:
  std::vector<LightOfColors> m_lights;
};

}  // namespace Demo
