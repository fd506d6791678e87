// SPDX-License-Identifier: Apache-2.0
// The tool's way through ffmpeg's libraries, on files that libFuzzer makes up:
// containers, packets, pixels of any format as frames of the library. The first
// byte chooses how they are wanted.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "../../tools/vexo/error.h"
#include "../../tools/vexo/video.h"
#include "asan_options.h"

static void require(bool condition) {
  if (!condition) std::abort();
}

// What comes through a pipe, in which nobody can seek.
struct Pipe {
  const uint8_t *bytes;
  size_t left;

  static ssize_t read(void *pipe, char *to, size_t count) {
    Pipe &from = *static_cast<Pipe *>(pipe);
    count = std::min(count, from.left);
    std::memcpy(to, from.bytes, count);
    from.bytes += count;
    from.left -= count;
    return static_cast<ssize_t>(count);
  }
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  Pipe pipe = {data + 1, size - 1};
  std::FILE *const stream =
      (data[0] & 64) != 0
          ? fopencookie(&pipe, "rb", {Pipe::read, nullptr, nullptr, nullptr})
          : fmemopen(const_cast<uint8_t *>(data + 1), size - 1, "rb");
  require(stream != nullptr);
  auto source = std::make_unique<vexo::ByteSource>(stream, "input");
  try {
    if ((data[0] & 1) != 0) vexo::kind_of_content(*source);
    if ((data[0] & 2) != 0) {
      for (const auto &about : vexo::video_facts(std::move(source)).streams) {
        require(about.key_frames.size() <= static_cast<size_t>(about.frames));
      }
      return 0;
    }
    vexo::VideoWish wish;
    wish.tolerant = (data[0] & 4) != 0;
    wish.hdr = (data[0] & 8) != 0;
    wish.pick = (data[0] & 16) != 0;
    if ((data[0] & 32) != 0) wish.at = "50%";
    const auto reader = vexo::read_video(std::move(source), wish);
    const vexo::StreamInfo &info = reader->info();
    require(std::min(info.width, info.height) >= 1);
    if (info.width * info.height > 65536) return 0;
    vexo::Frame frame(*info.layout, info.width, info.height, VEXO_STD_DEFAULT);
    for (int i = 0; i < 9 && reader->read(frame); ++i) {
      require(&frame.layout() == info.layout);
      require(frame.width() == info.width && frame.height() == info.height);
    }
  } catch (const vexo::Error &error) {
    // The file's name, or the option that it has no place for.
    require(std::strstr(error.what(), "input") != nullptr ||
            std::strstr(error.what(), "frame") != nullptr);
  }
  return 0;
}
