#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <utility>

#include "quenwick/platform/Export.h"

namespace quenwick::platform {

template <class T>
class Task;

inline namespace v0 {
class TaskHandle;
}
TaskHandle startTask(Task<void> task, std::stop_source stop);

inline namespace v0 {

/// A started task: may be dropped (the task goes on), waited for or cancelled.
class QUENWICK_EXPORT TaskHandle {
 public:
  /// Asks the task to end; it does so at its next opportunity.
  void cancel() { state_->stop.request_stop(); }

  /// Waits until the task has ended. Never to be called on a thread that the task needs.
  void wait() const;

  /// Waits at most for the duration; whether the task has ended.
  bool waitFor(std::chrono::nanoseconds atMost) const;

 private:
  friend TaskHandle platform::startTask(Task<void> task, std::stop_source stop);

  struct State {
    std::stop_source stop;
    std::mutex mutex;
    std::condition_variable changed;
    bool isDone = false;
  };
  explicit TaskHandle(std::shared_ptr<State> state) : state_(std::move(state)) {}

  std::shared_ptr<State> state_;
};

}  // namespace v0
}  // namespace quenwick::platform
