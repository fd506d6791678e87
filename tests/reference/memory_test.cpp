// SPDX-License-Identifier: Apache-2.0
// The aligned allocator: where its blocks lie, and when it refuses.
#include <gtest/gtest.h>
#include <malloc.h>
#include <orumlox/common.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "support/generator.h"

namespace lox_test {
namespace {

struct Allocator {
  const char *name;
  void *(*allocate)(uint32_t);
  void (*release)(void *);
};

class AlignedBlock : public testing::Test,
                     public testing::WithParamInterface<Allocator> {};

TEST_P(AlignedBlock, LiesInAHeapBlockWhoseAddressPrecedesIt) {
  Random random(1);
  std::vector<uint8_t *> blocks;
  for (int i = 0; i < 200; ++i) {
    // All small sizes, zero first, and then larger ones.
    const int32_t size = i < 100 ? i : random.between(100, 100000);
    auto *block = static_cast<uint8_t *>(GetParam().allocate(size));
    ASSERT_NE(block, nullptr) << size;
    void *raw = nullptr;
    std::memcpy(&raw, block - sizeof(raw), sizeof(raw));
    // The first multiple of 32 at least 4 bytes into the heap's block.
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block),
              (reinterpret_cast<uintptr_t>(raw) + 35) / 32 * 32);
    EXPECT_GE(malloc_usable_size(raw), size_t{1} * size + 36);
    blocks.push_back(block);
    std::memset(block, 0xFF, size);
  }
  for (uint8_t *block : blocks) GetParam().release(block);
  GetParam().release(nullptr);
}

TEST_P(AlignedBlock, IsRefusedWhenItsSizeWraps) {
  for (uint32_t size = UINT32_MAX - 35; size != 0; ++size) {
    EXPECT_EQ(GetParam().allocate(size), nullptr) << size;
  }
  // The largest size that does not is up to the heap: a 64-bit one has room.
  // Volatile, or the compiler refuses the size, or leaves the allocation out
  // and takes it for granted.
  volatile size_t whole = UINT32_MAX;
  void *volatile const probe = std::malloc(whole);
  const bool granted = probe != nullptr;
  std::free(probe);
  void *const block = GetParam().allocate(UINT32_MAX - 36);
  EXPECT_EQ(block != nullptr, granted);
  GetParam().release(block);
}

INSTANTIATE_TEST_SUITE_P(
    , AlignedBlock,
    testing::Values(Allocator{"plain", mlox_malloc_align32, mlox_mfree_align32},
                    Allocator{"fast", mlox_malloc_fast_align32,
                              mlox_mfree_fast_align32}),
    [](const auto &instance) { return instance.param.name; });

}  // namespace
}  // namespace lox_test
