// SPDX-License-Identifier: Apache-2.0
//
// Input as a stream of bytes, with a look at the first ones.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "error.h"
#include "io.h"

namespace vexo {
namespace {

std::string reason() { return std::strerror(errno); }

}  // namespace

ByteSource::ByteSource(const std::string &path)
    : name_(path == "-" ? "standard input" : path),
      file_(path == "-" ? stdin : std::fopen(path.c_str(), "rb")) {
  if (file_ == nullptr) throw Error("cannot open " + name_ + ": " + reason());
}

ByteSource::ByteSource(std::FILE *file, const std::string &name)
    : name_(name), file_(file) {}

ByteSource::~ByteSource() {
  if (file_ != stdin) std::fclose(file_);
}

std::string_view ByteSource::peek(size_t count) {
  const size_t had = peeked_.size();
  if (had < count) {
    std::string more(count - had, '\0');
    more.resize(std::fread(more.data(), 1, more.size(), file_));
    if (std::ferror(file_)) {
      throw Error("cannot read " + name_ + ": " + reason());
    }
    peeked_ += more;
  }
  return std::string_view(peeked_).substr(0, count);
}

size_t ByteSource::read(void *bytes, size_t count) {
  const size_t early = std::min(count, peeked_.size() - peeked_used_);
  std::memcpy(bytes, peeked_.data() + peeked_used_, early);
  peeked_used_ += early;
  if (early == count) return count;
  const size_t late =
      std::fread(static_cast<char *>(bytes) + early, 1, count - early, file_);
  if (std::ferror(file_)) throw Error("cannot read " + name_ + ": " + reason());
  return early + late;
}

void ByteSource::read_exactly(void *bytes, size_t count) {
  if (read(bytes, count) != count) truncated();
}

bool ByteSource::at_end() {
  if (peeked_used_ < peeked_.size()) return false;
  const int next = std::getc(file_);
  if (next == EOF) {
    if (std::ferror(file_)) {
      throw Error("cannot read " + name_ + ": " + reason());
    }
    return true;
  }
  std::ungetc(next, file_);
  return false;
}

std::optional<int64_t> ByteSource::size() {
  const off_t here = ftello(file_);
  if (here < 0 || fseeko(file_, 0, SEEK_END) != 0) return std::nullopt;
  const off_t end = ftello(file_);
  if (end < 0 || fseeko(file_, here, SEEK_SET) != 0) return std::nullopt;
  return end;
}

void ByteSource::seek(int64_t offset) {
  peeked_used_ = peeked_.size();
  if (fseeko(file_, offset, SEEK_SET) != 0) {
    throw Error("cannot read " + name_ + ": " + reason());
  }
}

std::optional<std::string> ByteSource::read_line(size_t max_bytes) {
  if (at_end()) return std::nullopt;
  std::string line;
  for (;;) {
    char next;
    read_exactly(&next, 1);
    if (next == '\n') return line;
    if (line.size() == max_bytes) {
      throw Error(name_ + ": a header line is too long");
    }
    line += next;
  }
}

void ByteSource::truncated() const {
  throw Error(name_ + " is truncated: it ends within a frame or a header");
}

}  // namespace vexo
