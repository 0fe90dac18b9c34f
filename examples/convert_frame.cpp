// SPDX-License-Identifier: MIT
// A raw Bayer frame, as a camera driver hands it over, becomes a colour picture and a PNG file.
//   convert_frame [FILE]        (FILE is frame.png by default)
#include <QvApi/QvApi_IP.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <vector>

using namespace QvApi;

namespace {

constexpr std::size_t kWidth = 640, kHeight = 480;

// Stands for the camera: a mosaic with red rising to the right, blue rising downward, even green.
std::vector<std::uint8_t> GrabFrame() {
  std::vector<std::uint8_t> frame(kWidth * kHeight);
  for (std::size_t y = 0; y < kHeight; ++y)
    for (std::size_t x = 0; x < kWidth; ++x) {
      const bool redSite = x % 2 == 0 && y % 2 == 0, blueSite = x % 2 == 1 && y % 2 == 1;
      const std::size_t sample = redSite ? x * 255 / kWidth : blueSite ? y * 255 / kHeight : 96;
      frame[y * kWidth + x] = static_cast<std::uint8_t>(sample);
    }
  return frame;
}

void Run(const char* fileName) {
  const std::vector<std::uint8_t> frame = GrabFrame();

  // An image buffer of the library takes the bytes, line by line, since its lines may be aligned.
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> raw(CreateIQvImageBuffer(nullptr));
  raw->SetSize(kWidth, kHeight, PixelFormat::BayerRG8, 0);
  IQvImage* image = raw->GetIQvImage();
  auto* line = static_cast<std::uint8_t*>(image->GetImageBuffer());
  for (std::size_t y = 0; y < kHeight; ++y, line += image->GetImageLinePitch())
    std::memcpy(line, &frame[y * kWidth], kWidth);

  // Settings are made once. The destination is reused from frame to frame.
  CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter> converter(
      CreateIQvConverter(QvConverterType_PixelFormat));
  converter->SetDestinationPixelFormat(PixelFormat::BGR8);
  converter->SetBayerInterpolationMethod(QvBayerInterpolationMethod_Bilinear3);
  CQvAutoPtr<IQvImageBufferReleasable, IQvImageBuffer> picture(CreateIQvImageBuffer(nullptr));
  converter->Convert(image, picture.Get());

  CQvAutoPtr<IQvFilerReleasable, IQvStillImageFiler> filer(CreateIQvFiler(QvFilerType_StillImage));
  filer->Save(picture->GetIQvImage(), QvStillImageFileFormat_PNG, fileName);

  const auto* pixels = static_cast<const std::uint8_t*>(picture->GetIQvImage()->GetImageBuffer());
  std::cout << "Converted " << kWidth << " x " << kHeight << " BayerRG8 to BGR8 and saved "
            << fileName << "; its first pixel is B " << int{pixels[0]} << ", G " << int{pixels[1]}
            << ", R " << int{pixels[2]} << ".\n";
}

}  // namespace

int main(int argc, char** argv) {
  try {
    QvApiInitialize();
    Run(argc > 1 ? argv[1] : "frame.png");
    QvApiTerminate();
    return 0;
  } catch (const GenICam::GenericException& failure) {
    std::cerr << "convert_frame: " << failure.GetDescription() << '\n';
    return 1;
  }
}
