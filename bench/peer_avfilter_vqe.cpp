// SPDX-License-Identifier: Apache-2.0
//
// FFmpeg's filters that sharpen and that deblock, on one thread. Each writes a
// frame of its own, always the same one, which caches hold: in its favour.
#include <memory>
#include <vector>

#include "bench/enhancing.h"
#include "bench/filter_graph.h"
#include "bench/vqe_bench.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace bench {

namespace {

struct Peer {
  const char *name, *filter;
};

// convolution has the very kernel. unsharp is an unsharp mask whose blur of
// 5 x 5 weighs otherwise, and takes no picture without chroma.
constexpr Peer kConvolution = {
    "FFmpeg convolution",
    "convolution=0 0 -1 0 0 0 -1 -2 -1 0 -1 -2 32 -2 -1 0 -1 -2 -1 0 "
    "0 0 -1 0 0:0rdiv=1/16"};
constexpr Peer kUnsharp = {"FFmpeg unsharp", "unsharp=5:5:1:5:5:0"};

constexpr Peer kDeblocking[] = {
    {"FFmpeg deblock weak", "deblock=filter=weak:block=8"},
    {"FFmpeg deblock strong", "deblock=filter=strong:block=8"},
    {"FFmpeg pp hb+vb", "pp=hb/vb/fq|24"},
    {"FFmpeg pp h1+v1", "pp=h1/v1/fq|24"},
};

// `describe_src` and `describe_dst` give the frames that the filter reads and
// the check compares.
template <typename Src, typename Dst>
void add(const Peer &peer, AVPixelFormat format, Size size,
         const Src &describe_src, const Dst &describe_dst, Contenders *out) {
  const auto graph =
      std::make_shared<FilterGraph>(format, size, peer.filter, 1);
  // Not every build of FFmpeg has every filter.
  if (!graph->ok()) return;
  out->push_back(
      {peer.name, Contender::Kind::kPeer,
       [=](uint8_t *s, uint8_t *) { graph->run(describe_src(s), nullptr); },
       describe_dst(nullptr).format, -1,
       [=](uint8_t *d) {
         const AVFrame *frame = graph->result(nullptr);
         if (!frame) return;
         const vexo_img dst = describe_dst(d);
         for (int p = 0; p < 3 && dst.height[p] > 0; ++p) {
           av_image_copy_plane(dst.plane[p], dst.stride[p], frame->data[p],
                               frame->linesize[p], dst.width[p], dst.height[p]);
         }
       }});
}

}  // namespace

void add_avfilter_sharpening(const Workload &workload, const Sizes &sizes,
                             Contenders *out) {
  if (workload.task != Task::kSharpen) return;
  const auto grey = [=](uint8_t *bytes) {
    return bench::describe_src(workload, sizes, bytes);
  };
  add(kConvolution, AV_PIX_FMT_GRAY8, sizes.src, grey, grey, out);
  // The same chroma for all frames: no memory's time counts for it.
  const auto chroma = std::make_shared<std::vector<uint8_t>>(
      frame_bytes(describe(VEXO_FMT_YUV420, sizes.src, nullptr)), uint8_t{128});
  const auto with_chroma = [=](uint8_t *bytes) {
    vexo_img img = describe(VEXO_FMT_YUV420, sizes.src, chroma->data());
    img.plane[0] = bytes;
    return img;
  };
  add(kUnsharp, AV_PIX_FMT_YUV420P, sizes.src, with_chroma, grey, out);
}

void add_avfilter_deblocking(Contenders *out) {
  const auto planes = [](uint8_t *bytes) {
    return describe(VEXO_FMT_YUV420, kDeblocked, bytes);
  };
  for (const Peer &peer : kDeblocking) {
    add(peer, AV_PIX_FMT_YUV420P, kDeblocked, planes, planes, out);
  }
}

}  // namespace bench
