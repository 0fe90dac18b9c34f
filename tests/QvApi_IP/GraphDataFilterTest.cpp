// SPDX-License-Identifier: MIT
// Measurements against plain sums over the read-out of single pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/GraphDataChecks.h"
#include "QvApi_IP/QvApi_IP.h"
#include "QvApi_IP/QvGraphDataFilter.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;
using Filter = CQvGraphDataFilter;
using List = CQvGraphDataBufferList;

constexpr auto kColumns = QvGraphDataType_VerticalIntegration;
constexpr auto kRows = QvGraphDataType_HorizontalIntegration;
constexpr auto kFullScale = QvGraphDataInfoUint32_FullScale;
constexpr auto kSampleCount = QvGraphDataInfoUint32_SampleCount;
constexpr char kEmpty[] = "ROI is empty. : InvalidArgumentException";

struct Region {
  std::size_t x, y, width, height;
};

bool IsSupported(const PixelFormatRow& row) {
  return row.kind != PixelKind::YCbCr && row.depth >= 8 && row.depth <= 16 &&
         !FormatList{Mono8s, BGRa10p, BGRa12p}.Contains(row.format);
}

/// One array, added up pixel by pixel.
struct Expected {
  std::uint32_t component = 0, pixels = 0;
  Elements elements;  ///< By value, column or row.
};

std::vector<Expected> AddUp(IQvImage& image, const Region& region, _EQvGraphDataType_t type) {
  const PixelFormatRow& row = *FindPixelFormat(image.GetImagePixelFormat());
  const std::size_t period = TilePeriod(row), components = row.kind == PixelKind::Color ? 3 : 1;
  // Colours that do not lie in words are measured in the order of BGR.
  const bool isReversed = components == 3 && row.storage != Storage::Unpacked && !row.IsBGR();
  const std::size_t places = type == kHistogram ? std::size_t{1} << row.depth
                             : type == kColumns ? image.GetImageWidth()
                                                : image.GetImageHeight();
  std::vector<Expected> arrays(components * period * period, {.elements = Elements(places)});
  for (std::size_t y = region.y; y < region.y + region.height; ++y)
    for (std::size_t x = region.x; x < region.x + region.width; ++x) {
      const CQvPixelComponent& pixel = image.GetIQvPixelComponentValue(x, y);
      for (std::size_t i = 0; i < components; ++i) {
        const std::size_t from = isReversed ? 2 - i : i;
        Expected& array = arrays[y % period * period + x % period + i];
        const std::uint32_t value = pixel.GetValue(from);
        array.component = static_cast<std::uint32_t>(pixel.GetPixelComponent(from));
        array.elements[type == kHistogram ? value
                       : type == kColumns ? x
                                          : y] += type == kHistogram ? 1 : value;
        ++array.pixels;
      }
    }
  if (type == kHistogram) return arrays;
  // Of the columns or rows, those of the array's phase stay. Tiles of two have no sums of phases
  // without pixels, tiles of four do.
  for (std::size_t i = 0; i < arrays.size(); ++i) {
    const std::size_t phase = type == kColumns ? i % period : i / period % period;
    const std::size_t first = type == kColumns ? region.x : region.y;
    const std::size_t count = type == kColumns ? region.width : region.height;
    Elements sums;
    for (std::size_t place = first; place < first + count; ++place)
      if (place % period == phase && (period == 4 || arrays[i].pixels != 0))
        sums.push_back(arrays[i].elements[place]);
    arrays[i].elements = sums;
  }
  return arrays;
}

List& ListOf(Filter& filter) { return dynamic_cast<List&>(*filter.GetIQvGraphDataBufferList()); }

std::uint32_t InfoOf(const CQvGraphDataBuffer& buffer, _EQvGraphDataInfoUint32_t key) {
  const auto found = buffer.Uint32Entries().find(key);
  return found == buffer.Uint32Entries().end() ? 0xBADBAD : found->second;
}

void ExpectMeasured(Filter& filter, IQvImage& image, const Region& region) {
  ASSERT_EQ(filter.Filter(&image), &image);
  const _EQvGraphDataType_t type = filter.GetGraphDataType();
  const List& list = ListOf(filter);
  const std::size_t depth = Info(image.GetImagePixelFormat()).GetEachComponentEffectiveBitCount();
  std::size_t i = 0;
  for (const auto& [component, pixels, elements] : AddUp(image, region, type)) {
    SCOPED_TRACE(NameOf(image.GetImagePixelFormat()) + " type " + std::to_string(type) + " array " +
                 std::to_string(i));
    const CQvGraphDataBuffer& buffer = *list.GetIQvGraphDataBuffer(i++);
    ASSERT_EQ(ElementsOf(buffer), elements);
    ASSERT_TRUE(pixels == 0 || InfoOf(buffer, kComponent) == component);
    if (elements.empty()) continue;
    const auto peak = std::max_element(elements.begin(), elements.end());
    ASSERT_EQ(InfoOf(buffer, kPeak), *peak);
    ASSERT_EQ(InfoOf(buffer, kPosition), peak - elements.begin());
    const auto samples = pixels / static_cast<std::uint32_t>(elements.size());
    ASSERT_EQ(InfoOf(buffer, kSampleCount), type == kHistogram ? 0xBADBAD : samples);
    ASSERT_EQ(InfoOf(buffer, kFullScale),
              type == kHistogram ? pixels : ((1U << depth) - 1) * samples);
  }
  ASSERT_EQ(list.GetGraphDataBufferCount(), i);
}

void SetRegion(Filter& filter, const Region& region) {
  filter.SetROIMode(QvROIMode_Manual);
  filter.SetOffsetX(region.x);
  filter.SetOffsetY(region.y);
  filter.SetWidth(region.width);
  filter.SetHeight(region.height);
}

void ExpectAllMeasured(IQvImage& image, const Region& region) {
  Filter filter;
  SetRegion(filter, region);
  for (_EQvGraphDataType_t type : {kHistogram, kColumns, kRows}) {
    filter.SetGraphDataType(type);
    ASSERT_NO_FATAL_FAILURE(ExpectMeasured(filter, image, region));
  }
}

TEST(GraphDataFilter, MeasuresEveryFormatAtEveryOffset) {
  std::vector<PixelFormat> supported;
  unsigned seed = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    if (!IsSupported(row)) continue;
    supported.push_back(row.format);
    const std::size_t period = TilePeriod(row);
    for (std::size_t offset = 0; offset < period; ++offset) {
      TestImage image(37, 23, row.format, seed % 3);
      const auto before = image.Randomize(++seed).All();
      ExpectAllMeasured(image, {offset, (seed + offset) % period, 37 - 4 - seed % 4, 19 - offset});
      ASSERT_FALSE(HasFatalFailure());
      EXPECT_EQ(image.All(), before);
    }
  }
  EXPECT_EQ(supported.size(), 153U);
  Filter filter;
  ExpectSupportsOnly(filter, supported);
}

/// The counting of pairs begins with images of some size.
TEST(GraphDataFilter, MeasuresLargeImages) {
  const struct {
    PixelFormat format;
    Region region;
  } kCases[] = {{Mono8, {3, 5, 600, 461}},
                {BayerGB8, {1, 0, 800, 663}},
                {BGR8, {1, 1, 521, 520}},
                {RGBa8, {0, 0, 530, 501}},
                {Pol1BayerRGXC8, {2, 3, 1050, 1013}}};
  for (const auto& [format, region] : kCases) {
    TestImage image(region.x + region.width + 1, region.y + region.height, format, 1);
    ASSERT_NO_FATAL_FAILURE(ExpectAllMeasured(image.Randomize(1), region));
  }
}

/// Bayer images have no sums if a phase has no pixels; others leave it out.
TEST(GraphDataFilter, RegionsSmallerThanTheTile) {
  for (const Region& region : {Region{3, 2, 1, 5}, Region{1, 3, 6, 1}, Region{5, 5, 1, 1}}) {
    for (PixelFormat format : {Pol1MonoY10, Pol1BayerRG8}) {
      TestImage image(9, 9, format);
      ASSERT_NO_FATAL_FAILURE(ExpectAllMeasured(image.Randomize(4), region));
    }
    for (PixelFormat format : {BayerRG8, BayerGB12p}) {
      Filter filter;
      SetRegion(filter, region);
      TestImage image(9, 9, format);
      ASSERT_NO_FATAL_FAILURE(ExpectMeasured(filter, image.Randomize(3), region));
      for (_EQvGraphDataType_t type : {kColumns, kRows}) {
        filter.SetGraphDataType(type);
        EXPECT_EQ(Refusal([&] { filter.Filter(&image); }), kNoData);
      }
    }
  }
}

TEST(GraphDataFilter, FindsItsRegion) {
  constexpr auto whole = QvROIMode_WholeImage, manual = QvROIMode_Manual,
                 center = QvROIMode_CenterOfImage, other = static_cast<EQvROIMode_t>(3);
  const std::size_t huge = SIZE_MAX;
  const struct {
    EQvROIMode_t mode;
    Region setting, measured;  // of an image of 20 x 10; measured.width 0: refused
  } kCases[] = {{whole, {3, 3, 4, 4}, {0, 0, 20, 10}},
                {manual, {3, 2, 4, 5}, {3, 2, 4, 5}},
                {manual, {16, 8, 5, 3}, {16, 8, 4, 2}},
                {manual, {19, 9, huge, huge}, {19, 9, 1, 1}},
                {manual, {20, 0, 1, 1}, {}},
                {manual, {huge, 0, 2, 1}, {}},
                {manual, {0, 10, 1, 1}, {}},
                {manual, {0, huge, 1, 100}, {}},
                {manual, {2, 2, 0, 1}, {}},
                {manual, {2, 2, 1, 0}, {}},
                {center, {9, 9, 7, 4}, {6, 3, 7, 4}},
                {center, {9, 9, 20, 3}, {0, 3, 20, 3}},
                {center, {9, 9, 21, huge}, {0, 0, 20, 10}},
                {center, {0, 0, 0, 4}, {}},
                {other, {9, 9, 6, 30}, {0, 0, 6, 10}}};
  TestImage image(20, 10, Mono8);
  image.Randomize(6);
  for (const auto& c : kCases) {
    Filter filter;
    SetRegion(filter, c.setting);
    WriteRegister<std::uint32_t>(filter, 0x128, c.mode);
    if (c.measured.width == 0)
      EXPECT_EQ(Refusal([&] { filter.Filter(&image); }), kEmpty);
    else
      ExpectMeasured(filter, image, c.measured);
  }
}

TEST(GraphDataFilter, SamplesAboveTheDepthAreCountedMasked) {
  TestImage image(300, 3, BayerGR10);
  Filter filter;
  ExpectMeasured(filter, image.Randomize(7, false), {0, 0, 300, 3});  // as the read-out does
}

TEST(GraphDataFilter, RefusalsAndTheirWords) {
  Filter filter;
  TestImage image(2, 2, Mono8);
  const auto measure = [&](std::uint32_t type) {
    WriteRegister(filter, 0x100, type);
    filter.Filter(&image);
  };
  const auto setType = [&](unsigned type) {
    filter.SetGraphDataType(static_cast<_EQvGraphDataType_t>(type));
  };
  const std::pair<std::function<void()>, std::string> kCases[] = {
      {[&] { setType(0); }, "eValue = 0 must be equal or greater than Min = 1"},
      {[&] { setType(4); }, "eValue = 4 must be smaller than Max = 4"},
      {[&] { filter.SetROIMode(static_cast<EQvROIMode_t>(3)); },
       "eRM = 3 must be smaller than Max = 3"},
      {[&] { measure(0); }, "GraphDataType = 0 must be equal or greater than Min = 1"},
      {[&] { measure(4); }, "GraphDataType = 4 must be smaller than Max = 4"},
  };
  for (const auto& [action, message] : kCases)
    EXPECT_EQ(Refusal(action), message + " : OutOfRangeException");
  EXPECT_EQ(filter.GetIQvGraphDataBufferList()->GetGraphDataBufferCount(), 0U);
}

TEST(GraphDataFilter, ListsRotate) {
  Filter filter;
  const auto measure = [&](unsigned value) {
    TestImage image(4, 4, BayerRG8);
    std::ranges::fill(image.All(), static_cast<std::uint8_t>(value));
    filter.Filter(&image);
  };
  const auto fetched = [&] { return InfoOf(*ListOf(filter).GetIQvGraphDataBuffer(0), kPosition); };
  const List& first = ListOf(filter);
  for (unsigned value : {1, 2, 3}) measure(value);
  EXPECT_EQ(first.GetGraphDataBufferCount(), 0U);
  const List& second = ListOf(filter);
  for (unsigned value : {4, 5}) {
    measure(value);
    EXPECT_EQ(InfoOf(*second.GetIQvGraphDataBuffer(0), kPosition), 3U);
  }
  EXPECT_EQ(&ListOf(filter), &ListOf(filter));
  SetRegion(filter, {0, 0, 4, 1});
  filter.SetGraphDataType(kRows);
  EXPECT_EQ(Refusal([&] { measure(6); }), kNoData);
  EXPECT_EQ(fetched(), 5U) << "what failed is not handed out";
}

TEST(GraphDataFilter, TakesItsMemoryFromTheAllocator) {
  Allocator allocator;
  allocator.limit = 2000;
  const Initialized initialized;
  const CQvAutoPtr<IQvFilterReleasable, IQvGraphDataFilter> filter(
      CreateIQvGraphDataFilter(&allocator));
  TestImage small(2, 1, Mono10), large(2, 1, Mono12);
  filter->Filter(&small);
  EXPECT_EQ(allocator.allocations, 1);
  EXPECT_THROW(filter->Filter(&large), GenICam::BadAllocException);
}

TEST(GraphDataFilter, DocumentMatchesRegistersAndKnowsTheLimits) {
  Filter filter;
  ExpectDocumentMatchesRegisters(filter);
  GenApi::INodeMap& map = *filter.GetINodeMap();
  for (unsigned mode : {0, 1, 2}) {
    filter.SetROIMode(static_cast<EQvROIMode_t>(mode));
    for (const char* name : {"OffsetX", "OffsetY", "Width", "Height"})
      EXPECT_EQ(GenApi::IsAvailable(map.GetNode(name)->GetAccessMode()),
                *name == 'O' ? mode == 1 : mode > 0);
  }
  filter.SetROIMode(QvROIMode_Manual);
  const struct {
    const char *offset, *size, *limit;
  } kAxes[] = {{"OffsetX", "Width", "WidthMax"}, {"OffsetY", "Height", "HeightMax"}};
  for (const auto& axis : kAxes) {
    const GenApi::CIntegerPtr offset(map.GetNode(axis.offset)), size(map.GetNode(axis.size));
    const GenApi::CIntegerPtr limit(map.GetNode(axis.limit));
    EXPECT_EQ(offset->GetMax(), 8192 - 100);
    offset->SetValue(50);
    size->SetValue(250);
    const std::int64_t kLimits[][3] = {{300, 50, 250}, {51, 0, 1}, {50, 0, 0}};
    for (const auto& [value, offsetMax, sizeMax] : kLimits) {
      limit->SetValue(value);
      EXPECT_EQ(offset->GetMax(), offsetMax);
      EXPECT_EQ(size->GetMax(), sizeMax);
    }
  }
  EXPECT_EQ(filter.GetOffsetY(), 50U);
  EXPECT_EQ(filter.GetHeight(), 250U);
  GenApi::CEnumerationPtr(map.GetNode("GraphDataType"))->FromString("HorizontalIntegration");
  EXPECT_EQ(filter.GetGraphDataType(), kRows);
}

}  // namespace
}  // namespace QvApi
