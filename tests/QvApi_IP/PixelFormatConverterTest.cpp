// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvPixelFormatConverter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "Kernels/DemosaicReference.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

constexpr std::uint8_t kOld = 0xA5;

/// Gives memory full of kOld and takes notice of it.
class OldMemory : public IQvAllocator {
 public:
  void Allocate(void** buffer, std::size_t size, void** context) override {
    *buffer = ::operator new(size);
    *context = this;
    std::memset(*buffer, kOld, size);
    sizes[*buffer] = size;
  }
  void Deallocate(void* buffer, std::size_t size, void* context) override {
    EXPECT_EQ(context, this);
    EXPECT_EQ(sizes.at(buffer), size);
    sizes.erase(buffer);
    ::operator delete(buffer);
  }
  void OnDeregister() override { ++ended; }

  std::map<void*, std::size_t> sizes;
  int ended = 0;
};

/// A conversion into new memory full of kOld.
class Conversion {
 public:
  Conversion(CQvPixelFormatConverter& converter, IQvImage& source) {
    converter.Convert(&source, buffer.Get());
  }
  IQvImage& Image() const { return *buffer->GetIQvImage(); }
  PixelFormat Format() const { return Image().GetImagePixelFormat(); }
  std::size_t Planes() const { return Info(Format()).GetPlaneCount(); }
  std::vector<std::uint8_t> All() const { return AllBytes(&Image(), Planes()); }
  std::vector<std::uint8_t> Line(std::size_t y, std::size_t count) const {
    const std::uint8_t* line = Bytes(&Image()) + y * Image().GetImageLinePitch();
    return {line, line + count};
  }

  OldMemory memory;
  const Buffer buffer = MakeBuffer(&memory);
};

struct Settings {
  PixelFormat destination;
  bool reverse = false;
  unsigned method = 2;
  std::size_t alignment = 0;
};

void Set(CQvPixelFormatConverter& converter, const Settings& settings) {
  converter.SetDestinationPixelFormat(settings.destination);
  converter.SetReverseY(settings.reverse);
  converter.SetBayerInterpolationMethod(
      static_cast<EQvBayerInterpolationMethod_t>(settings.method));
  converter.SetLinePitchAlignment(settings.alignment);
}

// --- Refusals
// -------------------------------------------------------------------------------------

TEST(PixelFormatConverter, RefusesNullPointers) {
  CQvPixelFormatConverter converter;
  TestImage image(2, 2, Mono8);
  const Buffer buffer = MakeBuffer();
  const auto message = [&](IQvImage* source, IQvImageBuffer* destination) {
    return MessageOf<GenICam::InvalidArgumentException>(
        [&] { converter.Convert(source, destination); });
  };
  EXPECT_EQ(message(nullptr, buffer.Get()), "IQvImage is NULL.");
  EXPECT_EQ(message(nullptr, nullptr), "IQvImage is NULL.");
  EXPECT_EQ(message(&image, nullptr), "IQvImageBuffer is NULL.");
}

TEST(PixelFormatConverter, NamesThePairThatItCannotConvert) {
  const auto code = [](unsigned value) { return static_cast<PixelFormat>(value); };
  const struct {
    PixelFormat from, to;
    const char* words;
  } kPairs[] = {
      {Mono12, Mono12p, "from  Mono12 to Mono12p is"},
      {BayerRG8, BayerGB8, "from  BayerRG8 to BayerGB8 is"},
      {BayerGR12Packed, BGR10, "from  BayerGR12Packed to BGR10 is"},
      {BayerGR12Packed, BGRa10, "from  BayerGR12Packed to BGRa10 is"},
      {BayerGR12Packed, RGB10p32, "from  BayerGR12Packed to RGB10p32 is"},
      {BayerGR12Packed, CBGR10p32, "from  BayerGR12Packed to CBGR10p32 is"},
      {Pol1MonoX8, Pol1Mono8, "from  Pol1MonoX8 to Pol1Mono8 is"},
      {Mono8s, BGR8, "from  Mono8s to BGR8 is"},
      {Mono8, Mono32, "from  Mono8 to Mono32 is"},
      {Mono8, code(0x01080999), "from  Mono8 to 0x01080999 is"},
      {Mono8, PixelFormat::None, "from  Mono8 to 0xFFFFFFFF is"},
      {code(0x0108ABCD), BGR8, "from  0x0108ABCD to BGR8 is"},
  };
  for (const auto& pair : kPairs)
    for (bool reverse : {false, true})
      for (bool hasImage : {false, true}) {
        CQvPixelFormatConverter converter;
        Set(converter, {pair.to, reverse});
        const Buffer buffer = MakeBuffer();
        if (hasImage) buffer->CreateBuffer(3, 3, BGR8, QvMemoryInitialization_One);
        std::array<std::uint8_t, 64> bytes{};
        ForeignImage source(bytes.data(), 4, 4, 8, pair.from);
        EXPECT_EQ(
            MessageOf<GenICam::RuntimeException>([&] { converter.Convert(&source, buffer.Get()); }),
            std::string("Converting a pixelformat ") + pair.words + " not supported.");
        EXPECT_FALSE(converter.IsSupported(pair.from));
        EXPECT_EQ(buffer->HasImageBuffer(), hasImage);
      }
  for (const char* phase : {"RG", "GB", "BG"})
    for (PixelFormat to : {BGR10, BGRa10, RGB10p32, CBGR10p32}) {
      CQvPixelFormatConverter converter;
      Set(converter, {to});
      EXPECT_TRUE(converter.IsSupported(FormatOf(std::string("Bayer") + phase + "12Packed")));
    }
}

TEST(PixelFormatConverter, RefusesImagesWithoutPixels) {
  CQvPixelFormatConverter converter;
  const Buffer empty = MakeBuffer(), destination = MakeBuffer();
  auto* image = dynamic_cast<IQvImage*>(empty.Releasable());
  for (PixelFormat format : {BGR8, PixelFormat::None}) {
    Set(converter, {format});
    EXPECT_THROW(converter.Convert(image, destination.Get()), GenICam::GenericException);
    EXPECT_THROW(converter.Convert(image, empty.Get()), GenICam::GenericException);
  }
  // A view that its parent has outgrown.
  Set(converter, {BGR8});
  destination->CreateBuffer(8, 8, BayerRG8, QvMemoryInitialization_Zero);
  IQvImage* view = destination->GetIQvImage()->GetROIImage(4, 4, 4, 4);
  destination->SetSize(6, 6, BayerRG8, 0);
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { converter.Convert(view, empty.Get()); }),
            "There is no available image.");
}

// --- Equal formats
// --------------------------------------------------------------------------------

/// The label of a flipped image by the rules of names.
std::string FlippedName(const std::string& name, std::size_t height) {
  for (const std::string sensor : {"Pol1Mono", "Pol1BayerRG"}) {
    if (!name.starts_with(sensor)) continue;
    const std::size_t depth = name.find_first_of("0123456789", sensor.size());
    std::string tile = name.substr(sensor.size(), depth - sensor.size());  // "XYC"
    const bool isC = tile.ends_with('C');
    if (isC) tile.pop_back();
    const std::map<std::string, std::string> partner{
        {"", "Y"}, {"Y", ""}, {"X", "XY"}, {"XY", "X"}};
    return sensor + partner.at(tile) + (isC ? "C" : "") + name.substr(depth);
  }
  if (height % 2 != 0 || !name.starts_with("Bayer")) return name;
  const std::string phase = name.substr(5, 2), tail = name.substr(7);
  const bool isOdd = tail == "12Packed";
  const std::map<std::string, std::string> phases{
      {"RG", "GB"}, {"GR", "BG"}, {"GB", isOdd ? "GR" : "RG"}, {"BG", isOdd ? "RG" : "GR"}};
  return "Bayer" + phases.at(phase) + (tail == "4p" ? "8" : tail);
}

TEST(PixelFormatConverter, CopiesEqualFormatsAndRelabelsWhatItFlips) {
  for (const PixelFormatRow& row : kPixelFormats) {
    if (row.format == CYCbCr420_8_YY_Cb_Cr_Planar) continue;
    for (auto [width, height] : {std::pair{8, 6}, {13, 5}, {1, 1}, {2, 2}})
      for (std::size_t padding : {0, 5})
        for (std::size_t alignment : {0, 1, 7})
          for (bool reverse : {false, true}) {
            const auto w = static_cast<std::size_t>(width), h = static_cast<std::size_t>(height);
            TestImage source(w, h, row.format, padding);
            const auto before = source.Randomize(77, false).All();
            CQvPixelFormatConverter converter;
            Set(converter, {row.format, reverse, 2, alignment});
            const Conversion result(converter, source);
            const std::string name =
                reverse ? FlippedName(std::string(row.name), h) : std::string(row.name);
            ASSERT_EQ(NameOf(result.Format()), name);
            ASSERT_EQ(result.Image().GetImageWidth(), w);
            ASSERT_EQ(result.Image().GetImageHeight(), h);
            const std::size_t bytes = LineBytes(row.format, w);
            for (std::size_t plane = 0; plane < result.Planes(); ++plane)
              for (std::size_t y = 0; y < h; ++y) {
                const std::uint8_t* line = source.Line(plane * h + y);
                ASSERT_EQ(result.Line(plane * h + (reverse ? h - 1 - y : y), bytes),
                          std::vector(line, line + bytes))
                    << row.name << " " << width << " x " << height << " line " << y;
              }
            ASSERT_EQ(source.All(), before);
          }
  }
}

TEST(PixelFormatConverter, FlipsTheThreePlanesOf420EachByItself) {
  constexpr std::size_t kW = 8, kH = 6;
  std::vector<std::uint8_t> bytes(kW * kH * 3 / 2);  // not one byte more
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = PatternByte(i);
  ForeignImage source(bytes.data(), kW, kH, kW, CYCbCr420_8_YY_Cb_Cr_Planar);
  for (bool reverse : {false, true}) {
    std::vector<std::uint8_t> expected = bytes;
    if (reverse) {
      for (std::size_t y = 0; y < kH; ++y)
        std::copy_n(&bytes[y * kW], kW, &expected[(kH - 1 - y) * kW]);
      for (std::size_t plane : {kW * kH, kW * kH * 5 / 4})
        for (std::size_t y = 0; y < kH / 2; ++y)
          std::copy_n(&bytes[plane + y * kW / 2], kW / 2,
                      &expected[plane + (kH / 2 - 1 - y) * kW / 2]);
    }
    for (std::size_t alignment : {0, 64}) {
      CQvPixelFormatConverter converter;
      Set(converter, {CYCbCr420_8_YY_Cb_Cr_Planar, reverse, 2, alignment});
      const Conversion result(converter, source);
      auto all = result.All();
      all.resize(bytes.size());
      EXPECT_EQ(all, expected) << reverse;
      EXPECT_EQ(result.Image().GetImageLinePitch(), kW);
    }
  }
}

// --- In place
// -------------------------------------------------------------------------------------

TEST(PixelFormatConverter, LeavesAnImageThatIsWantedAsItIs) {
  CQvPixelFormatConverter converter;
  Set(converter, {BayerRG12p, false, 2, 512});
  const Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(10, 4, BayerRG12p, QvMemoryInitialization_One);
  const auto before = AllBytes(buffer->GetIQvImage());
  const std::size_t pitch = buffer->GetIQvImage()->GetImageLinePitch();
  converter.Convert(buffer->GetIQvImage(), buffer.Get());
  EXPECT_EQ(buffer->GetIQvImage()->GetImageLinePitch(), pitch) << "not even its pitch changes";
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), before);
}

TEST(PixelFormatConverter, ConvertsFromItsOwnDestinationAndFromViewsOfIt) {
  const struct {
    PixelFormat from;
    Settings settings;
  } kCases[] = {{BayerRG8, {BGR8}},
                {BayerRG8, {RGBa8, true, 7}},
                {BayerGB12, {BGRa12, true, 5}},
                {BayerGR16, {Mono16}},
                {BGR8, {RGB8}},
                {BGRa8, {BGR8, true}},
                {RGB8, {BayerBG8, true}},
                {BayerRG8, {BayerRG8, true}},
                {BayerRG12Packed, {BayerRG12Packed, true}},
                {Mono16, {Mono16, true}},
                {RGB8_Planar, {RGB8_Planar, true}}};
  for (const auto& c : kCases)
    for (bool asView : {false, true}) {
      const bool isPlanar = Info(c.from).GetPlaneCount() > 1;
      OldMemory memory;
      const Buffer buffer = MakeBuffer(&memory), copy = MakeBuffer();
      buffer->SetSize(22, 16, c.from, 0);
      IQvImage* image = buffer->GetIQvImage();
      FillPattern(Bytes(image), Info(c.from).GetPlaneCount() * image->GetImagePlanePitch());
      IQvImage* source = asView ? image->GetROIImage(4, isPlanar ? 0 : 2, 10, 12) : image;
      copy->CopyImage(source);
      CQvPixelFormatConverter converter;
      Set(converter, c.settings);
      const Conversion expected(converter, *copy->GetIQvImage());
      converter.Convert(source, buffer.Get());
      IQvImage* result = buffer->GetIQvImage();
      ASSERT_EQ(result->GetImagePixelFormat(), expected.Format());
      ASSERT_EQ(result->GetImageWidth(), asView ? 10U : 22U);
      ASSERT_EQ(result->GetImageHeight(), asView ? 12U : 16U);
      const std::size_t components = Info(expected.Format()).GetComponentCount();
      const bool hasWords = Info(expected.Format()).GetEachComponentTotalBitCount() == 16;
      const std::size_t lineBytes = LineBytes(expected.Format(), result->GetImageWidth());
      for (std::size_t y = 0; y < result->GetImageHeight() * expected.Planes(); ++y) {
        const std::uint8_t* line = Bytes(result) + y * result->GetImageLinePitch();
        const auto wanted = expected.Line(y, lineBytes);
        for (std::size_t i = 0; i < lineBytes; ++i) {
          const bool isAlpha = components == 4 && i / (hasWords ? 2 : 1) % 4 == 3;
          ASSERT_TRUE(isAlpha || line[i] == wanted[i]) << NameOf(c.from) << asView << y << "," << i;
        }
      }
    }
}

TEST(PixelFormatConverter, AFailureInPlaceLeavesTheImage) {
  CQvPixelFormatConverter converter;
  const Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(10, 4, Mono12, QvMemoryInitialization_One);
  Set(converter, {Mono12p});
  EXPECT_THROW(converter.Convert(buffer->GetIQvImage(), buffer.Get()), GenICam::RuntimeException);
  EXPECT_EQ(buffer->GetIQvImage()->GetImagePixelFormat(), Mono12);
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), std::vector<std::uint8_t>(80, 0xFF));
  IQvImageBufferReleasable* first = converter.GetTempolaryBuffer();
  EXPECT_TRUE(first->HasImageBuffer()) << "the temporary buffer came back";
  converter.ReleaseTempolaryBuffer(first);
}

// --- Single handlers
// ------------------------------------------------------------------------------

enum Colour { R, G, B };

/// Colour of a mosaic of phase "RG", "GR", "GB" or "BG" at a site.
Colour SiteColour(const std::string& phase, std::size_t x, std::size_t y) {
  const std::string tile = phase + (phase[0] == 'R'   ? "GB"
                                    : phase[1] == 'R' ? "BG"
                                    : phase[1] == 'B' ? "RG"
                                                      : "GR");
  const char c = tile[y % 2 * 2 + x % 2];
  return c == 'R' ? R : c == 'B' ? B : G;
}

/// Where a colour lies in a pixel of a format.
std::size_t Component(PixelFormat format, Colour colour) {
  if (colour == G) return 1;
  return (NameOf(format)[0] == 'B') == (colour == B) ? 0 : 2;
}

const std::pair<std::size_t, std::size_t> kSizes[] = {{1, 1}, {1, 5}, {4, 1},  {2, 2},  {3, 3},
                                                      {4, 7}, {5, 6}, {16, 4}, {33, 5}, {70, 3}};

TEST(PixelFormatConverter, ExchangesChannelsAndKeepsAlpha) {
  for (PixelFormat from : {BGR8, BGRa8, RGB8, RGBa8})
    for (PixelFormat to : {BGR8, BGRa8, RGB8, RGBa8})
      for (auto [width, height] : kSizes)
        for (bool reverse : {false, true}) {
          if (from == to) continue;
          TestImage source(width, height, from, 3);
          source.Randomize(4);
          CQvPixelFormatConverter converter;
          Set(converter, {to, reverse, 2, 5});
          const Conversion result(converter, source);
          const std::size_t m = Info(from).GetComponentCount(), n = Info(to).GetComponentCount();
          for (std::size_t y = 0; y < height; ++y) {
            const std::size_t line = reverse ? height - 1 - y : y;
            for (std::size_t x = 0; x < width; ++x) {
              for (Colour colour : {R, G, B})
                ASSERT_EQ(SampleAt(result.Image(), n * x + Component(to, colour), line),
                          SampleAt(source, m * x + Component(from, colour), y))
                    << NameOf(from) << " to " << NameOf(to);
              ASSERT_TRUE(n == 3 || SampleAt(result.Image(), 4 * x + 3, line) == kOld);
            }
          }
        }
}

unsigned BayerToMono(const IQvImage& image, const std::string& phase, std::size_t x,
                     std::size_t y) {
  const std::size_t w = image.GetImageWidth(), h = image.GetImageHeight();
  const auto inside = [](std::size_t at, std::size_t size) {
    return at < size ? at : size >= 2 ? size - 2 : 0;
  };
  unsigned sum[3] = {0, 0, 0};
  for (std::size_t dy : {0, 1})
    for (std::size_t dx : {0, 1})
      sum[SiteColour(phase, x + dx, y + dy)] +=
          SampleAt(image, inside(x + dx, w), inside(y + dy, h));
  const bool keepsOwn = w % 2 == 0 && x == w - 1 && SiteColour(phase, x, y) == G;
  const unsigned green = keepsOwn ? SampleAt(image, x, y) : sum[G] / 2;
  return (5 * green + 2 * sum[R] + sum[B]) / 8;
}

TEST(PixelFormatConverter, WeighsTheWindowOfABayerPixelIntoMono) {
  for (const char* depth : {"8", "10", "12", "14", "16"})
    for (const char* phase : {"RG", "GR", "GB", "BG"})
      for (auto [width, height] : kSizes)
        for (bool reverse : {false, true}) {
          const PixelFormat to = FormatOf(std::string("Mono") + depth);
          TestImage source(width, height, FormatOf(std::string("Bayer") + phase + depth), 2);
          source.Randomize(5);
          CQvPixelFormatConverter converter;
          Set(converter, {to, reverse, 7});
          converter.SetGammaValue(3.0);
          converter.SetBitExpansionMode(QvBitExpansionMode_Fixed);
          const Conversion result(converter, source);
          ASSERT_EQ(result.Format(), to);
          for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x)
              ASSERT_EQ(SampleAt(result.Image(), x, reverse ? height - 1 - y : y),
                        BayerToMono(source, phase, x, y))
                  << phase << depth << " " << width << " x " << height << " at " << x << "," << y;
        }
}

TEST(PixelFormatConverter, SamplesColourDownToAMosaic) {
  const struct {
    const char* depth;
    std::vector<PixelFormat> sources;
  } kRows[] = {{"8", {BGR8, BGRa8, RGB8, RGBa8}},
               {"10", {BGR10, BGRa10}},
               {"12", {BGR12, BGRa12}},
               {"14", {BGR14, BGRa14}},
               {"16", {BGR16, BGRa16, RGB16}}};
  for (const auto& row : kRows)
    for (PixelFormat from : row.sources)
      for (const char* phase : {"RG", "GR", "GB", "BG"})
        for (auto [width, height] : kSizes)
          for (bool reverse : {false, true}) {
            const PixelFormat to = FormatOf(std::string("Bayer") + phase + row.depth);
            TestImage source(width, height, from, 6);
            source.Randomize(6);
            CQvPixelFormatConverter converter;
            Set(converter, {to, reverse});
            const Conversion result(converter, source);
            ASSERT_EQ(result.Format(), to) << "no mosaic was flipped, so the label stays";
            const std::size_t n = Info(from).GetComponentCount();
            for (std::size_t y = 0; y < height; ++y)
              for (std::size_t x = 0; x < width; ++x)
                ASSERT_EQ(SampleAt(result.Image(), x, y),
                          SampleAt(source, n * x + Component(from, SiteColour(phase, x, y)),
                                   reverse ? height - 1 - y : y))
                    << NameOf(from) << phase << " " << width << " x " << height << reverse;
          }
}

TEST(PixelFormatConverter, AMosaicOfAColourImageShowsItsSamples) {
  TestImage colour(6, 4, BGR8);
  colour.Randomize(8);
  CQvPixelFormatConverter converter;
  Set(converter, {BayerRG8});
  const Conversion mosaic(converter, colour);
  Set(converter, {BGR8, false, QvBayerInterpolationMethod_OFF});
  const Conversion back(converter, mosaic.Image());
  for (std::size_t y = 0; y < 4; ++y)
    for (std::size_t x = 0; x < 6; ++x)
      for (Colour each : {R, G, B}) {
        const std::size_t i = 3 * x + Component(BGR8, each);
        EXPECT_EQ(SampleAt(back.Image(), i, y),
                  each == SiteColour("RG", x, y) ? SampleAt(colour, i, y) : 0);
      }
}

// --- Demosaicing
// ----------------------------------------------------------------------------------

template <class T>
std::vector<std::uint8_t> Demosaiced(const TestImage& source, const IQvImage& like, unsigned method,
                                     bool reverse) {
  std::vector<std::uint8_t> bytes(like.GetImagePlanePitch(), kOld);
  const IQvPixelFormatInfoInside& info = Info(like.GetImagePixelFormat());
  const Kernels::MosaicFrame<T> frame{
      .source = reinterpret_cast<const T*>(source.GetImageBuffer()),
      .sourcePitch = static_cast<std::ptrdiff_t>(source.GetImageLinePitch()),
      .destination = reinterpret_cast<T*>(bytes.data()),
      .destinationPitch = static_cast<std::ptrdiff_t>(like.GetImageLinePitch()),
      .width = source.GetImageWidth(),
      .height = source.GetImageHeight(),
      .stride = static_cast<unsigned>(info.GetComponentCount()),
      .isBGR = NameOf(like.GetImagePixelFormat())[0] == 'B',
      .phase = Info(source.GetImagePixelFormat()).GetPixelColorFilter(0, 0),
      .maximum = (1U << info.GetEachComponentEffectiveBitCount()) - 1};
  Kernels::DemosaicReference<T>(frame, reverse).Run(static_cast<Kernels::DemosaicMethod>(method));
  return bytes;
}

TEST(PixelFormatConverter, DemosaicsByItsMethod) {
  const struct {
    const char* depth;
    std::vector<PixelFormat> destinations;
  } kRows[] = {{"8", {BGR8, BGRa8, RGB8, RGBa8}},
               {"10", {BGR10, BGRa10}},
               {"12", {BGR12, BGRa12}},
               {"14", {BGR14}},
               {"16", {BGR16, BGRa16, RGB16}}};
  for (const auto& row : kRows)
    for (PixelFormat to : row.destinations)
      for (const char* phase : {"RG", "GR", "GB", "BG"})
        for (unsigned method = 0; method <= 7; ++method)
          for (auto [width, height] :
               {std::pair{2, 2}, {3, 10}, {10, 3}, {4, 4}, {6, 10}, {9, 6}, {8, 7}, {19, 8}})
            for (bool reverse : {false, true}) {
              TestImage source(static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                               FormatOf(std::string("Bayer") + phase + row.depth), 4);
              source.Randomize(9);
              CQvPixelFormatConverter converter;
              Set(converter, {to, reverse, method});
              const Conversion result(converter, source);
              ASSERT_EQ(result.Format(), to);
              const bool isWide = row.depth[0] != '8';
              ASSERT_EQ(result.All(),
                        isWide ? Demosaiced<std::uint16_t>(source, result.Image(), method, reverse)
                               : Demosaiced<std::uint8_t>(source, result.Image(), method, reverse))
                  << NameOf(to) << " " << phase << " method " << method << " " << width << " x "
                  << height << " reverse " << reverse;
            }
}

TEST(PixelFormatConverter, RefusesToDemosaicASideOfOne) {
  for (auto [width, height] : {std::pair{1, 1}, {1, 5}, {7, 1}})
    for (unsigned method = 0; method <= 7; ++method) {
      CQvPixelFormatConverter converter;
      Set(converter, {BGR8, false, method});
      TestImage source(static_cast<std::size_t>(width), static_cast<std::size_t>(height), BayerRG8);
      const Buffer buffer = MakeBuffer();
      EXPECT_EQ(
          MessageOf<GenICam::RuntimeException>([&] { converter.Convert(&source, buffer.Get()); }),
          "Not supported image size " + std::to_string(width) + " x " + std::to_string(height));
    }
}

TEST(PixelFormatConverter, AMethodThatOnlyARegisterCanHoldCountsForLargeImagesOnly) {
  for (auto [width, height] : {std::pair{2, 9}, {3, 3}, {12, 3}}) {
    TestImage source(static_cast<std::size_t>(width), static_cast<std::size_t>(height), BayerGB8);
    source.Randomize(10);
    CQvPixelFormatConverter converter;
    Set(converter, {BGR8, false, QvBayerInterpolationMethod_NearestNeighbor});
    const Conversion nearest(converter, source);
    for (std::uint32_t method : {8U, 0xFFFFFFFFU}) {
      converter.Write(&method, 0x20, 4);
      EXPECT_EQ(Conversion(converter, source).All(), nearest.All());
    }
  }
  CQvPixelFormatConverter converter;
  const std::uint32_t method = 8;
  converter.Write(&method, 0x20, 4);
  TestImage source(4, 4, BayerRG8);
  EXPECT_DEATH(Conversion(converter, source), "Assertion .*false");
}

// --- Hops
// -----------------------------------------------------------------------------------------

/// The format between the two hops of a pair, by the rules of names.
std::string Between(Route route, PixelFormat from, PixelFormat to) {
  const std::string source = NameOf(from), destination = NameOf(to);
  const auto depth = [](PixelFormat format) {
    return std::to_string(Info(format).GetEachComponentEffectiveBitCount());
  };
  const auto family = [](const std::string& name) {
    return name.substr(0, name.rfind("Bayer", 0) == 0 ? 7 : 4);  // "BayerRG", "Mono"
  };
  switch (route) {
    case Route::ConverterViaBGRa8:
      return "BGRa8";
    case Route::ConverterViaSameBitBGR:
      return "BGRa" + depth(from);
    case Route::ConverterViaRaw:
      return family(source) + (depth(to) == "8" ? "8" : "16");
    case Route::ConverterViaSameBitRaw:
      return family(destination) + depth(from);
    case Route::ConverterViaUnpack: {
      const std::string tail = source.ends_with("Packed") ? "Packed" : "p";
      const std::string unpacked = source.substr(0, source.size() - tail.size());
      const bool isNarrow = source.size() == family(source).size() + 2;  // "Mono4p"
      return isNarrow ? family(source) + "8" : unpacked;
    }
    default:
      return "";
  }
}

/// The image, or the words of the refusal.
template <class Convert>
std::string Outcome(Convert convert) {
  std::string outcome;
  try {
    const Conversion result = convert();
    const auto bytes = result.All();
    outcome = NameOf(result.Format());
    outcome.append(bytes.begin(), bytes.end());
  } catch (const GenICam::RuntimeException& e) {
    outcome = e.GetDescription();
  }
  return outcome;
}

TEST(PixelFormatConverter, HopsAreTheConversionsThatTheyAreMadeOf) {
  std::size_t hops = 0;
  for (const PixelFormatRow& from : kPixelFormats)
    for (const PixelFormatRow& to : kPixelFormats) {
      const std::string between =
          Between(FindRoute(from.format, to.format), from.format, to.format);
      if (between.empty()) continue;
      ++hops;
      const PixelFormat betweenFormat = FormatOf(between);
      ASSERT_NE(betweenFormat, PixelFormat::None);
      TestImage source(8, 6, from.format);
      source.Randomize(12);
      for (bool reverse : {false, true}) {
        CQvPixelFormatConverter converter;
        converter.SetGammaValue(1.7);
        const auto set = [&](PixelFormat format, bool flips) {
          Set(converter, {format, flips, 3, 7});  // temporary lines are aligned as well
        };
        const std::string composed = Outcome([&] {
          set(betweenFormat, reverse);
          const Conversion first(converter, source);
          set(to.format, false);
          return Conversion(converter, first.Image());
        });
        set(to.format, reverse);
        ASSERT_EQ(Outcome([&] { return Conversion(converter, source); }), composed)
            << from.name << " to " << to.name << " through " << between;
      }
    }
  EXPECT_GT(hops, 1500U);
}

// --- Geometry
// -------------------------------------------------------------------------------------

TEST(PixelFormatConverter, AlignsLinesToAnyNumber) {
  const std::pair<PixelFormat, PixelFormat> kPairs[] = {
      {BayerRG8, BGR8}, {BayerRG12, BGR12},     {BayerRG12, Mono12}, {BGR10, BayerGB10},
      {RGB8, BGRa8},    {BayerGB10, BayerGB10}, {Mono1p, Mono1p},    {RGB16_Planar, RGB16_Planar}};
  for (const auto& [from, to] : kPairs) {
    TestImage source(5, 6, from, 1);  // an odd pitch on this side too
    source.Randomize(11);
    CQvPixelFormatConverter converter;
    Set(converter, {to, false, 4, 1});
    const Conversion tight(converter, source);
    for (std::size_t alignment : {0, 1, 2, 3, 7, 11, 64, 1000}) {
      for (unsigned method : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U}) {
        Set(converter, {to, true, method, alignment});
        EXPECT_NO_THROW(Conversion(converter, source));
      }
      Set(converter, {to, false, 4, alignment});
      const Conversion result(converter, source);
      const std::size_t bytes = LineBytes(to, 5), step = alignment == 0 ? 1 : alignment;
      const std::size_t pitch = result.Image().GetImageLinePitch();
      EXPECT_EQ(pitch % step, 0U) << alignment;
      EXPECT_GE(pitch, bytes) << alignment;
      EXPECT_LT(pitch, bytes + (alignment == 0 ? 4 : step)) << alignment;
      for (std::size_t y = 0; y < 6 * result.Planes(); ++y)
        ASSERT_EQ(result.Line(y, bytes), tight.Line(y, bytes))
            << NameOf(from) << " to " << NameOf(to) << " aligned to " << alignment;
    }
  }
}

TEST(PixelFormatConverter, WritesIntoMemoryOfTheApplication) {
  OldMemory memory;
  {
    const Buffer buffer = MakeBuffer(&memory);
    CQvPixelFormatConverter converter;
    TestImage large(40, 30, BayerRG8), small(10, 8, BayerRG8);
    converter.Convert(&large, buffer.Get());
    void* block = buffer->GetIQvImage()->GetImageBuffer();
    EXPECT_TRUE(memory.sizes.count(block));
    EXPECT_EQ(buffer->GetIQvImage()->GetUserContext(), &memory);
    converter.Convert(&small, buffer.Get());
    EXPECT_EQ(buffer->GetIQvImage()->GetImageBuffer(), block) << "a smaller image fits";
    EXPECT_EQ(memory.sizes.size(), 1U);
  }
  EXPECT_EQ(memory.sizes.size(), 0U);
  EXPECT_EQ(memory.ended, 1);
}

}  // namespace
}  // namespace QvApi
