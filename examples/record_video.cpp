// SPDX-License-Identifier: MIT
// Records a moving scene into a series of Motion JPEG files:  record_video [FOLDER]
#include <QvApi/QvApi_IP.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>

using namespace QvApi;

namespace {

// Keeps names registered ahead of need: a new one for each file that closes.
class NameGiver : public IQvCallback {
 public:
  explicit NameGiver(const std::string& folder) : m_folder(folder) {}

  void GiveNameTo(IQvVideoFiler& filer) {
    filer.RegisterFileName((m_folder + "/clip" + std::to_string(++m_count) + ".avi").c_str());
  }

  // Runs on the thread that writes the files.
  void OnIQvCallback(IQvCallbackParamBase* param) override {
    if (auto* close = dynamic_cast<IQvCallbackParamQvApiIPVideoFilerClose*>(param)) {
      std::cout << "Closed " << close->GetFileName() << '\n';
      GiveNameTo(*close->GetIQvVideoFiler());
    } else if (auto* error = dynamic_cast<IQvCallbackParamQvApiIPVideoFilerError*>(param)) {
      m_failure = error->GetException().GetDescription();
    }
  }
  void Destroy() override {}  // belongs to Run()
  const std::string& Failure() const { return m_failure; }

 private:
  std::string m_folder, m_failure;
  int m_count = 0;
};

// A bar that moves to the right, as a camera with a Bayer mosaic sees it.
void Draw(IQvImage& frame, unsigned number) {
  auto* pixel = static_cast<std::uint8_t*>(frame.GetImageBuffer());
  for (std::size_t y = 0; y < frame.GetImageHeight(); ++y, pixel += frame.GetImageLinePitch())
    for (std::size_t x = 0; x < frame.GetImageWidth(); ++x)
      pixel[x] = (x + 1280 - 4 * number) % 320 < 32 ? 230 : static_cast<std::uint8_t>(y / 2);
}

void Run(const std::string& folder) {
  NameGiver names(folder);
  CQvAutoPtr<IQvFilerReleasable, IQvVideoFiler> filer(CreateIQvFiler(QvFilerType_Video));
  filer->SetFPS(25);
  filer->SetMaximumFrameCountPerFile(40);
  filer->RegisterCallback(&names);
  names.GiveNameTo(*filer.Get());
  names.GiveNameTo(*filer.Get());

  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> frame(CreateIQvImageBuffer(nullptr));
  frame->SetSize(320, 240, PixelFormat::BayerRG8, 0);
  for (unsigned number = 0; number < 100; ++number) {
    Draw(*frame->GetIQvImage(), number);
    filer->RegisterIQvImage(frame->GetIQvImage(), number);
  }
  filer->Reset();  // writes what is still in the queue, and forgets the names that are left
  if (!names.Failure().empty()) throw RUNTIME_EXCEPTION("%s", names.Failure().c_str());
}

}  // namespace

int main(int argc, char** argv) {
  try {
    QvApiInitialize();
    Run(argc > 1 ? argv[1] : ".");
    QvApiTerminate();
    return 0;
  } catch (const GenICam::GenericException& failure) {
    std::cerr << "record_video: " << failure.GetDescription() << '\n';
    return 1;
  }
}
