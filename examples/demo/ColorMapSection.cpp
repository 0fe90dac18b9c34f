// SPDX-License-Identifier: MIT
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

struct Map {
  const char *title, *typeName;
  EQvColorMapType_t type;
  bool inversion;
  int phase;
  const char *text, *file;
};

constexpr Map kMaps[] = {
    {"Grey", "Normal", QvColorMapType_Normal, false, 0, "Black to white.", "map-normal"},
    {"Grey, inverted", "Normal", QvColorMapType_Normal, true, 0, "White to black.",
     "map-normal-inverted"},
    {"Blue to red", "PseudoColor_BGR", QvColorMapType_PseudoColor_BGR, false, 0,
     "Blue by way of green to red.", "map-bgr"},
    {"Red to blue", "PseudoColor_BGR", QvColorMapType_PseudoColor_BGR, true, 0,
     "The same backward.", "map-bgr-inverted"},
    {"All hues", "PseudoColor_BGRB", QvColorMapType_PseudoColor_BGRB, false, 0,
     "From blue around the circle to blue.", "map-bgrb"},
    {"All hues, turned", "PseudoColor_BGRB", QvColorMapType_PseudoColor_BGRB, false, 96,
     "The circle starts elsewhere.", "map-bgrb-turned"},
};

Figure ShowMap(const Map& map, IQvImage& grey, Album& album) {
  Converter converter = MakeConverter(PixelFormat::BGR8);
  converter->SetColorMapType(map.type);
  converter->SetColorMapInversion(map.inversion);
  converter->SetColorMapPhase(map.phase);
  Buffer picture = MakeBuffer();
  Figure figure;
  figure.milliseconds = MedianMilliseconds([&] { converter->Convert(&grey, picture.Get()); });
  figure.title = map.title;
  figure.text = map.text;
  figure.settings = {std::string("ColorMapType = ") + map.typeName,
                     std::string("ColorMapInversion = ") + (map.inversion ? "true" : "false"),
                     "ColorMapPhase = " + std::to_string(map.phase)};
  figure.file = album.Save(*picture->GetIQvImage(), map.file);
  return figure;
}

}  // namespace

Section ShowColorMaps(const Scene& scene, Album& album) {
  const Buffer grey = ConvertTo(PixelFormat::Mono8, *scene.original->GetIQvImage());
  Section section;
  section.id = "color-maps";
  section.title = "Colour maps";
  section.text = "The scene as " + Describe(*grey->GetIQvImage()) +
                 ", converted to BGR8 through maps that give each grey level a colour.";
  section.sheet = true;
  for (const Map& map : kMaps) section.figures.push_back(ShowMap(map, *grey->GetIQvImage(), album));
  return section;
}

}  // namespace Demo
