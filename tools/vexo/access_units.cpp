// SPDX-License-Identifier: Apache-2.0
//
// Splits raw streams at the start codes of their pictures, and IVF by the sizes
// that it states. Reads the few header bits that this takes, no more.
#include "access_units.h"

#include <algorithm>
#include <limits>

#include "orumlox/bitstream.h"
#include "orumlox/media_type.h"

namespace vexo {
namespace {

// What stands at two zero bytes.
enum class Role {
  kNothing,  // nothing that frames are told apart by
  kHeader,   // belongs to the picture that follows
  kPicture,  // begins a picture
  kSlice     // belongs to the picture before it, unless headers are between
};

mlox_bsr reader_of(Bytes bytes, mlox_bsr_refill *refill) {
  mlox_bsr reader;
  mlox_bsr_init(&reader, bytes.data(),
                static_cast<int32_t>(std::min<size_t>(bytes.size(), 64)),
                refill);
  return reader;
}

bool is_within(uint32_t value, uint32_t first, uint32_t last) {
  return value >= first && value <= last;
}

Role h264_role(Bytes bytes) {
  mlox_bsr reader = reader_of(bytes, mlox_bsr_flush);
  if (mlox_bsr_read(&reader, 24) != 1) return Role::kNothing;
  mlox_bsr_skip(&reader, 3);
  const uint32_t type = mlox_bsr_read(&reader, 5);
  // Slices, of which 2 is the first part of a partitioned one: they begin with
  // the number of their first macroblock, whose code for 0 is a single one.
  if (type == 1 || type == 2 || type == 5) {
    return mlox_bsr_read1(&reader) == 1 ? Role::kPicture : Role::kSlice;
  }
  const bool header = is_within(type, 6, 9) || is_within(type, 14, 18);
  return header ? Role::kHeader : Role::kNothing;
}

Role hevc_role(Bytes bytes) {
  mlox_bsr reader = reader_of(bytes, mlox_bsr_flush);
  if (mlox_bsr_read(&reader, 24) != 1) return Role::kNothing;
  mlox_bsr_skip(&reader, 1);
  const uint32_t type = mlox_bsr_read(&reader, 6);
  const uint32_t layer = mlox_bsr_read(&reader, 6);
  mlox_bsr_skip(&reader, 3);
  // What further layers hold is part of the base layer's frame.
  if (layer != 0) return Role::kNothing;
  if (type < 32) {
    return mlox_bsr_read1(&reader) == 1 ? Role::kPicture : Role::kSlice;
  }
  const bool header = is_within(type, 32, 35) || type == 39 ||
                      is_within(type, 41, 44) || is_within(type, 48, 55);
  return header ? Role::kHeader : Role::kNothing;
}

Role mpeg4_role(Bytes bytes) {
  constexpr uint32_t kEndOfSequence = 0xB1;
  constexpr uint32_t kVop = 0xB6;
  mlox_bsr reader = reader_of(bytes, mlox_bsr_flush);
  if (mlox_bsr_read(&reader, 24) != 1) return Role::kNothing;
  const uint32_t code = mlox_bsr_read(&reader, 8);
  if (code == kVop) return Role::kPicture;
  return code == kEndOfSequence ? Role::kNothing : Role::kHeader;
}

Role h263_role(Bytes bytes) {
  mlox_bsr reader = reader_of(bytes, mlox_bsr_flush);
  return mlox_bsr_read(&reader, 22) == 32 ? Role::kPicture : Role::kNothing;
}

struct Splitter {
  int32_t type;
  // A zero byte before a start code is part of it.
  bool takes_zero_byte;
  Role (*role)(Bytes bytes);
};

constexpr Splitter kSplitters[] = {
    {MLOX_MT_VIDEO_H264, true, h264_role},
    {MLOX_MT_VIDEO_HEVC, true, hevc_role},
    {MLOX_MT_VIDEO_MPEG4, false, mpeg4_role},
    {MLOX_MT_VIDEO_H263, false, h263_role},
};

std::vector<AccessUnit> split(const Splitter &splitter, Bytes stream) {
  std::vector<AccessUnit> units;
  constexpr size_t kNone = std::numeric_limits<size_t>::max();
  // Where the headers of the next picture begin.
  size_t headers = kNone;
  for (size_t i = 0; i + 3 <= stream.size(); ++i) {
    if (stream[i] != 0 || stream[i + 1] != 0) {
      // Zeros alone may stand before the first start code.
      if (stream[i] != 0 && units.empty() && headers == kNone) return {};
      continue;
    }
    const Role role = splitter.role(stream.subspan(i));
    if (role == Role::kNothing) continue;
    if (headers == kNone) {
      if (role == Role::kSlice && !units.empty()) continue;
      const bool zero = splitter.takes_zero_byte && i > 0 && stream[i - 1] == 0;
      headers = i - (zero ? 1 : 0);
    }
    if (role == Role::kHeader) continue;
    units.push_back({headers, 0});
    headers = kNone;
  }
  for (size_t i = 0; i < units.size(); ++i) {
    const size_t end =
        i + 1 < units.size() ? units[i + 1].offset : stream.size();
    units[i].size = end - units[i].offset;
  }
  return units;
}

// A little-endian number of so many bytes.
uint32_t number_at(Bytes bytes, size_t offset, int32_t size) {
  mlox_bsr reader = reader_of(bytes.subspan(offset), mlox_bsr_le_flush);
  return mlox_bsr_le_read(&reader, 8 * size);
}

}  // namespace

std::vector<AccessUnit> split_stream(int32_t type, Bytes stream) {
  for (const Splitter &splitter : kSplitters) {
    if (splitter.type == type) return split(splitter, stream);
  }
  return {};
}

bool is_ivf(Bytes file) {
  constexpr uint8_t kSignature[] = {'D', 'K', 'I', 'F'};
  return file.size() >= 12 &&
         std::equal(std::begin(kSignature), std::end(kSignature), file.begin());
}

int32_t ivf_fourcc(Bytes file) {
  return static_cast<int32_t>(number_at(file, 8, 4));
}

bool split_ivf(Bytes file, std::vector<AccessUnit> *units) {
  constexpr uint32_t kHeader = 32;
  constexpr size_t kFrameHeader = 12;
  size_t at = std::max(number_at(file, 6, 2), kHeader);
  while (at < file.size()) {
    if (file.size() - at < kFrameHeader) return false;
    const size_t size = number_at(file, at, 4);
    at += kFrameHeader;
    if (file.size() - at < size) return false;
    units->push_back({at, size});
    at += size;
  }
  return at == file.size();
}

}  // namespace vexo
