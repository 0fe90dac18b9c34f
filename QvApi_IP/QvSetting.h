// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace QvApi {

/// The words in which a value out of range is refused.
enum class RangeWords {
  None,      ///< Any value is taken.
  Real,      ///< "... must be greater than or equal %f", "... smaller than or equal %f"
  Integer,   ///< "... equal or greater than Min", "... equal or smaller than Max"
  Selector,  ///< "... equal or greater than Min", "... smaller than Max" (Max is one more)
};

/// What is constant about a setting: the register node that shows it, its range with both ends
/// allowed, and what the message of a refusal calls the value. Made by the functions below and held
/// as a static member of the module.
template <class T>
struct SettingInfo {
  const char* node;  ///< Name of the node to invalidate after a change.
  T minimum{};
  T maximum{};
  RangeWords words = RangeWords::None;
  const char* valueName = "";
};

template <class T>
constexpr SettingInfo<T> PlainSetting(const char* node) {
  return {node};
}
template <class T = double>
constexpr SettingInfo<T> RealSetting(const char* node, T minimum, T maximum,
                                     const char* valueName = "value") {
  return {node, minimum, maximum, RangeWords::Real, valueName};
}
template <class T>
constexpr SettingInfo<T> IntegerSetting(const char* node, T minimum, T maximum,
                                        const char* valueName = "value") {
  return {node, minimum, maximum, RangeWords::Integer, valueName};
}
/// A choice from 0 to `last`.
template <class T>
constexpr SettingInfo<T> SelectorSetting(const char* node, T last, const char* valueName) {
  return {node, T{}, last, RangeWords::Selector, valueName};
}

/// Throws OutOfRangeException in the words given if `value` is not from `minimum` to `maximum`. A
/// NaN counts as below the minimum.
void CheckRange(const char* valueName, double value, double minimum, double maximum);
void CheckRange(const char* valueName, std::int64_t value, std::int64_t minimum,
                std::int64_t maximum, RangeWords words);

/// One setting of a module: a value that may be read and written from any thread, each access by
/// itself.
template <class T>
class Setting {
 public:
  using Value = T;
  static_assert(std::atomic<T>::is_always_lock_free);

  /// @param info  must outlive the setting
  Setting(const SettingInfo<T>& info, T initial) : m_info(info), m_value(initial) {}

  T Get() const { return m_value.load(std::memory_order_relaxed); }
  operator T() const { return Get(); }

  /// Stores a value without looking at its range. True if it is another one than before.
  bool Store(T value) { return Count(m_value.exchange(value, std::memory_order_relaxed) != value); }

  /// Stores a value in range. True if it is another one than before.
  /// @throws GenICam::OutOfRangeException  the value is out of range and not stored
  bool StoreChecked(T value) {
    Check(value);
    return Store(value);
  }

  /// Stores `value` if the setting is `expected`, in one step. True if it was.
  bool Replace(T expected, T value) {
    const bool isDifferent = expected != value;
    const bool isReplaced =
        m_value.compare_exchange_strong(expected, value, std::memory_order_relaxed);
    Count(isReplaced && isDifferent);
    return isReplaced;
  }

  /// @throws GenICam::OutOfRangeException  the value is out of range
  void Check(T value) const {
    switch (m_info.words) {
      case RangeWords::None:
        return;
      case RangeWords::Real:
        return CheckRange(m_info.valueName, static_cast<double>(value),
                          static_cast<double>(m_info.minimum), static_cast<double>(m_info.maximum));
      case RangeWords::Integer:
      case RangeWords::Selector:
        return CheckRange(m_info.valueName, static_cast<std::int64_t>(value),
                          static_cast<std::int64_t>(m_info.minimum),
                          static_cast<std::int64_t>(m_info.maximum), m_info.words);
    }
  }

  /// How often the value has changed. What is made from a setting and must not outlive any change,
  /// not even one that was taken back, is kept with this count; read it before the value.
  std::uint32_t Changes() const { return m_changes.load(std::memory_order_acquire); }

  const char* Node() const { return m_info.node; }

 private:
  bool Count(bool isChange) {
    if (isChange) m_changes.fetch_add(1, std::memory_order_release);
    return isChange;
  }

  const SettingInfo<T>& m_info;
  std::atomic<T> m_value;
  std::atomic<std::uint32_t> m_changes{0};
};

/// One setting for each value of a selector, from 0 to N - 1.
template <class Selector, class T, std::size_t N>
class SelectedSettings {
 public:
  using Value = T;

  /// @param selector  names the selector in refusals
  /// @param info      what all of the settings have in common
  SelectedSettings(const SettingInfo<Selector>& selector, const SettingInfo<T>& info,
                   const std::array<T, N>& initial)
      : SelectedSettings(
            selector, [&info](std::size_t) -> auto& { return info; }, initial) {}
  /// @param infoOf  gives what is constant about the setting of a value of the selector
  template <class InfoOf>
  requires std::is_invocable_v<InfoOf, std::size_t> SelectedSettings(
      const SettingInfo<Selector>& selector, InfoOf infoOf, const std::array<T, N>& initial)
      : SelectedSettings(selector, infoOf, initial, std::make_index_sequence<N>()) {}

  /// @throws GenICam::OutOfRangeException  there is no such value of the selector
  Setting<T>& At(Selector selector) { return m_settings[Index(selector)]; }
  const Setting<T>& At(Selector selector) const { return m_settings[Index(selector)]; }

 private:
  template <class InfoOf, std::size_t... i>
  SelectedSettings(const SettingInfo<Selector>& selector, InfoOf infoOf,
                   const std::array<T, N>& initial, std::index_sequence<i...>)
      : m_selector(selector), m_settings{Setting<T>(infoOf(i), initial[i])...} {}

  std::size_t Index(Selector selector) const {
    CheckRange(m_selector.valueName, static_cast<std::int64_t>(selector), 0,
               static_cast<std::int64_t>(N) - 1, RangeWords::Selector);
    return static_cast<std::size_t>(selector);
  }

  const SettingInfo<Selector>& m_selector;
  std::array<Setting<T>, N> m_settings;
};

}  // namespace QvApi
