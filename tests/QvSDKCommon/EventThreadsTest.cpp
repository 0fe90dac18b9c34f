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

/// What `give()` signals in each round must be taken once, whichever of the threads does.
void ExpectTakenOnce(const std::vector<std::function<bool()>>& waits, CEventObject& done,
                     const std::function<void()>& give) {
  std::atomic<int> taken{0};
  std::atomic<bool> isOver{false};
  std::vector<std::jthread> threads;
  for (const auto& wait : waits) {
    threads.emplace_back([&] {
      while (!isOver) {
        if (!wait() || isOver) continue;
        ++taken;
        done.SetEvent();
      }
      give();  // Lets out the next.
    });
  }
  for (int i = 0; i < kRounds; ++i) {
    give();
    ASSERT_EQ(WaitForSingleObject(&done, kWaitForever), 0u);
  }
  EXPECT_EQ(taken, kRounds);
  isOver = true;
  give();
}

TEST(EventThreadsTest, EachSignalIsTakenOnce) {
  CEventObject work = Make(false), done = Make(false), never = Make(true);
  void* const events[]{&never, &work};
  ExpectTakenOnce({[&] { return WaitForMultipleObjects(2, events, false, kWaitForever) == 1; },
                   [&] { return WaitForMultipleObjects(2, events, false, 1) == 1; },
                   [&] { return WaitForMultipleObjects(2, events, false, 0) == 1; },
                   [&] { return WaitForSingleObject(&work, kWaitForever) == 0; },
                   [&] { return WaitForSingleObject(&work, 1) == 0; }},
                  done, [&] { work.SetEvent(); });
}

/// The waits meet each other, and a thief that brings back.
TEST(EventThreadsTest, WaitsForAllTakeAllOrNothing) {
  CEventObject first = Make(false), second = Make(false), done = Make(false);
  void* const events[]{&first, &second, &first};
  const auto takeAll = [](void* const* from) {
    return WaitForMultipleObjects(2, from, true, kWaitForever) == 0;
  };
  ExpectTakenOnce({[&] { return takeAll(events); }, [&] { return takeAll(events + 1); },
                   [&] { return takeAll(events); },
                   [&] {
                     if (WaitForSingleObject(&second, 1) == 0) second.SetEvent();
                     return false;
                   }},
                  done, [&] {
                    second.SetEvent();
                    first.SetEvent();
                  });
}

TEST(EventThreadsTest, ManualResetLetsEverybodyThrough) {
  CEventObject gate = Make(true), never = Make(true);
  void* const events[]{&never, &gate};
  std::barrier round(4);
  const auto repeat = [&](auto action, auto then) {
    for (int i = 0; i < kRounds / 4; ++i) {
      action();
      round.arrive_and_wait();
      then();
      round.arrive_and_wait();
    }
  };
  const auto single = [&] { EXPECT_EQ(WaitForSingleObject(&gate, kWaitForever), 0u); };
  const auto any = [&] { EXPECT_EQ(WaitForMultipleObjects(2, events, false, kWaitForever), 1u); };
  const auto nothing = [] {};
  const std::jthread threads[]{std::jthread([&] { repeat(single, nothing); }),
                               std::jthread([&] { repeat(single, nothing); }),
                               std::jthread([&] { repeat(any, nothing); })};
  repeat([&] { gate.SetEvent(); }, [&] { gate.ResetEvent(); });
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
