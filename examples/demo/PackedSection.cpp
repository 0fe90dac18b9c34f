// SPDX-License-Identifier: MIT
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

struct Step {
  PixelFormat from, to;
};

constexpr Step kSteps[] = {
    {PixelFormat::BayerRG8, PixelFormat::BayerRG10p},
    {PixelFormat::BayerRG8, PixelFormat::BayerRG12p},
    {PixelFormat::BayerRG10p, PixelFormat::BayerRG10},
    {PixelFormat::BayerRG12p, PixelFormat::BayerRG12},
    {PixelFormat::BayerRG12Packed, PixelFormat::BayerRG12},
    {PixelFormat::BayerRG10p, PixelFormat::BGR8},
    {PixelFormat::BayerRG12p, PixelFormat::BGR8},
    {PixelFormat::BayerRG12Packed, PixelFormat::BGR8},
    {PixelFormat::BayerRG12p, PixelFormat::BGR12},
    {PixelFormat::Mono8, PixelFormat::Mono12p},
    {PixelFormat::Mono12p, PixelFormat::Mono8},
    {PixelFormat::Mono12Packed, PixelFormat::Mono8},
    {PixelFormat::Mono12Packed, PixelFormat::Mono12},
};

// Bytes of the pixels, without what lines are padded with.
double Bytes(IQvImage& image) {
  const std::size_t bits = GetIQvPixelFormatInfo(image.GetImagePixelFormat())->GetTotalBitCount();
  const std::size_t lineBytes = (image.GetImageWidth() * bits + 7) / 8;
  return static_cast<double>(lineBytes * image.GetImageHeight());
}

Buffer Bilinear(IQvImage& mosaic) {
  Converter converter = MakeConverter(PixelFormat::BGR8);
  converter->SetBayerInterpolationMethod(QvBayerInterpolationMethod_Bilinear);
  Buffer picture = MakeBuffer();
  converter->Convert(&mosaic, picture.Get());
  return picture;
}

std::vector<std::string> Measure(const Step& step, IQvImage& mosaic, IQvImage& grey) {
  const bool isMono = GetIQvPixelFormatInfo(step.from)->IsMono();
  const Buffer source = ConvertTo(step.from, isMono ? grey : mosaic);
  Converter converter = MakeConverter(step.to);
  converter->SetBayerInterpolationMethod(QvBayerInterpolationMethod_Bilinear);
  Buffer result = MakeBuffer();
  const double milliseconds =
      MedianMilliseconds([&] { converter->Convert(source->GetIQvImage(), result.Get()); });
  const double read = Bytes(*source->GetIQvImage()), written = Bytes(*result->GetIQvImage());
  return {FormatName(step.from),
          FormatName(step.to),
          Decimal(read / 1e6, 2) + " MB",
          Decimal(written / 1e6, 2) + " MB",
          Decimal(milliseconds, 2) + " ms",
          Decimal((read + written) / milliseconds / 1e3, 0) + " MB/s"};
}

// 8 bits packed into more and taken out again.
Check ComesBack(PixelFormat packed, IQvImage& image) {
  const Buffer there = ConvertTo(packed, image);
  const Buffer back = ConvertTo(image.GetImagePixelFormat(), *there->GetIQvImage());
  const std::string name = FormatName(image.GetImagePixelFormat());
  return {name + " to " + FormatName(packed) + " to " + name + " gives the same pixels.",
          SamePixels(*back->GetIQvImage(), image)};
}

}  // namespace

Section ShowPacked(const Scene& scene, Album& album) {
  IQvImage& mosaic = *scene.mosaic->GetIQvImage();
  const Buffer grey = ConvertTo(PixelFormat::Mono8, mosaic);

  Section section;
  section.id = "packed";
  section.title = "Packed camera formats";
  section.text =
      "Cameras send 10 and 12 bits without gaps: as one stream of bits (p), or as GigE Vision "
      "packs "
      "them (Packed). Each row is one call; MB/s count the bytes of source and destination.";
  section.table.head = {"From", "To", "Source", "Destination", "Time per frame", "Throughput"};
  for (const Step& step : kSteps)
    section.table.rows.push_back(Measure(step, mosaic, *grey->GetIQvImage()));
  for (const PixelFormat packed :
       {PixelFormat::BayerRG10p, PixelFormat::BayerRG12p, PixelFormat::BayerRG12Packed})
    section.checks.push_back(ComesBack(packed, mosaic));
  for (const PixelFormat packed : {PixelFormat::Mono12p, PixelFormat::Mono12Packed})
    section.checks.push_back(ComesBack(packed, *grey->GetIQvImage()));

  const Buffer raw = ConvertTo(PixelFormat::BayerRG12p, mosaic);
  const Buffer picture = Bilinear(*raw->GetIQvImage());
  Figure figure;
  figure.title = "BayerRG12p to BGR8";
  figure.text = "Unpacked, demosaiced and brought to 8 bits in one call.";
  figure.settings = {"BayerInterpolationMethod = Bilinear"};
  figure.psnr = Psnr(*picture->GetIQvImage(), *scene.original->GetIQvImage());
  figure.file = album.Save(*picture->GetIQvImage(), "packed-12p");
  figure.crops = album.SaveCrops(*picture->GetIQvImage(), "packed-12p", scene.regions);
  section.figures.push_back(figure);
  return section;
}

}  // namespace Demo
