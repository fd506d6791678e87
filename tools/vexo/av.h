// SPDX-License-Identifier: Apache-2.0
//
// What the tool has of libavformat, libavcodec and libavutil.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

#include <cstdint>
#include <memory>
#include <string>

#include "io.h"

namespace vexo {

std::string av_reason(int error);

// Of a picture: what damaged headers claim must not fill the memory.
constexpr int64_t kMostPixels = int64_t{1} << 28;

struct FreeAv {
  void operator()(AVFrame *frame) const { av_frame_free(&frame); }
  void operator()(AVPacket *packet) const { av_packet_free(&packet); }
  void operator()(AVCodecContext *context) const {
    avcodec_free_context(&context);
  }
};
using AvPacket = std::unique_ptr<AVPacket, FreeAv>;
using AvCodec = std::unique_ptr<AVCodecContext, FreeAv>;
using AvFrame = std::shared_ptr<AVFrame>;
AvFrame new_av_frame();

// An open container. It reads its own bytes alone: names of other files in it
// are not followed.
class AvFile {
 public:
  explicit AvFile(std::unique_ptr<ByteSource> source);
  ~AvFile();
  AvFile(const AvFile &) = delete;
  AvFile &operator=(const AvFile &) = delete;

  AVFormatContext *get() const { return format_; }
  const std::string &name() const { return source_->name(); }
  // Finds out what the container's head does not say.
  void look_closer();
  // -1: that of the best video. Throws Error when it is none.
  AVStream *video(int wanted) const;
  // In seconds; 0 where nothing is said.
  double duration() const;
  // Whether an index names bytes beyond the end.
  bool is_cut(const AVStream *stream) const;
  // Whether the container said so while it was read.
  bool ended_early() const;
  [[noreturn]] void fail(int error) const;

 private:
  std::unique_ptr<ByteSource> source_;
  AVIOContext *io_ = nullptr;
  AVFormatContext *format_ = nullptr;
};

// Side data of a stream, or null.
const uint8_t *stream_side_data(const AVStream *stream,
                                AVPacketSideDataType type, size_t *size);

// Of a stream's first frame, in its ticks; 0 where nothing is said.
int64_t start_of(const AVStream &stream);
// From there on, in seconds; 0 where nothing is said.
double seconds_of_ticks(const AVStream &stream, int64_t ticks);

// What a stream says of itself, without its pictures: colours, turns, rate,
// aspect.
StreamInfo info_of_stream(AVFormatContext *format, AVStream *stream);
// What a frame of it says better.
void refine_info(const AVFrame &frame, StreamInfo *info);

// The layout that frames of this format are read in; null: none. `hdr` wants 10
// bits.
const Layout *layout_of_pixels(AVPixelFormat format, bool hdr);
// A frame as one of the library's: its own planes where they are as they should
// be, else the given frame is filled.
void take_frame(const AvFrame &from, const Colour &colour, Frame *to);

}  // namespace vexo
