// SPDX-License-Identifier: Apache-2.0
// Pages: one inaccessible, the usable ones, one inaccessible.
#include "support/guarded_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace lox_test {
namespace {

// How much of the open side is watched: more than any vector step.
constexpr size_t kMargin = 256;

size_t page_size() {
  static const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

const std::array<uint8_t, 4096>& pattern() {
  static const std::array<uint8_t, 4096> bytes = [] {
    std::array<uint8_t, 4096> b{};
    uint32_t x = 0x9E3779B9;
    for (uint8_t& v : b) {
      x = x * 1664525 + 1013904223;
      v = static_cast<uint8_t>(x >> 24);
    }
    return b;
  }();
  return bytes;
}

bool is_canary(const uint8_t* data, size_t size) {
  const auto& bytes = pattern();
  for (size_t i = 0; i < size; i += bytes.size()) {
    if (std::memcmp(data + i, bytes.data(), std::min(bytes.size(), size - i)) !=
        0) {
      return false;
    }
  }
  return true;
}

}  // namespace

void fill_canary(uint8_t* data, size_t size) {
  const auto& bytes = pattern();
  for (size_t i = 0; i < size; i += bytes.size()) {
    std::memcpy(data + i, bytes.data(), std::min(bytes.size(), size - i));
  }
}

std::vector<uint8_t> canary(size_t size) {
  std::vector<uint8_t> bytes(size);
  fill_canary(bytes.data(), size);
  return bytes;
}

GuardedBuffer::~GuardedBuffer() { release(); }

void GuardedBuffer::release() {
  if (mapping_ != nullptr) munmap(mapping_, mapped_);
  mapping_ = nullptr;
}

void GuardedBuffer::reset(size_t size, Edge edge) {
  const size_t page = page_size();
  const size_t usable = (size + kMargin + page - 1) / page * page;
  if (mapping_ == nullptr || usable + 2 * page > mapped_) {
    release();
    mapped_ = usable + 2 * page;
    void* p =
        mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) std::abort();
    mapping_ = static_cast<uint8_t*>(p);
    if (mprotect(mapping_ + page, usable, PROT_READ | PROT_WRITE) != 0) {
      std::abort();
    }
  }
  uint8_t* const begin = mapping_ + page;
  uint8_t* const end = mapping_ + mapped_ - page;
  size_ = size;
  edge_ = edge;
  data_ = edge == Edge::kEnd ? end - size : begin;
  fill_canary(data_, size_);
  fill_canary(margin_data(), kMargin);
}

uint8_t* GuardedBuffer::margin_data() const {
  return edge_ == Edge::kEnd ? data_ - kMargin : data_ + size_;
}

bool GuardedBuffer::margin_intact() const {
  return is_canary(margin_data(), kMargin);
}

testing::AssertionResult holds(const GuardedBuffer& buffer,
                               const std::vector<uint8_t>& expected,
                               size_t stride) {
  if (buffer.size() != expected.size()) {
    return testing::AssertionFailure()
           << "size " << buffer.size() << ", expected " << expected.size();
  }
  const uint8_t* data = buffer.data();
  if (!expected.empty() &&
      std::memcmp(data, expected.data(), expected.size()) != 0) {
    size_t i = 0;
    while (data[i] == expected[i]) ++i;
    testing::AssertionResult result = testing::AssertionFailure();
    result << "byte " << i << " of " << expected.size();
    if (stride != 0) {
      result << " (row " << i / stride << ", byte " << i % stride << ")";
    }
    return result << " is " << int{data[i]} << ", expected "
                  << int{expected[i]};
  }
  if (!buffer.margin_intact()) {
    return testing::AssertionFailure() << "written outside the buffer";
  }
  return testing::AssertionSuccess();
}

}  // namespace lox_test
