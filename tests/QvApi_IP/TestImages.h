// SPDX-License-Identifier: MIT
// Images for the tests of modules: any line pitch, bytes before, behind and between the lines that
// nobody may write, and random pixels.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "QvApi_TL/PixelFormatTable.h"
#include "QvSDKCommon/IQvAllocator.h"
#include "QvSDKCommon/IQvPixelFormatInfo.h"
#include "QvSDKCommon/ImageTestSupport.h"
#include "QvSDKCommon/QvInitialize.h"

namespace QvApi::Testing {

/// The factories work while one of these lives.
struct Initialized {
  Initialized() { QvApiInitialize(); }
  Initialized(const Initialized&) = delete;
  Initialized& operator=(const Initialized&) = delete;
  ~Initialized() { QvApiTerminate(); }
};

inline const IQvPixelFormatInfoInside& Info(PixelFormat format) {
  return dynamic_cast<const IQvPixelFormatInfoInside&>(*GetIQvPixelFormatInfo(format));
}

inline std::string NameOf(PixelFormat format) { return Info(format).GetName().c_str(); }

/// The format of a name; fails the test if there is none.
inline PixelFormat FormatOf(const std::string& name) {
  for (const PixelFormatRow& row : kPixelFormats)
    if (row.name == name) return row.format;
  ADD_FAILURE() << "no format " << name;
  return PixelFormat::None;
}

inline std::size_t LineBytes(PixelFormat format, std::size_t width) {
  return Info(format).GetLinePitch(width, 1);
}

/// What memory holds before somebody writes.
constexpr std::uint8_t kOld = 0xA5;

/// Gives one block of old bytes at a time, between guards of more of them.
class OldMemory : public IQvAllocator {
 public:
  explicit OldMemory(std::uint8_t old = kOld) : m_old(old) {}

  void Allocate(void** buffer, std::size_t size, void** context) override {
    m_block.assign(size + 2 * kGuard, m_old);
    *buffer = m_block.data() + kGuard;
    *context = nullptr;
  }
  void Deallocate(void*, std::size_t, void*) override {}
  void OnDeregister() override {}

  /// All bytes, those of the guards too.
  const std::vector<std::uint8_t>& Block() const { return m_block; }
  bool IsIntact() const {
    const auto isOld = [this](std::uint8_t byte) { return byte == m_old; };
    return m_block.empty() || (std::all_of(m_block.begin(), m_block.begin() + kGuard, isOld) &&
                               std::all_of(m_block.end() - kGuard, m_block.end(), isOld));
  }

 private:
  static constexpr std::ptrdiff_t kGuard = 64;

  const std::uint8_t m_old;
  std::vector<std::uint8_t> m_block;
};

/// An image of one format in memory of its own, with `kCanary` bytes around it.
class TestImage : public ForeignImage {
 public:
  TestImage(const TestImage&) = delete;  // it would show the same pixels
  TestImage(TestImage&&) = default;
  TestImage& operator=(const TestImage&) = delete;

  /// @param padding  bytes of a line behind its significant ones
  TestImage(std::size_t width, std::size_t height, PixelFormat format, std::size_t padding = 0)
      : TestImage(
            std::vector<std::uint8_t>(2 * kCanary + (LineBytes(format, width) + padding) * height *
                                                        Info(format).GetPlaneCount()),
            width, height, format, padding) {}

  /// Random bytes everywhere. Samples in 16-bit words are of the format's depth if `keepDepth`.
  TestImage& Randomize(unsigned seed, bool keepDepth = true) {
    std::mt19937 random(seed);
    for (std::uint8_t& byte : m_bytes) byte = static_cast<std::uint8_t>(random());
    const IQvPixelFormatInfoInside& info = Info(GetImagePixelFormat());
    if (!keepDepth || info.GetEachComponentTotalBitCount() != 16) return *this;
    const unsigned maximum = (1U << info.GetEachComponentEffectiveBitCount()) - 1;
    for (std::size_t y = 0; y < GetImageHeight() * info.GetPlaneCount(); ++y)
      for (std::size_t i = 0; i < LineBytes(GetImagePixelFormat(), GetImageWidth()) / 2; ++i) {
        const auto word = static_cast<std::uint16_t>(random() & maximum);
        std::memcpy(Line(y) + 2 * i, &word, 2);
      }
    return *this;
  }

  /// All bytes, those around the image too.
  std::vector<std::uint8_t>& All() { return m_bytes; }
  std::uint8_t* Line(std::size_t y) { return &m_bytes[kCanary + y * GetImageLinePitch()]; }

 private:
  static constexpr std::size_t kCanary = 16;

  TestImage(std::vector<std::uint8_t> bytes, std::size_t width, std::size_t height,
            PixelFormat format, std::size_t padding)
      : ForeignImage(bytes.data() + kCanary, width, height, LineBytes(format, width) + padding,
                     format),
        m_bytes(std::move(bytes)) {}

  std::vector<std::uint8_t> m_bytes;
};

/// Sample `index` of a line in bytes or 16-bit words.
inline unsigned SampleAt(const IQvImage& image, std::size_t index, std::size_t y) {
  const std::uint8_t* line = Bytes(&image) + y * image.GetImageLinePitch();
  if (Info(image.GetImagePixelFormat()).GetEachComponentEffectiveBitCount() <= 8)
    return line[index];
  std::uint16_t word;
  std::memcpy(&word, line + 2 * index, 2);
  return word;
}

inline void SetSample(const IQvImage& image, std::size_t index, std::size_t y, unsigned value) {
  std::uint8_t* line = Bytes(&image) + y * image.GetImageLinePitch();
  const auto word = static_cast<std::uint16_t>(value);
  if (Info(image.GetImagePixelFormat()).GetEachComponentEffectiveBitCount() <= 8)
    line[index] = static_cast<std::uint8_t>(value);
  else
    std::memcpy(line + 2 * index, &word, 2);
}

}  // namespace QvApi::Testing
