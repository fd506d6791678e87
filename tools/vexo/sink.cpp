// SPDX-License-Identifier: Apache-2.0
//
// Output: files that appear complete or not at all, an interrupted run
// included, and standard output, which holds what the tool writes and nothing
// else.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include "error.h"
#include "io.h"

namespace vexo {
namespace {

// The signals that end a process unless it handles them, but for SIGKILL, which
// cannot be handled, and SIGPIPE and SIGXFSZ, which main ignores.
constexpr int kDeadlySignals[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGILL,   SIGTRAP,
                                  SIGABRT, SIGBUS,  SIGFPE,  SIGUSR1,  SIGSEGV,
                                  SIGUSR2, SIGALRM, SIGTERM, SIGXCPU,  SIGPROF,
                                  SIGSYS,  SIGIO,   SIGPWR,  SIGVTALRM};

// The temporary that a signal has to take away. A handler may not touch a
// std::string, so the name is kept in plain memory too.
std::array<char, PATH_MAX> g_temporary;
volatile sig_atomic_t g_temporary_exists = 0;

std::FILE *g_standard_output = nullptr;

extern "C" void remove_temporary(int signal_number) {
  if (g_temporary_exists) unlink(g_temporary.data());
  // The handler was installed for one delivery: this time the signal kills.
  raise(signal_number);
}

void handle_deadly_signals() {
  struct sigaction action = {};
  action.sa_handler = remove_temporary;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int number : kDeadlySignals) {
    struct sigaction before = {};
    sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_DFL) sigaction(number, &action, nullptr);
  }
}

// mkstemp with signals held back until the handler knows the name.
int make_temporary(std::string *name) {
  handle_deadly_signals();
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &before);
  const int descriptor = mkstemp(name->data());
  if (descriptor >= 0 && name->size() < g_temporary.size()) {
    std::memcpy(g_temporary.data(), name->c_str(), name->size() + 1);
    g_temporary_exists = 1;
  }
  sigprocmask(SIG_SETMASK, &before, nullptr);
  return descriptor;
}

// The names that the system gives a process's descriptor 1, which is not that
// of the standard output that the tool was started with.
bool is_standard_output(const std::string &path) {
  return path == "-" || path == "/dev/stdout" || path == "/dev/fd/1" ||
         path == "/proc/self/fd/1";
}

std::string folder_of(const std::string &path) {
  return path.substr(0, path.rfind('/') + 1);
}

// What a path names in the end, be it there or not; or any of the links if they
// go round in circles.
std::string follow_links(std::string path) {
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks && !is_standard_output(path); ++i) {
    std::array<char, PATH_MAX> link;
    const ssize_t length = readlink(path.c_str(), link.data(), link.size());
    if (length < 0) break;
    const std::string to(link.data(), static_cast<size_t>(length));
    path = to.starts_with('/') ? to : folder_of(path).append(to);
  }
  return path;
}

std::string reason() { return std::strerror(errno); }

}  // namespace

void claim_standard_output() {
  const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  // A file that is opened later must not take the number of a standard one: it
  // would hold what is printed there.
  for (int i = STDIN_FILENO; i <= STDERR_FILENO; ++i) {
    if (fcntl(i, F_GETFD) < 0) open("/dev/null", O_WRONLY);
  }
  dup2(STDERR_FILENO, STDOUT_FILENO);
  if (own >= 0) g_standard_output = fdopen(own, "wb");
}

std::FILE *standard_output() {
  if (g_standard_output == nullptr) throw Error("standard output is closed");
  return g_standard_output;
}

void close_standard_output() {
  std::FILE *const file = g_standard_output;
  if (file == nullptr) return;
  g_standard_output = nullptr;
  const bool failed = std::ferror(file) != 0;
  if (std::fclose(file) != 0 || failed) {
    throw Error("cannot write standard output");
  }
}

ByteSink::ByteSink(const std::string &path)
    : name_(path), target_(follow_links(path)) {
  if (is_standard_output(target_)) {
    name_ = "standard output";
    if (isatty(fileno(standard_output()))) {
      throw Error("standard output is a terminal: name a file or pipe it");
    }
    file_ = standard_output();
    return;
  }
  struct stat status;
  const bool exists = stat(path.c_str(), &status) == 0;
  // Circular links and names that are too long among others.
  if (!exists && errno != ENOENT) fail("cannot create ");
  if (exists && !S_ISREG(status.st_mode)) {
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr) fail("cannot open ");
    return;
  }
  // A name of its own: with a suffix the target's could become too long.
  std::string name = folder_of(target_) + ".vexo.XXXXXX";
  const int descriptor = make_temporary(&name);
  if (descriptor < 0) fail("cannot create ");
  temporary_ = name;
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

bool ByteSink::seekable() const { return !temporary_.empty(); }

void ByteSink::seek(int64_t offset) {
  if (fseeko(file_, offset, SEEK_SET) != 0) fail("cannot write ");
}

void ByteSink::commit() {
  const bool flushed = std::fflush(file_) == 0;
  if (!flushed) fail("cannot write ");
  if (file_ == g_standard_output) return;
  std::FILE *const file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) fail("cannot write ");
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
    fail("cannot create ");
  }
  g_temporary_exists = 0;
  temporary_.clear();
}

void ByteSink::discard() {
  if (file_ != nullptr && file_ != g_standard_output) std::fclose(file_);
  file_ = nullptr;
  if (temporary_.empty()) return;
  unlink(temporary_.c_str());
  g_temporary_exists = 0;
  temporary_.clear();
}

void ByteSink::fail(const char *what) {
  const std::string sentence = what + name_ + ": " + reason();
  // A constructor that throws has no destructor to clean up after it.
  discard();
  throw Error(sentence);
}

}  // namespace vexo
