// SPDX-License-Identifier: Apache-2.0
//
// The frames of compressed video, one by one as a stream comes in. Streams may
// be endless: no more is held than a frame and what was read ahead.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "io.h"

namespace vexo {

using Bytes = std::span<const uint8_t>;

// What is longer is refused. No level of any codec allows so large a frame.
constexpr size_t kMaxUnitMib = 64;

struct AccessUnit {
  uint64_t offset;
  // Until the next one is asked for.
  Bytes bytes;
};

class UnitReader {
 public:
  virtual ~UnitReader() = default;
  // False when there is no further frame.
  virtual bool next(AccessUnit *unit) = 0;
};

// Of a raw stream of H.264, HEVC, MPEG-4 or H.263, by its media type. It has no
// frames when it does not begin with a start code or has no picture.
std::unique_ptr<UnitReader> read_stream(ByteSource &source, int32_t type);

// Looks at the first bytes.
bool is_ivf(ByteSource &source);
// Throws Error, now or later, when the file ends within a frame or a header.
std::unique_ptr<UnitReader> read_ivf(ByteSource &source, int32_t *fourcc);

}  // namespace vexo
