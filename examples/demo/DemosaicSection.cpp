// SPDX-License-Identifier: MIT
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

struct Method {
  EQvBayerInterpolationMethod_t method;
  const char *name, *text;
};

constexpr Method kMethods[] = {
    {QvBayerInterpolationMethod_OFF, "OFF", "Each sample in its own colour: the mosaic as it is."},
    {QvBayerInterpolationMethod_NearestNeighbor, "NearestNeighbor",
     "One colour for each tile of 2 x 2 pixels."},
    {QvBayerInterpolationMethod_NearestNeighbor2, "NearestNeighbor2",
     "Each pixel from the 2 x 2 samples at it."},
    {QvBayerInterpolationMethod_Bilinear, "Bilinear", "Means of the nearest samples."},
    {QvBayerInterpolationMethod_Bilinear2, "Bilinear2",
     "Means over a wider window: softer, with less false colour."},
    {QvBayerInterpolationMethod_Bicubic, "Bicubic", "Cubic interpolation, sharper than means."},
    {QvBayerInterpolationMethod_Mono, "Mono", "Each sample as a grey pixel."},
    {QvBayerInterpolationMethod_Bilinear3, "Bilinear3",
     "Green along edges, then differences of colours."},
};

Figure ShowMethod(const Method& method, const Scene& scene, Album& album) {
  IQvImage& mosaic = *scene.mosaic->GetIQvImage();
  Converter converter = MakeConverter(PixelFormat::BGR8);
  converter->SetBayerInterpolationMethod(method.method);
  Buffer picture = MakeBuffer();

  Figure figure;
  figure.milliseconds = MedianMilliseconds([&] { converter->Convert(&mosaic, picture.Get()); });
  IQvImage& image = *picture->GetIQvImage();
  const std::string file = "demosaic-" + std::to_string(method.method) + "-" + method.name;
  figure.title = std::to_string(method.method) + " " + method.name;
  figure.text = method.text;
  figure.settings = {std::string("BayerInterpolationMethod = ") + method.name,
                     "DestinationPixelFormat = BGR8"};
  figure.psnr = Psnr(image, *scene.original->GetIQvImage());
  figure.file = album.Save(image, file);
  figure.crops = album.SaveCrops(image, file, scene.regions);
  figure.links = {{figure.file, figure.file}};
  return figure;
}

}  // namespace

Section ShowDemosaicing(const Scene& scene, Album& album) {
  Section section;
  section.id = "demosaicing";
  section.title = "Demosaicing";
  section.text =
      "The frame becomes a colour picture by each of the eight methods. Times are medians for one "
      "frame on one thread; PSNR compares with the original, higher is closer.";
  section.table.head = {"Method", "Time per frame", "Megapixels per second", "PSNR"};
  const double pixels = static_cast<double>(scene.mosaic->GetIQvImage()->GetImageWidth() *
                                            scene.mosaic->GetIQvImage()->GetImageHeight());
  for (const Method& method : kMethods) {
    const Figure figure = ShowMethod(method, scene, album);
    section.table.rows.push_back({figure.title, Decimal(*figure.milliseconds, 2) + " ms",
                                  Decimal(pixels / *figure.milliseconds / 1000, 0),
                                  Decimal(*figure.psnr, 2) + " dB"});
    section.figures.push_back(figure);
  }
  return section;
}

}  // namespace Demo
