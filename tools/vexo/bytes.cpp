// SPDX-License-Identifier: Apache-2.0
//
// Input as a stream of bytes, with a look at the first ones.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "error.h"
#include "io.h"

namespace vexo {
namespace {

std::string reason() { return std::strerror(errno); }

[[noreturn]] void no_temporary() {
  throw Error("cannot write a temporary file: " + reason());
}

struct Close {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using OwnFile = std::unique_ptr<std::FILE, Close>;

// Without a name. It may be large, and /tmp may be memory.
OwnFile temporary_file() {
  const char *const wanted = std::getenv("TMPDIR");
  const char *const folders[] = {wanted != nullptr ? wanted : "/var/tmp",
                                 "/tmp"};
  for (const char *const folder : folders) {
    std::string name = std::string(folder) + "/vexo.XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) continue;
    unlink(name.c_str());
    OwnFile file(fdopen(descriptor, "w+b"));
    if (file != nullptr) return file;
    close(descriptor);
  }
  no_temporary();
}

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

void ByteSource::spool() {
  constexpr int64_t kMost = int64_t{4} << 30;
  constexpr size_t kPiece = 1 << 20;
  OwnFile file = temporary_file();
  std::vector<char> piece(kPiece);
  int64_t total = 0;
  for (size_t got = kPiece; got == kPiece;) {
    got = read(piece.data(), kPiece);
    total += static_cast<int64_t>(got);
    if (total > kMost) {
      throw Error(name_ +
                  " has its index behind more than 4 GiB: it has to be "
                  "a file, not a pipe");
    }
    if (std::fwrite(piece.data(), 1, got, file.get()) != got) no_temporary();
  }
  if (std::fflush(file.get()) != 0) no_temporary();
  if (file_ != stdin) std::fclose(file_);
  file_ = file.release();
  seek(0);
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
