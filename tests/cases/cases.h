// SPDX-License-Identifier: Apache-2.0
// Cases: one call of an exported function on a picture that a source of numbers
// makes up. The same cases serve the fuzz targets, whose numbers are an input's
// bytes, the table of hashes and the soak, whose numbers follow from a seed.
#pragma once

#include <orumlox/img.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/exact_sizes.h"
#include "support/generator.h"
#include "support/pages.h"

namespace lox_test {

struct Size {
  int32_t width, height;
};

// Where a case takes its sizes, codes and samples from. It never runs dry: when
// the bytes are used up, numbers follow that are the same for the same bytes.
class Source {
 public:
  // With `large` sizes are those of pictures beyond the caches.
  explicit Source(uint64_t seed, bool large = false)
      : random_(seed), large_(large) {}
  Source(const uint8_t *bytes, size_t size);

  bool large() const { return large_; }

  // A number of low..high, both included.
  int32_t between(int32_t low, int32_t high);
  int32_t any() { return between(INT32_MIN, INT32_MAX); }
  bool one_in(int32_t n) { return between(1, n) == n; }
  template <class T, size_t kCount>
  const T &one_of(const T (&list)[kCount]) {
    return list[between(0, static_cast<int32_t>(kCount) - 1)];
  }

  // Samples: random ones, the ends of the range, the middle.
  void fill(uint8_t *data, size_t size);

  // A format code, or a number that is none.
  int32_t format();

  // Sides of a picture: most are small, some are empty, few need many steps of
  // a vector form. An input's wide ones are low: most of the time would else be
  // theirs.
  int32_t width();
  int32_t height();
  // A picture without width may claim any height.
  int32_t height(int32_t width) {
    return width < 1 && one_in(2) ? between(1, INT32_MAX - 1) : height();
  }
  // Both; one that is none leaves the other free to be anything.
  Size size();

 private:
  const uint8_t *next_ = nullptr;
  const uint8_t *end_ = nullptr;
  Random random_;
  bool large_ = false, wide_ = false;
};

// A digest of what calls answer and write.
class Sink {
 public:
  void add(uint64_t word) {
    state_ = (state_ ^ word) * 0x9E3779B97F4A7C15;
    state_ ^= state_ >> 32;
  }
  void add(const uint8_t *data, size_t size);
  uint64_t digest() const { return state_; }

 private:
  uint64_t state_ = 0x6A09E667F3BCC908;
};

// Exactly `size` bytes of samples at any address, beside an inaccessible page.
// What lies around them is poisoned where a sanitizer watches, and holds
// canaries everywhere.
class Buffer {
 public:
  Buffer() = default;
  Buffer(Source &source, size_t size) { reset(source, size); }
  ~Buffer() { release(); }
  Buffer(const Buffer &) = delete;
  Buffer &operator=(const Buffer &) = delete;

  void reset(Source &source, size_t size);
  // The program ends when the canaries have changed.
  void release();

  uint8_t *data() const { return data_; }
  size_t size() const { return size_; }

 private:
  Pages pages_;
  uint8_t *data_ = nullptr;
  size_t size_ = 0, before_ = 0, behind_ = 0;  // of which canaries
};

// Which way rows go: on, on or backwards, or on by the next even number of
// bytes below the stride, as rows of 16-bit samples do.
enum class Rows { kOn, kEitherWay, kEven };

// A descriptor and the memory of its planes. Fields that nobody sets are
// arbitrary, planes that nobody sets null.
class Picture {
 public:
  explicit Picture(Source &source);

  // Rows with padding behind them or without.
  void draw_strides(const ExactImage &image, Rows rows = Rows::kOn);
  // The memory of a plane: `bytes` of them, row 0 being where it is for the
  // stride. Of an empty picture, whose plane 0 is empty, all planes are null.
  void set_plane(int p, const ExactPlane &plane, int64_t bytes);
  // All planes of an image.
  void set(const ExactImage &image, Rows rows = Rows::kOn);

  // Every byte, padding too.
  void add_to(Sink &sink) const;
  // The same of all planes, one behind the other.
  void get_content(std::vector<uint8_t> *bytes) const;
  bool has_content(const std::vector<uint8_t> &bytes) const;
  void set_content(const std::vector<uint8_t> &bytes);
  int64_t bytes(int p) const { return int64_t(buffer_[p].size()); }

  vexo_img img = {};

 private:
  Source &source_;
  Buffer buffer_[4];
};

// The planes that turning, scaling and copying take a format code to have: of
// bytes, of pairs, or of whole pixels; none where no call takes the code. The
// sizes of chroma are the usual ones or any other.
ExactImage planes_by_code(Source &source, int32_t format, int32_t width,
                          int32_t height);
ExactImage turned(const ExactImage &image);

// An exported function, and the body of its cases.
using AnyFunction = void (*)();
struct Function {
  const char *name;
  void (*run)(const Function &function, Source &source, Sink &sink);
  AnyFunction address;
  // What is called instead, with the function before its arguments.
  AnyFunction rule = nullptr;

  template <class Type>
  struct Call;
  template <class Type>
  Call<Type> as() const {
    return {*this};
  }
};
template <class Result, class... Arguments>
struct Function::Call<Result(Arguments...)> {
  const Function &function;

  Result operator()(Arguments... arguments) const {
    if (function.rule == nullptr) return (*pointer())(arguments...);
    using Rule = Result (*)(const Function &, Arguments...);
    return reinterpret_cast<Rule>(function.rule)(function, arguments...);
  }
  using Pointer = Result (*)(Arguments...);
  Pointer pointer() const {
    return reinterpret_cast<Pointer>(function.address);
  }
  operator Pointer() const { return pointer(); }
};
#define LOX_FUNCTION(body, name) \
  { #name, body, reinterpret_cast < lox_test::AnyFunction>(name), nullptr }

// Runs the entry of a thread as one. Its result. The fuzz targets have their
// own.
void *on_thread(const Function &entry, void *argument);

struct Family {
  const char *name;
  // How many cases of each function the table of hashes is made of.
  int cases;
  const Function *functions;
  int32_t count;
};
template <size_t kCount>
constexpr Family make_family(const char *name, int cases,
                             const Function (&functions)[kCount]) {
  return {name, cases, functions, static_cast<int32_t>(kCount)};
}

// Each family is a file of this folder; CMakeLists.txt lists them too.
#define LOX_FOR_EACH_FAMILY(X) \
  X(csc)                       \
  X(csc_new)                   \
  X(layout)                    \
  X(rot)                       \
  X(rsz)                       \
  X(blocks)                    \
  X(vqe) X(dct) X(hdr) X(media) X(picture) X(camera) X(fused) X(deep) X(apex)
#define LOX_DECLARE_FAMILY(name) extern const Family name##_family;
LOX_FOR_EACH_FAMILY(LOX_DECLARE_FAMILY)
#undef LOX_DECLARE_FAMILY

}  // namespace lox_test
