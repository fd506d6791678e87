// SPDX-License-Identifier: Apache-2.0
// The aligned allocator: where its blocks lie, and when it refuses.
#include <malloc.h>
#include <orumlox/common.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "support/random.h"

namespace lox_test {
namespace {

struct Allocator {
  const char* name;
  void* (*allocate)(uint32_t);
  void (*release)(void*);
};

class AlignedBlock : public SeededTest,
                     public testing::WithParamInterface<Allocator> {};

TEST_P(AlignedBlock, LiesInAHeapBlockWhoseAddressPrecedesIt) {
  struct Block {
    uint8_t* address;
    uint32_t size;
    uint8_t tag;
  };
  std::vector<Block> blocks;
  for (int i = 0; i < 200; ++i) {
    // All small sizes, zero first, and then larger ones.
    const uint32_t size =
        i < 100 ? static_cast<uint32_t>(i)
                : static_cast<uint32_t>(random.between(100, 100000));
    auto* block = static_cast<uint8_t*>(GetParam().allocate(size));
    ASSERT_NE(block, nullptr) << size;
    const auto address = reinterpret_cast<uintptr_t>(block);
    EXPECT_EQ(address % 32, 0u) << size;

    void* raw = nullptr;
    std::memcpy(&raw, block - sizeof(raw), sizeof(raw));
    // The first multiple of 32 at least 4 bytes into the heap's block.
    EXPECT_EQ(address, (reinterpret_cast<uintptr_t>(raw) + 35) / 32 * 32)
        << size;
    EXPECT_GE(malloc_usable_size(raw), size_t{size} + 36);
    const auto tag = static_cast<uint8_t>(i + 1);
    std::fill_n(block, size, tag);
    blocks.push_back({block, size, tag});
  }
  for (const Block& b : blocks) {
    EXPECT_EQ(std::count(b.address, b.address + b.size, b.tag),
              static_cast<ptrdiff_t>(b.size));
    GetParam().release(b.address);
  }
}

TEST_P(AlignedBlock, IsRefusedWhenItsSizeWraps) {
  for (uint32_t size = UINT32_MAX - 35; size != 0; ++size) {
    EXPECT_EQ(GetParam().allocate(size), nullptr) << size;
  }
}

TEST_P(AlignedBlock, OfTheLargestSizeIsUpToTheHeap) {
  // A 64-bit heap has room for it, a 32-bit one refuses it.
  volatile size_t whole = UINT32_MAX;
  void* const probe = std::malloc(whole);
  const bool granted = probe != nullptr;
  std::free(probe);
  void* const block = GetParam().allocate(UINT32_MAX - 36);
  EXPECT_EQ(block != nullptr, granted);
  GetParam().release(block);
}

TEST_P(AlignedBlock, NullIsFreedToo) { GetParam().release(nullptr); }

INSTANTIATE_TEST_SUITE_P(
    , AlignedBlock,
    testing::Values(Allocator{"plain", mlox_malloc_align32, mlox_mfree_align32},
                    Allocator{"fast", mlox_malloc_fast_align32,
                              mlox_mfree_fast_align32}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace lox_test
