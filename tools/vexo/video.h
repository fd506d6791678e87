// SPDX-License-Identifier: Apache-2.0
//
// Pictures and videos that libavformat and libavcodec read.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "io.h"

namespace vexo {

struct VideoWish {
  // Of the file; -1: the one that players would show.
  int stream = -1;
  // Where to begin, as "12.5s", "1:02:03" or "30%"; empty: at the beginning.
  std::string at;
  // Frames of HDR have to stay of 10 bits.
  bool hdr = false;
  // Damaged frames are taken as the decoder mends them.
  bool tolerant = false;
  // Key frames alone, from one at a tenth of the length on, and no threads.
  bool pick = false;
};

class VideoReader : public FrameReader {
 public:
  // In seconds; 0 of a still picture and where nothing is said.
  virtual double duration() const = 0;
  // The next frame is one near this time, the key frame at or before it if the
  // reader gives key frames alone.
  virtual void seek_near(double seconds) = 0;
  // Of the frame that was read last, in seconds.
  virtual double time() const = 0;
};

// Throws Error when this program is built without them.
std::unique_ptr<VideoReader> read_video(std::unique_ptr<ByteSource> source,
                                        const VideoWish &wish);

struct StreamFacts {
  std::string type;
  std::string codec;
  // Of videos alone, from here on.
  bool video = false;
  std::string pixels;
  StreamInfo info;
  int64_t frames = 0;
  // In seconds.
  std::vector<double> key_frames;
};

struct FileFacts {
  std::string container;
  double duration = 0;
  std::vector<StreamFacts> streams;
  // Whether it ends before it should.
  bool cut = false;
};

FileFacts video_facts(std::unique_ptr<ByteSource> source);

// Whether it is built with them.
bool reads_videos();

}  // namespace vexo
