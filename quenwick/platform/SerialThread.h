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
///
/// With a `lull`, work that finds nothing waiting begins that much later, together with what came
/// meanwhile; `hurry` and `drain` end the lull.
class SerialThread : public Executor {
 public:
  /// `name` has at most 15 characters and outlives the instance.
  explicit SerialThread(const char* name, std::chrono::nanoseconds lull = {})
      : name_(name), lull_(lull) {}

  void post(Work work) override;

  /// Has what was posted so far begin now.
  void hurry();

  /// Whether the caller is this thread.
  bool isCurrent() const { return id_ == std::this_thread::get_id(); }

  /// Whether nothing is waiting or running.
  bool isIdle() const;

  /// Waits until all work posted before has run, at most for the duration; whether it has.
  bool drain(std::chrono::nanoseconds atMost);

  /// The same, and nothing else runs after that.
  bool end(std::chrono::nanoseconds atMost);

 private:
  bool runLast(Work last, std::chrono::nanoseconds atMost);
  void run();
  std::deque<Work> nextBatch();
  void keep(std::deque<Work> batch);

  const char* name_;
  const std::chrono::nanoseconds lull_;
  std::atomic<std::thread::id> id_;
  std::atomic<bool> isEnded_ = false;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Work> waiting_;
  std::chrono::steady_clock::time_point due_;  // of what waits
  bool isHurried_ = false;
  bool isRunning_ = false;
  bool isStarted_ = false;
};

}  // namespace quenwick::platform
