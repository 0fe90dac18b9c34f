// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/YCbCr.h"

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/BayerPhase.h"
#include "QvApi_IP/Kernels/YCbCrScalar.h"
#include "YCbCrReference.h"

namespace QvApi::Kernels {
namespace {

using Testing::YCbCrReference;

constexpr YCbCrMatrix kMatrices[] = {YCbCrMatrix::Full, YCbCrMatrix::Bt601, YCbCrMatrix::Bt709};

// --- Every colour
// ---------------------------------------------------------------------------------

/// Bytes of three components for all values of the last two.
constexpr size_t kCount = 65536;
using Planes = std::vector<uint8_t>;

TEST(YCbCr, EveryColorIsThatOfTheRules) {
  for (YCbCrMatrix matrix : kMatrices) {
    const YCbCrReference reference(static_cast<size_t>(matrix));
    Planes pixels(3 * kCount), made(3 * kCount), scalar(3 * kCount), expected(3 * kCount);
    const auto components = [](Planes& planes) {
      return YCbCrComponents{&planes[0], &planes[kCount], &planes[2 * kCount]};
    };
    for (unsigned red = 0; red < 256; ++red) {
      for (unsigned i = 0; i < kCount; ++i) {
        const YCbCrReference::Color color{red, i >> 8, i & 0xFF};
        for (size_t c = 0; c < 3; ++c) {
          pixels[3 * i + c] = static_cast<uint8_t>(color[c]);
          expected[c * kCount + i] = reference.Component(c, color);
        }
      }
      const YCbCrSource source{.step = 3, .isBGR = false};
      PixelsToYCbCr(matrix, source, pixels.data(), 1, components(made), kCount);
      ASSERT_EQ(made, expected) << static_cast<int>(matrix) << " red " << red;
      Scalar::PixelsToYCbCr(matrix, source, pixels.data(), 1, components(scalar), kCount);
      ASSERT_EQ(scalar, expected) << static_cast<int>(matrix) << " red " << red;
    }
  }
}

TEST(YCbCr, EveryLuminanceAndChrominanceGivesTheColorOfTheRules) {
  for (YCbCrMatrix matrix : kMatrices) {
    const YCbCrReference reference(static_cast<size_t>(matrix));
    Planes y(kCount), cb(kCount), cr(kCount);
    Planes made(3 * kCount), scalar(3 * kCount), expected(3 * kCount);
    for (unsigned luma = 0; luma < 256; ++luma) {
      for (unsigned i = 0; i < kCount; ++i) {
        y[i] = static_cast<uint8_t>(luma);
        cb[i] = static_cast<uint8_t>(i >> 8);
        cr[i] = static_cast<uint8_t>(i);
        const auto color = reference.ColorOf({luma, cb[i], cr[i]});
        for (size_t c = 0; c < 3; ++c) expected[3 * i + c] = static_cast<uint8_t>(color[c]);
      }
      const YCbCrPlanes planes{y.data(), cb.data(), cr.data(), 1};
      PlanesToColor(matrix, planes, made.data(), 3, false, kCount);
      ASSERT_EQ(made, expected) << static_cast<int>(matrix) << " luma " << luma;
      Scalar::PlanesToColor(matrix, planes, scalar.data(), 3, false, kCount);
      ASSERT_EQ(scalar, expected) << static_cast<int>(matrix) << " luma " << luma;
    }
  }
}

// --- Every width, on every machine
// ----------------------------------------------------------------

/// Lines of three components, chrominance of `group` pixels each.
struct Lines {
  Lines(size_t count, size_t group, size_t slack)
      : chroma(group == 0 ? 0 : (count + group - 1) / group),
        luma(count, slack, 1),
        cb(chroma, slack, 2),
        cr(chroma, slack, 3) {}
  YCbCrComponents Vector() { return {luma.vector(), cb.vector(), cr.vector()}; }
  YCbCrComponents Scalar() { return {luma.scalar(), cb.scalar(), cr.scalar()}; }
  void Check() {
    for (auto* line : {&luma, &cb, &cr}) line->Check();
  }

  size_t chroma;
  TwinLine<uint8_t> luma, cb, cr;
};

TEST(YCbCr, PixelsAgreeWithScalarAndAlphaStays) {
  ForEachLine([](size_t count, size_t slack) {
    const YCbCrMatrix matrix = kMatrices[count % 3];
    for (size_t step : {3, 4})
      for (bool isBGR : {false, true})
        for (size_t group : {0, 1, 2, 4}) {
          SCOPED_TRACE("step " + std::to_string(step) + ", group " + std::to_string(group));
          TwinLine<uint8_t> pixels(count * step, slack, 5);
          Lines lines(count, group, slack);
          const YCbCrSource source{.step = step, .isBGR = isBGR};
          PixelsToYCbCr(matrix, source, pixels.vector(), group, lines.Vector(), count);
          Scalar::PixelsToYCbCr(matrix, source, pixels.scalar(), group, lines.Scalar(), count);
          lines.Check();
          if (group == 0 || group == 4) continue;
          const auto planes = [&](const YCbCrComponents& c) {
            return YCbCrPlanes{c.luma, c.cb, c.cr, group};
          };
          TwinLine<uint8_t> back(count * step, slack, 7);
          const YCbCrPlanes from = planes(lines.Vector());
          PlanesToColor(matrix, from, back.vector(), step, isBGR, count);
          Scalar::PlanesToColor(matrix, from, back.scalar(), step, isBGR, count);
          back.Check();
        }
  });
}

TEST(YCbCr, TilesAgreeWithScalar) {
  ForEachLine([](size_t tiles, size_t slack) {
    for (int phase : {kPhaseRG, kPhaseGR, kPhaseGB, kPhaseBG})
      for (size_t following : {0, 1})
        for (bool hasChroma : {false, true}) {
          const size_t width = 2 * (tiles + following);
          TwinLine<uint8_t> row(width, slack, 5), next(width, slack, 7);
          Lines lines(2 * tiles, hasChroma ? 2 : 0, slack);
          YCbCrComponents to = lines.Vector(), reference = lines.Scalar();
          if (!hasChroma) to.cb = reference.cb = nullptr;
          BayerTilesToYCbCr(row.vector(), next.vector(), phase, to, tiles, following);
          Scalar::BayerTilesToYCbCr(row.scalar(), next.scalar(), phase, reference, tiles,
                                    following);
          lines.Check();
        }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
