// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Bench {

/// What an operation's time is held against. None of them is a test: a missed goal is printed.
enum class Yardstick {
  Memcpy,      ///< memcpy of the same bytes read and written
  PlainWrite,  ///< one write of the same bytes into a fresh file in the same folder
  BestPeer,    ///< the fastest peer
};

struct Goal {
  Yardstick yardstick = Yardstick::Memcpy;
  double ratio = 0;
  double extraMilliseconds = 0;  ///< Allowed on top.
};

/// Somebody else's way to the same result, or a measure to compare with.
struct Contender {
  std::string name;
  std::function<void()> run;
};

/// A further result, such as the size of a file, and whether its goal is reached.
struct Remark {
  std::string text;
  bool reached = true;
};

/// One row of the table, ready to run. What its functions use lives in them.
struct Operation {
  std::size_t bytesRead = 0, bytesWritten = 0;
  Goal goal;
  std::function<void()> run;
  std::function<void()> restore;     ///< Before each run, untimed: in-place work needs it.
  std::vector<Contender> peers;      ///< Those that are built in.
  std::vector<std::string> missing;  ///< Those that are not.
  std::function<void()> plainWrite;  ///< For Yardstick::PlainWrite.
  std::function<Remark(double milliseconds)> remark;  ///< Asked after the runs; may be empty.
};

/// A row by name; frames are made when it is its turn.
struct Row {
  std::string name;
  std::function<Operation()> make;
};

/// The rows of each family, in the order of the table. A new operation is a new line in one of
/// their tables; a new family is a new file and one call in main.cpp.
std::vector<Row> ConversionRows();
std::vector<Row> ReverseRows();
std::vector<Row> FilterRows();
std::vector<Row> MeasurementRows();
std::vector<Row> FileRows();
std::vector<Row> RecordingRows();

}  // namespace Bench
