// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/ColorMap.h"
#include "QvApi_IP/QvSetting.h"

/// The colour map settings that every module with a colour map has.
namespace QvApi::ColorMapSettings {

inline constexpr auto kType =
    SelectorSetting("ColorMapTypeReg", QvColorMapType_PseudoColor_BGRB, "eCMT");

// No document has a node of this name, so that a node map keeps the inversion that it read last.
inline constexpr auto kInversion = PlainSetting<bool>("ColorMapInversonReg");

inline constexpr auto kPhase = SelectorSetting("ColorMapPhaseReg", 255, "nPhase");

}  // namespace QvApi::ColorMapSettings
