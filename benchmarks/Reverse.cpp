// SPDX-License-Identifier: MIT
// Rows that mirror and turn an image into a reused destination.
#include <memory>
#include <string>

#include "Frames.h"
#include "Operation.h"

namespace Bench {

using namespace QvApi;

namespace {

using Converter = CQvAutoPtr<IQvConverterReleasable, IQvReverseConverter>;

struct Reversal {
  const char* name;
  PixelFormat format;
  bool x, y;
  EQvRotationMode_t rotation;
  double goal;  // times memcpy
};

constexpr EQvRotationMode_t kOff = QvRotationMode_OFF;
constexpr EQvRotationMode_t kTurn = QvRotationMode_Clockwise90;
constexpr EQvRotationMode_t kTurnBack = QvRotationMode_Counterclockwise90;

constexpr Reversal kReversals[] = {
    {"mirror in y, Mono8", PixelFormat::Mono8, false, true, kOff, 1.2},
    {"mirror in y, BGR8", PixelFormat::BGR8, false, true, kOff, 1.2},
    {"mirror in x, Mono8", PixelFormat::Mono8, true, false, kOff, 1.3},
    {"mirror in x, Mono16", PixelFormat::Mono16, true, false, kOff, 1.3},
    {"mirror in x, BGR8", PixelFormat::BGR8, true, false, kOff, 1.3},
    {"turn clockwise, Mono8", PixelFormat::Mono8, false, false, kTurn, 2.5},
    {"turn counterclockwise, Mono8", PixelFormat::Mono8, false, false, kTurnBack, 2.5},
    {"turn clockwise, Mono16", PixelFormat::Mono16, false, false, kTurn, 2.5},
    {"turn clockwise, BGR8", PixelFormat::BGR8, false, false, kTurn, 3.0},
    {"turn counterclockwise, BGR8", PixelFormat::BGR8, false, false, kTurnBack, 3.0},
};

struct Scene {
  Buffer source, destination;
  Converter converter;

  void Convert() { converter->Convert(source->GetIQvImage(), destination.Get()); }
};

Operation Make(const Reversal& reversal) {
  auto scene = std::make_shared<Scene>();
  scene->source = MakeFrame(reversal.format);
  scene->destination = Buffer(CreateIQvImageBuffer(nullptr));
  scene->converter = Converter(CreateIQvConverter(QvConverterType_Reverse));
  scene->converter->SetReverseX(reversal.x);
  scene->converter->SetReverseY(reversal.y);
  scene->converter->SetRotationMode(reversal.rotation);
  scene->Convert();

  Operation operation;
  operation.bytesRead = BytesOf(*scene->source->GetIQvImage());
  operation.bytesWritten = operation.bytesRead;
  operation.goal = {Yardstick::Memcpy, reversal.goal};
  operation.run = [scene] { scene->Convert(); };
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
