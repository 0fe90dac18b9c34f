// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "GuardedMemory.h"

namespace QvApi::Kernels {

/// A line of samples inside memory that shows when a kernel leaves it: the page behind it is
/// inaccessible, and the bytes before and behind it hold a canary. `slack` samples separate the
/// line's end from that page: 0 makes any access past the end fail at once, other values move the
/// line through all alignments.
template <class T>
class GuardedLine {
 public:
  GuardedLine(size_t count, size_t slack)
      : m_memory((kMargin + count + slack) * sizeof(T)),
        m_all(m_memory.Place<T>(kMargin + count + slack, Side::Back), kMargin + count + slack),
        m_line(m_all.subspan(kMargin, count)) {
    std::ranges::fill(m_all, kCanary);
  }

  T* data() { return m_line.data(); }
  std::span<T> samples() { return m_line; }

  void FillRandom(uint32_t seed) {
    std::minstd_rand random(seed + 1);
    for (T& sample : m_line) sample = static_cast<T>(random() >> 7);
  }

  bool SurroundingsIntact() const {
    const auto isCanary = [](T sample) { return sample == kCanary; };
    return std::ranges::all_of(m_all.first(kMargin), isCanary) &&
           std::ranges::all_of(m_all.subspan(kMargin + m_line.size()), isCanary);
  }

 private:
  static constexpr T kCanary = static_cast<T>(0xC5C5);
  static constexpr size_t kMargin = 64;

  GuardedMemory m_memory;
  std::span<T> m_all;
  std::span<T> m_line;
};

/// A guarded line of random samples for the vector form of a kernel, and the same samples for its
/// scalar form.
template <class T>
class TwinLine {
 public:
  /// Lines of different seeds have different alignments, but none has slack if `slack` is 0.
  TwinLine(size_t count, size_t slack, uint32_t seed) : m_guarded(count, slack * seed % 64) {
    m_guarded.FillRandom(seed);
    m_copy.assign(m_guarded.samples().begin(), m_guarded.samples().end());
  }
  T* vector() { return m_guarded.data(); }
  T* scalar() { return m_copy.data(); }

  /// Changes the random samples by `change(x, sample)` beforehand.
  template <class Change>
  void Shape(Change change) {
    for (size_t x = 0; x < m_copy.size(); ++x) {
      change(x, m_copy[x]);
      m_guarded.data()[x] = m_copy[x];
    }
  }

  /// Both forms made the same of the line, and the vectors touched nothing beside it.
  void Check() {
    const auto [made, expected] = std::ranges::mismatch(m_guarded.samples(), m_copy);
    ASSERT_TRUE(expected == m_copy.end()) << "from sample " << expected - m_copy.begin() << " on";
    ASSERT_TRUE(m_guarded.SurroundingsIntact());
  }

 private:
  GuardedLine<T> m_guarded;
  std::vector<T> m_copy;
};

}  // namespace QvApi::Kernels
