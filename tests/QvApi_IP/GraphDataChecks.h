// SPDX-License-Identifier: MIT
// What the tests of graph data share.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "QvApi_IP/QvGraphDataBufferList.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi::Testing {

using Elements = std::vector<std::uint32_t>;

inline constexpr auto kUint32 = QvNumberDataType_uint32;
inline constexpr auto kPlain = QvGraphDataType_Undefined;
inline constexpr auto kHistogram = QvGraphDataType_Histogram;
inline constexpr auto kComponent = QvGraphDataInfoUint32_PixelComponent;
inline constexpr auto kPosition = QvGraphDataInfoUint32_PeakPosition;
inline constexpr auto kPeak = QvGraphDataInfoUint32_PeakValue;
inline constexpr char kNoData[] = "There is no available graph data. : RuntimeException";

/// Text and type of what `action` throws.
template <class Action>
std::string Refusal(Action action) {
  try {
    action();
  } catch (const GenICam::GenericException& e) {
    const std::string what = e.what();
    return what.substr(0, what.find(" thrown ("));
  }
  return "nothing thrown";
}

inline Elements ElementsOf(const IQvGraphDataBuffer& buffer) {
  const auto* elements = static_cast<const std::uint32_t*>(buffer.GetBufferPtr());
  return {elements, elements + buffer.GetBufferSize() / 4};
}

inline void Fill(IQvGraphDataBufferResizable& buffer, const Elements& elements,
                 _EQvGraphDataType_t type = kPlain) {
  dynamic_cast<CQvGraphDataBuffer&>(buffer).Resize(kUint32, elements.size(), type);
  std::ranges::copy(elements, static_cast<std::uint32_t*>(buffer.GetBufferPtr()));
}

/// Gives memory with old content, none from `limit` elements on, and sees that it comes back.
class Allocator : public IQvSpecificTypeAllocator {
 public:
  ~Allocator() override { EXPECT_TRUE(m_blocks.empty()); }
  void Allocate(void** ppBuffer, _EQvNumberDataType_t eDataType, std::size_t count,
                void** ppContext) override {
    EXPECT_EQ(eDataType, kUint32);
    ++allocations;
    if (count == 0 || count >= limit) return;
    *ppContext = this;
    Elements block(count, 0xDEADBEEF);
    *ppBuffer = block.data();
    m_blocks[*ppBuffer] = std::move(block);
  }
  void Deallocate(void* pBuffer, _EQvNumberDataType_t, std::size_t count, void* pContext) override {
    EXPECT_EQ(pContext, this);
    EXPECT_EQ(m_blocks.at(pBuffer).size(), count);
    m_blocks.erase(pBuffer);
  }
  void OnDeregister() override { ADD_FAILURE(); }

  std::size_t limit = SIZE_MAX;
  int allocations = 0;

 private:
  std::map<void*, Elements> m_blocks;
};

}  // namespace QvApi::Testing
