// SPDX-License-Identifier: Apache-2.0
// Memory that touches an inaccessible page, so that one byte read or written
// beyond it ends the test, and whose other neighbours are watched.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/pages.h"

namespace lox_test {

// Which end of the memory lies at the inaccessible page. With kStart every
// second buffer lies a byte beyond it: rows may begin anywhere, and processors
// check what loads and stores promise of their addresses. With kAligned none
// does, for stores that want it so.
enum class Edge { kEnd, kStart, kAligned };

class GuardedBuffer {
 public:
  // Gives the buffer another size and place. It and the memory on its open
  // side are filled with canaries: bytes that differ from place to place, so
  // that neither a missing write nor a shifted one goes unseen.
  void reset(size_t size, Edge edge = Edge::kEnd);

  uint8_t *data() const { return data_; }
  size_t size() const { return size_; }
  std::vector<uint8_t> copy() const { return {data_, data_ + size_}; }

  // Whether the memory beside it still holds the canaries.
  bool margin_intact() const;

 private:
  uint8_t *margin() const;

  Pages pages_;
  uint8_t *data_ = nullptr;
  size_t size_ = 0;
  Edge edge_ = Edge::kEnd;
  size_t gap_ = 0;  // between the page before and the buffer, with kStart
};

// Whether the buffer holds `expected` and its margin is untouched.
testing::AssertionResult holds(const GuardedBuffer &buffer,
                               const std::vector<uint8_t> &expected);

}  // namespace lox_test
