// SPDX-License-Identifier: MIT
#include "Scene.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "Chart.h"

namespace Demo {

using namespace QvApi;

namespace {

constexpr std::size_t kSmallestSide = 16;
constexpr std::size_t kRegionSide = 48, kRegionCount = 6;

// How much neighbouring pixels differ inside a region of a BGR8 image.
long Detail(IQvImage& image, const Region& region) {
  const std::size_t pitch = image.GetImageLinePitch();
  const auto* pixels = static_cast<const std::uint8_t*>(image.GetImageBuffer());
  long sum = 0;
  for (std::size_t y = region.y; y + 1 < region.y + region.height; ++y) {
    const std::uint8_t* line = pixels + y * pitch + 3 * region.x;
    for (std::size_t i = 0; i < 3 * (region.width - 1); ++i)
      sum += std::abs(line[i] - line[i + 3]) + std::abs(line[i] - line[i + pitch]);
  }
  return sum;
}

bool FarApart(const Region& a, const Region& b, IQvImage& image) {
  const auto distance = [](std::size_t p, std::size_t q) { return p > q ? p - q : q - p; };
  return distance(a.x, b.x) > image.GetImageWidth() / 5 ||
         distance(a.y, b.y) > image.GetImageHeight() / 5;
}

// The regions of a grid with the most detail, apart from each other.
std::vector<Region> FindRegions(IQvImage& image) {
  const std::size_t width = std::min(kRegionSide, image.GetImageWidth());
  const std::size_t height = std::min(kRegionSide, image.GetImageHeight());
  std::vector<std::pair<long, Region>> candidates;
  for (std::size_t y = 0; y + height <= image.GetImageHeight(); y += height)
    for (std::size_t x = 0; x + width <= image.GetImageWidth(); x += width) {
      const Region region{"at " + std::to_string(x) + ", " + std::to_string(y), x, y, width,
                          height};
      candidates.emplace_back(Detail(image, region), region);
    }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });

  std::vector<Region> chosen;
  for (const auto& [detail, region] : candidates) {
    if (chosen.size() == kRegionCount) break;
    if (std::all_of(chosen.begin(), chosen.end(),
                    [&](const Region& other) { return FarApart(region, other, image); }))
      chosen.push_back(region);
  }
  return chosen;
}

}  // namespace

Scene DrawScene() {
  Scene scene;
  scene.name = "Test chart";
  scene.origin = "A test chart, drawn by the demo around the colour patches of the library.";
  scene.original = DrawChart();
  scene.mosaic = ConvertTo(PixelFormat::BayerRG8, *scene.original->GetIQvImage());
  scene.regions = ChartRegions();
  return scene;
}

Scene LoadScene(const std::string& fileName) {
  Buffer loaded = MakeBuffer();
  MakeFiler()->Load(loaded.Get(), fileName.c_str());
  IQvImage& image = *loaded->GetIQvImage();
  if (image.GetImageWidth() < kSmallestSide || image.GetImageHeight() < kSmallestSide)
    throw std::runtime_error("File " + fileName + " is too small: " + Describe(image) +
                             ", needed are " + std::to_string(kSmallestSide) + " x " +
                             std::to_string(kSmallestSide) + " pixels.");
  Scene scene;
  scene.name = std::filesystem::path(fileName).filename().string();
  scene.origin = "Loaded from " + scene.name + " as " + Describe(image) + ".";
  scene.original = ConvertTo(PixelFormat::BGR8, image);
  scene.mosaic = ConvertTo(PixelFormat::BayerRG8, *scene.original->GetIQvImage());
  scene.regions = FindRegions(*scene.original->GetIQvImage());
  return scene;
}

Buffer Demosaic(const Scene& scene, PixelFormat format) {
  Converter converter = MakeConverter(format);
  converter->SetBayerInterpolationMethod(QvBayerInterpolationMethod_Bilinear3);
  Buffer picture = MakeBuffer();
  converter->Convert(scene.mosaic->GetIQvImage(), picture.Get());
  return picture;
}

}  // namespace Demo
