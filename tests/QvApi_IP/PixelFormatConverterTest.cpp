// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvPixelFormatConverter.h"

#include <map>

#include "Kernels/DemosaicReference.h"
#include "QvApi_IP/Conversions.h"

namespace QvApi {
namespace {

using namespace Testing;
using enum EQvPixelFormatNamingConvention_t;

constexpr const char* kPhases[]{"RG", "GR", "GB", "BG"};
constexpr Size kSizes[] = {{1, 1}, {1, 5}, {4, 1},  {2, 2},  {3, 3},
                           {4, 7}, {5, 6}, {16, 4}, {33, 5}, {70, 3}};

/// The bytes of a line that an image of `format` would have.
std::vector<std::uint8_t> LineOf(const IQvImage& image, std::size_t y, PixelFormat format) {
  const std::uint8_t* line = Bytes(&image) + y * image.GetImageLinePitch();
  return {line, line + LineBytes(format, image.GetImageWidth())};
}

// --- Refusals
// -------------------------------------------------------------------------------------

TEST(PixelFormatConverter, RefusesWhatIsNoImage) {
  CQvPixelFormatConverter converter;
  TestImage image(2, 2, Mono8);
  const Buffer empty = MakeBuffer(), destination = MakeBuffer();
  const auto message = [&](IQvImage* source, IQvImageBuffer* to) {
    return MessageOf<GenICam::InvalidArgumentException>([&] { converter.Convert(source, to); });
  };
  EXPECT_EQ(message(nullptr, empty.Get()), "IQvImage is NULL.");
  EXPECT_EQ(message(nullptr, nullptr), "IQvImage is NULL.");
  EXPECT_EQ(message(&image, nullptr), "IQvImageBuffer is NULL.");
  auto* noPixels = dynamic_cast<IQvImage*>(empty.Releasable());
  for (PixelFormat format : {PixelFormat::None, BGR8}) {
    Set(converter, {format});
    EXPECT_THROW(converter.Convert(noPixels, destination.Get()), GenICam::GenericException);
    EXPECT_THROW(converter.Convert(noPixels, empty.Get()), GenICam::GenericException);
  }
  // A view that its parent has outgrown.
  destination->CreateBuffer(8, 8, BayerRG8, QvMemoryInitialization_Zero);
  IQvImage* view = destination->GetIQvImage()->GetROIImage(4, 4, 4, 4);
  destination->SetSize(6, 6, BayerRG8, 0);
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { converter.Convert(view, empty.Get()); }),
            "There is no available image.");
}

/// Those with names are refused in AllPairsTest.cpp.
TEST(PixelFormatConverter, NamesAPairOfUnknownCodes) {
  constexpr auto kUnknown = static_cast<PixelFormat>(0x0108ABCD);
  const std::tuple<PixelFormat, PixelFormat, std::string> kPairs[]{
      {BayerGR12Packed, BGR10, "from  BayerGR12Packed to BGR10 is"},
      {Mono8, kUnknown, "from  Mono8 to 0x0108ABCD is"},
      {Mono8, PixelFormat::None, "from  Mono8 to 0xFFFFFFFF is"},
      {kUnknown, BGR8, "from  0x0108ABCD to BGR8 is"}};
  for (const auto& [from, to, words] : kPairs) {
    CQvPixelFormatConverter converter;
    Set(converter, {to, true});
    const Buffer buffer = MakeBuffer();
    std::array<std::uint8_t, 64> bytes{};
    ForeignImage source(bytes.data(), 4, 4, 8, from);
    EXPECT_EQ(
        MessageOf<GenICam::RuntimeException>([&] { converter.Convert(&source, buffer.Get()); }),
        "Converting a pixelformat " + words + " not supported.");
    EXPECT_FALSE(converter.IsSupported(from));
    EXPECT_FALSE(buffer->HasImageBuffer());
  }
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
  std::size_t turn = 0;
  for (const PixelFormatRow& row : kPixelFormats) {
    if (row.format == CYCbCr420_8_YY_Cb_Cr_Planar) continue;  // as ImageBufferTest.cpp has it
    for (const auto& [w, h] : {Size{8, 6}, {13, 5}, {1, 1}, {2, 2}})
      for (std::size_t alignment : {0, 1, 7})
        for (bool reverse : {false, true}) {
          TestImage source(w, h, row.format, turn++ % 2 * 5);
          const auto before = source.Randomize(77, false).All();
          const Settings s{.destination = row.format, .reverse = reverse, .alignment = alignment};
          SCOPED_TRACE(Describe(source, s));
          const Conversion result(source, s);
          const std::string name(row.name);
          ASSERT_EQ(NameOf(result.Format()), reverse ? FlippedName(name, h) : name);
          ASSERT_EQ(result.Image().GetImageWidth(), w);
          ASSERT_EQ(result.Image().GetImageHeight(), h);
          for (std::size_t y = 0; y < row.planeCount * h; ++y)
            ASSERT_EQ(LineOf(result.Image(), reverse ? y / h * h + h - 1 - y % h : y, row.format),
                      LineOf(source, y, row.format));
          ASSERT_EQ(source.All(), before);
        }
  }
}

// --- In place
// -------------------------------------------------------------------------------------

TEST(PixelFormatConverter, LeavesAnImageThatIsWantedAsItIs) {
  CQvPixelFormatConverter converter;
  Set(converter, {.destination = BayerRG12p, .alignment = 512});
  const Buffer buffer = MakeBuffer();
  buffer->CreateBuffer(10, 4, BayerRG12p, QvMemoryInitialization_One);
  const auto before = AllBytes(buffer->GetIQvImage());
  converter.Convert(buffer->GetIQvImage(), buffer.Get());
  EXPECT_EQ(AllBytes(buffer->GetIQvImage()), before) << "not even its pitch changes";
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
      const std::size_t planes = Info(c.from).GetPlaneCount();
      const Buffer buffer = MakeBuffer(), copy = MakeBuffer();
      buffer->SetSize(22, 16, c.from, 0);
      IQvImage* image = buffer->GetIQvImage();
      FillPattern(Bytes(image), planes * image->GetImagePlanePitch());
      IQvImage* source = asView ? image->GetROIImage(4, planes > 1 ? 0 : 2, 10, 12) : image;
      copy->CopyImage(source);
      SCOPED_TRACE(Describe(*source, c.settings));
      CQvPixelFormatConverter converter;
      Set(converter, c.settings);
      const Conversion expected(converter, *copy->GetIQvImage());
      converter.Convert(source, buffer.Get());
      const IQvImage& result = *buffer->GetIQvImage();
      ASSERT_EQ(result.GetImagePixelFormat(), expected.Format());
      ASSERT_EQ(result.GetImageWidth(), asView ? 10U : 22U);
      ASSERT_EQ(result.GetImageHeight(), asView ? 12U : 16U);
      if (Info(expected.Format()).GetComponentCount() == 4) {  // alpha may be anything
        EXPECT_EQ(RasterOf(result).values, RasterOf(expected.Image()).values);
        continue;
      }
      for (std::size_t y = 0; y < result.GetImageHeight() * planes; ++y)
        ASSERT_EQ(LineOf(result, y, expected.Format()),
                  LineOf(expected.Image(), y, expected.Format()));
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

// --- Mosaics
// --------------------------------------------------------------------------------------

/// Place of a mosaic's colour at a site in red, green, blue.
std::size_t SiteColor(const char* phase, std::size_t x, std::size_t y) {
  const std::string tile = std::map<std::string, std::string>{
      {"RG", "RGGB"}, {"GR", "GRBG"}, {"GB", "GBRG"}, {"BG", "BGGR"}}[phase];
  return std::string("RGB").find(tile[y % 2 * 2 + x % 2]);
}

/// The weights of the 2 x 2 window that starts at a pixel.
int ExpectedGrey(const Raster& mosaic, const char* phase, std::size_t x, std::size_t y) {
  const auto inside = [](std::size_t at, std::size_t size) {
    return at < size ? at : size >= 2 ? size - 2 : 0;
  };
  int sum[3] = {0, 0, 0};
  for (std::size_t dy : {0, 1})
    for (std::size_t dx : {0, 1})
      sum[SiteColor(phase, x + dx, y + dy)] +=
          mosaic.At(inside(x + dx, mosaic.width), inside(y + dy, mosaic.height));
  const bool keepsOwn =
      mosaic.width % 2 == 0 && x == mosaic.width - 1 && SiteColor(phase, x, y) == 1;
  return (5 * (keepsOwn ? mosaic.At(x, y) : sum[1] / 2) + 2 * sum[0] + sum[2]) / 8;
}

/// Colour formats that have a mosaic of the same depth.
const std::map<std::string, std::vector<PixelFormat>> kColorsOfDepth{
    {"8", {BGR8, BGRa8, RGB8, RGBa8}},
    {"10", {BGR10, BGRa10}},
    {"12", {BGR12, BGRa12}},
    {"14", {BGR14, BGRa14}},
    {"16", {BGR16, BGRa16, RGB16}}};

/// Calls `expected(source, phase)` for images of all mosaics of the depth, or of `other` for those
/// to it, and compares. Lines begin at any address, even or not.
template <class Expected>
void CheckMosaics(const std::string& depth, PixelFormat other, bool isToMosaic, Expected expected) {
  static std::size_t turn = 0;
  for (const char* phase : kPhases)
    for (const Size& size : kSizes) {
      ++turn;
      const PixelFormat mosaic = FormatOf("Bayer" + (phase + depth));
      TestImage source(size.width, size.height, isToMosaic ? other : mosaic, turn % 4);
      source.Randomize(5);
      const Settings s{.destination = isToMosaic ? mosaic : other,
                       .reverse = turn % 2 == 0,
                       .alignment = 1 + turn % 7,
                       .gamma = 3,
                       .mode = QvBitExpansionMode_Fixed};
      SCOPED_TRACE(Describe(source, s));
      Raster pixels = RasterOf(source);
      if (isToMosaic && s.reverse) pixels = pixels.Flipped();
      Raster made(size.width, size.height);
      for (std::size_t y = 0; y < size.height; ++y)
        for (std::size_t x = 0; x < size.width; ++x) made.At(x, y) = expected(pixels, phase, x, y);
      if (!isToMosaic && s.reverse) made = made.Flipped();
      const Conversion result(source, s);
      ASSERT_EQ(result.Format(), s.destination) << "no mosaic was flipped";
      ASSERT_EQ(result.Image().GetImageLinePitch(),
                Info(s.destination).GetLinePitch(size.width, s.alignment));
      ExpectImage(result.Image(), made, result.Image().GetImageLinePitch() % 2 == 0);
    }
}

TEST(PixelFormatConverter, WeighsTheWindowOfABayerPixelIntoMono) {
  for (const auto& [depth, colors] : kColorsOfDepth)
    CheckMosaics(depth, FormatOf("Mono" + depth), false, ExpectedGrey);
}

TEST(PixelFormatConverter, SamplesColorDownToAMosaic) {
  for (const auto& [depth, colors] : kColorsOfDepth)
    for (PixelFormat from : colors)
      CheckMosaics(depth, from, true,
                   [](const Raster& color, const char* phase, std::size_t x, std::size_t y) {
                     return color.Pixel(x, y)[SiteColor(phase, x, y)];
                   });
}

template <class T>
std::vector<std::uint8_t> Demosaiced(const TestImage& source, const IQvImage& like,
                                     const Settings& s) {
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
      .isBGR = info.IsBGR(),
      .phase = Info(source.GetImagePixelFormat()).GetPixelColorFilter(0, 0),
      .maximum = (1U << info.GetEachComponentEffectiveBitCount()) - 1};
  Kernels::DemosaicReference<T>(frame, s.reverse)
      .Run(static_cast<Kernels::DemosaicMethod>(s.bayerMethod));
  return bytes;
}

TEST(PixelFormatConverter, DemosaicsByItsMethod) {
  for (const auto& [depth, colors] : kColorsOfDepth)
    for (PixelFormat to : colors)
      for (const char* phase : kPhases)
        for (unsigned method = 0; method <= 7; ++method)
          for (const Size& size :
               {Size{2, 2}, {3, 10}, {10, 3}, {4, 4}, {6, 10}, {9, 6}, {8, 7}, {19, 8}})
            for (bool reverse : {false, true}) {
              TestImage source(size.width, size.height, FormatOf("Bayer" + (phase + depth)), 4);
              source.Randomize(9);
              const Settings s{.destination = to, .reverse = reverse, .bayerMethod = method};
              const Conversion result(source, s);
              ASSERT_EQ(result.Format(), to);
              const auto reference =
                  depth == "8" ? &Demosaiced<std::uint8_t> : &Demosaiced<std::uint16_t>;
              ASSERT_EQ(result.All(), reference(source, result.Image(), s)) << Describe(source, s);
            }
}

TEST(PixelFormatConverter, RefusesToDemosaicASideOfOne) {
  for (const auto& [width, height] : {Size{1, 1}, {1, 5}, {7, 1}})
    for (unsigned method = 0; method <= 7; ++method) {
      TestImage source(width, height, BayerRG8);
      EXPECT_EQ(
          MessageOf<GenICam::RuntimeException>(
              [&] { Conversion(source, {.bayerMethod = method}); }),
          "Not supported image size " + std::to_string(width) + " x " + std::to_string(height));
    }
}

TEST(PixelFormatConverter, AMethodThatOnlyARegisterCanHoldCountsForLargeImagesOnly) {
  CQvPixelFormatConverter converter;
  for (const auto& [width, height] : {Size{2, 9}, {3, 3}, {12, 3}}) {
    TestImage source(width, height, BayerGB8);
    source.Randomize(10);
    const auto nearest = Conversion(source, {.bayerMethod = 1, .alignment = 1}).All();
    for (std::uint32_t method : {8U, 0xFFFFFFFFU}) {
      converter.Write(&method, 0x20, 4);
      converter.SetLinePitchAlignment(1);
      EXPECT_EQ(Conversion(converter, source).All(), nearest);
    }
  }
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
    return name.substr(0, name.starts_with("Bayer") ? 7 : 4);  // "BayerRG", "Mono"
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
  try {
    const Conversion result = convert();
    const auto bytes = result.All();
    return NameOf(result.Format()) + std::string(bytes.begin(), bytes.end());
  } catch (const GenICam::RuntimeException& e) {
    return e.GetDescription();
  }
}

TEST(PixelFormatConverter, HopsAreTheConversionsThatTheyAreMadeOf) {
  std::size_t hops = 0;
  for (const PixelFormatRow& from : kPixelFormats)
    for (const PixelFormatRow& to : kPixelFormats) {
      const std::string between =
          Between(FindRoute(from.format, to.format), from.format, to.format);
      if (between.empty()) continue;
      ++hops;
      TestImage source(8, 6, from.format);
      source.Randomize(12);
      for (bool reverse : {false, true}) {
        Settings s{.destination = to.format,
                   .reverse = reverse,
                   .bayerMethod = 3,
                   .alignment = 7,  // of temporary lines as well
                   .gamma = 1.7};
        const std::string whole = Outcome([&] { return Conversion(source, s); });
        ASSERT_EQ(whole, Outcome([&] {
                    s.destination = FormatOf(between);
                    const Conversion first(source, s);
                    s.destination = to.format;
                    s.reverse = false;
                    return Conversion(first.Image(), s);
                  }))
            << from.name << " to " << to.name << " through " << between;
      }
    }
  EXPECT_GT(hops, 1500U);
}

}  // namespace
}  // namespace QvApi
