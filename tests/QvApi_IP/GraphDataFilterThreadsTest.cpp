// SPDX-License-Identifier: MIT
// Results are fetched while further images are measured.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "QvApi_IP/GraphDataChecks.h"
#include "QvApi_IP/QvGraphDataFilter.h"

namespace QvApi {
namespace {

using namespace Testing;

/// A list tells of one image of 16 x 16 pixels of one value, whatever becomes of the others.
void ExpectOneImage(const CQvGraphDataBufferList& list) {
  if (list.GetGraphDataBufferCount() == 0) return;
  const CQvGraphDataBuffer& first = *list.GetIQvGraphDataBuffer(0);
  const Elements elements = ElementsOf(first);
  const std::uint32_t value = elements[0] / 8;
  for (std::size_t i = 0; i < 4; ++i) {
    const CQvGraphDataBuffer& buffer = *list.GetIQvGraphDataBuffer(i);
    ASSERT_EQ(buffer.GetGraphDataType(), first.GetGraphDataType());
    ASSERT_EQ(ElementsOf(buffer), elements);
    if (first.GetGraphDataType() == kHistogram)
      ASSERT_EQ(elements[buffer.GetGraphDataInfoUint32(kPosition)], 64U);
    else
      ASSERT_EQ(elements, Elements(8, 8 * value));
  }
}

TEST(GraphDataFilterThreads, AFetchedListStaysWhileOthersAreFilled) {
  CQvGraphDataFilter filter;
  std::atomic<bool> done = false;
  std::jthread writer([&] {
    TestImage image(16, 16, PixelFormat::BayerRG8);
    for (unsigned i = 0; !done; ++i) {
      std::ranges::fill(image.All(), static_cast<std::uint8_t>(i));
      filter.Filter(&image);
    }
  });
  std::jthread settings([&] {
    for (unsigned i = 0; !done; ++i) {
      filter.SetGraphDataType(static_cast<_EQvGraphDataType_t>(1 + i % 3));
      std::this_thread::yield();
    }
  });
  struct Stop {
    std::atomic<bool>& done;
    ~Stop() { done = true; }
  } stop{done};
  for (int round = 0; round < 3000 && !testing::Test::HasFatalFailure(); ++round) {
    const auto* list = dynamic_cast<CQvGraphDataBufferList*>(filter.GetIQvGraphDataBufferList());
    for (int again = 0; again < 3; ++again) ExpectOneImage(*list);
    std::this_thread::yield();
  }
}

}  // namespace
}  // namespace QvApi
