// SPDX-License-Identifier: Apache-2.0
// Memory between two inaccessible pages: one byte read or written beyond it
// ends the test.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace lox_test {

class Pages {
 public:
  Pages() = default;
  Pages(Pages &&other) noexcept { *this = std::move(other); }
  Pages &operator=(Pages &&other) noexcept {
    std::swap(begin_, other.begin_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~Pages() { unmap(); }

  // Room for `size` bytes. Pages are kept where they are enough: emulated page
  // faults are slow.
  void reserve(size_t size) {
    if (size <= size_) return;
    unmap();
    size_ = (size + page() - 1) / page() * page();
    void *mapping = mmap(nullptr, size_ + 2 * page(), PROT_NONE,
                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) std::abort();
    begin_ = static_cast<uint8_t *>(mapping) + page();
    if (mprotect(begin_, size_, PROT_READ | PROT_WRITE) != 0) std::abort();
  }
  uint8_t *begin() const { return begin_; }
  uint8_t *end() const { return begin_ + size_; }

 private:
  static size_t page() {
    static const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return size;
  }
  void unmap() {
    if (begin_ != nullptr) munmap(begin_ - page(), size_ + 2 * page());
  }

  uint8_t *begin_ = nullptr;
  size_t size_ = 0;
};

}  // namespace lox_test
