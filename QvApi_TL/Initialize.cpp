// SPDX-License-Identifier: MIT
#include "QvSDKCommon/QvInitialize.h"

#include <Base/GCException.h>

#include <atomic>
#include <cstddef>

namespace QvApi {
namespace {

constinit std::atomic<std::size_t> g_initializations{0};

}  // namespace

void QvApiInitialize() { g_initializations.fetch_add(1); }

void QvApiTerminate() {
  // A plain decrement could pass below zero for a moment, which another thread would take for
  // initialised.
  std::size_t count = g_initializations.load();
  do {
    if (count == 0) throw RUNTIME_EXCEPTION("QvApi is not initialized.");
  } while (!g_initializations.compare_exchange_weak(count, count - 1));
}

void CheckQvApiInitialized() {
  if (g_initializations.load() == 0) throw RUNTIME_EXCEPTION("QvApi is not initialized.");
}

}  // namespace QvApi
