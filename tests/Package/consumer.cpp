// SPDX-License-Identifier: MIT
// What an application is: converts a frame and catches what the library throws.
#include <QvApi/QvApi_IP.h>

#include <cstdio>
#include <cstring>

int main() {
  QvApi::QvApiInitialize();
  QvApi::CQvAutoPtr<QvApi::IQvImageBufferReleasable, QvApi::IQvImageBuffer> raw(
      QvApi::CreateIQvImageBuffer(nullptr)),
      color(QvApi::CreateIQvImageBuffer(nullptr));
  raw->CreateBuffer(8, 6, QvApi::PixelFormat::BayerRG8, QvApi::QvMemoryInitialization_None);
  std::memset(raw->GetIQvImage()->GetImageBuffer(), 77, 48);
  QvApi::CQvAutoPtr<QvApi::IQvConverterReleasable, QvApi::IQvPixelFormatConverter> converter(
      QvApi::CreateIQvConverter(QvApi::QvConverterType_PixelFormat));
  converter->Convert(raw->GetIQvImage(), color.Get());
  const auto* pixels = static_cast<unsigned char*>(color->GetIQvImage()->GetImageBuffer());
  bool isCaught = false;
  try {
    converter->SetGammaValue(5.0);
  } catch (const GenICam::GenericException& error) {
    isCaught = dynamic_cast<const GenICam::OutOfRangeException*>(&error) != nullptr;
    std::printf("%s\n", error.what());
  }
  const bool isInterface = dynamic_cast<QvApi::IQvImageInside*>(color->GetIQvImage()) != nullptr;
  QvApi::QvApiTerminate();
  return pixels[0] == 77 && pixels[2] == 77 && isCaught && isInterface ? 0 : 1;
}
