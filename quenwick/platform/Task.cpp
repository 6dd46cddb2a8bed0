#include "quenwick/platform/Task.h"

#include <algorithm>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/LogSink.h"

namespace quenwick::platform {
namespace {

/// A coroutine that nobody awaits: it frees itself when it ends.
struct Detached {
  struct promise_type {
    Detached get_return_object() { return {}; }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() noexcept { std::terminate(); }
  };
};

Detached run(Task<void> task, std::function<void()> atEnd) {
  try {
    co_await task;
  } catch (...) {
    logPlatformError("a task failed: " +
                     errorFrom(std::current_exception())->localizedDescription());
  }
  atEnd();
}

}  // namespace

void TaskHandle::wait() const {
  std::unique_lock lock(state_->mutex);
  state_->changed.wait(lock, [this] { return state_->isDone; });
}

bool TaskHandle::waitFor(std::chrono::nanoseconds atMost) const {
  // What is added to the time of now must not exceed it.
  atMost = std::min<std::chrono::nanoseconds>(atMost, std::chrono::years(10));
  std::unique_lock lock(state_->mutex);
  return state_->changed.wait_for(lock, atMost, [this] { return state_->isDone; });
}

void spawn(Task<void> task) {
  run(std::move(task), [] {});
}

TaskHandle startTask(Task<void> task, std::stop_source stop) {
  auto state = std::make_shared<TaskHandle::State>();
  state->stop = std::move(stop);
  auto atEnd = [state] {
    std::lock_guard lock(state->mutex);
    state->isDone = true;
    state->changed.notify_all();
  };
  auto shared = std::make_shared<Task<void>>(std::move(task));
  pool().post([shared, atEnd] { run(std::move(*shared), atEnd); });
  return TaskHandle(std::move(state));
}

}  // namespace quenwick::platform
