// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "QvApi_IP/FileTestSupport.h"
#include "QvApi_IP/IQvStillImageFiler.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvTiffWriter.h"
#include "QvSDKCommon/CQvAutoPtr.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using GenICam::RuntimeException;

FileBytes Written(IQvImage& image, bool inversion = false) {
  const TempDirectory directory;
  const std::string name = directory / "image.tif";
  WriteTiff(&image, name.c_str(), OpenStream(name, "wb").get(), QvColorMapType_Normal, inversion,
            0);
  return ReadFile(name);
}

/// Files of 70000 x 2 pixels, worked out by hand.
const struct {
  PixelFormat format;
  bool inversion;
  /// Tag (hexadecimal), type, count and value of the entries behind those of the size.
  const char* entries;
  std::vector<std::uint32_t> strips = {};  ///< Of colour; depths stand behind.
} kFiles[] = {
    {Mono8, false,
     "102 3 1 8, 103 3 1 1, 106 3 1 1, 111 4 1 162, 116 3 1 2, 117 4 1 140000, 11A 5 1 146, "
     "11B 5 1 154, 128 3 1 2"},
    {Mono8, true,
     "102 3 1 8, 103 3 1 1, 106 3 1 3, 111 4 1 1710, 116 3 1 2, 117 4 1 140000, 11A 5 1 158, "
     "11B 5 1 166, 128 3 1 2, 140 3 768 174"},
    {Mono16, true,
     "102 3 1 16, 103 3 1 1, 106 3 1 1, 111 4 1 162, 116 3 1 2, 117 4 1 280000, 11A 5 1 146, "
     "11B 5 1 154, 128 3 1 2"},
    {RGB8,
     true,
     "102 3 3 210, 103 3 1 1, 106 3 1 2, 111 4 1 216, 115 3 1 3, 116 3 1 2, 117 4 1 420000, "
     "11A 5 1 170, 11B 5 1 178, 11C 4 1 1, 128 3 1 2",
     {0, 0, 0, 0, 0, 0}},
    {RGBa8,
     false,
     "102 3 4 222, 103 3 1 1, 106 3 1 2, 111 4 1 230, 115 3 1 4, 152 3 1 0, 116 3 1 2, "
     "117 4 1 560000, 11A 5 1 182, 11B 5 1 190, 11C 4 1 1, 128 3 1 2",
     {0, 0, 0, 0, 0, 0}},
    {RGB16_Planar,
     false,
     "102 3 3 210, 103 3 1 1, 106 3 1 2, 111 4 3 198, 115 3 1 3, 116 3 1 2, 117 4 3 186, "
     "11A 5 1 170, 11B 5 1 178, 11C 4 1 2, 128 3 1 2",
     {280000, 280000, 280000, 216, 280216, 560216}},
};

TEST(WriteTiff, LaysTheFileOutAsTold) {
  for (const auto& row : kFiles)
    for (std::size_t padding : {0, 5}) {
      const std::string entries = std::string("100 3 1 70000, 101 3 1 2, ") + row.entries;
      const long count = 1 + std::ranges::count(entries, ',');
      FileBytes expected{'I', 'I', 42, 0, 8, 0, 0, 0, static_cast<std::uint8_t>(count), 0};
      std::istringstream text(entries);
      std::uint32_t tag, type, size, value;
      for (char comma; text >> std::hex >> tag >> std::dec >> type >> size >> value; text >> comma)
        for (std::uint32_t word : {tag | type << 16, size, value}) Append(expected, word);
      for (std::uint32_t word : {0, 720000, 10000, 720000, 10000}) Append(expected, word);
      for (std::uint32_t word : row.strips) Append(expected, word);
      for (std::size_t c = 0; !row.strips.empty() && c < Info(row.format).GetComponentCount(); ++c)
        Append<std::uint16_t>(expected, row.format == RGB16_Planar ? 16 : 8);
      if (row.format == Mono8 && row.inversion)
        for (unsigned i = 0; i < 768; ++i)
          expected.insert(expected.end(), 2, static_cast<std::uint8_t>(255 - i));

      TestImage image(70000, 2, row.format, padding);
      image.Randomize(1);
      for (std::size_t y = 0; y < 2 * Info(row.format).GetPlaneCount(); ++y)
        expected.insert(expected.end(), image.Line(y),
                        image.Line(y) + LineBytes(row.format, 70000));
      EXPECT_TRUE(Written(image, row.inversion) == expected) << NameOf(row.format) << padding;
    }
}

/// Red, green, blue or alpha of a pixel, or grey.
unsigned Component(const IQvImage& image, std::size_t x, std::size_t y, std::size_t c) {
  const IQvPixelFormatInfoInside& info = Info(image.GetImagePixelFormat());
  const std::size_t size = info.GetEachComponentTotalBitCount() / 8;
  const std::size_t components = info.GetComponentCount() / info.GetPlaneCount();
  const std::size_t place = c < 3 ? ColorPlaces(image)[c] : c;
  const std::uint8_t* sample = Bytes(&image) + y * image.GetImageLinePitch() +
                               (components * x + place % components) * size +
                               place / components * image.GetImagePlanePitch();
  return size == 1 ? sample[0] : sample[0] + 256U * sample[1];
}

TEST(SaveAsTiff, ShowsTheSamePictureToOthers) {
  const Initialized initialized;
  const TempDirectory directory;
  const std::string name = directory / "image.tif";
  CQvAutoPtr<IQvFilerReleasable, IQvStillImageFiler> filer(CreateIQvFiler(QvFilerType_StillImage));
  for (const PixelFormatRow& row : kPixelFormats) {
    if (!filer->IsSaveSupported(row.format, QvStillImageFileFormat_TIFF)) continue;
    const unsigned maximum = (1U << Info(row.format).GetEachComponentEffectiveBitCount()) - 1;
    Buffer buffer = MakeBuffer();
    buffer->SetSize(21, 11, row.format, 0);
    IQvImage& parent = *buffer->GetIQvImage();
    const std::size_t size = parent.GetImagePlanePitch() * Info(row.format).GetPlaneCount();
    FillPattern(Bytes(&parent), size);
    for (std::size_t i = 1; maximum > 255 && i < size; i += 2)
      Bytes(&parent)[i] &= static_cast<std::uint8_t>(maximum >> 8);

    IQvImage& view = *parent.GetROIImage(4, 3, 16, 8);
    filer->Save(&view, QvStillImageFileFormat_TIFF, name.c_str());
    const SeenPicture seen = SeenByImageMagick(name, maximum > 255 ? 16 : 8);
    ASSERT_EQ(seen.width, 16U);
    ASSERT_EQ(seen.height, 8U);
    for (std::size_t i = 0; i < seen.samples.size(); ++i) {
      if (i % 4 == 3 && row.format != RGBa8) continue;  // conversions leave alpha out
      const unsigned sample = Component(view, i / 4 % 16, i / 64, i % 4);
      ASSERT_EQ(seen.samples[i], maximum > 255 ? (sample * 65535U + maximum / 2) / maximum : sample)
          << row.name << ' ' << i;
    }
  }
}

TEST(WriteTiff, RefusesWhatItHasNoFieldsFor) {
  TestImage image(4, 4, BGR8);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { Written(image); }), "Not supported pixelformat BGR8");
  for (std::size_t width : {1ULL << 30, 1ULL << 32, 1ULL << 62}) {
    ForeignImage large(&large, width, 4, 16, Mono8);
    EXPECT_THAT(MessageOf<RuntimeException>([&] { Written(large); }),
                testing::EndsWith("is unwritable."));
  }
}

}  // namespace
}  // namespace QvApi
