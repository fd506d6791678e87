// SPDX-License-Identifier: Apache-2.0
//
// Scales an RGBA8888 picture by its plan: three planes on three threads, or
// together on one.
#include <cstdint>

#include "dct/helper_thread.h"
#include "dct/plane.h"
#include "orumlox/csc_layout.h"

namespace lox {

namespace {

template <int kPlane>
void scale_component(const vexo_rsz_new_rgba8888_worker &w) {
  dct_downscaling_rgba8888(w.src, w.dst, w.context, w.a, w.b, kPlane);
}

template <int kPlane>
using PlaneThread =
    HelperThread<vexo_rsz_new_rgba8888_worker, scale_component<kPlane>>;

// Takes rows of the source apart.
void take_apart(const vexo_img *quartet, int32_t first, int32_t rows) {
  const vexo_img &from = quartet[0];
  const vexo_img &src = quartet[2];
  const auto at = [first](uint8_t *plane, int32_t stride) {
    return plane + ptrdiff_t{first} * stride;
  };
  vexo_csc_8b8b8b8b_unpack(at(from.plane[0], from.stride[0]), from.width[0],
                           rows, from.stride[0], src.stride[0], src.stride[1],
                           src.stride[2], 0, at(src.plane[0], src.stride[0]),
                           at(src.plane[1], src.stride[1]),
                           at(src.plane[2], src.stride[2]), nullptr);
}

void scale_on_threads(const vexo_img *quartet, vexo_rsz_new_context *context,
                      vexo_shift_set a, vexo_shift_set b) {
  take_apart(quartet, 0, quartet[0].height[0]);
  const auto worker = [&](int plane) -> vexo_rsz_new_rgba8888_worker {
    return {quartet[2].plane[plane],
            quartet[3].plane[plane],
            context,
            a,
            b,
            nullptr,
            nullptr};
  };
  PlaneThread<1> second;
  PlaneThread<2> third;
  second.start(worker(1));
  third.start(worker(2));
  second.go();
  third.go();
  scale_component<0>(worker(0));
  second.finish();
  third.finish();
}

// The same on this thread alone: some rows are taken apart and then blocks made
// of them, so that they come from the nearer caches. Rows of one row of blocks
// alone are too few: from memory they come more slowly.
constexpr int32_t kTogether = 4;

void scale_here(const vexo_img *quartet, vexo_rsz_new_context *context,
                vexo_shift_set a, vexo_shift_set b) {
  const auto rows_of = [&](int32_t plane) {
    return BlockRows(context, 0, *plane_notes(context, plane),
                     work_area(context, plane), a, b);
  };
  const BlockRows planes[3] = {rows_of(0), rows_of(1), rows_of(2)};
  // A plane without room for a row is left alone; the others are equally high.
  const BlockRows *any = planes;
  for (const BlockRows &plane : planes) {
    if (plane.count() > 0) any = &plane;
  }
  const int32_t height = quartet[0].height[0];
  int32_t done = 0;
  for (int32_t i = 0; i < any->count(); i += kTogether) {
    const int32_t last = smaller(i + kTogether, any->count());
    const int64_t end = any->source_end(last - 1);
    const int32_t reach = end < height ? static_cast<int32_t>(end) : height;
    take_apart(quartet, done, reach - done);
    done = reach;
    for (int32_t plane = 0; plane < 3; ++plane) {
      for (int32_t row = i; row < smaller(last, planes[plane].count()); ++row) {
        planes[plane].scale(row, quartet[2].plane[plane],
                            quartet[3].plane[plane]);
      }
    }
  }
  take_apart(quartet, done, height - done);
}

}  // namespace

}  // namespace lox

int32_t vexo_rsz_new_rgba8888(const vexo_img *quartet,
                              vexo_rsz_new_context *context, vexo_shift_set a,
                              vexo_shift_set b) {
  if (!lox::has_plan(context)) return VEXO_OK;
  const vexo_img &to = quartet[1];
  const vexo_img &dst = quartet[3];
  if (lox::threads_gain()) {
    lox::scale_on_threads(quartet, context, a, b);
  } else {
    lox::scale_here(quartet, context, a, b);
  }
  // Pixels of which all three bytes have been scaled.
  lox::Written size = {to.width[0], to.height[0]};
  for (int plane = 0; plane < 3; ++plane) {
    const lox::Written of_plane =
        lox::written(context, 0, *lox::plane_notes(context, plane));
    size = {lox::smaller(size.width, of_plane.width),
            lox::smaller(size.height, of_plane.height)};
  }
  vexo_csc_8b8b8b8b_pack(to.plane[0], size.width, size.height, to.stride[0],
                         dst.stride[0], dst.stride[1], dst.stride[2], 0,
                         dst.plane[0], dst.plane[1], dst.plane[2], nullptr);
  return VEXO_OK;
}

void *vexo_new_rsz_thread_prsz_4_rgba8888(void *worker) {
  pthread_exit(lox::PlaneThread<1>::run(worker));
}

void *vexo_new_rsz_thread_prsz_4_rgba8888_1(void *worker) {
  pthread_exit(lox::PlaneThread<2>::run(worker));
}
