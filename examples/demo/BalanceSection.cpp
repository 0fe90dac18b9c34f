// SPDX-License-Identifier: MIT
#include <array>

#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using BalanceFilter = CQvAutoPtr<IQvFilterReleasable, IQvBalanceRatioFilter>;

// What a greenish lamp leaves of red, green and blue.
constexpr std::array<double, 3> kLamp = {0.55, 1.0, 0.72};
constexpr std::array<EQvBalanceRatioSelector_t, 3> kChannels = {
    QvBalanceRatioSelector_Red, QvBalanceRatioSelector_Green, QvBalanceRatioSelector_Blue};
constexpr int kMostImages = 10;

BalanceFilter MakeFilter() { return BalanceFilter(CreateIQvFilter(QvFilterType_BalanceRatio)); }

// Column and row parities of the BayerRG mosaic add up to the channel.
Buffer UnderLamp(IQvImage& mosaic) {
  return Disturb(mosaic, [](std::size_t x, std::size_t y, std::size_t, double value) {
    return value * kLamp[x % 2 + y % 2];
  });
}

std::vector<std::string> Ratios(const BalanceFilter& filter) {
  std::vector<std::string> settings;
  for (const char* channel : {"Red", "Green", "Blue"})
    settings.push_back(std::string("BalanceRatio[") + channel +
                       "] = " + Decimal(filter->GetBalanceRatio(kChannels[settings.size()]), 3));
  return settings;
}

// Hands in the frame until the filter has found its ratios. Returns how many times that took.
int BalanceOnce(const BalanceFilter& filter, IQvImage& frame) {
  filter->SetBalanceWhiteAuto(QvBalanceWhiteAuto_Once);
  int images = 0;
  while (images < kMostImages && filter->GetBalanceWhiteAuto() == QvBalanceWhiteAuto_Once) {
    const Buffer work = CopyOf(frame);
    filter->Filter(work->GetIQvImage());
    ++images;
  }
  return images;
}

}  // namespace

Section ShowBalance(const Scene& scene, Album& album) {
  IQvImage& truth = *scene.mosaic->GetIQvImage();
  const Buffer cast = UnderLamp(truth);
  IQvImage& frame = *cast->GetIQvImage();
  const FilterFigures figures(scene, album, truth, "balance");

  const Figure before =
      figures.Show(frame, "Before", "Under a lamp that lacks red and blue.", "before");

  const BalanceFilter byHand = MakeFilter();
  for (std::size_t i = 0; i < kChannels.size(); ++i)
    byHand->SetBalanceRatio(kChannels[i], 1 / kLamp[i]);
  Figure manual =
      figures.ShowFiltered(*byHand.Get(), frame, "By hand", "With the ratios of the lamp.", "hand");
  manual.settings = Ratios(byHand);

  const BalanceFilter automatic = MakeFilter();
  const int images = BalanceOnce(automatic, frame);
  const bool isOff = automatic->GetBalanceWhiteAuto() == QvBalanceWhiteAuto_Off;
  const std::string ended =
      (isOff ? ", Off again after " : ", still after ") + std::to_string(images) + " images";
  Figure once = figures.ShowFiltered(
      *automatic.Get(), frame, "Automatic, Once",
      "The filter has measured the frame and takes the mean of the scene for grey.", "once");
  once.settings = Ratios(automatic);
  once.settings.push_back("BalanceWhiteAuto = Once" + ended);

  Section section;
  section.id = "balance";
  section.title = "White balance";
  section.text =
      "The mosaic under a coloured lamp, balanced in place before it is demosaiced. PSNR compares "
      "the mosaic with the frame under white light.";
  section.sheet = true;
  section.figures = {before, manual, once};
  section.table = MakeTable(section.figures);
  section.checks = {IsCloser("Balance by hand", manual, before)};
  return section;
}

}  // namespace Demo
