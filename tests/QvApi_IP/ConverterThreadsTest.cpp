// SPDX-License-Identifier: MIT
// Two threads at work on one converter while a third changes its settings: every result is that of
// settings which the converter had.
#include <atomic>
#include <set>
#include <thread>

#include "QvApi_IP/Conversions.h"

namespace QvApi {
namespace {

using namespace Testing;

/// Runs `work` many times on each of two threads, and `change(i)` on a third meanwhile.
template <class Work, class Change>
void RunThreads(Work work, Change change) {
  std::atomic<int> running = 2;
  std::jthread changer([&] {
    for (unsigned i = 0; running != 0; ++i) change(i), std::this_thread::yield();
  });
  const auto worker = [&] {
    for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) work();
    --running;
  };
  std::jthread first(worker), second(worker);
}

/// What each of the settings makes of the source is all that comes out while they change. Of these
/// there are at least `different`.
void ExpectOutcomesOf(const std::vector<Settings>& settings, PixelFormat from,
                      std::size_t different) {
  TestImage source(13, 8, from, 3);
  source.Randomize(1);
  CQvPixelFormatConverter converter;
  const auto convert = [&](IQvImageBuffer* buffer) {
    converter.Convert(&source, buffer);
    const IQvImage* image = buffer->GetIQvImage();
    std::vector<std::uint8_t> pixels;
    for (std::size_t y = 0; y < image->GetImageHeight(); ++y) {
      const std::uint8_t* line = Bytes(image) + y * image->GetImageLinePitch();
      pixels.insert(pixels.end(), line, line + LineBytes(image->GetImagePixelFormat(), 13));
    }
    return std::pair(image->GetImagePixelFormat(), pixels);
  };
  std::set<std::pair<PixelFormat, std::vector<std::uint8_t>>> outcomes;
  const Buffer single = MakeBuffer();
  for (const Settings& s : settings) Set(converter, s), outcomes.insert(convert(single.Get()));
  ASSERT_GE(outcomes.size(), different);
  RunThreads(
      [&] {
        thread_local const Buffer buffer = MakeBuffer();
        ASSERT_TRUE(outcomes.count(convert(buffer.Get())));
      },
      [&](unsigned i) { Set(converter, settings[i % settings.size()]); });
}

TEST(ConverterThreads, ResultsBelongToSettingsThatTheConverterHad) {
  using enum EQvPixelFormatNamingConvention_t;
  std::vector<Settings> ofMosaics;
  for (PixelFormat to : {BGR8, RGB8, Mono8, BayerRG8})
    for (bool reverse : {false, true})
      for (unsigned method = 0; method < 8; ++method)
        ofMosaics.push_back({.destination = to, .reverse = reverse, .bayerMethod = method});
  ExpectOutcomesOf(ofMosaics, BayerRG8, 2 * 16 + 4);
  ExpectOutcomesOf({{.destination = Mono8, .gamma = 1.0},
                    {.destination = Mono8, .gamma = 2.0},
                    {.destination = Mono8, .gamma = 0.5}},
                   Mono12, 3);
}

TEST(ConverterThreads, ConvertsInPlaceThroughBuffersThatAreNotShared) {
  TestImage source(13, 8, PixelFormat::BayerRG8);
  source.Randomize(2);
  CQvPixelFormatConverter converter;
  const Raster expected = RasterOf(Conversion(converter, source).Image());
  RunThreads(
      [&] {
        const Buffer buffer = MakeBuffer();
        buffer->CopyImage(&source);
        converter.Convert(buffer->GetIQvImage(), buffer.Get());
        ASSERT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), PixelFormat::BGR8);
        ASSERT_EQ(RasterOf(*buffer->GetIQvImage()).values, expected.values);
      },
      [&](unsigned i) { converter.SetGammaValue(i % 2 == 0 ? 1.0 : 2.0); });
}

}  // namespace
}  // namespace QvApi
