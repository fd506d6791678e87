// SPDX-License-Identifier: Apache-2.0
//
// YUV4MPEG2 streams: grey, 4:2:0, 4:2:2, 4:4:4 and 10-bit 4:2:0.
#include <algorithm>
#include <charconv>

#include "error.h"
#include "io.h"

namespace vexo {
namespace {

constexpr size_t kMaxLine = 4096;

struct Chroma {
  const char *word;
  int32_t code;
  // As in Colour.
  int siting;
};

// Of several words for one layout the first is written when the input gave
// none.
constexpr Chroma kChromas[] = {
    {"mono", VEXO_FMT_YUV400, 0},     {"420jpeg", VEXO_FMT_YUV420, 2},
    {"420mpeg2", VEXO_FMT_YUV420, 1}, {"420paldv", VEXO_FMT_YUV420, 3},
    {"420", VEXO_FMT_YUV420, 2},      {"422", VEXO_FMT_YUV422N, 0},
    {"444", VEXO_FMT_YUV444, 0},      {"420p10", VEXO_FMT_YUV420PLANAR16, 0},
};

const Chroma *chroma_of_word(std::string_view word) {
  for (const Chroma &chroma : kChromas) {
    if (word == chroma.word) return &chroma;
  }
  return nullptr;
}

class Y4mReader : public FrameReader {
 public:
  explicit Y4mReader(std::unique_ptr<ByteSource> source)
      : source_(std::move(source)) {
    const std::optional<std::string> line = source_->read_line(kMaxLine);
    if (!line || !line->starts_with("YUV4MPEG2 ")) bad("no YUV4MPEG2 header");
    std::string_view rest = *line;
    rest.remove_prefix(10);
    info_.layout = &layout_of(VEXO_FMT_YUV420);
    while (!rest.empty()) {
      const size_t end = std::min(rest.find(' '), rest.size());
      take_word(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    check_size(info_.width, info_.height, source_->name());
    if (info_.colour.range == 2) info_.color_std = VEXO_STD_BT601_FULL;
  }

  const StreamInfo &info() const override { return info_; }

  bool read(Frame &frame) override {
    const std::optional<std::string> line = source_->read_line(kMaxLine);
    if (!line) return false;
    if (*line != "FRAME" && !line->starts_with("FRAME ")) {
      bad("a frame does not begin with FRAME");
    }
    read_planes(*source_, frame);
    return true;
  }

 private:
  void take_word(std::string_view word) {
    if (word.empty()) return;
    const std::string_view value = word.substr(1);
    switch (word[0]) {
      case 'W':
        info_.width = number(value);
        return;
      case 'H':
        info_.height = number(value);
        return;
      case 'C': {
        const Chroma *const chroma = chroma_of_word(value);
        if (chroma == nullptr) {
          bad("colour space '" + std::string(value) + "' is not read");
        }
        info_.layout = &layout_of(chroma->code);
        info_.y4m_chroma = value;
        info_.colour.siting = chroma->siting;
        return;
      }
      case 'X':
        // Names the sampling again, in another program's words.
        if (value.starts_with("YSCSS=")) return;
        if (value == "COLORRANGE=FULL" || value == "COLORRANGE=LIMITED") {
          info_.colour.range = value.ends_with("FULL") ? 2 : 1;
          return;
        }
        info_.y4m_remarks += " ";
        info_.y4m_remarks += word;
        return;
      case 'F':
        take_ratio(value, &info_.rate);
        break;
      case 'A':
        take_ratio(value, &info_.aspect);
        break;
      default:
        break;
    }
    info_.y4m_words += " ";
    info_.y4m_words += word;
  }

  // What is no ratio is kept as a word alone.
  static void take_ratio(std::string_view value, Ratio *ratio) {
    const char *const end = value.data() + value.size();
    Ratio read;
    const auto num = std::from_chars(value.data(), end, read.num);
    if (num.ec != std::errc() || num.ptr == end || *num.ptr != ':') return;
    const auto den = std::from_chars(num.ptr + 1, end, read.den);
    if (den.ec == std::errc() && read.num > 0 && read.den > 0) *ratio = read;
  }

  int number(std::string_view digits) const {
    int value = 0;
    const char *const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) {
      bad("'" + std::string(digits) + "' is not a size");
    }
    return value;
  }

  [[noreturn]] void bad(const std::string &what) const {
    throw Error(source_->name() + " is not a sound Y4M: " + what);
  }

  std::unique_ptr<ByteSource> source_;
  StreamInfo info_;
};

class Y4mWriter : public FrameWriter {
 public:
  Y4mWriter(const std::string &path, const StreamInfo &info) : path_(path) {
    header_ = "YUV4MPEG2 W" + std::to_string(info.width) + " H" +
              std::to_string(info.height) + words_of(info) + " C" +
              chroma_word(info) + info.y4m_remarks;
    if (info.colour.range == 1) header_ += " XCOLORRANGE=LIMITED";
    if (info.colour.range == 2) header_ += " XCOLORRANGE=FULL";
    header_ += "\n";
  }

  void write(const Frame &frame, const std::string &,
             const Showing &) override {
    if (!sink_) {
      sink_.emplace(path_);
      sink_->write(header_.data(), header_.size());
    }
    sink_->write("FRAME\n", 6);
    write_planes(*sink_, frame);
  }

  void finish() override { sink_->commit(); }

 private:
  static std::string word(const char *letter, const Ratio &ratio) {
    return letter + std::to_string(ratio.num) + ":" +
           std::to_string(ratio.num > 0 ? ratio.den : 0);
  }

  // Rate, interlacing and aspect.
  static std::string words_of(const StreamInfo &info) {
    const bool own = !info.y4m_words.empty();
    const Ratio usual = {25, 1};
    std::string words =
        own ? info.y4m_words
            : word(" F", info.rate.num > 0 ? info.rate : usual) + " Ip";
    const bool said = words.find(" A") != std::string::npos;
    if (!own || (!said && info.aspect.num > 0)) {
      words += word(" A", info.aspect);
    }
    return words;
  }

  // The input's own word while it names the layout that is written.
  static std::string chroma_word(const StreamInfo &info) {
    const Chroma *const given = chroma_of_word(info.y4m_chroma);
    if (given != nullptr && given->code == info.layout->code) {
      return given->word;
    }
    for (const Chroma &chroma : kChromas) {
      if (chroma.code == info.layout->code) return chroma.word;
    }
    throw Error(std::string("y4m cannot hold ") + info.layout->token);
  }

  std::string path_;
  std::string header_;
  std::optional<ByteSink> sink_;
};

}  // namespace

std::unique_ptr<FrameReader> read_y4m(std::unique_ptr<ByteSource> source) {
  return std::make_unique<Y4mReader>(std::move(source));
}

std::unique_ptr<FrameWriter> write_y4m(const std::string &path,
                                       const StreamInfo &info) {
  return std::make_unique<Y4mWriter>(path, info);
}

}  // namespace vexo
