// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvChannelCycle.h"

#include "QvApi_IP/Kernels/BayerPhase.h"
#include "QvApi_IP/QvImageLines.h"
#include "QvSDKCommon/QvAssert.h"

namespace QvApi {
namespace {

using enum EQvPixelFormatNamingConvention_t;
constexpr auto R = QvBalanceRatioSelector_Red, G = QvBalanceRatioSelector_Green,
               B = QvBalanceRatioSelector_Blue, Y = QvBalanceRatioSelector_Y,
               Cb = QvBalanceRatioSelector_Cb, Cr = QvBalanceRatioSelector_Cr;

constexpr LineCycles AllLines(const ChannelCycle& cycle) { return {cycle, cycle}; }

constexpr LineCycles kMono = AllLines({1, 1, 1, {Y}});
constexpr LineCycles kRGB = AllLines({1, 3, 3, {R, G, B}});
constexpr LineCycles kBGR = AllLines({1, 3, 3, {B, G, R}});
constexpr LineCycles kRGBa = AllLines({1, 4, 4, {R, G, B, kNoChannel}});
constexpr LineCycles kBGRa = AllLines({1, 4, 4, {B, G, R, kNoChannel}});
constexpr LineCycles kYCbCr444 = AllLines({1, 3, 3, {Y, Cb, Cr}});
constexpr LineCycles kYCbCr422 = AllLines({2, 4, 4, {Y, Cb, Y, Cr}});
constexpr LineCycles kYCbCr411 = AllLines({4, 6, 6, {Y, Y, Cb, Y, Y, Cr}});

/// In the order of the phases.
constexpr LineCycles kBayer[] = {
    {{{1, 1, 2, {R, G}}, {1, 1, 2, {G, B}}}},
    {{{1, 1, 2, {G, R}}, {1, 1, 2, {B, G}}}},
    {{{1, 1, 2, {G, B}}, {1, 1, 2, {R, G}}}},
    {{{1, 1, 2, {B, G}}, {1, 1, 2, {G, R}}}},
};
static_assert(Kernels::kPhaseRG == 2 && Kernels::kPhaseGR == 3 && Kernels::kPhaseGB == 4 &&
              Kernels::kPhaseBG == 5);

}  // namespace

const LineCycles& ChannelsOf(PixelFormat format) {
  if (format == YCbCr8) return kYCbCr444;
  if (format == YCbCr422_8 || format == YCbCr709_422_8) return kYCbCr422;
  if (format == YCbCr411_8) return kYCbCr411;
  const IQvPixelFormatInfoInside& info = FormatInfo(format);
  if (info.IsMono()) return kMono;
  if (info.IsBayer()) {
    const int phase = info.GetPixelColorFilter(0, 0);
    QV_ASSERT(Kernels::IsBayerPhase(phase));
    return kBayer[phase - Kernels::kPhaseRG];
  }
  if (info.GetComponentCount() == 4) return info.IsBGR() ? kBGRa : kRGBa;
  return info.IsBGR() ? kBGR : kRGB;
}

}  // namespace QvApi
