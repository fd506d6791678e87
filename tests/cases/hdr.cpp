// SPDX-License-Identifier: Apache-2.0
// Tone mapping, and the parts of it that are exported.
#include <orumlox/unprefixed.h>

#include <cmath>
#include <cstring>

#include "cases/cases.h"

namespace lox_test {
namespace {

// Pictures, and a destination of the bytes that a whole one takes. Codes of
// which every chunk prints a line are left out.
constexpr int32_t kSources[] = {VEXO_FMT_YUV420PLANAR16,
                                VEXO_FMT_YUV420PLANAR16,
                                VEXO_FMT_P010LE,
                                VEXO_FMT_P010LE,
                                VEXO_FMT_P010LE,
                                VEXO_FMT_NV12,
                                -1};
constexpr int32_t kDestinations[] = {VEXO_FMT_RGB888,
                                     VEXO_FMT_RGBA8888,
                                     VEXO_FMT_ARGB8888,
                                     VEXO_FMT_YUV420,
                                     VEXO_FMT_YV12,
                                     VEXO_FMT_NV12,
                                     VEXO_FMT_NV21,
                                     VEXO_FMT_YUV400,
                                     VEXO_FMT_UYVY,
                                     VEXO_FMT_P010LE,
                                     -1};

constexpr int32_t kModes[] = {0, 1, 1, 257};

// Luma that chooses each nit, or codes beyond 10 bits.
void darken(Source &source, uint8_t *luma, size_t size) {
  constexpr int32_t kMost[] = {750, 751, 810, 811, 1023, 0xFFFF};
  const int32_t most = source.one_of(kMost);
  for (size_t i = 0; i + 1 < size; i += 2) {
    uint16_t word = 0;
    std::memcpy(&word, luma + i, sizeof word);
    word = static_cast<uint16_t>(word % (most + 1));
    std::memcpy(luma + i, &word, sizeof word);
  }
}
bool is_aligned(const uint8_t *luma) {
  return reinterpret_cast<uintptr_t>(luma) % 2 == 0;
}

struct Pictures {
  // The destination has room for so many more rows.
  explicit Pictures(Source &source, int32_t more = 0)
      : src(source), dst(source) {
    const int32_t width = source.width();
    const int32_t height = source.height();
    const int32_t format = source.one_of(kSources);
    src.img.format = format;
    src.img.mode = source.one_of(kModes);
    src.img.source_nit =
        source.one_in(4) ? source.any() : source.between(1400, 1600);
    const bool measured = src.img.mode == VEXO_HDR_MODE_MEASURE;
    ExactImage image = {exact_plane(width, height, 2)};
    if (format >= VEXO_FMT_YUV420PLANAR16) {
      image = exact_image(format, width, height);
    } else if (!measured) {
      image = {};
    }
    src.draw_strides(image);
    src.img.stride[2] = src.img.stride[1];
    for (int p = 0; p < 3; ++p) {
      // Luma that is measured is aligned.
      do {
        src.set_plane(p, image[p], image[p].bytes(src.img.stride[p] & ~1));
      } while (p == 0 && measured && !is_aligned(src.img.plane[0]));
    }
    const int64_t bytes = image[0].bytes(src.img.stride[0] & ~1);
    darken(source, src.img.plane[0], static_cast<size_t>(bytes));
    src.img.width[0] = width;
    src.img.height[0] = height;
    dst.img.format = source.one_of(kDestinations);
    dst.set(exact_hdr_destination(dst.img.format, width, height + more));
  }

  Picture src, dst;
};

template <class... More>
void picture(const Function &function, Source &source, Sink &sink) {
  Pictures p(source);
  const auto call =
      function.as<int32_t(vexo_img *, const vexo_img *, More...)>();
  sink.add(static_cast<uint32_t>(
      call(&p.src.img, &p.dst.img, More{source.between(-2, 5)}...)));
  sink.add(static_cast<uint32_t>(p.src.img.source_nit));
  p.dst.add_to(sink);
}

// Tables of any contents within their limits.
struct Context {
  explicit Context(Source &source, int32_t more = 0) : pictures(source, more) {
    std::memset(static_cast<void *>(&context), 0xA5, sizeof context);
    const vexo_img &img = pictures.src.img;
    context.width = img.width[0];
    context.height = img.height[0];
    context.chunk = img.width[0] % 32 == 0   ? 32
                    : img.width[0] % 16 == 0 ? 16
                                             : 8;
    context.variant = source.between(0, 2);
    context.hlg = source.between(0, 1);
    fill(source, context.pq, 32767);
    fill(source, context.gain, 4095);
    fill(source, context.hlg_linear, 32767);
    source.fill(context.gamma, sizeof context.gamma);
    context.src = &img;
    context.dst = &pictures.dst.img;
  }
  template <size_t kCount>
  static void fill(Source &source, uint16_t (&table)[kCount], uint16_t most) {
    source.fill(reinterpret_cast<uint8_t *>(table), sizeof table);
    for (uint16_t &entry : table) entry &= most;
  }

  Pictures pictures;
  vexo_hdr_context context;
};

void band(const Function &function, Source &source, Sink &sink) {
  Context c(source, 4);  // whatever row a band begins at
  const int32_t first = source.between(-4, std::max(c.context.height, 0) + 1);
  sink.add(static_cast<uint32_t>(function.as<decltype(_vexo_hdr10_to_sdr8)>()(
      &c.context, first, first + source.between(-1, 4))));
  c.pictures.dst.add_to(sink);
}

// All bands, by one thread that is not this one: they may lie over each other.
void thread(const Function &function, Source &source, Sink &sink) {
  Context c(source);
  vexo_hdr_scheduler scheduler;
  scheduler.next = 4;
  scheduler.limit = c.context.height;
  pthread_mutex_init(&scheduler.mutex, nullptr);
  vexo_hdr_worker worker = {&c.context, &scheduler, 0};
  const void *const result = on_thread(function, &worker);
  pthread_mutex_destroy(&scheduler.mutex);
  sink.add(result == nullptr);
  sink.add(static_cast<uint32_t>(scheduler.next));
  c.pictures.dst.add_to(sink);
}

void start(const Function &, Source &source, Sink &sink) {
  vexo_hdr_scheduler scheduler;
  scheduler.next = source.any();
  scheduler.limit = source.one_in(8) ? INT32_MAX : source.any();
  if (scheduler.limit > 0 && source.one_in(2)) {
    scheduler.next = scheduler.limit - source.between(0, 7);
  }
  pthread_mutex_init(&scheduler.mutex, nullptr);
  for (int i = 0; i < 4; ++i) {
    sink.add(static_cast<uint32_t>(getStart(&scheduler)));
    sink.add(static_cast<uint32_t>(scheduler.next));
  }
  pthread_mutex_destroy(&scheduler.mutex);
}

// C libraries differ in a power's last bits.
void curve(const Function &function, Source &source, Sink &sink) {
  const double x = source.between(0, 1000) / 1000.0;
  const double s = source.between(0, 100) / 10.0;
  const double t = source.between(0, 100) / 1000.0;
  const int32_t n = source.between(0, 40);
  const double a = source.between(-100, 100) / 100.0;
  const double y = function.as<decltype(TMO_VD_Norm)>()(x, s, t, s * t, n, a);
  sink.add(static_cast<uint64_t>(std::llround(y * 1e9)));
}

void analysis(const Function &function, Source &source, Sink &sink) {
  const int32_t width =
      source.one_in(4) ? source.between(1998, 2003) : source.width();
  const int32_t height = source.height();
  const int64_t bytes = exact_plane(width, height, 2).bytes(int64_t{2} * width);
  Buffer memory;
  do {
    memory.reset(source, static_cast<size_t>(bytes));
  } while (!is_aligned(memory.data()));
  darken(source, memory.data(), memory.size());
  const void *const luma = memory.data();
  sink.add(static_cast<uint32_t>(function.as<decltype(Analyze_SrcLuma)>()(
      width, height, static_cast<const uint16_t *>(luma))));
}

const Function kFunctions[] = {
    LOX_FUNCTION(picture<int32_t>, vexo_hdr_to_sdr),
    LOX_FUNCTION(picture<int32_t>, vexo_hdr10_to_sdr8),
    LOX_FUNCTION(picture<>, vexo_hlg_to_sdr8),
    LOX_FUNCTION(band, _vexo_hdr10_to_sdr8),
    LOX_FUNCTION(thread, thread_vexo_hdr10_to_sdr8),
    LOX_FUNCTION(start, getStart),
    LOX_FUNCTION(curve, TMO_VD_Norm),
    LOX_FUNCTION(analysis, Analyze_SrcLuma),
};

}  // namespace

const Family hdr_family = make_family("hdr", 100, kFunctions);

}  // namespace lox_test
