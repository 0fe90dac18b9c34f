// SPDX-License-Identifier: MIT
// Rows that measure images and leave them as they are.
#include <cstring>
#include <memory>

#include "Frames.h"
#include "Operation.h"
#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

using AveragingFilter = CQvAutoPtr<IQvFilterReleasable, IQvImageAveragingFilter>;
using DefectFilter = CQvAutoPtr<IQvFilterReleasable, IQvDefectivePixelDetectionFilter>;
using GraphFilter = CQvAutoPtr<IQvFilterReleasable, IQvGraphDataFilter>;
using NoiseFilter = CQvAutoPtr<IQvFilterReleasable, IQvSNMeasurementFilter>;

constexpr std::size_t kSumBytes = 4 * kWidth * kHeight;
constexpr int kAveragedFrames = 10;
constexpr std::size_t kNoiseFrames = 50, kNoiseRegion = 1000;
constexpr const char* kCalcHist = "cv::calcHist";

struct Scene {
  Buffer frame, result{CreateIQvImageBuffer(nullptr)};
  AveragingFilter averaging{CreateIQvFilter(QvFilterType_ImageAveraging)};
  DefectFilter defects{CreateIQvFilter(QvFilterType_DefectivePixelDetection)};
  GraphFilter graphs{CreateIQvFilter(QvFilterType_GraphData)};
  NoiseFilter noise{CreateIQvFilter(QvFilterType_SNMeasurement)};

  IQvImage& Image() { return *frame->GetIQvImage(); }
};

Operation AddFrame(const std::shared_ptr<Scene>& scene) {
  Operation operation;
  operation.bytesRead = BytesOf(scene->Image()) + kSumBytes;
  operation.bytesWritten = kSumBytes;
  operation.run = [scene] { scene->averaging->Filter(&scene->Image()); };
  return operation;
}

Operation GetMean(const std::shared_ptr<Scene>& scene) {
  for (int i = 0; i < kAveragedFrames; ++i) scene->averaging->Filter(&scene->Image());
  Operation operation;
  operation.bytesRead = kSumBytes;
  operation.bytesWritten = BytesOf(scene->Image());
  operation.run = [scene] { scene->averaging->GetAveragedImage(scene->result.Get(), 0); };
  return operation;
}

Operation FindDefects(const std::shared_ptr<Scene>& scene) {
  Operation operation;
  operation.bytesRead = BytesOf(scene->Image());
  operation.run = [scene] { scene->defects->Filter(&scene->Image()); };
  return operation;
}

template <_EQvGraphDataType_t type>
Operation MakeGraphs(const std::shared_ptr<Scene>& scene) {
  scene->graphs->SetGraphDataType(type);
  Operation operation;
  operation.bytesRead = BytesOf(scene->Image());
  operation.run = [scene] { scene->graphs->Filter(&scene->Image()); };
  return operation;
}
constexpr auto kHistogram = MakeGraphs<QvGraphDataType_Histogram>;
constexpr auto kColumnSums = MakeGraphs<QvGraphDataType_VerticalIntegration>;
constexpr auto kRowSums = MakeGraphs<QvGraphDataType_HorizontalIntegration>;

Operation HistogramOfOneValue(const std::shared_ptr<Scene>& scene) {
  std::memset(scene->Image().GetImageBuffer(), 77, BytesOf(scene->Image()));
  return kHistogram(scene);
}

/// The region moves from run to run, so each run is a measurement of the frames that are held. Two
/// arrays of doubles are the sums of its pixels.
Operation MeasureNoise(const std::shared_ptr<Scene>& scene) {
  IQvSNMeasurementFilter& noise = *scene->noise.Get();
  noise.SetFrameCount(kNoiseFrames);
  noise.SetROIMode(QvROIMode_Manual);
  noise.SetWidth(kNoiseRegion);
  noise.SetHeight(kNoiseRegion);
  for (std::size_t i = 0; i < kNoiseFrames; ++i) noise.Filter(&scene->Image());
  const std::size_t sampleBytes = BytesOf(scene->Image()) / (kWidth * kHeight);
  Operation operation;
  operation.bytesRead = kNoiseRegion * kNoiseRegion * (kNoiseFrames * sampleBytes + 2 * 8);
  operation.run = [scene, &noise] {
    noise.SetOffsetX(noise.GetOffsetX() + 1);
    noise.RetrieveIQvSNMeasurementResult(0xFFFFFFFF, QvTimeoutHandling_ThrowException);
  };
  return operation;
}

struct Measurement {
  const char* name;
  Operation (*make)(const std::shared_ptr<Scene>& scene);
  PixelFormat format;
  Goal goal;
  std::vector<const char*> peers = {};
};

const Measurement kRows[] = {
    {"averaging: add", AddFrame, PixelFormat::Mono8, {Yardstick::BestPeer, 1}, {"cv::accumulate"}},
    {"averaging: add",
     AddFrame,
     PixelFormat::BayerRG12,
     {Yardstick::BestPeer, 1},
     {"cv::accumulate"}},
    {"averaging: mean", GetMean, PixelFormat::Mono8, {Yardstick::Memcpy, 1.5}},
    {"averaging: mean", GetMean, PixelFormat::BayerRG12, {Yardstick::Memcpy, 1.5}},
    {"defects in 5 x 5",
     FindDefects,
     PixelFormat::Mono8,
     {Yardstick::Memcpy, 20},
     {"cv::blur + absdiff + threshold", "cv::integral + loop"}},
    {"defects in 5 x 5", FindDefects, PixelFormat::BayerRG8, {Yardstick::Memcpy, 20}},
    {"histogram", kHistogram, PixelFormat::Mono8, {Yardstick::BestPeer, 1 / 1.4}, {kCalcHist}},
    {"histogram of one value",
     HistogramOfOneValue,
     PixelFormat::Mono8,
     {Yardstick::BestPeer, 1 / 3.5},
     {kCalcHist}},
    {"histogram", kHistogram, PixelFormat::BayerRG12, {Yardstick::BestPeer, 1 / 4.0}, {kCalcHist}},
    {"histogram", kHistogram, PixelFormat::BGR8, {Yardstick::BestPeer, 1 / 2.0}, {kCalcHist}},
    {"sums of columns",
     kColumnSums,
     PixelFormat::Mono8,
     {Yardstick::Memcpy, 2.5},
     {"cv::reduce to a row"}},
    {"sums of rows",
     kRowSums,
     PixelFormat::Mono8,
     {Yardstick::Memcpy, 2.5},
     {"cv::reduce to a column"}},
    {"S/N of 50 frames", MeasureNoise, PixelFormat::BayerRG12, {Yardstick::Memcpy, 4}},
};

Operation Make(const Measurement& row) {
  auto scene = std::make_shared<Scene>();
  scene->frame = MakeFrame(row.format);
  Operation operation = row.make(scene);
  operation.goal = row.goal;
  for (const char* name : row.peers)
    AddPeer(operation, name, [scene](const Peer& peer) { peer.convert(scene->Image(), nullptr); });
  return operation;
}

}  // namespace

std::vector<Row> MeasurementRows() {
  std::vector<Row> rows;
  for (const Measurement& row : kRows)
    rows.push_back(
        {std::string(row.name) + " " + GetIQvPixelFormatInfo(row.format)->GetName().c_str(),
         [&row] { return Make(row); }});
  return rows;
}

}  // namespace Bench
