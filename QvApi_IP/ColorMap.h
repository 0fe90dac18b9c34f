// SPDX-License-Identifier: MIT
#pragma once

#include "QvSDKCommon/QvExport.h"

namespace QvApi {

/// The colours that grey levels of 8 bits are shown in.
enum EQvColorMapType_t : unsigned {
  QvColorMapType_Normal = 0,            ///< Black to white.
  QvColorMapType_PseudoColor_BGR = 1,   ///< Blue, green, red: two thirds of the circle of hues.
  QvColorMapType_PseudoColor_BGRB = 2,  ///< Blue, green, red, blue: the whole circle.
};

/// Fills a table that gives the colour of each grey level. Safe from any thread.
///
/// @param table      room for 256 entries: blue in bits 0 to 7, green in 8 to 15, red in 16 to 23,
///                   0 above
/// @param type       an unknown one counts as `Normal`
/// @param inversion  runs through the colours backward
/// @param phase      turns the circle of colours by this many entries; only its low 8 bits count
QVAPI_EXPORT void SetColorMap(unsigned int* table, EQvColorMapType_t type, bool inversion,
                              int phase);

}  // namespace QvApi
