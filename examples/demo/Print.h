// SPDX-License-Identifier: MIT
#pragma once

namespace Demo {

/// Whether a point lies on a stroke of a line of print in capitals and digits.
///
/// Glyphs are 5 wide and 7 high with one between them; x counts from the left of the text, y from
/// its top. Characters that the font lacks are blank.
bool IsInk(const char* text, double x, double y);

}  // namespace Demo
