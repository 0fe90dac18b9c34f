// SPDX-License-Identifier: MIT
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>

namespace QvApi::Kernels {

/// Which end of the memory borders on a page that cannot be touched.
enum class Side { Front, Back };

/// A block of memory between two inaccessible pages: a read or write outside it ends the test.
class GuardedMemory {
 public:
  explicit GuardedMemory(size_t capacity)
      : m_page(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
        m_size((capacity + m_page - 1) / m_page * m_page) {
    void* all = mmap(nullptr, m_size + 2 * m_page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED) throw std::bad_alloc();
    m_block = static_cast<char*>(all) + m_page;
    if (mprotect(m_block, m_size, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() { munmap(m_block - m_page, m_size + 2 * m_page); }

  /// `count` elements at one end of the block, over whatever was placed before.
  template <class T>
  T* Place(size_t count, Side side) {
    if (count * sizeof(T) > m_size) throw std::bad_alloc();
    return reinterpret_cast<T*>(side == Side::Front ? m_block
                                                    : m_block + m_size - count * sizeof(T));
  }

 private:
  const size_t m_page;
  const size_t m_size;
  char* m_block;
};

}  // namespace QvApi::Kernels
