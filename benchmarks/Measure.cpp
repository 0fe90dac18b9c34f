// SPDX-License-Identifier: MIT
#include "Measure.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <numeric>

namespace Bench {

namespace {

struct Runner {
  std::function<void()> restore, run;
  std::vector<double> times = {};  // ms

  void RunOnce() {
    using Clock = std::chrono::steady_clock;
    if (restore) restore();
    const Clock::time_point start = Clock::now();
    run();
    times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
  }

  bool IsDone(const Effort& effort) const {
    const double spent = std::accumulate(times.begin(), times.end(), 0.0) / 1000;
    return times.size() >= effort.leastRounds && spent > effort.seconds;
  }

  double Median() {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
  }
};

// Keeps the compiler from dropping a copy that nobody reads.
void* (*volatile g_memcpy)(void*, const void*, std::size_t) = std::memcpy;

// Where the operation's image is written anew before each run, so is the source of the copy.
Runner MakeMemcpy(std::size_t size, bool inPlace, std::vector<std::vector<std::uint8_t>>& memory) {
  memory.assign(3, std::vector<std::uint8_t>(size, 1));
  std::uint8_t *original = memory[0].data(), *source = memory[1].data(), *target = memory[2].data();
  Runner runner{{}, [=] { g_memcpy(target, source, size); }};
  if (inPlace) runner.restore = [=] { g_memcpy(source, original, size); };
  return runner;
}

}  // namespace

double Result::Ratio(Yardstick yardstick) const {
  const double unit = yardstick == Yardstick::Memcpy       ? memcpyMilliseconds
                      : yardstick == Yardstick::PlainWrite ? plainWriteMilliseconds
                                                           : bestPeerMilliseconds;
  return unit > 0 ? milliseconds / unit : 0;
}

Result Measure(const Operation& operation, const Effort& effort) {
  std::vector<std::vector<std::uint8_t>> memory;
  std::vector<Runner> runners;
  runners.push_back({operation.restore, operation.run});
  runners.push_back(MakeMemcpy((operation.bytesRead + operation.bytesWritten) / 2,
                               operation.restore != nullptr, memory));
  for (const Contender& peer : operation.peers) runners.push_back({operation.restore, peer.run});
  if (operation.plainWrite) runners.push_back({{}, operation.plainWrite});

  for (Runner& runner : runners) {
    runner.RunOnce();  // tables are built and memory is mapped
    runner.times.clear();
  }
  for (std::size_t round = 0; round < effort.rounds; ++round)
    for (Runner& runner : runners)
      if (!runner.IsDone(effort)) runner.RunOnce();

  Result result;
  result.milliseconds = runners[0].Median();
  result.memcpyMilliseconds = runners[1].Median();
  for (std::size_t i = 0; i < operation.peers.size(); ++i) {
    const double time = runners[2 + i].Median();
    if (!result.bestPeer.empty() && result.bestPeerMilliseconds <= time) continue;
    result.bestPeer = operation.peers[i].name;
    result.bestPeerMilliseconds = time;
  }
  if (operation.plainWrite) result.plainWriteMilliseconds = runners.back().Median();
  return result;
}

}  // namespace Bench
