// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>

#include "QvApi_IP/FilterChecks.h"
#include "QvApi_IP/QvSNMeasurementFilter.h"

namespace {

/// So many requests for memory until one fails; none does if this is negative. It is about those of
/// the test's thread, or about those of others.
std::atomic<int> g_requestsLeft = -1;
std::atomic<bool> g_isAboutTest = true;
thread_local bool t_isTest = false;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  const bool fails = t_isTest == g_isAboutTest && g_requestsLeft >= 0 && g_requestsLeft-- == 0;
  if (void* memory = fails ? nullptr : std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace QvApi {
namespace {

using namespace Testing;
using Frames = std::vector<std::unique_ptr<TestImage>>;
using Values = std::vector<CSNMeasurementValue>;
using GenICam::OutOfRangeException;

constexpr std::size_t kFrameWidth = 13, kFrameHeight = 9;

Frames RandomFrames(std::size_t count, PixelFormat format, std::size_t width = kFrameWidth) {
  Frames frames;
  for (unsigned i = 0; i < count; ++i) {
    frames.push_back(std::make_unique<TestImage>(width, kFrameHeight, format, i % 3));
    frames[i]->Randomize(i);
  }
  return frames;
}

void FillSeries(CQvSNMeasurementFilter& filter, const Frames& frames) {
  filter.SetROIMode(QvROIMode_WholeImage);
  filter.SetFrameCount(frames.size());
  for (const auto& frame : frames) EXPECT_EQ(filter.Filter(frame.get()), frame.get());
}

bool IsReady(CQvSNMeasurementFilter& filter, unsigned timeout = 0) {
  return filter.RetrieveIQvSNMeasurementResult(timeout, QvTimeoutHandling_ReturnNull) == &filter;
}

/// Without the components.
Values ResultsOf(CQvSNMeasurementFilter& filter) {
  EXPECT_TRUE(IsReady(filter, kWaitForever));
  Values values(filter.GetComponentCount());
  for (std::size_t i = 0; i < values.size(); ++i) {
    CSNMeasurementValue& v = values[i];
    filter.GetSNMeasurementValue(i, nullptr, &v.pixelCount, &v.average,
                                 &v.temporalStandardDeviation, &v.frameStandardDeviation);
  }
  return values;
}

/// Plain sums of doubles.
struct Sums {
  double count = 0, sum = 0, squares = 0;
  void Add(double value, double square) { *this = {count + 1, sum + value, squares + square}; }
  double Mean() const { return count == 0 ? 0 : sum / count; }
  double MeanSquare() const { return count == 0 ? 0 : squares / count; }
  double Deviation() const { return std::sqrt(std::max(0.0, MeanSquare() - Mean() * Mean())); }
};

/// Pixel by pixel, over the frames in the format that is measured; without the components.
Values Reference(const Frames& frames, const SNRegion& roi) {
  CQvPixelFormatConverter converter;
  converter.SetDestinationPixelFormat(
      CQvSNMeasurementFilter::GetRegisteredIQvImagePixelFormat(frames[0]->GetImagePixelFormat()));
  std::vector<Buffer> unpacked;
  for (const auto& frame : frames)
    converter.Convert(frame.get(), unpacked.emplace_back(MakeBuffer()).Get());
  const auto& row = *FindPixelFormat(converter.GetDestinationPixelFormat());
  const std::size_t step = row.componentCount;
  const std::size_t period = row.kind == PixelKind::PolarizedBayer ? 4
                             : row.IsBayer() || row.IsPolarized()  ? 2
                                                                   : 1;
  const std::size_t count = step == 1 ? period * period : 3;
  const auto classOf = [&](std::size_t x, std::size_t y, std::size_t channel) {
    if (step == 2) return channel == 0 ? 0 : 1 + x % 2;
    return step == 1 ? y % period * period + x % period : channel;
  };
  const auto forEach = [&](auto visit) {
    for (std::size_t r = 0; r < roi.height; ++r)
      for (std::size_t i = 0; i < roi.width * step; ++i)
        if (i % step < 3) visit(r, i / step, i % step);
  };
  const auto add = [&](const Buffer& frame, std::size_t r, std::size_t c, std::size_t channel,
                       Sums& sums) {
    const double v = SampleAt(*frame->GetIQvImage(), (roi.x + c) * step + channel, roi.y + r);
    sums.Add(v, v * v);
  };
  std::vector<Sums> pixelSD(count), frameSD(count);
  forEach([&](std::size_t r, std::size_t c, std::size_t channel) {
    Sums pixel;
    for (const Buffer& frame : unpacked) add(frame, r, c, channel, pixel);
    pixelSD[classOf(roi.x + c, roi.y + r, channel)].Add(pixel.Mean(), pixel.Deviation());
  });
  for (const Buffer& frame : unpacked) {
    std::vector<Sums> sums(count);
    forEach([&](std::size_t r, std::size_t c, std::size_t channel) {
      add(frame, r, c, channel, sums[classOf(step == 1 ? c : roi.x + c, r, channel)]);
    });
    for (std::size_t k = 0; k < count; ++k) frameSD[k].Add(sums[k].Deviation(), 0);
  }
  Values values;
  for (std::size_t k = 0; k < count; ++k)
    values.push_back({{},
                      static_cast<std::size_t>(pixelSD[k].count),
                      pixelSD[k].Mean(),
                      pixelSD[k].MeanSquare(),
                      frameSD[k].Mean()});
  return values;
}

std::vector<PixelFormat> SupportedFormats() {
  std::vector<PixelFormat> formats;
  for (const PixelFormatRow& row : kPixelFormats) {
    const std::string name(row.name);
    const bool isRaw = row.componentCount == 1 && row.depth <= 16 && name != "Mono8s";
    const bool isColor = row.kind == PixelKind::Color && row.storage == Storage::Unpacked;
    if ((isRaw && name != "Mono1p" && name != "Mono2p") || (isColor && name != "RGB16") ||
        name == "YCbCr8" || name == "YCbCr422_8" || name == "YCbCr709_422_8")
      formats.push_back(row.format);
  }
  return formats;
}

TEST(SNMeasurementFilter, SupportsItsFormats) {
  const Initialized initialized;
  CQvSNMeasurementFilter filter;
  EXPECT_EQ(SupportedFormats().size(), 11 + 44 + 80 + 4 + 8 + 3);
  ExpectSupportsOnly(filter, SupportedFormats(), [](const PixelFormatRow& row) {
    return row.name == "Mono1p" || row.name == "Mono2p";
  });
}

/// In all formats, from every parity of the region's place, and with regions that stick out.
TEST(SNMeasurementFilter, AgreesWithPlainSums) {
  const Initialized initialized;
  for (PixelFormat format : SupportedFormats()) {
    const Frames frames = RandomFrames(3, format);
    CQvSNMeasurementFilter filter;
    FillSeries(filter, frames);
    const auto check = [&](const SNRegion& region) {
      EXPECT_EQ(ResultsOf(filter), Reference(frames, region)) << NameOf(format) << region.x;
    };
    check({0, 0, kFrameWidth, kFrameHeight});
    filter.SetROIMode(QvROIMode_Manual);
    for (const SNRegion& region :
         {SNRegion{1, 0, 7, 5}, {0, 3, 12, 1}, {5, 1, 1, 8}, {2, 2, 11, 2}, {3, 3, 3, 6}}) {
      filter.SetWidth(region.width);
      filter.SetHeight(region.height);
      filter.SetOffsetX(region.x == 2 ? SIZE_MAX : region.x);
      filter.SetOffsetY(region.y);
      check(region);
    }
    filter.SetROIMode(QvROIMode_CenterOfImage);
    check({5, 1, 3, 6});
  }
}

TEST(SNMeasurementFilter, NamesComponents) {
  const Initialized initialized;
  const std::pair<const char*, const char*> kCases[]{
      {"Mono4p", "Mono8"},
      {"BayerGR12Packed", "Gr12 R12 B12 Gb12"},
      {"RGBa8", "R8 G8 B8"},
      {"BGR14", "B14 G14 R14"},
      {"YCbCr709_422_8", "Y8 Cr8 Cb8"},
      {"Pol1MonoXYC10", "Mono10_POL_045 Mono10_POL_000 Mono10_POL_090 Mono10_POL_135"},
      // Greens are named by their columns where the sensor is transposed.
      {"Pol1BayerRGC8",
       "Gb8_POL_135 Gb8_POL_090 R8_POL_135 R8_POL_090 Gb8_POL_000 Gb8_POL_045 R8_POL_000 "
       "R8_POL_045 B8_POL_135 B8_POL_090 Gr8_POL_135 Gr8_POL_090 B8_POL_000 B8_POL_045 "
       "Gr8_POL_000 Gr8_POL_045"}};
  for (const auto& [format, names] : kCases) {
    CQvSNMeasurementFilter filter;
    FillSeries(filter, RandomFrames(1, FormatOf(format)));
    std::string text;
    for (std::size_t i = 0; i < ResultsOf(filter).size(); ++i) {
      EQvPixelComponent_t component{};
      filter.GetSNMeasurementValue(i, &component, nullptr, nullptr, nullptr, nullptr);
      text +=
          std::string(i == 0 ? "" : " ") + GetIQvPixelComponentInfo(component)->GetName().c_str();
    }
    EXPECT_EQ(text, names) << format;
  }
}

/// A pattern of 100 and 120, and noise of a normal distribution upon it.
TEST(SNMeasurementFilter, FindsTheNoiseThatWasPutIn) {
  const Initialized initialized;
  constexpr double kNoise = 5;
  const Frames frames = RandomFrames(100, PixelFormat::Mono12, 1000);
  std::mt19937 random(1);
  std::normal_distribution<double> normal(0.5, kNoise);
  for (const auto& frame : frames)
    for (std::size_t i = 0; i < 1000 * kFrameHeight; ++i)
      SetSample(*frame, i % 1000, i / 1000,
                static_cast<unsigned>((i % 2 == 0 ? 100 : 120) + normal(random)));
  CQvSNMeasurementFilter filter;
  FillSeries(filter, frames);
  const CSNMeasurementValue value = ResultsOf(filter).at(0);
  EXPECT_EQ(value.pixelCount, 1000 * kFrameHeight);
  EXPECT_NEAR(value.average, 110, 0.05);
  EXPECT_NEAR(value.temporalStandardDeviation, kNoise, 0.1);
  EXPECT_NEAR(value.frameStandardDeviation, std::hypot(10, kNoise), 0.1);
}

TEST(SNMeasurementFilter, SeriesBeginsAndEnds) {
  const Initialized initialized;
  const Frames frames = RandomFrames(3, PixelFormat::BayerRG8, 640);
  const Frames others = RandomFrames(2, PixelFormat::Mono8);
  CQvSNMeasurementFilter filter;
  EXPECT_EQ(MessageOf<GenICam::TimeoutException>([&] {
              filter.RetrieveIQvSNMeasurementResult(1, QvTimeoutHandling_ThrowException);
            }),
            "A timeout occurred during the processing of "
            "IQvSNMeasurementFilter::RetrieveIQvSNMeasurementResult(1, 1)");
  filter.SetFrameCount(2);
  for (const auto& frame : {&frames[0], &others[0], &others[1]}) filter.Filter(frame->get());
  const Values values = Reference(others, {0, 0, kFrameWidth, kFrameHeight});
  EXPECT_EQ(ResultsOf(filter), values);  // The second frame has begun the series again.
  filter.Filter(frames[0].get());        // One too many, whatever its format.
  EXPECT_EQ(ResultsOf(filter), values);
  filter.ClearGrabbedImage();
  EXPECT_FALSE(IsReady(filter));
  EXPECT_EQ(filter.GetComponentCount(), 0U);
  for (const auto& frame : frames) filter.Filter(frame.get());
  EXPECT_EQ(ResultsOf(filter).at(3).pixelCount, 50 * (kFrameHeight / 2));
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] { filter.SetFrameCount(1025); }),
            "value = 1025 must be equal or smaller than Max = 1024");
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] { filter.SetROIMode(EQvROIMode_t{3}); }),
            "eRM = 3 must be smaller than Max = 3");
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] {
              filter.GetSNMeasurementValue(4, nullptr, nullptr, nullptr, nullptr, nullptr);
            }),
            "nIndex = 4 must be smaller than Max = 4");
  EXPECT_TRUE(IsReady(filter));
  filter.SetFrameCount(3);
  EXPECT_FALSE(IsReady(filter, 20));
}

/// Each request for memory fails once.
TEST(SNMeasurementFilter, FailuresLeaveSeriesAndResults) {
  const Initialized initialized;
  const Frames frames = RandomFrames(2, PixelFormat::Mono10p);
  const Frames wider = RandomFrames(1, PixelFormat::Mono8, 30);
  CQvSNMeasurementFilter filter;
  filter.SetFrameCount(2);
  filter.SetROIMode(QvROIMode_Manual);
  filter.Filter(frames[0].get());
  t_isTest = true;
  const auto failures = [&](IQvImage* image) {
    for (int requests = 0;; ++requests) try {
        g_requestsLeft = requests;
        filter.Filter(image);
        g_requestsLeft = -1;
        return requests;
      } catch (const GenICam::BadAllocException&) {
        EXPECT_EQ(ReadRegister<std::uint64_t>(filter, 0x130), kFrameWidth);
      }
  };
  EXPECT_GT(failures(frames[1].get()), 1);
  const Values values = ResultsOf(filter);
  int passes = 0;
  g_isAboutTest = false;
  for (bool hasFailed = true; hasFailed; ++passes) {
    g_requestsLeft = passes;
    filter.SetOffsetX(1);
    filter.SetHeight(3);
    while (g_requestsLeft >= 0 && !filter.RetrieveIQvSNMeasurementResult(1, {})) continue;
    hasFailed = g_requestsLeft.exchange(-1) < 0;
    filter.SetHeight(9);
    EXPECT_EQ(ResultsOf(filter), values);
  }
  EXPECT_GT(passes, 8);
  g_isAboutTest = true;
  filter.ClearGrabbedImage();
  filter.Filter(frames[0].get());
  EXPECT_GT(failures(wider[0].get()), 0);
  filter.Filter(wider[0].get());
  EXPECT_EQ(ResultsOf(filter).at(0).temporalStandardDeviation, 0.0);
}

TEST(SNMeasurementFilter, NodeMapShowsSettingsAndResults) {
  const Initialized initialized;
  CQvSNMeasurementFilter filter;
  GenApi::INodeMap& map = *filter.GetINodeMap();
  const auto integer = [&](const char* name) { return GenApi::CIntegerPtr(map.GetNode(name)); };
  const auto real = [&](const char* name) {
    return GenApi::CFloatPtr(map.GetNode(name))->GetValue();
  };
  const auto expectAvailable = [&](bool isAvailable, std::vector<const char*> names) {
    for (const char* name : names)
      EXPECT_EQ(GenApi::IsAvailable(map.GetNode(name)->GetAccessMode()), isAvailable) << name;
  };
  const std::vector<const char*> resultNames{"PixelComponentIndex", "PixelComponent", "PixelCount",
                                             "Average", "FrameStandardDeviation"};
  EXPECT_EQ(integer("PixelComponentCount")->GetValue(), 0);
  expectAvailable(false, resultNames);
  EXPECT_EQ(integer("OffsetXMax")->GetValue(), 4096 - 101);
  expectAvailable(false, {"OffsetX", "OffsetY"});
  filter.SetROIMode(QvROIMode_Manual);
  expectAvailable(true, {"OffsetX", "Height"});

  const Frames frames = RandomFrames(2, PixelFormat::BayerGB10);
  integer("FrameCount")->SetValue(2);
  integer("Width")->SetValue(12);
  integer("OffsetY")->SetValue(3);
  for (const auto& frame : frames) filter.Filter(frame.get());
  EXPECT_EQ(integer("WidthMax")->GetValue(), 13);
  const Values values = Reference(frames, {0, 0, 12, kFrameHeight});
  EXPECT_EQ(ResultsOf(filter), values);
  expectAvailable(true, resultNames);
  EXPECT_EQ(integer("PixelComponentIndex")->GetMax(), 3);
  const GenApi::CEnumerationPtr component(map.GetNode("PixelComponent"));
  for (const std::size_t i : {3, 0, 2}) {
    integer("PixelComponentIndex")->SetValue(static_cast<std::int64_t>(i));
    EXPECT_EQ((CSNMeasurementValue{{},
                                   static_cast<std::size_t>(integer("PixelCount")->GetValue()),
                                   real("Average"),
                                   real("TemporalStandardDeviation"),
                                   real("FrameStandardDeviation")}),
              values[i]);
  }
  EXPECT_STREQ(component->ToString().c_str(), "R10");
  integer("Width")->SetValue(1);
  EXPECT_EQ(ResultsOf(filter)[2].pixelCount, 4U);
  EXPECT_EQ(integer("PixelCount")->GetValue(), 4);
  GenApi::CCommandPtr(map.GetNode("ClearGrabbedImage"))->Execute();
  expectAvailable(false, resultNames);
  WriteRegister<std::uint64_t>(filter, 0x150, 5);
  EXPECT_EQ(ReadRegister<std::uint64_t>(filter, 0x150), 1024U);
}

/// Accesses of odd lengths touch no other bytes.
TEST(SNMeasurementFilter, ResultPortKeepsToItsBytes) {
  std::mutex lock;
  const Values values{{EQvPixelComponent_t::R8, 7, 1.5, 2, 3}, {EQvPixelComponent_t::B8, 9}};
  CSNMeasurementResult port(lock, values);
  const auto read = [&](std::int64_t address, std::int64_t length) {
    std::string bytes(12, '.');
    port.Read(bytes.data(), address, length);
    return bytes;
  };
  using namespace std::string_literals;
  EXPECT_EQ(read(0x00, 10), "\2\0\0\0\0\0\0\0\2\0.."s);
  EXPECT_EQ(read(0x10, 6), "\0\0\x8\2\0\0......"s);
  EXPECT_EQ(read(0x04, 8) + read(0x38, 8) + read(0x18, 0) + read(0x18, -1), std::string(48, '.'));
  const std::int64_t selections[]{0, 1, 2};
  port.Write(selections, 8, 20);
  EXPECT_EQ(read(0x18, 3), "\x9\0\0........."s);
  EXPECT_EQ(MessageOf<OutOfRangeException>([&] { port.Write(selections, 8, 24); }),
            "PixelComponentSelector = 2 must be smaller than Max = 2");
}

}  // namespace
}  // namespace QvApi
