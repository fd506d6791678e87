// SPDX-License-Identifier: Apache-2.0
#include "pick.h"

#include <algorithm>
#include <cmath>

namespace vexo {
namespace {

struct Look {
  double mean = 0;
  double deviation = 0;

  // Of 8 bits: black is 16 in most videos.
  bool dull() const { return mean < 32 || deviation < 8; }
};

// Of every fourth sample of every fourth row.
Look look_at(const Frame &frame) {
  const bool words = frame.layout().code >= VEXO_FMT_YUV420PLANAR16;
  const int step = words ? 8 : 4;
  double sum = 0;
  double squares = 0;
  int64_t count = 0;
  for (int y = 0; y < frame.rows(0); y += 4) {
    const uint8_t *const row = frame.row(0, y);
    for (int x = 0; x + 1 < frame.row_bytes(0); x += step) {
      int value = row[x];
      if (words) {
        value |= row[x + 1] << 8;
        value >>= frame.layout().code == VEXO_FMT_P010LE ? 8 : 2;
      }
      sum += value;
      squares += value * value;
      ++count;
    }
  }
  Look look;
  if (count == 0) return look;
  look.mean = sum / static_cast<double>(count);
  look.deviation = std::sqrt(std::max(
      squares / static_cast<double>(count) - look.mean * look.mean, 0.0));
  return look;
}

}  // namespace

// The reader begins there, or a little before.
bool pick_frame(VideoReader &video, Frame *frame) {
  constexpr int kMostLooks = 12;
  const double after = video.duration() / 10;
  const StreamInfo &info = video.info();
  Frame next(*info.layout, info.width, info.height, frame->img().color_std);
  double best = -1;
  for (int looks = 0; looks < kMostLooks && video.read(next); ++looks) {
    const Look look = look_at(next);
    // What lies before the tenth serves if nothing follows.
    const bool early = video.time() < after - 0.001;
    if (early) --looks;
    const double worth = early ? 0 : look.deviation;
    if (worth > best || best < 0) {
      best = worth;
      std::swap(*frame, next);
    }
    if (!early && !look.dull()) return true;
  }
  return best >= 0;
}

}  // namespace vexo
