// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "QvApi_IP/QvSetting.h"

namespace QvApi {

/// What is special about a register.
enum RegisterRules : unsigned {
  kPlain = 0,
  kChecked = 1,    ///< A write goes through the range check of the typed setter.
  kNotZero = 2,    ///< A bool is set by any value but 0; without this by exactly 1.
  kFullRead = 4,   ///< A read of fewer bytes throws instead of being cut short.
  kFullWrite = 8,  ///< A write of fewer bytes throws instead of being skipped.
  kFullLength = kFullRead | kFullWrite,
};

/// One register of a module: where it stands, how long it is and what serves it. Registers are
/// little-endian. Writing checks no range and invalidates no node, since a node was the writer.
template <class Module>
struct Register {
  std::int64_t address;
  std::int64_t size;
  void (*read)(const Module& module, unsigned char* bytes) = nullptr;   ///< Null: write-only.
  void (*write)(Module& module, const unsigned char* bytes) = nullptr;  ///< Null: read-only.
  unsigned rules = kPlain;
};

namespace Registers {

static_assert(std::endian::native == std::endian::little);

/// What a setting is in a register: size_t and double take 8 bytes, all else 4.
template <class T>
using Word = std::conditional_t<sizeof(T) == 8, T, std::uint32_t>;

template <class T>
void Encode(T value, unsigned char* bytes) {
  const auto word = static_cast<Word<T>>(value);
  std::memcpy(bytes, &word, sizeof(word));
}

template <class T, unsigned rules>
T Decode(const unsigned char* bytes) {
  Word<T> word;
  std::memcpy(&word, bytes, sizeof(word));
  if constexpr (std::is_same_v<T, bool>)
    return (rules & kNotZero) != 0 ? word != 0 : word == 1;
  else
    return static_cast<T>(word);
}

template <auto member>
struct MemberOf;
template <class Module, class T, Setting<T> Module::*member>
struct MemberOf<member> {
  using ModuleType = Module;
  using Value = T;
};

template <auto member>
struct SelectedMember;
template <class Module, class Settings, Settings Module::*member>
struct SelectedMember<member> {
  using Value = typename Settings::Value;
};

/// A register that is a setting of the module.
template <auto setting, unsigned rules = kPlain>
constexpr auto Value(std::int64_t address) {
  using Module = typename MemberOf<setting>::ModuleType;
  using T = typename MemberOf<setting>::Value;
  return Register<Module>{
      .address = address,
      .size = sizeof(Word<T>),
      .read = [](const Module& module,
                 unsigned char* bytes) { Encode<T>((module.*setting).Get(), bytes); },
      .write =
          [](Module& module, const unsigned char* bytes) {
            const T value = Decode<T, rules>(bytes);
            if constexpr ((rules & kChecked) != 0)
              (module.*setting).StoreChecked(value);
            else
              (module.*setting).Store(value);
          },
      .rules = rules};
}

/// The register of a selector, as long as a size_t; the low half counts.
template <auto setting>
constexpr auto Selector(std::int64_t address) {
  using Module = typename MemberOf<setting>::ModuleType;
  using T = typename MemberOf<setting>::Value;
  return Register<Module>{
      .address = address,
      .size = sizeof(std::size_t),
      .read = [](const Module& module,
                 unsigned char* bytes) { Encode<std::size_t>((module.*setting).Get(), bytes); },
      .write =
          [](Module& module, const unsigned char* bytes) {
            (module.*setting).Store(Decode<T, kPlain>(bytes));
          }};
}

/// A register that is the setting of what is selected. Access throws as the typed operations do if
/// nothing is selected, which only a raw write to the selector's register can bring about.
template <auto settings, auto selector>
constexpr auto Selected(std::int64_t address) {
  using Module = typename MemberOf<selector>::ModuleType;
  using T = typename SelectedMember<settings>::Value;
  return Register<Module>{
      .address = address,
      .size = sizeof(Word<T>),
      .read =
          [](const Module& module, unsigned char* bytes) {
            Encode<T>((module.*settings).At(module.*selector).Get(), bytes);
          },
      .write =
          [](Module& module, const unsigned char* bytes) {
            (module.*settings).At(module.*selector).Store(Decode<T, kPlain>(bytes));
          }};
}

/// Read-only registers for the limits of a setting, and for any other constant.
template <class Module, auto value>
constexpr auto Constant(std::int64_t address) {
  using T = std::remove_cv_t<decltype(value)>;
  return Register<Module>{
      .address = address, .size = sizeof(Word<T>), .read = [](const Module&, unsigned char* bytes) {
        Encode<T>(value, bytes);
      }};
}
template <class Module, const auto& info>
constexpr auto Minimum(std::int64_t address) {
  return Constant<Module, info.minimum>(address);
}
template <class Module, const auto& info>
constexpr auto Maximum(std::int64_t address) {
  return Constant<Module, info.maximum>(address);
}

/// Throws OutOfRangeException if fewer than `size` bytes are wanted.
void CheckLength(std::int64_t length, std::int64_t size);

/// Serves one access of a port from a table of registers. On entry `*length` is the number of bytes
/// still wanted, on return the number taken. A read of fewer bytes than the register has gives
/// those that fit; a write of fewer is not served. False if nothing was served.
template <class Module>
bool Read(std::span<const Register<Module>> table, const Module& module, unsigned char* buffer,
          std::int64_t address, std::int64_t* length) {
  for (const Register<Module>& row : table) {
    if (row.address != address || !row.read) continue;
    if ((row.rules & kFullRead) != 0) CheckLength(*length, row.size);
    std::array<unsigned char, 8> bytes{};
    row.read(module, bytes.data());
    *length = std::clamp<std::int64_t>(*length, 0, row.size);
    std::memcpy(buffer, bytes.data(), static_cast<std::size_t>(*length));
    return true;
  }
  return false;
}

template <class Module>
bool Write(std::span<const Register<Module>> table, Module& module, const unsigned char* buffer,
           std::int64_t address, std::int64_t* length) {
  for (const Register<Module>& row : table) {
    if (row.address != address || !row.write) continue;
    if ((row.rules & kFullWrite) != 0) CheckLength(*length, row.size);
    if (*length < row.size) return false;
    row.write(module, buffer);
    *length = row.size;
    return true;
  }
  return false;
}

}  // namespace Registers
}  // namespace QvApi
