// SPDX-License-Identifier: MIT
#include <cmath>
#include <vector>

#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using NoiseFilter = CQvAutoPtr<IQvFilterReleasable, IQvNoiseReductionFilter>;

constexpr double kExposure = 0.65, kReadNoise = 1.0, kHotPixels = 0.004;

// What a warm sensor adds in the dark, the same in each frame: a pedestal, columns of their own
// level, the glow of the amplifier in a corner, and hot pixels.
std::vector<double> DarkPattern(std::size_t width, std::size_t height) {
  Noise noise;
  std::vector<double> columns(width), pattern(width * height);
  for (double& column : columns) column = noise.Normal(3);
  for (std::size_t y = 0; y < height; ++y)
    for (std::size_t x = 0; x < width; ++x) {
      const double u = 1 - static_cast<double>(x) / static_cast<double>(width);
      const double v = 1 - static_cast<double>(y) / static_cast<double>(height);
      const double glow = 45 * std::exp(-12 * (u * u + v * v));
      const double hot = noise.Even() < kHotPixels ? 60 + 240 * noise.Even() : 0;
      pattern[y * width + x] = 10 + columns[x] + glow + hot;
    }
  return pattern;
}

Buffer Dimmed(IQvImage& image) {
  return Disturb(
      image, [](std::size_t, std::size_t, std::size_t, double value) { return kExposure * value; });
}

NoiseFilter Calibrated(IQvImage& dark) {
  NoiseFilter filter(CreateIQvFilter(QvFilterType_NoiseReduction));
  filter->SetCalibrationEnable(true);
  filter->Filter(&dark);
  filter->SetCalibrationEnable(false);
  filter->SetNoiseReductionMode(QvNoiseReductionMode_SubtractingLightShieldingImage);
  return filter;
}

}  // namespace

Section ShowDarkFrame(const Scene& scene, Album& album) {
  const Buffer dimmed = Dimmed(*scene.mosaic->GetIQvImage());
  IQvImage& truth = *dimmed->GetIQvImage();
  const std::size_t width = truth.GetImageWidth();
  const std::vector<double> pattern = DarkPattern(width, truth.GetImageHeight());
  Noise noise;
  const auto exposed = [&](double light) {
    return Disturb(truth, [&, light](std::size_t x, std::size_t y, std::size_t, double value) {
      return light * value + pattern[y * width + x] + noise.Normal(kReadNoise);
    });
  };
  const Buffer noisy = exposed(1), dark = exposed(0);
  const FilterFigures figures(scene, album, truth, "darkframe");

  Figure calibration = figures.Show(*dark->GetIQvImage(), "Calibration frame",
                                    "The cap is on: columns, glow and hot pixels.", "calibration");
  calibration.psnr.reset();
  calibration.settings = {"CalibrationEnable = true"};
  const Figure before =
      figures.Show(*noisy->GetIQvImage(), "Before", "The same in a dim frame.", "before");
  const NoiseFilter filter = Calibrated(*dark->GetIQvImage());
  Figure after = figures.ShowFiltered(*filter.Get(), *noisy->GetIQvImage(), "Subtracted",
                                      "Hot pixels that were saturated are repaired from their "
                                      "neighbours.",
                                      "subtracted");
  after.settings = {"NoiseReductionMode = SubtractingLightShieldingImage"};

  Section section;
  section.id = "dark-frame";
  section.title = "Dark frame";
  section.text =
      "The mosaic of a dim scene and a warm sensor. What the sensor adds in the dark is taken off "
      "in place, after the filter has seen a frame with the cap on. PSNR compares the mosaic with "
      "the frame without it.";
  section.sheet = true;
  section.figures = {calibration, before, after};
  section.table = MakeTable(section.figures);
  section.checks = {IsCloser("Subtraction", after, before)};
  return section;
}

}  // namespace Demo
