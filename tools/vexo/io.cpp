// SPDX-License-Identifier: Apache-2.0
//
// Kinds of files: how they are recognised and what they can hold; and numbered
// pictures.
#include "io.h"

#include <array>
#include <vector>

#include "error.h"
#include "nearest.h"
#include "orumlox/common.h"
#include "pixels.h"

namespace vexo {
namespace {

struct KindEntry {
  Kind kind;
  const char *name;
  std::array<const char *, 7> endings;
};

constexpr KindEntry kKinds[] = {
    {Kind::kPng, "png", {".png"}},
    {Kind::kPpm, "ppm", {".ppm"}},
    {Kind::kPgm, "pgm", {".pgm"}},
    {Kind::kJpeg, "jpeg", {".jpg", ".jpeg"}},
    {Kind::kWebp, "webp", {".webp"}},
    {Kind::kY4m, "y4m", {".y4m"}},
    {Kind::kRaw, "raw", {".raw", ".yuv", ".rgb"}},
    {Kind::kVideo,
     "video",
     {".mp4", ".mkv", ".mov", ".webm", ".m4v", ".avi", ".ts"}},
};

// The names of a row of pictures: a path with one %d or %0Nd in it, the number
// counting from 1, and %% for a percent sign.
class NamePattern {
 public:
  explicit NamePattern(const std::string &path) {
    for (size_t i = 0; i < path.size(); ++i) {
      if (path[i] != '%') {
        part() += path[i];
      } else if (path.compare(i, 2, "%%") == 0) {
        part() += '%';
        ++i;
      } else {
        i = parse_number(path, i + 1);
      }
    }
  }

  bool numbered() const { return numbered_; }

  // Of a kind that holds all frames in one file.
  const std::string &single_name(const std::string &path, Kind kind) const {
    if (!numbered_) return before_;
    throw Error("bad pattern '" + path + "': one " + kind_name(kind) +
                " file holds all frames, %% is a percent sign");
  }

  std::string name(int64_t number) const {
    if (!numbered_) return before_;
    const std::string digits = std::to_string(number);
    const size_t zeros =
        digits.size() < digits_ ? digits_ - digits.size() : size_t{0};
    return before_ + std::string(zeros, '0') + digits + after_;
  }

 private:
  std::string &part() { return numbered_ ? after_ : before_; }

  // Takes what follows a percent sign; returns the index of its last character.
  size_t parse_number(const std::string &path, size_t i) {
    size_t digits = 0;
    if (path.compare(i, 1, "0") == 0 && i + 1 < path.size() &&
        path[i + 1] >= '1' && path[i + 1] <= '9') {
      digits = static_cast<size_t>(path[i + 1] - '0');
      i += 2;
    }
    if (numbered_ || path.compare(i, 1, "d") != 0) {
      throw Error("bad pattern '" + path +
                  "': one %d or %01d to %09d numbers pictures, %% is a percent "
                  "sign");
    }
    numbered_ = true;
    digits_ = digits;
    return i;
  }

  std::string before_;
  std::string after_;
  size_t digits_ = 0;
  bool numbered_ = false;
};

class PictureWriter : public FrameWriter {
 public:
  PictureWriter(const std::string &path, Encoder *encoder,
                const EncodeOptions &options)
      : path_(path), pattern_(path), encoder_(encoder), options_(options) {}

  bool encodes() const override { return true; }
  void encode(const Frame &frame, std::string *bytes) const override {
    bytes->clear();
    encoder_(frame, options_, bytes);
  }

  void write(const Frame &, const std::string &bytes,
             const Showing &) override {
    if (++count_ > 1 && !pattern_.numbered()) {
      throw Error("the input has more than one frame: '" + path_ +
                  "' needs a number, for instance frame%03d.png");
    }
    sink_ = std::make_unique<ByteSink>(pattern_.name(count_));
    sink_->write(bytes.data(), bytes.size());
    // A numbered picture is complete now. A single one waits: a second frame
    // makes the whole run fail.
    if (pattern_.numbered()) finish();
  }

  void finish() override {
    if (sink_) sink_->commit();
    sink_.reset();
  }

 private:
  std::string path_;
  NamePattern pattern_;
  Encoder *encoder_;
  EncodeOptions options_;
  int64_t count_ = 0;
  std::unique_ptr<ByteSink> sink_;
};

}  // namespace

bool ends_with(const std::string &path, std::string_view ending) {
  if (path.size() < ending.size()) return false;
  for (size_t i = 0; i < ending.size(); ++i) {
    const char c = path[path.size() - ending.size() + i];
    const char lower =
        c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (lower != ending[i]) return false;
  }
  return true;
}

bool kind_carries(Kind kind, const Layout &layout) {
  switch (kind) {
    case Kind::kPng:
      return layout.code == VEXO_FMT_YUV400 || PixelUnpacker::takes(layout);
    case Kind::kJpeg:
      return layout.code == VEXO_FMT_RGB888 ||
             layout.code == VEXO_FMT_RGBA8888 || layout.code <= VEXO_FMT_YUV444;
    case Kind::kWebp:
      return layout.code == VEXO_FMT_RGB888 ||
             layout.code == VEXO_FMT_RGBA8888 || layout.code == VEXO_FMT_YUV420;
    case Kind::kPpm:
      return PixelUnpacker::takes(layout) && !PixelUnpacker(layout).alpha();
    case Kind::kPgm:
      return layout.code == VEXO_FMT_YUV400;
    case Kind::kY4m:
      return layout.code == VEXO_FMT_YUV400 || layout.code == VEXO_FMT_YUV420 ||
             layout.code == VEXO_FMT_YUV422N ||
             layout.code == VEXO_FMT_YUV444 ||
             layout.code == VEXO_FMT_YUV420PLANAR16;
    case Kind::kRaw:
      return true;
    case Kind::kVideo:
      return layout.code == VEXO_FMT_YUV420 ||
             layout.code == VEXO_FMT_YUV422N ||
             layout.code == VEXO_FMT_YUV444 ||
             layout.code == VEXO_FMT_YUV420PLANAR16;
  }
  return false;
}

bool is_picture(Kind kind) {
  return kind == Kind::kPng || kind == Kind::kPpm || kind == Kind::kJpeg ||
         kind == Kind::kWebp;
}

std::vector<int32_t> usual_layouts(Kind kind, const StreamInfo &info) {
  const Layout &source = *info.layout;
  const bool alpha =
      source.code >= VEXO_FMT_RGBA8888 && source.code < VEXO_FMT_YUV420PLANAR16;
  switch (kind) {
    case Kind::kJpeg:
      // The samples of a JPEG are such, and need no way through RGB.
      if (source.code == VEXO_FMT_YUV400 ||
          (info.color_std == VEXO_STD_BT601_FULL &&
           source.code <= VEXO_FMT_YUV444)) {
        return {source.code};
      }
      return {VEXO_FMT_RGB888};
    case Kind::kWebp:
      if (source.code == VEXO_FMT_YUV420 &&
          info.color_std == VEXO_STD_DEFAULT) {
        return {source.code};
      }
      return {alpha ? VEXO_FMT_RGBA8888 : VEXO_FMT_RGB888};
    case Kind::kPng:
      if (source.code == VEXO_FMT_YUV400) return {source.code};
      return {alpha ? VEXO_FMT_RGBA8888 : VEXO_FMT_RGB888};
    case Kind::kPpm:
      return {VEXO_FMT_RGB888};
    case Kind::kPgm:
      return {VEXO_FMT_YUV400};
    case Kind::kY4m:
      if (kind_carries(kind, source)) return {source.code};
      return {VEXO_FMT_YUV420, VEXO_FMT_YUV422N, VEXO_FMT_YUV444};
    case Kind::kVideo:
      if (kind_carries(kind, source)) return {source.code};
      return {VEXO_FMT_YUV420};
    case Kind::kRaw:
      break;
  }
  return {source.code};
}

const char *kind_name(Kind kind) {
  for (const KindEntry &entry : kKinds) {
    if (entry.kind == kind) return entry.name;
  }
  return "";
}

const char *kind_ending(Kind kind) {
  for (const KindEntry &entry : kKinds) {
    if (entry.kind == kind) return entry.endings[0];
  }
  return "";
}

std::optional<Kind> kind_of_path(const std::string &path) {
  for (const KindEntry &entry : kKinds) {
    for (const char *ending : entry.endings) {
      if (ending != nullptr && ends_with(path, ending)) return entry.kind;
    }
  }
  return std::nullopt;
}

Kind kind_named(const std::string &name) {
  // A picture's ending names it, too; of videos it would be a container.
  const std::optional<Kind> ending = kind_of_path("." + name);
  if (ending && *ending != Kind::kVideo) return *ending;
  for (const KindEntry &entry : kKinds) {
    if (name == entry.name) return entry.kind;
  }
  std::string list;
  std::vector<std::string> names;
  for (const KindEntry &entry : kKinds) {
    list.append(list.empty() ? "" : ", ").append(entry.name);
    names.emplace_back(entry.name);
  }
  throw Error("unknown kind of file '" + name + "': one of " + list +
              suggestion(name, names));
}

std::optional<Kind> kind_of_content(ByteSource &source) {
  const std::string_view start = source.peek(10);
  if (start.starts_with("\x89PNG\r\n\x1a\n")) return Kind::kPng;
  if (start.starts_with("P5") || start.starts_with("P6")) return Kind::kPpm;
  if (start.starts_with("YUV4MPEG2 ")) return Kind::kY4m;
  return std::nullopt;
}

std::unique_ptr<FrameWriter> open_writer(Kind kind, const std::string &path,
                                         const StreamInfo &info,
                                         const EncodeOptions &options) {
  switch (kind) {
    case Kind::kPng:
      return std::make_unique<PictureWriter>(path, encode_png, options);
    case Kind::kPpm:
    case Kind::kPgm:
      return std::make_unique<PictureWriter>(path, encode_pnm, options);
    case Kind::kJpeg:
#ifdef VEXO_HAS_JPEG
      return std::make_unique<PictureWriter>(path, encode_jpeg, options);
#else
      throw Error("this program is built without libjpeg");
#endif
    case Kind::kWebp:
#ifdef VEXO_HAS_WEBP
      return std::make_unique<PictureWriter>(path, encode_webp, options);
#else
      throw Error("this program is built without libwebp");
#endif
    case Kind::kY4m:
      return write_y4m(NamePattern(path).single_name(path, kind), info);
    case Kind::kRaw:
      break;
    case Kind::kVideo:
      return write_video(NamePattern(path).single_name(path, kind), info,
                         options);
  }
  return write_raw(NamePattern(path).single_name(path, kind));
}

void write_picture(Kind kind, const std::string &path, const StreamInfo &info,
                   const Frame &frame, const EncodeOptions &options) {
  const std::unique_ptr<FrameWriter> writer =
      open_writer(kind, path, info, options);
  std::string bytes;
  writer->encode(frame, &bytes);
  writer->write(frame, bytes, {});
  writer->finish();
}

void read_planes(ByteSource &source, Frame &frame) {
  source.read_exactly(frame.whole(), frame.size());
}

void write_planes(ByteSink &sink, const Frame &frame) {
  if (frame.whole() != nullptr) {
    sink.write(frame.whole(), frame.size());
    return;
  }
  std::vector<uint8_t> plane;
  for (int p = 0; p < frame.layout().planes; ++p) {
    const int bytes = frame.row_bytes(p);
    plane.resize(static_cast<size_t>(bytes) *
                 static_cast<size_t>(frame.rows(p)));
    mlox_blk_mcpy(plane.data(), frame.row(p, 0), bytes, frame.img().stride[p],
                  bytes, frame.rows(p));
    sink.write(plane.data(), plane.size());
  }
}

}  // namespace vexo
