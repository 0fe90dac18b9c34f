// SPDX-License-Identifier: MIT
// What all modules share, on the two modules with the most telling registers.
#include "QvApi_IP/QvIPModuleBase.h"

#include <GenApi/GenApi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "QvApi_IP/QvGammaCorrectionFilter.h"
#include "QvApi_IP/QvPixelFormatConverter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;
using Gamma = CQvGammaCorrectionFilter;
using Converter = CQvPixelFormatConverter;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool SameValue(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// --- Access through the port -------------------------------------------------------------------

constexpr std::uint8_t kOld = 0xCC;

/// `length` bytes of the gamma filter's port behind `address`, over kOld.
std::vector<std::uint8_t> ReadPort(GenApi::IPort& port, std::int64_t address, std::size_t length) {
  std::vector<std::uint8_t> bytes(length + 8, kOld);
  port.Read(bytes.data(), address, static_cast<std::int64_t>(length));
  for (std::size_t i = length; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], kOld) << "behind the end";
  bytes.resize(length);
  return bytes;
}

/// What such a read gives by the rules: the registers of the gamma filter as bytes in the order of
/// their addresses, and kOld between them.
std::vector<std::uint8_t> ExpectedBytes(std::int64_t address, std::size_t length, double gamma) {
  std::vector<std::uint8_t> bytes(length, kOld);
  const std::map<std::int64_t, double> registers{{0x10, gamma}, {0x20, 0.0}, {0x28, 4.0}};
  for (std::size_t at = 0; at < length;) {
    const std::int64_t here = address + static_cast<std::int64_t>(at);
    if (const auto found = registers.find(here); found != registers.end()) {
      const auto value = std::bit_cast<std::array<std::uint8_t, 8>>(found->second);
      for (std::size_t i = 0; i < 8 && at < length; ++i) bytes[at++] = value[i];
    } else if (here == 0) {
      bytes[at++] = 8;
    } else {
      at += static_cast<std::size_t>(4 - (here & 3));
    }
  }
  return bytes;
}

TEST(ModulePort, ReadsAreCutIntoRegistersAndSkipTheRest) {
  Gamma filter;
  filter.SetGammaValue(2.718281828);
  for (std::int64_t address = -9; address < 0x34; ++address)
    for (std::size_t length = 0; length < 0x40; ++length)
      ASSERT_EQ(ReadPort(filter, address, length), ExpectedBytes(address, length, 2.718281828))
          << address << " + " << length;
  const auto head = ReadPort(filter, 0, 16);
  EXPECT_EQ(head[0], 8);
  EXPECT_EQ(std::count(head.begin(), head.end(), kOld), 15);
  EXPECT_EQ(filter.GetAccessMode(), GenApi::RW);
}

TEST(ModulePort, AddressesAtTheEndsOfTheRangeAreServedAsUnknown) {
  Gamma filter;
  for (std::int64_t address : {INT64_MAX, INT64_MAX - 1, INT64_MAX - 6, INT64_MIN, INT64_MIN + 1}) {
    EXPECT_EQ(ReadPort(filter, address, 16), std::vector<std::uint8_t>(16, kOld)) << address;
    filter.Write("sixteen bytes...", address, 16);
  }
  filter.Read(nullptr, 0x10, 0);
  filter.Read(nullptr, 0x10, -5);
  filter.Write(nullptr, 0x10, 0);
  EXPECT_EQ(filter.GetGammaValue(), 1.0);
}

TEST(ModulePort, WritesTakeWholeRegistersOnly) {
  struct {
    double before[2] = {7.0, 7.0};   // 0x00 to 0x0F
    double gamma = 2.5;              // 0x10
    double between = 7.0;            // 0x18
    double limits[2] = {-1.0, 9.0};  // 0x20
  } block;
  Gamma filter;
  filter.Write(&block, 0, sizeof block);
  EXPECT_EQ(filter.GetGammaValue(), 2.5);
  EXPECT_EQ(ReadPort(filter, 0x10, 0x20), ExpectedBytes(0x10, 0x20, 2.5)) << "limits are read-only";

  block.gamma = 3.5;
  for (std::int64_t length = 0; length < 0x18; ++length) filter.Write(&block, 0, length);
  for (std::int64_t address : {0x0D, 0x0E, 0x11, 0x14, 0x17}) filter.Write(&block, address, 3);
  EXPECT_EQ(filter.GetGammaValue(), 2.5) << "a write of a part is none";
  filter.Write(&block, 0, 0x18);
  EXPECT_EQ(filter.GetGammaValue(), 3.5);
}

TEST(ModulePort, SingleAccessesTellWhatTheyTook) {
  Gamma filter;
  Converter converter;
  const struct {
    GenApi::IPort& port;
    std::int64_t address, wanted;
    bool read, write;
    std::int64_t taken;
  } kCases[] = {
      {filter, 0x10, 8, true, true, 8},      {filter, 0x10, 100, true, true, 8},
      {filter, 0x10, 3, true, false, 3},     {filter, 0x20, 8, true, false, 8},
      {filter, 0x28, 8, true, false, 8},     {filter, 0x18, 8, false, false, 0},
      {filter, 0x11, 8, false, false, 0},    {filter, 0x08, 8, false, false, 0},
      {filter, -16, 8, false, false, 0},     {converter, 0x10, 4, true, true, 4},
      {converter, 0x18, 9, true, true, 4},   {converter, 0x28, 8, true, true, 8},
      {converter, 0x30, 8, true, false, 8},  {converter, 0x38, 8, true, false, 8},
      {converter, 0x58, 12, true, true, 8},  {converter, 0x78, 5, true, true, 4},
      {converter, 0x6C, 4, false, false, 0}, {converter, 0x7C, 4, false, false, 0},
      {converter, 0x84, 4, false, false, 0}, {converter, 0x14, 4, false, false, 0},
  };
  for (const auto& c : kCases) {
    std::array<unsigned char, 16> bytes{};
    std::int64_t length = c.wanted;
    const auto read = [&](auto& module) { return module.mRead(bytes.data(), c.address, &length); };
    const auto write = [&](auto& module) {
      return module.mWrite(bytes.data(), c.address, &length);
    };
    const bool isFilter = &c.port == static_cast<GenApi::IPort*>(&filter);
    EXPECT_EQ(isFilter ? read(filter) : read(converter), c.read) << c.address;
    EXPECT_EQ(length, c.read ? c.taken : c.wanted) << c.address;
    length = c.wanted;
    EXPECT_EQ(isFilter ? write(filter) : write(converter), c.write) << c.address;
    EXPECT_EQ(length, c.write ? c.taken : c.wanted) << c.address;
  }
}

TEST(ModulePort, RegistersThatDemandTheirLengthRefuseLess) {
  Gamma filter;
  Converter converter;
  std::array<unsigned char, 8> bytes{};
  for (std::int64_t wanted : {0, -1}) {
    std::int64_t length = wanted;
    EXPECT_EQ(
        MessageOf<GenICam::OutOfRangeException>([&] { filter.mRead(bytes.data(), 0, &length); }),
        "Length = " + std::to_string(wanted) + " must be equal or greater than Min = 1");
  }
  for (std::int64_t address : {0x60, 0x64, 0x68, 0x70, 0x74, 0x78, 0x80})
    for (std::int64_t wanted : {0, 1, 3}) {
      std::int64_t length = wanted;
      const std::string words =
          "Length = " + std::to_string(wanted) + " must be equal or greater than Min = 4";
      EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>(
                    [&] { converter.mRead(bytes.data(), address, &length); }),
                words);
      if (wanted != 0) {
        EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>(
                      [&] { converter.Read(bytes.data(), address, wanted); }),
                  words);
      }
    }
  for (std::int64_t address : {0x10, 0x18, 0x20, 0x28, 0x30, 0x38, 0x40, 0x48, 0x50, 0x58})
    EXPECT_NO_THROW(converter.Read(bytes.data(), address, 3)) << address;
}

// --- The two roads to a setting ----------------------------------------------------------------

using Getter = std::function<double(const Converter&)>;

template <class T>
Getter Typed(T (Converter::*get)() const) {
  return [get](const Converter& c) { return static_cast<double>((c.*get)()); };
}

const struct RegisterRow {
  std::int64_t address;
  Getter typed;
  double initial;
  struct Write {
    double written, after;
    const char* refusal = nullptr;
  };
  std::vector<Write> writes;
  bool isReal = false;
} kConverterRegisters[] = {
    {0x10,
     Typed(&Converter::GetDestinationPixelFormat),
     0x02180015,
     {{0x01080001, 0x01080001}, {0x12345678, 0x12345678}, {0xFFFFFFFF, 0xFFFFFFFF}}},
    {0x18, Typed(&Converter::GetReverseY), 0, {{1, 1}, {2, 0}, {1, 1}, {0, 0}, {0x80000001, 0}}},
    {0x20,
     Typed(&Converter::GetBayerInterpolationMethod),
     2,
     {{7, 7}, {8, 8}, {0xFFFFFFFF, 0xFFFFFFFF}, {0, 0}}},
    {0x28,
     Typed(&Converter::GetGammaValue),
     1,
     {{4, 4}, {-3, -3}, {1e300, 1e300}, {kInfinity, kInfinity}, {std::nan(""), std::nan("")}},
     true},
    {0x40, Typed(&Converter::GetDestinationPixelFormatNodeLock), 0, {{1, 1}, {255, 0}}},
    {0x48, Typed(&Converter::GetBitExpansionMode), 0, {{3, 3}, {77, 77}}},
    {0x50, Typed(&Converter::GetPolarizationImageTransformationMethod), 1, {{9, 9}, {10, 10}}},
    {0x58,
     Typed(&Converter::GetPolarizationSpecifiedAngle),
     0,
     {{181.5, 181.5}, {-1, -1}, {std::nan(""), std::nan("")}},
     true},
    {0x60,
     Typed(&Converter::GetColorMapType),
     0,
     {{2, 2},
      {3, 2, "eCMT = 3 must be smaller than Max = 3"},
      {0xFFFFFFFF, 2, "eCMT = 4294967295 must be smaller than Max = 3"}}},
    {0x64, Typed(&Converter::GetColorMapInversion), 0, {{2, 1}, {0, 0}, {0x80000000, 1}}},
    {0x68,
     Typed(&Converter::GetColorMapPhase),
     0,
     {{255, 255},
      {256, 255, "nPhase = 256 must be smaller than Max = 256"},
      {0xFFFFFFFF, 255, "nPhase = -1 must be equal or greater than Min = 0"}}},
    {0x70, Typed(&Converter::GetADOLPDarkMode), 0, {{2, 1}, {0, 0}, {1, 1}}},
    {0x74, Typed(&Converter::GetADOLPColorInversion), 0, {{0x100, 1}, {0, 0}}},
    {0x78,
     Typed(&Converter::GetADOLPColorPhase),
     0,
     {{7, 7},
      {256, 7, "nPhase = 256 must be smaller than Max = 256"},
      {0x80000000, 7, "nPhase = -2147483648 must be equal or greater than Min = 0"}}},
    {0x80, Typed(&Converter::GetInterpolationMethodForSpecifiedAngle), 0, {{1, 1}, {2, 2}}},
};

double ReadRegister(GenApi::IPort& port, std::int64_t address, bool isReal) {
  double real = 0;
  std::uint32_t word = 0;
  isReal ? port.Read(&real, address, 8) : port.Read(&word, address, 4);
  return isReal ? real : word;
}

void WriteRegister(GenApi::IPort& port, std::int64_t address, bool isReal, double value) {
  const std::uint32_t word = isReal ? 0 : static_cast<std::uint32_t>(value);
  isReal ? port.Write(&value, address, 8) : port.Write(&word, address, 4);
}

TEST(Registers, AgreeWithTheTypedGetters) {
  Converter converter;
  for (const RegisterRow& row : kConverterRegisters) {
    EXPECT_EQ(row.typed(converter), row.initial) << row.address;
    EXPECT_EQ(ReadRegister(converter, row.address, row.isReal), row.initial) << row.address;
    for (const auto& write : row.writes) {
      const std::string refusal = MessageOf<GenICam::OutOfRangeException>(
          [&] { WriteRegister(converter, row.address, row.isReal, write.written); });
      EXPECT_EQ(refusal, write.refusal ? write.refusal : "nothing thrown") << row.address;
      EXPECT_TRUE(SameValue(row.typed(converter), write.after))
          << row.address << " " << write.written << " " << row.typed(converter);
      EXPECT_TRUE(SameValue(ReadRegister(converter, row.address, row.isReal), write.after))
          << row.address << " " << write.written;
    }
    for (const RegisterRow& other : kConverterRegisters)
      if (other.address > row.address) {
        EXPECT_EQ(other.typed(converter), other.initial) << row.address << " writes elsewhere";
      }
  }
  for (std::int64_t address : {0x30, 0x38}) {
    WriteRegister(converter, address, true, 77);
    EXPECT_EQ(ReadRegister(converter, address, true), address == 0x30 ? 0 : 4);
  }
}

using Set = std::function<void(Converter&, double)>;

template <class T>
Set Setter(void (Converter::*set)(T)) {
  return [set](Converter& c, double value) { (c.*set)(static_cast<T>(value)); };
}

TEST(Setters, RefuseInTheWordsOfTheirKind) {
  const double nan = std::nan("");
  const struct {
    Set set;
    std::size_t reg;  // index into kConverterRegisters
    std::vector<double> accepted;
    std::vector<std::pair<double, const char*>> refused;
  } kCases[] = {
      {Setter(&Converter::SetDestinationPixelFormat), 0, {1.0, 4294967295.0}, {}},
      {Setter(&Converter::SetBayerInterpolationMethod),
       2,
       {0, 7},
       {{8, "eBIM = 8 must be smaller than Max = 8"},
        {4294967295.0, "eBIM = 4294967295 must be smaller than Max = 8"}}},
      {Setter(&Converter::SetGammaValue),
       3,
       {0, 4},
       {{4.0000001, "Gamma Value = 4.000000 must be smaller than or equal 4.000000"},
        {-0.5, "Gamma Value = -0.500000 must be greater than or equal 0.000000"},
        {kInfinity, "Gamma Value = inf must be smaller than or equal 4.000000"},
        {-kInfinity, "Gamma Value = -inf must be greater than or equal 0.000000"},
        {nan, "Gamma Value = nan must be greater than or equal 0.000000"}}},
      {Setter(&Converter::SetBitExpansionMode),
       5,
       {3, 0},
       {{4, "Bit Expansion Mode Value = 4.000000 must be smaller than or equal 3.000000"}}},
      {Setter(&Converter::SetPolarizationImageTransformationMethod),
       6,
       {9, 0},
       {{10, "ePITM = 10 must be smaller than Max = 10"}}},
      {Setter(&Converter::SetPolarizationSpecifiedAngle),
       7,
       {180, 0},
       {{180.5,
         "Polarization Specified Angle = 180.500000 must be smaller than or equal "
         "180.000000"},
        {-1, "Polarization Specified Angle = -1.000000 must be greater than or equal 0.000000"},
        {nan, "Polarization Specified Angle = nan must be greater than or equal 0.000000"}}},
      {Setter(&Converter::SetColorMapType),
       8,
       {2, 0},
       {{3, "eCMT = 3 must be smaller than Max = 3"}}},
      {Setter(&Converter::SetColorMapPhase),
       10,
       {255, 0},
       {{256, "nPhase = 256 must be smaller than Max = 256"},
        {-1, "nPhase = -1 must be equal or greater than Min = 0"}}},
      {Setter(&Converter::SetADOLPColorPhase),
       13,
       {255, 0},
       {{INT_MAX, "nPhase = 2147483647 must be smaller than Max = 256"},
        {INT_MIN, "nPhase = -2147483648 must be equal or greater than Min = 0"}}},
      {Setter(&Converter::SetInterpolationMethodForSpecifiedAngle),
       14,
       {1, 0},
       {{2, "Interpolation Method For Specified Angle = 2 must be smaller than Max = 2"}}},
  };
  for (const auto& c : kCases) {
    Converter converter;
    const Getter& get = kConverterRegisters[c.reg].typed;
    for (double value : c.accepted) {
      c.set(converter, value);
      EXPECT_EQ(get(converter), value);
    }
    for (const auto& [value, words] : c.refused) {
      EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] { c.set(converter, value); }), words);
      EXPECT_EQ(get(converter), c.accepted.back()) << words;
    }
  }

  Gamma filter;
  const std::pair<double, const char*> kGamma[] = {
      {4.0000001, "value = 4.000000 must be smaller than or equal 4.000000"},
      {-0.1, "value = -0.100000 must be greater than or equal 0.000000"},
      {nan, "value = nan must be greater than or equal 0.000000"}};
  for (const auto& [value, words] : kGamma) {
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] { filter.SetGammaValue(value); }), words);
    EXPECT_EQ(filter.GetGammaValue(), 1.0);
  }
  try {
    filter.SetGammaValue(5);
  } catch (const GenICam::GenericException& e) {
    EXPECT_STREQ(e.GetSourceFileName(), "QvApi_IP/QvSetting");
    EXPECT_NE(std::string(e.what()).find("OutOfRangeException"), std::string::npos);
  }
}

// --- What a node map remembers ------------------------------------------------------------------

double NodeValue(Converter& converter, const char* name) {
  GenApi::INode* node = converter.GetINodeMap()->GetNode(name);
  if (const GenApi::CFloatPtr real = node; real.IsValid()) return real->GetValue();
  return static_cast<double>(GenApi::CIntegerPtr(node)->GetValue());
}

TEST(NodeCache, FollowsTypedSettersExceptWhereNoNodeHasTheirName) {
  const struct {
    const char* node;
    Set set;
    double first, second;
    bool follows = true;
  } kCases[] = {
      {"DestinationPixelFormatReg", Setter(&Converter::SetDestinationPixelFormat), 0x01080001,
       0x81080002},
      {"ReverseYReg", Setter(&Converter::SetReverseY), 1, 0},
      {"BayerInterpolationMethodReg", Setter(&Converter::SetBayerInterpolationMethod), 7, 0},
      {"GammaReg", Setter(&Converter::SetGammaValue), 2.5, 0.5},
      {"DestinationPixelFormatNodeLockReg", Setter(&Converter::SetDestinationPixelFormatNodeLock),
       1, 0},
      {"BitExpansionModeReg", Setter(&Converter::SetBitExpansionMode), 1, 2, false},
      {"PolarizationImageTransformationMethodReg",
       Setter(&Converter::SetPolarizationImageTransformationMethod), 2, 6},
      {"PolarizationSpecifiedAngleReg", Setter(&Converter::SetPolarizationSpecifiedAngle), 22.5, 1},
      {"PolarizationSpecifiedAngleInterpolationMethodReg",
       Setter(&Converter::SetInterpolationMethodForSpecifiedAngle), 1, 0},
      {"ColorMapTypeReg", Setter(&Converter::SetColorMapType), 2, 1},
      {"ColorMapInversionReg", Setter(&Converter::SetColorMapInversion), 1, 0, false},
      {"ColorMapPhaseReg", Setter(&Converter::SetColorMapPhase), 255, 3},
      {"ADOLPDarkModeReg", Setter(&Converter::SetADOLPDarkMode), 1, 0},
      {"ADOLPColorInversionReg", Setter(&Converter::SetADOLPColorInversion), 1, 0},
      {"ADOLPColorPhaseReg", Setter(&Converter::SetADOLPColorPhase), 9, 8},
  };
  for (const auto& c : kCases) {
    Converter converter;
    c.set(converter, c.first);  // before there is a node map
    EXPECT_EQ(NodeValue(converter, c.node), c.first) << c.node;
    c.set(converter, c.second);
    EXPECT_EQ(NodeValue(converter, c.node), c.follows ? c.second : c.first) << c.node;
    converter.GetINodeMap()->InvalidateNodes();
    EXPECT_EQ(NodeValue(converter, c.node), c.second) << c.node;
  }
}

TEST(NodeCache, StaysWhereNothingChangedOrNoNodeWasTold) {
  Gamma filter;
  const GenApi::CFloatPtr gamma = filter.GetINodeMap()->GetNode("Gamma");
  EXPECT_EQ(gamma->GetValue(), 1.0);
  WriteRegister(filter, 0x10, true, 2.0);
  EXPECT_EQ(filter.GetGammaValue(), 2.0);
  EXPECT_EQ(gamma->GetValue(), 1.0) << "the register road tells no node";
  EXPECT_EQ(gamma->GetValue(false, true), 2.0);
  WriteRegister(filter, 0x10, true, 3.0);
  filter.SetGammaValue(3.0);
  EXPECT_EQ(gamma->GetValue(), 2.0) << "the value was stored already";
  EXPECT_THROW(filter.SetGammaValue(9.0), GenICam::OutOfRangeException);
  EXPECT_EQ(gamma->GetValue(), 2.0);
  filter.SetGammaValue(0.5);
  EXPECT_EQ(gamma->GetValue(), 0.5);
  gamma->SetValue(1.5);
  EXPECT_EQ(filter.GetGammaValue(), 1.5);
  EXPECT_EQ(filter.GetINodeMap(), gamma->GetNode()->GetNodeMap());
  EXPECT_EQ(filter.GetINodeMap()->GetDeviceName(), GenICam::gcstring("Device"));
}

// --- Listeners, buffers --------------------------------------------------------------------------

class CountingCallback : public IQvCallback {
 public:
  void OnIQvCallback(IQvCallbackParamBase*) override { ++calls; }
  void Destroy() override { ++destroyed; }
  int calls = 0, destroyed = 0;
};

TEST(ModuleCallbacks, AreKeptByHandle) {
  CountingCallback callback;
  {
    Gamma filter;
    void* first = filter.RegisterCallback(&callback);
    void* second = filter.RegisterCallback(&callback);
    EXPECT_NE(first, second);
    filter.DeregisterCallback(first);
    EXPECT_EQ(callback.destroyed, 1);
    for (void* handle : {first, static_cast<void*>(nullptr), static_cast<void*>(&callback)}) {
      EXPECT_EQ(
          MessageOf<GenICam::InvalidArgumentException>([&] { filter.DeregisterCallback(handle); }),
          "hCallback is invalid.");
    }
    EXPECT_EQ(callback.destroyed, 1);
  }
  EXPECT_EQ(callback.destroyed, 2) << "the module's end is the end of what is registered";
  EXPECT_EQ(callback.calls, 0);
}

TEST(TemporaryBuffers, AreUsedAgainInTheOrderOfTheirReturn) {
  Converter converter;
  IQvImageBufferReleasable* a = converter.GetTempolaryBuffer();
  IQvImageBufferReleasable* b = converter.GetTempolaryBuffer();
  IQvImageBufferReleasable* c = converter.GetTempolaryBuffer();
  EXPECT_TRUE(a != b && b != c && a != c);
  b->SetSize(64, 64, PixelFormat::Mono8, 0);
  const void* memory = b->GetIQvImage()->GetImageBuffer();
  for (IQvImageBufferReleasable* buffer : {b, c, a}) converter.ReleaseTempolaryBuffer(buffer);
  EXPECT_EQ(converter.GetTempolaryBuffer(), b);
  EXPECT_EQ(b->GetIQvImage()->GetImageBuffer(), memory);
  EXPECT_EQ(converter.GetTempolaryBuffer(), c);
  EXPECT_EQ(converter.GetTempolaryBuffer(), a);
  converter.ReleaseTempolaryBuffer(c);
}  // b and a are released with the rest

TEST(TemporaryBuffers, KeepTheirMemoryFromImageToImage) {
  Converter converter;
  const Buffer frame = MakeBuffer();
  converter.SetReverseY(true);
  converter.SetDestinationPixelFormat(PixelFormat::BGR12);
  // In place, so that each image goes through a temporary one.
  const auto convert = [&](std::size_t height) {
    frame->CreateBuffer(40, height, PixelFormat::BayerRG12, QvMemoryInitialization_Zero);
    converter.Convert(frame->GetIQvImage(), frame.Get());
  };
  convert(30);
  IQvImageBufferReleasable* used = converter.GetTempolaryBuffer();
  const void* memory = used->GetIQvImage()->GetImageBuffer();
  converter.ReleaseTempolaryBuffer(used);
  for (std::size_t height : {30, 8, 29, 30}) convert(height);
  EXPECT_EQ(converter.GetTempolaryBuffer(), used);
  EXPECT_EQ(used->GetIQvImage()->GetImageBuffer(), memory);
  EXPECT_FALSE(converter.GetTempolaryBuffer()->HasImageBuffer()) << "one buffer was enough";
}

}  // namespace
}  // namespace QvApi
