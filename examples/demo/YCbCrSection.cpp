// SPDX-License-Identifier: MIT
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

struct Kind {
  PixelFormat format;
  const char* chroma;
};

constexpr Kind kKinds[] = {
    {PixelFormat::YCbCr8, "at each pixel"},
    {PixelFormat::YCbCr422_8, "for 2 x 1 pixels"},
    {PixelFormat::YCbCr411_8, "for 4 x 1 pixels"},
    {PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar, "for 2 x 2 pixels, full to studio range"},
    {PixelFormat::YCbCr601_422_8, "for 2 x 1 pixels, studio range"},
    {PixelFormat::YCbCr709_422_8, "for 2 x 1 pixels, studio range"},
};

Figure ShowKind(const Kind& kind, const Scene& scene, Album& album, Table& table) {
  IQvImage& original = *scene.original->GetIQvImage();
  const std::string name = FormatName(kind.format);
  Converter there = MakeConverter(kind.format), back = MakeConverter(PixelFormat::BGR8);
  Buffer coded = MakeBuffer(), picture = MakeBuffer();
  const double timeThere = MedianMilliseconds([&] { there->Convert(&original, coded.Get()); });
  const double timeBack =
      MedianMilliseconds([&] { back->Convert(coded->GetIQvImage(), picture.Get()); });

  Figure figure;
  figure.title = name;
  figure.text = std::string("Chroma ") + kind.chroma + ".";
  figure.settings = {"BGR8 to " + name + " to BGR8"};
  figure.psnr = Psnr(*picture->GetIQvImage(), original);
  figure.file = album.Save(*picture->GetIQvImage(), "ycbcr-" + name);
  figure.crops = album.SaveCrops(*picture->GetIQvImage(), "ycbcr-" + name, scene.regions);
  table.rows.push_back({name, kind.chroma, Decimal(timeThere, 2) + " ms",
                        Decimal(timeBack, 2) + " ms", Decimal(*figure.psnr, 2) + " dB"});
  return figure;
}

}  // namespace

Section ShowYCbCr(const Scene& scene, Album& album) {
  Section section;
  section.id = "ycbcr";
  section.title = "YCbCr";
  section.text =
      "The original to luma and chroma and back to BGR8. Fewer samples of chroma make fewer bytes "
      "and soften colours, not brightness. The planar format is written in full range and read "
      "back "
      "as studio range, which raises the contrast. PSNR compares with the original.";
  section.table.head = {"Format", "Chroma", "From BGR8", "To BGR8", "PSNR"};
  section.sheet = true;
  for (const Kind& kind : kKinds)
    section.figures.push_back(ShowKind(kind, scene, album, section.table));
  return section;
}

}  // namespace Demo
