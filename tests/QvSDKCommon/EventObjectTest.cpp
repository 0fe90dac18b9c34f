// SPDX-License-Identifier: MIT
#include "QvSDKCommon/EventObject.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace QvApi {
namespace {

/// Events as a text says: M manual-reset or A automatic-reset, each signalled (+) or not (-).
class Events {
 public:
  explicit Events(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); i += 2)
      m_events.push_back(
          std::make_unique<CEventObject>(nullptr, text[i] == 'M', text[i + 1] == '+', "event"));
    for (const auto& event : m_events) m_pointers.push_back(event.get());
  }
  unsigned int Wait(bool waitAll, unsigned int timeout) {
    const auto count = static_cast<unsigned int>(m_pointers.size());
    return WaitForMultipleObjects(count, m_pointers.data(), waitAll, timeout);
  }
  /// What each event is now; asking clears those of automatic reset.
  std::string States() {
    std::string states;
    for (void* event : m_pointers) states += WaitForSingleObject(event, 0) == 0 ? '+' : '-';
    return states;
  }
  std::vector<void*> m_pointers;

 private:
  std::vector<std::unique_ptr<CEventObject>> m_events;
};

TEST(EventObjectTest, WaitsGiveTheLowestSignalledAndClearWhatResetsItself) {
  struct Case {
    std::string events;
    bool waitAll;
    unsigned int result;
    std::string afterPoll, afterWait;
  };
  const Case cases[]{{"M+", false, 0, "+", "+"},
                     {"A+", false, 0, "-", "-"},
                     {"M-", true, 258, "-", "-"},
                     {"A-", false, 258, "-", "-"},
                     {"M-M+", false, 1, "-+", "-+"},
                     {"M-M+", true, 258, "-+", "-+"},
                     {"A-M-A+A+", false, 2, "----", "----"},
                     {"A+M+A+", true, 0, "-+-", "-+-"},
                     {"M+A-", true, 258, "+-", "+-"},
                     {"M-A+", true, 258, "-+", "--"}};
  for (const auto& [text, waitAll, result, afterPoll, afterWait] : cases) {
    for (const unsigned int timeout : {0u, 2u}) {
      SCOPED_TRACE(text + " " + std::to_string(timeout));
      Events events(text);
      EXPECT_EQ(events.Wait(waitAll, timeout), result);
      EXPECT_EQ(events.States(), timeout == 0 ? afterPoll : afterWait);
      if (text.size() > 2) continue;
      Events single(text);
      EXPECT_EQ(WaitForSingleObject(single.m_pointers[0], timeout), result);
      EXPECT_EQ(single.States(), afterPoll);
    }
  }
}

TEST(EventObjectTest, OddLists) {
  Events events("M+");
  void* const single = events.m_pointers[0];
  EXPECT_EQ(WaitForSingleObject(nullptr, 0), kWaitFailed);
  EXPECT_EQ(WaitForMultipleObjects(0, events.m_pointers.data(), false, 0), kWaitFailed);
  EXPECT_EQ(WaitForMultipleObjects(1, nullptr, false, kWaitForever), kWaitFailed);
  events.m_pointers = {single, single};
  EXPECT_EQ(events.Wait(true, kWaitForever), 0u);
  events.m_pointers = {single, nullptr};
  EXPECT_EQ(events.Wait(false, kWaitForever), kWaitFailed);
}

}  // namespace
}  // namespace QvApi
