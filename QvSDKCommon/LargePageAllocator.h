// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <new>

namespace QvApi {

/// Memory for large arrays that are walked from end to end again and again: asks the system for
/// pages of 2 MiB, since to find one of 4 KiB after the other is a good part of such a walk.
template <class T>
struct LargePageAllocator {
  using value_type = T;

  LargePageAllocator() = default;
  template <class U>
  LargePageAllocator(const LargePageAllocator<U>&) {}

  T* allocate(std::size_t count) {
    const std::size_t size = count * sizeof(T);
    void* memory = ::operator new(size, Alignment(size));
#ifdef MADV_HUGEPAGE
    if (size >= kLargePage) madvise(memory, size, MADV_HUGEPAGE);  // may be in vain
#endif
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t count) {
    ::operator delete(memory, Alignment(count * sizeof(T)));
  }

  template <class U>
  bool operator==(const LargePageAllocator<U>&) const {
    return true;
  }

 private:
  static constexpr std::size_t kLargePage = std::size_t{2} << 20;
  static constexpr std::size_t kCacheLine = 64;

  static std::align_val_t Alignment(std::size_t size) {
    return std::align_val_t{size >= kLargePage ? kLargePage : kCacheLine};
  }
};

}  // namespace QvApi
