// SPDX-License-Identifier: MIT
#include <GenApi/GenApi.h>
#include <gtest/gtest.h>

#include <barrier>
#include <set>
#include <thread>
#include <vector>

#include "QvApi_IP/QvGammaCorrectionFilter.h"

namespace QvApi {
namespace {

TEST(ModuleThreads, FirstNodeMapIsMadeOnce) {
  constexpr int kThreads = 4;
  for (int round = 0; round < 10; ++round) {
    CQvGammaCorrectionFilter filter;
    GenApi::INodeMap* maps[kThreads]{};
    std::barrier start(kThreads);
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i)
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        if (i == 0) filter.SetGammaValue(2.0);  // tells the map if there is one by now
        maps[i] = filter.GetINodeMap();
        GenApi::CFloatPtr(maps[i]->GetNode("Gamma"))->SetValue(3.0);
        EXPECT_GE(GenApi::CFloatPtr(maps[i]->GetNode("Gamma"))->GetValue(), 1.0);
      });
    threads.clear();
    EXPECT_EQ(std::set<GenApi::INodeMap*>(maps, maps + kThreads).size(), 1U);
    EXPECT_NE(maps[0], nullptr);
    EXPECT_NE(filter.GetGammaValue(), 1.0);
  }
}

TEST(ModuleThreads, TemporaryBuffersAreNeverSharedAtOneTime) {
  CQvGammaCorrectionFilter filter;
  std::vector<std::jthread> threads;
  for (std::uint8_t id = 1; id <= 3; ++id)
    threads.emplace_back([&, id] {
      for (int i = 0; i < 300; ++i) {
        const TemporaryBuffer buffer(filter);
        buffer->SetSize(8, 8, PixelFormat::Mono8, 0);
        auto* pixels = static_cast<std::uint8_t*>(buffer->GetIQvImage()->GetImageBuffer());
        for (int p = 0; p < 64; ++p) pixels[p] = id;
        std::this_thread::yield();
        for (int p = 0; p < 64; ++p) ASSERT_EQ(pixels[p], id);
      }
    });
}

}  // namespace
}  // namespace QvApi
