// SPDX-License-Identifier: MIT
// What all filters must keep, whatever they do to pixels.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "QvApi_IP/IQvFilter.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi::Testing {

/// Calls `check(width, height, padding)` for sizes around the lengths of vectors and for line
/// pitches with and without bytes behind the line, odd ones too.
template <class Check>
void ForEachShape(Check check) {
  constexpr std::array<std::pair<std::size_t, std::size_t>, 6> kSizes{
      {{1, 1}, {2, 3}, {3, 2}, {17, 2}, {67, 3}, {130, 1}}};
  for (const auto& [width, height] : kSizes)
    for (std::size_t padding : {0, 1, 6}) check(width, height, padding);
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
/// take no write.
template <class Module>
void ExpectDocumentMatchesRegisters(Module& module) {
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
    const bool isWritable = GenApi::IsWritable(node->GetAccessMode());
    EXPECT_EQ(module.mWrite(bytes.data(), address, &taken), isWritable) << node->GetName().c_str();
  }
  EXPECT_GT(count, 0U);
}

}  // namespace QvApi::Testing
