// SPDX-License-Identifier: Apache-2.0
//
// What a frame costs in an element, beside GStreamer's own:
//   element_times [TURNS]
// prints a table: the lowest time of a frame of so many turns, in each of which
// a contender does four frames; of one thread that of its processor, of two by
// the clock. Elements are as they come but for their number of threads.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <string>

namespace {

struct Job {
  const char *name, *in, *out, *own, *theirs;
  bool small;  // to 720 lines
};
constexpr const char *kConvert = "vexoconvert n-threads=%";
constexpr const char *kVideoconvert = "videoconvert n-threads=%";
constexpr Job kJobs[] = {
    {"NV12 to RGBA, BT.709", "format=NV12, colorimetry=bt709", "format=RGBA",
     kConvert, kVideoconvert, false},
    {"NV12 to RGBA, BT.601", "format=NV12, colorimetry=bt601", "format=RGBA",
     kConvert, kVideoconvert, false},
    {"I420 to BGRx, BT.601", "format=I420, colorimetry=bt601", "format=BGRx",
     kConvert, kVideoconvert, false},
    {"RGBA to NV12, BT.601", "format=RGBA", "format=NV12, colorimetry=bt601",
     kConvert, kVideoconvert, false},
    {"NV12 to 720p", "format=NV12, colorimetry=bt709", "format=NV12", kConvert,
     "videoscale n-threads=%", true},
    {"NV12 to 720p RGBA, BT.709", "format=NV12, colorimetry=bt709",
     "format=RGBA", kConvert, "videoconvertscale n-threads=%", true},
    {"NV12 turned", "format=NV12, colorimetry=bt709", "format=NV12",
     "vexoconvert n-threads=% video-direction=90r",
     "videoflip video-direction=90r", false},
    {"NV12 to 720p BGRx, turned, BT.601", "format=NV12, colorimetry=bt601",
     "format=BGRx", "vexoconvert n-threads=% video-direction=90r",
     "videoconvert n-threads=% ! videoscale n-threads=% ! "
     "videoflip video-direction=90r",
     true},
    {"NV12 to RGBA, BT.709, interpolated", "format=NV12, colorimetry=bt709",
     "format=RGBA", "vexoconvert n-threads=% chroma-resampler=linear",
     kVideoconvert, false},
};

std::string with_threads(std::string launch, int threads) {
  for (size_t at = launch.find('%'); at != std::string::npos;
       at = launch.find('%')) {
    launch.replace(at, 1, std::to_string(threads));
  }
  return launch;
}

std::string size_of(int width, int height) {
  return ", width=" + std::to_string(width) +
         ", height=" + std::to_string(height);
}

// A contender with frames to take in turn: no cache holds all of them.
class Contender {
 public:
  Contender(const std::string &launch, const std::string &in,
            const std::string &out)
      : h_(gst_harness_new_parse(launch.c_str())) {
    gst_harness_set_caps_str(h_, in.c_str(), out.c_str());
    GstCaps *caps = gst_caps_from_string(in.c_str());
    GstVideoInfo info;
    gst_video_info_from_caps(&info, caps);
    gst_caps_unref(caps);
    for (GstBuffer *&frame : frames_) {
      frame = gst_buffer_new_allocate(nullptr, info.size, nullptr);
      GstMapInfo map;
      gst_buffer_map(frame, &map, GST_MAP_WRITE);
      for (gsize i = 0; i < map.size; ++i) {
        map.data[i] = static_cast<guint8>(16 + (i * 7 + i / 1024) % 200);
      }
      gst_buffer_unmap(frame, &map);
    }
  }
  ~Contender() {
    for (GstBuffer *frame : frames_) gst_buffer_unref(frame);
    gst_harness_teardown(h_);
  }
  Contender(const Contender &) = delete;
  Contender &operator=(const Contender &) = delete;

  // The least microseconds of a frame, of all of them.
  double time(clockid_t clock) {
    double best = 1e9;
    for (GstBuffer *frame : frames_) {
      const double start = now(clock);
      if (gst_harness_push(h_, gst_buffer_ref(frame)) != GST_FLOW_OK) {
        fputs("element_times: a frame was refused\n", stderr);
        exit(1);
      }
      gst_buffer_unref(gst_harness_pull(h_));
      best = std::min(best, now(clock) - start);
    }
    return best;
  }

 private:
  static double now(clockid_t clock) {
    timespec t;
    clock_gettime(clock, &t);
    return static_cast<double>(t.tv_sec) * 1e6 +
           static_cast<double>(t.tv_nsec) / 1e3;
  }

  static constexpr int kFrames = 4;
  GstHarness *h_;
  GstBuffer *frames_[kFrames] = {};
};

void measure(const Job &job, int lines, int threads, int count) {
  const bool turned = strstr(job.own, "90r") != nullptr;
  const int width = lines * 16 / 9;
  const int out_lines = job.small ? 720 : lines;
  const int out_width = out_lines * 16 / 9;
  const std::string raw = "video/x-raw, pixel-aspect-ratio=1/1, ";
  const std::string in = raw + "framerate=25/1, interlace-mode=progressive, " +
                         job.in + size_of(width, lines);
  const std::string out =
      raw + job.out +
      (turned ? size_of(out_lines, out_width) : size_of(out_width, out_lines));
  Contender own(with_threads(job.own, threads), in, out);
  Contender theirs(with_threads(job.theirs, threads), in, out);
  double best[2] = {1e9, 1e9};
  const clockid_t clock =
      threads == 1 ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC;
  for (int i = 0; i < count; ++i) {
    const double times[2] = {own.time(clock), theirs.time(clock)};
    for (int c = 0; c < 2; ++c) best[c] = std::min(best[c], times[c]);
  }
  std::string peer = with_threads(job.theirs, threads);
  for (size_t at; (at = peer.find(" n-threads=")) != std::string::npos;) {
    peer.erase(at, 12);
  }
  printf("| %s | %dp | %d | %.0f | %.0f | %.2f | `%s` |\n", job.name, lines,
         threads, best[0], best[1], best[0] / best[1], peer.c_str());
  fflush(stdout);
}

}  // namespace

int main(int argc, char **argv) {
  gst_init(&argc, &argv);
  const int count = argc > 1 ? atoi(argv[1]) : 20;
  puts("| job | of | threads | us a frame | theirs | ratio | theirs is |");
  puts("|---|--:|--:|--:|--:|--:|---|");
  for (const int lines : {1080, 2160}) {
    for (const Job &job : kJobs) {
      for (const int threads : {1, 2}) measure(job, lines, threads, count);
    }
  }
  return 0;
}
