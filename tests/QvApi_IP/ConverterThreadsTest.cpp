// SPDX-License-Identifier: MIT
// Two threads at work on one module while a third changes its settings: every result is that of
// settings which the module had.
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "QvApi_IP/QvGammaCorrectionFilter.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;

constexpr int kRounds = 2000;

/// Runs `work` kRounds times on each of two threads, and `change(i)` on a third meanwhile.
template <class Work, class Change>
void RunThreads(Work work, Change change) {
  std::atomic<int> running = 2;
  std::jthread changer([&] {
    for (unsigned i = 0; running != 0; ++i) change(i), std::this_thread::yield();
  });
  const auto worker = [&] {
    for (int i = 0; i < kRounds && !testing::Test::HasFailure(); ++i) work();
    --running;
  };
  std::jthread first(worker), second(worker);
}

TEST(ConverterThreads, ResultsBelongToSettingsThatTheConverterHad) {
  constexpr PixelFormat kFormats[] = {PixelFormat::BGR8, PixelFormat::RGB8, PixelFormat::Mono8,
                                      PixelFormat::BayerRG8};
  TestImage source(13, 8, PixelFormat::BayerRG8, 3);
  source.Randomize(1);
  CQvPixelFormatConverter converter;
  const auto set = [&](unsigned i) {
    converter.SetBayerInterpolationMethod(static_cast<EQvBayerInterpolationMethod_t>(i % 8));
    converter.SetReverseY(i / 8 % 2 != 0);
    converter.SetDestinationPixelFormat(kFormats[i / 16 % 4]);
  };
  const auto convert = [&](IQvImageBuffer* buffer) {
    converter.Convert(&source, buffer);
    const IQvImage* image = buffer->GetIQvImage();
    std::string pixels;
    for (std::size_t y = 0; y < image->GetImageHeight(); ++y) {
      const std::uint8_t* line = Bytes(image) + y * image->GetImageLinePitch();
      pixels.append(line, line + LineBytes(image->GetImagePixelFormat(), image->GetImageWidth()));
    }
    return std::pair(image->GetImagePixelFormat(), pixels);
  };

  std::set<std::pair<PixelFormat, std::string>> outcomes;
  const Buffer single = MakeBuffer();
  for (unsigned i = 0; i < 64; ++i) set(i), outcomes.insert(convert(single.Get()));
  ASSERT_GE(outcomes.size(), 2U * 16U + 4U);
  RunThreads(
      [&] {
        thread_local const Buffer buffer = MakeBuffer();
        ASSERT_TRUE(outcomes.count(convert(buffer.Get())));
      },
      set);
}

TEST(ConverterThreads, DepthTablesBelongToGammasThatTheConverterHad) {
  constexpr double kGammas[] = {1.0, 2.0, 0.5};
  TestImage source(50, 3, PixelFormat::Mono12);
  source.Randomize(4);
  CQvPixelFormatConverter converter;
  converter.SetDestinationPixelFormat(PixelFormat::Mono8);
  converter.SetLinePitchAlignment(1);
  const auto convert = [&](IQvImageBuffer* buffer) {
    converter.Convert(&source, buffer);
    const auto bytes = AllBytes(buffer->GetIQvImage());
    return std::string(bytes.begin(), bytes.end());
  };
  std::set<std::string> outcomes;
  const Buffer single = MakeBuffer();
  for (double gamma : kGammas) {
    converter.SetGammaValue(gamma);
    outcomes.insert(convert(single.Get()));
  }
  ASSERT_EQ(outcomes.size(), 3U);
  RunThreads(
      [&] {
        thread_local const Buffer buffer = MakeBuffer();
        ASSERT_TRUE(outcomes.count(convert(buffer.Get())));
      },
      [&](unsigned i) { converter.SetGammaValue(kGammas[i % 3]); });
}

TEST(ConverterThreads, ConvertsInPlaceThroughBuffersThatAreNotShared) {
  TestImage source(13, 8, PixelFormat::BayerRG8);
  source.Randomize(2);
  CQvPixelFormatConverter converter;
  const Buffer single = MakeBuffer();
  converter.Convert(&source, single.Get());
  const auto expected = AllBytes(single->GetIQvImage());
  RunThreads(
      [&] {
        const Buffer buffer = MakeBuffer();
        buffer->CopyImage(&source);
        converter.Convert(buffer->GetIQvImage(), buffer.Get());
        ASSERT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), PixelFormat::BGR8);
        auto pixels = AllBytes(buffer->GetIQvImage());
        for (std::size_t y = 0; y < 8; ++y)  // the padding is anyone's
          for (std::size_t i = 0; i < 39; ++i) ASSERT_EQ(pixels[y * 40 + i], expected[y * 40 + i]);
      },
      [&](unsigned i) { converter.SetGammaValue(i % 2 == 0 ? 1.0 : 2.0); });
}

TEST(GammaThreads, ResultsBelongToGammasThatTheFilterHad) {
  constexpr double kGammas[] = {1.0, 2.0, 0.5};
  CQvGammaCorrectionFilter filter;
  // Different depths, so that each takes the cached table from the other.
  std::map<PixelFormat, std::set<std::string>> outcomes;
  for (PixelFormat format : {PixelFormat::Mono8, PixelFormat::BGR10})
    for (double gamma : kGammas) {
      TestImage image(50, 3, format, 2);
      image.Randomize(3);
      filter.SetGammaValue(gamma);
      filter.Filter(&image);
      outcomes[format].emplace(image.All().begin(), image.All().end());
    }
  std::atomic<unsigned> turn = 0;
  RunThreads(
      [&] {
        const PixelFormat format = turn++ % 2 == 0 ? PixelFormat::Mono8 : PixelFormat::BGR10;
        TestImage image(50, 3, format, 2);
        image.Randomize(3);
        filter.Filter(&image);
        ASSERT_TRUE(outcomes.at(format).count({image.All().begin(), image.All().end()}));
      },
      [&](unsigned i) {
        const double gamma = kGammas[i % 3];
        if (i % 2 == 0)
          filter.SetGammaValue(gamma);
        else if (i % 4 == 1)
          filter.Write(&gamma, 0x10, 8);
        else
          GenApi::CFloatPtr(filter.GetINodeMap()->GetNode("Gamma"))->SetValue(gamma);
      });
}

}  // namespace
}  // namespace QvApi
