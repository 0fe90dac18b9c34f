// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/IQvPixelFormatConverter.h"
#include "QvApi_IP/IQvStillImageFiler.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvJpegCompressor.h"
#include "QvApi_IP/QvJpegWriterUnix.h"
#include "QvSDKCommon/CQvAutoPtr.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using GenICam::RuntimeException;

FileBytes Written(IQvImage& image, unsigned quality = 75) {
  const TempDirectory directory;
  const std::string name = directory / "image.jpg";
  WriteJPG(&image, name.c_str(), OpenStream(name, "wb").get(), quality);
  return ReadFile(name);
}

/// A picture of gentle slopes, the first component of a pixel running against the others.
TestImage Slopes(std::size_t width, PixelFormat format) {
  TestImage image(width, 61, format, 1);
  const std::size_t pixel = LineBytes(format, 4) / 4;
  for (std::size_t y = 0; y < 61; ++y)
    for (std::size_t i = 0; i < LineBytes(format, width); ++i)
      image.Line(y)[i] = static_cast<std::uint8_t>(i % pixel == 0 ? 4 * y : 230 - 2 * i / pixel);
  return image;
}

class SaveAsJpeg : public testing::Test {
 protected:
  /// Peak signal to noise, in dB, of the JPEG file that others see against a lossless one.
  double Psnr(IQvImage& image) {
    const PixelFormat format = image.GetImagePixelFormat();
    Buffer color = MakeBuffer();
    m_converter->Convert(&image, color.Get());
    if (m_filer->IsSaveSupported(format, QvStillImageFileFormat_JPEG))
      m_filer->Save(&image, QvStillImageFileFormat_JPEG, m_jpeg.c_str());
    else
      WriteFile(m_jpeg, Written(image, m_filer->GetQuality()));
    m_filer->Save(format == Mono8 ? &image : color->GetIQvImage(), QvStillImageFileFormat_PNG,
                  m_png.c_str());
    return std::stod(
        OutputOf("compare-im6.q16 -metric PSNR " + m_jpeg + ' ' + m_png + " null: 2>&1; true"));
  }

  const Initialized m_initialized;
  const TempDirectory m_directory;
  const std::string m_jpeg = m_directory / "image.jpg", m_png = m_directory / "image.png";
  CQvAutoPtr<IQvFilerReleasable, IQvStillImageFiler> m_filer{
      CreateIQvFiler(QvFilerType_StillImage)};
  CQvAutoPtr<IQvConverterReleasable, IQvPixelFormatConverter> m_converter{
      CreateIQvConverter(QvConverterType_PixelFormat)};
};

TEST_F(SaveAsJpeg, ShowsThePictureToOthers) {
  for (PixelFormat format : {Mono8, BGR8, RGB8, BGRa8, RGBa8, YCbCr8, YCbCr422_8, YCbCr411_8}) {
    std::uintmax_t formerSize = 0;
    TestImage image = Slopes(95, format);
    for (const auto& [quality, least] : {std::pair{30U, 30.0}, {75U, 36.0}, {95U, 42.0}}) {
      m_filer->SetQuality(quality);
      EXPECT_GT(Psnr(image), least) << NameOf(format) << ' ' << quality;
      const std::uintmax_t size = std::filesystem::file_size(m_jpeg);
      EXPECT_GT(size, std::exchange(formerSize, size));
    }
    // Groups of pixels that are not complete.
    for (std::size_t width = 1; width < 10; ++width) {
      TestImage narrow = Slopes(width, format);
      EXPECT_GT(Psnr(narrow), 40) << NameOf(format) << ' ' << width;
    }
  }
}

TEST_F(SaveAsJpeg, BakesTheColorMapIn) {
  TestImage image = Slopes(95, Mono8);
  for (const auto& [type, inversion, phase, channels] :
       {std::tuple{QvColorMapType_PseudoColor_BGR, false, 0, "srgb"},
        {QvColorMapType_Normal, true, 0, "srgb"},
        {QvColorMapType_Normal, false, 30, "srgb"},
        {QvColorMapType_Normal, false, 0, "gray"}}) {
    m_filer->SetColorMapType(type);
    m_filer->SetColorMapInversion(inversion);
    m_filer->SetColorMapPhase(phase);
    EXPECT_GT(Psnr(image), 30) << type << inversion << phase;
    EXPECT_EQ(OutputOf("identify-im6.q16 -format '%[channels]' " + m_jpeg), channels);
  }
}

TEST(WriteJPG, RefusesWhatNoJpegCanBe) {
  TestImage image(4, 4, YCbCr422_8_CbYCrY), widest(65500, 1, Mono8);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { Written(image); }),
            "Not supported pixelformat YCbCr422_8_CbYCrY");
  EXPECT_EQ(Written(widest, 1000), Written(widest, 100));
  for (PixelFormat format : {Mono8, YCbCr422_8})
    for (std::size_t side : {std::size_t{65501}, std::size_t{1} << 32, SIZE_MAX / 4}) {
      ForeignImage wide(&wide, side, 8, 16, format), high(&high, 8, side, 16, format);
      for (IQvImage* large : {&wide, &high})
        EXPECT_THAT(MessageOf<RuntimeException>([&] { Written(*large); }),
                    testing::EndsWith("is unwritable."));
    }
}

TEST(JpegCompressor, KeepsItsMemoryAndRoomAround) {
  CQvJpegCompressor compressor(8, 3);
  const std::uint8_t* place = nullptr;
  for (std::size_t width : {200, 40, 0, 199}) {
    TestImage image(width, 100, BGR8);
    image.Randomize(1);
    const std::span<std::uint8_t> jpeg =
        compressor.Compress(image.Line(0), width, 100, image.GetImageLinePitch(), TJPF_BGR,
                            {.subsampling = TJSAMP_422, .quality = 100});
    ASSERT_EQ(jpeg.empty(), width == 0);
    if (jpeg.empty()) continue;
    EXPECT_EQ(FileBytes(jpeg.begin(), jpeg.end()), Written(image, 100));
    EXPECT_EQ(std::exchange(place, jpeg.data()), width == 200 ? nullptr : jpeg.data());
    std::fill(jpeg.data() - 8, jpeg.data() + jpeg.size() + 3, std::uint8_t{0});
  }
}

}  // namespace
}  // namespace QvApi
