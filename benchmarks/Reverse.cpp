// SPDX-License-Identifier: MIT
// Rows that mirror and turn an image into a reused destination.
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Frames.h"
#include "Operation.h"
#include "Peers.h"

namespace Bench {

using namespace QvApi;

namespace {

using Converter = CQvAutoPtr<IQvConverterReleasable, IQvReverseConverter>;

struct Motion {
  bool x, y;
  EQvRotationMode_t rotation;
};
constexpr Motion kFlipX{true, false, QvRotationMode_OFF};
constexpr Motion kFlipY{false, true, QvRotationMode_OFF};
constexpr Motion kTurn{false, false, QvRotationMode_Clockwise90};
constexpr Motion kTurnBack{false, false, QvRotationMode_Counterclockwise90};

struct Reversal {
  const char* name;
  PixelFormat format;
  Motion motion;
  double goal;  // times memcpy
  std::array<const char*, 2> peers;
};

using enum PixelFormat;
constexpr Reversal kReversals[] = {
    {"mirror in y, Mono8", Mono8, kFlipY, 1.2, {"libyuv CopyPlane", "OpenCV flip y"}},
    {"mirror in y, BGR8", BGR8, kFlipY, 1.2, {"libyuv CopyPlane", "OpenCV flip y"}},
    {"mirror in x, Mono8", Mono8, kFlipX, 1.3, {"libyuv MirrorPlane", "OpenCV flip x"}},
    {"mirror in x, Mono16", Mono16, kFlipX, 1.3, {"OpenCV flip x"}},
    {"mirror in x, BGR8", BGR8, kFlipX, 1.3, {"libyuv RGB24Mirror", "OpenCV flip x"}},
    {"turn clockwise, Mono8", Mono8, kTurn, 2.5, {"libyuv RotatePlane90", "OpenCV rotate"}},
    {"turn counterclockwise, Mono8", Mono8, kTurnBack, 2.5, {"libyuv RotatePlane270"}},
    {"turn clockwise, Mono16", Mono16, kTurn, 2.5, {"OpenCV rotate"}},
    {"turn clockwise, BGR8", BGR8, kTurn, 3.0, {"OpenCV rotate"}},
    {"turn counterclockwise, BGR8", BGR8, kTurnBack, 3.0, {"OpenCV rotate back"}},
};

struct Scene {
  Buffer source, destination;
  Converter converter;
  std::vector<std::uint8_t> peerDestination;

  void Convert() { converter->Convert(source->GetIQvImage(), destination.Get()); }
};

Operation Make(const Reversal& reversal) {
  auto scene = std::make_shared<Scene>();
  scene->source = MakeFrame(reversal.format);
  scene->destination = Buffer(CreateIQvImageBuffer(nullptr));
  scene->converter = Converter(CreateIQvConverter(QvConverterType_Reverse));
  scene->converter->SetReverseX(reversal.motion.x);
  scene->converter->SetReverseY(reversal.motion.y);
  scene->converter->SetRotationMode(reversal.motion.rotation);
  scene->Convert();

  Operation operation;
  operation.bytesRead = BytesOf(*scene->source->GetIQvImage());
  operation.bytesWritten = operation.bytesRead;
  operation.goal = {Yardstick::Memcpy, reversal.goal};
  operation.run = [scene] { scene->Convert(); };
  scene->peerDestination.assign(operation.bytesWritten, 1);
  for (const char* name : reversal.peers)
    AddPeer(operation, name, [scene](const Peer& peer) {
      peer.convert(*scene->source->GetIQvImage(), scene->peerDestination.data());
    });
  return operation;
}

}  // namespace

std::vector<Row> ReverseRows() {
  std::vector<Row> rows;
  for (const Reversal& reversal : kReversals)
    rows.push_back({reversal.name, [&reversal] { return Make(reversal); }});
  return rows;
}

}  // namespace Bench
