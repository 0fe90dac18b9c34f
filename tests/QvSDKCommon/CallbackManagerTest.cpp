// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvCallbackManager.h"

#include <Base/GCException.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace QvApi {
namespace {

/// Writes down its calls.
class Listener : public IQvCallback {
 public:
  explicit Listener(std::vector<Listener*>* order = nullptr) : m_order(order) {}
  void OnIQvCallback(IQvCallbackParamBase* param) override {
    if (m_order) m_order->push_back(this);
    types.push_back(param->GetCallbackType());
    if (action) action();
  }
  void Destroy() override { ++destroyed; }

  std::vector<std::uint32_t> types;
  int destroyed = 0;
  std::function<void()> action;

 private:
  std::vector<Listener*>* m_order;
};

using Param = CQvCallbackParamBase<IQvCallbackParamBase>;

TEST(CallbackManager, CallsInTheOrderOfHandles) {
  std::vector<Listener*> order;
  std::vector<Listener> listeners(20, Listener(&order));
  CQvCallbackManager manager;
  Param param(7);
  manager.RunCallback(&param);
  std::vector<std::pair<void*, Listener*>> handles;
  for (auto& listener : listeners)
    handles.emplace_back(manager.RegisterCallback(&listener), &listener);
  manager.RunCallback(&param);
  std::sort(handles.begin(), handles.end(),
            [](auto& a, auto& b) { return std::less<void*>()(a.first, b.first); });
  ASSERT_EQ(order.size(), handles.size());
  for (std::size_t i = 0; i < order.size(); ++i) EXPECT_EQ(order[i], handles[i].second);
  EXPECT_EQ(listeners[0].types, std::vector<std::uint32_t>{7});
}

TEST(CallbackManager, OneListenerTwice) {
  Listener listener;
  {
    CQvCallbackManager manager;
    Param param(1);
    void* first = manager.RegisterCallback(&listener);
    void* second = manager.RegisterCallback(&listener);
    EXPECT_NE(first, second);
    manager.RunCallback(&param);
    EXPECT_EQ(listener.types.size(), 2u);
    manager.DeregisterCallback(first);
    EXPECT_EQ(listener.destroyed, 1);
    manager.RunCallback(&param);
    EXPECT_EQ(listener.types.size(), 3u);
  }
  EXPECT_EQ(listener.destroyed, 2);
}

TEST(CallbackManager, UnknownHandles) {
  Listener listener;
  CQvCallbackManager manager;
  void* handle = manager.RegisterCallback(&listener);
  void* removed = manager.RegisterCallback(&listener);
  manager.DeregisterCallback(removed);
  for (void* wrong : {removed, static_cast<void*>(nullptr), static_cast<void*>(&listener)}) {
    try {
      manager.DeregisterCallback(wrong);
      ADD_FAILURE();
    } catch (const GenICam::InvalidArgumentException& e) {
      EXPECT_STREQ(e.GetDescription(), "hCallback is invalid.");
    }
  }
  EXPECT_THROW(manager.RegisterCallback(nullptr), GenICam::InvalidArgumentException);
  Param param(1);
  manager.RunCallback(&param);
  EXPECT_EQ(listener.types.size(), 1u);
  manager.DeregisterCallback(handle);
}

TEST(CallbackManager, AnExceptionEndsTheRoundAndFreesTheLock) {
  std::vector<Listener> listeners(3);
  CQvCallbackManager manager;
  std::vector<void*> handles;
  for (auto& listener : listeners) handles.push_back(manager.RegisterCallback(&listener));
  const auto lowest = std::min_element(handles.begin(), handles.end(), std::less<void*>());
  Listener& first = listeners[static_cast<std::size_t>(lowest - handles.begin())];
  first.action = [] { throw std::runtime_error("no"); };
  Param param(1);
  EXPECT_THROW(manager.RunCallback(&param), std::runtime_error);
  std::size_t calls = 0;
  for (const auto& listener : listeners) calls += listener.types.size();
  EXPECT_EQ(calls, 1u);
  std::thread([&] { manager.DeregisterCallback(handles[0]); }).join();
}

TEST(CallbackManager, ListenerThatEndsItself) {
  Listener leaving;
  Listener staying;
  CQvCallbackManager manager;
  void* handle = manager.RegisterCallback(&leaving);
  manager.RegisterCallback(&staying);
  leaving.action = [&] { manager.DeregisterCallback(handle); };
  Param param(1);
  manager.RunCallback(&param);
  manager.RunCallback(&param);
  EXPECT_EQ(leaving.types.size(), 1u);
  EXPECT_EQ(leaving.destroyed, 1);
  EXPECT_EQ(staying.types.size(), 2u);
}

TEST(CallbackManager, ManyThreads) {
  CQvCallbackManager manager;
  std::atomic<bool> stop{false};
  std::thread runner([&] {
    Param param(1);
    while (!stop) manager.RunCallback(&param);
  });
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        Listener listener;
        manager.DeregisterCallback(manager.RegisterCallback(&listener));
        EXPECT_EQ(listener.destroyed, 1);
      }
    });
  for (auto& thread : threads) thread.join();
  stop = true;
  runner.join();
}

}  // namespace
}  // namespace QvApi
