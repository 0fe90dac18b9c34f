// SPDX-License-Identifier: MIT
// Every pair of formats there is, run on small images: what is routed converts, what is not is
// refused, and nothing outside the destination's block or inside the source is written.
#include "QvApi_IP/Conversions.h"

namespace QvApi {
namespace {

using namespace Testing;

/// What destinations hold before: a byte is written in the same way over both, or over neither.
constexpr std::uint8_t kOlds[] = {0x00, 0xA5};

/// The label that a flipped mosaic may take instead of the one asked for: another mosaic of the
/// kind.
bool IsSameKind(PixelFormat a, PixelFormat b) {
  return Info(a).IsBayer() == Info(b).IsBayer() && Info(a).IsPolarized() == Info(b).IsPolarized() &&
         (Info(a).IsBayer() || Info(a).IsPolarized());
}

void ConvertGuarded(CQvPixelFormatConverter& converter, TestImage& source) {
  const PixelFormat destination = converter.GetDestinationPixelFormat();
  const std::vector<std::uint8_t> before = source.All();
  OldMemory memories[]{OldMemory(kOlds[0]), OldMemory(kOlds[1])};
  for (OldMemory& memory : memories) {
    const Buffer buffer = MakeBuffer(&memory);
    ASSERT_NO_THROW(converter.Convert(&source, buffer.Get()));
    ASSERT_TRUE(memory.IsIntact());
    const IQvImage& image = *buffer->GetIQvImage();
    const PixelFormat format = image.GetImagePixelFormat();
    ASSERT_TRUE(format == destination || IsSameKind(format, destination));
    ASSERT_EQ(image.GetImageHeight(), source.GetImageHeight());
  }
  for (std::size_t i = 0; i < memories[0].Block().size(); ++i)
    for (unsigned nibble : {0x0FU, 0xF0U}) {  // GigE Vision packing ends with half a byte
      const unsigned first = memories[0].Block()[i] & nibble;
      const unsigned second = memories[1].Block()[i] & nibble;
      const bool isUnwritten = first == (kOlds[0] & nibble) && second == (kOlds[1] & nibble);
      ASSERT_TRUE(isUnwritten || first == second) << "byte " << i;
    }
  ASSERT_EQ(source.All(), before);
}

TEST(AllPairs, ConvertOrAreRefused) {
  CQvPixelFormatConverter converter;
  std::size_t converted = 0;
  unsigned turn = 0;
  for (const PixelFormatRow& from : kPixelFormats)
    for (const PixelFormatRow& to : kPixelFormats) {
      const std::string names = std::string(from.name) + " to " + std::string(to.name);
      SCOPED_TRACE(names);
      converter.SetDestinationPixelFormat(to.format);
      if (FindRoute(from.format, to.format) == Route::None && from.format != to.format) {
        TestImage source(4, 4, from.format);
        EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { Conversion(converter, source); }),
                  "Converting a pixelformat from  " + names + " is not supported.");
        continue;
      }
      converted += from.format != to.format;
      for (const Size& size : {Size{13, 7}, {8, 6}, {4, 4}, {5, 9}})
        for (bool reverse : {false, true}) {
          TestImage source(size.width, size.height, from.format, turn % 3 * 2);
          source.Randomize(++turn, false);
          converter.SetReverseY(reverse);
          ConvertGuarded(converter, source);
          if (HasFatalFailure()) return;
        }
    }
  EXPECT_EQ(converted, 4011U);
}

}  // namespace
}  // namespace QvApi
