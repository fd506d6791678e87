// SPDX-License-Identifier: Apache-2.0
#include "cases/cases.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/asan_interface.h>
#endif
#endif
#if !defined(ASAN_POISON_MEMORY_REGION)
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)0)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)0)
#endif

namespace lox_test {
namespace {

// What lies around a buffer: as long as a vector, or up to 15 bytes.
constexpr size_t kMargin = 64;
constexpr auto kCanaries = [] {
  std::array<uint8_t, kMargin + 15> bytes{};
  for (size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<uint8_t>(i * 37 + 0xA5);
  }
  return bytes;
}();

// Pages of buffers that are gone.
thread_local std::vector<Pages> spare_pages;

uint64_t digest_of(const uint8_t *bytes, size_t size) {
  Sink sink;
  sink.add(bytes, size);
  return sink.digest();
}

}  // namespace

Source::Source(const uint8_t *bytes, size_t size)
    : next_(bytes), end_(bytes + size), random_(digest_of(bytes, size)) {}

int32_t Source::between(int32_t low, int32_t high) {
  if (next_ == end_) return random_.between(low, high);
  const uint64_t count = static_cast<uint64_t>(int64_t{high} - low) + 1;
  uint64_t number = 0;
  for (uint64_t left = count - 1; left != 0 && next_ != end_; left >>= 8) {
    number = number << 8 | *next_++;
  }
  return static_cast<int32_t>(low + static_cast<int64_t>(number % count));
}

void Source::fill(uint8_t *data, size_t size) {
  constexpr Fill kKinds[] = {Fill::kLow,    Fill::kHigh,   Fill::kAlternating,
                             Fill::kRandom, Fill::kRandom, Fill::kRandom,
                             Fill::kRandom, Fill::kRandom};
  const int32_t kind = between(0, 255);
  Random samples(next_ == end_ ? random_.next() : static_cast<uint64_t>(kind));
  samples.fill(data, size, kKinds[kind % 8]);
  if (kind < 224) return;
  // Few values, at the ends and in the middle, whose sums round or overflow.
  constexpr uint8_t kValues[] = {0, 1, 16, 127, 128, 129, 254, 255};
  for (size_t i = 0; i < size; ++i) data[i] = kValues[data[i] % 8];
}

int32_t Source::format() {
  constexpr int32_t kCodes[] = {0,   1,   2,   3,   4,   5,   6,   7,   8,
                                11,  12,  13,  14,  100, 101, 200, 201, 400,
                                401, 500, 501, 502, 503, 600, 601};
  const int32_t kind = between(0, 7);
  return kind == 0 ? any() : kind == 1 ? between(-1, 700) : one_of(kCodes);
}

int32_t Source::width() {
  if (large_) return between(900, 2100);
  const int32_t kind = between(0, 31);
  wide_ = kind == 1;
  return kind == 0   ? between(-1, 0)
         : kind == 1 ? between(65, 700)
                     : between(1, 64);
}

int32_t Source::height() {
  if (large_) return between(500, 1100);
  const int32_t kind = between(0, 31);
  const bool low = wide_ && end_ != nullptr;
  return kind == 0 ? between(-1, 0) : between(1, low ? 8 : kind < 8 ? 64 : 12);
}

Size Source::size() {
  Size s = {width(), height()};
  if (!large_ && one_in(64)) {
    s.width = between(701, 4100);
    if (end_ != nullptr) s.height = std::min(s.height, 8);
  }
  if (s.width >= 1 && s.height >= 1) return s;
  const int32_t other = between(1, INT32_MAX - 1);
  if (s.width < 1 && one_in(2)) return {one_in(2) ? INT32_MIN : -1, other};
  if (s.height < 1 && one_in(2)) return {other, one_in(2) ? INT32_MIN : -1};
  return s;
}

void Sink::add(const uint8_t *data, size_t size) {
  add(size);
  uint64_t word = 0;
  size_t i = 0;
  for (; i + 8 <= size; i += 8) {
    std::memcpy(&word, data + i, 8);
    add(word);
  }
  word = 0;
  if (i < size) std::memcpy(&word, data + i, size - i);
  add(word);
}

void Buffer::reset(Source &source, size_t size) {
  release();
  if (!spare_pages.empty()) {
    pages_ = std::move(spare_pages.back());
    spare_pages.pop_back();
  }
  // Enough for most, so that pages stay.
  constexpr size_t kUsual = 65536;
  pages_.reserve(std::max(size + kCanaries.size(), kUsual));
  auto place = static_cast<size_t>(source.between(0, 15));
  // What is written past the caches begins with a line, and so do its rows.
  if (source.large() && place % 2 != 0) place = 2;
  const bool at_end = place % 4 == 0;
  before_ = at_end ? kMargin : place % 4 == 2 ? place - 2 : place;
  behind_ = at_end ? 0 : kMargin;
  data_ = at_end ? pages_.end() - size : pages_.begin() + before_;
  size_ = size;
  std::memcpy(data_ - before_, kCanaries.data(), before_);
  std::memcpy(data_ + size, kCanaries.data(), behind_);
  source.fill(data_, size);
  ASAN_POISON_MEMORY_REGION(data_ - before_, before_);
  ASAN_POISON_MEMORY_REGION(data_ + size, behind_);
}

void Buffer::release() {
  if (data_ == nullptr) return;
  ASAN_UNPOISON_MEMORY_REGION(data_ - before_, before_ + size_ + behind_);
  if (std::memcmp(data_ - before_, kCanaries.data(), before_) != 0 ||
      std::memcmp(data_ + size_, kCanaries.data(), behind_) != 0) {
    std::fprintf(stderr, "written beyond a plane of %zu bytes\n", size_);
    std::abort();
  }
  spare_pages.push_back(std::move(pages_));
  data_ = nullptr;
  size_ = 0;
}

Picture::Picture(Source &source) : source_(source) {
  const int32_t garbage = source.between(-127, 127) * 0x01010101;
  for (int p = 0; p < 4; ++p) {
    img.width[p] = img.height[p] = img.stride[p] = img.buf_height[p] = garbage;
  }
  img.offset_x = img.offset_y = img.mode = img.source_nit = garbage;
}

void Picture::draw_strides(const ExactImage &image, Rows rows) {
  for (int p = 0; p < 4; ++p) {
    const auto row = static_cast<int32_t>(
        std::clamp<int64_t>(image[p].row_bytes, 0, INT32_MAX / 2));
    const int32_t kind = source_.between(0, 31);
    img.stride[p] = row + (kind < 16 ? 0 : source_.between(0, 40));
    if (source_.large() && kind < 16) img.stride[p] = (row + 63) / 64 * 64;
    if (kind == 31 && rows == Rows::kEitherWay) img.stride[p] *= -1;
  }
}

void Picture::set_plane(int p, const ExactPlane &plane, int64_t bytes) {
  img.width[p] = plane.width;
  img.height[p] = plane.height;
  img.buf_height[p] = plane.height;
  if (bytes == 0 && (p == 0 || img.plane[0] == nullptr)) return;
  buffer_[p].reset(source_, static_cast<size_t>(bytes));
  const bool strided = bytes > 0 && plane.whole == 0;
  img.plane[p] = buffer_[p].data() + (strided ? plane.first(img.stride[p]) : 0);
}

void Picture::set(const ExactImage &image, Rows rows) {
  draw_strides(image, rows);
  for (int p = 0; p < 4; ++p) {
    const int32_t stride = img.stride[p];
    set_plane(p, image[p],
              image[p].bytes(rows == Rows::kEven ? stride & ~1 : stride));
  }
}

void Picture::add_to(Sink &sink) const {
  for (const Buffer &buffer : buffer_) sink.add(buffer.data(), buffer.size());
}

void Picture::get_content(std::vector<uint8_t> *bytes) const {
  bytes->clear();
  for (const Buffer &buffer : buffer_) {
    bytes->insert(bytes->end(), buffer.data(), buffer.data() + buffer.size());
  }
}
bool Picture::has_content(const std::vector<uint8_t> &bytes) const {
  const uint8_t *expected = bytes.data();
  for (const Buffer &buffer : buffer_) {
    if (!std::equal(buffer.data(), buffer.data() + buffer.size(), expected)) {
      return false;
    }
    expected += buffer.size();
  }
  return true;
}
void Picture::set_content(const std::vector<uint8_t> &bytes) {
  auto from = bytes.begin();
  for (const Buffer &buffer : buffer_) {
    std::copy_n(from, buffer.size(), buffer.data());
    from += static_cast<std::ptrdiff_t>(buffer.size());
  }
}

ExactImage planes_by_code(Source &source, int32_t format, int32_t width,
                          int32_t height) {
  if (format == VEXO_FMT_P010LE) {
    return exact_image(format, width, height);
  }
  constexpr int kBytes[] = {1, 0, 2, 0, 3, 4};
  if (format < 0 || format >= 600 || kBytes[format / 100] == 0 ||
      format == VEXO_FMT_T64X32) {
    return {};
  }
  ExactImage image = {exact_plane(width, height, kBytes[format / 100])};
  if (format == VEXO_FMT_YUV400 || format >= 100) return image;
  const bool usual = !source.one_in(4);
  const int32_t w = usual ? half_up(width) : source.width();
  const int32_t h = usual ? half_up(height) : source.height();
  const bool pairs = format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21;
  image[1] = exact_plane(w, h, pairs ? 2 : 1);
  // A call that takes pairs for a plane of bytes looks for a third one.
  image[2] = pairs && source.one_in(2) ? exact_plane(0, 0, 1) : image[1];
  return image;
}

ExactImage turned(const ExactImage &image) {
  ExactImage result;
  for (int p = 0; p < 4; ++p) {
    const ExactPlane &plane = image[p];
    const auto unit = static_cast<int>(
        plane.row_bytes < 1 ? 0 : plane.row_bytes / plane.width);
    result[p] = exact_plane(plane.height, plane.width, unit);
  }
  return result;
}

}  // namespace lox_test
