// SPDX-License-Identifier: Apache-2.0
//
// Scales an RGBA8888 picture by its plan: three planes on three threads.
#include <cstdint>

#include "dct/helper_thread.h"
#include "dct/plan.h"
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

}  // namespace

}  // namespace lox

int32_t vexo_rsz_new_rgba8888(const vexo_img *quartet,
                              vexo_rsz_new_context *context, vexo_shift_set a,
                              vexo_shift_set b) {
  if (!lox::has_plan(context)) return VEXO_OK;
  const vexo_img &from = quartet[0];
  const vexo_img &to = quartet[1];
  const vexo_img &src = quartet[2];
  const vexo_img &dst = quartet[3];
  vexo_csc_8b8b8b8b_unpack(from.plane[0], from.width[0], from.height[0],
                           from.stride[0], src.stride[0], src.stride[1],
                           src.stride[2], 0, src.plane[0], src.plane[1],
                           src.plane[2], nullptr);
  const auto worker = [&](int plane) -> vexo_rsz_new_rgba8888_worker {
    return {src.plane[plane], dst.plane[plane], context, a, b,
            nullptr,          nullptr};
  };
  lox::PlaneThread<1> second;
  lox::PlaneThread<2> third;
  second.start(worker(1));
  third.start(worker(2));
  second.go();
  third.go();
  lox::scale_component<0>(worker(0));
  second.finish();
  third.finish();
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
