// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvReverseConverter.h"

#include <GenApi/GenApi.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/TestImages.h"
#include "QvApi_TL/PixelFormatFamilies.h"
#include "QvApi_TL/PixelLayout.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

/// The settings, with what they stand for: mirrors first, then the turn.
struct Setting3 {
  EQvRotationMode_t rotation;
  bool x, y;
  unsigned mode;
};
constexpr Setting3 kSettings[] = {
    {QvRotationMode_OFF, false, false, 0},
    {QvRotationMode_OFF, true, false, 1},
    {QvRotationMode_OFF, false, true, 2},
    {QvRotationMode_OFF, true, true, 3},
    {QvRotationMode_Clockwise90, false, false, 4},
    {QvRotationMode_Clockwise90, true, false, 7},
    {QvRotationMode_Clockwise90, false, true, 6},
    {QvRotationMode_Clockwise90, true, true, 5},
    {QvRotationMode_Counterclockwise90, false, false, 5},
    {QvRotationMode_Counterclockwise90, true, false, 6},
    {QvRotationMode_Counterclockwise90, false, true, 7},
    {QvRotationMode_Counterclockwise90, true, true, 4},
};

void Set(IQvReverseConverter& converter, const Setting3& setting) {
  converter.SetReverseX(setting.x);
  converter.SetReverseY(setting.y);
  converter.SetRotationMode(setting.rotation);
}

/// Where pixel (x, y) of a w x h image goes, one step after the other.
std::array<std::size_t, 2> Target(const Setting3& setting, std::size_t x, std::size_t y,
                                  std::size_t w, std::size_t h) {
  if (setting.x) x = w - 1 - x;
  if (setting.y) y = h - 1 - y;
  if (setting.rotation == QvRotationMode_Clockwise90) return {h - 1 - y, x};
  if (setting.rotation == QvRotationMode_Counterclockwise90) return {y, w - 1 - x};
  return {x, y};
}

bool IsTurned(const Setting3& setting) { return setting.rotation != QvRotationMode_OFF; }

/// Bytes of a pixel, and those of them that go along: all but alpha.
std::size_t PixelBytes(PixelFormat format) { return Info(format).GetTotalBitCount() / 8; }
std::size_t MovedBytes(PixelFormat format) {
  const bool hasAlpha = Info(format).GetComponentCount() == 4;
  return hasAlpha ? PixelBytes(format) / 4 * 3 : PixelBytes(format);
}

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
    count += IsTaken(row.format) ? 1 : 0;
  }
  EXPECT_EQ(count, 88U);
}

/// An image of old bytes in a buffer that is large enough for what comes.
Buffer MakeOld(PixelFormat format) {
  Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(80, 80, BGRa16, QvMemoryInitialization_One);
  buffer->SetSize(1, 1, format, 1);
  return buffer;
}

TEST(ReverseConverter, MovesEveryPixelToItsPlace) {
  unsigned turn = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    if (!IsTaken(row.format)) continue;
    for (const auto& [w, h] :
         {std::array<std::size_t, 2>{1, 1}, {2, 3}, {7, 5}, {40, 36}, {33, 50}})
      for (const Setting3& setting : kSettings) {
        if (setting.mode == 0) continue;
        const std::size_t alignment = 1 + ++turn % 6;
        TestImage source(w, h, row.format, turn % 3);
        const auto before = source.Randomize(turn).All();
        CQvReverseConverter converter;
        Set(converter, setting);
        converter.SetLinePitchAlignment(alignment);
        const Buffer buffer = MakeOld(row.format);
        converter.Convert(&source, buffer.Get());

        IQvImage& made = *buffer->GetIQvImage();
        const std::size_t width = IsTurned(setting) ? h : w, height = IsTurned(setting) ? w : h;
        ASSERT_EQ(made.GetImageWidth(), width);
        ASSERT_EQ(made.GetImageHeight(), height);
        ASSERT_EQ(made.GetImageLinePitch(), Info(row.format).GetLinePitch(width, alignment));
        const std::size_t step = PixelBytes(row.format), moved = MovedBytes(row.format);
        std::vector<std::uint8_t> expected(height * made.GetImageLinePitch(), 0xFF);
        for (std::size_t y = 0; y < h; ++y)
          for (std::size_t x = 0; x < w; ++x) {
            const auto [toX, toY] = Target(setting, x, y, w, h);
            // Whole lines are copied when just their order changes.
            std::memcpy(&expected[toY * made.GetImageLinePitch() + toX * step],
                        source.Line(y) + x * step, setting.mode == 2 ? step : moved);
          }
        auto all = AllBytes(&made);
        if (setting.mode == 2) {
          for (std::size_t y = 0; y < height; ++y)  // with what stands behind their pixels
            for (std::size_t i = width * step; i < made.GetImageLinePitch(); ++i)
              all[y * made.GetImageLinePitch() + i] = 0xFF;
        }
        ASSERT_EQ(all, expected) << row.name << " " << w << " x " << h << " mode " << setting.mode;
        ASSERT_EQ(source.All(), before);
      }
  }
}

// --- Labels
// ---------------------------------------------------------------------------------------

/// The physical argument: whatever happens to a mosaic, a sample keeps its colour and polarizer.
/// One thing is otherwise: mirrored arrangements that are turned ("C") get the name of the mirror,
/// which in them stands for the one along the other axis, as the turn comes after it.
TEST(ReverseConverter, SamplesOfMosaicsKeepTheirColors) {
  for (const PixelFormatRow& row : kPixelFormats) {
    if (!IsTaken(row.format) || (!row.IsBayer() && !row.IsPolarized())) continue;
    for (std::size_t w : {4, 5, 8, 11})
      for (std::size_t h : {4, 7, 8, 9}) {
        // Arrangements of polarizers are named for whole tiles only.
        if (row.IsPolarized() && (w % 4 != 0 || h % 4 != 0)) continue;
        for (const Setting3& setting : kSettings) {
          if (setting.mode == 0) continue;
          TestImage source(w, h, row.format);
          CQvReverseConverter converter;
          Set(converter, setting);
          const Buffer buffer = MakeBuffer();
          converter.Convert(&source, buffer.Get());
          const PixelFormat format = buffer->GetIQvImage()->GetImagePixelFormat();
          const PixelFormatRow& made = *FindPixelFormat(format);
          Setting3 seen = setting;
          if (row.polarizerPattern > 4 && setting.mode < 3) std::swap(seen.x, seen.y);
          for (std::size_t y = 0; y < h; ++y)
            for (std::size_t x = 0; x < w; ++x) {
              const auto [toX, toY] = Target(seen, x, y, w, h);
              // Both greens of a Bayer mosaic are green; which row they share changes in a turn.
              const auto channelOf = [](EQvPixelComponent_t component) {
                auto code = static_cast<std::uint32_t>(component);
                const std::uint32_t channel = code >> 24;
                if (channel == 5 || channel == 6) code = (code & 0xFFFFFF) | 3U << 24;
                return code;
              };
              ASSERT_EQ(channelOf(ComponentsAt(row, x, y)[0]),
                        channelOf(ComponentsAt(made, toX, toY)[0]))
                  << row.name << " became " << made.name << " at " << x << ", " << y << " of " << w
                  << " x " << h << " mode " << setting.mode;
            }
        }
      }
  }
}

TEST(ReverseConverter, KnownLabels) {
  const struct {
    const char* from;
    Setting3 setting;
    std::size_t width, height;
    const char* to;
  } kLabels[] = {
      {"BayerRG8", kSettings[1], 4, 4, "BayerGR8"},
      {"BayerRG8", kSettings[1], 5, 4, "BayerRG8"},
      {"BayerRG8", kSettings[4], 4, 4, "BayerGR8"},
      {"BayerRG8", kSettings[8], 4, 4, "BayerGB8"},
      {"BayerGR8", kSettings[4], 4, 5, "BayerGB8"},
      {"BayerGB16", kSettings[3], 4, 4, "BayerGR16"},
      {"Pol1Mono8", kSettings[4], 4, 4, "Pol1MonoC8"},
      {"Pol1Mono8", kSettings[4], 5, 3, "Pol1MonoC8"},  // whatever the size
      {"Pol1BayerRGX12", kSettings[2], 8, 8, "Pol1BayerRGXY12"},
      {"Pol1MonoXYC10", kSettings[8], 4, 4, "Pol1MonoXY10"},
      {"Mono12", kSettings[4], 4, 3, "Mono12"},
      {"YCbCr8", kSettings[1], 4, 3, "YCbCr8"},
  };
  for (const auto& label : kLabels) {
    TestImage source(label.width, label.height, FormatOf(label.from));
    CQvReverseConverter converter;
    Set(converter, label.setting);
    const Buffer buffer = MakeBuffer();
    converter.Convert(&source, buffer.Get());
    EXPECT_EQ(NameOf(buffer->GetIQvImage()->GetImagePixelFormat()), label.to) << label.from;
  }
}

TEST(ReverseConverter, PolarizerArrangementsFollowTheTable) {
  constexpr std::size_t kTable[8][8] = {{0, 1, 2, 3, 4, 5, 6, 7}, {1, 0, 3, 2, 5, 4, 7, 6},
                                        {2, 3, 0, 1, 6, 7, 4, 5}, {3, 2, 1, 0, 7, 6, 5, 4},
                                        {4, 5, 6, 7, 3, 2, 1, 0}, {7, 6, 5, 4, 0, 1, 2, 3},
                                        {6, 7, 4, 5, 2, 3, 0, 1}, {5, 4, 7, 6, 1, 0, 3, 2}};
  const char* kLetters[] = {"", "X", "Y", "XY", "C", "XC", "YC", "XYC"};
  for (const char* sensor : {"Pol1Mono", "Pol1BayerRG"})
    for (const char* depth : {"8", "10", "12"})
      for (const Setting3& setting : kSettings)
        for (std::size_t p = 0; p < 8; ++p) {
          TestImage source(6, 4, FormatOf(sensor + std::string(kLetters[p]) + depth));
          CQvReverseConverter converter;
          Set(converter, setting);
          const Buffer buffer = MakeBuffer();
          converter.Convert(&source, buffer.Get());
          EXPECT_EQ(NameOf(buffer->GetIQvImage()->GetImagePixelFormat()),
                    sensor + std::string(kLetters[kTable[setting.mode][p]]) + depth);
        }
}

// --- What is special about no operation, and about a place of its own
// ------------------------------

TEST(ReverseConverter, WithoutAnOperationItCopiesAnything) {
  CQvReverseConverter converter;
  converter.SetLinePitchAlignment(64);
  for (const PixelFormatRow& row : kPixelFormats) {
    TestImage source(6, 4, row.format, 3);
    source.Randomize(1, false);
    const Buffer made = MakeBuffer(), copied = MakeBuffer();
    converter.Convert(&source, made.Get());
    copied->CopyImage(&source);
    EXPECT_EQ(made->GetIQvImage()->GetImageLinePitch(), copied->GetIQvImage()->GetImageLinePitch());
    for (std::size_t y = 0; y < 4; ++y)
      EXPECT_EQ(
          std::memcmp(Bytes(made->GetIQvImage()) + y * made->GetIQvImage()->GetImageLinePitch(),
                      source.Line(y), LineBytes(row.format, 6)),
          0)
          << row.name;
  }
}

TEST(ReverseConverter, WorksInPlaceAndFromAView) {
  for (const Setting3& setting : kSettings) {
    CQvReverseConverter converter;
    Set(converter, setting);
    TestImage original(8, 6, BayerGB8);
    original.Randomize(9);
    const Buffer expected = MakeBuffer(), place = MakeBuffer(), viewed = MakeBuffer();
    converter.Convert(&original, expected.Get());
    place->CopyImage(&original);
    const void* memory = place->GetIQvImage()->GetImageBuffer();
    converter.Convert(place->GetIQvImage(), place.Get());
    EXPECT_EQ(AllBytes(place->GetIQvImage()), AllBytes(expected->GetIQvImage())) << setting.mode;
    if (setting.mode == 0) {
      EXPECT_EQ(place->GetIQvImage()->GetImageBuffer(), memory);
      continue;
    }
    EXPECT_EQ(place->GetIQvImage()->GetImagePixelFormat(),
              expected->GetIQvImage()->GetImagePixelFormat());

    viewed->CreateBuffer(12, 12, BayerGB8, QvMemoryInitialization_Zero);
    IQvImage* view = viewed->GetIQvImage()->GetROIImage(2, 4, 8, 6);
    for (std::size_t y = 0; y < 6; ++y)
      std::memcpy(Bytes(view) + y * view->GetImageLinePitch(), original.Line(y), 8);
    converter.Convert(view, viewed.Get());
    EXPECT_EQ(AllBytes(viewed->GetIQvImage()), AllBytes(expected->GetIQvImage())) << setting.mode;
  }
}

// --- Refusals
// -------------------------------------------------------------------------------------

TEST(ReverseConverter, RefusesInItsOwnWords) {
  CQvReverseConverter converter;
  const Buffer buffer = MakeBuffer();
  const auto invalid = [&] {
    return MessageOf<GenICam::InvalidArgumentException>(
        [&] { converter.Convert(nullptr, buffer.Get()); });
  };
  EXPECT_EQ(invalid(), "IQvImage pointer is NULL.");
  converter.SetReverseX(true);
  EXPECT_EQ(invalid(), "IQvImage pointer is NULL.");
  for (const char* name : {"Mono10p", "RGB16", "RGB8_Planar", "YCbCr422_8", "BayerRG12Packed",
                           "CYCbCr420_8_YY_Cb_Cr_Planar", "Pol1Mono10p", "Mono32"}) {
    TestImage source(4, 4, FormatOf(name));
    EXPECT_EQ(
        MessageOf<GenICam::RuntimeException>([&] { converter.Convert(&source, buffer.Get()); }),
        std::string("Not supported pixelformat ") + name);
    EXPECT_FALSE(buffer->HasImageBuffer());
  }
  EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>(
                [&] { converter.SetRotationMode(static_cast<EQvRotationMode_t>(3)); }),
            "eRM = 3 must be smaller than Max = 3");
}

using ReverseConverterDeathTest = testing::Test;

TEST(ReverseConverterDeathTest, AssertsItsDestination) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  CQvReverseConverter converter;
  TestImage source(4, 4, Mono8);
  EXPECT_DEATH(converter.Convert(&source, nullptr), "\\(pDestIQvImageInside\\) != NULL");
  EXPECT_DEATH(converter.Convert(nullptr, nullptr), "\\(pDestIQvImageInside\\) != NULL");
}

// --- Node map and registers
// -----------------------------------------------------------------------

TEST(ReverseConverter, NodeMapAndSettersAreTheSameSettings) {
  const Initialized initialized;
  const CQvAutoPtr<IQvConverterReleasable, IQvReverseConverter> released{
      CreateIQvConverter(QvConverterType_Reverse)};
  IQvReverseConverter& converter = *released.Get();
  EXPECT_EQ(converter.GetIQvConverterInfo()->GetConverterType(), QvConverterType_Reverse);
  EXPECT_STREQ(converter.GetIQvConverterInfo()->GetConverterName().c_str(), "Reverse");
  EXPECT_TRUE(converter.GetIQvConverterInfo()->IsSupported(BayerRG8));
  EXPECT_FALSE(converter.GetIQvConverterInfo()->IsSupported(Mono10p));
  EXPECT_EQ(converter.GetLinePitchAlignment(), 1U);
  EXPECT_EQ(converter.GetRotationMode(), QvRotationMode_OFF);

  GenApi::INodeMap* map = converter.GetINodeMap();
  const GenApi::CBooleanPtr x = map->GetNode("ReverseX"), y = map->GetNode("ReverseY");
  const GenApi::CEnumerationPtr rotation = map->GetNode("RotationMode");
  ASSERT_TRUE(x.IsValid() && y.IsValid() && rotation.IsValid());
  EXPECT_FALSE(x->GetValue());
  x->SetValue(true);
  EXPECT_TRUE(converter.GetReverseX());
  EXPECT_FALSE(converter.GetReverseY());
  EXPECT_FALSE(y->GetValue());
  converter.SetReverseY(true);
  EXPECT_TRUE(y->GetValue()) << "the setter makes the node forget";
  converter.SetReverseX(false);
  EXPECT_FALSE(x->GetValue());
  const char* kNames[] = {"OFF", "Clockwise90", "Counterclockwise90"};
  for (unsigned mode : {2U, 1U, 0U}) {
    converter.SetRotationMode(static_cast<EQvRotationMode_t>(mode));
    EXPECT_EQ(rotation->GetIntValue(), mode);
    EXPECT_STREQ(rotation->ToString().c_str(), kNames[mode]);
  }
  rotation->FromString("Counterclockwise90");
  EXPECT_EQ(converter.GetRotationMode(), QvRotationMode_Counterclockwise90);
  EXPECT_STREQ(map->GetDeviceName().c_str(), "Device");
  EXPECT_EQ(GenApi::CRegisterPtr(map->GetNode("ReverseXReg"))->GetAddress(), 0x10);
  EXPECT_EQ(GenApi::CRegisterPtr(map->GetNode("ReverseYReg"))->GetAddress(), 0x18);
  EXPECT_EQ(GenApi::CRegisterPtr(map->GetNode("RotationModeReg"))->GetAddress(), 0x20);
}

TEST(ReverseConverter, RegistersCheckNothing) {
  CQvReverseConverter converter;
  const auto write = [&](std::int64_t address, std::uint32_t value) {
    converter.Write(&value, address, 4);
  };
  const auto read = [&](std::int64_t address) {
    std::uint32_t value = 0xEEEEEEEE;
    converter.Read(&value, address, 4);
    return value;
  };
  write(0x10, 1);
  write(0x18, 2);  // anything but 1 is off
  EXPECT_TRUE(converter.GetReverseX());
  EXPECT_FALSE(converter.GetReverseY());
  EXPECT_EQ(read(0x10), 1U);
  EXPECT_EQ(read(0x18), 0U);
  write(0x20, 7);
  EXPECT_EQ(read(0x20), 7U);
  EXPECT_EQ(static_cast<unsigned>(converter.GetRotationMode()), 7U);
  EXPECT_EQ(read(0x24), 0xEEEEEEEE);

  // An unknown turn is none.
  TestImage source(4, 2, BayerRG8);
  const Buffer buffer = MakeBuffer();
  converter.Convert(&source, buffer.Get());
  EXPECT_EQ(buffer->GetIQvImage()->GetImageWidth(), 4U);
  EXPECT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), BayerGR8);
}

}  // namespace
}  // namespace QvApi
