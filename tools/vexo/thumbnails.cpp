// SPDX-License-Identifier: Apache-2.0
//
// vexo thumbnail: of pictures and clips frame by frame, of videos one picture,
// of many files at once.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#include "commands.h"
#include "error.h"
#include "pick.h"
#include "progress.h"
#include "route.h"
#include "stages.h"
#include "thumbnail.h"
#include "video.h"

namespace vexo {
namespace {

constexpr const char *kThumbnailHelp =
    R"(Makes thumbnails of pictures, clips and videos, and turns them if asked to.

FILES are IN and OUT, or with --out-dir any number of inputs. IN and OUT are
those of vexo convert. 4:2:0 is scaled as it is, as nv12, all else as rgba8888,
whose alpha becomes 255. --size is that before the turn; nothing is enlarged.
The thumbnail has the layout that it was scaled in and is then converted to what
OUT holds or --to says.

Of a video one picture is made: the first key frame after a tenth of its length
that is neither near black nor flat, or the frame at --at.

With --out-dir each input becomes a picture there, with its name and the ending
of --out-kind (png). What fails is said, a line a file, and the status is 1.

--prescale halves or quarters 4:2:0 by block means first: faster and coarser.

  vexo thumbnail film.mp4 film.png --fit 320x320
  vexo thumbnail film.mp4 film.png --fit 320x180 --letterbox --at 30%
  vexo thumbnail *.mp4 --out-dir thumbs --fit 256x256 -j 4)";

struct Options : ThumbnailOptions {
  std::vector<std::string> files;
  std::string folder;
};

bool holds_one(Kind kind) { return is_picture(kind) || kind == Kind::kPgm; }

// What is read by ffmpeg's libraries, and has more than one frame.
std::unique_ptr<VideoReader> open_video(const Options &options) {
  if (!reads_videos() || !options.in_kind.empty() || options.frames > 0 ||
      kind_of_path(options.in) == Kind::kRaw) {
    return nullptr;
  }
  auto source = std::make_unique<ByteSource>(options.in);
  if (kind_of_content(*source) || !options.from_size.empty()) return nullptr;
  VideoWish wish = video_wish(options);
  wish.pick = options.at.empty();
  return read_video(std::move(source), wish);
}

// A video's picture, as the bytes of a file.
std::string video_picture(const Options &options, VideoReader &video,
                          Kind kind) {
  const StreamInfo source = taken_info(options, video);
  Route route(
      options, kind, source, [&options] { return make_thumbnail(options); },
      Hdr::kMapped);
  Frame frame = frame_of(source);
  const bool found =
      options.at.empty() ? pick_frame(video, &frame) : video.read(frame);
  if (!found) throw Error(options.in + ": no frame is there");
  const Frame small = frame_of(route.result());
  route.run(frame, small);
  std::string bytes;
  open_writer(kind, options.out, route.result(), options.encode)
      ->encode(small, &bytes);
  return bytes;
}

void write_file(const std::string &path, const std::string &bytes) {
  ByteSink sink(path);
  sink.write(bytes.data(), bytes.size());
  sink.commit();
}

// A picture or a clip of which all frames are wanted, or a video's one picture.
void make_one(const Options &options) {
  const Kind kind = output_kind(options);
  if (holds_one(kind) && options.in != "-" &&
      options.out.find('%') == std::string::npos) {
    if (const auto video = open_video(options)) {
      write_file(options.out, video_picture(options, *video, kind));
      return;
    }
  }
  convert(options, [&options] { return make_thumbnail(options); });
}

// A file's first frame, whatever it is.
std::string one_picture(const Options &options, Kind kind) {
  if (const auto video = open_video(options)) {
    return video_picture(options, *video, kind);
  }
  const std::unique_ptr<FrameReader> reader = open_reader(options);
  const StreamInfo source = taken_info(options, *reader);
  Route route(
      options, kind, source, [&options] { return make_thumbnail(options); },
      Hdr::kMapped);
  Frame frame = frame_of(source);
  if (!reader->read(frame)) throw Error(options.in + " has no frame");
  const Frame small = frame_of(route.result());
  route.run(frame, small);
  std::string bytes;
  open_writer(kind, options.out, route.result(), options.encode)
      ->encode(small, &bytes);
  return bytes;
}

std::string base_of(const std::string &path) {
  return path.substr(path.rfind('/') + 1);
}

// Names without their endings, but with them where two files would be one.
std::vector<std::string> output_names(const Options &options,
                                      const char *ending) {
  const auto stem = [](const std::string &path) {
    const std::string base = base_of(path);
    const size_t dot = base.rfind('.');
    return dot == 0 || dot == std::string::npos ? base : base.substr(0, dot);
  };
  std::map<std::string, int> count;
  for (const std::string &file : options.files) ++count[stem(file)];
  std::vector<std::string> names;
  for (const std::string &file : options.files) {
    const std::string name = count[stem(file)] > 1 ? base_of(file) : stem(file);
    names.push_back(options.folder + "/" + name + ending);
  }
  return names;
}

void make_many(const Options &options) {
  const Kind kind =
      options.out_kind.empty() ? Kind::kPng : kind_named(options.out_kind);
  if (!holds_one(kind)) {
    throw Error(std::string("--out-dir takes pictures, not ") +
                kind_name(kind));
  }
  if (mkdir(options.folder.c_str(), 0777) != 0 && errno != EEXIST) {
    throw Error("cannot create " + options.folder + ": " +
                std::strerror(errno));
  }
  const std::vector<std::string> names =
      output_names(options, kind_ending(kind));
  // Names of outputs are no patterns here.
  const auto of_file = [&](int64_t i) {
    Options one = options;
    one.in = options.files[static_cast<size_t>(i)];
    one.out = "-";
    return one;
  };
  const int64_t count = static_cast<int64_t>(options.files.size());
  Progress progress(options.quiet, count);
  int64_t failures = 0;
  Stages stages;
  stages.read = [count](Slot &slot) { return slot.number < count; };
  const auto compute = [&](Slot &slot) {
    slot.bytes.clear();
    slot.complaint.clear();
    const Options one = of_file(slot.number);
    try {
      slot.bytes = one_picture(one, kind);
    } catch (const std::exception &error) {
      slot.complaint = error.what();
      // Which file it was, whatever failed.
      if (slot.complaint.find(one.in) == std::string::npos) {
        slot.complaint = one.in + ": " + slot.complaint;
      }
    }
  };
  const int threads =
      options.jobs > 0
          ? options.jobs
          : std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1,
                       64);
  stages.compute.assign(static_cast<size_t>(threads), compute);
  stages.write = [&](Slot &slot) {
    if (slot.complaint.empty()) {
      write_file(names[static_cast<size_t>(slot.number)], slot.bytes);
    } else {
      ++failures;
      progress.clear();
      std::fprintf(stderr, "vexo: %s\n", slot.complaint.c_str());
    }
    progress.one_done();
  };
  stages.make_slot = [] {
    const Frame none(layout_of(VEXO_FMT_YUV400), 1, 1, VEXO_STD_DEFAULT);
    return std::make_unique<Slot>(none, none);
  };
  run_stages(std::move(stages));
  if (failures > 0) throw Reported();
}

void run_thumbnail(Options &options) {
  if (options.size.empty() == options.fit.empty()) {
    throw Error("a thumbnail has one of --size and --fit");
  }
  if ((options.letterbox || options.fill) && options.fit.empty()) {
    throw Error("--letterbox and --fill are for --fit");
  }
  if (!options.folder.empty()) {
    make_many(options);
    return;
  }
  if (options.files.size() != 2) {
    throw Error("FILES are IN and OUT; more of them need --out-dir");
  }
  options.in = options.files[0];
  options.out = options.files[1];
  make_one(options);
}

}  // namespace

void add_thumbnail(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *const command = app.add_subcommand("thumbnail", kThumbnailHelp);
  command->add_option("FILES", options->files, "IN and OUT, or many IN")
      ->required();
  command->add_option("--out-dir", options->folder,
                      "Folder of the pictures of many files");
  add_file_options(command, "--from-size", options.get());
  add_step_options(command, options.get());
  command->add_option("--size", options->size,
                      "WxH of the thumbnail before it is turned");
  command->add_option("--fit", options->fit,
                      "WxH in which it fits, as wide to high as it is shown");
  CLI::Option *const letterbox = command->add_flag(
      "--letterbox", options->letterbox, "Black around it, up to --fit");
  command->add_flag("--fill", options->fill, "Cut to the shape of --fit")
      ->excludes(letterbox);
  command->add_option("--turn", options->turn,
                      "left, right, half, mirror, flip or the library's "
                      "codes 0 to 5");
  command->add_option("--prescale", options->prescale, "0, 2 or 4 (0)")
      ->check(CLI::IsMember({0, 2, 4}));
  command->callback([options] { run_thumbnail(*options); });
}

}  // namespace vexo
