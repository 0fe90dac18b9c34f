// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Operation.h"

namespace Bench {

/// How long to measure.
struct Effort {
  std::size_t rounds = 75;      ///< at most
  std::size_t leastRounds = 5;  ///< also for what is slow
  double seconds = 1.5;         ///< for each contender, then it sits out the remaining rounds
};

/// Median times in ms.
struct Result {
  double milliseconds = 0, memcpyMilliseconds = 0;
  double plainWriteMilliseconds = 0;  ///< 0 if not measured
  std::string bestPeer;               ///< empty if there is none
  double bestPeerMilliseconds = 0;

  /// The operation's time in units of the yardstick; 0 if that was not measured.
  double Ratio(Yardstick yardstick) const;
};

/// Runs the operation, memcpy and the peers in turn, round by round, so that all meet the same
/// machine. memcpy moves half of the bytes that the operation reads and writes, from warm memory to
/// warm memory.
Result Measure(const Operation& operation, const Effort& effort);

}  // namespace Bench
