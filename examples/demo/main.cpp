// SPDX-License-Identifier: MIT
// The demo program: takes one frame through the library and writes a page that shows the results.
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Sections.h"

namespace {

using namespace Demo;

constexpr char kUsage[] =
    "Usage: qvapi_demo [FILE] [--output DIR]\n"
    "Takes a frame through the library and writes pictures and DIR/index.html (DIR is demo-out by\n"
    "default). The frame is sampled from FILE, a PNG or BMP picture, or else from a test chart.\n";

constexpr Section (*kSteps[])(const Scene&, Album&) = {
    // Conversions.
    ShowScene, ShowDemosaicing, ShowPacked, ShowYCbCr, ShowColorMaps, ShowOrientations,
    ShowPolarization,
    // Filters.
    ShowGamma, ShowBalance, ShowFlatField, ShowDarkFrame, ShowMedian, ShowColorTransformation,
    ShowEdgeEnhancement, ShowChromaSuppression,
    // Measurements.
    ShowAveraging, ShowGraphs, ShowNoise,
    // Files.
    ShowFiles, ShowVideo};

struct Options {
  std::string file, output = "demo-out";
  bool help = false;
};

Options Parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help" || argument == "-h")
      options.help = true;
    else if (argument == "--output" && i + 1 < argc)
      options.output = argv[++i];
    else if (argument.starts_with("--") || argument.empty() || !options.file.empty())
      throw std::runtime_error("Argument \"" + argument + "\" is not understood; see --help.");
    else
      options.file = argument;
  }
  return options;
}

// Characters of a text in UTF-8, whose further bytes are 10xxxxxx.
std::size_t Length(const std::string& text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

void PrintTable(const Table& table) {
  std::vector<std::vector<std::string>> rows = table.rows;
  rows.insert(rows.begin(), table.head);
  std::vector<std::size_t> widths(table.head.size());
  for (const std::vector<std::string>& row : rows)
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Length(row[i]));
  for (const std::vector<std::string>& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i)
      std::cout << "  " << row[i] << std::string(widths[i] - Length(row[i]), ' ');
    std::cout << '\n';
  }
}

// Says on the console what the section says on the page. Returns whether all its checks hold.
bool Report(const Section& section) {
  std::cout << section.title << '\n';
  if (!section.table.rows.empty()) PrintTable(section.table);
  bool allHold = true;
  for (const Check& check : section.checks) {
    std::cout << (check.holds ? "  ok    " : "  FAULT ") << check.text << '\n';
    allHold = allHold && check.holds;
  }
  return allHold;
}

void Run(const Options& options) {
  const Scene scene = options.file.empty() ? DrawScene() : LoadScene(options.file);
  Album album(options.output);
  Page page{"QvApi demo: " + scene.name,
            "One raw frame on its way through the library, with the settings of each step and the "
            "time that it takes. A picture opens in full size.",
            {}};
  bool allHold = true;
  for (const auto step : kSteps) {
    page.sections.push_back(step(scene, album));
    allHold = Report(page.sections.back()) && allHold;
  }
  const std::filesystem::path fileName = album.PathOf("index.html");
  WritePage(page, fileName);
  std::cout << "The page is " << std::filesystem::absolute(fileName).string() << '\n';
  if (!allHold) throw std::runtime_error("Not all checks hold; the page shows which.");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = Parse(argc, argv);
    if (options.help) {
      std::cout << kUsage;
      return EXIT_SUCCESS;
    }
    QvApi::QvApiInitialize();
    Run(options);
    QvApi::QvApiTerminate();
    return EXIT_SUCCESS;
  } catch (const GenICam::GenericException& failure) {
    std::cerr << "qvapi_demo: " << failure.GetDescription() << '\n';
  } catch (const std::exception& failure) {
    std::cerr << "qvapi_demo: " << failure.what() << '\n';
  }
  return EXIT_FAILURE;
}
