// SPDX-License-Identifier: Apache-2.0
//
// Byte streams: peeking at pipes, and output files that appear complete or not
// at all, an interrupted run included.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "error.h"
#include "io.h"

namespace vexo {
namespace {

// The temporary that a signal has to take away. A handler may not touch a
// std::string, so the name is kept in plain memory too.
std::array<char, PATH_MAX> g_temporary;
volatile sig_atomic_t g_temporary_exists = 0;

extern "C" void remove_temporary(int signal_number) {
  if (g_temporary_exists) unlink(g_temporary.data());
  // The handler was installed for one delivery: this time the signal kills.
  raise(signal_number);
}

void guard_temporary(const std::string &path) {
  g_temporary_exists = 0;
  if (path.empty() || path.size() >= g_temporary.size()) return;
  std::memcpy(g_temporary.data(), path.c_str(), path.size() + 1);
  struct sigaction action = {};
  action.sa_handler = remove_temporary;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_DFL) sigaction(number, &action, nullptr);
  }
  g_temporary_exists = 1;
}

std::string reason() { return std::strerror(errno); }

}  // namespace

ByteSource::ByteSource(const std::string &path)
    : name_(path == "-" ? "standard input" : path),
      file_(path == "-" ? stdin : std::fopen(path.c_str(), "rb")) {
  if (file_ == nullptr) throw Error("cannot open " + name_ + ": " + reason());
}

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

ByteSink::ByteSink(const std::string &path)
    : name_(path == "-" ? "standard output" : path) {
  if (path == "-") {
    if (isatty(STDOUT_FILENO)) {
      throw Error("standard output is a terminal: name a file or pipe it");
    }
    file_ = stdout;
    return;
  }
  struct stat status;
  const bool exists = stat(path.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr) fail("cannot open ");
    return;
  }
  target_ = path;
  if (exists) {
    // A renamed file would replace a symbolic link, not what it points to.
    char *const real = realpath(path.c_str(), nullptr);
    if (real == nullptr) fail("cannot open ");
    target_ = real;
    std::free(real);
  }
  std::string name = target_ + ".XXXXXX";
  const int descriptor = mkstemp(name.data());
  if (descriptor < 0) fail("cannot create ");
  temporary_ = name;
  guard_temporary(temporary_);
  // mkstemp shuts everybody else out; an ordinary new file does not.
  const mode_t mask = umask(0);
  umask(mask);
  file_ = fdopen(descriptor, "wb");
  if (file_ == nullptr) {
    close(descriptor);
    fail("cannot create ");
  }
  if (fchmod(descriptor, exists ? status.st_mode & 07777 : 0666 & ~mask) != 0) {
    fail("cannot create ");
  }
}

ByteSink::~ByteSink() { discard(); }

void ByteSink::write(const void *bytes, size_t count) {
  if (std::fwrite(bytes, 1, count, file_) != count) fail("cannot write ");
}

void ByteSink::commit() {
  const bool flushed = std::fflush(file_) == 0;
  if (!flushed) fail("cannot write ");
  if (file_ == stdout) return;
  std::FILE *const file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) fail("cannot write ");
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
    fail("cannot create ");
  }
  guard_temporary({});
  temporary_.clear();
}

void ByteSink::discard() {
  if (file_ != nullptr && file_ != stdout) std::fclose(file_);
  file_ = nullptr;
  if (temporary_.empty()) return;
  unlink(temporary_.c_str());
  guard_temporary({});
  temporary_.clear();
}

void ByteSink::fail(const char *what) {
  const std::string sentence = what + name_ + ": " + reason();
  // A constructor that throws has no destructor to clean up after it.
  discard();
  throw Error(sentence);
}

void flush_standard_output() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    throw Error("cannot write standard output");
  }
}

}  // namespace vexo
