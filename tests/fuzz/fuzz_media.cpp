// SPDX-License-Identifier: Apache-2.0
// Bit readers, the writer and the key-frame detector on inputs that libFuzzer
// makes up. Longer than the test does: fuzz_media -max_total_time=3600 FOLDER
#include <orumlox/bitstream.h>
#include <orumlox/key_frame.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

static void require(bool condition) {
  if (!condition) std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const size_t calls = std::min<size_t>(size, 24);
  const bool le = calls != 0 && data[0] % 2 != 0;
  const auto rest = static_cast<int32_t>(size - calls);
  mlox_bsr r;
  mlox_bsr_init(&r, data + calls, rest, le ? mlox_bsr_le_flush : nullptr);
  uint8_t written[16 + 4];
  mlox_bsw w;
  mlox_bsw_init(&w, written, 16, nullptr);
  for (size_t i = 0; i < calls; ++i) {
    const int32_t n = data[i] / 6 % 41;
    const int32_t held = r.bits;
    uint8_t bit = 2;
    if (data[i] % 6 == 0) {
      (le ? mlox_bsr_le_read : mlox_bsr_read)(&r, n);
    } else if (data[i] % 6 == 1) {
      (le ? mlox_bsr_le_skip_to_align8 : mlox_bsr_skip_to_align8)(&r);
      require(r.bits == held - held % 8);
    } else if (data[i] % 6 == 2) {
      const int32_t left =
          le ? mlox_bsr_le_skip(&r, std::min(n, held)) : mlox_bsr_skip(&r, n);
      require(left == r.bits || (left == -1 && r.bits == 0));
    } else if (data[i] % 6 == 3) {
      const int32_t status = w.current <= w.last ? 0 : -1;
      require(mlox_bsw_write(&w, r.cache, n) == status);
    } else if (data[i] % 6 == 4 && !le) {
      mlox_bsr_skip_peek(&r, n % 8, n % 32 + 1);
    } else if (!le) {
      require((mlox_bsr_read1_value(&r, &bit) == 0) == (bit < 2));
    }
    require(r.bits >= 0 && r.bits <= 32 && r.next <= r.last + 1);
    const uint64_t cache = r.cache;
    require((le ? cache >> r.bits : cache << r.bits & UINT32_MAX) == 0);
    require(w.free >= 1 && w.free <= 8 && w.current <= w.last + 5);
  }
  for (uint32_t type = 100; type < 125; ++type) {
    require(mlox_is_vkeyfrm(type, data + calls, rest) >> 1 == 0);
  }
  return 0;
}
