// SPDX-License-Identifier: MIT
#include "Sections.h"

namespace Demo {

Section ShowScene(const Scene& scene, Album& album) {
  QvApi::IQvImage& original = *scene.original->GetIQvImage();
  Figure figure;
  figure.title = "Original";
  figure.text = scene.origin;
  figure.settings = {Describe(original)};
  figure.file = album.Save(original, "original");
  figure.crops = album.SaveCrops(original, "original", scene.regions);
  figure.links = {{"original.png", figure.file}};

  Section section;
  section.id = "scene";
  section.title = "The scene";
  section.text = "The picture that a camera would look at. Sampled to " +
                 Describe(*scene.mosaic->GetIQvImage()) +
                 ", one colour a pixel, it is the frame that goes through the library. Parts of it "
                 "are shown four times larger beside it.";
  section.figures.push_back(figure);
  return section;
}

}  // namespace Demo
