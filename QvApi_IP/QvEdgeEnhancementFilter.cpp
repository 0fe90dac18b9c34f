// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvEdgeEnhancementFilter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "QvApi_IP/Kernels/DepthChange.h"
#include "QvApi_IP/Kernels/Lookup.h"
#include "QvApi_IP/Kernels/Planes.h"
#include "QvApi_IP/Kernels/SplitColumns.h"

namespace QvApi {

using namespace Families;
using Kernels::CorrectedSamples;

namespace {

/// Where luminance lies in the bytes of a line.
struct LuminanceLayout {
  FormatList formats;
  CorrectedSamples luminance;
};

constexpr LuminanceLayout kLuminanceLayouts[] = {
    {YCbCr8, {.step = 3, .first = 0}},
    {{YCbCr8_CbYCr, YCbCr709_8_CbYCr, YCbCr601_8_CbYCr, YUV8_UYV}, {.step = 3, .first = 1}},
    {{YCbCr422_8, YCbCr709_422_8, YCbCr601_422_8, YUV422_8}, {.step = 2, .first = 0}},
    {{YCbCr422_8_CbYCrY, YCbCr709_422_8_CbYCrY, YCbCr601_422_8_CbYCrY, YUV422_8_UYVY},
     {.step = 2, .first = 1}},
};

constexpr FormatList kLuminanceFormats = [] {
  FormatList all;
  for (const LuminanceLayout& row : kLuminanceLayouts) all = all + row.formats;
  return all;
}();
static_assert(kLuminanceFormats.size() == 13);

const CorrectedSamples& LuminanceOf(PixelFormat format) {
  for (const LuminanceLayout& row : kLuminanceLayouts)
    if (row.formats.Contains(format)) return row.luminance;
  ThrowNotSupported(format);
}

/// Turns distances from the mean into what they add.
template <class T>
class AmountsOf;

template <>
class AmountsOf<std::uint8_t> {
 public:
  explicit AmountsOf(const std::vector<std::uint16_t>& entries)
      : m_lookup(Kernels::LookupPattern(entries.data())) {}
  void operator()(std::uint8_t* distances, std::size_t count) const {
    Kernels::LookupLine(m_lookup, distances, distances, count);
  }

 private:
  const Kernels::PreparedLookup<std::uint8_t> m_lookup;
};

template <>
class AmountsOf<std::uint16_t> {
 public:
  explicit AmountsOf(const std::vector<std::uint16_t>& entries) : m_entries(entries) {}
  void operator()(std::uint16_t* distances, std::size_t count) const {
    Kernels::LookUpDistances(m_entries.data(), distances, count);
  }

 private:
  const std::vector<std::uint16_t>& m_entries;
};

/// Greatest difference in the dead band.
std::uint64_t DeadBand(unsigned thresh, unsigned bits) {
  return std::uint64_t{thresh} << (bits - 8);
}

}  // namespace

const FormatMap<CQvEdgeEnhancementFilter::Handler> CQvEdgeEnhancementFilter::m_mapFilters{
    {Mono8, &CQvEdgeEnhancementFilter::PerformMono8},
    {kMonoW, &CQvEdgeEnhancementFilter::PerformMono16},
    {kBGRx8, &CQvEdgeEnhancementFilter::PerformBGRx8},
    {kBGRW, &CQvEdgeEnhancementFilter::PerformBGRx16},
    {kLuminanceFormats, &CQvEdgeEnhancementFilter::PerformYxx444_422_8},
};

std::span<const Register<CQvEdgeEnhancementFilter>> CQvEdgeEnhancementFilter::RegisterTable() {
  using Self = CQvEdgeEnhancementFilter;
  using namespace Registers;
  static constexpr Register<Self> m_cRegisters[]{
      Value<&Self::m_strength>(0x10), Value<&Self::m_thresh>(0x18), Minimum<Self, kStrength>(0x20),
      Maximum<Self, kStrength>(0x28), Minimum<Self, kThresh>(0x30), Maximum<Self, kThresh>(0x38),
  };
  return m_cRegisters;
}

CEdgeEnhancementTable::CEdgeEnhancementTable(double strength, unsigned threshold, unsigned depth)
    : bits(depth), thresh(threshold), entries(std::size_t{1} << depth) {
  const auto fullScale = static_cast<std::uint16_t>(entries.size() - 1);
  double value = 0;
  for (std::uint64_t i = DeadBand(thresh, bits) + 1; i < entries.size(); ++i) {
    // Summed up, not multiplied: where the product would be a half, the two round differently.
    value += strength;
    entries[i] = value < fullScale ? static_cast<std::uint16_t>(value + 0.5) : fullScale;
  }
}

std::uint16_t CEdgeEnhancementTable::At(std::size_t difference, unsigned imageBits) const {
  if (difference <= DeadBand(thresh, imageBits)) return 0;
  return entries[std::min(difference, entries.size() - 1)];
}

CEdgeEnhancementTables::Entries CEdgeEnhancementTables::LockEntries(const Changes& changes,
                                                                    double strength,
                                                                    unsigned thresh,
                                                                    unsigned bits) {
  if (!(strength > 0)) return nullptr;
  const auto table =
      m_table.Lock(changes, [&] { return CEdgeEnhancementTable(strength, thresh, bits); });
  if (table->bits == bits) return {table, &table->entries};
  return m_fitted.Lock({changes, bits}, [&] {
    std::vector<std::uint16_t> entries(std::size_t{1} << bits);
    for (std::size_t i = 0; i < entries.size(); ++i) entries[i] = table->At(i, bits);
    return entries;
  });
}

template <class T, class Measure>
void CQvEdgeEnhancementFilter::Enhance(const ImageLines& lines, const CorrectedSamples& samples,
                                       Measure measure) {
  const auto bits = static_cast<unsigned>(lines.Depth());
  // The counts come first: a setting that changes now makes a table that the next image replaces.
  const CEdgeEnhancementTables::Changes changes{m_strength.Changes(), m_thresh.Changes()};
  const auto entries = m_tables.LockEntries(changes, m_strength, m_thresh, bits);
  if (!entries || lines.Width() < 3 || lines.Height() < 3) return;
  const AmountsOf<T> amountsOf(*entries);

  const TemporaryBuffer room(*this);
  // Vectors are fastest where the first pixel with all its neighbours starts a cache line.
  constexpr std::size_t kCacheLine = 64;
  room->SetSize(lines.Width() + kCacheLine, 5, Mono16, kCacheLine);
  const ImageLines rows(*room->GetIQvImage());
  const std::size_t lead =
      -reinterpret_cast<std::uintptr_t>(rows.Line<T>(0) + 1) % kCacheLine / sizeof(T);
  // Lines as they were: once corrected, they are still neighbours.
  T* above = rows.Line<T>(0) + lead;
  T* line = rows.Line<T>(1) + lead;
  T* below = rows.Line<T>(2) + lead;
  T* const means = rows.Line<T>(3) + lead + 1;
  T* const amounts = rows.Line<T>(4) + lead + 1;
  const std::size_t inside = lines.Width() - 2;
  measure(lines.Line<T>(0), above, means, amounts);
  measure(lines.Line<T>(1), line, means, amounts);
  for (std::size_t y = 1; y + 1 < lines.Height(); ++y) {
    measure(lines.Line<T>(y + 1), below, means, amounts);
    const T* upcoming = y + 2 < lines.Height() ? lines.Line<T>(y + 2) : nullptr;
    Kernels::DifferFromMeans({above + 1, line + 1, below + 1, upcoming, samples.step}, bits, means,
                             amounts, inside);
    amountsOf(amounts, inside);
    Kernels::CorrectPixels(samples, bits, {line + 1, means, amounts},
                           lines.Line<T>(y) + samples.step, inside);
    std::swap(above, line);
    std::swap(line, below);
  }
}

void CQvEdgeEnhancementFilter::PerformMono8(IQvImage& image) {
  const ImageLines lines(image);
  Enhance<std::uint8_t>(lines, {}, [&](const auto* line, auto* levels, auto...) {
    std::memcpy(levels, line, lines.Width());
  });
}

void CQvEdgeEnhancementFilter::PerformMono16(IQvImage& image) {
  const ImageLines lines(image);
  const auto masked = Kernels::DepthChange::Keep(static_cast<unsigned>(lines.Depth()));
  Enhance<std::uint16_t>(lines, {}, [&](const auto* line, auto* levels, auto...) {
    Kernels::ChangeDepth(masked, line, levels, lines.Width());
  });
}

template <class T>
void CQvEdgeEnhancementFilter::PerformBGRx(IQvImage& image) {
  const ImageLines lines(image);
  const Kernels::ColorPixels layout{.step = lines.Components(),
                                    .isBGR = lines.Format().IsBGR(),
                                    .depth = static_cast<unsigned>(lines.Depth())};
  Enhance<T>(lines, {.step = layout.step, .first = 0, .count = 3},
             [&](const T* line, T* levels, auto...) {
               Kernels::PixelsToGrey(layout, line, levels, lines.Width());
             });
}

void CQvEdgeEnhancementFilter::PerformBGRx8(IQvImage& image) { PerformBGRx<std::uint8_t>(image); }
void CQvEdgeEnhancementFilter::PerformBGRx16(IQvImage& image) { PerformBGRx<std::uint16_t>(image); }

void CQvEdgeEnhancementFilter::PerformYxx444_422_8(IQvImage& image) {
  const CorrectedSamples& luminance = LuminanceOf(image.GetImagePixelFormat());
  const ImageLines lines(image);
  using Line = std::uint8_t*;
  Enhance<std::uint8_t>(lines, luminance, [&](Line line, Line levels, Line spare0, Line spare1) {
    if (luminance.step == 2) {
      const bool isFirst = luminance.first == 0;
      Kernels::SplitColumns(line, 1, isFirst ? levels : spare0, isFirst ? spare0 : levels,
                            lines.Width());
    } else {
      Kernels::PlaneLines<std::uint8_t> planes{spare0, spare0, spare1};
      planes[luminance.first == 0 ? 1 : 0] = spare0;
      planes[luminance.first] = levels;
      Kernels::SplitPixels(line, luminance.step, planes, lines.Width());
    }
  });
}

}  // namespace QvApi
