// SPDX-License-Identifier: Apache-2.0
//
// Files as streams of bytes, and pictures read from and written to them frame
// by frame. Every failure is an Error that names the file.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "colour.h"
#include "frame.h"

namespace vexo {

// A file or, for the name "-", standard input.
class ByteSource {
 public:
  explicit ByteSource(const std::string &path);
  // Takes over an open file.
  ByteSource(std::FILE *file, const std::string &name);
  ~ByteSource();
  ByteSource(const ByteSource &) = delete;
  ByteSource &operator=(const ByteSource &) = delete;

  // What the source is called in messages.
  const std::string &name() const { return name_; }
  // The first bytes of the stream, fewer when it is shorter. Only before the
  // first read.
  std::string_view peek(size_t count);
  // Fewer bytes than asked for only at the end of the stream.
  size_t read(void *bytes, size_t count);
  void read_exactly(void *bytes, size_t count);
  bool at_end();
  // The size of a file that can be read from anywhere; nothing of a pipe.
  std::optional<int64_t> size();
  // Of such a file.
  void seek(int64_t offset);
  // Makes such a file of a pipe: a temporary one, which has no name and goes
  // with the source. Before the first read.
  void spool();
  // A line without its newline; nothing at the end of the stream.
  std::optional<std::string> read_line(size_t max_bytes);
  [[noreturn]] void truncated() const;

 private:
  std::string name_;
  std::FILE *file_;
  std::string peeked_;
  size_t peeked_used_ = 0;
};

// A file or, for the name "-", standard output. A regular file appears under
// its name when committed, complete; until then it is a temporary beside it,
// which goes when the sink goes. Symbolic links stay and what they point to is
// written, be it there or not. Pipes and devices are written directly.
class ByteSink {
 public:
  explicit ByteSink(const std::string &path);
  ~ByteSink();
  ByteSink(const ByteSink &) = delete;
  ByteSink &operator=(const ByteSink &) = delete;

  const std::string &name() const { return name_; }
  void write(const void *bytes, size_t count);
  // Where what is written already can be written again.
  bool seekable() const;
  void seek(int64_t offset);
  void commit();

 private:
  void discard();
  [[noreturn]] void fail(const char *what);

  std::string name_;
  std::string target_;
  std::string temporary_;
  std::FILE *file_ = nullptr;
};

// Keeps the standard output that the tool was started with for the tool alone.
// What others print to theirs, as the library does when it gets no thread, goes
// to standard error. Before anything is opened or printed.
void claim_standard_output();
// Where results go. Throws Error if the tool was started without one.
std::FILE *standard_output();
// What was printed is out, or an Error.
void close_standard_output();

struct Ratio {
  int num = 0;
  int den = 1;
};

// What a container says of its frames.
struct StreamInfo {
  const Layout *layout = nullptr;
  int width = 0;
  int height = 0;
  Colour colour;
  // The library's standard for samples of YUV, or kNoStandard.
  int32_t color_std = VEXO_STD_DEFAULT;
  // Two of the library's turns, one after the other, make the picture upright.
  uint32_t turns[2] = {};
  // Frames per second, on average; the width of a pixel over its height; 0: not
  // said.
  Ratio rate;
  Ratio aspect;
  // What times of frames count, in seconds; 0: frames have none.
  Ratio tick;
  // Y4M alone: the chroma word of the header (empty: none given), and the
  // words that a copy keeps before it (rate, interlacing, aspect; empty: those
  // that follow from the above) and after it.
  std::string y4m_chroma;
  std::string y4m_words;
  std::string y4m_remarks;
};

// When a frame is shown, and for how long if that is known, in ticks.
struct Showing {
  std::optional<int64_t> at;
  int64_t length = 0;
};

class FrameReader {
 public:
  virtual ~FrameReader() = default;
  virtual const StreamInfo &info() const = 0;
  // False when there is no further frame. The frame is one of the stream's
  // layout and size, and is filled or becomes another one.
  virtual bool read(Frame &frame) = 0;
  // Of the frame that was read last.
  virtual Showing showing() const { return {}; }
};

class FrameWriter {
 public:
  virtual ~FrameWriter() = default;
  // What of a frame's output needs no order, by any thread.
  virtual void encode(const Frame &, std::string *) const {}
  virtual bool encodes() const { return false; }
  // In order, with what encode() has made of the frame. Nothing is opened
  // before the first frame comes: most bad input fails until then.
  virtual void write(const Frame &frame, const std::string &bytes,
                     const Showing &showing) = 0;
  // To be called after the last frame; without it nothing stays on disk.
  virtual void finish() = 0;
};

// kVideo: what libavformat knows.
enum class Kind { kPng, kPpm, kPgm, kJpeg, kWebp, kY4m, kRaw, kVideo };

// What holds one frame, of 8 bits, and RGB of full range alone.
bool is_picture(Kind kind);
// The layouts that a frame is written in when nobody says which, best first.
std::vector<int32_t> usual_layouts(Kind kind, const StreamInfo &source);
// Whether a file of this kind can hold the layout.
bool kind_carries(Kind kind, const Layout &layout);
const char *kind_name(Kind kind);
// The usual ending of names, with its dot.
const char *kind_ending(Kind kind);
// The ending is in lower case, the path in any.
bool ends_with(const std::string &path, std::string_view ending);
// By the name's ending; nothing when it says nothing.
std::optional<Kind> kind_of_path(const std::string &path);
Kind kind_named(const std::string &name);
// By the first bytes; kPpm stands for P5 too.
std::optional<Kind> kind_of_content(ByteSource &source);

std::unique_ptr<FrameReader> read_png(std::unique_ptr<ByteSource> source);
std::unique_ptr<FrameReader> read_pnm(std::unique_ptr<ByteSource> source);
std::unique_ptr<FrameReader> read_y4m(std::unique_ptr<ByteSource> source);
// The info tells the layout and the size.
std::unique_ptr<FrameReader> read_raw(std::unique_ptr<ByteSource> source,
                                      const StreamInfo &info);

struct EncodeOptions {
  // Of PNG 0 to 9, of JPEG and WebP 0 to 100; -1: what is usual.
  int png_level = -1;
  int quality = -1;
};

std::unique_ptr<FrameWriter> open_writer(Kind kind, const std::string &path,
                                         const StreamInfo &info,
                                         const EncodeOptions &options);

std::unique_ptr<FrameWriter> write_y4m(const std::string &path,
                                       const StreamInfo &info);
std::unique_ptr<FrameWriter> write_raw(const std::string &path);

// Where the program is built with ffmpeg's libraries.
std::unique_ptr<FrameWriter> write_video(const std::string &path,
                                         const StreamInfo &info,
                                         const EncodeOptions &options);

// A file with one picture.
void write_picture(Kind kind, const std::string &path, const StreamInfo &info,
                   const Frame &frame, const EncodeOptions &options);

// One picture as the bytes of a file, appended.
using Encoder = void(const Frame &frame, const EncodeOptions &options,
                     std::string *bytes);
Encoder encode_png;
Encoder encode_pnm;
// Where the program is built with their libraries.
Encoder encode_jpeg;
Encoder encode_webp;

// All planes of a frame, rows without the gaps between them.
void read_planes(ByteSource &source, Frame &frame);
void write_planes(ByteSink &sink, const Frame &frame);

}  // namespace vexo
