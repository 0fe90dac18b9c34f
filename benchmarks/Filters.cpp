// SPDX-License-Identifier: MIT
// Rows that filter an image in place. The frame is written anew before each run, for the library
// and the peers alike, since its content changes.
#include <cstdint>
#include <cstring>
#include <memory>

#include "Frames.h"
#include "Operation.h"
#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

using Filter = CQvAutoPtr<IQvFilterReleasable, IQvFilter>;

Filter MakeGamma() {
  CQvAutoPtr<IQvFilterReleasable, IQvGammaCorrectionFilter> gamma(
      CreateIQvFilter(QvFilterType_GammaCorrection));
  gamma->SetGammaValue(kGamma);
  return Filter(gamma.Detach());
}

Filter MakeEdgeEnhancement() {
  CQvAutoPtr<IQvFilterReleasable, IQvEdgeEnhancementFilter> edges(
      CreateIQvFilter(QvFilterType_EdgeEnhancement));
  edges->SetStrength(1.0);
  return Filter(edges.Detach());
}

Filter MakeBalance(EQvBalanceWhiteAuto_t mode) {
  CQvAutoPtr<IQvFilterReleasable, IQvBalanceRatioFilter> balance(
      CreateIQvFilter(QvFilterType_BalanceRatio));
  balance->SetBalanceRatio(QvBalanceRatioSelector_Red, kRedRatio);
  balance->SetBalanceRatio(QvBalanceRatioSelector_Blue, kBlueRatio);
  balance->SetBalanceRatio(QvBalanceRatioSelector_Y, kRedRatio);
  balance->SetBalanceWhiteAuto(mode);
  return Filter(balance.Detach());
}
Filter MakeBalanceByHand() { return MakeBalance(QvBalanceWhiteAuto_Off); }
Filter MakeBalanceAutomatic() { return MakeBalance(QvBalanceWhiteAuto_Continuous); }

CQvAutoPtr<IQvFilterReleasable, IQvColorTransformationFilter> MakeColorTransformation() {
  CQvAutoPtr<IQvFilterReleasable, IQvColorTransformationFilter> colors(
      CreateIQvFilter(QvFilterType_ColorTransformation));
  colors->SetColorTransformationEnable(true);
  return colors;
}
Filter MakeColorMatrix() {
  auto colors = MakeColorTransformation();
  for (unsigned i = 0; i < 9; ++i)
    colors->SetColorTransformationValue(
        static_cast<EQvColorTransformationValueSelector_t>(i / 3 * 4 + i % 3),
        kColorGains[i / 3][i % 3]);
  return Filter(colors.Detach());
}
Filter MakeHueAndSaturation() {
  auto colors = MakeColorTransformation();
  colors->SetHueCorrection(12);
  colors->SetSaturationCorrection(1.4);
  return Filter(colors.Detach());
}

Filter MakeChromaSuppression() {
  CQvAutoPtr<IQvFilterReleasable, IQvChromaSuppressionFilter> chroma(
      CreateIQvFilter(QvFilterType_ChromaSuppression));
  chroma->SetThresholdValue(QvChromaSuppressionPartSelector_LowLuminancePart, 64);
  chroma->SetSuppressionValue(QvChromaSuppressionPartSelector_LowLuminancePart, 8);
  chroma->SetThresholdValue(QvChromaSuppressionPartSelector_HighLuminancePart, 220);
  chroma->SetSuppressionValue(QvChromaSuppressionPartSelector_HighLuminancePart, 8);
  return Filter(chroma.Detach());
}

Filter MakeNoiseReduction(EQvNoiseReductionMode_t mode) {
  CQvAutoPtr<IQvFilterReleasable, IQvNoiseReductionFilter> noise(
      CreateIQvFilter(QvFilterType_NoiseReduction));
  noise->SetNoiseReductionMode(mode);
  return Filter(noise.Detach());
}
Filter MakeMedian() { return MakeNoiseReduction(QvNoiseReductionMode_Simple); }
Filter MakeDarkSubtraction() {
  return MakeNoiseReduction(QvNoiseReductionMode_SubtractingLightShieldingImage);
}

Filter MakeFlatField(EQvFlatFieldCorrectionMode_t mode) {
  CQvAutoPtr<IQvFilterReleasable, IQvFlatFieldCorrectionFilter> flat(
      CreateIQvFilter(QvFilterType_FlatFieldCorrection));
  flat->SetFlatFieldCorrectionMode(mode);
  return Filter(flat.Detach());
}
Filter MakeFlatFieldGains() { return MakeFlatField(QvFlatFieldCorrectionMode_Multiplication); }
Filter MakeFlatFieldOffsets() { return MakeFlatField(QvFlatFieldCorrectionMode_Addition); }

struct InPlace {
  const char* name;
  Filter (*make)();
  PixelFormat format;
  double goal;       // times memcpy
  const char* peer;  // "" if there is none
  // Bytes that are read for each pixel of what the filter keeps of a calibration image; 0 if it
  // takes none. Such an image is handed in first, a frame too.
  std::size_t calibrationBytes = 0;
};

constexpr const char* kUnsharp = "cv::GaussianBlur + addWeighted";

constexpr InPlace kRows[] = {
    {"gamma", MakeGamma, PixelFormat::Mono8, 0.9, "cv::LUT"},
    {"gamma", MakeGamma, PixelFormat::BGR8, 0.9, "cv::LUT"},
    {"gamma", MakeGamma, PixelFormat::Mono12, 1.8, "plain loop"},
    {"balance", MakeBalanceByHand, PixelFormat::BGR8, 1.1, "cv::LUT of 3 channels"},
    {"balance", MakeBalanceByHand, PixelFormat::BayerRG8, 1.1, ""},
    {"balance", MakeBalanceByHand, PixelFormat::Mono8, 1.1, "cv::LUT"},
    {"balance", MakeBalanceByHand, PixelFormat::BGR12, 2.0, ""},
    {"balance", MakeBalanceByHand, PixelFormat::BayerRG12, 2.0, ""},
    {"automatic balance", MakeBalanceAutomatic, PixelFormat::BGR8, 1.7, ""},
    {"automatic balance", MakeBalanceAutomatic, PixelFormat::BayerRG8, 1.7, ""},
    {"automatic balance", MakeBalanceAutomatic, PixelFormat::BGR12, 2.6, ""},
    {"automatic balance", MakeBalanceAutomatic, PixelFormat::BayerRG12, 2.6, ""},
    {"edge enhancement", MakeEdgeEnhancement, PixelFormat::Mono8, 2.0, kUnsharp},
    {"edge enhancement", MakeEdgeEnhancement, PixelFormat::Mono12, 2.0, kUnsharp},
    {"edge enhancement", MakeEdgeEnhancement, PixelFormat::BGR8, 3.5, kUnsharp},
    {"edge enhancement", MakeEdgeEnhancement, PixelFormat::YCbCr422_8, 3.0, ""},
    {"colour matrix", MakeColorMatrix, PixelFormat::BGR8, 2.0, "cv::transform"},
    {"hue and saturation", MakeHueAndSaturation, PixelFormat::BGR8, 2.0, ""},
    {"chroma suppression", MakeChromaSuppression, PixelFormat::BGR8, 2.0, ""},
    {"median", MakeMedian, PixelFormat::Mono8, 2.0, "cv::medianBlur"},
    {"median", MakeMedian, PixelFormat::BayerRG8, 2.0, ""},
    {"median", MakeMedian, PixelFormat::Mono12, 2.0, "cv::medianBlur"},
    {"dark subtraction and repair", MakeDarkSubtraction, PixelFormat::Mono8, 2.0, "", 1},
    {"flat field gains", MakeFlatFieldGains, PixelFormat::Mono8, 1.0, "cv::multiply", 2},
    {"flat field gains", MakeFlatFieldGains, PixelFormat::BayerRG12, 1.0, "cv::multiply", 2},
    {"flat field offsets", MakeFlatFieldOffsets, PixelFormat::Mono8, 1.0, "", 1},
};

struct Scene {
  Buffer original, work;
  Filter filter;

  IQvImage& Image() { return *work->GetIQvImage(); }
  void Restore() {
    std::memcpy(Image().GetImageBuffer(), original->GetIQvImage()->GetImageBuffer(),
                BytesOf(Image()));
  }
};

void Calibrate(IQvFilter& filter, IQvImage& image) {
  const GenApi::CBooleanPtr enable(filter.GetINodeMap()->GetNode("CalibrationEnable"));
  enable->SetValue(true);
  filter.Filter(&image);
  enable->SetValue(false);
}

Operation Make(const InPlace& row) {
  auto scene = std::make_shared<Scene>();
  scene->original = MakeFrame(row.format);
  scene->work = MakeFrame(row.format);
  scene->filter = row.make();

  Operation operation;
  operation.bytesRead = operation.bytesWritten = BytesOf(scene->Image());
  operation.bytesRead += kWidth * kHeight * row.calibrationBytes;
  if (row.calibrationBytes != 0) Calibrate(*scene->filter.Get(), scene->Image());
  operation.goal = {Yardstick::Memcpy, row.goal};
  operation.run = [scene] { scene->filter->Filter(&scene->Image()); };
  operation.restore = [scene] { scene->Restore(); };
  AddPeer(operation, row.peer, [scene](const Peer& peer) {
    peer.convert(scene->Image(), static_cast<std::uint8_t*>(scene->Image().GetImageBuffer()));
  });
  return operation;
}

}  // namespace

std::vector<Row> FilterRows() {
  std::vector<Row> rows;
  for (const InPlace& row : kRows)
    rows.push_back({std::string(row.name) + " " +
                        GetIQvPixelFormatInfo(row.format)->GetName().c_str() + " in place",
                    [&row] { return Make(row); }});
  return rows;
}

}  // namespace Bench
