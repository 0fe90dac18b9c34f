// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "Images.h"

namespace Demo {

/// Draws a test chart of 1920 x 1200 pixels, `BGR8`, with what is hard for demosaicing: a zone
/// plate and line pairs up to the finest that the pixels can carry, slanted and coloured edges,
/// print, a star, thin lines; and with patches, ramps and hues that show colours.
Buffer DrawChart();

/// The parts of the chart by which the methods can be told apart.
std::vector<Region> ChartRegions();

}  // namespace Demo
