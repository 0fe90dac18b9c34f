// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvDefectivePixelDetectionFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <vector>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/TestImages.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvDefectivePixelDetectionFilter;
using Pixel = _SQvDefectivePixelInformation_t;
using Target = _EQvDefectivePixelDetectionThresholdTarget_t;
constexpr auto kAround = QvDefectivePixelDetectionAveragingArea_AroundTheTargetPixel;
constexpr auto kWhole = QvDefectivePixelDetectionAveragingArea_WholeImage;

struct Settings {
  std::array<double, 5> thresholds;
  _EQvDefectivePixelDetectionAveragingArea_t area = kAround;
  std::uint64_t size = 2, maximum = 4095;

  /// By registers, which take any value.
  void WriteTo(Filter& filter) const {
    for (int i = 0; i < 5; ++i)
      WriteRegister(filter, 0x100 + 0x10 * i, thresholds[static_cast<std::size_t>(i)]);
    WriteRegister(filter, 0x500, static_cast<std::uint32_t>(area));
    WriteRegister(filter, 0x510, size);
    WriteRegister(filter, 0x520, maximum);
  }
};

/// The search by a table of the whole image that holds the sums and counts of all rectangles which
/// begin in the upper left corner, and a list that is searched for its smallest deviation each
/// time.
class SlowSearch {
 public:
  void Filter(IQvImage& image, const Settings& settings) {
    const PixelFormatRow& row = *FindPixelFormat(image.GetImagePixelFormat());
    const auto w = static_cast<int>(image.GetImageWidth());
    const auto h = static_cast<int>(image.GetImageHeight());
    const int p = row.kind == PixelKind::Mono ? 1 : row.kind == PixelKind::PolarizedBayer ? 4 : 2;
    const double fullScale = (1 << row.depth) - 1;
    struct Total {
      std::uint64_t sum, count;
    };
    std::vector<Total> table(image.GetImageWidth() * image.GetImageHeight());
    const auto at = [&](int x, int y) {
      return x < 0 || y < 0 ? Total{} : table[static_cast<std::size_t>(y * w + x)];
    };
    const auto between = [&](int left, int top, int right, int bottom) {
      const Total a = at(right, bottom), b = at(left, bottom), c = at(right, top),
                  d = at(left, top);
      return Total{a.sum - b.sum - c.sum + d.sum, a.count - b.count - c.count + d.count};
    };
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const Total before = between(x - p, y - p, x, y);  // without this pixel, yet with 0 for it
        table[static_cast<std::size_t>(y * w + x)] = {ValueOf(image, x, y) - before.sum,
                                                      1 - before.count};
      }
    status = QvDefectivePixelDetectionStatus_None;
    const int reach = p * static_cast<int>(std::min<std::uint64_t>(settings.size, 1000));
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const std::uint64_t value = ValueOf(image, x, y);
        const auto v = static_cast<double>(value);
        const double t = settings.thresholds[TargetOf(image, x, y)];
        // The last place of this phase that is not behind `end`.
        const auto last = [p](int place, int end) { return end - (end - place % p) % p; };
        if (settings.area == kWhole) {
          const Total all = at(last(x, w - 1), last(y, h - 1));
          const double mean = static_cast<double>(all.sum) / static_cast<double>(all.count);
          if (v < std::fma(-fullScale, t, mean) || v > std::fma(fullScale, t, mean))
            Add(x, y, v, mean, fullScale, settings.maximum);
        } else if (const Total near =
                       between(x - reach - p, y - reach - p, last(x, std::min(x + reach, w - 1)),
                               last(y, std::min(y + reach, h - 1)));
                   near.count >= 2) {
          const double mean =
              static_cast<double>(near.sum - value) / static_cast<double>(near.count - 1);
          const double distance = fullScale * t;
          if (v < mean - distance || v > mean + distance)
            Add(x, y, v, mean, fullScale, settings.maximum);
        }
      }
    if (status == QvDefectivePixelDetectionStatus_None)
      status = QvDefectivePixelDetectionStatus_Finished;
  }

  std::map<std::pair<int, int>, Pixel> pixels;  // by row and column
  _EQvDefectivePixelDetectionStatus_t status = QvDefectivePixelDetectionStatus_None;

 private:
  static std::uint64_t ValueOf(IQvImage& image, int x, int y) {
    const auto column = static_cast<std::size_t>(x), line = static_cast<std::size_t>(y);
    if (FindPixelFormat(image.GetImagePixelFormat())->storage == Storage::Unpacked)
      return SampleAt(image, column, line);
    return image.GetIQvPixelComponentValue(column, line).GetValue(0);
  }

  static std::size_t TargetOf(IQvImage& image, int x, int y) {
    const EQvPixelComponent_t component =
        image.GetIQvPixelComponentValue(static_cast<std::size_t>(x), static_cast<std::size_t>(y))
            .GetPixelComponent(0);
    const std::string name = GetIQvPixelComponentInfo(component)->GetName().c_str();
    if (name[0] == 'R' || name[0] == 'B') return name[0] == 'R' ? 1 : 4;
    return name[0] == 'M' ? 0 : name[1] == 'r' ? 2 : 3;
  }

  void Add(int x, int y, double value, double mean, double fullScale, std::uint64_t maximum) {
    const Pixel pixel{static_cast<std::size_t>(x), static_cast<std::size_t>(y), value, mean,
                      std::abs(value - mean) / fullScale};
    if (const auto held = pixels.find({y, x}); held != pixels.end()) {
      if (pixel.deviation > held->second.deviation) held->second = pixel;
      return;
    }
    if (pixels.size() >= maximum) {
      status = QvDefectivePixelDetectionStatus_Overflow;
      const auto smallest =
          std::ranges::min_element(pixels, {}, [](auto& each) { return each.second.deviation; });
      if (smallest == pixels.end() || smallest->second.deviation >= pixel.deviation) return;
      pixels.erase(smallest);
    }
    pixels.emplace(std::pair{y, x}, pixel);
  }
};

struct Result {
  _EQvDefectivePixelDetectionStatus_t status = QvDefectivePixelDetectionStatus_None;
  std::vector<Pixel> pixels;
};

Result ResultOf(Filter& filter) {
  Result result;
  std::size_t count = 0;
  filter.GetDetectionResult(nullptr, &count, nullptr);
  result.pixels.resize(count);
  filter.GetDetectionResult(&result.status, &count, result.pixels.data());
  EXPECT_EQ(count, result.pixels.size());
  return result;
}

/// Both searches find the same.
void ExpectEqual(Filter& filter, SlowSearch& slow, const Settings& settings, IQvImage& image) {
  settings.WriteTo(filter);
  ASSERT_EQ(filter.Filter(&image), &image);
  slow.Filter(image, settings);
  const Result result = ResultOf(filter);
  ASSERT_EQ(result.status, slow.status) << NameOf(image.GetImagePixelFormat());
  ASSERT_EQ(result.pixels.size(), slow.pixels.size()) << NameOf(image.GetImagePixelFormat());
  auto pixel = result.pixels.begin();
  for (const auto& [key, expected] : slow.pixels) {
    ASSERT_EQ(std::memcmp(&*pixel, &expected, sizeof(expected)), 0)
        << NameOf(image.GetImagePixelFormat()) << " " << pixel->x << "," << pixel->y << " against "
        << expected.x << "," << expected.y;
    ++pixel;
  }
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

const Settings kSettings[] = {
    {{0.4, 0.5, 0.3, 0.35, 0.45}},
    {{0.45, 0.3, 0.5, 0.45, 0.4}, kAround, 1, 7},
    {{0.4, 0.4, 0.4, 0.4, 0.4}, kAround, 3, 1},
    {{0.45, 0.4, 0.4, 0.45, 0.4}, kAround, 12, 20},
    {{0.4, 0.4, 0.45, 0.4, 0.4}, kAround, 255, 20},
    {{0.4, 0.4, 0.4, 0.4, 0.4}, kAround, SIZE_MAX, SIZE_MAX},
    {{0.4, 0.4, 0.4, 0.4, 0.4}, kAround, std::uint64_t{1} << 63, 0},
    {{-1, -1, -1, -1, -1}, kAround, 0, 100},
    {{0, -1, kInfinity, kNaN, -kInfinity}, kAround, 2, 30},
    {{1e300, 0, 0, 0, 0}, kAround, 2, 9},
    {{0.4, 0.3, 0.42, 0.45, 0.35}, kWhole, 2, 50},
    {{0, -0.6, kNaN, kInfinity, -kInfinity}, kWhole, 2, 30},
    {{0.5, 0.5, 0.5, 0.5, 1e300}, kWhole},
};

const std::vector<PixelFormat> kFormats{
    Mono8,           Mono10,           Mono14,         Mono16,       Mono10p,      Mono12Packed,
    Mono14p,         BayerGR8,         BayerRG8,       BayerGB10,    BayerBG16,    BayerGR12p,
    BayerGB10Packed, BayerRG14p,       Pol1Mono8,      Pol1MonoXC12, Pol1MonoY10p, Pol1BayerRG8,
    Pol1BayerRGX10,  Pol1BayerRGXYC12, Pol1BayerRGC12p};

TEST(DefectivePixelDetectionFilter, FindsWhatASlowSearchFinds) {
  constexpr std::pair<std::size_t, std::size_t> kSizes[] = {{1, 1}, {2, 3},  {3, 2},   {1, 9},
                                                            {9, 1}, {17, 6}, {70, 11}, {37, 40}};
  for (PixelFormat format : kFormats)
    for (const Settings& settings : kSettings) {
      Filter filter;
      SlowSearch slow;
      unsigned seed = 0;
      for (const auto& [width, height] : kSizes) {
        TestImage image(width, height, format, seed % 2);
        const auto before = image.Randomize(++seed).All();
        ExpectEqual(filter, slow, settings, image);
        ASSERT_EQ(image.All(), before);
      }
    }
}

TEST(DefectivePixelDetectionFilter, ViewsAtEveryOffset) {
  const Buffer buffer = MakeBuffer();
  for (PixelFormat format : {Mono8, BayerRG8, BayerGB12, Pol1MonoX8, Pol1BayerRG10}) {
    TestImage image(40, 32, format);
    buffer->CopyImage(&image.Randomize(6));
    for (std::size_t i = 0; i < 16; ++i) {
      IQvImage* view = buffer->GetIQvImage()->GetROIImage(
          i % 4 * Info(format).GetROIIncrementX(), i / 4 * Info(format).GetROIIncrementY(), 20, 12);
      Filter filter;
      SlowSearch slow;
      ExpectEqual(filter, slow, kSettings[0], *view);
      ExpectEqual(filter, slow, {{0.4, 0.3, 0.42, 0.45, 0.35}, kWhole}, *view);
    }
  }
}

/// Samples above their depth, and windows whose sums need 32 and 64 bits.
TEST(DefectivePixelDetectionFilter, LargeSums) {
  for (const auto& [format, settings] :
       std::map<PixelFormat, Settings>{{Mono10, {{3, 0, 0, 0, 0}, kAround, 200, 300}},
                                       {Mono16, {{0.49, 0, 0, 0, 0}, kAround, SIZE_MAX, 300}},
                                       {Mono8, {{0.49, 0, 0, 0, 0}, kAround, 40, 300}},
                                       {BayerGB12, {{0, 1, 2, 3, 4}, kWhole, 2, 300}}}) {
    Filter filter;
    SlowSearch slow;
    TestImage image(331, 257, format, 1);
    ExpectEqual(filter, slow, settings, image.Randomize(3, false));
  }
}

/// A level of 100 and other pixels.
TestImage Flat(const std::map<std::pair<std::size_t, std::size_t>, unsigned>& others) {
  TestImage image(9, 7, Mono8);
  std::ranges::fill(image.All(), std::uint8_t{100});
  for (const auto& [place, value] : others) SetSample(image, place.first, place.second, value);
  return image;
}

TEST(DefectivePixelDetectionFilter, WorkedByHand) {
  Filter filter;
  EXPECT_EQ(ResultOf(filter).status, QvDefectivePixelDetectionStatus_None);
  TestImage flat = Flat({});
  filter.Filter(&flat);
  EXPECT_EQ(ResultOf(filter).status, QvDefectivePixelDetectionStatus_Finished);
  EXPECT_TRUE(ResultOf(filter).pixels.empty());
  // A corner has eight neighbours; 39 of 255 is just above 0.15.
  TestImage image = Flat({{{0, 0}, 151}, {{5, 4}, 139}, {{8, 6}, 138}});
  filter.Filter(&image);
  const std::vector<Pixel> pixels = ResultOf(filter).pixels;
  ASSERT_EQ(pixels.size(), 2U);
  EXPECT_EQ(pixels[0].mean, 100);
  EXPECT_EQ(pixels[0].deviation, 0.2);
  EXPECT_TRUE(pixels[1].x == 5 && pixels[1].y == 4 && pixels[1].value == 139);
}

/// The double 0.3 is a little less, and so is 255 times that, but when it is rounded it is 76.5. A
/// pixel of 1 among a mean of 77.5 stands out only if the limit is made without that.
TEST(DefectivePixelDetectionFilter, LimitsAreFusedForTheWholeImageOnly) {
  for (const auto& [area, pixels] :
       {std::pair{kWhole, std::vector{1U, 154U}}, {kAround, {1U, 77U, 78U}}}) {
    TestImage image(pixels.size(), 1, Mono8);
    for (std::size_t x = 0; x < pixels.size(); ++x) SetSample(image, x, 0, pixels[x]);
    Filter filter;
    Settings{{0.3}, area}.WriteTo(filter);
    filter.Filter(&image);
    EXPECT_EQ(ResultOf(filter).pixels.size(), area == kWhole ? 1U : 0U);
  }
}

TEST(DefectivePixelDetectionFilter, ALoweredMaximumKeepsWhatIsHeld) {
  Filter filter;
  TestImage image = Flat({{{0, 0}, 200}, {{4, 0}, 204}, {{8, 0}, 208}, {{4, 3}, 30}});
  filter.Filter(&image);
  filter.SetMaximumPixelCount(2);
  filter.Filter(&image);
  EXPECT_EQ(ResultOf(filter).status, QvDefectivePixelDetectionStatus_Finished) << "nothing is new";
  TestImage another = Flat({{{4, 6}, 230}});
  filter.Filter(&another);
  const Result result = ResultOf(filter);
  EXPECT_EQ(result.status, QvDefectivePixelDetectionStatus_Overflow);
  ASSERT_EQ(result.pixels.size(), 4U);
  EXPECT_EQ(result.pixels[3].value, 230) << "instead of 30, which is nearest to its mean";

  std::array<Pixel, 3> some{};
  std::size_t count = 2;
  filter.GetDetectionResult(nullptr, &count, some.data());
  EXPECT_TRUE(count == 4 && some[1].value == 204 && some[2].value == 0);
  EXPECT_EQ(MessageOf<GenICam::InvalidArgumentException>(
                [&] { filter.GetDetectionResult(nullptr, nullptr, some.data()); }),
            "pnCount is NULL.");
  filter.ClearDetectionResult();
  EXPECT_EQ(ResultOf(filter).status, QvDefectivePixelDetectionStatus_None);
  EXPECT_TRUE(ResultOf(filter).pixels.empty());
}

TEST(DefectivePixelDetectionFilter, SettingsOutOfRangeAreRefused) {
  Filter filter;
  double value = 0;
  constexpr auto kTwo = static_cast<_EQvDefectivePixelDetectionAveragingArea_t>(2);
  const std::pair<std::function<void()>, std::string> kRefused[] = {
      {[&] { filter.SetThreshold(Target{5}, 1); }, "eDPDTT = 5 must be smaller than Max = 5"},
      {[&] { filter.GetThreshold(Target{6}); }, "eDPDTT = 6 must be smaller than Max = 5"},
      {[&] { filter.Read(&value, 0x150, 8); }, "eDPDTT = 5 must be smaller than Max = 5"},
      {[&] { filter.Write(&value, 0x150, 8); }, "eDPDTT = 5 must be smaller than Max = 5"},
      {[&] { filter.SetDefectivePixelDetectionAveragingArea(kTwo); },
       "eDPDAA = 2 must be smaller than Max = 2"},
      {[&] { filter.SetPeripheralAreaSize(0); }, "nSize = 0 must be equal or greater than Min = 1"},
      {[&] { filter.SetPeripheralAreaSize(256); }, "nSize = 256 must be smaller than Max = 256"},
      {[&] { filter.SetMaximumPixelCount(0); }, "nCount = 0 must be equal or greater than Min = 1"},
      {[&] { filter.SetMaximumPixelCount(8192); }, "nCount = 8192 must be smaller than Max = 8192"},
  };
  for (const auto& [set, message] : kRefused)
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>(set), message);
}

TEST(DefectivePixelDetectionFilter, RefusesOtherFormats) {
  std::vector<PixelFormat> supported{Mono8};
  for (const PixelFormatRow& row : kPixelFormats)
    if ((row.IsPolarized() || row.IsBayer() || row.kind == PixelKind::Mono) && row.depth >= 8 &&
        row.format != Mono8 && row.format != Mono8s && row.format != Mono32)
      supported.push_back(row.format);
  EXPECT_EQ(supported.size(), 130U);
  Filter filter;
  ExpectSupportsOnly(filter, supported);
}

TEST(DefectivePixelDetectionFilter, DocumentShowsThresholdsForTheExpectedFormat) {
  using namespace GenApi;
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
  INodeMap* map = filter.GetINodeMap();
  const CEnumerationPtr format(map->GetNode("ExpectedPixelFormat"));
  const CEnumerationPtr target(map->GetNode("ThresholdTargetSelector"));
  const CFloatPtr ratio(map->GetNode("ThresholdRatio")), value(map->GetNode("ThresholdValue"));
  for (unsigned i = 0; i < 5; ++i) filter.SetThreshold(Target{i}, 0.1 * (i + 1));
  NodeList_t entries;
  format->GetEntries(entries);
  EXPECT_EQ(entries.size(), 102U);
  for (INode* node : entries) {
    const CEnumEntryPtr entry(node);
    const std::string name = entry->GetSymbolic().c_str();
    format->FromString(name.c_str());
    const PixelFormatRow* row = FindPixelFormat(static_cast<PixelFormat>(entry->GetValue()));
    EXPECT_EQ(row ? row->name : "Unknown", name);
    EXPECT_EQ(value->GetMax(), (1 << (row ? std::max<int>(row->depth, 8) : 8)) - 1) << name;
    const bool isMono = !row || row->kind == PixelKind::Mono, isBayer = !row || row->IsBayer();
    for (int i = 0; i < 5; ++i)
      EXPECT_EQ(IsAvailable(target->GetEntry(i)->GetNode()), i == 0 ? isMono : isBayer) << name;
    if (!isMono && !isBayer) continue;
    target->SetIntValue(isBayer ? 3 : 0);
    EXPECT_NEAR(ratio->GetValue(), isBayer ? 40 : 10, 1e-9) << name;
    EXPECT_NEAR(value->GetValue(), value->GetMax() * (isBayer ? 0.4 : 0.1), 1e-9) << name;
  }
  format->FromString("BayerRG12");
  target->FromString("BayerB");
  value->SetValue(819);
  EXPECT_EQ(filter.GetThreshold(QvDefectivePixelDetectionThresholdTarget_BayerB), 0.2);

  const CIntegerPtr size(map->GetNode("PeripheralAreaSize"));
  size->SetValue(256);
  EXPECT_EQ(filter.GetPeripheralAreaSize(), 256U);
  filter.SetDefectivePixelDetectionAveragingArea(kWhole);
  EXPECT_FALSE(IsAvailable(size->GetNode()));
  const CIntegerPtr maximum(map->GetNode("MaximumPixelCountToDetect"));
  EXPECT_EQ(maximum->GetMax(), 8192);
  EXPECT_EQ(maximum->GetValue(), 4095);
  filter.SetMaximumPixelCount(7);
  EXPECT_EQ(maximum->GetValue(), 4095) << "its setter invalidates a node that does not exist";
}

}  // namespace
}  // namespace QvApi
