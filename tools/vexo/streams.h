// SPDX-License-Identifier: Apache-2.0
//
// What the command line says of the input and the output, and both as it says.
#pragma once

#include <memory>
#include <string>

#include "io.h"

namespace vexo {

struct StreamOptions {
  std::string in;
  std::string out;
  // Empty strings: not given.
  std::string in_kind;
  std::string out_kind;
  std::string from_size;
  std::string from;
  std::string to;
  std::string via;
  // What from_size is called, for messages.
  std::string size_name = "--size";
  std::string standard;
  // limited or full.
  std::string range;
  // Of tone mapping; none is one of them.
  std::string kind;
  int nit = 0;
  bool measure = false;
  // Of containers: which stream, and from where.
  int stream = -1;
  std::string at;
  bool tolerant = false;
  std::string crop;
  bool square = false;
  // plain or smooth.
  std::string chroma;
  bool dither = false;
  // Pictures stay as they are stored.
  bool keep_turn = false;
  int64_t frames = 0;
  int jobs = 0;
  EncodeOptions encode;
  bool quiet = false;
  bool verbose = false;
};

// "WxH" as the option of this name says it.
void parse_size(const std::string &text, const std::string &option, int *width,
                int *height);

struct VideoWish;
VideoWish video_wish(const StreamOptions &options);
// `pick`: of a container, key frames alone, for one that stands for all.
std::unique_ptr<FrameReader> open_reader(const StreamOptions &options,
                                         bool pick = false);
Kind output_kind(const StreamOptions &options);

}  // namespace vexo
