// SPDX-License-Identifier: Apache-2.0
//
// In place of the av_ files where ffmpeg's libraries are not there.
#include "error.h"
#include "video.h"

namespace vexo {

namespace {

[[noreturn]] void refuse(const ByteSource &source) {
  throw Error(source.name() +
              " is no PNG, PGM, PPM or Y4M, and this program is built without "
              "ffmpeg's libraries, which read others");
}

}  // namespace

std::unique_ptr<VideoReader> read_video(std::unique_ptr<ByteSource> source,
                                        const VideoWish &) {
  refuse(*source);
}

FileFacts video_facts(std::unique_ptr<ByteSource> source) { refuse(*source); }

std::unique_ptr<FrameWriter> write_video(const std::string &path,
                                         const StreamInfo &,
                                         const EncodeOptions &) {
  throw Error("cannot write " + path +
              ": this program is built without ffmpeg's libraries");
}

bool reads_videos() { return false; }

}  // namespace vexo
