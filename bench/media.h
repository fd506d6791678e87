// SPDX-License-Identifier: Apache-2.0
//
// Bit fields and scans for key frames, by this library and by plain code.
#pragma once

#include "workloads.h"

namespace bench {

inline constexpr size_t kMediaBytes = size_t{1} << 20;

// This library's, or a plain one: inlined into the loop, or called as this
// library is.
enum class BitReader { kLibrary, kInlined, kCalled };

// As many as the data has.
size_t count_fields(int32_t fields);

// Reads all of them; the result depends on every value and on their order.
uint32_t read_fields(int32_t fields, BitReader reader, const uint8_t *data);

// The rule of the library's scan, byte by byte, but for extended headers.
int32_t plain_is_key_frame(int32_t type, const uint8_t *data, int32_t length);

// Random bits; of a scan without anything at which it ends, or with a key frame
// as the last bytes.
void fill_media(const Workload &workload, uint8_t *bytes, bool with_key);

}  // namespace bench
