// SPDX-License-Identifier: MIT
// Measures the library's operations and prints a table: time, ratio to memcpy of the same traffic,
// ratio to the best peer, and the goal.
#include <QvApi/QvApi_IP.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "Frames.h"
#include "Measure.h"
#include "Peers.h"

namespace {

using namespace Bench;

constexpr char kUsage[] =
    "Usage: qvapi_bench [--filter TEXT] [--quick] [--list]\n"
    "  --filter TEXT  only operations whose name contains TEXT\n"
    "  --quick        fewer rounds\n"
    "  --list         names only\n";

constexpr Effort kQuick{11, 3, 0.2};

struct Options {
  std::string filter;
  Effort effort;
  bool list = false, help = false;
};

Options Parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--filter" && i + 1 < argc)
      options.filter = argv[++i];
    else if (argument == "--quick")
      options.effort = kQuick;
    else if (argument == "--list")
      options.list = true;
    else if (argument == "--help")
      options.help = true;
    else
      throw std::runtime_error("Argument \"" + argument + "\" is not understood; see --help.");
  }
  return options;
}

std::vector<Row> AllRows() {
  std::vector<Row> rows;
  for (const auto family :
       {ConversionRows, ReverseRows, FilterRows, MeasurementRows, FileRows, RecordingRows})
    for (Row& row : family()) rows.push_back(std::move(row));
  return rows;
}

std::string ProcessorName() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);)
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  return "unknown processor";
}

const char* NameOf(Yardstick yardstick) {
  switch (yardstick) {
    case Yardstick::Memcpy:
      return "memcpy";
    case Yardstick::PlainWrite:
      return "write";
    case Yardstick::BestPeer:
      return "peer";
  }
  return "";
}

// Empty for a ratio that was not measured.
std::string Times(double ratio) {
  if (ratio == 0) return "";
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", ratio);
  return text;
}

void PrintHead() {
  std::printf("%zu x %zu, one thread, %s; peers: %s\n", kWidth, kHeight, ProcessorName().c_str(),
              PeerLibraries().c_str());
  std::printf("Ratios are the operation's time over the other's; medians.\n\n");
  std::printf("%-30s %8s %8s %-13s %-7s %-22s %8s %8s\n", "operation", "ms", "/memcpy", "goal", "",
              "best peer", "peer ms", "/peer");
}

void PrintRow(const Row& row, const Effort& effort) {
  const Operation operation = row.make();
  const Result result = Measure(operation, effort);
  const double reached = result.Ratio(operation.goal.yardstick);
  const Remark remark = operation.remark ? operation.remark(result.milliseconds) : Remark{};

  char goal[32];
  const double extra = operation.goal.extraMilliseconds;
  const int length = std::snprintf(goal, sizeof goal, "%.2f %s", operation.goal.ratio,
                                   NameOf(operation.goal.yardstick));
  if (extra > 0) std::snprintf(goal + length, sizeof goal - length, "+%.0fus", 1000 * extra);
  const double allowed = operation.goal.ratio + reached * extra / result.milliseconds;
  const bool isReached = reached <= allowed && remark.reached;
  std::printf("%-30s %8.3f %8s %-13s %-7s %-22s %8s %8s", row.name.c_str(), result.milliseconds,
              Times(result.Ratio(Yardstick::Memcpy)).c_str(), goal,
              reached == 0 ? "?"
              : isReached  ? "ok"
                           : "missed",
              result.bestPeer.c_str(), Times(result.bestPeerMilliseconds).c_str(),
              Times(result.Ratio(Yardstick::BestPeer)).c_str());
  if (operation.plainWrite)
    std::printf("  %.2f of a plain write", result.Ratio(Yardstick::PlainWrite));
  if (!remark.text.empty()) std::printf("  %s", remark.text.c_str());
  for (const std::string& name : operation.missing) std::printf("  (without %s)", name.c_str());
  std::printf("\n");
  std::fflush(stdout);
}

void Run(const Options& options) {
  if (!options.list) PrintHead();
  for (const Row& row : AllRows()) {
    if (row.name.find(options.filter) == std::string::npos) continue;
    if (options.list)
      std::printf("%s\n", row.name.c_str());
    else
      PrintRow(row, options.effort);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = Parse(argc, argv);
    if (options.help) {
      std::fputs(kUsage, stdout);
      return EXIT_SUCCESS;
    }
    QvApi::QvApiInitialize();
    Run(options);
    QvApi::QvApiTerminate();
    return EXIT_SUCCESS;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "qvapi_bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
