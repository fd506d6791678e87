// SPDX-License-Identifier: Apache-2.0
//
// What a container says of itself.
#include <new>

#include "av.h"
#include "video.h"

namespace vexo {
namespace {

// The first frame may say more of colours and turns than the container does.
void look_at_frame(AVStream *stream, const AVPacket &packet, StreamInfo *info) {
  const AVCodec *const decoder =
      avcodec_find_decoder(stream->codecpar->codec_id);
  const AvCodec codec(decoder == nullptr ? nullptr
                                         : avcodec_alloc_context3(decoder));
  if (codec == nullptr) return;
  codec->thread_count = 1;
  codec->max_pixels = kMostPixels;
  if (avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0 ||
      avcodec_open2(codec.get(), decoder, nullptr) < 0 ||
      avcodec_send_packet(codec.get(), &packet) < 0) {
    return;
  }
  avcodec_send_packet(codec.get(), nullptr);
  const AvFrame frame = new_av_frame();
  if (avcodec_receive_frame(codec.get(), frame.get()) >= 0) {
    refine_info(*frame, info);
  }
}

}  // namespace

FileFacts video_facts(std::unique_ptr<ByteSource> source) {
  AvFile file(std::move(source));
  file.look_closer();
  AVFormatContext *const format = file.get();
  FileFacts facts;
  facts.container = format->iformat->name;
  facts.duration = file.duration();
  for (unsigned i = 0; i < format->nb_streams; ++i) {
    AVStream *const stream = format->streams[i];
    const AVCodecParameters &codec = *stream->codecpar;
    StreamFacts about;
    const char *const type = av_get_media_type_string(codec.codec_type);
    about.type = type == nullptr ? "unknown" : type;
    about.codec = avcodec_get_name(codec.codec_id);
    about.video = codec.codec_type == AVMEDIA_TYPE_VIDEO;
    if (about.video) {
      about.info = info_of_stream(format, stream);
      const auto pixels = static_cast<AVPixelFormat>(codec.format);
      const char *const name = av_get_pix_fmt_name(pixels);
      about.pixels = name == nullptr ? "unknown" : name;
      about.info.layout = layout_of_pixels(pixels, about.info.colour.is_hdr());
    }
    facts.streams.push_back(about);
  }
  const AvPacket packet(av_packet_alloc());
  if (packet == nullptr) throw std::bad_alloc();
  int status = 0;
  while ((status = av_read_frame(format, packet.get())) >= 0) {
    StreamFacts &about =
        facts.streams[static_cast<size_t>(packet->stream_index)];
    AVStream *const stream = format->streams[packet->stream_index];
    if (about.video && about.frames == 0) {
      look_at_frame(stream, *packet, &about.info);
    }
    ++about.frames;
    if (about.video && (packet->flags & AV_PKT_FLAG_KEY) != 0) {
      about.key_frames.push_back(seconds_of_ticks(
          *stream, packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts));
    }
    av_packet_unref(packet.get());
  }
  facts.cut = status != AVERROR_EOF || file.ended_early();
  for (unsigned i = 0; i < format->nb_streams; ++i) {
    facts.cut = facts.cut || file.is_cut(format->streams[i]);
    StreamInfo &info = facts.streams[i].info;
    info.color_std = standard_of(info.colour, info.width, info.height);
  }
  return facts;
}

}  // namespace vexo
