// SPDX-License-Identifier: MIT
#include <array>
#include <cmath>

#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using FlatFieldFilter = CQvAutoPtr<IQvFilterReleasable, IQvFlatFieldCorrectionFilter>;

constexpr double kWhite = 200, kPhotonNoise = 1.5;

// Dust on the cover glass: place and radius as parts of the width, and what it lets through.
struct Dust {
  double x, y, radius, light;
};

constexpr std::array<Dust, 7> kDust = {{{0.12, 0.10, 0.012, 0.55},
                                        {0.31, 0.42, 0.020, 0.70},
                                        {0.58, 0.17, 0.008, 0.45},
                                        {0.66, 0.33, 0.026, 0.75},
                                        {0.83, 0.12, 0.015, 0.60},
                                        {0.88, 0.47, 0.010, 0.50},
                                        {0.45, 0.55, 0.017, 0.65}}};

// The light that the lens and the dust leave, 1 in the middle: darker towards the corners with the
// fourth power of the cosine.
class Shading {
 public:
  explicit Shading(IQvImage& image)
      : m_width(static_cast<double>(image.GetImageWidth())),
        m_height(static_cast<double>(image.GetImageHeight())) {}

  double At(std::size_t column, std::size_t row) const {
    const double x = static_cast<double>(column) / m_width;
    const double y = static_cast<double>(row) / m_width;
    const double away = std::hypot(x - 0.5, y - m_height / m_width / 2);
    double light = std::pow(std::cos(std::atan(1.2 * away)), 4);
    for (const Dust& dust : kDust) {
      const double distance = std::hypot(x - dust.x, y - dust.y) / dust.radius;
      if (distance < 3) light *= 1 - (1 - dust.light) * std::exp(-std::pow(distance, 4));
    }
    return light;
  }

 private:
  double m_width, m_height;
};

FlatFieldFilter MakeFilter(EQvFlatFieldCorrectionMode_t mode, IQvImage& flat) {
  FlatFieldFilter filter(CreateIQvFilter(QvFilterType_FlatFieldCorrection));
  filter->SetFlatFieldCorrectionMode(mode);
  filter->SetCalibrationEnable(true);
  filter->Filter(&flat);
  filter->SetCalibrationEnable(false);
  return filter;
}

}  // namespace

Section ShowFlatField(const Scene& scene, Album& album) {
  IQvImage& truth = *scene.mosaic->GetIQvImage();
  const Shading shading(truth);
  Noise noise;
  const Buffer shaded = Disturb(truth, [&](std::size_t x, std::size_t y, std::size_t,
                                           double value) { return value * shading.At(x, y); });
  const Buffer flat = Disturb(truth, [&](std::size_t x, std::size_t y, std::size_t, double) {
    return kWhite * shading.At(x, y) + noise.Normal(kPhotonNoise);
  });
  IQvImage& frame = *shaded->GetIQvImage();
  const FilterFigures figures(scene, album, truth, "flatfield");

  Figure calibration =
      figures.Show(*flat->GetIQvImage(), "Calibration frame",
                   "A white wall, which shows lens and dust alone.", "calibration");
  calibration.psnr.reset();
  calibration.settings = {"CalibrationEnable = true"};
  const Figure before =
      figures.Show(frame, "Before", "Dark corners, and dust on the cover glass.", "before");
  const FlatFieldFilter byGain =
      MakeFilter(QvFlatFieldCorrectionMode_Multiplication, *flat->GetIQvImage());
  Figure multiplied = figures.ShowFiltered(*byGain.Get(), frame, "Multiplication",
                                           "A gain for each pixel, as lens and dust take a part of "
                                           "the light.",
                                           "multiplication");
  multiplied.settings = {"FlatFieldCorrectionMode = Multiplication"};
  const FlatFieldFilter byOffset =
      MakeFilter(QvFlatFieldCorrectionMode_Addition, *flat->GetIQvImage());
  Figure added = figures.ShowFiltered(*byOffset.Get(), frame, "Addition",
                                      "An offset for each pixel: right where the scene is as "
                                      "bright as the wall, too much where it is dark.",
                                      "addition");
  added.settings = {"FlatFieldCorrectionMode = Addition"};

  Section section;
  section.id = "flatfield";
  section.title = "Flat field";
  section.text =
      "The mosaic behind a lens that darkens the corners and dust that throws shadows, corrected "
      "in place after the filter has seen a white wall. PSNR compares the mosaic with the frame "
      "without them.";
  section.sheet = true;
  section.figures = {calibration, before, multiplied, added};
  section.table = MakeTable(section.figures);
  section.checks = {IsCloser("Multiplication", multiplied, before)};
  return section;
}

}  // namespace Demo
