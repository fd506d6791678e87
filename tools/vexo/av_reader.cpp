// SPDX-License-Identifier: Apache-2.0
//
// Frames of a container, decoded.
#include <algorithm>
#include <cmath>
#include <new>

#include "av.h"
#include "error.h"
#include "signals.h"
#include "times.h"
#include "video.h"

namespace vexo {
namespace {

class Reader : public VideoReader {
 public:
  Reader(std::unique_ptr<ByteSource> source, const VideoWish &wish)
      : wish_(wish), file_(std::move(source)) {
    stream_ = file_.video(wish.stream);
    const AVCodecParameters &codec = *stream_->codecpar;
    // A container with an index has said all in its head.
    if (!wish.pick || codec.width < 1 || file_.duration() <= 0) {
      file_.look_closer();
    }
    open_codec();
    packet_.reset(av_packet_alloc());
    if (packet_ == nullptr) throw std::bad_alloc();
    if (!wish.tolerant && file_.is_cut(stream_)) truncated();
    if (!wish.at.empty()) seek(parse_time(wish.at, file_.duration()));
    // Pictures have a length too, that of a frame.
    const double length = file_.duration();
    const double tenth = length < 1 ? 0 : length / 10;
    const bool sought = wish.pick && tenth > 0 && seek_before(tenth);
    next_ = decode();
    if (next_ == nullptr && sought && seek_before(0)) next_ = decode();
    if (next_ == nullptr) throw Error(file_.name() + ": no frame is there");
    describe();
  }

  const StreamInfo &info() const override { return info_; }

  bool read(Frame &frame) override {
    const AvFrame decoded = next_ != nullptr ? std::move(next_) : decode();
    next_ = nullptr;
    if (decoded == nullptr) return false;
    if (decoded->width != info_.width || decoded->height != info_.height ||
        decoded->format != format_) {
      throw Error(file_.name() + ": pictures of different sizes or kinds");
    }
    showing_ = showing_of(*decoded);
    take_frame(decoded, info_.colour, &frame);
    return true;
  }

  Showing showing() const override { return showing_; }
  double duration() const override { return file_.duration(); }
  double time() const override {
    return seconds_of_ticks(*stream_, showing_.at.value_or(AV_NOPTS_VALUE));
  }

  void seek_near(double seconds) override {
    if (seek_before(seconds)) next_ = nullptr;
  }

 private:
  void open_codec() {
    const AVCodec *const decoder =
        avcodec_find_decoder(stream_->codecpar->codec_id);
    if (decoder == nullptr) {
      throw Error(file_.name() + " holds " +
                  avcodec_get_name(stream_->codecpar->codec_id) +
                  ", for which there is no decoder");
    }
    int status = 0;
    // A system that gives no threads gets none.
    for (int threads = wish_.pick ? 1 : 0; threads < 2; ++threads) {
      codec_.reset(avcodec_alloc_context3(decoder));
      if (codec_ == nullptr) throw std::bad_alloc();
      status = avcodec_parameters_to_context(codec_.get(), stream_->codecpar);
      if (status < 0) file_.fail(status);
      codec_->pkt_timebase = stream_->time_base;
      codec_->max_pixels = kMostPixels;
      codec_->thread_count = threads;
      // Others tell of mended frames, and explode on what is merely unknown.
      if (!wish_.tolerant && decoder->id == AV_CODEC_ID_MJPEG) {
        codec_->err_recognition = AV_EF_CRCCHECK | AV_EF_EXPLODE;
      }
      if (wish_.pick) {
        codec_->skip_frame = AVDISCARD_NONKEY;
        stream_->discard = AVDISCARD_NONKEY;
      }
      const SignalsForMain block;
      status = avcodec_open2(codec_.get(), decoder, nullptr);
      if (status >= 0) return;
    }
    file_.fail(status);
  }

  void describe() {
    info_ = info_of_stream(file_.get(), stream_);
    refine_info(*next_, &info_);
    check_size(info_.width, info_.height, file_.name());
    format_ = next_->format;
    const auto pixels = static_cast<AVPixelFormat>(format_);
    info_.layout = layout_of_pixels(pixels, wish_.hdr && info_.colour.is_hdr());
    if (info_.layout == nullptr) {
      const char *const name = av_get_pix_fmt_name(pixels);
      throw Error(file_.name() + " holds " +
                  (name != nullptr ? name : "unknown pixels") +
                  ", for which there is no layout");
    }
    info_.color_std =
        is_rgb(*info_.layout)
            ? VEXO_STD_DEFAULT
            : standard_of(info_.colour, info_.width, info_.height);
    if (info_.colour.siting == 1) info_.y4m_chroma = "420mpeg2";
  }

  static Showing showing_of(const AVFrame &frame) {
    Showing showing;
    if (frame.best_effort_timestamp != AV_NOPTS_VALUE) {
      showing.at = frame.best_effort_timestamp;
    }
#if LIBAVUTIL_VERSION_MAJOR >= 58
    showing.length = frame.duration;
#else
    showing.length = frame.pkt_duration;
#endif
    return showing;
  }

  int64_t ticks_of(double seconds) const {
    return start_of(*stream_) +
           std::llround(seconds / av_q2d(stream_->time_base));
  }

  // False where the file cannot be read from elsewhere.
  bool seek_before(double seconds) {
    const int status = av_seek_frame(file_.get(), stream_->index,
                                     ticks_of(seconds), AVSEEK_FLAG_BACKWARD);
    if (status < 0) return false;
    avcodec_flush_buffers(codec_.get());
    after_ = nullptr;
    ended_ = false;
    return true;
  }

  // To the frame that is shown at this time.
  void seek(double seconds) {
    if (seconds > 0) seek_before(seconds);
    skip_until_ = seconds;
  }

  // Null at the end.
  AvFrame decode() {
    AvFrame last;
    for (;;) {
      AvFrame frame = decode_any();
      // At or beyond the end it is the last one.
      if (frame == nullptr) return last;
      if (skip_until_ <= 0) return frame;
      const double time =
          seconds_of_ticks(*stream_, frame->best_effort_timestamp);
      constexpr double kTick = 1e-6;
      if (time > skip_until_ + kTick && last != nullptr) {
        // Both come: this one after the one that was wanted.
        after_ = std::move(frame);
        skip_until_ = 0;
        return last;
      }
      if (time >= skip_until_ - kTick) {
        skip_until_ = 0;
        return frame;
      }
      last = std::move(frame);
    }
  }

  AvFrame decode_any() {
    if (after_ != nullptr) return std::move(after_);
    AvFrame frame = new_av_frame();
    for (;;) {
      int status = avcodec_receive_frame(codec_.get(), frame.get());
      if (status >= 0) {
        const bool damaged = frame->decode_error_flags != 0 ||
                             (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
        if (damaged && !wish_.tolerant) this->damaged();
        return frame;
      }
      if (status == AVERROR_EOF) return nullptr;
      if (status != AVERROR(EAGAIN)) {
        if (!wish_.tolerant) damaged();
        if (ended_) return nullptr;
      }
      feed();
    }
  }

  // One packet to the decoder, or the end.
  void feed() {
    while (!ended_) {
      const int status = av_read_frame(file_.get(), packet_.get());
      if (status < 0) {
        ended_ = true;
        const bool cut = status != AVERROR_EOF || file_.ended_early();
        if (cut && !wish_.tolerant) truncated();
        avcodec_send_packet(codec_.get(), nullptr);
        return;
      }
      const bool wanted = packet_->stream_index == stream_->index;
      if (wanted && (packet_->flags & AV_PKT_FLAG_CORRUPT) != 0 &&
          !wish_.tolerant) {
        truncated();
      }
      const int sent =
          wanted ? avcodec_send_packet(codec_.get(), packet_.get()) : 0;
      av_packet_unref(packet_.get());
      if (sent < 0 && sent != AVERROR(EAGAIN) && !wish_.tolerant) damaged();
      if (wanted) return;
    }
  }

  [[noreturn]] void truncated() const {
    throw Error(file_.name() + " is truncated or damaged");
  }
  [[noreturn]] void damaged() const {
    throw Error(file_.name() + " is damaged: a frame cannot be decoded");
  }

  VideoWish wish_;
  AvFile file_;
  AVStream *stream_ = nullptr;
  AvCodec codec_;
  AvPacket packet_;
  StreamInfo info_;
  int format_ = -1;
  AvFrame next_;
  AvFrame after_;
  double skip_until_ = 0;
  Showing showing_;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<VideoReader> read_video(std::unique_ptr<ByteSource> source,
                                        const VideoWish &wish) {
  return std::make_unique<Reader>(std::move(source), wish);
}

}  // namespace vexo
