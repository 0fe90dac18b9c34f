// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "ImageTestSupport.h"
#include "QvApi_TL/PixelFormatTable.h"
#include "QvSDKCommon/ImageCopy.h"

namespace QvApi {
namespace {

using Testing::Buffer;
using Testing::Bytes;
using Testing::MakeBuffer;
using Testing::MessageOf;

using GenICam::OutOfRangeException;
using GenICam::RuntimeException;

constexpr PixelFormat kPlanar420 = PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar;
constexpr const char* kNoImage = "There is no available image.";

/// A buffer whose bytes are the pattern.
Buffer MakeImage(std::size_t width, std::size_t height, PixelFormat format,
                 std::size_t alignment = 0) {
  Buffer buffer = MakeBuffer();
  buffer->SetSize(width, height, format, alignment);
  const IQvImage* image = buffer->GetIQvImage();
  const std::size_t planes = FindPixelFormat(format)->planeCount;
  Testing::FillPattern(Bytes(image), planes * image->GetImagePlanePitch());
  return buffer;
}

TEST(ROIImage, RefusalsInTheirOrder) {
  struct Case {
    PixelFormat format;
    std::size_t x, y, width, height;
    std::string text;
  };
  const std::string grid = "The difference between ";
  const std::string rest = " must be dividable without rest by Inc = ";
  const std::vector<Case> cases{
      {PixelFormat::Mono8, 0, 0, 0, 0, "size_t Width = 0 must be equal or greater than Min = 1"},
      {PixelFormat::Mono8, 0, 0, 17, 0, "size_t Width = 17 must be equal or smaller than Max = 16"},
      {PixelFormat::Mono8, SIZE_MAX, 0, 4, 0,
       "size_t x = -1 must be equal or greater than Min = 0"},
      {PixelFormat::Mono8, 1, 0, 16, 0, "size_t x = 1 must be equal or smaller than Max = 0"},
      {PixelFormat::Mono8, 13, 0, 4, 0, "size_t x = 13 must be equal or smaller than Max = 12"},
      {PixelFormat::Mono8, 12, 0, 4, 0, "size_t Height = 0 must be equal or greater than Min = 1"},
      {PixelFormat::Mono8, 12, 0, 4, 13,
       "size_t Height = 13 must be equal or smaller than Max = 12"},
      {PixelFormat::Mono8, 12, SIZE_MAX - 1, 4, 12,
       "size_t y = -2 must be equal or greater than Min = 0"},
      {PixelFormat::Mono8, 12, 12, 4, 1, "size_t y = 12 must be equal or smaller than Max = 11"},
      {PixelFormat::Mono10p, 0, 0, 6, 1, grid + "size_t Width = 6 and Min = 4" + rest + "4"},
      {PixelFormat::Mono10p, 2, 0, 8, 1, grid + "size_t x = 2 and Min = 0" + rest + "4"},
      {PixelFormat::YCbCr422_8, 1, 0, 2, 1, grid + "size_t x = 1 and Min = 0" + rest + "2"},
      {PixelFormat::YCbCr411_8, 4, 0, 3, 1,
       "size_t Width = 3 must be equal or greater than Min = 4"},
      {PixelFormat::Pol1Mono8, 0, 1, 2, 2, grid + "size_t y = 1 and Min = 0" + rest + "2"},
      {PixelFormat::Pol1BayerRG8, 0, 0, 4, 6, grid + "size_t Height = 6 and Min = 4" + rest + "4"},
      {kPlanar420, 0, 0, 3, 2, "Not supported image size 3 x 2"},
      {kPlanar420, 0, 0, 2, 5, "Not supported image size 2 x 5"}};
  for (const auto& [format, x, y, width, height, text] : cases) {
    SCOPED_TRACE(text);
    const Buffer buffer = MakeImage(16, 12, format);
    const auto aim = [&] { buffer->GetIQvImage()->GetROIImage(x, y, width, height); };
    if (text.starts_with("Not"))
      EXPECT_EQ(MessageOf<RuntimeException>(aim), text);
    else
      EXPECT_EQ(MessageOf<OutOfRangeException>(aim), text);
  }
}

TEST(ROIImage, WholeImageIsTheImage) {
  for (const auto& row : kPixelFormats) {
    SCOPED_TRACE(row.name);
    const Buffer buffer = MakeImage(16, 8, row.format);
    IQvImage* image = buffer->GetIQvImage();
    const IQvImage* view = image->GetROIImage(0, 0, 16, 8);
    EXPECT_EQ(view->GetImageWidth(), 16u);
    EXPECT_EQ(view->GetImageHeight(), 8u);
    EXPECT_EQ(view->GetImageLinePitch(), image->GetImageLinePitch());
    EXPECT_EQ(view->GetImagePlanePitch(), image->GetImagePlanePitch());
    EXPECT_EQ(view->GetImagePixelFormat(), row.format);
    EXPECT_EQ(view->GetUserContext(), image->GetUserContext());
    if (row.format == kPlanar420)
      EXPECT_EQ(0, memcmp(view->GetImageBuffer(), image->GetImageBuffer(), 16 * 8 * 3 / 2));
    else
      EXPECT_EQ(view->GetImageBuffer(), image->GetImageBuffer());
  }
}

/// The read-out of single pixels, which knows no views, decides what a view shows.
TEST(ROIImage, ShowsThePixelsOfTheParent) {
  for (const auto& row : kPixelFormats) {
    if (row.format == kPlanar420) continue;
    SCOPED_TRACE(row.name);
    const Buffer buffer = MakeImage(24, 16, row.format);
    IQvImage* image = buffer->GetIQvImage();
    const std::size_t x = row.roiIncrementX, y = row.roiIncrementY;
    IQvImage* view = image->GetROIImage(x, y, 2 * x, 2 * y);
    CQvPixelComponent seen;
    for (std::size_t b = 0; b < 2 * y; ++b)
      for (std::size_t a = 0; a < 2 * x; ++a) {
        seen.SetPixelComponent(view, a, b);
        const auto& expected = image->GetIQvPixelComponentValue(x + a, y + b);
        ASSERT_EQ(seen.GetComponentCount(), expected.GetComponentCount());
        for (std::size_t i = 0; i < seen.GetComponentCount(); ++i) {
          ASSERT_EQ(seen.GetValue(i), expected.GetValue(i));
          ASSERT_EQ(seen.GetPixelComponent(i), expected.GetPixelComponent(i));
        }
        const auto& asked = view->GetIQvPixelComponentValue(a, b);
        ASSERT_EQ(asked.GetValue(0), seen.GetValue(0));
      }
    EXPECT_EQ(view->GetIQvPixelComponentValue(SIZE_MAX, 0).GetComponentCount(), 0u);
  }
}

TEST(ROIImage, MosaicsAtOddOffsets) {
  const Buffer buffer = MakeImage(8, 8, PixelFormat::BayerRG8);
  IQvImage* image = buffer->GetIQvImage();
  EXPECT_EQ(image->GetROIImage(1, 0, 4, 4)->GetImagePixelFormat(), PixelFormat::BayerGR8);
  EXPECT_EQ(image->GetROIImage(0, 1, 4, 4)->GetImagePixelFormat(), PixelFormat::BayerGB8);
  IQvImage* view = image->GetROIImage(1, 1, 6, 6);
  EXPECT_EQ(view->GetImagePixelFormat(), PixelFormat::BayerBG8);
  IQvImage* inner = view->GetROIImage(1, 0, 2, 2);
  EXPECT_EQ(inner->GetImagePixelFormat(), PixelFormat::BayerGB8);
  EXPECT_EQ(inner->GetImageBuffer(), Bytes(image) + 8 + 2);
  EXPECT_EQ(inner->GetIQvPixelComponentValue(1, 1).GetValue(0), Testing::PatternByte(2 * 8 + 3));
}

TEST(ROIImage, OneChildPerImageAimedAnew) {
  const Buffer buffer = MakeImage(8, 8, PixelFormat::Mono8);
  IQvImage* image = buffer->GetIQvImage();
  IQvImage* view = image->GetROIImage(0, 0, 4, 4);
  IQvImage* inner = view->GetROIImage(2, 2, 2, 2);
  EXPECT_EQ(image->GetROIImage(4, 1, 4, 4), view);
  EXPECT_EQ(view->GetImageBuffer(), Bytes(image) + 8 + 4);
  // The inner view moves along as long as it lies inside.
  EXPECT_EQ(inner->GetImageBuffer(), Bytes(image) + 3 * 8 + 6);
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] { view->GetROIImage(3, 2, 2, 2); }),
            "size_t x = 3 must be equal or smaller than Max = 2");
  EXPECT_EQ(
      MessageOf<RuntimeException>([&] { image->GetROIImage(0, 0, 3, 4), inner->GetImageBuffer(); }),
      kNoImage);
}

TEST(ROIImage, HeightErrorKeepsTheNewColumns) {
  const Buffer buffer = MakeImage(8, 8, PixelFormat::Mono8);
  IQvImage* image = buffer->GetIQvImage();
  IQvImage* view = image->GetROIImage(0, 5, 2, 3);
  EXPECT_THROW(image->GetROIImage(3, 0, 4, 9), OutOfRangeException);
  EXPECT_EQ(view->GetImageWidth(), 4u);
  EXPECT_EQ(view->GetImageHeight(), 3u);
  EXPECT_EQ(view->GetImageBuffer(), Bytes(image) + 5 * 8 + 3);
  // A width error keeps all.
  EXPECT_THROW(image->GetROIImage(0, 0, 9, 1), OutOfRangeException);
  EXPECT_EQ(view->GetImageBuffer(), Bytes(image) + 5 * 8 + 3);
}

TEST(ROIImage, ViewOutsideItsShrunkParentHasNoPixels) {
  const Buffer buffer = MakeImage(8, 8, PixelFormat::Mono8);
  IQvImage* image = buffer->GetIQvImage();
  IQvImage* view = image->GetROIImage(4, 4, 4, 4);
  IQvImage* inner = view->GetROIImage(0, 0, 2, 2);
  buffer->SetSize(8, 7, PixelFormat::Mono8, 0);
  for (IQvImage* stale : {view, inner}) {
    EXPECT_EQ(MessageOf<RuntimeException>([&] { stale->GetImageBuffer(); }), kNoImage);
    EXPECT_EQ(MessageOf<RuntimeException>([&] { stale->GetIQvPixelComponentValue(0, 0); }),
              kNoImage);
    const Buffer copy = MakeBuffer();
    EXPECT_EQ(MessageOf<RuntimeException>([&] { copy->CopyImage(stale); }), kNoImage);
  }
  buffer->SetSize(7, 8, PixelFormat::Mono8, 0);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { inner->GetImageBuffer(); }), kNoImage);
  buffer->SetSize(8, 8, PixelFormat::Mono8, 0);
  EXPECT_EQ(inner->GetImageBuffer(), Bytes(image) + 4 * 8 + 4);
}

TEST(ROIImage, CopyFromAViewIsPacked) {
  const Buffer buffer = MakeImage(100, 10, PixelFormat::BGR8);
  IQvImage* view = buffer->GetIQvImage()->GetROIImage(96, 7, 4, 3);
  const Buffer copy = MakeBuffer();
  copy->CopyImage(view);
  EXPECT_EQ(copy->GetIQvImage()->GetImageLinePitch(), 12u);
  for (std::size_t y = 0; y < 3; ++y)
    EXPECT_EQ(0, memcmp(Bytes(copy->GetIQvImage()) + 12 * y, Bytes(view) + 300 * y, 12));
}

/// Samples of 4:2:0 taken at (x, y) of the luminance and at half of that of the chrominance.
void ExpectPlanar420View(const IQvImage* view, const IQvImage* image, std::size_t x,
                         std::size_t y) {
  const std::size_t w = view->GetImageWidth(), h = view->GetImageHeight();
  const std::size_t parentW = image->GetImageWidth(), parentH = image->GetImageHeight();
  ASSERT_EQ(view->GetImageLinePitch(), w);
  ASSERT_EQ(view->GetImagePixelFormat(), kPlanar420);
  const std::uint8_t* seen = Bytes(view);
  for (std::size_t b = 0; b < h; ++b)
    for (std::size_t a = 0; a < w; ++a) ASSERT_EQ(*seen++, Bytes(image)[(y + b) * parentW + x + a]);
  for (std::size_t plane = 0; plane < 2; ++plane)
    for (std::size_t b = 0; b < h / 2; ++b)
      for (std::size_t a = 0; a < w / 2; ++a)
        ASSERT_EQ(*seen++, Bytes(image)[parentW * parentH * (4 + plane) / 4 +
                                        (y / 2 + b) * (parentW / 2) + x / 2 + a]);
}

TEST(ROIImage, Planar420IsASnapshot) {
  const Buffer buffer = MakeImage(12, 8, kPlanar420);
  IQvImage* image = buffer->GetIQvImage();
  IQvImage* view = image->GetROIImage(4, 2, 6, 4);
  ExpectPlanar420View(view, image, 4, 2);
  EXPECT_EQ(view->GetImagePlanePitch(), 24u);
  IQvImage* inner = view->GetROIImage(2, 2, 4, 2);
  ExpectPlanar420View(inner, view, 2, 2);
  ExpectPlanar420View(inner, image, 6, 4);
  // Odd offsets go down to the chrominance sample they lie in.
  ExpectPlanar420View(image->GetROIImage(5, 2, 6, 4), image, 5, 2);

  const std::uint8_t before = Bytes(view)[0];
  Bytes(image)[2 * 12 + 5] = static_cast<std::uint8_t>(before + 1);
  EXPECT_EQ(Bytes(view)[0], before);
  EXPECT_EQ(view->GetIQvPixelComponentValue(0, 0).GetValue(0), (before + 1) & 0xFF);

  const Buffer copy = MakeBuffer();
  copy->CopyImage(image->GetROIImage(4, 2, 6, 4));
  EXPECT_EQ(0, memcmp(Bytes(copy->GetIQvImage()), Bytes(view), 36));
}

/// A view may move from one kind of format to the other with its parent, but never shows what does
/// not belong to its size and format.
TEST(ROIImage, ParentThatChangesFormat) {
  const Buffer buffer = MakeImage(12, 8, kPlanar420);
  IQvImage* image = buffer->GetIQvImage();
  IQvImage* view = image->GetROIImage(0, 0, 4, 4);
  EXPECT_THROW(image->GetROIImage(0, 0, 12, 10), OutOfRangeException);
  EXPECT_EQ(view->GetImageWidth(), 12u);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { view->GetImageBuffer(); }), kNoImage);
  EXPECT_THROW(image->GetROIImage(0, 0, 3, 3), RuntimeException);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { view->GetImageBuffer(); }), kNoImage);
  image->GetROIImage(0, 0, 4, 4);
  EXPECT_NO_THROW(view->GetImageBuffer());

  buffer->SetSize(12, 8, PixelFormat::Mono8, 0);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { view->GetImageBuffer(); }), kNoImage);
  EXPECT_EQ(image->GetROIImage(1, 1, 3, 3), view);
  EXPECT_EQ(view->GetImageBuffer(), Bytes(image) + 13);
  buffer->SetSize(12, 8, kPlanar420, 0);
  EXPECT_EQ(MessageOf<RuntimeException>([&] { view->GetImageBuffer(); }), kNoImage);
}

TEST(ROIImage, Planar420OfOddSizeStaysInsideTheParent) {
  for (std::size_t side : {3u, 5u, 7u})
    for (std::size_t width = 2; width < side; width += 2)
      for (std::size_t height = 2; height < side; height += 2)
        for (std::size_t x = 0; x <= side - width; ++x)
          for (std::size_t y = 0; y <= side - height; ++y) {
            std::vector<std::uint8_t> memory(side * side * 3 / 2, 1);
            Testing::ForeignImage parent(memory.data(), side, side, side, kPlanar420);
            const Buffer buffer = MakeBuffer();
            buffer->CopyImage(&parent);
            IQvImage* image = buffer->GetIQvImage();
            // What lies behind the planes must not be seen.
            std::fill(Bytes(image) + memory.size(), Bytes(image) + 3 * side * side, 0xEE);
            const std::uint8_t* seen = Bytes(image->GetROIImage(x, y, width, height));
            for (std::size_t i = 0; i < width * height * 3 / 2; ++i) ASSERT_NE(seen[i], 0xEE);
          }
}

}  // namespace
}  // namespace QvApi
