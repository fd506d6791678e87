// SPDX-License-Identifier: Apache-2.0
// The DCT scaler of pairs and of pixels, thumbnails, and the parts of them that
// are exported.
#include <orumlox/unprefixed.h>
#include <sched.h>

#include <cstdlib>
#include <cstring>

#include "cases/cases.h"
#include "cases/dct_geometry.h"
#include "cases/dct_plan.h"

namespace lox_test {
namespace {

constexpr int32_t kFactors[] = {0, 0, 2, 4};

// The function that the case is about, or another that it takes along.
const Function &either(const Function &function, const char *name);

// A side of the destination, and one of the source that is mostly larger.
int32_t new_side(Source &source) {
  return source.one_in(16) ? source.between(-1, 90) : source.between(1, 24);
}
int32_t old_side(Source &source, int32_t side, int32_t factor) {
  const int32_t kind = source.between(0, 15);
  if (kind < 4) return side * std::max(factor, 2);
  if (kind < 6) return side * source.between(1, 9);
  const int32_t beyond = source.between(kind < 14 ? 0 : -1, 60);
  return kind < 14 ? side * source.between(1, 6) + beyond : beyond;
}

// Memory for a plane as it is described: all of its rows are the scaler's.
void give_memory(Picture &picture, int p) {
  const int32_t rows = picture.img.buf_height[p];
  const int64_t bytes =
      std::max<int64_t>(0, picture.img.stride[p]) * std::max(rows, 0);
  picture.set_plane(
      p, {picture.img.width[p], picture.img.height[p], 0, 0, bytes}, bytes);
  picture.img.buf_height[p] = rows;
}

// The sizes of an image, its rows by a layout selector or any.
void describe(Source &source, vexo_img &img, int32_t width, int32_t height) {
  const bool usual = !source.one_in(8);
  const bool up = source.one_in(2);
  const auto half = [&](int32_t n) { return up ? half_up(n) : half_down(n); };
  for (int p = 0; p < 3; ++p) {
    img.width[p] = p == 0 ? width : usual ? half(width) : new_side(source);
    img.height[p] = p == 0 ? height : usual ? half(height) : new_side(source);
    const int32_t unit = p == 1 && img.format != VEXO_FMT_YUV420 ? 2 : 1;
    img.stride[p] = std::max(img.width[p], 0) * unit +
                    (source.one_in(2) ? source.between(0, 40) : 0);
    img.buf_height[p] = std::max(img.height[p], 0) + source.between(0, 5);
  }
  if (source.one_in(16)) img.width[1] = 0;
  // What plane 2 is written with.
  for (int32_t *sizes : {img.width, img.height, img.stride, img.buf_height}) {
    sizes[2] = sizes[1];
  }
}

struct Pair : CasePlan {
  Pair(Source &source, int32_t prescale)
      : src(source), dst(source), factor(prescale) {
    const int32_t width = new_side(source);
    const int32_t height = new_side(source);
    constexpr int32_t kKinds[] = {VEXO_FMT_NV12, VEXO_FMT_NV12, VEXO_FMT_NV21,
                                  VEXO_FMT_YUV420, VEXO_FMT_YUV420};
    src.img.format = source.between(VEXO_FMT_NV12, VEXO_FMT_NV21);
    dst.img.format =
        source.one_in(16) ? source.format() : source.one_of(kKinds);
    dst.img.color_std = source.between(0, 2);
    const int32_t from_width = old_side(source, width, factor);
    describe(source, src.img, from_width, old_side(source, height, factor));
    describe(source, dst.img, width, height);
    copy();
    if (source.one_in(2)) vexo_rsz_new_set_img(pair);
    src.img = pair[0];
    dst.img = pair[1];
    for (int p = 0; p < 3; ++p) {
      if (p < 2) give_memory(src, p);
      give_memory(dst, p);
    }
    copy();
  }
  void copy() {
    pair[0] = src.img;
    pair[1] = dst.img;
  }
  void init() {
    begin();
    status = vexo_rsz_new_init(pair, &context, &a, &b, factor);
    end();
  }
  // What is left of all.
  void deinit(Sink &sink) {
    status |= vexo_rsz_new_deinit(pair, &context, a, b);
    a = b = nullptr;
    add_to(sink);
    src.add_to(sink);
    dst.add_to(sink);
  }

  Picture src, dst;
  int32_t factor;
  vexo_img pair[2];
};

// Pictures of pixels and of planes.
struct Quartet : CasePlan {
  explicit Quartet(Source &source)
      : pictures{Picture(source), Picture(source), Picture(source),
                 Picture(source)} {
    const int32_t to[] = {new_side(source), new_side(source)};
    const int32_t from[] = {old_side(source, to[0], 0),
                            old_side(source, to[1], 0)};
    for (int i = 0; i < 4; ++i) {
      const int32_t *const size = i % 2 == 0 ? from : to;
      const int32_t rows = std::max(size[1], 0) + source.between(0, 3);
      vexo_img &described = pictures[i].img;
      for (int p = 0; p < (i < 2 ? 1 : 3); ++p) {
        described.width[p] = size[0];
        described.height[p] = size[1];
        described.stride[p] = std::max(size[0], 0) * (i < 2 ? 4 : 1) +
                              (source.one_in(2) ? source.between(0, 40) : 0);
        described.buf_height[p] = rows;
        give_memory(pictures[i], p);
      }
      img[i] = described;
    }
    begin();
    status = vexo_rsz_new_rgba8888_init(img, &context, &a, &b);
    end();
  }

  Picture pictures[4];
  vexo_img img[4];
};

// --- plans -------------------------------------------------------------------

// Tables of a plan, made once more, are the same.
void tables(const Function &, Source &source, Sink &sink) {
  Pair p(source, source.one_of(kFactors));
  p.init();
  p.add_to(sink);
  if (!p.has_blocks()) return;
  Sink before, after;
  p.add_to(before);
  vexo_rsz_new_context &c = p.context;
  const auto count = static_cast<size_t>(p.blocks());
  std::memset(c.block_types, 0xA5, count);
  std::memset(c.block_columns, 0xA5, count * sizeof(int32_t));
  std::memset(c.block_rows, 0xA5, count * sizeof(int32_t));
  for (int32_t i = 0; i < p.entries(); ++i) {
    std::memset(p.a[i][0], 0, size_t{32} * p.rows_of_a());
    std::memset(p.b[i][0], 0, size_t{32} * p.rows_of_b());
  }
  split_settings(&c);
  make_shiftmatrix(&c, p.a, p.b);
  p.add_to(after);
  require(before.digest() == after.digest());
}
void memory(const Function &, Source &source, Sink &sink) {
  const int32_t count = source.between(-1, 8);
  const int32_t n = source.between(-1, 20);
  vexo_shift_set set = nullptr;
  const int32_t status = get_mem3Dint16(&set, count, n);
  require(status == VEXO_OK || set == nullptr);
  sink.add(static_cast<uint32_t>(status));
  add_set(set, count, n, sink);
  for (int32_t i = 0; set != nullptr && i < count; ++i) {
    std::free(set[i][0]);
    std::free(set[i]);
  }
  std::free(set);
}

// Sizes of any kind; where a plan is made of them those for which it takes
// little memory or none.
int32_t any_side(Source &source, bool planned) {
  if (source.one_in(2)) return source.between(-1, 1000);
  return planned ? source.between(1 << 24, INT32_MAX)
                 : source.any() >> source.between(0, 31);
}

// Along one axis where a plan is made.
void sizes(const Function &function, Source &source, Sink &sink) {
  Pair p(source, source.one_of(kFactors));
  const bool init = function.address == AnyFunction(vexo_rsz_new_init);
  const int32_t axis = init ? source.between(0, 1) : 2;
  for (vexo_img &img : p.pair) {
    for (int i = 0; i < 2; ++i) {
      const int32_t width = any_side(source, init);
      const int32_t height = any_side(source, init);
      if (axis != 0) img.width[i] = width;
      if (axis != 1) img.height[i] = height;
    }
  }
  if (init) {
    p.init();
  } else if (function.address == AnyFunction(algorithm_settings)) {
    p.context.prescale = p.factor;
    p.status = algorithm_settings(p.pair, &p.context);
  } else {
    p.status = vexo_rsz_new_set_img(p.pair);
  }
  if (init) {
    p.add_to(sink);
  } else {
    p.add_numbers(sink);
    p.context = {};
  }
  for (const vexo_img &img : p.pair) add(img.width, 16, sink);
}

// --- whole pictures ----------------------------------------------------------

void scale(const Function &function, Source &source, Sink &sink) {
  Pair p(source, source.one_of(kFactors));
  p.init();
  p.add_to(sink);
  if (source.one_in(16)) p.pair[1].format = VEXO_FMT_RGB888;
  p.status |= either(function, "vexo_rsz_new")
                  .as<decltype(vexo_rsz_new)>()(&p.pair[0], &p.pair[1],
                                                &p.context, p.a, p.b);
  p.deinit(sink);
}

// The planes of a turned picture; false where its rows would lie over each
// other.
bool make_room(const vexo_img &scaled, int32_t rotation, Picture &result) {
  for (int p = 0; p < 3; ++p) {
    if (rotation == VEXO_ROT_COPY) {
      give_memory(result, p);
      continue;
    }
    ExactPlane plane =
        exact_plane(scaled.width[p], scaled.height[p],
                    scaled.format == VEXO_FMT_NV12 && p == 1 ? 2 : 1);
    if (rotation < 3) plane = turned({plane})[0];
    const auto row = static_cast<int32_t>(plane.row_bytes);
    const int32_t own = std::max(result.img.stride[p], row);
    result.img.stride[p] = own;
    const int32_t stride =
        turned_geometry(scaled, result.img, rotation).stride[p];
    if (stride < row) return false;
    result.set_plane(p, plane, plane.bytes(stride));
  }
  return true;
}

void thumbnail(const Function &function, Source &source, Sink &sink) {
  Pair p(source, source.one_of(kFactors));
  const int32_t rotation = source.between(0, 6);
  vexo_img intermediate = Picture(source).img;
  Picture result(source);
  result.img = p.dst.img;
  for (uint8_t *&plane : result.img.plane) plane = nullptr;
  result.img.color_std = source.between(0, 2);
  if (!make_room(p.pair[1], rotation, result)) return;
  p.begin();
  p.status = vexo_txc_new_init(p.pair, &intermediate, &p.context, &p.a, &p.b,
                               p.factor, rotation);
  p.status |=
      either(function, "vexo_txc_new")
          .as<decltype(vexo_txc_new)>()(p.pair, &result.img, &intermediate,
                                        &p.context, p.a, p.b, rotation);
  p.status |= vexo_txc_new_deinit(p.pair, &intermediate, &p.context, p.a, p.b,
                                  rotation);
  p.deinit(sink);
  add(result.img.width, 16, sink);
  result.add_to(sink);
}

// While it lives this thread has one processor only, if it is `alone`.
struct Processors {
  explicit Processors(bool alone) {
    sched_getaffinity(0, sizeof before, &before);
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(sched_getcpu(), &set);
    if (alone) sched_setaffinity(0, sizeof set, &set);
  }
  ~Processors() { sched_setaffinity(0, sizeof before, &before); }
  cpu_set_t before;
};

void pixels(const Function &function, Source &source, Sink &sink) {
  Quartet q(source);
  q.add_to(sink);
  const Processors processors(q.img[1].width[0] % 2 != 0);
  q.status |=
      either(function, "vexo_rsz_new_rgba8888")
          .as<decltype(vexo_rsz_new_rgba8888)>()(q.img, &q.context, q.a, q.b);
  q.status |= vexo_rsz_new_rgba8888_deinit(q.img, &q.context, q.a, q.b);
  q.a = q.b = nullptr;
  q.add_to(sink);
  for (const Picture &picture : q.pictures) picture.add_to(sink);
}

// --- planes ------------------------------------------------------------------

void plane(const Function &, Source &source, Sink &sink) {
  Pair pair(source, source.one_of(kFactors));
  pair.init();
  const int32_t p = source.between(0, 1);
  const vexo_rsz_new_context &c = pair.context;
  if (!pair.has_blocks()) return;
  const auto size = [](int32_t stride, int32_t rows) {
    return static_cast<size_t>(std::max(stride, 0)) *
           static_cast<size_t>(std::max(rows, 0));
  };
  Buffer src(source, size(c.src_stride[p], c.src_rows[p]));
  Buffer dst(source, size(c.dst_stride[p], c.dst_rows[p]));
  dct_downscaling(src.data(), dst.data(), &pair.context, pair.a, pair.b, p);
  sink.add(dst.data(), dst.size());
}
void component(const Function &, Source &source, Sink &sink) {
  Quartet q(source);
  const int32_t p = source.between(0, 2);
  dct_downscaling_rgba8888(q.img[2].plane[p], q.img[3].plane[p], &q.context,
                           q.a, q.b, p);
  q.pictures[3].add_to(sink);
}

template <class Worker>
void run(const Function &function, Worker worker, Sink &sink) {
  sem_t start;
  sem_t done;
  sem_init(&start, 0, 1);
  sem_init(&done, 0, 0);
  worker.start = &start;
  worker.done = &done;
  sink.add(on_thread(function, &worker) == nullptr);
  sink.add(sem_trywait(&start) == 0);
  sink.add(sem_trywait(&done) == 0);
  sem_destroy(&start);
  sem_destroy(&done);
}
template <int32_t kFactor>
void chroma(const Function &function, Source &source, Sink &sink) {
  Pair p(source, kFactor);
  p.init();
  if (p.has_blocks()) {
    run<vexo_rsz_new_worker>(
        function,
        {&p.pair[0], &p.pair[1], &p.context, p.a, p.b, nullptr, nullptr}, sink);
  }
  p.deinit(sink);
}
template <int kPlane>
void component_thread(const Function &function, Source &source, Sink &sink) {
  Quartet q(source);
  run<vexo_rsz_new_rgba8888_worker>(
      function,
      {q.img[2].plane[kPlane], q.img[3].plane[kPlane], &q.context, q.a, q.b,
       nullptr, nullptr},
      sink);
  q.pictures[3].add_to(sink);
}

// --- blocks ------------------------------------------------------------------

void coefficients(const Function &function, Source &source, Sink &sink) {
  const int32_t width = source.between(1, 40);
  const int32_t height = source.between(1, 40);
  Buffer block(source, static_cast<size_t>(width) * height);
  float out[16];
  function.as<decltype(FDCT_BlockXYFn)>()(block.data(), out, height, width);
  add(out, 16, sink);
}
void product(const Function &function, Source &source, Sink &sink) {
  float m[3][81] = {};
  for (int i = 0; i < 162; ++i) {
    m[i / 81][i % 81] = static_cast<float>(source.between(-999, 999)) / 7;
  }
  function.as<decltype(MatNxN_float_compute)>()(m[0], m[1], m[2],
                                                source.between(0, 9));
  add(m[2], 81, sink);
}

void transform(const Function &function, Source &source, Sink &sink) {
  Pair pair(source, source.one_of(kFactors));
  pair.init();
  const vexo_rsz_new_context &c = pair.context;
  const int32_t p = source.between(0, 1);
  const int32_t type = source.between(0, 3);
  const int32_t width = c.block_width[p][type];
  const int32_t height = c.block_height[p][type];
  // With three types there are no wider blocks.
  const bool made = type < c.types[p] && (c.types[p] != 3 || type != 1);
  if (!pair.has_blocks() || !made || width < 1 || height < 1) return;
  const int32_t entry = (p == 0 ? 0 : c.types[0]) + type;
  Buffer block(source, static_cast<size_t>(width) * height);
  int32_t out[16];
  function.as<decltype(vexo_fdct_blocknxn_full_compute)>()(
      block.data(), width, height, pair.a[entry], pair.b[entry], out);
  add(out, 16, sink);
}

template <class Type>
void inverse(const Function &function, Source &source, Sink &sink) {
  constexpr bool kCut =
      std::is_same_v<Type, decltype(vexo_idct_blocknxn_float)>;
  const int32_t row = source.between(0, 9);
  const int32_t column = source.between(0, 9);
  const int32_t rows = kCut ? source.between(0, 14) : row + 4;
  const int32_t stride = kCut ? source.between(0, 14) : column + 4;
  Buffer dst(source, static_cast<size_t>(stride) * rows);
  // Of real blocks or any.
  const int32_t shift = source.one_in(2) ? 0 : 7;
  int32_t c[16];
  int32_t weights[16];
  int16_t weighted[16];
  for (int i = 0; i < 16; ++i) {
    c[i] = source.any() >> shift;
    weights[i] = source.between(0, 53000);
    weighted[i] = static_cast<int16_t>(c[i] >> shift);
  }
  if constexpr (kCut) {
    function.as<Type>()(dst.data(), row, column, weighted, stride, rows);
  } else {
    function.as<Type>()(dst.data(), row, column, stride, c, weights);
  }
  sink.add(dst.data(), dst.size());
}

const Function kFunctions[] = {
    LOX_FUNCTION(sizes, vexo_rsz_new_set_img),
    LOX_FUNCTION(sizes, algorithm_settings),
    LOX_FUNCTION(tables, split_settings),
    LOX_FUNCTION(memory, get_mem3Dint16),
    LOX_FUNCTION(tables, make_shiftmatrix),
    LOX_FUNCTION(sizes, vexo_rsz_new_init),
    LOX_FUNCTION(scale, vexo_rsz_new),
    LOX_FUNCTION(scale, vexo_rsz_new_deinit),
    LOX_FUNCTION(thumbnail, vexo_txc_new_init),
    LOX_FUNCTION(thumbnail, vexo_txc_new),
    LOX_FUNCTION(thumbnail, vexo_txc_new_deinit),
    LOX_FUNCTION(pixels, vexo_rsz_new_rgba8888_init),
    LOX_FUNCTION(pixels, vexo_rsz_new_rgba8888),
    LOX_FUNCTION(pixels, vexo_rsz_new_rgba8888_deinit),
    LOX_FUNCTION(plane, dct_downscaling),
    LOX_FUNCTION(component, dct_downscaling_rgba8888),
    LOX_FUNCTION(chroma<2>, vexo_new_rsz_thread_prsz_2),
    LOX_FUNCTION(chroma<4>, vexo_new_rsz_thread_prsz_4),
    LOX_FUNCTION(component_thread<1>, vexo_new_rsz_thread_prsz_4_rgba8888),
    LOX_FUNCTION(component_thread<2>, vexo_new_rsz_thread_prsz_4_rgba8888_1),
    LOX_FUNCTION(coefficients, FDCT_BlockXYFn),
    LOX_FUNCTION(product, MatNxN_float_compute),
    LOX_FUNCTION(transform, vexo_fdct_blocknxn_full_compute),
    LOX_FUNCTION(inverse<decltype(vexo_idct_block4x4)>, vexo_idct_block4x4),
    LOX_FUNCTION(inverse<decltype(vexo_idct_blocknxn_float)>,
                 vexo_idct_blocknxn_float),
};

const Function &either(const Function &function, const char *name) {
  if (std::strcmp(function.name, name) == 0) return function;
  return *std::find_if(
      std::begin(kFunctions), std::end(kFunctions),
      [&](const Function &f) { return std::strcmp(f.name, name) == 0; });
}

}  // namespace

const Family dct_family = make_family("dct", 100, kFunctions);

}  // namespace lox_test
