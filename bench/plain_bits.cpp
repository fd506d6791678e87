// SPDX-License-Identifier: Apache-2.0
#include "bench/plain_bits.h"

namespace bench {

uint32_t plain_bits_read(PlainBits<BitOrder::kMsb> *reader, int32_t n) {
  return reader->read(n);
}

uint32_t plain_bits_read(PlainBits<BitOrder::kLsb> *reader, int32_t n) {
  return reader->read(n);
}

}  // namespace bench
