// SPDX-License-Identifier: Apache-2.0
// The DCT scaler of pairs and of pixels, thumbnails, and the parts of them that
// are exported.
#include <orumlox/unprefixed.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>

#include "cases/cases.h"

namespace lox_test {
namespace {

constexpr int32_t kFactors[] = {0, 0, 2, 4};

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
  // What plane 2 is written with.
  for (int32_t *sizes : {img.width, img.height, img.stride, img.buf_height}) {
    sizes[2] = sizes[1];
  }
}

// A source and a destination and what is planned for them.
struct Plan {
  Plan(Source &source, int32_t prescale)
      : src(source), dst(source), factor(prescale) {
    const int32_t width = new_side(source);
    const int32_t height = new_side(source);
    const int32_t from_width = old_side(source, width, factor);
    const int32_t from_height = old_side(source, height, factor);
    constexpr int32_t kKinds[] = {VEXO_FMT_NV12, VEXO_FMT_NV12, VEXO_FMT_NV21,
                                  VEXO_FMT_YUV420, VEXO_FMT_YUV420};
    src.img.format = source.between(VEXO_FMT_NV12, VEXO_FMT_NV21);
    dst.img.format =
        source.one_in(16) ? source.format() : source.one_of(kKinds);
    dst.img.color_std = source.between(0, 2);
    describe(source, src.img, from_width, from_height);
    describe(source, dst.img, width, height);
    pair[0] = src.img;
    pair[1] = dst.img;
    if (source.one_in(2)) vexo_rsz_new_set_img(pair);
    src.img = pair[0];
    dst.img = pair[1];
    for (int p = 0; p < 3; ++p) {
      if (p < 2) give_memory(src, p);
      give_memory(dst, p);
    }
    pair[0] = src.img;
    pair[1] = dst.img;
    std::memset(static_cast<void *>(&context), 0, sizeof context);
  }
  ~Plan() { deinit(); }

  void init() {
    std::memset(static_cast<void *>(&context), 0xA5, sizeof context);
    status = vexo_rsz_new_init(pair, &context, &a, &b, factor);
  }
  void deinit() {
    status |= vexo_rsz_new_deinit(pair, &context, a, b);
    a = b = nullptr;
  }
  bool has_blocks() const {
    return status == VEXO_OK && context.exact_ratio == 0;
  }

  Picture src, dst;
  int32_t factor;
  vexo_img pair[2];
  vexo_rsz_new_context context;
  vexo_shift_set a = nullptr;
  vexo_shift_set b = nullptr;
  int32_t status = 0;
};

int32_t larger(const int32_t (&n)[2]) { return std::max(n[0], n[1]); }
int32_t entries(const vexo_rsz_new_context &c) {
  return c.types[0] + c.types[1];
}
int32_t blocks(const vexo_rsz_new_context &c) {
  int32_t count = 0;
  for (int p = 0; p < 2; ++p) {
    count += (c.short_rows[p] + c.tall_rows[p]) *
             (c.narrow_columns[p] + c.wide_columns[p]);
  }
  return count;
}

template <class Type>
void add(const Type *items, int32_t count, Sink &sink) {
  sink.add(reinterpret_cast<const uint8_t *>(items),
           static_cast<size_t>(count) * sizeof(Type));
}
void add_set(vexo_shift_set set, int32_t count, int32_t n, Sink &sink) {
  for (int32_t i = 0; set != nullptr && i < count; ++i) {
    add(set[i][0], 16 * n, sink);
  }
}
void add_numbers(const vexo_rsz_new_context &c, Sink &sink) {
  sink.add(reinterpret_cast<const uint8_t *>(&c),
           offsetof(vexo_rsz_new_context, chroma));
  add(&c.prescale, 5, sink);
}
void add_plan(const vexo_rsz_new_context &c, vexo_shift_set a, vexo_shift_set b,
              Sink &sink) {
  add_numbers(c, sink);
  const int32_t count = c.block_types != nullptr ? blocks(c) : 0;
  add(c.block_types, count, sink);
  add(c.block_columns, count, sink);
  add(c.block_rows, count, sink);
  add_set(a, entries(c), larger(c.vertical_span), sink);
  add_set(b, entries(c), larger(c.horizontal_span), sink);
}

// --- plans -------------------------------------------------------------------

// Tables of a plan, made once more.
void tables(const Function &, Source &source, Sink &sink) {
  Plan plan(source, source.one_of(kFactors));
  plan.init();
  if (!plan.has_blocks()) return;
  vexo_rsz_new_context &c = plan.context;
  const auto count = static_cast<size_t>(blocks(c));
  std::memset(c.block_types, 0xA5, count);
  std::memset(c.block_columns, 0xA5, count * sizeof(int32_t));
  std::memset(c.block_rows, 0xA5, count * sizeof(int32_t));
  split_settings(&c);
  make_shiftmatrix(&c, plan.a, plan.b);
  add_plan(c, plan.a, plan.b, sink);
}
void memory(const Function &, Source &source, Sink &sink) {
  const int32_t count = source.between(-1, 8);
  const int32_t n = source.between(-1, 20);
  vexo_shift_set set = nullptr;
  sink.add(static_cast<uint32_t>(get_mem3Dint16(&set, count, n)));
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
  Plan plan(source, source.one_of(kFactors));
  const bool init = function.address == AnyFunction(vexo_rsz_new_init);
  const int32_t axis = init ? source.between(0, 1) : 2;
  for (vexo_img &img : plan.pair) {
    for (int p = 0; p < 2; ++p) {
      const int32_t width = any_side(source, init);
      const int32_t height = any_side(source, init);
      if (axis != 0) img.width[p] = width;
      if (axis != 1) img.height[p] = height;
    }
  }
  vexo_rsz_new_context settings = {};
  settings.prescale = plan.factor;
  if (init) {
    plan.init();
  } else if (function.address == AnyFunction(algorithm_settings)) {
    plan.status = algorithm_settings(plan.pair, &settings);
  } else {
    plan.status = vexo_rsz_new_set_img(plan.pair);
  }
  sink.add(static_cast<uint32_t>(plan.status));
  add_plan(plan.context, plan.a, plan.b, sink);
  add_numbers(settings, sink);
  for (const vexo_img &img : plan.pair) add(img.width, 16, sink);
}

// --- whole pictures ----------------------------------------------------------

void add_result(const Plan &plan, Sink &sink) {
  sink.add(static_cast<uint32_t>(plan.status));
  plan.dst.add_to(sink);
  // Nothing is left of the plan.
  add_numbers(plan.context, sink);
}

void scale(const Function &, Source &source, Sink &sink) {
  Plan plan(source, source.one_of(kFactors));
  plan.init();
  add_plan(plan.context, plan.a, plan.b, sink);
  plan.status |=
      vexo_rsz_new(&plan.pair[0], &plan.pair[1], &plan.context, plan.a, plan.b);
  plan.deinit();
  add_result(plan, sink);
}

// The planes of a turned picture, of the geometry that a thumbnail is given;
// false where its rows would lie over each other.
bool make_room(const vexo_img &scaled, int32_t rotation, Picture &result) {
  const bool quarter = rotation == 1 || rotation == 2;
  const int32_t selector = result.img.color_std;
  const bool pairs = scaled.format == VEXO_FMT_NV12;
  for (int p = 0; p < 3; ++p) {
    if (rotation == 0) {
      give_memory(result, p);
      continue;
    }
    ExactPlane plane =
        exact_plane(scaled.width[p], scaled.height[p], pairs && p == 1 ? 2 : 1);
    if (quarter) plane = turned({plane})[0];
    const auto row = static_cast<int32_t>(plane.row_bytes);
    const int32_t own = std::max(result.img.stride[p], row);
    int32_t stride = own;
    if (scaled.format == VEXO_FMT_YUV420 && quarter) {
      stride = scaled.buf_height[0] / (p == 0 ? 1 : 2);
    } else if (scaled.format == VEXO_FMT_YUV420 && rotation == 3) {
      stride = scaled.stride[p == 0 ? 0 : 1];
    } else if (pairs && selector < 2 && quarter) {
      const int32_t unit = selector == 0 ? 128 : 16;
      stride = (scaled.height[0] + unit - 1) / unit * unit;
    } else if (pairs && selector < 2 && rotation == 3) {
      stride = scaled.stride[p];
    }
    if (stride < row) return false;
    result.set_plane(p, plane, plane.bytes(stride));
    result.img.stride[p] = own;
  }
  return true;
}

void thumbnail(const Function &, Source &source, Sink &sink) {
  Plan plan(source, source.one_of(kFactors));
  const int32_t rotation = source.between(0, 6);
  Picture intermediate(source);
  Picture result(source);
  result.img = plan.dst.img;
  for (uint8_t *&plane : result.img.plane) plane = nullptr;
  result.img.color_std = source.between(0, 2);
  if (!make_room(plan.pair[1], rotation, result)) return;
  plan.status = vexo_txc_new_init(plan.pair, &intermediate.img, &plan.context,
                                  &plan.a, &plan.b, plan.factor, rotation);
  plan.status |= vexo_txc_new(plan.pair, &result.img, &intermediate.img,
                              &plan.context, plan.a, plan.b, rotation);
  plan.status |= vexo_txc_new_deinit(plan.pair, &intermediate.img,
                                     &plan.context, plan.a, plan.b, rotation);
  plan.a = plan.b = nullptr;
  add_result(plan, sink);
  add(result.img.width, 16, sink);
  result.add_to(sink);
}

// Pictures of pixels and of planes, and what is planned for them.
struct Quartet {
  explicit Quartet(Source &source)
      : pictures{Picture(source), Picture(source), Picture(source),
                 Picture(source)} {
    const int32_t width = new_side(source);
    const int32_t height = new_side(source);
    const int32_t from_width = old_side(source, width, 0);
    const int32_t from_height = old_side(source, height, 0);
    for (int i = 0; i < 4; ++i) {
      Picture &picture = pictures[i];
      const int32_t rows =
          std::max(i % 2 == 0 ? from_height : height, 0) + source.between(0, 3);
      for (int p = 0; p < (i < 2 ? 1 : 3); ++p) {
        vexo_img &described = picture.img;
        described.width[p] = i % 2 == 0 ? from_width : width;
        described.height[p] = i % 2 == 0 ? from_height : height;
        described.stride[p] =
            std::max(described.width[p], 0) * (i < 2 ? 4 : 1) +
            (source.one_in(2) ? source.between(0, 40) : 0);
        described.buf_height[p] = rows;
        give_memory(picture, p);
      }
      img[i] = picture.img;
    }
    std::memset(static_cast<void *>(&context), 0xA5, sizeof context);
    status = vexo_rsz_new_rgba8888_init(img, &context, &a, &b);
  }
  ~Quartet() { vexo_rsz_new_rgba8888_deinit(img, &context, a, b); }

  Picture pictures[4];
  vexo_img img[4];
  vexo_rsz_new_context context;
  vexo_shift_set a = nullptr;
  vexo_shift_set b = nullptr;
  int32_t status;
};

void pixels(const Function &, Source &source, Sink &sink) {
  Quartet q(source);
  add_plan(q.context, q.a, q.b, sink);
  q.status |= vexo_rsz_new_rgba8888(q.img, &q.context, q.a, q.b);
  q.status |= vexo_rsz_new_rgba8888_deinit(q.img, &q.context, q.a, q.b);
  q.a = q.b = nullptr;
  sink.add(static_cast<uint32_t>(q.status));
  add_numbers(q.context, sink);
  for (const Picture &picture : q.pictures) picture.add_to(sink);
}

// --- planes ------------------------------------------------------------------

void plane(const Function &, Source &source, Sink &sink) {
  Plan plan(source, source.one_of(kFactors));
  plan.init();
  const int32_t p = source.between(0, 1);
  const vexo_rsz_new_context &c = plan.context;
  if (plan.has_blocks()) {
    const auto size = [](int32_t stride, int32_t rows) {
      return static_cast<size_t>(std::max(stride, 0)) *
             static_cast<size_t>(std::max(rows, 0));
    };
    Buffer src(source, size(c.src_stride[p], c.src_rows[p]));
    Buffer dst(source, size(c.dst_stride[p], c.dst_rows[p]));
    dct_downscaling(src.data(), dst.data(), &plan.context, plan.a, plan.b, p);
    sink.add(dst.data(), dst.size());
  }
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
  sem_init(&start, 0, 0);
  sem_init(&done, 0, 0);
  worker.start = &start;
  worker.done = &done;
  pthread_t thread;
  void *result = &worker;
  pthread_create(&thread, nullptr, function.as<void *(void *)>(), &worker);
  sem_post(&start);
  while (sem_wait(&done) != 0) {
  }
  pthread_join(thread, &result);
  sink.add(result == nullptr);
  sem_destroy(&start);
  sem_destroy(&done);
}
template <int32_t kFactor>
void chroma(const Function &function, Source &source, Sink &sink) {
  Plan plan(source, kFactor);
  plan.init();
  if (plan.has_blocks()) {
    run<vexo_rsz_new_worker>(function,
                             {&plan.pair[0], &plan.pair[1], &plan.context,
                              plan.a, plan.b, nullptr, nullptr},
                             sink);
  }
  plan.dst.add_to(sink);
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

void coefficients(const Function &, Source &source, Sink &sink) {
  const int32_t width = source.between(1, 40);
  const int32_t height = source.between(1, 40);
  Buffer block(source, static_cast<size_t>(width) * height);
  float out[16];
  FDCT_BlockXYFn(block.data(), out, height, width);
  add(out, 16, sink);
}
void product(const Function &, Source &source, Sink &sink) {
  float m[3][64] = {};
  for (int i = 0; i < 128; ++i) {
    m[i / 64][i % 64] = static_cast<float>(source.between(-999, 999)) / 7;
  }
  MatNxN_float_compute(m[0], m[1], m[2], source.between(0, 8));
  add(m[2], 64, sink);
}

void transform(const Function &, Source &source, Sink &sink) {
  Plan plan(source, source.one_of(kFactors));
  plan.init();
  const vexo_rsz_new_context &c = plan.context;
  const int32_t p = source.between(0, 1);
  const int32_t type = source.between(0, 3);
  const int32_t width = c.block_width[p][type];
  const int32_t height = c.block_height[p][type];
  // With three types there are no wider blocks.
  const bool made = type < c.types[p] && (c.types[p] != 3 || type != 1);
  if (plan.has_blocks() && made && width > 0 && height > 0) {
    const int32_t entry = (p == 0 ? 0 : c.types[0]) + type;
    Buffer block(source, static_cast<size_t>(width) * height);
    int32_t out[16];
    vexo_fdct_blocknxn_full_compute(block.data(), width, height, plan.a[entry],
                                    plan.b[entry], out);
    add(out, 16, sink);
  }
}

template <bool kCut>
void inverse(const Function &, Source &source, Sink &sink) {
  const int32_t row = source.between(0, 9);
  const int32_t column = source.between(0, 9);
  const int32_t rows = kCut ? source.between(0, 14) : row + 4;
  const int32_t stride = kCut ? source.between(0, 14) : column + 4;
  Buffer dst(source, static_cast<size_t>(stride) * rows);
  int32_t c[16];
  int32_t weights[16];
  int16_t weighted[16];
  for (int i = 0; i < 16; ++i) {
    c[i] = source.any();
    weights[i] = source.between(0, 53000);
    weighted[i] = static_cast<int16_t>(c[i]);
  }
  if (kCut) {
    vexo_idct_blocknxn_float(dst.data(), row, column, weighted, stride, rows);
  } else {
    vexo_idct_block4x4(dst.data(), row, column, stride, c, weights);
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
    LOX_FUNCTION(inverse<false>, vexo_idct_block4x4),
    LOX_FUNCTION(inverse<true>, vexo_idct_blocknxn_float),
};

}  // namespace

const Family dct_family = make_family("dct", 100, kFunctions);

}  // namespace lox_test
