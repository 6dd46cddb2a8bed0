#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "quenwick/platform/Executor.h"

namespace quenwick::platform {

/// A thread of its own that runs its work in the order it was posted. The thread starts with the
/// first work and is never joined: an instance lives for the process.
class SerialThread : public Executor {
 public:
  /// `name` has at most 15 characters and outlives the instance.
  explicit SerialThread(const char* name) : name_(name) {}

  void post(Work work) override;

  /// Whether the caller is this thread.
  bool isCurrent() const { return id_ == std::this_thread::get_id(); }

  /// Whether nothing is waiting or running.
  bool isIdle() const;

  /// Waits until all work posted before has run, at most for the duration; whether it has.
  bool drain(std::chrono::nanoseconds atMost);

 private:
  void start();
  void run();

  const char* name_;
  std::atomic<std::thread::id> id_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Work> waiting_;
  bool isRunning_ = false;
  bool isStarted_ = false;
};

}  // namespace quenwick::platform
