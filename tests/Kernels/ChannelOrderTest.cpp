// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ChannelOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ChannelOrderScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

std::vector<ChannelOrder> AllOrders() {
  std::vector<ChannelOrder> orders;
  for (unsigned source : {3u, 4u}) {
    for (unsigned destination : {3u, 4u}) {
      for (bool exchange : {false, true}) orders.push_back({source, destination, exchange});
    }
  }
  return orders;
}

std::string Describe(const ChannelOrder& order, size_t pixels) {
  return std::to_string(order.sourceComponents) + " to " +
         std::to_string(order.destinationComponents) + (order.exchange ? " exchanged, " : ", ") +
         std::to_string(pixels) + " pixels";
}

template <class T>
void CompareWithScalar(const ChannelOrder& order, size_t pixels, size_t slack, bool inPlace) {
  SCOPED_TRACE(Describe(order, pixels) + (inPlace ? " in place" : ""));
  GuardedLine<T> source(pixels * order.sourceComponents, slack);
  source.FillRandom(1);
  GuardedLine<T> separate(pixels * order.destinationComponents, (3 * slack + 1) % 64);
  separate.FillRandom(2);
  GuardedLine<T>& destination = inPlace ? source : separate;
  std::vector<T> expected(destination.samples().begin(), destination.samples().end());
  Scalar::ReorderChannels(source.data(), expected.data(), pixels, order);

  ReorderChannels(source.data(), destination.data(), pixels, order);

  ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
  ASSERT_TRUE(source.SurroundingsIntact());
  ASSERT_TRUE(separate.SurroundingsIntact());
}

template <class T>
void CompareAllOrders(size_t pixels, size_t slack) {
  for (const ChannelOrder& order : AllOrders()) {
    CompareWithScalar<T>(order, pixels, slack, false);
    if (order.sourceComponents == order.destinationComponents) {
      CompareWithScalar<T>(order, pixels, slack, true);
    }
  }
}

template <class T>
class ChannelOrderTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(ChannelOrderTest, SampleTypes);

TYPED_TEST(ChannelOrderTest, EveryWidthAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t pixels = 0; pixels <= 200; ++pixels) {
      CompareAllOrders<TypeParam>(pixels, 0);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(ChannelOrderTest, EveryAlignmentAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      CompareAllOrders<TypeParam>(43 + slack % 2, slack);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(ChannelOrderTest, ByHand) {
  using T = TypeParam;
  const T big = static_cast<T>(~T{0});
  const std::vector<T> three{1, 2, 3, 4, 5, big};
  const std::vector<T> four{1, 2, 3, 91, 4, 5, big, 92};
  const auto reorder = [](const std::vector<T>& source, const ChannelOrder& order) {
    std::vector<T> destination(2 * order.destinationComponents, 77);
    ReorderChannels(source.data(), destination.data(), 2, order);
    return destination;
  };
  ForEachTarget([&](const std::string&) {
    EXPECT_THAT(reorder(three, {3, 3, false}), ElementsAre(1, 2, 3, 4, 5, big));
    EXPECT_THAT(reorder(three, {3, 3, true}), ElementsAre(3, 2, 1, big, 5, 4));
    EXPECT_THAT(reorder(three, {3, 4, true}), ElementsAre(3, 2, 1, 77, big, 5, 4, 77));
    EXPECT_THAT(reorder(four, {4, 3, true}), ElementsAre(3, 2, 1, big, 5, 4));
    EXPECT_THAT(reorder(four, {4, 4, false}), ElementsAre(1, 2, 3, 77, 4, 5, big, 77));
  });
}

TYPED_TEST(ChannelOrderTest, OtherNumbersOfComponentsWriteNothing) {
  const TypeParam source[5] = {1, 2, 3, 4, 5};
  TypeParam destination[5] = {};
  ReorderChannels(source, destination, 1, {3, 5, true});
  ReorderChannels(source, destination, 1, {1, 3, true});
  EXPECT_THAT(destination, ::testing::Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
