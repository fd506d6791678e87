// SPDX-License-Identifier: Apache-2.0
#include "bench/frames.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

#include "bench/workloads.h"

namespace bench {

size_t last_level_cache_bytes() {
  size_t largest = 0;
  for (int index = 0; index < 10; ++index) {
    std::ifstream file("/sys/devices/system/cpu/cpu0/cache/index" +
                       std::to_string(index) + "/size");
    size_t kib = 0;
    if (file >> kib) largest = std::max(largest, kib << 10);
  }
#if defined(_SC_LEVEL3_CACHE_SIZE)
  if (largest == 0) {
    const long size = sysconf(_SC_LEVEL3_CACHE_SIZE);
    if (size > 0) largest = static_cast<size_t>(size);
  }
#endif
  return largest;
}

size_t ring_bytes() {
  return std::max(2 * last_level_cache_bytes(), size_t{96} << 20);
}

void Block::Free::operator()(uint8_t *p) const { std::free(p); }

Block::Block(size_t size)
    : data_(static_cast<uint8_t *>(
          std::aligned_alloc(64, (size + 63) / 64 * 64))) {
  if (!data_) throw std::bad_alloc();
  fill_noise(data_.get(), size);
}

}  // namespace bench
