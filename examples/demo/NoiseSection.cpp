// SPDX-License-Identifier: MIT
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "Disturbance.h"
#include "Sections.h"

namespace Demo {

using namespace QvApi;

namespace {

using SNFilter = CQvAutoPtr<IQvFilterReleasable, IQvSNMeasurementFilter>;

constexpr std::size_t kWidth = 480, kHeight = 300, kFrames = 50;
constexpr double kTolerance = 0.025;

/// What one phase of the mosaic sees, in levels of 12 bits.
struct Phase {
  const char* name;
  double level, temporal, pattern;

  /// Both kinds of noise are in each frame.
  double InFrame() const { return std::hypot(temporal, pattern); }
};

// Bright phases have more noise, as photons have, and more difference from pixel to pixel.
constexpr std::array<Phase, 4> kPhases{
    {{"R12", 900, 12, 9}, {"Gr12", 2000, 18, 20}, {"Gb12", 1980, 18, 20}, {"B12", 1300, 14, 13}}};

// A grey card, whose pixels keep their own level and vary around it from frame to frame.
void SeeCard(IQvSNMeasurementFilter& filter) {
  Noise noise;
  const auto phaseAt = [](std::size_t i) { return kPhases[i / kWidth % 2 * 2 + i % kWidth % 2]; };
  std::vector<double> card(kWidth * kHeight);
  for (std::size_t i = 0; i < card.size(); ++i)
    card[i] = phaseAt(i).level + noise.Normal(phaseAt(i).pattern);
  const Buffer frame = MakeBuffer();
  frame->CreateBuffer(kWidth, kHeight, PixelFormat::BayerRG12, QvMemoryInitialization_Zero);
  auto* samples = static_cast<std::uint16_t*>(frame->GetIQvImage()->GetImageBuffer());
  for (std::size_t count = 0; count < kFrames; ++count) {
    for (std::size_t i = 0; i < card.size(); ++i)
      samples[i] = static_cast<std::uint16_t>(card[i] + noise.Normal(phaseAt(i).temporal) + 0.5);
    filter.Filter(frame->GetIQvImage());
  }
}

bool IsNear(double value, double truth) { return std::abs(value - truth) <= kTolerance * truth; }

}  // namespace

Section ShowNoise(const Scene&, Album&) {
  const SNFilter filter(CreateIQvFilter(QvFilterType_SNMeasurement));
  filter->SetFrameCount(kFrames);
  filter->SetROIMode(QvROIMode_WholeImage);
  SeeCard(*filter.Get());
  IQvSNMeasurementResult* const result =
      filter->RetrieveIQvSNMeasurementResult(10000, QvTimeoutHandling_ThrowException);

  Section section;
  section.id = "noise";
  section.title = "S/N measurement";
  section.text =
      "50 frames of a grey card on a sensor of 12 bits. A thread of the filter measures how much "
      "pixels vary from frame to frame, and how much they differ within a frame, for each phase of "
      "the mosaic. A standard deviation of 50 values comes out 1.5 % small.";
  section.table.head = {"Component",        "Level",    "measured", "Temporal noise", "measured",
                        "Noise in a frame", "measured", "S/N"};
  bool allNear = result->GetComponentCount() == kPhases.size();
  for (std::size_t i = 0; i < result->GetComponentCount(); ++i) {
    EQvPixelComponent_t component{};
    double level = 0, temporal = 0, inFrame = 0;
    result->GetSNMeasurementValue(i, &component, nullptr, &level, &temporal, &inFrame);
    const Phase& phase = kPhases[i];
    const std::string name = GetIQvPixelComponentInfo(component)->GetName().c_str();
    section.table.rows.push_back({name, Decimal(phase.level, 1), Decimal(level, 1),
                                  Decimal(phase.temporal, 2), Decimal(temporal, 2),
                                  Decimal(phase.InFrame(), 2), Decimal(inFrame, 2),
                                  Decimal(20 * std::log10(level / temporal), 1) + " dB"});
    allNear = allNear && name == phase.name && IsNear(level, phase.level) &&
              IsNear(temporal, phase.temporal) && IsNear(inFrame, phase.InFrame());
  }
  section.checks = {{"All figures are within 2.5 % of what was put in.", allNear}};
  return section;
}

}  // namespace Demo
