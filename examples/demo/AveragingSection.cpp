// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Disturbance.h"
#include "FilterFigures.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using AveragingFilter = CQvAutoPtr<IQvFilterReleasable, IQvImageAveragingFilter>;
using DefectFilter = CQvAutoPtr<IQvFilterReleasable, IQvDefectivePixelDetectionFilter>;
using Places = std::set<std::pair<std::size_t, std::size_t>>;  // column, row

constexpr int kFrames = 16;
constexpr double kNoise = 12;

constexpr std::size_t kWidth = 480, kHeight = 300, kDefects = 40;
constexpr double kWall = 110, kWallNoise = 3;
constexpr int kRing = 7;

std::vector<Figure> ShowAverage(const Scene& scene, Album& album) {
  IQvImage& truth = *scene.mosaic->GetIQvImage();
  const FilterFigures figures(scene, album, truth, "averaging");
  const AveragingFilter averaging(CreateIQvFilter(QvFilterType_ImageAveraging));
  Noise noise;
  Buffer frame, mean = MakeBuffer();
  for (int i = 0; i < kFrames; ++i) {
    frame = Disturb(truth, [&](std::size_t, std::size_t, std::size_t, double value) {
      return value + noise.Normal(kNoise);
    });
    averaging->Filter(frame->GetIQvImage());
  }
  averaging->GetAveragedImage(mean.Get(), 0);

  const std::string count = std::to_string(kFrames);
  const Figure one =
      figures.Show(*frame->GetIQvImage(), "One frame",
                   "Taken in little light: its noise is " + Decimal(kNoise, 0) + " levels.", "one");
  Figure all = figures.Show(*mean->GetIQvImage(), "Average of " + count + " frames",
                            "The same sensor and light, with a quarter of the noise.", "mean");
  all.milliseconds = MedianMilliseconds([&] { averaging->Filter(frame->GetIQvImage()); });
  return {one, all};
}

// A wall that is a little brighter on one side, seen by a mosaic whose pixels at `defects` are too
// bright or too dark.
Buffer SeeWall(Places& defects) {
  Buffer wall = MakeBuffer();
  wall->CreateBuffer(kWidth, kHeight, PixelFormat::BayerRG8, QvMemoryInitialization_Zero);
  Noise noise;
  const auto at = [&](std::size_t size) {
    return static_cast<std::size_t>(noise.Even() * static_cast<double>(size - 1));
  };
  while (defects.size() < kDefects) defects.insert({at(kWidth), at(kHeight)});
  return Disturb(*wall->GetIQvImage(), [&](std::size_t x, std::size_t y, std::size_t, double) {
    const double light = kWall + 0.08 * static_cast<double>(x) + noise.Normal(kWallNoise);
    if (!defects.contains({x, y})) return light;
    return light + (noise.Even() < 0.5 ? 60 + 40 * noise.Even() : -60 - 30 * noise.Even());
  });
}

// A red ring around a pixel of a `BGR8` picture.
void Mark(IQvImage& picture, const _SQvDefectivePixelInformation_t& pixel) {
  for (int dy = -kRing; dy <= kRing; ++dy)
    for (int dx = -kRing; dx <= kRing; ++dx) {
      const std::size_t x = pixel.x + static_cast<std::size_t>(dx);
      const std::size_t y = pixel.y + static_cast<std::size_t>(dy);
      // Wraps round at the edges.
      if (std::abs(std::hypot(dx, dy) - kRing + 0.5) > 0.8 || x >= kWidth || y >= kHeight) continue;
      auto* line =
          static_cast<std::uint8_t*>(picture.GetImageBuffer()) + y * picture.GetImageLinePitch();
      std::fill_n(line + 3 * x, 2, std::uint8_t{20});
      line[3 * x + 2] = 230;
    }
}

std::vector<_SQvDefectivePixelInformation_t> Detect(IQvDefectivePixelDetectionFilter& filter,
                                                    IQvImage& image) {
  filter.Filter(&image);
  std::size_t count = 0;
  filter.GetDetectionResult(nullptr, &count, nullptr);
  std::vector<_SQvDefectivePixelInformation_t> pixels(count);
  filter.GetDetectionResult(nullptr, &count, pixels.data());
  return pixels;
}

// The first few of the pixels, as far as they are.
std::vector<Region> RegionsAround(const std::vector<_SQvDefectivePixelInformation_t>& pixels) {
  constexpr std::size_t kSide = 32, kCrops = 3;
  const auto start = [](std::size_t middle, std::size_t size) {
    return std::clamp(middle, kSide / 2, size - kSide / 2) - kSide / 2;
  };
  std::vector<Region> regions;
  for (const auto& pixel : std::span(pixels).first(std::min(kCrops, pixels.size())))
    regions.push_back({Decimal(pixel.value, 0) + " among " + Decimal(pixel.mean, 0),
                       start(pixel.x, kWidth), start(pixel.y, kHeight), kSide, kSide});
  return regions;
}

Figure ShowDefects(Album& album, std::vector<Check>& checks) {
  Places defects, found;
  const Buffer wall = SeeWall(defects);
  const DefectFilter filter(CreateIQvFilter(QvFilterType_DefectivePixelDetection));
  const auto pixels = Detect(*filter.Get(), *wall->GetIQvImage());
  const Buffer picture = ConvertTo(PixelFormat::BGR8, *wall->GetIQvImage());
  for (const auto& pixel : pixels) {
    found.insert({pixel.x, pixel.y});
    Mark(*picture->GetIQvImage(), pixel);
  }
  checks.push_back({"Of " + std::to_string(kDefects) + " defective pixels " +
                        std::to_string(pixels.size()) + " are found, and no others.",
                    found == defects});

  Figure figure;
  figure.title = "Defective pixels";
  figure.text = "A wall, and what stands out from the 5 x 5 pixels of its colour around it.";
  figure.settings = {"AveragingArea = AroundTheTargetPixel", "PeripheralAreaSize = 2",
                     "ThresholdRatio = 15 %"};
  figure.milliseconds = MedianMilliseconds([&] { filter->Filter(wall->GetIQvImage()); });
  figure.file = album.Save(*picture->GetIQvImage(), "defects");
  figure.crops = album.SaveCrops(*picture->GetIQvImage(), "defects", RegionsAround(pixels));
  return figure;
}

}  // namespace

Section ShowAveraging(const Scene& scene, Album& album) {
  Section section;
  section.id = "averaging";
  section.title = "Averaging and defects";
  section.text =
      "Two filters that look at frames and leave them as they are. One adds up a series of frames "
      "of the mosaic, whose mean has less noise; PSNR compares the mosaic with the frame without "
      "noise. The other one finds pixels that are too bright or too dark.";
  section.sheet = true;
  section.figures = ShowAverage(scene, album);
  section.table = MakeTable(section.figures);
  section.checks = {IsCloser("Averaging", section.figures[1], section.figures[0])};
  section.figures.push_back(ShowDefects(album, section.checks));
  return section;
}

}  // namespace Demo
