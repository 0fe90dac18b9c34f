// SPDX-License-Identifier: MIT
// Every pair of formats there is, run on small images: what is routed converts, what is not is
// refused, and nothing outside the destination's block or inside the source is written.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "QvApi_IP/PixelFormatRoutes.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;

constexpr std::array<std::pair<std::size_t, std::size_t>, 4> kSizes{
    {{13, 7}, {8, 6}, {4, 4}, {5, 9}}};

/// What destinations hold before: a byte is written in the same way over both, or over neither.
constexpr std::uint8_t kFills[] = {0x00, 0xA5};

/// Memory between guard bytes, all of one value, so that a byte that nobody wrote is known.
class GuardedAllocator : public IQvAllocator {
 public:
  explicit GuardedAllocator(std::uint8_t fill) : m_fill(fill) {}

  void Allocate(void** buffer, std::size_t size, void**) override {
    m_block.assign(size + 2 * kGuard, m_fill);
    *buffer = m_block.data() + kGuard;
  }
  void Deallocate(void*, std::size_t, void*) override {}
  void OnDeregister() override {}

  const std::vector<std::uint8_t>& Block() const { return m_block; }

  bool IsIntact() const {
    const auto untouched = [&](std::uint8_t byte) { return byte == m_fill; };
    return std::all_of(m_block.begin(), m_block.begin() + kGuard, untouched) &&
           std::all_of(m_block.end() - kGuard, m_block.end(), untouched);
  }

 private:
  static constexpr std::ptrdiff_t kGuard = 64;

  const std::uint8_t m_fill;
  std::vector<std::uint8_t> m_block;
};

/// The label that a flipped mosaic may take instead of the one asked for: another mosaic of the kind.
bool IsSameKind(PixelFormat a, PixelFormat b) {
  return Info(a).IsBayer() == Info(b).IsBayer() && Info(a).IsPolarized() == Info(b).IsPolarized() &&
         (Info(a).IsBayer() || Info(a).IsPolarized());
}

void ConvertGuarded(CQvPixelFormatConverter& converter, TestImage& source, PixelFormat destination,
                    const std::string& what) {
  const std::vector<std::uint8_t> before = source.All();
  std::vector<std::uint8_t> results[2];
  for (std::size_t i : {0, 1}) {
    GuardedAllocator allocator(kFills[i]);
    const Buffer buffer = MakeBuffer(&allocator);
    ASSERT_NO_THROW(converter.Convert(&source, buffer.Get())) << what;
    ASSERT_TRUE(allocator.IsIntact()) << what;
    const IQvImage& image = *buffer->GetIQvImage();
    const PixelFormat format = image.GetImagePixelFormat();
    ASSERT_TRUE(format == destination || IsSameKind(format, destination)) << what;
    ASSERT_EQ(image.GetImageHeight(), source.GetImageHeight()) << what;
    results[i] = allocator.Block();
  }
  for (std::size_t i = 0; i < results[0].size(); ++i)
    for (unsigned nibble : {0x0FU, 0xF0U}) {  // GigE Vision packing ends with half a byte
      const unsigned first = results[0][i] & nibble, second = results[1][i] & nibble;
      const bool isUnwritten = first == (kFills[0] & nibble) && second == (kFills[1] & nibble);
      ASSERT_TRUE(isUnwritten || first == second) << what << ", byte " << i;
    }
  ASSERT_EQ(source.All(), before) << what;
}

TEST(AllPairs, ConvertOrAreRefused) {
  std::size_t converted = 0;
  CQvPixelFormatConverter converter;
  for (const PixelFormatRow& from : kPixelFormats) {
    TestImage probe(4, 4, from.format);
    probe.Randomize(1);
    for (const PixelFormatRow& to : kPixelFormats) {
      const std::string what = std::string(from.name) + " to " + std::string(to.name);
      converter.SetDestinationPixelFormat(to.format);
      if (FindRoute(from.format, to.format) == Route::None && from.format != to.format) {
        const Buffer buffer = MakeBuffer();
        EXPECT_EQ(
            MessageOf<GenICam::RuntimeException>([&] { converter.Convert(&probe, buffer.Get()); }),
            "Converting a pixelformat from  " + std::string(from.name) + " to " +
                std::string(to.name) + " is not supported.");
        continue;
      }
      converted += from.format != to.format;
      ConvertGuarded(converter, probe, to.format, what);
    }
  }
  EXPECT_EQ(converted, 4011U);
}

TEST(AllPairs, KeepToTheirMemoryWithAnyPixelsAndSizes) {
  unsigned seed = 0;
  CQvPixelFormatConverter converter;
  for (bool reverse : {false, true}) {
    converter.SetReverseY(reverse);
    for (const auto& [width, height] : kSizes)
      for (const PixelFormatRow& from : kPixelFormats) {
        TestImage source(width, height, from.format, seed % 3 * 2);
        source.Randomize(++seed, false);
        for (const PixelFormatRow& to : kPixelFormats) {
          if (FindRoute(from.format, to.format) == Route::None) continue;
          converter.SetDestinationPixelFormat(to.format);
          ConvertGuarded(converter, source, to.format,
                         std::string(from.name) + " to " + std::string(to.name));
          if (HasFatalFailure()) return;
        }
      }
  }
}

}  // namespace
}  // namespace QvApi
