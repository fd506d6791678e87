// SPDX-License-Identifier: Apache-2.0
//
// A queue between threads. What bounds it is the number of things that there
// are to put in.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace vexo {

template <typename T>
class Channel {
 public:
  void push(T item) {
    const std::lock_guard<std::mutex> lock(mutex_);
    items_.push_back(std::move(item));
    changed_.notify_one();
  }

  // Nothing when the channel is closed and empty.
  std::optional<T> pop() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return closed_ || !items_.empty(); });
    if (items_.empty()) return std::nullopt;
    std::optional<T> item(std::move(items_.front()));
    items_.pop_front();
    return item;
  }

  // Nothing more comes; what is there is still handed out, or dropped.
  void close(bool drop = false) {
    const std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    if (drop) items_.clear();
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<T> items_;
  bool closed_ = false;
};

}  // namespace vexo
