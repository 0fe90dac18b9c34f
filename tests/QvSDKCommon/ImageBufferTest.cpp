// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <stdexcept>
#include <vector>

#include "ImageTestSupport.h"
#include "Kernels/GuardedMemory.h"
#include "QvApi_TL/PixelFormatTable.h"
#include "QvSDKCommon/ImageCopy.h"

namespace QvApi {
namespace {

using Testing::AllBytes;
using Testing::Buffer;
using Testing::Bytes;
using Testing::ForeignImage;
using Testing::MakeBuffer;
using Testing::MessageOf;
using Testing::PatternByte;

using GenICam::BadAllocException;
using GenICam::OutOfRangeException;
using GenICam::RuntimeException;

IQvImage* ImageOf(const Buffer& buffer) { return dynamic_cast<IQvImage*>(buffer.Releasable()); }

void ExpectEmpty(const Buffer& buffer) {
  EXPECT_FALSE(buffer->HasImageBuffer());
  EXPECT_EQ(MessageOf<RuntimeException>([&] { buffer->GetIQvImage(); }),
            "There is no available image.");
  const IQvImage* image = ImageOf(buffer);
  EXPECT_EQ(image->GetImageBuffer(), nullptr);
  EXPECT_EQ(image->GetUserContext(), nullptr);
  EXPECT_EQ(image->GetImageWidth(), 0u);
  EXPECT_EQ(image->GetImageHeight(), 0u);
  EXPECT_EQ(image->GetImageLinePitch(), 0u);
  EXPECT_EQ(image->GetImagePlanePitch(), 0u);
  EXPECT_EQ(static_cast<std::uint32_t>(image->GetImagePixelFormat()), 0xFFFFFFFFu);
}

/// Keeps book of what a buffer asks of it, and fails one call if told so.
class CountingAllocator : public IQvAllocator {
 public:
  enum class Failure { None, Null, Throws, ThrowsBadAlloc, StoresAndThrows };

  void Allocate(void** buffer, std::size_t size, void** context) override {
    if (++m_calls == failAt) {
      if (failure == Failure::Throws) throw std::runtime_error("no");
      if (failure == Failure::ThrowsBadAlloc) throw std::bad_alloc();
      if (failure == Failure::StoresAndThrows) {
        *buffer = this;
        throw std::runtime_error("no");
      }
      *buffer = nullptr;
      return;
    }
    *buffer = std::malloc(size);
    *context = static_cast<char*>(nullptr) + 100 + m_calls;
    m_blocks.push_back({*buffer, size, *context});
  }
  void Deallocate(void* buffer, std::size_t size, void* context) override {
    ASSERT_FALSE(m_blocks.empty());
    EXPECT_EQ(m_blocks.back().buffer, buffer);
    EXPECT_EQ(m_blocks.back().size, size);
    EXPECT_EQ(m_blocks.back().context, context);
    m_blocks.pop_back();
    std::free(buffer);
  }
  void OnDeregister() override {
    EXPECT_TRUE(m_blocks.empty());
    ++deregistrations;
  }

  std::size_t BlockCount() const { return m_blocks.size(); }
  std::size_t BlockSize() const { return m_blocks.back().size; }
  std::size_t Calls() const { return m_calls; }

  std::size_t failAt = 0;
  Failure failure = Failure::None;
  int deregistrations = 0;

 private:
  struct Block {
    void* buffer;
    std::size_t size;
    void* context;
  };
  std::vector<Block> m_blocks;
  std::size_t m_calls = 0;
};

TEST(ImageBuffer, StartsEmpty) { ExpectEmpty(MakeBuffer()); }

TEST(ImageBuffer, RefusesSizesOfZero) {
  const Buffer buffer = MakeBuffer();
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] { buffer->SetSize(0, 1, PixelFormat::Mono8, 0); }),
            "size_t nWidth = 0 must be greater than Min = 0");
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] { buffer->SetSize(1, 0, PixelFormat::Mono8, 0); }),
            "size_t nHeight = 0 must be greater than Min = 0");
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] {
              buffer->CreateBuffer(0, 0, PixelFormat::Mono8, QvMemoryInitialization_Zero);
            }),
            "size_t nWidth = 0 must be greater than Min = 0");
  ExpectEmpty(buffer);
  // A refused size leaves an image as it was.
  buffer->SetSize(3, 2, PixelFormat::Mono8, 0);
  EXPECT_THROW(buffer->SetSize(0, 1, PixelFormat::Mono16, 0), OutOfRangeException);
  EXPECT_EQ(buffer->GetIQvImage()->GetImageWidth(), 3u);
  EXPECT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), PixelFormat::Mono8);
}

TEST(ImageBuffer, FailuresNameTheirPlace) {
  const Buffer buffer = MakeBuffer();
  try {
    buffer->SetSize(0, 1, PixelFormat::Mono8, 0);
    FAIL();
  } catch (const GenICam::GenericException& e) {
    EXPECT_STREQ(e.GetSourceFileName(), "QvSDKCommon/QvImageBuffer");
    EXPECT_GT(e.GetSourceLine(), 0u);
    EXPECT_NE(std::string(e.what()).find("OutOfRangeException"), std::string::npos);
  }
}

TEST(ImageBuffer, SizesPitchesAndBytes) {
  struct Case {
    PixelFormat format;
    std::size_t width, height, alignment, pitch, bytes;
  };
  for (const auto& [format, width, height, alignment, pitch, bytes] :
       {Case{PixelFormat::Mono8, 5, 3, 0, 8, 24}, Case{PixelFormat::Mono8, 5, 3, 1, 5, 15},
        Case{PixelFormat::Mono8, 5, 3, 7, 7, 21}, Case{PixelFormat::Mono12p, 3, 2, 1, 5, 10},
        Case{PixelFormat::BGR8, 3, 2, 100, 100, 200},
        Case{PixelFormat::RGB8_Planar, 3, 2, 0, 4, 24},
        Case{PixelFormat::YCbCr411_8, 4, 2, 1, 6, 12},
        Case{PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar, 6, 4, 16, 6, 72}}) {
    SCOPED_TRACE(FindPixelFormat(format)->name);
    CountingAllocator allocator;
    const Buffer buffer = MakeBuffer(&allocator);
    buffer->SetSize(width, height, format, alignment);
    const IQvImage* image = buffer->GetIQvImage();
    EXPECT_EQ(image->GetImageWidth(), width);
    EXPECT_EQ(image->GetImageHeight(), height);
    EXPECT_EQ(image->GetImageLinePitch(), pitch);
    EXPECT_EQ(image->GetImagePlanePitch(), pitch * height);
    EXPECT_EQ(image->GetImagePixelFormat(), format);
    EXPECT_EQ(image->GetUserContext(), static_cast<char*>(nullptr) + 101);
    EXPECT_EQ(allocator.BlockSize(), bytes);
  }
}

TEST(ImageBuffer, MemoryOnlyGrows) {
  CountingAllocator allocator;
  const Buffer buffer = MakeBuffer(&allocator);
  buffer->CreateBuffer(8, 8, PixelFormat::Mono8, QvMemoryInitialization_Zero);
  void* const block = buffer->GetIQvImage()->GetImageBuffer();
  buffer->CreateBuffer(4, 2, PixelFormat::Mono8, QvMemoryInitialization_One);
  EXPECT_EQ(buffer->GetIQvImage()->GetImageBuffer(), block);
  // The fill covers the whole block, not just the image.
  for (std::size_t i = 0; i < 64; ++i) ASSERT_EQ(static_cast<std::uint8_t*>(block)[i], 0xFF);
  buffer->SetSize(8, 8, PixelFormat::Mono8, 0);
  EXPECT_EQ(buffer->GetIQvImage()->GetImageBuffer(), block);
  EXPECT_EQ(allocator.Calls(), 1u);
  buffer->CreateBuffer(8, 8, PixelFormat::Mono8, QvMemoryInitialization_None);
  EXPECT_EQ(Bytes(buffer->GetIQvImage())[63], 0xFF);
  buffer->SetSize(9, 9, PixelFormat::Mono16, 0);
  EXPECT_EQ(allocator.Calls(), 2u);
  EXPECT_EQ(allocator.BlockCount(), 1u);
  EXPECT_EQ(buffer->GetIQvImage()->GetUserContext(), static_cast<char*>(nullptr) + 102);
}

TEST(ImageBuffer, GivesItsMemoryBackOnce) {
  CountingAllocator allocator;
  { MakeBuffer(&allocator); }
  EXPECT_EQ(allocator.deregistrations, 1);
  {
    const Buffer buffer = MakeBuffer(&allocator);
    buffer->SetSize(2, 2, PixelFormat::Mono8, 0);
  }
  EXPECT_EQ(allocator.BlockCount(), 0u);
  EXPECT_EQ(allocator.deregistrations, 2);
}

TEST(ImageBuffer, AllocatorThatFailsLeavesItEmpty) {
  using Failure = CountingAllocator::Failure;
  for (Failure failure :
       {Failure::Null, Failure::Throws, Failure::ThrowsBadAlloc, Failure::StoresAndThrows})
    for (std::size_t failAt : {1u, 2u, 3u}) {
      CountingAllocator allocator;
      allocator.failAt = failAt;
      allocator.failure = failure;
      {
        const Buffer buffer = MakeBuffer(&allocator);
        for (std::size_t i = 1; i < failAt; ++i) buffer->SetSize(i, i, PixelFormat::Mono16, 0);
        const auto grow = [&] { buffer->SetSize(50, 50, PixelFormat::Mono8, 0); };
        if (failure == Failure::Null || failure == Failure::ThrowsBadAlloc)
          EXPECT_THROW(grow(), BadAllocException);
        else
          EXPECT_THROW(grow(), std::runtime_error);
        ExpectEmpty(buffer);
        EXPECT_EQ(allocator.BlockCount(), 0u);
        EXPECT_EQ(MessageOf<RuntimeException>([&] { ImageOf(buffer)->GetROIImage(0, 0, 1, 1); }),
                  "There is no available image.");
        grow();  // The next try may go well.
        EXPECT_EQ(buffer->GetIQvImage()->GetImageWidth(), 50u);
      }
      EXPECT_EQ(allocator.deregistrations, 1);
    }
}

TEST(ImageBuffer, SizesThatOverflow) {
  struct Case {
    std::size_t width, height;
    PixelFormat format;
    std::size_t alignment;
  };
  const std::size_t half = std::size_t{1} << 32;
  for (const auto& [width, height, format, alignment] :
       {Case{SIZE_MAX, 1, PixelFormat::BGRa16, 0}, Case{half, half, PixelFormat::Mono8, 0},
        Case{half, half / 2, PixelFormat::Mono8, 0}, Case{1, SIZE_MAX, PixelFormat::Mono8, 4},
        Case{SIZE_MAX / 3, 1, PixelFormat::RGB8_Planar, 1},
        Case{1, 1, PixelFormat::Mono8, SIZE_MAX}, Case{1, SIZE_MAX, PixelFormat::Mono8, 1},
        Case{half, half / 2, PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar, 0}}) {
    CountingAllocator allocator;
    const Buffer buffer = MakeBuffer(&allocator);
    buffer->SetSize(4, 4, PixelFormat::Mono8, 0);
    EXPECT_THROW(buffer->SetSize(width, height, format, alignment), BadAllocException);
    ExpectEmpty(buffer);
    EXPECT_EQ(allocator.Calls(), 1u);
    EXPECT_EQ(allocator.BlockCount(), 0u);
  }
}

TEST(ImageBuffer, CopyTakesOverSizeFormatAndPixels) {
  for (const auto& row : kPixelFormats) {
    if (row.format == PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar) continue;
    SCOPED_TRACE(row.name);
    const std::size_t lineBytes = row.LineBytes(7);
    const std::size_t defaultPitch = row.LinePitch(7, row.lineAlignment);
    for (std::size_t pitch : {lineBytes, defaultPitch, lineBytes + 9}) {
      // The memory ends with the last significant byte, and a page behind it cannot be read.
      const std::size_t size = pitch * 3 * row.planeCount - (pitch - lineBytes);
      Kernels::GuardedMemory memory(size);
      auto* bytes = memory.Place<std::uint8_t>(size, Kernels::Side::Back);
      Testing::FillPattern(bytes, size);
      ForeignImage source(bytes, 7, 3, pitch, row.format);
      const Buffer copy = MakeBuffer();
      copy->CopyImage(&source);
      const IQvImage* image = copy->GetIQvImage();
      ASSERT_EQ(image->GetImagePixelFormat(), row.format);
      ASSERT_EQ(image->GetImageLinePitch(), defaultPitch);
      ASSERT_EQ(image->GetImageHeight(), 3u);
      for (std::size_t line = 0; line < 3u * row.planeCount; ++line)
        for (std::size_t i = 0; i < lineBytes; ++i)
          ASSERT_EQ(Bytes(image)[line * defaultPitch + i], PatternByte(line * pitch + i))
              << "pitch " << pitch << " line " << line << " byte " << i;
    }
  }
}

/// Luminance and chrominance of 4:2:0 from their definition: chrominance lines are half as long.
TEST(ImageBuffer, CopyOfPlanar420TouchesItsTruePlanesOnly) {
  for (std::size_t width : {2u, 4u, 5u, 7u})
    for (std::size_t height : {2u, 3u, 6u})
      for (bool reverseY : {false, true}) {
        const std::size_t luma = width * height;
        const std::size_t chroma = luma / 4;
        Kernels::GuardedMemory memory(luma + 2 * chroma);
        auto* bytes = memory.Place<std::uint8_t>(luma + 2 * chroma, Kernels::Side::Back);
        Testing::FillPattern(bytes, luma + 2 * chroma);
        ForeignImage source(bytes, width, height, width, PixelFormat::CYCbCr420_8_YY_Cb_Cr_Planar);
        const Buffer copy = MakeBuffer();
        copy->CreateBuffer(width, height, source.GetImagePixelFormat(),
                           QvMemoryInitialization_Zero);
        if (reverseY)
          CopyImagePixels(source, *copy->GetIQvImage(), true);
        else
          copy->CopyImage(&source);
        const std::uint8_t* copied = Bytes(copy->GetIQvImage());
        const auto row = [reverseY](std::size_t y, std::size_t rows) {
          return reverseY ? rows - 1 - y : y;
        };
        for (std::size_t y = 0; y < height; ++y)
          for (std::size_t x = 0; x < width; ++x)
            ASSERT_EQ(copied[row(y, height) * width + x], bytes[y * width + x]);
        for (std::size_t plane = 0; plane < 2; ++plane)
          for (std::size_t y = 0; y < height / 2; ++y)
            for (std::size_t x = 0; x < width / 2; ++x) {
              const std::size_t start = luma + plane * chroma + x;
              ASSERT_EQ(copied[start + row(y, height / 2) * (width / 2)],
                        bytes[start + y * (width / 2)])
                  << width << " x " << height << " plane " << plane;
            }
        for (std::size_t i = luma + 2 * chroma; i < 3 * luma; ++i) ASSERT_EQ(copied[i], 0);
      }
}

TEST(ImageCopy, ReversesEachPlane) {
  for (std::size_t pitch : {4u, 5u}) {
    const std::size_t size = 6 * pitch - (pitch - 3);
    Kernels::GuardedMemory memory(size);
    auto* bytes = memory.Place<std::uint8_t>(size, Kernels::Side::Back);
    Testing::FillPattern(bytes, size);
    ForeignImage source(bytes, 3, 2, pitch, PixelFormat::RGB8_Planar);
    const Buffer copy = MakeBuffer();
    copy->CreateBuffer(3, 2, PixelFormat::RGB8_Planar, QvMemoryInitialization_Zero);
    CopyImagePixels(source, *copy->GetIQvImage(), true);
    for (std::size_t line = 0; line < 6; ++line)
      for (std::size_t i = 0; i < 3; ++i)
        ASSERT_EQ(Bytes(copy->GetIQvImage())[(line ^ 1) * 4 + i], bytes[line * pitch + i]);
  }
}

TEST(ImageCopy, PaddingThatBothHaveGoesAlong) {
  std::vector<std::uint8_t> bytes{1, 2, 90, 91, 3, 4, 92, 93};
  ForeignImage same(bytes.data(), 2, 2, 4, PixelFormat::Mono8);
  const Buffer copy = MakeBuffer();
  copy->CreateBuffer(2, 2, PixelFormat::Mono8, QvMemoryInitialization_Zero);
  copy->CopyImage(&same);
  EXPECT_EQ(AllBytes(copy->GetIQvImage()), (std::vector<std::uint8_t>{1, 2, 90, 91, 3, 4, 0, 0}));

  std::vector<std::uint8_t> packed{1, 2, 90, 3, 4};
  ForeignImage narrow(packed.data(), 2, 2, 3, PixelFormat::Mono8);
  copy->CreateBuffer(2, 2, PixelFormat::Mono8, QvMemoryInitialization_Zero);
  copy->CopyImage(&narrow);
  EXPECT_EQ(AllBytes(copy->GetIQvImage()), (std::vector<std::uint8_t>{1, 2, 90, 0, 3, 4, 0, 0}));
}

TEST(ImageBuffer, CopyOfItselfAndOfItsOwnViews) {
  const auto pixelAt = [](const IQvImage* image, std::size_t x, std::size_t y) {
    return Bytes(image)[y * image->GetImageLinePitch() + x];
  };
  for (std::size_t alignment : {1u, 4u, 32u}) {
    SCOPED_TRACE(alignment);
    const Buffer buffer = MakeBuffer();
    const auto fill = [&] {
      buffer->SetSize(9, 5, PixelFormat::Mono8, alignment);
      for (std::size_t y = 0; y < 5; ++y)
        for (std::size_t x = 0; x < 9; ++x)
          Bytes(buffer->GetIQvImage())[y * buffer->GetIQvImage()->GetImageLinePitch() + x] =
              static_cast<std::uint8_t>(16 * y + x);
    };
    fill();
    buffer->CopyImage(buffer->GetIQvImage());
    for (std::size_t y = 0; y < 5; ++y)
      for (std::size_t x = 0; x < 9; ++x)
        ASSERT_EQ(pixelAt(buffer->GetIQvImage(), x, y), 16 * y + x);
    fill();
    buffer->CopyImage(buffer->GetIQvImage()->GetROIImage(2, 1, 7, 4));
    ASSERT_EQ(buffer->GetIQvImage()->GetImageWidth(), 7u);
    for (std::size_t y = 0; y < 4; ++y)
      for (std::size_t x = 0; x < 7; ++x)
        ASSERT_EQ(pixelAt(buffer->GetIQvImage(), x, y), 16 * (y + 1) + x + 2);
  }
}

TEST(ImageBuffer, CopyOfNothing) {
  const Buffer source = MakeBuffer();
  const Buffer copy = MakeBuffer();
  EXPECT_EQ(MessageOf<RuntimeException>([&] { copy->CopyImage(ImageOf(source)); }),
            "There is no available image.");
  ExpectEmpty(copy);
}

TEST(ImageCopy, SharedMemory) {
  const Buffer a = MakeBuffer();
  const Buffer b = MakeBuffer();
  a->SetSize(8, 8, PixelFormat::Mono8, 0);
  b->SetSize(8, 8, PixelFormat::Mono8, 0);
  EXPECT_TRUE(ShareMemory(*a->GetIQvImage(), *a->GetIQvImage()->GetROIImage(7, 7, 1, 1)));
  EXPECT_FALSE(ShareMemory(*a->GetIQvImage(), *b->GetIQvImage()));
  std::uint8_t bytes[20] = {};
  ForeignImage front(bytes, 3, 2, 5, PixelFormat::Mono8);
  ForeignImage behind(bytes + 8, 3, 2, 5, PixelFormat::Mono8);
  ForeignImage last(bytes + 7, 3, 2, 5, PixelFormat::Mono8);
  EXPECT_FALSE(ShareMemory(front, behind));
  EXPECT_TRUE(ShareMemory(front, last));
}

/// An image that is none of those to be trusted.
class StrangeImage : public IQvImage {
 public:
  std::size_t GetImageWidth() const override { return 1; }
  std::size_t GetImageHeight() const override { return 1; }
  std::size_t GetImageLinePitch() const override { return 1; }
  std::size_t GetImagePlanePitch() const override { return 1; }
  PixelFormat GetImagePixelFormat() const override { return PixelFormat::Mono8; }
  void* GetImageBuffer() const override { return nullptr; }
  void* GetUserContext() const override { return nullptr; }
  IQvImage* GetROIImage(std::size_t, std::size_t, std::size_t, std::size_t) override {
    return this;
  }
  const CQvPixelComponent& GetIQvPixelComponentValue(std::size_t, std::size_t) override {
    return m_component;
  }

 private:
  CQvPixelComponent m_component;
};

TEST(ImageBufferDeathTest, BrokenContracts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const Buffer buffer = MakeBuffer();
  EXPECT_DEATH(buffer->SetSize(1, 1, PixelFormat::None, 0),
               "\\(pIQvPixelFormatInfoDest\\) != NULL");
  StrangeImage strange;
  EXPECT_DEATH(buffer->CopyImage(&strange), "\\(pSrcIQvImageInside\\) != NULL");
  EXPECT_DEATH(buffer->CopyImage(nullptr), "\\(pSrcIQvImageInside\\) != NULL");
}

}  // namespace
}  // namespace QvApi
