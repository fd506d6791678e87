// SPDX-License-Identifier: Apache-2.0
// The aligned allocator: where its blocks lie, and when it refuses.
#include <gtest/gtest.h>
#include <malloc.h>
#include <orumlox/apex.h>
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

// Sizes whose scratch memory does not fit 32 bits, without a plane to touch.
TEST(ScratchOfFilters, ThatIsTooLargeIsRefused) {
  for (const int32_t format :
       {VEXO_FMT_YUV400, VEXO_FMT_NV12, VEXO_FMT_RGB888, VEXO_FMT_RGBA8888}) {
    for (const int32_t smaller : {1, 2, 63}) {
      vexo_img large = {};
      for (int p = 0; p < 2; ++p) large.width[p] = large.height[p] = INT32_MAX;
      large.format = format;
      large.mode = VEXO_MODE_ALPHA;
      vexo_img small = large;
      small.width[0] /= smaller;
      EXPECT_EQ(vexo_rsz_apex_c(&large, &small), VEXO_ERR_MEMORY);
      EXPECT_EQ(vexo_rsz_apex_c(&small, &large), VEXO_ERR_MEMORY);
    }
  }
}

}  // namespace
}  // namespace lox_test
