// SPDX-License-Identifier: MIT
// Wraps memory that belongs to the application, such as a driver's, so that no pixel is copied.
#include <QvApi/QvApi_IP.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <vector>

using namespace QvApi;

namespace {

// Lends one block to one image buffer.
class Lender : public IQvAllocator {
 public:
  Lender(void* block, std::size_t size) : m_block(block), m_size(size) {}

  // A null answer tells the image buffer that there is no memory; it throws BadAllocException.
  void Allocate(void** buffer, std::size_t size, void** context) override {
    *buffer = size <= m_size ? m_block : nullptr;
    *context = this;
  }
  void Deallocate(void*, std::size_t size, void*) override {
    std::cout << "The image gave " << size << " bytes back.\n";
  }
  void OnDeregister() override { std::cout << "The image buffer is gone.\n"; }

 private:
  void* m_block;
  std::size_t m_size;
};

void Run() {
  constexpr std::size_t kWidth = 640, kHeight = 480;
  std::vector<std::uint8_t> memory(kWidth * kHeight, 128);
  Lender lender(memory.data(), memory.size());

  // The lender outlives the buffer, up to its OnDeregister().
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> frame(CreateIQvImageBuffer(&lender));
  frame->SetSize(kWidth, kHeight, PixelFormat::BayerRG8, 1);  // lines without padding
  std::cout << "The image's pixels are the application's: " << std::boolalpha
            << (frame->GetIQvImage()->GetImageBuffer() == memory.data()) << ".\n";

  CQvAutoPtr<IQvFilterReleasable, IQvGammaCorrectionFilter> filter(
      CreateIQvFilter(QvFilterType_GammaCorrection));
  filter->SetGammaValue(2.0);
  filter->Filter(frame->GetIQvImage());
  std::cout << "Gamma 2 turned the application's 128 into " << int{memory[0]} << ".\n";

  try {
    frame->SetSize(kWidth * 2, kHeight * 2, PixelFormat::BayerRG8, 1);
  } catch (const GenICam::BadAllocException& refusal) {
    std::cout << "A larger frame is refused: " << refusal.GetDescription() << '\n';
  }
}

}  // namespace

int main() {
  try {
    QvApiInitialize();
    Run();
    QvApiTerminate();
    return 0;
  } catch (const GenICam::GenericException& failure) {
    std::cerr << "own_memory: " << failure.GetDescription() << '\n';
    return 1;
  }
}
