// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>

#include "QvApi_IP/GraphDataChecks.h"
#include "QvApi_IP/QvApi_IP.h"

namespace QvApi {
namespace {

using namespace Testing;

constexpr auto kNoSuchKey = static_cast<_EQvGraphDataInfoUint32_t>(5);
constexpr char kNoInformation[] =
    "Not supported information for this data type. : RuntimeException";

TEST(GraphDataBuffer, ResizingClearsAndKeepsMemoryOfTheSameSize) {
  Allocator allocator;
  CQvGraphDataBuffer foreign(&allocator), own(nullptr);
  const struct {
    std::size_t count;
    _EQvGraphDataType_t type;
    int allocations;
  } kSteps[] = {{0, kPlain, 0}, {3, kHistogram, 1}, {3, kHistogram, 0}, {5, kHistogram, 1},
                {5, kPlain, 1}, {0, kPlain, 1},     {2, kPlain, 1},     {0, kHistogram, 1}};
  for (const auto& step : kSteps) {
    allocator.allocations = 0;
    for (CQvGraphDataBuffer* buffer : {&foreign, &own}) {
      buffer->Resize(kUint32, step.count, step.type);
      EXPECT_EQ(ElementsOf(*buffer), Elements(step.count));
      EXPECT_EQ(buffer->GetGraphDataType(), step.type);
      EXPECT_EQ(Refusal([&] { buffer->GetGraphDataInfoUint32(kComponent); }), kNoInformation);
      EXPECT_EQ(Refusal([&] { buffer->GetIQvGraphData(); }),
                step.count != 0 ? "nothing thrown" : kNoData);
      std::fill_n(buffer->Elements(), step.count, 7U);
      buffer->SetGraphDataInfoUint32(kComponent, 1);
    }
    EXPECT_EQ(allocator.allocations, step.allocations);
    EXPECT_EQ(foreign.GetUserContext(), step.count != 0 ? &allocator : nullptr);
  }
}

TEST(GraphDataBuffer, APlainArrayKnowsItsPeakUnlessTold) {
  const struct {
    Elements elements;
    std::uint32_t position, value;
  } kCases[] = {{{}, 0, 0}, {{0, 0, 0}, 0, 0}, {{1, 5, 2, 5}, 1, 5}, {{1, 2, 0xFFFFFFFF}, 2, ~0U}};
  for (const auto& c : kCases) {
    CQvGraphDataBuffer buffer(nullptr);
    Fill(buffer, c.elements);
    EXPECT_EQ(buffer.GetGraphDataInfoUint32(kPosition), c.position);
    EXPECT_EQ(buffer.GetGraphDataInfoUint32(kPeak), c.value);
    for (std::uint32_t told : {8, 9}) buffer.SetGraphDataInfoUint32(kPosition, told);
    EXPECT_EQ(buffer.GetGraphDataInfoUint32(kPosition), 9U);
  }
}

TEST(GraphDataBuffer, RefusalsAndTheirWords) {
  CQvGraphDataBufferList list(nullptr);
  list.CreateBufferList(1);
  CQvGraphDataBuffer& buffer = *list.GetIQvGraphDataBuffer(0);
  CQvGraphDataBuffer empty(nullptr);
  Fill(buffer, {3}, kHistogram);
  constexpr char kNoKey[] = "eGDIU = 5 must be smaller than Max = 5 : OutOfRangeException";
  constexpr char kNoFloat[] = "eGDIF = 0 must be smaller than Max = 0 : OutOfRangeException";
  const struct {
    std::function<void()> action;
    std::string message;
  } kCases[] = {
      {[&] { buffer.GetGraphDataInfoUint32(kPeak); }, kNoInformation},
      {[&] { buffer.GetGraphDataInfoUint32(kNoSuchKey); }, kNoKey},
      {[&] { buffer.SetGraphDataInfoUint32(kNoSuchKey, 1); }, kNoKey},
      {[&] { buffer.GetGraphDataInfoFloat64({}); }, kNoFloat},
      {[&] { buffer.SetGraphDataInfoFloat64({}, 1); }, kNoFloat},
      {[&] { buffer.Resize(static_cast<_EQvNumberDataType_t>(64), 1); },
       "eDataType isn't  QvNumberDataType_uint32. : InvalidArgumentException"},
      {[&] { buffer.CopyGraphData(&empty); }, kNoData},
      {[&] { empty.CopyGraphData(&empty); }, kNoData},
      {[&] { buffer.CopyGraphData(nullptr); },
       "pSource is no graph data buffer. : InvalidArgumentException"},
      {[&] { list.CopyGraphDataBufferList(nullptr); },
       "pSource is NULL. : InvalidArgumentException"},
      {[&] { list.GetIQvGraphDataBuffer(1); },
       "nIndex = 1 must be smaller than Max = 1 : OutOfRangeException"},
      {[&] { list.GetIQvGraphDataBuffer(SIZE_MAX); },
       "nIndex = -1 must be equal or greater than Min = 0 : OutOfRangeException"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Refusal(c.action), c.message);
  EXPECT_EQ(ElementsOf(buffer), Elements{3});
}

TEST(GraphDataBuffer, WithoutMemoryItIsEmpty) {
  Allocator allocator;
  allocator.limit = 100;
  CQvGraphDataBufferList ownList(nullptr), list(&allocator);
  CQvGraphDataBuffer single(nullptr);
  for (auto* each : {&ownList, &list}) each->CreateBufferList(1);
  for (CQvGraphDataBuffer* buffer :
       {&single, ownList.GetIQvGraphDataBuffer(0), list.GetIQvGraphDataBuffer(0)})
    for (std::size_t count : {SIZE_MAX, SIZE_MAX / 32 + 2, SIZE_MAX / 64}) {  // 2: 32 bits are left
      // AddressSanitizer ends a program that throws for lack of memory.
      if (buffer == &single && count == SIZE_MAX / 64) continue;
      Fill(*buffer, {1, 2, 3});
      EXPECT_THROW(buffer->Resize(kUint32, count), GenICam::BadAllocException);
      EXPECT_EQ(buffer->GetBufferSize(), 0U);
      EXPECT_EQ(buffer->GetBufferPtr(), nullptr);
    }
  EXPECT_THROW(list.CreateBufferList(SIZE_MAX), GenICam::BadAllocException);
  EXPECT_EQ(list.GetGraphDataBufferCount(), 1U);
}

TEST(GraphDataBufferList, GrowsAtItsEndAndCopiesWhatHasElements) {
  EXPECT_THROW(CreateIQvGraphDataBufferListResizable(nullptr), GenICam::RuntimeException);
  EXPECT_THROW(CreateIQvGraphDataFilter(nullptr), GenICam::RuntimeException);
  const Initialized initialized;
  Allocator allocator;
  using Holder =
      CQvAutoPtr<IQvGraphDataBufferListResizableReleasable, IQvGraphDataBufferListResizable>;
  const Holder source(CreateIQvGraphDataBufferListResizable(nullptr));
  const Holder copy(CreateIQvGraphDataBufferListResizable(&allocator));
  source->CreateBufferList(2);
  Fill(*source->GetIQvGraphDataBuffer(1), {1, 2, 3}, kHistogram);
  source->GetIQvGraphDataBuffer(1)->SetGraphDataInfoUint32(kPeak, 77);
  source->CreateBufferList(4);
  Fill(*source->GetIQvGraphDataBuffer(3), {9});
  copy->CreateBufferList(3);
  Fill(*copy->GetIQvGraphDataBuffer(0), {5, 5, 5}, kHistogram);
  copy->CopyGraphDataBufferList(source.Get());
  EXPECT_EQ(allocator.allocations, 2);
  source->CopyGraphDataBufferList(source.Get());
  source->GetIQvGraphDataBuffer(1)->CopyGraphData(source->GetIQvGraphDataBuffer(1));

  const struct {
    const Holder& list;
    std::size_t count, first, second;
  } kLists[] = {{copy, 2, 0, 1}, {source, 4, 1, 3}};
  for (const auto& [list, count, first, second] : kLists) {
    EXPECT_EQ(list->GetGraphDataBufferCount(), count);
    const IQvGraphData& data = *list->GetIQvGraphDataBuffer(first)->GetIQvGraphData();
    EXPECT_EQ(ElementsOf(*list->GetIQvGraphDataBuffer(first)), (Elements{1, 2, 3}));
    EXPECT_EQ(data.GetGraphDataType(), kHistogram);
    EXPECT_EQ(data.GetGraphDataInfoUint32(kPeak), 77U);
    EXPECT_EQ(ElementsOf(*list->GetIQvGraphDataBuffer(second)), Elements{9});
  }
  source->CreateBufferList(1);
  copy->CopyGraphDataBufferList(source.Get());
  EXPECT_EQ(copy->GetGraphDataBufferCount(), 0U);
}

}  // namespace
}  // namespace QvApi
