// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvInitialize.h"

#include <Base/GCException.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace QvApi {
namespace {

TEST(Initialize, IsCounted) {
  EXPECT_THROW(CheckQvApiInitialized(), GenICam::RuntimeException);
  EXPECT_THROW(QvApiTerminate(), GenICam::RuntimeException);
  EXPECT_THROW(CheckQvApiInitialized(), GenICam::RuntimeException);
  QvApiInitialize();
  QvApiInitialize();
  QvApiTerminate();
  EXPECT_NO_THROW(CheckQvApiInitialized());
  QvApiTerminate();
  EXPECT_THROW(CheckQvApiInitialized(), GenICam::RuntimeException);
}

TEST(Initialize, CountsEveryThread) {
  std::atomic<int> refused{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&refused] {
      for (int i = 0; i < 1000; ++i) {
        QvApiInitialize();
        try {
          CheckQvApiInitialized();
          QvApiTerminate();
        } catch (const GenICam::RuntimeException&) {
          ++refused;
        }
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(refused, 0);
  EXPECT_THROW(QvApiTerminate(), GenICam::RuntimeException);
}

}  // namespace
}  // namespace QvApi
