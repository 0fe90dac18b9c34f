// SPDX-License-Identifier: MIT
// What all filters must keep, whatever they do to pixels.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "QvApi_IP/IQvFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi::Testing {

inline unsigned DepthOf(PixelFormat format) {
  return static_cast<unsigned>(Info(format).GetEachComponentEffectiveBitCount());
}

/// The formats of these names with each depth behind, and others.
inline std::vector<PixelFormat> OfAllDepths(std::initializer_list<std::string> names,
                                            std::initializer_list<std::string> others = {}) {
  std::vector<PixelFormat> formats;
  for (const std::string& name : names)
    for (const char* depth : {"8", "10", "12", "14", "16"})
      formats.push_back(FormatOf(name + depth));
  for (const std::string& name : others) formats.push_back(FormatOf(name));
  return formats;
}

inline std::vector<PixelFormat> RawFormats() {
  return OfAllDepths({"Mono", "BayerGR", "BayerRG", "BayerGB", "BayerBG"});
}
inline std::vector<PixelFormat> ColorFormats() {
  return OfAllDepths({"BGR", "BGRa"}, {"RGB8", "RGBa8"});
}
/// These, and some formats of YCbCr.
inline std::vector<PixelFormat> SampleFormats() {
  return OfAllDepths({"Mono", "BayerGR", "BayerRG", "BayerGB", "BayerBG", "BGR", "BGRa"},
                     {"RGB8", "RGBa8", "YCbCr8", "YCbCr422_8", "YCbCr411_8", "YCbCr709_422_8"});
}

/// The colour of a Bayer site by the format's name. Odd lines have the letters of even ones the
/// other way round, and blue for red.
inline char BayerColor(const std::string& name, std::size_t x, std::size_t y) {
  const char letter = name[5 + (x + y) % 2];
  return y % 2 == 0 || letter == 'G' ? letter : letter == 'R' ? 'B' : 'R';
}

/// Calls `check(width, height, padding)` for sizes around the lengths of vectors and for line
/// pitches with and without bytes behind the line, odd ones too.
template <class Check>
void ForEachShape(Check check) {
  constexpr std::array<std::pair<std::size_t, std::size_t>, 6> kSizes{
      {{1, 1}, {2, 3}, {3, 2}, {17, 2}, {67, 9}, {130, 1}}};
  for (const auto& [width, height] : kSizes)
    for (std::size_t padding : {0, 1, 6}) check(width, height, padding);
}

/// Random bytes; every third time samples may be above their depth.
inline void FillAtRandom(TestImage& image, unsigned seed) { image.Randomize(seed, seed % 3 != 0); }

/// The filter makes of images of every shape what `reference(image)` makes, and writes nothing
/// beside them.
template <class Reference>
void CompareOnShapes(IQvFilter& filter, PixelFormat format, Reference&& reference,
                     void (*fill)(TestImage& image, unsigned seed) = FillAtRandom) {
  static unsigned seed = 0;
  ForEachShape([&](std::size_t width, std::size_t height, std::size_t padding) {
    if (testing::Test::HasFatalFailure()) return;
    TestImage image(width, height, format, padding), expected(width, height, format, padding);
    fill(image, ++seed);
    expected.All() = image.All();
    reference(expected);
    ASSERT_EQ(filter.Filter(&image), &image);
    ASSERT_EQ(image.All(), expected.All())
        << NameOf(format) << " " << width << " x " << height << " + " << padding;
  });
}

/// What the filter makes of a sample at `index` of a line of zeros.
inline unsigned FilterOne(IQvFilter& filter, PixelFormat format, unsigned sample,
                          std::size_t index = 0) {
  TestImage image(4, 1, format);
  SetSample(image, index, 0, sample);
  filter.Filter(&image);
  return SampleAt(image, index, 0);
}

/// The filter accepts these formats; it refuses all others by name, but for those that `passes`
/// says it lets pass in silence, and leaves their images alone.
inline void ExpectSupportsOnly(
    IQvFilter& filter, const std::vector<PixelFormat>& formats,
    bool (*passes)(const PixelFormatRow& row) = [](const PixelFormatRow&) { return false; }) {
  for (const PixelFormatRow& row : kPixelFormats) {
    const bool isSupported = std::count(formats.begin(), formats.end(), row.format) != 0;
    EXPECT_EQ(filter.GetIQvFilterInfo()->IsSupported(row.format), isSupported) << row.name;
    if (isSupported) continue;
    TestImage image(8, 8, row.format);
    const auto before = image.Randomize(5).All();
    if (passes(row))
      EXPECT_EQ(filter.Filter(&image), &image) << row.name;
    else
      EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&image); }),
                "Not supported pixelformat " + std::string(row.name));
    EXPECT_EQ(image.All(), before) << row.name;
  }
  std::uint8_t byte = 7;
  ForeignImage unknown(&byte, 1, 1, 1, static_cast<PixelFormat>(0x0108ABCD));
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&unknown); }),
            "Not supported pixelformat 0x0108ABCD");
  EXPECT_EQ(byte, 7);
  ForeignImage noPixels(nullptr, 0, 0, 0, formats.front());
  EXPECT_EQ(MessageOf<GenICam::RuntimeException>([&] { filter.Filter(&noPixels); }),
            "There is no available image.");
  EXPECT_THROW(filter.Filter(nullptr), GenICam::InvalidArgumentException);
}

template <class T, class Module>
T ReadRegister(Module& module, std::int64_t address) {
  T value{};
  module.Read(&value, address, sizeof(value));
  return value;
}

template <class T, class Module>
void WriteRegister(Module& module, std::int64_t address, T value) {
  module.Write(&value, address, sizeof(value));
}

/// Every register of the module's document is served, at its length, and those that are read-only
/// take no write. Nor do those at `unwritten`, whatever the document says.
template <class Module>
void ExpectDocumentMatchesRegisters(Module& module, const std::set<std::int64_t>& unwritten = {}) {
  GenApi::NodeList_t nodes;
  module.GetINodeMap()->GetNodes(nodes);
  std::size_t count = 0;
  for (GenApi::INode* node : nodes) {
    auto* reg = dynamic_cast<GenApi::IRegister*>(node);
    if (!reg) continue;
    ++count;
    std::array<unsigned char, 64> bytes{};
    const std::int64_t address = reg->GetAddress(), length = reg->GetLength();
    std::int64_t taken = length;
    EXPECT_TRUE(module.mRead(bytes.data(), address, &taken)) << node->GetName().c_str();
    EXPECT_EQ(taken, length) << node->GetName().c_str();
    const bool isWritable =
        GenApi::IsWritable(node->GetAccessMode()) && unwritten.count(address) == 0;
    EXPECT_EQ(module.mWrite(bytes.data(), address, &taken), isWritable) << node->GetName().c_str();
  }
  EXPECT_GT(count, 0U);
}

/// A number as typed setting, register and feature: each shows what another one set, and all but
/// the register refuse what is out of range. `get` and `set` are members of the module, `selector`
/// what they take beside. Ends with another value than the initial one.
template <class T, class Module, class Get, class Set, class... Selector>
void ExpectNumber(Module& module, const char* feature, std::int64_t address, T initial, T minimum,
                  T maximum, Get getter, Set setter, Selector... selector) {
  SCOPED_TRACE(feature);
  const auto get = [&] { return (module.*getter)(selector...); };
  const auto set = [&](T value) { (module.*setter)(selector..., value); };
  using Error = GenICam::OutOfRangeException;
  constexpr bool isReal = std::is_floating_point_v<T>;
  using Node = std::conditional_t<isReal, GenApi::CFloatPtr, GenApi::CIntegerPtr>;
  const Node node = module.GetINodeMap()->GetNode(feature);
  EXPECT_EQ(get(), initial);
  EXPECT_EQ(node->GetValue(), initial);
  EXPECT_EQ(node->GetMin(), minimum);
  EXPECT_EQ(node->GetMax(), maximum);
  const T other = (minimum + 3 * maximum) / 4;
  for (T value : {minimum, maximum}) {
    set(value);
    EXPECT_EQ(ReadRegister<T>(module, address), value);
    EXPECT_EQ(node->GetValue(), value) << "a setter ends the cached value";
    node->SetValue(other);
    EXPECT_EQ(get(), other);
  }
  for (T value : {minimum - 1, maximum + 1}) {
    const bool isAbove = value > maximum;  // below 0 there is nothing
    const char* words = isReal    ? isAbove ? "smaller than or equal " : "greater than or equal "
                        : isAbove ? "equal or smaller than Max = "
                                  : "equal or greater than Min = ";
    EXPECT_EQ(MessageOf<Error>([&] { set(value); }),
              "value = " + std::to_string(value) + " must be " + words +
                  std::to_string(isAbove ? maximum : minimum));
    EXPECT_THROW(node->SetValue(value), Error);
    EXPECT_EQ(get(), other);
    WriteRegister(module, address, value);
    EXPECT_EQ(get(), value);
    set(other);
  }
  EXPECT_EQ(node->GetValue(), other);  // cached until a selector shows another one
}

/// The same for a choice, which is 0 first. `valueName` is what refusals call it.
template <class Module, class E>
void ExpectChoice(Module& module, const char* feature, std::int64_t address,
                  const std::vector<std::string>& names, const std::string& valueName,
                  E (Module::*get)() const, void (Module::*set)(E)) {
  const GenApi::CEnumerationPtr node = module.GetINodeMap()->GetNode(feature);
  EXPECT_EQ((module.*get)(), E{});
  const auto count = static_cast<unsigned>(names.size());
  for (unsigned value = count; value-- > 0;) {
    (module.*set)(static_cast<E>(value));
    EXPECT_EQ(ReadRegister<unsigned>(module, address), value);
    EXPECT_EQ(node->ToString().c_str(), names[value]);
    WriteRegister(module, address, count + 4);
    EXPECT_EQ((module.*get)(), static_cast<E>(count + 4));
    node->FromString(names[value].c_str());
    EXPECT_EQ((module.*get)(), static_cast<E>(value));
  }
  for (unsigned value : {count, ~0U})
    EXPECT_EQ(
        MessageOf<GenICam::OutOfRangeException>([&] { (module.*set)(static_cast<E>(value)); }),
        valueName + " = " + std::to_string(value) +
            " must be smaller than Max = " + std::to_string(count));
  EXPECT_EQ((module.*get)(), E{});
}

/// The same for a switch, whose register is set by 1 alone.
template <class Module>
void ExpectSwitch(Module& module, const char* feature, std::int64_t address,
                  bool (Module::*get)() const, void (Module::*set)(bool)) {
  EXPECT_FALSE((module.*get)());
  const GenApi::CBooleanPtr node = module.GetINodeMap()->GetNode(feature);
  for (unsigned value : {1U, 2U, 1U, 257U}) {
    WriteRegister(module, address, value);
    EXPECT_EQ((module.*get)(), value == 1) << value;
  }
  for (bool value : {true, false, true, false}) {
    node->SetValue(!value);
    EXPECT_EQ((module.*get)(), !value);
    (module.*set)(value);
    EXPECT_EQ(node->GetValue(), value) << "a setter ends the cached value";
  }
}

/// Only a raw write to the register of a selector selects what there is not. Then access to what is
/// selected throws as the typed operations do.
template <class Module>
void ExpectNothingSelected(Module& module, std::int64_t selector, std::uint64_t value,
                           const std::string& words,
                           std::initializer_list<std::int64_t> addresses) {
  using Error = GenICam::OutOfRangeException;
  WriteRegister(module, selector, value);
  std::array<unsigned char, 8> bytes{};
  for (std::int64_t address : addresses) {
    EXPECT_EQ(MessageOf<Error>([&] { module.Read(bytes.data(), address, 8); }), words) << address;
    EXPECT_EQ(MessageOf<Error>([&] { module.Write(bytes.data(), address, 8); }), words) << address;
  }
}

/// The filter has this name, and a document of one category, which holds these features. All can be
/// written, and all but selectors are streamed.
template <class Filter>
void ExpectDescription(Filter& filter, const char* name, const char* category,
                       GenApi::EVisibility visibility, const std::vector<std::string>& names) {
  EXPECT_STREQ(filter.GetIQvFilterInfo()->GetFilterName().c_str(), name);
  GenApi::FeatureList_t root, features;
  GenApi::INodeMap* map = filter.GetINodeMap();
  GenApi::CCategoryPtr(map->GetNode("Root"))->GetFeatures(root);
  ASSERT_EQ(root.size(), 1U);
  EXPECT_STREQ(root[0]->GetNode()->GetName().c_str(), category);
  GenApi::CCategoryPtr(root[0]->GetNode())->GetFeatures(features);
  std::vector<std::string> found;
  for (GenApi::IValue* feature : features) {
    const GenApi::INode* node = feature->GetNode();
    found.emplace_back(node->GetName().c_str());
    EXPECT_EQ(node->GetVisibility(), visibility) << found.back();
    EXPECT_EQ(node->IsStreamable(), !found.back().ends_with("Selector")) << found.back();
    EXPECT_EQ(feature->GetAccessMode(), GenApi::RW) << found.back();
  }
  EXPECT_EQ(found, names);
  ExpectDocumentMatchesRegisters(filter);
}

}  // namespace QvApi::Testing
