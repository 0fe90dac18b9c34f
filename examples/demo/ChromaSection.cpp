// SPDX-License-Identifier: MIT
#include <cmath>

#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using ChromaFilter = CQvAutoPtr<IQvFilterReleasable, IQvChromaSuppressionFilter>;

constexpr double kChromaNoise = 20;
constexpr unsigned kThreshold = 60, kSuppression = 5;

// The light falls off to the right.
double LampAt(IQvImage& picture, std::size_t x) {
  return std::pow(0.14, static_cast<double>(x) / static_cast<double>(picture.GetImageWidth()));
}

// Red and blue are amplified more than green, and their noise with them.
Buffer WithChromaNoise(IQvImage& picture) {
  Noise noise;
  return Disturb(picture, [&](std::size_t, std::size_t, std::size_t component, double value) {
    return component == 1 ? value : value + noise.Normal(kChromaNoise);
  });
}

}  // namespace

Section ShowChromaSuppression(const Scene& scene, Album& album) {
  IQvImage& original = *scene.original->GetIQvImage();
  const Buffer dim = Disturb(original, [&](std::size_t x, std::size_t, std::size_t, double value) {
    return value * LampAt(original, x);
  });
  IQvImage& truth = *dim->GetIQvImage();
  const Buffer noisy = WithChromaNoise(truth);
  IQvImage& picture = *noisy->GetIQvImage();
  const FilterFigures figures(scene, album, truth, "chroma");

  const Figure before =
      figures.Show(picture, "Before", "Coloured noise, which shows in the shadows.", "before");
  const ChromaFilter filter(CreateIQvFilter(QvFilterType_ChromaSuppression));
  filter->SetThresholdValue(QvChromaSuppressionPartSelector_LowLuminancePart, kThreshold);
  filter->SetSuppressionValue(QvChromaSuppressionPartSelector_LowLuminancePart, kSuppression);
  Figure after =
      figures.ShowFiltered(*filter.Get(), picture, "Suppressed",
                           "The darker a pixel, the more red and blue move to green.", "after");
  after.settings = {"ThresholdValue[LowLuminancePart] = " + std::to_string(kThreshold),
                    "SuppressionValue[LowLuminancePart] = " + std::to_string(kSuppression)};

  Section section;
  section.id = "chroma";
  section.title = "Chroma suppression";
  section.text =
      "The original in light that falls off to the right, with noise on red and blue, of which "
      "the colour in the shadows is taken out in place. PSNR compares with the picture without "
      "the noise.";
  section.sheet = true;
  section.figures = {before, after};
  section.table = MakeTable(section.figures);
  return section;
}

}  // namespace Demo
