// SPDX-License-Identifier: Apache-2.0
#include "stages.h"

#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <system_error>
#include <thread>
#include <utility>

#include "channel.h"
#include "signals.h"

namespace vexo {
namespace {

std::atomic<bool> g_left_behind = false;

// Shared by the threads, of which one may outlive the run.
struct Run {
  Stages stages;
  std::vector<std::unique_ptr<Slot>> slots;
  Channel<Slot *> empty, filled, done;
  std::promise<void> read_all;
};

void read_frames(Run &run) {
  for (int64_t number = 0;; ++number) {
    const std::optional<Slot *> next = run.empty.pop();
    if (!next) break;
    Slot &slot = **next;
    slot.number = number;
    bool more = true;
    try {
      more = run.stages.read(slot);
    } catch (...) {
      slot.failure = std::current_exception();
    }
    if (!more) break;
    run.filled.push(&slot);
    if (slot.failure) break;
  }
  run.filled.close();
  run.read_all.set_value();
}

void compute_frames(Run &run, const std::function<void(Slot &)> &compute) {
  while (const std::optional<Slot *> next = run.filled.pop()) {
    Slot &slot = **next;
    try {
      if (!slot.failure) compute(slot);
    } catch (...) {
      slot.failure = std::current_exception();
    }
    run.done.push(&slot);
  }
}

int64_t write_frames(Run &run) {
  // Of several threads frames come in any order.
  std::map<int64_t, Slot *> early;
  int64_t count = 0;
  while (const std::optional<Slot *> next = run.done.pop()) {
    early.emplace((*next)->number, *next);
    for (auto at = early.begin(); at != early.end() && at->first == count;
         at = early.erase(at)) {
      Slot &slot = *at->second;
      if (slot.failure) std::rethrow_exception(slot.failure);
      run.stages.write(slot);
      ++count;
      run.empty.push(&slot);
    }
  }
  return count;
}

// All threads of a run, ended when this goes.
class Threads {
 public:
  explicit Threads(const std::shared_ptr<Run> &run)
      : run_(run), read_all_(run->read_all.get_future()) {
    const SignalsForMain block;
    workers_left_ = run->stages.compute.size();
    try {
      for (const auto &compute : run->stages.compute) {
        workers_.emplace_back([this, &compute] {
          compute_frames(*run_, compute);
          if (--workers_left_ == 0) run_->done.close();
        });
      }
      reader_ = std::thread([run] { read_frames(*run); });
    } catch (const std::system_error &) {
      // The reader is the last to start: nothing has been read.
    }
  }

  // False where the system gives too few.
  bool started() const { return reader_.joinable(); }

  ~Threads() {
    run_->empty.close(true);
    run_->filled.close(true);
    for (std::thread &worker : workers_) worker.join();
    if (!started()) return;
    constexpr std::chrono::milliseconds kPatience(200);
    if (read_all_.wait_for(kPatience) == std::future_status::ready) {
      reader_.join();
    } else {
      reader_.detach();
      g_left_behind = true;
    }
  }
  Threads(const Threads &) = delete;
  Threads &operator=(const Threads &) = delete;

 private:
  std::shared_ptr<Run> run_;
  std::future<void> read_all_;
  std::atomic<size_t> workers_left_;
  std::vector<std::thread> workers_;
  std::thread reader_;
};

// All of it by this thread.
int64_t run_alone(const Stages &stages) {
  const std::unique_ptr<Slot> slot = stages.make_slot();
  int64_t count = 0;
  for (; stages.read(*slot); ++count) {
    stages.compute.front()(*slot);
    stages.write(*slot);
  }
  return count;
}

}  // namespace

int64_t run_stages(Stages stages) {
  const auto run = std::make_shared<Run>();
  run->stages = std::move(stages);
  // Each thread has one in its hands, and reading one to spare.
  const size_t count = run->stages.compute.size() + 3;
  for (size_t i = 0; i < count; ++i) {
    run->slots.push_back(run->stages.make_slot());
    run->empty.push(run->slots.back().get());
  }
  {
    const Threads threads(run);
    if (threads.started()) return write_frames(*run);
  }
  return run_alone(run->stages);
}

bool threads_left_behind() { return g_left_behind; }

}  // namespace vexo
