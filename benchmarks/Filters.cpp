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

struct InPlace {
  const char* name;
  Filter (*make)();
  PixelFormat format;
  double goal;  // times memcpy
  const char* peer;
};

constexpr InPlace kRows[] = {
    {"gamma", MakeGamma, PixelFormat::Mono8, 0.9, "cv::LUT"},
    {"gamma", MakeGamma, PixelFormat::BGR8, 0.9, "cv::LUT"},
    {"gamma", MakeGamma, PixelFormat::Mono12, 1.8, "plain loop"},
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

Operation Make(const InPlace& row) {
  auto scene = std::make_shared<Scene>();
  scene->original = MakeFrame(row.format);
  scene->work = MakeFrame(row.format);
  scene->filter = row.make();

  Operation operation;
  operation.bytesRead = operation.bytesWritten = BytesOf(scene->Image());
  operation.goal = {Yardstick::Memcpy, row.goal};
  operation.run = [scene] { scene->filter->Filter(&scene->Image()); };
  operation.restore = [scene] { scene->Restore(); };
  if (const Peer* peer = FindPeer(row.peer))
    operation.peers.push_back({row.peer, [scene, peer] {
                                 peer->convert(
                                     scene->Image(),
                                     static_cast<std::uint8_t*>(scene->Image().GetImageBuffer()));
                               }});
  else
    operation.missing.push_back(row.peer);
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
