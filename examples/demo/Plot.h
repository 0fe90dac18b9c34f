// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace Demo {

/// One line of a plot: its elements stand at equal distances over the whole width.
struct Curve {
  std::string name;
  std::string color;  ///< As CSS names it.
  std::span<const std::uint32_t> elements;
};

enum class Scale { Linear, Logarithmic };

/// Draws curves into an SVG file, from 0 up to their greatest element.
/// @param last  what the right end of the axis is called; the left end is 0
/// @throws std::runtime_error  the file cannot be written
void DrawPlot(const std::filesystem::path& fileName, const std::vector<Curve>& curves, Scale scale,
              const std::string& last);

}  // namespace Demo
