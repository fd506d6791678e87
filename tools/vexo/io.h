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

// What a container says of its frames.
struct StreamInfo {
  const Layout *layout = nullptr;
  int width = 0;
  int height = 0;
  // Y4M alone: the chroma word of the header (empty: none given), and the
  // words that a copy keeps before it (rate, interlacing, aspect) and after it.
  std::string y4m_chroma;
  std::string y4m_words;
  std::string y4m_remarks;
};

class FrameReader {
 public:
  virtual ~FrameReader() = default;
  virtual const StreamInfo &info() const = 0;
  // False when there is no further frame.
  virtual bool read(Frame &frame) = 0;
};

class FrameWriter {
 public:
  virtual ~FrameWriter() = default;
  virtual void write(const Frame &frame) = 0;
  // To be called after the last frame; without it nothing stays on disk.
  virtual void finish() = 0;
};

enum class Kind { kPng, kPpm, kPgm, kY4m, kRaw };

// Whether a file of this kind can hold the layout.
bool kind_carries(Kind kind, const Layout &layout);
const char *kind_name(Kind kind);
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
std::unique_ptr<FrameWriter> open_writer(Kind kind, const std::string &path,
                                         const StreamInfo &info);

std::unique_ptr<FrameWriter> write_y4m(const std::string &path,
                                       const StreamInfo &info);
std::unique_ptr<FrameWriter> write_raw(const std::string &path);

// One picture to one file.
using Encoder = void(const Frame &frame, ByteSink &sink);
Encoder encode_png;
Encoder encode_pnm;

// All planes of a frame, rows without the gaps between them.
void read_planes(ByteSource &source, Frame &frame);
void write_planes(ByteSink &sink, const Frame &frame);

}  // namespace vexo
