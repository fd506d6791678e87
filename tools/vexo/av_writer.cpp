// SPDX-License-Identifier: Apache-2.0
//
// Videos, encoded by libavcodec: H.264, or what the container is for.
#include <algorithm>
#include <cstring>
#include <map>
#include <new>

#include "av.h"
#include "error.h"
#include "signals.h"
#include "video.h"

extern "C" {
#include <libavutil/common.h>
#include <libavutil/opt.h>
}

namespace vexo {
namespace {

constexpr int kBuffer = 1 << 18;
constexpr int kUsualQuality = 55;

AVPixelFormat pixels_of(const Layout &layout) {
  switch (layout.code) {
    case VEXO_FMT_YUV422N:
      return AV_PIX_FMT_YUV422P;
    case VEXO_FMT_YUV444:
      return AV_PIX_FMT_YUV444P;
    case VEXO_FMT_YUV420PLANAR16:
      return AV_PIX_FMT_YUV420P10LE;
    default:
      return AV_PIX_FMT_YUV420P;
  }
}

// Older headers have bytes that are not const here.
#if LIBAVFORMAT_VERSION_MAJOR >= 61
using WrittenBytes = const uint8_t;
#else
using WrittenBytes = uint8_t;
#endif

int write_bytes(void *opaque, WrittenBytes *bytes, int count) {
  try {
    static_cast<ByteSink *>(opaque)->write(bytes, static_cast<size_t>(count));
    return count;
  } catch (const Error &) {
    return AVERROR(EIO);
  }
}

int64_t seek_bytes(void *opaque, int64_t offset, int whence) {
  if (whence != SEEK_SET) return AVERROR(EINVAL);
  try {
    static_cast<ByteSink *>(opaque)->seek(offset);
    return offset;
  } catch (const Error &) {
    return AVERROR(EIO);
  }
}

class VideoWriter : public FrameWriter {
 public:
  VideoWriter(const std::string &path, const StreamInfo &info,
              const EncodeOptions &options)
      : path_(path), info_(info), options_(options) {
    av_log_set_level(AV_LOG_QUIET);
  }
  ~VideoWriter() override {
    if (io_ != nullptr) av_freep(&io_->buffer);
    avio_context_free(&io_);
    avformat_free_context(format_);
  }

  void write(const Frame &frame, const std::string &,
             const Showing &showing) override {
    if (!sink_) open();
    const AvFrame sent = new_av_frame();
    sent->width = frame.width();
    sent->height = frame.height();
    sent->format = codec_->pix_fmt;
    check(av_frame_get_buffer(sent.get(), 0), "encode");
    for (int p = 0; p < frame.layout().planes; ++p) {
      for (int y = 0; y < frame.rows(p); ++y) {
        std::copy_n(frame.row(p, y), frame.row_bytes(p),
                    sent->data[p] + int64_t{sent->linesize[p]} * y);
      }
    }
    set_time(showing, sent.get());
    send_on(sent.get());
  }

  void finish() override {
    send_on(nullptr);
    check(av_write_trailer(format_), "write");
    avio_flush(io_);
    check(io_->error, "write");
    sink_->commit();
  }

 private:
  void check(int status, const char *what) const {
    if (status >= 0) return;
    throw Error(std::string("cannot ") + what + " " + path_ + ": " +
                av_reason(status));
  }

  void open() {
    const char *const piped = path_ == "-" ? "matroska" : nullptr;
    check(
        avformat_alloc_output_context2(&format_, nullptr, piped, path_.c_str()),
        "write");
    open_codec();
    sink_.emplace(path_);
    const bool seekable = sink_->seekable();
    auto *const buffer = static_cast<uint8_t *>(av_malloc(kBuffer));
    io_ = avio_alloc_context(buffer, kBuffer, 1, &*sink_, nullptr, write_bytes,
                             seekable ? seek_bytes : nullptr);
    if (io_ == nullptr) throw std::bad_alloc();
    format_->pb = io_;
    AVDictionary *wishes = nullptr;
    // Players may begin before all has come.
    if (!seekable) av_dict_set(&wishes, "movflags", "empty_moov", 0);
    const int status = avformat_write_header(format_, &wishes);
    av_dict_free(&wishes);
    check(status, "write");
  }

  // Times count from the first frame, which is shown at once. Where the input
  // has none, or its frames too many for the encoder's ticks, a frame follows
  // the one before it.
  void set_time(const Showing &showing, AVFrame *frame) {
    // Beyond all that is meant, and far from the end of numbers.
    constexpr int64_t kMost = int64_t{1} << 60;
    const AVRational base = codec_->time_base;
    const AVRational tick = {info_.tick.num, info_.tick.den};
    const bool timed = showing.at && info_.tick.num > 0;
    int64_t time = next_;
    if (timed) {
      if (!first_) first_ = *showing.at;
      const int64_t since = av_sat_sub64(*showing.at, *first_);
      time = std::max(std::min(av_rescale_q(since, tick, base), kMost), least_);
    }
    const int64_t length =
        timed && showing.length > 0
            ? av_rescale_q(showing.length, tick, base)
            : av_rescale_q(1, av_inv_q(codec_->framerate), base);
    frame->pts = time;
    least_ = time + 1;
    next_ = time + std::clamp<int64_t>(length, 1, kMost);
    lengths_[time] = next_ - time;
  }

  void open_codec() {
    const AVOutputFormat *const kind = format_->oformat;
    const AVCodec *encoder = nullptr;
    // Of some containers nobody says what they hold.
    if (avformat_query_codec(kind, AV_CODEC_ID_H264, FF_COMPLIANCE_NORMAL) !=
        0) {
      encoder = avcodec_find_encoder(AV_CODEC_ID_H264);
    }
    if (encoder == nullptr) encoder = avcodec_find_encoder(kind->video_codec);
    AVStream *const stream = avformat_new_stream(format_, nullptr);
    if (encoder == nullptr || stream == nullptr) {
      throw Error("there is no encoder for " + path_);
    }
    check_sides(*encoder);
    // The input's ticks, so that each frame keeps its time; those of a constant
    // rate where the container has no other (AVI) or the encoder none as fine.
    const Ratio rate = info_.rate.num > 0 ? info_.rate : Ratio{25, 1};
    int status = AVERROR(EINVAL);
    if (info_.tick.num > 0 && std::strcmp(kind->name, "avi") != 0) {
      status = open_encoder(encoder, rate, info_.tick);
    }
    if (status < 0) status = open_encoder(encoder, rate, {rate.den, rate.num});
    if (status < 0) {
      throw Error(std::string(encoder->name) + " refuses " +
                  info_.layout->token + " of " + std::to_string(info_.width) +
                  "x" + std::to_string(info_.height) + ": " +
                  av_reason(status));
    }
    check(avcodec_parameters_from_context(stream->codecpar, codec_.get()),
          "write");
    stream->time_base = codec_->time_base;
    stream->avg_frame_rate = codec_->framerate;
    stream->sample_aspect_ratio = codec_->sample_aspect_ratio;
  }

  // An encoder of H.264 would leave out the last column and row without a word.
  void check_sides(const AVCodec &encoder) const {
    const int32_t code = info_.layout->code;
    const bool odd = (code != VEXO_FMT_YUV444 && info_.width % 2 != 0) ||
                     (code != VEXO_FMT_YUV444 && code != VEXO_FMT_YUV422N &&
                      info_.height % 2 != 0);
    if (encoder.id != AV_CODEC_ID_H264 || !odd) return;
    throw Error("H.264 of " + std::string(info_.layout->token) +
                " has even sides, not " + std::to_string(info_.width) + "x" +
                std::to_string(info_.height) +
                ": --crop it, scale it or use --to yuv444");
  }

  // A status of libavcodec.
  int open_encoder(const AVCodec *encoder, const Ratio &rate,
                   const Ratio &tick) {
    codec_.reset(avcodec_alloc_context3(encoder));
    if (codec_ == nullptr) throw std::bad_alloc();
    AVCodecContext &codec = *codec_;
    codec.width = info_.width;
    codec.height = info_.height;
    codec.pix_fmt = pixels_of(*info_.layout);
    codec.framerate = {rate.num, rate.den};
    codec.time_base = {tick.num, tick.den};
    codec.thread_count = 0;
    if (info_.aspect.num > 0) {
      codec.sample_aspect_ratio = {info_.aspect.num, info_.aspect.den};
    }
    set_colours(&codec);
    if ((format_->oformat->flags & AVFMT_GLOBALHEADER) != 0) {
      codec.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    // 51 is the coarsest that H.264 has, 31 that of older encoders.
    const int quality = options_.quality < 0 ? kUsualQuality : options_.quality;
    const double coarse = (100 - quality) / 100.0;
    if (av_opt_set_double(&codec, "crf", 51 * coarse, AV_OPT_SEARCH_CHILDREN) <
        0) {
      codec.flags |= AV_CODEC_FLAG_QSCALE;
      codec.global_quality = static_cast<int>(FF_QP2LAMBDA * (1 + 30 * coarse));
    }
    const SignalsForMain block;
    return avcodec_open2(&codec, encoder, nullptr);
  }

  // What the samples are, also where the input did not say.
  void set_colours(AVCodecContext *codec) const {
    const Colour &colour = info_.colour;
    const bool full = is_full_range(info_.color_std);
    codec->color_range =
        full || colour.range == 2 ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    codec->colorspace = static_cast<AVColorSpace>(
        colour.matrix == Colour::kUnknown ? matrix_of(info_.color_std)
                                          : colour.matrix);
    codec->color_primaries = static_cast<AVColorPrimaries>(colour.primaries);
    codec->color_trc =
        static_cast<AVColorTransferCharacteristic>(colour.transfer);
    codec->chroma_sample_location =
        static_cast<AVChromaLocation>(colour.siting);
  }

  void send_on(const AVFrame *frame) {
    check(avcodec_send_frame(codec_.get(), frame), "encode");
    const AvPacket packet(av_packet_alloc());
    if (packet == nullptr) throw std::bad_alloc();
    for (;;) {
      const int status = avcodec_receive_packet(codec_.get(), packet.get());
      if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return;
      check(status, "encode");
      const auto length = lengths_.find(packet->pts);
      if (length != lengths_.end()) {
        packet->duration = length->second;
        lengths_.erase(length);
      }
      av_packet_rescale_ts(packet.get(), codec_->time_base,
                           format_->streams[0]->time_base);
      packet->stream_index = 0;
      check(av_interleaved_write_frame(format_, packet.get()), "write");
    }
  }

  std::string path_;
  StreamInfo info_;
  EncodeOptions options_;
  std::optional<ByteSink> sink_;
  AVIOContext *io_ = nullptr;
  AVFormatContext *format_ = nullptr;
  AvCodec codec_;
  // Of the input's first frame, in its ticks; all else in those of the encoder:
  // the least time that the next frame can have, the one that it has if it says
  // none, and how long frames are shown that the encoder holds.
  std::optional<int64_t> first_;
  int64_t least_ = 0;
  int64_t next_ = 0;
  std::map<int64_t, int64_t> lengths_;
};

}  // namespace

std::unique_ptr<FrameWriter> write_video(const std::string &path,
                                         const StreamInfo &info,
                                         const EncodeOptions &options) {
  return std::make_unique<VideoWriter>(path, info, options);
}

}  // namespace vexo
