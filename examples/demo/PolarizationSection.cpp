// SPDX-License-Identifier: MIT
#include <cmath>
#include <numbers>

#include "PolarizedScene.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using Settings = void (*)(Converter&);

constexpr double kSpecifiedAngle = 30;

void Defaults(Converter&) {}

void AtAngle(Converter& converter) { converter->SetPolarizationSpecifiedAngle(kSpecifiedAngle); }

void AtAngleByCosine(Converter& converter) {
  AtAngle(converter);
  converter->SetInterpolationMethodForSpecifiedAngle(QvInterpolationMethodForSpecifiedAngle_Cosine);
}

void Dark(Converter& converter) { converter->SetADOLPDarkMode(true); }

void InvertedAndTurned(Converter& converter) {
  converter->SetADOLPColorInversion(true);
  converter->SetADOLPColorPhase(64);
}

// One way to look at the frame of a polarizer sensor.
struct View {
  const char* title;
  PixelFormat sensor, destination;
  EQvPolarizationImageTransformationMethod_t method;
  const char* methodName;
  Settings settings;
  std::vector<std::string> settingNames;
  const char *text, *file;
};

const View kViews[] = {
    {"Raw frame",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_OFF,
     "OFF",
     Defaults,
     {},
     "Each pixel behind its own polarizer.",
     "pol-raw"},
    {"Each angle",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_EachAngle,
     "EachAngle",
     Defaults,
     {},
     "Four pictures of half the size: 90 and 45, below them 135 and 0 degrees.",
     "pol-each"},
    {"Mean",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_Average,
     "Average",
     Defaults,
     {},
     "What a sensor without polarizers sees. Of the letters in the right field no more shows than "
     "their edges, where windows mix them with the ground.",
     "pol-average"},
    {"Minimum",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_MinimumPixelValue,
     "MinimumPixelValue",
     Defaults,
     {},
     "The reflection on the page is gone.",
     "pol-minimum"},
    {"Maximum",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_MaximumPixelValue,
     "MaximumPixelValue",
     Defaults,
     {},
     "The reflection at its strongest.",
     "pol-maximum"},
    {"Difference",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_DifferenceOfPixelValues,
     "DifferenceOfPixelValues",
     Defaults,
     {},
     "Polarized light alone.",
     "pol-difference"},
    {"Specified angle, Linear",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_SpecifiedAngle,
     "SpecifiedAngle",
     AtAngle,
     {"PolarizationSpecifiedAngle = 30", "InterpolationMethodForSpecifiedAngle = Linear"},
     "As behind a polarizer at 30 degrees, interpolated.",
     "pol-specified-linear"},
    {"Specified angle, Cosine",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_SpecifiedAngle,
     "SpecifiedAngle",
     AtAngleByCosine,
     {"PolarizationSpecifiedAngle = 30", "InterpolationMethodForSpecifiedAngle = Cosine"},
     "The same by Malus's law.",
     "pol-specified-cosine"},
    {"Degree",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_DegreeOfLinearPolarization,
     "DegreeOfLinearPolarization",
     Defaults,
     {},
     "White is fully polarized.",
     "pol-degree"},
    {"Angle",
     PixelFormat::Pol1Mono8,
     PixelFormat::Mono8,
     QvPolarizationImageTransformationMethod_AngleOfLinearPolarization,
     "AngleOfLinearPolarization",
     Defaults,
     {},
     "Black is 0 degrees, white nearly 180. The hidden letters show.",
     "pol-angle"},
    {"False colour",
     PixelFormat::Pol1Mono8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization,
     "AngleAndDegreeOfLinearPolarization",
     Defaults,
     {},
     "The angle as hue: 0 degrees blue, 60 green, 120 red; unpolarized light is white.",
     "pol-color"},
    {"False colour, dark",
     PixelFormat::Pol1Mono8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization,
     "AngleAndDegreeOfLinearPolarization",
     Dark,
     {"ADOLPDarkMode = true"},
     "Unpolarized light is black.",
     "pol-color-dark"},
    {"False colour, inverted and turned",
     PixelFormat::Pol1Mono8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization,
     "AngleAndDegreeOfLinearPolarization",
     InvertedAndTurned,
     {"ADOLPColorInversion = true", "ADOLPColorPhase = 64"},
     "The hues run backward from another start.",
     "pol-color-inverted"},
    {"Colour sensor: each angle",
     PixelFormat::Pol1BayerRG8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_EachAngle,
     "EachAngle",
     Defaults,
     {},
     "Four colour pictures. Colours of the stressed disc change with the angle.",
     "pol-bayer-each"},
    {"Colour sensor: mean",
     PixelFormat::Pol1BayerRG8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_Average,
     "Average",
     Defaults,
     {},
     "Of half the size, as four pixels make one.",
     "pol-bayer-average"},
    {"Colour sensor: minimum",
     PixelFormat::Pol1BayerRG8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_MinimumPixelValue,
     "MinimumPixelValue",
     Defaults,
     {},
     "The page in its colours, without the reflection.",
     "pol-bayer-minimum"},
    {"Colour sensor: specified angle",
     PixelFormat::Pol1BayerRG8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_SpecifiedAngle,
     "SpecifiedAngle",
     AtAngleByCosine,
     {"PolarizationSpecifiedAngle = 30", "InterpolationMethodForSpecifiedAngle = Cosine"},
     "As behind a polarizer at 30 degrees.",
     "pol-bayer-specified"},
    {"Colour sensor: false colour",
     PixelFormat::Pol1BayerRG8,
     PixelFormat::BGR8,
     QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization,
     "AngleAndDegreeOfLinearPolarization",
     Dark,
     {"ADOLPDarkMode = true"},
     "A picture for each sample of the mosaic: red and green, below them green and blue.",
     "pol-bayer-color"},
};

Converter ConverterFor(const View& view) {
  Converter converter = MakeConverter(view.destination);
  converter->SetBayerInterpolationMethod(QvBayerInterpolationMethod_Bilinear);
  converter->SetPolarizationImageTransformationMethod(view.method);
  view.settings(converter);
  return converter;
}

Figure Show(const View& view, IQvImage& frame, Album& album) {
  Converter converter = ConverterFor(view);
  Buffer picture = MakeBuffer();
  Figure figure;
  figure.milliseconds = MedianMilliseconds([&] { converter->Convert(&frame, picture.Get()); });
  figure.title = view.title;
  figure.text = view.text;
  figure.settings = {FormatName(view.sensor) + " to " + FormatName(view.destination),
                     std::string("PolarizationImageTransformationMethod = ") + view.methodName};
  figure.settings.insert(figure.settings.end(), view.settingNames.begin(), view.settingNames.end());
  figure.file = album.Save(*picture->GetIQvImage(), view.file);
  return figure;
}

double RootMeanSquare(const std::vector<double>& differences) {
  double sum = 0;
  for (const double difference : differences) sum += difference * difference;
  return std::sqrt(sum / static_cast<double>(differences.size()));
}

// What a value of full scale 1 says, less what the light there is.
using Difference = double (*)(double, const Light&);

double AngleDifference(double value, const Light& light) {
  const double truth = std::atan2(light.sine, light.cosine) * 90 / std::numbers::pi;
  return std::remainder(180 * value - truth, 180);
}

double DegreeDifference(double value, const Light& light) {
  return 100 * (value - std::hypot(light.cosine, light.sine) / light.mean);
}

double MeanDifference(double value, const Light& light) { return 100 * (value - light.mean); }

double SpecifiedAngleDifference(double value, const Light& light) {
  const double turn = 2 * kSpecifiedAngle * std::numbers::pi / 180;
  return 100 * (value - (light.mean + light.cosine * std::cos(turn) + light.sine * std::sin(turn)));
}

// One measurement of the light of the foils.
struct Measurement {
  const char *name, *unit;
  EQvPolarizationImageTransformationMethod_t method;
  Settings settings;
  Difference difference;
};

constexpr Measurement kMeasurements[] = {
    {"Angle", "\u00b0", QvPolarizationImageTransformationMethod_AngleOfLinearPolarization, Defaults,
     AngleDifference},
    {"Degree", " %", QvPolarizationImageTransformationMethod_DegreeOfLinearPolarization, Defaults,
     DegreeDifference},
    {"Mean", " %", QvPolarizationImageTransformationMethod_Average, Defaults, MeanDifference},
    {"At 30\u00b0, Linear", " %", QvPolarizationImageTransformationMethod_SpecifiedAngle, AtAngle,
     SpecifiedAngleDifference},
    {"At 30\u00b0, Cosine", " %", QvPolarizationImageTransformationMethod_SpecifiedAngle,
     AtAngleByCosine, SpecifiedAngleDifference},
};

struct Sensor {
  PixelFormat format, destination;
};

constexpr Sensor kSensors[] = {{PixelFormat::Pol1Mono8, PixelFormat::Mono8},
                               {PixelFormat::Pol1Mono10, PixelFormat::Mono10},
                               {PixelFormat::Pol1Mono12, PixelFormat::Mono12}};

double Deviation(IQvImage& result, const PolarizedScene& scene, Difference difference) {
  const double fullScale =
      static_cast<double>((1u << GetIQvPixelFormatInfo(result.GetImagePixelFormat())
                                     ->GetEachComponentEffectiveBitCount()) -
                          1);
  std::vector<double> differences;
  for (const Region& foil : PolarizedScene::Foils())
    for (std::size_t y = foil.y; y < foil.y + foil.height; ++y)
      for (std::size_t x = foil.x; x < foil.x + foil.width; ++x)
        differences.push_back(difference(SampleAt(result, x, y) / fullScale, scene.GreyAt(x, y)));
  return RootMeanSquare(differences);
}

// How well the frame of one sensor tells the light of the foils, and the time that it takes.
std::vector<std::string> Measure(const Sensor& sensor, const PolarizedScene& scene,
                                 std::vector<double>& deviations) {
  const Buffer frame = scene.Sample(sensor.format);
  Converter converter = MakeConverter(sensor.destination);
  Buffer result = MakeBuffer();
  const auto convert = [&] { converter->Convert(frame->GetIQvImage(), result.Get()); };
  std::vector<std::string> row = {FormatName(sensor.format)};
  std::string time;
  for (const Measurement& measurement : kMeasurements) {
    converter->SetPolarizationImageTransformationMethod(measurement.method);
    measurement.settings(converter);
    const double milliseconds = MedianMilliseconds(convert);
    if (time.empty()) time = Decimal(milliseconds, 2) + " ms";
    deviations.push_back(Deviation(*result->GetIQvImage(), scene, measurement.difference));
    row.push_back(Decimal(deviations.back(), 3) + measurement.unit);
  }
  row.push_back(time);
  return row;
}

Buffer Look(EQvPolarizationImageTransformationMethod_t method, IQvImage& frame) {
  Converter converter = MakeConverter(PixelFormat::Mono8);
  converter->SetPolarizationImageTransformationMethod(method);
  Buffer result = MakeBuffer();
  converter->Convert(&frame, result.Get());
  return result;
}

double MeanOf(IQvImage& image, const Region& region) {
  double sum = 0;
  for (std::size_t y = region.y; y < region.y + region.height; ++y)
    for (std::size_t x = region.x; x < region.x + region.width; ++x) sum += SampleAt(image, x, y);
  return sum / static_cast<double>(region.width * region.height);
}

Check HiddenPrintCheck(IQvImage& mean, IQvImage& angle) {
  const auto contrast = [](IQvImage& image) {
    return std::abs(MeanOf(image, PolarizedScene::HiddenInk()) -
                    MeanOf(image, PolarizedScene::HiddenGround()));
  };
  const double inMean = contrast(mean), inAngle = contrast(angle) * 180 / 255;
  return {"The letters that differ from their ground in angle alone differ by " +
              Decimal(inMean, 2) + " codes in the mean and by " + Decimal(inAngle, 1) +
              "\u00b0 in the angle (they are 90\u00b0 apart).",
          inMean < 1 && std::abs(inAngle - 90) < 1};
}

Check ReflectionCheck(IQvImage& mean, IQvImage& minimum, const PolarizedScene& scene) {
  const Region page = PolarizedScene::Page();
  const Buffer clean = scene.WithoutReflection();
  const auto psnr = [&](IQvImage& image) {
    const auto part = [&](IQvImage& whole) {
      return whole.GetROIImage(page.x, page.y, page.width, page.height);
    };
    return Psnr(*part(image), *part(*clean->GetIQvImage()));
  };
  const double inMean = psnr(mean), inMinimum = psnr(minimum);
  return {"The minimum takes the reflection off the page: against the page without it " +
              Decimal(inMean, 1) + " dB for the mean, " + Decimal(inMinimum, 1) +
              " dB for the minimum.",
          inMinimum > inMean + 3};
}

}  // namespace

Section ShowPolarization(const Scene&, Album& album) {
  const PolarizedScene scene;
  const Buffer mono = scene.Sample(PixelFormat::Pol1Mono8);
  const Buffer color = scene.Sample(PixelFormat::Pol1BayerRG8);
  IQvImage& frame = *mono->GetIQvImage();

  Section section;
  section.id = "polarization";
  section.title = "Polarization";
  section.text =
      "A scene of polarized light, drawn by the demo and sampled by Malus's law as sensors with "
      "tiles of four polarizers see it: a ramp of angle and degree, a wheel, a disc under stress, "
      "foils, hidden print, and a page under glass that reflects. The table tells how far the "
      "results are from the light of the foils (root mean square), and the time for the angle.";
  section.table.head = {"Frame"};
  for (const Measurement& measurement : kMeasurements)
    section.table.head.push_back(measurement.name);
  section.table.head.push_back("Time for the angle");
  std::vector<double> deviations;
  for (const Sensor& sensor : kSensors)
    section.table.rows.push_back(Measure(sensor, scene, deviations));

  const Buffer mean = Look(QvPolarizationImageTransformationMethod_Average, frame);
  const Buffer minimum = Look(QvPolarizationImageTransformationMethod_MinimumPixelValue, frame);
  const Buffer angle =
      Look(QvPolarizationImageTransformationMethod_AngleOfLinearPolarization, frame);
  section.checks = {HiddenPrintCheck(*mean->GetIQvImage(), *angle->GetIQvImage()),
                    ReflectionCheck(*mean->GetIQvImage(), *minimum->GetIQvImage(), scene),
                    {"The angles of the foils are right within 1\u00b0, their degrees within 1 %.",
                     deviations[0] < 1 && deviations[1] < 1}};

  section.sheet = true;
  for (const View& view : kViews)
    section.figures.push_back(
        Show(view, view.sensor == PixelFormat::Pol1Mono8 ? frame : *color->GetIQvImage(), album));
  return section;
}

}  // namespace Demo
