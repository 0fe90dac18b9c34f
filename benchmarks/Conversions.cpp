// SPDX-License-Identifier: MIT
// Rows that convert an image into a reused destination.
#include <cstdint>
#include <memory>

#include "Frames.h"
#include "Operation.h"
#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

using Converter = CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter>;

// What differs from the converter's settings at the start.
struct Setting {
  const char* name;
  void (*apply)(IQvPixelFormatConverter&);
};

template <EQvBayerInterpolationMethod_t Method>
void SetMethod(IQvPixelFormatConverter& converter) {
  converter.SetBayerInterpolationMethod(Method);
}

constexpr Setting kDefault{"", [](IQvPixelFormatConverter&) {}};
constexpr Setting kMethod0{", method 0", SetMethod<QvBayerInterpolationMethod_OFF>};
constexpr Setting kMethod1{", method 1", SetMethod<QvBayerInterpolationMethod_NearestNeighbor>};
constexpr Setting kMethod2{", method 2", SetMethod<QvBayerInterpolationMethod_NearestNeighbor2>};
constexpr Setting kMethod3{", method 3", SetMethod<QvBayerInterpolationMethod_Bilinear>};
constexpr Setting kMethod4{", method 4", SetMethod<QvBayerInterpolationMethod_Bilinear2>};
constexpr Setting kMethod5{", method 5", SetMethod<QvBayerInterpolationMethod_Bicubic>};
constexpr Setting kMethod6{", method 6", SetMethod<QvBayerInterpolationMethod_Mono>};
constexpr Setting kMethod7{", method 7", SetMethod<QvBayerInterpolationMethod_Bilinear3>};
constexpr Setting kGamma045{", gamma 0.45",
                            [](IQvPixelFormatConverter& c) { c.SetGammaValue(0.45); }};
constexpr Setting kColorMap{", colour map", [](IQvPixelFormatConverter& c) {
                              c.SetColorMapType(QvColorMapType_PseudoColor_BGR);
                            }};

template <EQvPolarizationImageTransformationMethod_t Method>
void SetPolarization(IQvPixelFormatConverter& converter) {
  converter.SetPolarizationImageTransformationMethod(Method);
}
void SetAngle(IQvPixelFormatConverter& converter) {
  SetPolarization<QvPolarizationImageTransformationMethod_SpecifiedAngle>(converter);
  converter.SetPolarizationSpecifiedAngle(37.3);
}

constexpr Setting kEachAngle{", each angle",
                             SetPolarization<QvPolarizationImageTransformationMethod_EachAngle>};
constexpr Setting kLinear{", 37.3 deg", SetAngle};
constexpr Setting kCosine{
    ", 37.3 deg, cosine", [](IQvPixelFormatConverter& c) {
      SetAngle(c);
      c.SetInterpolationMethodForSpecifiedAngle(QvInterpolationMethodForSpecifiedAngle_Cosine);
    }};
constexpr Setting kAverage{", average",
                           SetPolarization<QvPolarizationImageTransformationMethod_Average>};
constexpr Setting kDegree{
    ", degree",
    SetPolarization<QvPolarizationImageTransformationMethod_DegreeOfLinearPolarization>};
constexpr Setting kAngle{
    ", angle", SetPolarization<QvPolarizationImageTransformationMethod_AngleOfLinearPolarization>};
constexpr Setting kFalseColor{
    ", angle and degree",
    SetPolarization<QvPolarizationImageTransformationMethod_AngleAndDegreeOfLinearPolarization>};
constexpr Setting kMaximum{
    ", maximum", SetPolarization<QvPolarizationImageTransformationMethod_MaximumPixelValue>};
constexpr Setting kMinimum{
    ", minimum", SetPolarization<QvPolarizationImageTransformationMethod_MinimumPixelValue>};
constexpr Setting kDifference{
    ", difference",
    SetPolarization<QvPolarizationImageTransformationMethod_DifferenceOfPixelValues>};

struct Conversion {
  PixelFormat source, destination;
  Setting setting;
  double goal;  // times memcpy
  std::vector<const char*> peers;
};

const std::vector<Conversion>& Conversions() {
  using enum PixelFormat;
  static const std::vector<Conversion> kConversions = {
      {BayerRG8, BGR8, kMethod0, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG8, BGR8, kMethod1, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG8, BGR8, kMethod2, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG8, BGR8, kMethod3, 1.5, {"OpenCV bilinear", "libdc1394 bilinear"}},
      {BayerRG8, BGR8, kMethod6, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG8, BGR8, kMethod4, 2.0, {"OpenCV bilinear", "libdc1394 bilinear"}},
      {BayerRG8, BGR8, kMethod5, 3.5, {"libdc1394 HQLinear"}},
      {BayerRG8, BGR8, kMethod7, 5.0, {"OpenCV EA", "libdc1394 edge-sense", "OpenCV VNG"}},
      {BayerRG12, BGR12, kMethod0, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG12, BGR12, kMethod1, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG12, BGR12, kMethod2, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG12, BGR12, kMethod3, 1.5, {"OpenCV bilinear", "libdc1394 bilinear"}},
      {BayerRG12, BGR12, kMethod6, 1.5, {"OpenCV bilinear", "libdc1394 nearest"}},
      {BayerRG12, BGR12, kMethod4, 2.0, {"OpenCV bilinear", "libdc1394 bilinear"}},
      {BayerRG12, BGR12, kMethod5, 4.0, {"libdc1394 HQLinear"}},
      {BayerRG12, BGR12, kMethod7, 7.0, {"OpenCV EA", "libdc1394 edge-sense"}},
      {BayerRG8, Mono8, kDefault, 1.3, {"OpenCV grey"}},
      {BayerRG12, Mono12, kDefault, 1.3, {"OpenCV grey"}},
      {BGR8, RGB8, kDefault, 1.15, {"libyuv RAWToRGB24", "OpenCV BGR2RGB"}},
      {BGR8, BayerRG8, kDefault, 1.3, {}},
      {Mono12p, Mono12, kDefault, 1.3, {}},
      {Mono10p, Mono10, kDefault, 1.3, {}},
      {Mono12Packed, Mono12, kDefault, 1.3, {}},
      {Mono10Packed, Mono10, kDefault, 1.3, {}},
      {BayerRG12p, BayerRG12, kDefault, 1.3, {}},
      {BayerRG10Packed, BayerRG10, kDefault, 1.3, {}},
      {Mono12p, Mono8, kDefault, 1.4, {}},
      {Mono8, Mono12p, kDefault, 2.0, {}},
      {BayerRG12p, BGR8, kDefault, 2.2, {}},
      {Mono12, Mono8, kDefault, 1.15, {}},
      {Mono8, Mono12, kDefault, 1.3, {}},
      {Mono12, Mono8, kGamma045, 2.5, {}},
      {Mono8, Mono12, kGamma045, 2.5, {}},
      {BGR8, Mono8, kDefault, 1.2, {}},
      {BGR12, Mono12, kDefault, 1.3, {}},
      {Mono8, BGR8, kDefault, 1.2, {}},
      {Mono8, BGR8, kColorMap, 2.0, {}},
      {RGB8, RGB8_Planar, kDefault, 1.25, {}},
      {RGB8_Planar, RGB8, kDefault, 1.25, {}},
      {BGRa8, BGR8, kDefault, 1.15, {}},
      {BGR8, RGB10p32, kDefault, 1.5, {}},
      {BGR8, YCbCr422_8, kDefault, 2.5, {}},
      {BGR8, YCbCr8, kDefault, 2.5, {}},
      {BGR8, CYCbCr420_8_YY_Cb_Cr_Planar, kDefault, 2.0, {}},
      {YCbCr422_8, BGR8, kDefault, 2.3, {}},
      {CYCbCr420_8_YY_Cb_Cr_Planar, BGR8, kDefault, 2.3, {}},
      {BayerRG8, YCbCr422_8, kDefault, 2.5, {}},
      {Pol1Mono8, Mono8, kAverage, 1.6, {}},
      {Pol1Mono8, Mono8, kMaximum, 1.6, {}},
      {Pol1Mono8, Mono8, kMinimum, 1.6, {}},
      {Pol1Mono8, Mono8, kDifference, 1.6, {}},
      {Pol1Mono8, Mono8, kEachAngle, 1.6, {}},
      {Pol1Mono8, Mono8, kLinear, 3.0, {}},
      {Pol1Mono8, Mono8, kCosine, 6.0, {}},
      {Pol1Mono8, Mono8, kDegree, 8.0, {}},
      {Pol1Mono8, Mono8, kAngle, 8.0, {}},
      {Pol1Mono8, BGR8, kFalseColor, 10.0, {}},
      {Pol1Mono12, Mono12, kAverage, 1.6, {}},
      {Pol1Mono12, Mono12, kLinear, 4.5, {}},
      {Pol1Mono12, Mono12, kCosine, 9.0, {}},
      {Pol1Mono12, Mono12, kDegree, 12.0, {}},
      {Pol1Mono12, Mono12, kAngle, 12.0, {}},
      {Pol1Mono12, BGR12, kFalseColor, 15.0, {}},
      {Pol1BayerRG8, BGR8, kAverage, 3.0, {}},
      {Pol1BayerRG8, BGR8, kEachAngle, 3.0, {}},
      {Pol1BayerRG8, BGR8, kFalseColor, 10.0, {}},
  };
  return kConversions;
}

struct Scene {
  Buffer source, destination;
  Converter converter;
  std::vector<std::uint8_t> peerDestination;

  void Convert() { converter->Convert(source->GetIQvImage(), destination.Get()); }
};

Operation Make(const Conversion& conversion) {
  auto scene = std::make_shared<Scene>();
  scene->source = MakeFrame(conversion.source);
  scene->destination = Buffer(CreateIQvImageBuffer(nullptr));
  scene->converter = Converter(CreateIQvConverter(QvConverterType_PixelFormat));
  scene->converter->SetDestinationPixelFormat(conversion.destination);
  conversion.setting.apply(*scene->converter.Get());
  scene->Convert();

  Operation operation;
  operation.bytesRead = BytesOf(*scene->source->GetIQvImage());
  operation.bytesWritten = BytesOf(*scene->destination->GetIQvImage());
  operation.goal = {Yardstick::Memcpy, conversion.goal};
  operation.run = [scene] { scene->Convert(); };
  scene->peerDestination.assign(operation.bytesWritten, 1);
  for (const char* name : conversion.peers)
    AddPeer(operation, name, [scene](const Peer& peer) {
      peer.convert(*scene->source->GetIQvImage(), scene->peerDestination.data());
    });
  return operation;
}

std::string NameOf(PixelFormat format) { return GetIQvPixelFormatInfo(format)->GetName().c_str(); }

}  // namespace

std::vector<Row> ConversionRows() {
  std::vector<Row> rows;
  for (const Conversion& conversion : Conversions())
    rows.push_back({NameOf(conversion.source) + " to " + NameOf(conversion.destination) +
                        conversion.setting.name,
                    [&conversion] { return Make(conversion); }});
  return rows;
}

}  // namespace Bench
