// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ChannelOrder.h"

#include <gmock/gmock.h>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ChannelOrderScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
void CompareWithScalar(const ChannelOrder& order, size_t pixels, size_t slack) {
  const unsigned from = order.sourceComponents, to = order.destinationComponents;
  SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to) +
               (order.exchange ? " exchanged" : ""));
  TwinLine<T> source(pixels * from, slack, 1), destination(pixels * to, slack, 3);
  ReorderChannels(source.vector(), destination.vector(), pixels, order);
  Scalar::ReorderChannels(source.scalar(), destination.scalar(), pixels, order);
  destination.Check();
  if (from != to) return;
  ReorderChannels(source.vector(), source.vector(), pixels, order);
  Scalar::ReorderChannels(source.scalar(), source.scalar(), pixels, order);
  source.Check();
}

TEST(ChannelOrder, AgreesWithScalarAndInPlace) {
  ForEachLine([](size_t pixels, size_t slack) {
    for (unsigned from : {3u, 4u})
      for (unsigned to : {3u, 4u})
        for (bool exchange : {false, true}) {
          CompareWithScalar<uint8_t>({from, to, exchange}, pixels, slack);
          CompareWithScalar<uint16_t>({from, to, exchange}, pixels, slack);
        }
  });
}

TEST(ChannelOrder, OtherNumbersOfComponentsWriteNothing) {
  const uint8_t source[5] = {1, 2, 3, 4, 5};
  uint8_t destination[5] = {};
  ReorderChannels(source, destination, 1, {3, 5, true});
  ReorderChannels(source, destination, 1, {1, 3, true});
  EXPECT_THAT(destination, ::testing::Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
