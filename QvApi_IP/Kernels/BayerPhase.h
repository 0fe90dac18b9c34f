// SPDX-License-Identifier: MIT
#pragma once

namespace QvApi::Kernels {

/// Colours of a mosaic row's first two pixels: 2 is RG, 3 GR, 4 GB, 5 BG. The numbers are those of
/// the image contract's colour filters; kernels that get another number do nothing.
inline constexpr int kPhaseRG = 2;
inline constexpr int kPhaseGR = 3;
inline constexpr int kPhaseGB = 4;
inline constexpr int kPhaseBG = 5;

constexpr bool IsBayerPhase(int phase) { return phase >= kPhaseRG && phase <= kPhaseBG; }

/// Phase of the rows above and below a row.
constexpr int PhaseOfNextRow(int phase) { return phase < kPhaseGB ? phase + 2 : phase - 2; }

constexpr bool IsRedRow(int phase) { return phase == kPhaseRG || phase == kPhaseGR; }

constexpr bool StartsGreen(int phase) { return phase == kPhaseGR || phase == kPhaseGB; }

}  // namespace QvApi::Kernels
