// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstring>

#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using ReverseConverter = CQvAutoPtr<IQvConverterReleasable, IQvReverseConverter>;

// A pixel's place in an image that is `width` x `height` before it is turned.
struct Place {
  std::size_t x, y;
};
using Move = Place (*)(Place from, std::size_t width, std::size_t height);

struct Orientation {
  const char* title;
  bool reverseX, reverseY;
  EQvRotationMode_t rotation;
  const char* rotationName;
  Move move;
};

constexpr Orientation kOrientations[] = {
    {"As it is", false, false, QvRotationMode_OFF, "OFF",
     [](Place p, std::size_t, std::size_t) { return p; }},
    {"Left and right exchanged", true, false, QvRotationMode_OFF, "OFF",
     [](Place p, std::size_t w, std::size_t) {
       return Place{w - 1 - p.x, p.y};
     }},
    {"Top and bottom exchanged", false, true, QvRotationMode_OFF, "OFF",
     [](Place p, std::size_t, std::size_t h) {
       return Place{p.x, h - 1 - p.y};
     }},
    {"Half a turn", true, true, QvRotationMode_OFF, "OFF",
     [](Place p, std::size_t w, std::size_t h) {
       return Place{w - 1 - p.x, h - 1 - p.y};
     }},
    {"A quarter clockwise", false, false, QvRotationMode_Clockwise90, "Clockwise90",
     [](Place p, std::size_t, std::size_t h) {
       return Place{h - 1 - p.y, p.x};
     }},
    {"A quarter counterclockwise", false, false, QvRotationMode_Counterclockwise90,
     "Counterclockwise90",
     [](Place p, std::size_t w, std::size_t) {
       return Place{p.y, w - 1 - p.x};
     }},
    {"Transposed", false, true, QvRotationMode_Clockwise90, "Clockwise90",
     [](Place p, std::size_t, std::size_t) {
       return Place{p.y, p.x};
     }},
    {"Transposed at the other diagonal", true, false, QvRotationMode_Clockwise90, "Clockwise90",
     [](Place p, std::size_t w, std::size_t h) {
       return Place{h - 1 - p.y, w - 1 - p.x};
     }},
};

std::uint8_t* PixelOf(IQvImage& image, Place place) {
  return static_cast<std::uint8_t*>(image.GetImageBuffer()) + place.y * image.GetImageLinePitch() +
         3 * place.x;
}

// The BGR8 picture in that orientation, pixel by pixel.
Buffer Turned(IQvImage& picture, const Orientation& orientation) {
  const std::size_t width = picture.GetImageWidth(), height = picture.GetImageHeight();
  const bool exchanged = orientation.rotation != QvRotationMode_OFF;
  Buffer turned = MakeBuffer();
  turned->SetSize(exchanged ? height : width, exchanged ? width : height, PixelFormat::BGR8, 0);
  IQvImage& result = *turned->GetIQvImage();
  for (std::size_t y = 0; y < height; ++y)
    for (std::size_t x = 0; x < width; ++x)
      std::memcpy(PixelOf(result, orientation.move({x, y}, width, height)),
                  PixelOf(picture, {x, y}), 3);
  return turned;
}

std::string OnOff(bool value) { return value ? "true" : "false"; }

Figure ShowOrientation(const Orientation& orientation, const Scene& scene, Album& album,
                       Section& section) {
  ReverseConverter reverse(CreateIQvConverter(QvConverterType_Reverse));
  reverse->SetReverseX(orientation.reverseX);
  reverse->SetReverseY(orientation.reverseY);
  reverse->SetRotationMode(orientation.rotation);
  Buffer mosaic = MakeBuffer(), picture = MakeBuffer();
  IQvImage& frame = *scene.mosaic->GetIQvImage();

  Figure figure;
  figure.milliseconds = MedianMilliseconds([&] { reverse->Convert(&frame, mosaic.Get()); });
  Converter converter = MakeConverter(PixelFormat::BGR8);
  converter->SetBayerInterpolationMethod(QvBayerInterpolationMethod_Bilinear);
  converter->Convert(mosaic->GetIQvImage(), picture.Get());
  const Buffer truth = Turned(*scene.original->GetIQvImage(), orientation);
  const std::string format = FormatName(mosaic->GetIQvImage()->GetImagePixelFormat());

  figure.title = orientation.title;
  figure.text = "The mosaic is " + Describe(*mosaic->GetIQvImage()) + " now.";
  figure.settings = {"ReverseX = " + OnOff(orientation.reverseX),
                     "ReverseY = " + OnOff(orientation.reverseY),
                     std::string("RotationMode = ") + orientation.rotationName};
  figure.psnr = Psnr(*picture->GetIQvImage(), *truth->GetIQvImage());
  figure.file =
      album.Save(*picture->GetIQvImage(),
                 "orientation-" + std::to_string(section.table.rows.size() + 1) + "-" + format);
  section.table.rows.push_back({orientation.title, OnOff(orientation.reverseX),
                                OnOff(orientation.reverseY), orientation.rotationName, format,
                                Decimal(*figure.milliseconds, 2) + " ms",
                                Decimal(*figure.psnr, 2) + " dB"});
  const Buffer sampled =
      ConvertTo(mosaic->GetIQvImage()->GetImagePixelFormat(), *truth->GetIQvImage());
  section.checks.push_back({orientation.title + std::string(": the samples are those of the ") +
                                "original so turned, as " + format + ".",
                            SamePixels(*mosaic->GetIQvImage(), *sampled->GetIQvImage())});
  return figure;
}

}  // namespace

Section ShowOrientations(const Scene& scene, Album& album) {
  Section section;
  section.id = "orientations";
  section.title = "Mirrored and turned";
  section.text =
      "The frame in its eight orientations. The mosaic gets the format in which each sample keeps "
      "its colour; demosaiced by Bilinear behind that, the picture is compared with the original "
      "in the same orientation. Times are for the mosaic.";
  section.table.head = {"Orientation", "ReverseX",       "ReverseY", "RotationMode",
                        "Format",      "Time per frame", "PSNR"};
  section.sheet = true;
  for (const Orientation& orientation : kOrientations)
    section.figures.push_back(ShowOrientation(orientation, scene, album, section));

  return section;
}

}  // namespace Demo
