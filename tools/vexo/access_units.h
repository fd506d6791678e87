// SPDX-License-Identifier: Apache-2.0
//
// Where the frames of compressed video lie in a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vexo {

using Bytes = std::span<const uint8_t>;

struct AccessUnit {
  size_t offset;
  size_t size;
};

// Of a raw stream of H.264, HEVC, MPEG-4 or H.263, by its media type. Nothing
// when it does not begin with a start code or has no picture.
std::vector<AccessUnit> split_stream(int32_t type, Bytes stream);

bool is_ivf(Bytes file);
int32_t ivf_fourcc(Bytes file);
// False when the file ends within a frame or a header.
bool split_ivf(Bytes file, std::vector<AccessUnit> *units);

}  // namespace vexo
