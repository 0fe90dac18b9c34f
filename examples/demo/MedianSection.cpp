// SPDX-License-Identifier: MIT
#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using NoiseFilter = CQvAutoPtr<IQvFilterReleasable, IQvNoiseReductionFilter>;

constexpr double kLostSamples = 0.05;

// Samples lost on the way: black or white.
Buffer WithLosses(IQvImage& image) {
  Noise noise;
  return Disturb(image, [&](std::size_t, std::size_t, std::size_t, double value) {
    const double chance = noise.Even();
    return chance < kLostSamples / 2 ? 0.0 : chance < kLostSamples ? 255.0 : value;
  });
}

}  // namespace

Section ShowMedian(const Scene& scene, Album& album) {
  const Buffer soft = Blurred(*scene.original->GetIQvImage());
  const Buffer mosaic = ConvertTo(PixelFormat::BayerRG8, *soft->GetIQvImage());
  IQvImage& truth = *mosaic->GetIQvImage();
  const Buffer damaged = WithLosses(truth);
  const FilterFigures figures(scene, album, truth, "median");
  const NoiseFilter filter(CreateIQvFilter(QvFilterType_NoiseReduction));
  filter->SetNoiseReductionMode(QvNoiseReductionMode_Simple);

  Section section;
  section.id = "median";
  section.title = "Lost samples";
  section.text =
      "The mosaic behind a soft lens, with 5 % of its samples lost, through a small median in "
      "place. "
      "PSNR compares the mosaic with the frame that has all samples.";
  section.sheet = true;
  section.figures = {
      figures.Show(*damaged->GetIQvImage(), "Before", "Samples are black or white.", "before"),
      figures.ShowFiltered(*filter.Get(), *damaged->GetIQvImage(), "Median",
                           "Each sample the median of its colour around it. Details of one pixel "
                           "go with the noise.",
                           "after")};
  section.figures.back().settings = {"NoiseReductionMode = Simple"};
  section.table = MakeTable(section.figures);
  return section;
}

}  // namespace Demo
