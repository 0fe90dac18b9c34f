// SPDX-License-Identifier: MIT
#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using EdgeFilter = CQvAutoPtr<IQvFilterReleasable, IQvEdgeEnhancementFilter>;

struct Enhancement {
  const char *title, *text, *file;
  double strength;
  unsigned thresh;
};

constexpr Enhancement kEnhancements[] = {
    {"Enhanced", "Differences from the neighbours are raised.", "0.8", 0.8, 0},
    {"Above a threshold", "Small differences, such as noise, stay.", "0.8-16", 0.8, 16},
    {"Too strong", "Edges get a rim.", "4", 4, 0},
};

Figure ShowEnhancement(const Enhancement& enhancement, const FilterFigures& figures,
                       IQvImage& picture) {
  const EdgeFilter filter(CreateIQvFilter(QvFilterType_EdgeEnhancement));
  filter->SetStrength(enhancement.strength);
  filter->SetThresh(enhancement.thresh);
  Figure figure = figures.ShowFiltered(*filter.Get(), picture, enhancement.title, enhancement.text,
                                       enhancement.file);
  figure.settings = {"Strength = " + Decimal(enhancement.strength, 1),
                     "Thresh = " + std::to_string(enhancement.thresh)};
  return figure;
}

}  // namespace

Section ShowEdgeEnhancement(const Scene& scene, Album& album) {
  IQvImage& truth = *scene.original->GetIQvImage();
  const Buffer blurred = Blurred(truth);
  IQvImage& picture = *blurred->GetIQvImage();
  const FilterFigures figures(scene, album, truth, "edges");

  Section section;
  section.id = "edges";
  section.title = "Edges";
  section.text =
      "The original a little out of focus, with its edges raised in place. PSNR compares with the "
      "original.";
  section.sheet = true;
  section.figures = {
      figures.Show(picture, "Before", "Each pixel blurred with its neighbours.", "before")};
  for (const Enhancement& enhancement : kEnhancements)
    section.figures.push_back(ShowEnhancement(enhancement, figures, picture));
  section.table = MakeTable(section.figures);
  return section;
}

}  // namespace Demo
