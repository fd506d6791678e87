// SPDX-License-Identifier: Apache-2.0
//
// Finds out what kinds of files the input and the output are.
#include "streams.h"

#include <charconv>

#include "error.h"
#include "video.h"

namespace vexo {

void parse_size(const std::string &text, const std::string &option, int *width,
                int *height) {
  const char *const end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, *width);
  bool good = first.ec == std::errc() && first.ptr != end &&
              (*first.ptr == 'x' || *first.ptr == 'X');
  if (good) {
    const auto second = std::from_chars(first.ptr + 1, end, *height);
    good = second.ec == std::errc() && second.ptr == end;
  }
  if (!good) throw Error(option + " '" + text + "' is not WIDTHxHEIGHT");
  check_size(*width, *height, option);
}

VideoWish video_wish(const StreamOptions &options) {
  VideoWish wish;
  wish.stream = options.stream;
  wish.at = options.at;
  wish.hdr = options.kind != "none";
  wish.tolerant = options.tolerant;
  return wish;
}

std::unique_ptr<FrameReader> open_reader(const StreamOptions &options,
                                         bool pick) {
  auto source = std::make_unique<ByteSource>(options.in);
  const std::string &size_name = options.size_name;
  const bool described = !options.from_size.empty() && !options.from.empty();
  // A name that says raw outweighs bytes that happen to look like a header.
  std::optional<Kind> kind;
  if (!options.in_kind.empty()) {
    kind = kind_named(options.in_kind);
  } else if (kind_of_path(options.in) == Kind::kRaw) {
    kind = Kind::kRaw;
  } else {
    kind = kind_of_content(*source);
    if (!kind && described) kind = Kind::kRaw;
  }
  if (!kind && !reads_videos()) {
    throw Error(source->name() +
                " is no PNG, PGM, PPM or Y4M; raw frames need " + size_name +
                " and --from");
  }
  if (kind == Kind::kRaw) {
    if (!described) {
      throw Error(source->name() + ": raw frames need " + size_name +
                  " and --from");
    }
    StreamInfo info;
    info.layout = &layout_named(options.from);
    parse_size(options.from_size, size_name, &info.width, &info.height);
    return read_raw(std::move(source), info);
  }
  if (!options.from_size.empty()) {
    throw Error(size_name + " is for raw frames; " + source->name() +
                " has a size of its own");
  }
  const std::string name = source->name();
  const bool video = !kind || kind == Kind::kVideo || kind == Kind::kJpeg ||
                     kind == Kind::kWebp;
  if (!video && (options.stream >= 0 || !options.at.empty())) {
    throw Error("--stream and --at are for containers, and " + name +
                " is none");
  }
  VideoWish wish = video_wish(options);
  wish.pick = pick;
  std::unique_ptr<FrameReader> reader =
      video                ? read_video(std::move(source), wish)
      : kind == Kind::kPng ? read_png(std::move(source))
      : kind == Kind::kY4m ? read_y4m(std::move(source))
                           : read_pnm(std::move(source));
  const Layout &layout = *reader->info().layout;
  if (!options.from.empty() && &layout_named(options.from) != &layout) {
    throw Error(name + " holds " + layout.token + ", not " + options.from);
  }
  return reader;
}

Kind output_kind(const StreamOptions &options) {
  if (!options.out_kind.empty()) return kind_named(options.out_kind);
  if (const std::optional<Kind> kind = kind_of_path(options.out)) return *kind;
  // What programs pipe into each other.
  if (options.out == "-") return Kind::kY4m;
  throw Error("cannot tell what kind of file '" + options.out +
              "' is to be: give --out-kind");
}

}  // namespace vexo
