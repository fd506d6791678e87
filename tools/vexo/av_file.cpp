// SPDX-License-Identifier: Apache-2.0
//
// Containers.
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>
#include <set>

#include "av.h"
#include "error.h"
#include "orumlox/rot.h"

extern "C" {
#include <libavutil/mastering_display_metadata.h>
}

namespace vexo {
namespace {

constexpr int kBuffer = 1 << 16;

// Contexts that have said that their file ends too early, which Matroska's does
// in no other way.
std::mutex g_log_mutex;
std::set<void *> g_cut;

// Each failure is an Error of this program: nothing is printed.
void on_log(void *context, int level, const char *text, va_list) {
  if (level > AV_LOG_ERROR || context == nullptr ||
      std::strstr(text, "ended prematurely") == nullptr) {
    return;
  }
  const std::lock_guard<std::mutex> lock(g_log_mutex);
  g_cut.insert(context);
}

// Errors of the source come back as those of the library.
int read_bytes(void *opaque, uint8_t *bytes, int count) {
  try {
    const size_t got = static_cast<ByteSource *>(opaque)->read(
        bytes, static_cast<size_t>(count));
    return got == 0 ? AVERROR_EOF : static_cast<int>(got);
  } catch (const Error &) {
    return AVERROR(EIO);
  }
}

int64_t seek_bytes(void *opaque, int64_t offset, int whence) {
  ByteSource *const source = static_cast<ByteSource *>(opaque);
  const std::optional<int64_t> size = source->size();
  if (!size) return AVERROR(ESPIPE);
  if ((whence & AVSEEK_SIZE) != 0) return *size;
  if ((whence & ~AVSEEK_FORCE) != SEEK_SET || offset < 0) {
    return AVERROR(EINVAL);
  }
  try {
    source->seek(offset);
  } catch (const Error &) {
    return AVERROR(EIO);
  }
  return offset;
}

// Whether these are the first bytes of an MP4 whose pictures come before what
// says where they are: it cannot be read in order.
bool has_index_at_end(ByteSource &source) {
  // An index further on is that of a file that is read in order.
  constexpr uint64_t kFar = 1 << 20;
  const auto type_at = [&](uint64_t at) {
    const std::string_view head = source.peek(at + 8);
    return head.size() < at + 8 ? std::string_view() : head.substr(at + 4, 4);
  };
  const auto number_at = [&](uint64_t at, uint64_t bytes) {
    const std::string_view head = source.peek(at + bytes);
    uint64_t number = 0;
    for (uint64_t i = at; i < std::min(at + bytes, head.size()); ++i) {
      number = number << 8 | static_cast<uint8_t>(head[i]);
    }
    return number;
  };
  if (type_at(0) != "ftyp" && type_at(0) != "mdat" && type_at(0) != "wide") {
    return false;
  }
  for (uint64_t at = 0; at < kFar;) {
    const std::string_view type = type_at(at);
    if (type == "mdat") return true;
    if (type.empty() || type == "moov" || type == "moof") return false;
    uint64_t size = number_at(at, 4);
    if (size == 1) size = number_at(at + 8, 8);
    if (size < 8 || size > kFar) return false;
    at += size;
  }
  return false;
}

int open_nothing(AVFormatContext *, AVIOContext **, const char *, int,
                 AVDictionary **) {
  return AVERROR(EACCES);
}

// (x, y) of a picture is shown at (a x + c y, b x + d y).
void set_turns(const uint8_t *data, StreamInfo *info) {
  const int32_t *const m = reinterpret_cast<const int32_t *>(data);
  const int64_t a = m[0], b = m[1], c = m[3], d = m[4];
  uint32_t *const turns = info->turns;
  turns[0] = turns[1] = VEXO_ROT_COPY;
  if (std::abs(a) + std::abs(d) >= std::abs(b) + std::abs(c)) {
    turns[0] = a < 0 && d < 0 ? VEXO_ROT_180
               : a < 0        ? VEXO_ROT_HORI
               : d < 0        ? VEXO_ROT_VERT
                              : VEXO_ROT_COPY;
    return;
  }
  if ((b > 0) == (c > 0)) turns[0] = VEXO_ROT_HORI;
  turns[1] = c > 0 ? VEXO_ROT_90L : VEXO_ROT_90R;
}

// What most frames keep to, which is exact, if it is the average, too.
Ratio rate_of(AVFormatContext *format, AVStream *stream) {
  const auto known = [](AVRational rate) {
    return rate.num > 0 && rate.den > 0;
  };
  const AVRational usual = av_guess_frame_rate(format, stream, nullptr);
  const AVRational average = stream->avg_frame_rate;
  constexpr double kNear = 0.02;
  const bool varies = known(average) &&
                      !(std::abs(av_q2d(usual) / av_q2d(average) - 1) < kNear);
  const AVRational rate = varies ? average : usual;
  return known(rate) ? Ratio{rate.num, rate.den} : Ratio{};
}

void set_display(const void *data, Colour *colour) {
  const auto *const display =
      static_cast<const AVMasteringDisplayMetadata *>(data);
  if (display->has_luminance == 0) return;
  colour->display_peak = av_q2d(display->max_luminance);
  colour->display_black = av_q2d(display->min_luminance);
}

void set_light(const void *data, Colour *colour) {
  const auto *const light = static_cast<const AVContentLightMetadata *>(data);
  colour->brightest = static_cast<int>(std::min(light->MaxCLL, 10000u));
  colour->mean = static_cast<int>(std::min(light->MaxFALL, 10000u));
}

void set_colour(int matrix, int primaries, int transfer, int range, int siting,
                Colour *colour) {
  colour->matrix = matrix;
  colour->primaries = primaries;
  colour->transfer = transfer;
  colour->range = range;
  colour->siting = siting;
}

}  // namespace

std::string av_reason(int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(error, text, sizeof text);
  return text;
}

AvFrame new_av_frame() {
  AvFrame frame(av_frame_alloc(), FreeAv());
  if (frame == nullptr) throw std::bad_alloc();
  return frame;
}

AvFile::AvFile(std::unique_ptr<ByteSource> source)
    : source_(std::move(source)) {
  av_log_set_callback(on_log);
  if (!source_->size() && has_index_at_end(*source_)) source_->spool();
  const bool seekable = source_->size().has_value();
  if (seekable) source_->seek(0);
  auto *const buffer = static_cast<uint8_t *>(av_malloc(kBuffer));
  io_ = avio_alloc_context(buffer, kBuffer, 0, source_.get(), read_bytes,
                           nullptr, seekable ? seek_bytes : nullptr);
  format_ = avformat_alloc_context();
  if (io_ == nullptr || format_ == nullptr) throw std::bad_alloc();
  format_->pb = io_;
  format_->io_open = open_nothing;
  // Frees the context itself when it fails.
  const int status =
      avformat_open_input(&format_, source_->name().c_str(), nullptr, nullptr);
  if (status < 0) {
    av_freep(&io_->buffer);
    avio_context_free(&io_);
    fail(status);
  }
}

AvFile::~AvFile() {
  {
    const std::lock_guard<std::mutex> lock(g_log_mutex);
    g_cut.erase(format_);
  }
  avformat_close_input(&format_);
  av_freep(&io_->buffer);
  avio_context_free(&io_);
}

void AvFile::look_closer() {
  const int status = avformat_find_stream_info(format_, nullptr);
  if (status < 0) fail(status);
}

AVStream *AvFile::video(int wanted) const {
  int index = wanted;
  if (wanted < 0) {
    index =
        av_find_best_stream(format_, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0) throw Error(name() + " has no video and no picture");
  }
  if (index >= static_cast<int>(format_->nb_streams) ||
      format_->streams[index]->codecpar->codec_type != AVMEDIA_TYPE_VIDEO) {
    throw Error("--stream " + std::to_string(wanted) + " of " + name() +
                " is no video; vexo info lists all");
  }
  for (unsigned i = 0; i < format_->nb_streams; ++i) {
    if (static_cast<int>(i) != index) {
      format_->streams[i]->discard = AVDISCARD_ALL;
    }
  }
  return format_->streams[index];
}

double AvFile::duration() const {
  if (format_->duration == AV_NOPTS_VALUE || format_->duration < 0) return 0;
  return static_cast<double>(format_->duration) / AV_TIME_BASE;
}

bool AvFile::ended_early() const {
  const std::lock_guard<std::mutex> lock(g_log_mutex);
  return g_cut.contains(format_);
}

bool AvFile::is_cut(const AVStream *stream) const {
  const std::optional<int64_t> size = source_->size();
  if (!size) return false;
  auto *const indexed = const_cast<AVStream *>(stream);
  const int count = avformat_index_get_entries_count(indexed);
  for (int i = 0; i < count; ++i) {
    const AVIndexEntry *const entry = avformat_index_get_entry(indexed, i);
    if (entry->pos + entry->size > *size) return true;
  }
  return false;
}

void AvFile::fail(int error) const {
  throw Error("cannot read " + name() + ": " + av_reason(error));
}

const uint8_t *stream_side_data(const AVStream *stream,
                                AVPacketSideDataType type, size_t *size) {
#if LIBAVFORMAT_VERSION_INT >= AV_VERSION_INT(60, 15, 100)
  const AVPacketSideData *const data =
      av_packet_side_data_get(stream->codecpar->coded_side_data,
                              stream->codecpar->nb_coded_side_data, type);
  *size = data == nullptr ? 0 : data->size;
  return data == nullptr ? nullptr : data->data;
#else
  return av_stream_get_side_data(stream, type, size);
#endif
}

int64_t start_of(const AVStream &stream) {
  return stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
}

double seconds_of_ticks(const AVStream &stream, int64_t ticks) {
  if (ticks == AV_NOPTS_VALUE) return 0;
  // In doubles, which do not overflow.
  return (static_cast<double>(ticks) - static_cast<double>(start_of(stream))) *
         av_q2d(stream.time_base);
}

StreamInfo info_of_stream(AVFormatContext *format, AVStream *stream) {
  StreamInfo info;
  const AVCodecParameters &codec = *stream->codecpar;
  info.width = codec.width;
  info.height = codec.height;
  set_colour(codec.color_space, codec.color_primaries, codec.color_trc,
             codec.color_range, codec.chroma_location, &info.colour);
  size_t size = 0;
  const uint8_t *data =
      stream_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
  if (data != nullptr && size >= 36) set_turns(data, &info);
  data =
      stream_side_data(stream, AV_PKT_DATA_MASTERING_DISPLAY_METADATA, &size);
  if (data != nullptr) set_display(data, &info.colour);
  data = stream_side_data(stream, AV_PKT_DATA_CONTENT_LIGHT_LEVEL, &size);
  if (data != nullptr) set_light(data, &info.colour);
  info.rate = rate_of(format, stream);
  info.tick = {stream->time_base.num, stream->time_base.den};
  const AVRational aspect =
      av_guess_sample_aspect_ratio(format, stream, nullptr);
  if (aspect.num > 0 && aspect.den > 0) info.aspect = {aspect.num, aspect.den};
  return info;
}

void refine_info(const AVFrame &frame, StreamInfo *info) {
  info->width = frame.width;
  info->height = frame.height;
  Colour *const colour = &info->colour;
  const auto better = [](int of_frame, int unknown, int *value) {
    if (of_frame != unknown) *value = of_frame;
  };
  better(frame.colorspace, Colour::kUnknown, &colour->matrix);
  better(frame.color_primaries, Colour::kUnknown, &colour->primaries);
  better(frame.color_trc, Colour::kUnknown, &colour->transfer);
  better(frame.color_range, 0, &colour->range);
  better(frame.chroma_location, 0, &colour->siting);
  // Formats of their own for full range.
  if (frame.format == AV_PIX_FMT_YUVJ420P ||
      frame.format == AV_PIX_FMT_YUVJ422P ||
      frame.format == AV_PIX_FMT_YUVJ440P ||
      frame.format == AV_PIX_FMT_YUVJ444P) {
    colour->range = 2;
  }
  const AVFrameSideData *data =
      av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX);
  if (data != nullptr && data->size >= 36) set_turns(data->data, info);
  data =
      av_frame_get_side_data(&frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA);
  if (data != nullptr) set_display(data->data, colour);
  data = av_frame_get_side_data(&frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL);
  if (data != nullptr) set_light(data->data, colour);
  if (frame.sample_aspect_ratio.num > 0 && frame.sample_aspect_ratio.den > 0) {
    info->aspect = {frame.sample_aspect_ratio.num,
                    frame.sample_aspect_ratio.den};
  }
}

}  // namespace vexo
