// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvReverseConverter.h"

#include <GenApi/GenApi.h>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_TL/PixelLayout.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

/// Mirrors first, then the turn.
struct Operation {
  bool x, y;
  EQvRotationMode_t rotation;

  bool IsNone() const { return !x && !y && !IsTurned(); }
  bool IsTurned() const { return rotation != QvRotationMode_OFF; }
  /// Where pixel (atX, atY) of a w x h image goes, one step after the other.
  std::array<std::size_t, 2> Target(std::size_t atX, std::size_t atY, std::size_t w,
                                    std::size_t h) const {
    if (x) atX = w - 1 - atX;
    if (y) atY = h - 1 - atY;
    if (rotation == QvRotationMode_Clockwise90) return {h - 1 - atY, atX};
    if (rotation == QvRotationMode_Counterclockwise90) return {atY, w - 1 - atX};
    return {atX, atY};
  }
};

std::ostream& operator<<(std::ostream& out, const Operation& s) {
  return out << (s.x ? "X " : "") << (s.y ? "Y " : "") << "turn " << s.rotation;
}

const std::vector<Operation> kOperations = [] {
  std::vector<Operation> operations;
  for (auto rotation :
       {QvRotationMode_OFF, QvRotationMode_Clockwise90, QvRotationMode_Counterclockwise90})
    for (bool x : {false, true})
      for (bool y : {false, true}) operations.push_back({x, y, rotation});
  return operations;
}();

/// A converter for an operation, and what it makes, in old memory that is large enough.
class Reversal {
 public:
  Reversal(IQvImage& source, const Operation& operation, std::size_t alignment = 1)
      : Reversal(operation, alignment) {
    buffer->CreateBuffer(80, 80, BGRa16, QvMemoryInitialization_One);
    converter.Convert(&source, buffer.Get());
  }
  explicit Reversal(const Operation& operation, std::size_t alignment = 1) {
    converter.SetReverseX(operation.x);
    converter.SetReverseY(operation.y);
    converter.SetRotationMode(operation.rotation);
    converter.SetLinePitchAlignment(alignment);
  }
  IQvImage& Image() const { return *buffer->GetIQvImage(); }
  PixelFormat Format() const { return Image().GetImagePixelFormat(); }

  CQvReverseConverter converter;
  const Buffer buffer = MakeBuffer();
};

bool IsTaken(PixelFormat format) { return CQvReverseConverter::IsSupported(format); }

TEST(ReverseConverter, TakesJustWhatItSays) {
  std::size_t count = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    const bool isUnpacked = row.storage == Storage::Unpacked;
    bool expected = false;
    if (row.kind == PixelKind::YCbCr) expected = row.format == YCbCr8;
    if (row.kind == PixelKind::Mono)
      expected = isUnpacked && row.format != Mono8s && row.depth < 32;
    if (row.IsBayer() || row.IsPolarized()) expected = isUnpacked;
    if (row.kind == PixelKind::Color)
      expected = (isUnpacked && row.format != RGB16) || row.storage == Storage::Word32;
    EXPECT_EQ(IsTaken(row.format), expected) << row.name;
    count += IsTaken(row.format);
    if (expected) continue;
    TestImage source(4, 4, row.format);
    EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { Reversal(source, kOperations[1]); }),
              "Not supported pixelformat " + std::string(row.name));
    const Reversal copy(source.Randomize(1), kOperations[0]);  // of anything without an operation
    EXPECT_EQ(copy.Format(), row.format);
    EXPECT_EQ(std::memcmp(Bytes(&copy.Image()), source.Line(0), LineBytes(row.format, 4)), 0);
  }
  EXPECT_EQ(count, 88U);
}

TEST(ReverseConverter, MovesEveryPixelToItsPlace) {
  constexpr std::array<std::size_t, 2> kSizes[]{{1, 1}, {2, 3}, {7, 5}, {40, 36}, {33, 50}};
  unsigned turn = 0;
  for (const PixelFormatRow& row : kPixelFormats)
    for (const auto& [w, h] : kSizes)
      for (const Operation& operation : kOperations) {
        if (!IsTaken(row.format) || operation.IsNone()) continue;
        SCOPED_TRACE(testing::Message() << row.name << " " << w << " x " << h << " " << operation);
        const std::size_t alignment = 1 + ++turn % 6;
        TestImage source(w, h, row.format, turn % 3);
        const auto before = source.Randomize(turn).All();
        const Reversal result(source, operation, alignment);

        const std::size_t width = operation.IsTurned() ? h : w,
                          height = operation.IsTurned() ? w : h;
        const std::size_t pitch = result.Image().GetImageLinePitch();
        ASSERT_EQ(result.Image().GetImageWidth(), width);
        ASSERT_EQ(result.Image().GetImageHeight(), height);
        ASSERT_EQ(pitch, Info(row.format).GetLinePitch(width, alignment));
        const std::size_t step = LineBytes(row.format, 1);
        // Whole lines are copied when just their order changes; else alpha stays.
        const bool isCopied = operation.y && !operation.x && !operation.IsTurned();
        const std::size_t moved = row.componentCount == 4 && !isCopied ? step / 4 * 3 : step;
        auto made = AllBytes(&result.Image());
        std::vector<std::uint8_t> expected(height * pitch, 0xFF);
        for (std::size_t i = 0; i < made.size(); ++i)
          if (isCopied && i % pitch >= width * step) made[i] = 0xFF;
        for (std::size_t y = 0; y < h; ++y)
          for (std::size_t x = 0; x < w; ++x) {
            const auto [toX, toY] = operation.Target(x, y, w, h);
            std::memcpy(&expected[toY * pitch + toX * step], source.Line(y) + x * step, moved);
          }
        ASSERT_EQ(made, expected);
        ASSERT_EQ(source.All(), before);
      }
}

// --- Labels
// ---------------------------------------------------------------------------------------

/// The physical argument: whatever happens to a mosaic, a sample keeps its colour and polarizer.
/// One thing is otherwise: mirrored arrangements that are turned ("C") get the name of the mirror,
/// which in them stands for the one along the other axis, as the turn comes after it.
TEST(ReverseConverter, SamplesOfMosaicsKeepTheirColors) {
  // Both greens of a Bayer mosaic are green; which row they share changes in a turn.
  const auto channelOf = [](EQvPixelComponent_t component) {
    const auto code = static_cast<std::uint32_t>(component);
    return code >> 24 == 5 || code >> 24 == 6 ? (code & 0xFFFFFF) | 3U << 24 : code;
  };
  for (const PixelFormatRow& row : kPixelFormats)
    for (std::size_t w : {4, 5, 8, 11})
      for (std::size_t h : {4, 7, 8, 9})
        for (const Operation& operation : kOperations) {
          if (!IsTaken(row.format) || (!row.IsBayer() && !row.IsPolarized())) continue;
          TestImage source(w, h, row.format);
          const PixelFormatRow& made = *FindPixelFormat(Reversal(source, operation).Format());
          // Arrangements of polarizers are named as if there were whole tiles.
          if (row.IsPolarized() && (w % 4 != 0 || h % 4 != 0)) {
            TestImage whole(8, 8, row.format);
            ASSERT_EQ(made.format, Reversal(whole, operation).Format());
            continue;
          }
          Operation seen = operation;
          if (row.polarizerPattern > 4 && !seen.IsTurned() && seen.x != seen.y)
            std::swap(seen.x, seen.y);
          for (std::size_t y = 0; y < h; ++y)
            for (std::size_t x = 0; x < w; ++x) {
              const auto [toX, toY] = seen.Target(x, y, w, h);
              ASSERT_EQ(channelOf(ComponentsAt(row, x, y)[0]),
                        channelOf(ComponentsAt(made, toX, toY)[0]))
                  << row.name << " became " << made.name << " at " << x << ", " << y << " of " << w
                  << " x " << h << " " << operation;
            }
        }
}

// --- Places
// ---------------------------------------------------------------------------------------

TEST(ReverseConverter, WorksInPlaceAndFromAView) {
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(testing::Message() << operation);
    TestImage original(8, 6, BayerGB8);
    original.Randomize(9);
    Reversal expected(original, operation), place(operation), viewed(operation);
    place.buffer->CopyImage(&original);
    place.converter.Convert(&place.Image(), place.buffer.Get());
    EXPECT_EQ(AllBytes(&place.Image()), AllBytes(&expected.Image()));
    EXPECT_EQ(place.Format(), expected.Format());
    if (operation.IsNone()) continue;
    viewed.buffer->CreateBuffer(12, 12, BayerGB8, QvMemoryInitialization_Zero);
    IQvImage* view = viewed.Image().GetROIImage(2, 4, 8, 6);
    for (std::size_t y = 0; y < 6; ++y)
      std::memcpy(Bytes(view) + y * view->GetImageLinePitch(), original.Line(y), 8);
    viewed.converter.Convert(view, viewed.buffer.Get());
    EXPECT_EQ(AllBytes(&viewed.Image()), AllBytes(&expected.Image()));
  }
}

// --- Refusals
// -------------------------------------------------------------------------------------

TEST(ReverseConverter, RefusesInItsOwnWords) {
  CQvReverseConverter converter;
  const Buffer buffer = MakeBuffer();
  for (bool reverse : {false, true}) {
    converter.SetReverseX(reverse);
    EXPECT_EQ(MessageOf<GenICam::InvalidArgumentException>(
                  [&] { converter.Convert(nullptr, buffer.Get()); }),
              "IQvImage pointer is NULL.");
  }
  TestImage packed(4, 4, Mono10p);
  EXPECT_THROW(converter.Convert(&packed, buffer.Get()), GenICam::RuntimeException);
  EXPECT_FALSE(buffer->HasImageBuffer());
  EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>(
                [&] { converter.SetRotationMode(static_cast<EQvRotationMode_t>(3)); }),
            "eRM = 3 must be smaller than Max = 3");
}

TEST(ReverseConverterDeathTest, AssertsItsDestination) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  CQvReverseConverter converter;
  TestImage source(4, 4, Mono8);
  for (IQvImage* image : {static_cast<IQvImage*>(&source), static_cast<IQvImage*>(nullptr)})
    EXPECT_DEATH(converter.Convert(image, nullptr), "\\(pDestIQvImageInside\\) != NULL");
}

// --- Node map and registers
// -----------------------------------------------------------------------

TEST(ReverseConverter, NodeMapAndSettersAreTheSameSettings) {
  CQvReverseConverter converter;
  ExpectDocumentMatchesRegisters(converter);
  EXPECT_STREQ(converter.GetIQvConverterInfo()->GetConverterName().c_str(), "Reverse");
  EXPECT_EQ(converter.GetLinePitchAlignment(), 1U);
  GenApi::INodeMap* map = converter.GetINodeMap();
  const GenApi::CBooleanPtr x = map->GetNode("ReverseX"), y = map->GetNode("ReverseY");
  const GenApi::CEnumerationPtr rotation = map->GetNode("RotationMode");
  for (bool value : {true, false}) {
    x->SetValue(value);
    EXPECT_EQ(converter.GetReverseX(), value);
    converter.SetReverseY(!value);
    EXPECT_EQ(y->GetValue(), !value) << "the setter makes the node forget";
  }
  const char* kNames[] = {"OFF", "Clockwise90", "Counterclockwise90"};
  for (unsigned mode : {2U, 1U, 0U}) {
    converter.SetRotationMode(static_cast<EQvRotationMode_t>(mode));
    EXPECT_STREQ(rotation->ToString().c_str(), kNames[mode]);
  }
}

TEST(ReverseConverter, RegistersCheckNothing) {
  CQvReverseConverter converter;
  WriteRegister(converter, 0x10, 1U);
  WriteRegister(converter, 0x18, 2U);  // anything but 1 is off
  WriteRegister(converter, 0x20, 7U);
  EXPECT_TRUE(converter.GetReverseX());
  EXPECT_EQ(ReadRegister<std::uint32_t>(converter, 0x18), 0U);
  EXPECT_EQ(static_cast<unsigned>(converter.GetRotationMode()), 7U);
  // An unknown turn is none.
  TestImage source(4, 2, BayerRG8);
  const Buffer buffer = MakeBuffer();
  converter.Convert(&source, buffer.Get());
  EXPECT_EQ(buffer->GetIQvImage()->GetImageWidth(), 4U);
  EXPECT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), BayerGR8);
}

}  // namespace
}  // namespace QvApi
