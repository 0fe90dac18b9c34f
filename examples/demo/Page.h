// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The page that shows what the demo made. A step of the demo fills a Section and knows nothing of
/// HTML; all texts are plain.
namespace Demo {

/// A small part of a picture, shown enlarged.
struct Crop {
  std::string file, caption;
  std::size_t width = 0, height = 0;
};

struct Link {
  std::string text, file;
};

/// One picture with all that made it.
struct Figure {
  std::string title;
  std::string text;                    ///< One sentence on what to see; may be empty.
  std::vector<std::string> settings;   ///< Such as "BayerInterpolationMethod = Bilinear".
  std::optional<double> milliseconds;  ///< Median time for one frame.
  std::optional<double> psnr;          ///< Against the original, in dB.
  std::string file;                    ///< The whole picture.
  std::vector<Crop> crops;
  std::vector<Link> links;
};

struct Table {
  std::vector<std::string> head;
  std::vector<std::vector<std::string>> rows;
};

/// Something that must be so, and whether it was.
struct Check {
  std::string text;
  bool holds = false;
};

struct Section {
  std::string id, title, text;
  std::vector<Figure> figures;
  bool sheet = false;  ///< Figures small, side by side, to be compared.
  Table table;
  std::vector<Check> checks;
};

struct Page {
  std::string title, text;
  std::vector<Section> sections;
};

/// Such as "1.234", with so many digits behind the point.
std::string Decimal(double value, int digits);

/// Writes the page. Files are named relative to it.
/// @throws std::runtime_error  it cannot be written
void WritePage(const Page& page, const std::filesystem::path& fileName);

}  // namespace Demo
