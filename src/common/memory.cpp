// SPDX-License-Identifier: Apache-2.0
//
// Blocks aligned to 32 bytes. The word below a block holds the address that the
// heap gave.
#include "common/memory.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "orumlox/common.h"

namespace {

constexpr uint32_t kAlignment = 32;
// Room to move the start up to a multiple of 32 that leaves 4 bytes below.
constexpr uint32_t kSlack = kAlignment + 4;

// The word below holds a pointer: the heap's own alignment leaves room for one
// of 8 bytes too.
static_assert(alignof(std::max_align_t) >= sizeof(void *));

void *allocate_aligned(uint32_t size) {
  if (size > UINT32_MAX - kSlack) return nullptr;
  void *const raw = std::malloc(size_t{size} + kSlack);
  if (raw == nullptr) return nullptr;
  const uintptr_t start = reinterpret_cast<uintptr_t>(raw);
  const uintptr_t aligned = (start + kSlack - 1) & ~uintptr_t{kAlignment - 1};
  char *const block = static_cast<char *>(raw) + (aligned - start);
  std::memcpy(block - sizeof raw, &raw, sizeof raw);
  return block;
}

void release(void *block) {
  if (block == nullptr) return;
  void *raw;
  std::memcpy(&raw, static_cast<char *>(block) - sizeof raw, sizeof raw);
  std::free(raw);
}

}  // namespace

void *lox::allocate(int64_t count, uint32_t size) {
  if (count < 0 || count > UINT32_MAX) return nullptr;
  const uint64_t bytes = static_cast<uint64_t>(count) * size;
  if (bytes > UINT32_MAX) return nullptr;
  return mlox_malloc_align32(static_cast<uint32_t>(bytes));
}

extern "C" {

void *mlox_malloc_align32(uint32_t size) { return allocate_aligned(size); }
void mlox_mfree_align32(void *block) { release(block); }
void *mlox_malloc_fast_align32(uint32_t size) { return allocate_aligned(size); }
void mlox_mfree_fast_align32(void *block) { release(block); }

}  // extern "C"
