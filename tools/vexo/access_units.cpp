// SPDX-License-Identifier: Apache-2.0
//
// Splits raw streams at the start codes of their pictures, and IVF by the sizes
// that it states. Looks at the few header bits that this takes, no more.
#include "access_units.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <vector>

#include "error.h"
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

constexpr size_t kMaxUnit = kMaxUnitMib << 20;

Error too_long(const ByteSource &source) {
  return Error(source.name() + ": no frame ends within " +
               std::to_string(kMaxUnitMib) + " MiB");
}

class StreamReader : public UnitReader {
 public:
  StreamReader(ByteSource &source, const Splitter &splitter)
      : source_(source), splitter_(splitter) {}

  bool next(AccessUnit *unit) override {
    for (;; ++at_) {
      if (buffer_.size() - at_ < kLookahead) read_ahead();
      if (buffer_.size() - at_ < kStartCode) break;
      const Bytes rest = Bytes(buffer_).subspan(at_);
      if (rest[0] != 0 || rest[1] != 0) {
        // Zeros alone may stand before the first start code.
        if (rest[0] != 0 && begin_ == kNone && headers_ == kNone) return false;
        continue;
      }
      // A row of zeros: no start code yet.
      if (rest[2] == 0) continue;
      const Role role = splitter_.role(rest);
      if (role == Role::kNothing) continue;
      if (headers_ == kNone) {
        if (role == Role::kSlice && begin_ != kNone) continue;
        const bool zero =
            splitter_.takes_zero_byte && at_ > 0 && buffer_[at_ - 1] == 0;
        headers_ = at_ - (zero ? 1 : 0);
      }
      if (role == Role::kHeader) continue;
      const size_t before = begin_;
      begin_ = headers_;
      headers_ = kNone;
      if (before == kNone) continue;
      *unit = unit_of(before, begin_);
      ++at_;
      return true;
    }
    if (begin_ == kNone) return false;
    *unit = unit_of(begin_, buffer_.size());
    begin_ = kNone;
    at_ = buffer_.size();
    return true;
  }

 private:
  static constexpr size_t kNone = std::numeric_limits<size_t>::max();
  static constexpr size_t kStartCode = 3;
  // Enough to tell the role of what begins there.
  static constexpr size_t kLookahead = 8;
  static constexpr size_t kChunk = 65536;

  AccessUnit unit_of(size_t begin, size_t end) const {
    return {offset_ + begin, Bytes(buffer_).subspan(begin, end - begin)};
  }

  // Drops what is before the frame that has begun, and adds a chunk.
  void read_ahead() {
    if (ended_) return;
    const size_t done = begin_ == kNone ? 0 : begin_;
    buffer_.erase(buffer_.begin(),
                  buffer_.begin() + static_cast<ptrdiff_t>(done));
    offset_ += done;
    at_ -= done;
    if (begin_ != kNone) begin_ = 0;
    if (headers_ != kNone) headers_ -= done;
    const size_t had = buffer_.size();
    if (had > kMaxUnit) throw too_long(source_);
    buffer_.resize(had + kChunk);
    const size_t got = source_.read(buffer_.data() + had, kChunk);
    buffer_.resize(had + got);
    ended_ = got < kChunk;
  }

  ByteSource &source_;
  const Splitter &splitter_;
  std::vector<uint8_t> buffer_;
  // Of the buffer in the stream; the others are places in the buffer.
  uint64_t offset_ = 0;
  size_t at_ = 0;
  size_t begin_ = kNone;
  // Where the headers of the next picture begin.
  size_t headers_ = kNone;
  bool ended_ = false;
};

// A little-endian number of so many bytes.
uint32_t number_at(Bytes bytes, size_t offset, int32_t size) {
  mlox_bsr reader = reader_of(bytes.subspan(offset), mlox_bsr_le_flush);
  return mlox_bsr_le_read(&reader, 8 * size);
}

class IvfReader : public UnitReader {
 public:
  IvfReader(ByteSource &source, int32_t *fourcc) : source_(source) {
    std::array<uint8_t, 32> header;
    read(header.data(), header.size());
    *fourcc = static_cast<int32_t>(number_at(header, 8, 4));
    const size_t size = number_at(header, 6, 2);
    if (size <= header.size()) return;
    unit_.resize(size - header.size());
    read(unit_.data(), unit_.size());
  }

  bool next(AccessUnit *unit) override {
    if (source_.at_end()) return false;
    std::array<uint8_t, 12> header;
    read(header.data(), header.size());
    const size_t size = number_at(header, 0, 4);
    if (size > kMaxUnit) throw too_long(source_);
    const uint64_t begin = offset_;
    // Piece by piece: a damaged size takes no memory.
    unit_.clear();
    while (unit_.size() < size) {
      const size_t had = unit_.size();
      unit_.resize(std::min(size, had + (size_t{1} << 20)));
      read(unit_.data() + had, unit_.size() - had);
    }
    *unit = {begin, unit_};
    return true;
  }

 private:
  void read(uint8_t *bytes, size_t count) {
    source_.read_exactly(bytes, count);
    offset_ += count;
  }

  ByteSource &source_;
  uint64_t offset_ = 0;
  std::vector<uint8_t> unit_;
};

}  // namespace

std::unique_ptr<UnitReader> read_stream(ByteSource &source, int32_t type) {
  for (const Splitter &splitter : kSplitters) {
    if (splitter.type == type) {
      return std::make_unique<StreamReader>(source, splitter);
    }
  }
  throw Error(source.name() + " is of no codec that has raw streams");
}

bool is_ivf(ByteSource &source) {
  const std::string_view start = source.peek(12);
  return start.size() == 12 && start.starts_with("DKIF");
}

std::unique_ptr<UnitReader> read_ivf(ByteSource &source, int32_t *fourcc) {
  return std::make_unique<IvfReader>(source, fourcc);
}

}  // namespace vexo
