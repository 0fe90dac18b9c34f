// SPDX-License-Identifier: MIT
// Readers, setters and new series while the worker measures.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvSNMeasurementFilter.h"

namespace QvApi {
namespace {

using namespace Testing;

TEST(SNMeasurementThreads, ResultsAreOfOneMeasurement) {
  const Initialized initialized;
  CQvSNMeasurementFilter filter;
  filter.SetFrameCount(2);
  filter.SetROIMode(QvROIMode_Manual);
  GenApi::INodeMap* const map = filter.GetINodeMap();
  std::atomic<bool> isOver = false;
  std::vector<std::jthread> threads;
  const auto repeat = [&](auto action) {
    threads.emplace_back([&, action] {
      for (unsigned i = 0; !isOver; ++i) action(i);
    });
  };
  // Both rows of a mosaic are as wide, and each of its columns has one level.
  repeat([&](unsigned i) {
    TestImage image(40, 30, i % 50 < 25 ? PixelFormat::BayerRG8 : PixelFormat::BayerRG12);
    for (std::size_t y = 0; y < 30; ++y)
      for (std::size_t x = 0; x < 40; ++x) SetSample(image, x, y, x % 2 ? 200 : 100);
    filter.Filter(&image);
  });
  repeat([&](unsigned i) { filter.SetWidth(2 + i % 20 * 2); });
  repeat([&](unsigned i) { GenApi::CIntegerPtr(map->GetNode("Height"))->SetValue(1 + i % 30); });
  repeat([&](unsigned i) {
    if (i % 16 == 0) filter.ClearGrabbedImage();
    if (i % 16 == 8) GenApi::CCommandPtr(map->GetNode("ClearGrabbedImage"))->Execute();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  repeat([&](unsigned) {
    try {
      GenApi::CIntegerPtr(map->GetNode("PixelComponentIndex"))->SetValue(1);
      const double average = GenApi::CFloatPtr(map->GetNode("Average"))->GetValue();
      EXPECT_EQ(average, 200);
    } catch (const GenICam::GenericException&) {  // The results may have gone.
    }
  });
  for (int reads = 0; reads < 5000;) {
    filter.RetrieveIQvSNMeasurementResult(1, QvTimeoutHandling_ReturnNull);
    try {
      std::size_t count = 0;
      double average = 0, frameSD = -1;
      filter.GetSNMeasurementValue(2, nullptr, &count, &average, nullptr, &frameSD);
      EXPECT_EQ(average, count == 0 ? 0 : 100) << count;
      EXPECT_EQ(frameSD, 0);
      ++reads;
    } catch (const GenICam::OutOfRangeException&) {
    }
  }
  isOver = true;
  threads.clear();
  TestImage image(40, 30, PixelFormat::Mono8);
  filter.ClearGrabbedImage();
  for (int i = 0; i < 2; ++i) filter.Filter(&image);
  EXPECT_NE(filter.RetrieveIQvSNMeasurementResult(kWaitForever, {}), nullptr);
  EXPECT_EQ(filter.GetComponentCount(), 1U);
}

}  // namespace
}  // namespace QvApi
