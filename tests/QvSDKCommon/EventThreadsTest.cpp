// SPDX-License-Identifier: MIT
// Events, gate and worker under many threads. What is lost here shows as a test that hangs.
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "QvSDKCommon/CLockBySemaphore.h"
#include "QvSDKCommon/EventObject.h"
#include "QvSDKCommon/Worker.h"

namespace QvApi {
namespace {

constexpr int kRounds = 4000;

CEventObject Make(bool manualReset) { return {nullptr, manualReset, false, nullptr}; }

/// Each signal of an automatic-reset event lets one thread through, however threads wait for it.
TEST(EventThreadsTest, EachSignalIsTakenOnce) {
  CEventObject work = Make(false), done = Make(false), stop = Make(true);
  void* const workOrStop[]{&stop, &work};
  std::atomic<int> taken{0};
  const std::function<unsigned int()> waits[]{
      [&] { return WaitForMultipleObjects(2, workOrStop, false, kWaitForever); },
      [&] { return WaitForMultipleObjects(2, workOrStop, false, 1); },
      [&] { return WaitForMultipleObjects(2, workOrStop, false, 0); },
      [&] { return WaitForSingleObject(&work, 1) == 0 ? 1u : WaitForSingleObject(&stop, 0); }};
  std::vector<std::jthread> threads;
  for (const auto& wait : waits) {
    threads.emplace_back([&] {
      for (unsigned int result; (result = wait()) != 0;) {
        if (result != 1) continue;
        ++taken;
        done.SetEvent();
      }
    });
  }
  for (int i = 0; i < kRounds; ++i) {
    work.SetEvent();
    ASSERT_EQ(WaitForSingleObject(&done, kWaitForever), 0u);
  }
  stop.SetEvent();
  threads.clear();
  EXPECT_EQ(taken, kRounds);
}

/// Waits for all that meet others for the same events, one of them a thief that brings back.
TEST(EventThreadsTest, WaitsForAllTakeAllOrNothing) {
  CEventObject first = Make(false), second = Make(false), done = Make(false);
  void* const events[]{&first, &second, &first};
  std::atomic<int> taken{0};
  std::atomic<bool> isOver{false};
  const auto give = [&] {
    second.SetEvent();
    first.SetEvent();
  };
  std::vector<std::jthread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, order = events + t % 2] {
      while (WaitForMultipleObjects(2, order, true, kWaitForever) == 0 && !isOver) {
        ++taken;
        done.SetEvent();
      }
      give();  // Lets out the next.
    });
  }
  threads.emplace_back([&] {
    while (!isOver)
      if (WaitForSingleObject(&second, 1) == 0) second.SetEvent();
  });
  for (int i = 0; i < kRounds; ++i) {
    give();
    ASSERT_EQ(WaitForSingleObject(&done, kWaitForever), 0u);
  }
  EXPECT_EQ(taken, kRounds);
  isOver = true;
  give();
}

TEST(EventThreadsTest, ManualResetLetsEverybodyThrough) {
  constexpr int kThreads = 4;
  CEventObject gate = Make(true), never = Make(true);
  void* const events[]{&never, &gate};
  std::barrier round(kThreads + 1);
  std::vector<std::jthread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, isSingle = t % 2 == 0] {
      for (int i = 0; i < kRounds / 4; ++i) {
        if (isSingle)
          EXPECT_EQ(WaitForSingleObject(&gate, kWaitForever), 0u);
        else
          EXPECT_EQ(WaitForMultipleObjects(2, events, false, kWaitForever), 1u);
        round.arrive_and_wait();
        round.arrive_and_wait();
      }
    });
  }
  for (int i = 0; i < kRounds / 4; ++i) {
    gate.SetEvent();
    round.arrive_and_wait();
    gate.ResetEvent();
    round.arrive_and_wait();
  }
}

TEST(GateThreadsTest, CountStaysBetweenZeroAndMaximum) {
  CLockBySemaphore single(1);
  single.LockMaxMinusOne();  // A new gate is shut, but here is nothing to wait for.
  CLockBySemaphore gate(3);
  gate.UnlockMaxMinusOne();
  gate.LockMaxMinusOne();  // Takes one unit of the two.
  gate.Lock();
  for (int i = 0; i < 5; ++i) gate.Unlock();  // Two of them have nothing to take away.
  std::atomic<int> inside{0};
  std::atomic<bool> isFull{false};
  std::vector<std::jthread> threads;
  for (int t = 0; t < 6; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kRounds / 4; ++i) {
        gate.Lock();
        const int now = ++inside;
        if (now == 3) isFull = true;
        EXPECT_LE(now, 3);
        std::this_thread::yield();
        --inside;
        gate.Unlock();
      }
    });
  }
  threads.clear();
  EXPECT_TRUE(isFull);
}

class Worker : public CWorker {
 public:
  Worker() : CWorker("test") {}
  ~Worker() override { Stop(); }
  using CWorker::IsRunning;
  std::atomic<int> starts{0}, ends{0};
  CEventObject reached = Make(false);

 private:
  /// Every fourth time as it should be, else another way to end.
  int mWork() override {
    const int start = ++starts;
    reached.SetEvent();
    if (start % 4 == 1) throw std::runtime_error("body");
    if (start % 4 == 2) throw start;
    if (start % 4 == 3) Stop();  // From within: a request.
    EXPECT_TRUE(IsRunning());
    EXPECT_TRUE(IsStopRequest(kWaitForever));
    return ++ends;
  }
};

TEST(WorkerThreadsTest, RunsFromStartToStopWhateverTheBodyDoes) {
  Worker worker;
  worker.Stop();
  for (int i = 1; i <= 400; ++i) {
    worker.Start();
    if (i % 3 != 0) {
      EXPECT_EQ(WaitForSingleObject(&worker.reached, kWaitForever), 0u);
    }
    if (i % 5 == 0) continue;  // The next start ends this one.
    worker.Stop();
    worker.Stop();
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_EQ(worker.starts, i);
    EXPECT_EQ(worker.ends, i / 4 * 2 + (i % 4 == 3));
  }
}

}  // namespace
}  // namespace QvApi
