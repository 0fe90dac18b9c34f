// SPDX-License-Identifier: MIT
#pragma once

namespace QvApi {

/// Which part of an image a filter measures.
enum EQvROIMode_t : unsigned {
  QvROIMode_WholeImage = 0,
  QvROIMode_Manual = 1,         ///< The rectangle of offsets and size.
  QvROIMode_CenterOfImage = 2,  ///< A rectangle of the size, in the middle.
};

}  // namespace QvApi
