// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "QvApi_IP/QvFilterPtrList.h"
#include "QvApi_IP/TestImages.h"

namespace QvApi {
namespace {

using namespace Testing;

/// Writes its name and what it gets into a log, and its name when it is released.
class FakeFilter : public IQvFilterReleasable {
 public:
  FakeFilter(char name, std::string& log, IQvImage* result = nullptr)
      : m_name(name), m_log(log), m_result(result) {}

  IQvFilterInfo* GetIQvFilterInfo() const override { return nullptr; }
  IQvImage* Filter(IQvImage* image) override {
    m_log += m_name + std::to_string(image->GetImageWidth());
    if (fails) throw std::runtime_error("fake");
    return m_result ? m_result : image;
  }
  GenApi::INodeMap* GetINodeMap() override { return nullptr; }
  void* RegisterCallback(IQvCallback*) override { return nullptr; }
  void DeregisterCallback(void*) override {}
  void Release() override { m_log += std::string("~") + m_name; }

  bool fails = false;

 private:
  const char m_name;
  std::string& m_log;
  IQvImage* const m_result;
};

class FilterList : public testing::Test {
 protected:
  std::string log;
  TestImage image{1, 1, PixelFormat::Mono8}, other{2, 1, PixelFormat::Mono8};
  FakeFilter a{'a', log}, b{'b', log, &other}, c{'c', log};
};

TEST_F(FilterList, AppliesInOrderAndPassesResultsOn) {
  CIQvFilterPtrArray list;
  EXPECT_EQ(list.Filter(&image), &image) << "an empty list";
  EXPECT_EQ(list.Filter(nullptr), nullptr);
  EXPECT_EQ(list.Register(&a), 0U);
  EXPECT_EQ(list.Register(&b), 1U);
  EXPECT_EQ(list.Register(&c), 2U);
  EXPECT_EQ(list.Filter(&image), &other);
  EXPECT_EQ(log, "a1b1c2");
  b.fails = true;
  EXPECT_THROW(list.Filter(&image), std::runtime_error);
  EXPECT_EQ(log, "a1b1c2a1b1");
}

TEST_F(FilterList, ReleasesEachElementOnceIfItWasNotGivenBack) {
  {
    CIQvFilterPtrArray list;
    for (FakeFilter* filter : {&a, &b, &c}) list.Register(filter);
    EXPECT_EQ(list.Deregister(0), static_cast<IQvFilterReleasable*>(&a));
    EXPECT_EQ(list.GetSize(), 2U);
    EXPECT_EQ(list[0], static_cast<IQvFilter*>(&b)) << "the others move up";
    EXPECT_EQ(list.Register(&a), 2U);
    EXPECT_EQ(list.Deregister(1), static_cast<IQvFilterReleasable*>(&c));
    EXPECT_EQ(log, "");
    list.Release();
    EXPECT_EQ(log, "~b~a");
    EXPECT_EQ(list.GetSize(), 0U);
    list.Register(&b);
  }
  EXPECT_EQ(log, "~b~a~b");
  {
    CQvAutoPtrArray<IQvFilterReleasable, IQvFilter> plain;
    plain.Register(&c);
  }
  EXPECT_EQ(log, "~b~a~b~c");
}

TEST_F(FilterList, RefusesIndicesInTheWordsOfTheEndTheyMiss) {
  CIQvFilterPtrArray list;
  const auto expectRefused = [&](std::size_t index, const std::string& words) {
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] { list.Deregister(index); }), words);
    EXPECT_EQ(MessageOf<GenICam::OutOfRangeException>([&] { list[index]; }), words);
  };
  expectRefused(0, "nIndex = 0 must be smaller than Max = 0");
  list.Register(&a);
  list.Register(&b);
  expectRefused(2, "nIndex = 2 must be smaller than Max = 2");
  expectRefused(SIZE_MAX, "nIndex = -1 must be equal or greater than Min = 0");
  expectRefused(SIZE_MAX / 2, "nIndex = 9223372036854775807 must be smaller than Max = 2");
  EXPECT_EQ(list.GetSize(), 2U);
}

TEST_F(FilterList, AssertsThatElementsInUseExist) {
  CIQvFilterPtrArray list;
  list.Register(nullptr);
  EXPECT_DEATH(list[0], "\\(pUT\\) != NULL");
  EXPECT_DEATH(list.Filter(&image), "\\(pUT\\) != NULL");
  EXPECT_EQ(list.Deregister(0), nullptr);
  list.Register(nullptr);
  CQvAutoPtrArray<IQvFilterReleasable, IQvFilter> plain;
  plain.Register(nullptr);
}  // nothing to release there

}  // namespace
}  // namespace QvApi
