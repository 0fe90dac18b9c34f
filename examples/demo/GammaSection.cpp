// SPDX-License-Identifier: MIT
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using GammaFilter = CQvAutoPtr<IQvFilterReleasable, IQvGammaCorrectionFilter>;

constexpr double kBrighter = 0.45, kDarker = 2.2;

GammaFilter MakeGammaFilter() { return GammaFilter(CreateIQvFilter(QvFilterType_GammaCorrection)); }

GenApi::CFloatPtr GammaNode(const GammaFilter& filter) {
  return filter->GetINodeMap()->GetNode("Gamma");
}

Figure ShowFiltered(IQvImage& picture, const GammaFilter& filter, const std::string& file,
                    const Scene& scene, Album& album) {
  Buffer work = MakeBuffer();
  Figure figure;
  figure.milliseconds = MedianMilliseconds([&] { filter->Filter(work->GetIQvImage()); },
                                           [&] { work->CopyImage(&picture); });
  figure.file = album.Save(*work->GetIQvImage(), file);
  figure.crops = album.SaveCrops(*work->GetIQvImage(), file, {scene.regions.front()});
  figure.links = {{figure.file, figure.file}};
  return figure;
}

// The value set on either road gives the same picture.
bool RoadsAgree(IQvImage& picture) {
  GammaFilter typed = MakeGammaFilter(), byNode = MakeGammaFilter();
  typed->SetGammaValue(kBrighter);
  GammaNode(byNode)->SetValue(kBrighter);
  Buffer one = CopyOf(picture), other = CopyOf(picture);
  typed->Filter(one->GetIQvImage());
  byNode->Filter(other->GetIQvImage());
  return SamePixels(*one->GetIQvImage(), *other->GetIQvImage());
}

}  // namespace

Section ShowGamma(const Scene& scene, Album& album) {
  Buffer picture = Demosaic(scene, PixelFormat::BGR8);
  IQvImage& image = *picture->GetIQvImage();
  GammaFilter filter = MakeGammaFilter();

  Section section;
  section.id = "gamma";
  section.title = "Gamma correction";
  section.text =
      "The picture of method 7, corrected in place by a power law: an exponent below 1 brightens "
      "the mid-tones, one above 1 darkens them. The one filter is set in two ways.";

  filter->SetGammaValue(kBrighter);
  section.checks.push_back({"The node map reads 0.45 after the typed interface has set it.",
                            GammaNode(filter)->GetValue() == kBrighter});
  Figure brighter = ShowFiltered(image, filter, "gamma-typed-0.45", scene, album);
  brighter.title = "Gamma 0.45";
  brighter.text = "Set by the typed interface.";
  brighter.settings = {"SetGammaValue(0.45)"};

  GammaNode(filter)->SetValue(kDarker);
  section.checks.push_back({"The typed interface reads 2.2 after the node map has set it.",
                            filter->GetGammaValue() == kDarker});
  Figure darker = ShowFiltered(image, filter, "gamma-nodemap-2.2", scene, album);
  darker.title = "Gamma 2.2";
  darker.text = "Set through the node map.";
  darker.settings = {"Gamma = 2.2"};

  section.checks.push_back({"Both ways give the same pixels at 0.45.", RoadsAgree(image)});
  section.figures = {brighter, darker};
  return section;
}

}  // namespace Demo
